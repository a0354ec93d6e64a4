// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <exception>

#include "Host/Util/Api.h"

namespace ScEng {

/// A request to stop an evaluation, made on one thread and seen on others. It outlives the evaluation that it is given
/// to; once made, a request stands until `Reset`.
class Cancellation {
 public:
  Cancellation() = default;
  Cancellation(const Cancellation&) = delete;
  Cancellation& operator=(const Cancellation&) = delete;

  /// May be called from any thread, and from a signal handler.
  void Request() noexcept { requested_.store(true, std::memory_order_relaxed); }
  [[nodiscard]] bool IsRequested() const noexcept { return requested_.load(std::memory_order_relaxed); }
  /// Withdraws the request, for the next evaluation. Not while one is running.
  void Reset() noexcept { requested_.store(false, std::memory_order_relaxed); }

 private:
  std::atomic<bool> requested_{false};
};

/// Thrown where an evaluation notices that it is to stop. It passes through a node like any other exception, so what
/// the node has begun is released on the way; the engine catches it.
class HOST_UTIL_API Canceled : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override;
};

/// Throws `Canceled` where this thread works for an evaluation that has been asked to stop, else does next to nothing.
///
/// `ParallelRows`, `ParallelFor` and `ThreadPool` ask between the pieces that they hand out. A loop that runs without
/// them, or whose pieces take longer than some milliseconds each, asks by itself, once a row for example.
HOST_UTIL_API void PollCancellation();

/// Whether this thread works for an evaluation that may be stopped, for work that is only then done in pieces.
HOST_UTIL_API bool IsCancellable();

}  // namespace ScEng
