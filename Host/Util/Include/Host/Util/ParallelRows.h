// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>

#include "Host/Util/Api.h"

namespace ScEng {

/// The most threads that an operation uses, whatever asks for them: `ParallelRows`, `ParallelFor` and `ThreadPool`. The
/// default is what the machine offers.
HOST_UTIL_API std::size_t GetNumThreads();

/// Sets that number for the operations that start after the call; 0 restores the default. More threads than cores
/// are honoured.
HOST_UTIL_API void SetNumThreads(std::size_t threads);

/// Calls `body(from, to)` for consecutive, non-overlapping ranges that together cover [0, count), on the host's
/// threads, and returns when all are done. A range holds at least `grain` entries where there are that many.
///
/// Which thread takes which range is not fixed, so `body` must write only what belongs to its range. An exception
/// thrown by `body` reaches the caller.
///
/// Within an `EvaluationScope` the ranges are short, some milliseconds each but never below the grain, and a request to
/// stop ends the operation with `Canceled` before the next one.
HOST_UTIL_API void ParallelRows(std::size_t count, std::size_t grain,
                                const std::function<void(std::size_t from, std::size_t to)>& body);

}  // namespace ScEng
