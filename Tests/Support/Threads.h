// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "Host/Util/ParallelRows.h"

namespace Testing {

/// Sets the number of the host's threads for one scope.
class ThreadsScope {
 public:
  explicit ThreadsScope(std::size_t threads) { ScEng::SetNumThreads(threads); }
  ~ThreadsScope() { ScEng::SetNumThreads(0); }
  ThreadsScope(const ThreadsScope&) = delete;
  ThreadsScope& operator=(const ThreadsScope&) = delete;
};

}  // namespace Testing
