// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <functional>

#include "Host/Util/Api.h"

namespace ScEng {

/// While it lasts, this thread calls a function wherever the work of an `EvaluationScope` could be stopped, before it
/// is asked whether it is to stop, a hundred times a second at most: for a program that learns on one thread alone that
/// somebody wants it to stop. A scope within calls its own function and then those of the scopes around it.
class HOST_UTIL_API PollScope {
 public:
  /// An empty function does nothing. It must not throw.
  explicit PollScope(std::function<void()> poll);
  ~PollScope();
  PollScope(const PollScope&) = delete;
  PollScope& operator=(const PollScope&) = delete;

  /// Calls the functions of this thread for which it is time.
  static void Ask();

 private:
  std::function<void()> poll_;
  std::chrono::steady_clock::time_point asked_at_;
  PollScope* outer_;
};

}  // namespace ScEng
