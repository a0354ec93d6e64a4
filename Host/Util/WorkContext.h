// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <thread>
#include <utility>

#include "Host/Util/Cancellation.h"
#include "Host/Util/EvaluationScope.h"
#include "Host/Util/PollScope.h"

namespace ScEng {

/// What an `EvaluationScope` is to the threads that work for it.
struct WorkContext {
  [[nodiscard]] bool IsToStop() const {
    for (const WorkContext* context = this; context != nullptr; context = context->outer) {
      if (context->cancellation != nullptr && context->cancellation->IsRequested()) return true;
    }
    return false;
  }

  void Poll() {
    PollScope::Ask();
    if (!IsToStop()) return;
    was_stopped.store(true, std::memory_order_relaxed);
    throw Canceled();
  }

  [[nodiscard]] bool IsOwnThread() const { return std::this_thread::get_id() == owner; }

  /// For the thread of the scope alone.
  void Tell(double fraction);

  const Cancellation* cancellation = nullptr;
  const WorkContext* outer = nullptr;
  std::atomic<bool> was_stopped{false};

  // ---- Progress, of the thread of the scope alone ----
  EvaluationScope::Progress progress;
  std::thread::id owner = std::this_thread::get_id();
  // What is done, and where the part of the work ends that is running.
  double position = 0.0;
  double end = 1.0;
  // How many passes this part still has; 0 where nobody has said.
  std::size_t passes = 0;
  bool is_in_pass = false;
  double told = 0.0;
  std::chrono::steady_clock::time_point told_at = std::chrono::steady_clock::now();
};

/// What this thread works for at the moment; null where it is no evaluation.
WorkContext*& GetWorkContext();

/// Makes this thread work for a context, null included, for one piece of work.
class WorkContextGuard {
 public:
  explicit WorkContextGuard(WorkContext* context) : before_(std::exchange(GetWorkContext(), context)) {}
  ~WorkContextGuard() { GetWorkContext() = before_; }
  WorkContextGuard(const WorkContextGuard&) = delete;
  WorkContextGuard& operator=(const WorkContextGuard&) = delete;

 private:
  WorkContext* before_;
};

/// Works through [from, to) in pieces of some milliseconds, so that a request to stop is noticed soon. No piece has
/// fewer than `least` entries, unless the range has.
template <class Body>
void WorkInPieces(WorkContext& context, ProgressPass& pass, std::size_t from, std::size_t to, std::size_t least,
                  const Body& body) {
  using Clock = std::chrono::steady_clock;
  constexpr auto kShort = std::chrono::milliseconds(1);
  constexpr auto kLong = std::chrono::milliseconds(4);
  std::size_t wanted = least;
  while (from < to) {
    context.Poll();
    const std::size_t left = to - from;
    // What would be left behind must make a piece of its own.
    const std::size_t piece = left - std::min(left, wanted) < least ? left : wanted;
    const Clock::time_point begun = Clock::now();
    body(from, from + piece);
    const auto taken = Clock::now() - begun;
    pass.Add(piece);
    from += piece;
    if (taken < kShort) {
      wanted *= 2;
    } else if (taken > kLong) {
      wanted = std::max(least, wanted / 2);
    }
  }
}

}  // namespace ScEng
