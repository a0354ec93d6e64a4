// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace ScEng {

/// Makes oneTBB ready to run operations on `threads` threads, the caller's included, and answers how many it may use;
/// to be called before each arena is made.
///
/// oneTBB runs one worker per core unless it is told otherwise, and ends the program where a worker cannot be started.
/// This sets its limit to `threads`, or to as many as the system lets the process start: with fewer workers, or none,
/// the callers do the work.
std::size_t PrepareWorkers(std::size_t threads);

}  // namespace ScEng
