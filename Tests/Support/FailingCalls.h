// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace Testing {

/// What happens to calls of the system's functions for files.
struct CallPlan {
  enum class Fate {
    /// The call does nothing, answers -1 and sets errno to `error`. Closing a file closes it none the less.
    kFails,
    /// Reading and writing take half of what they are given.
    kIsShort,
    /// The process is killed before the call.
    kKills,
  };

  /// Counted from 1; 0 leaves all calls alone.
  int call = 0;
  int error = 0;
  Fate fate = Fate::kFails;
  /// Whether later calls of the same function meet the same fate.
  bool lasts = false;
  /// Only calls of this function are counted, if there is one.
  std::string function = {};
};

/// Carries out a plan for the calls that this thread makes in one scope. For a program that is linked with
/// FailingCalls.cpp, whose functions stand in for those of the system. Removing a file never fails, and flushing takes
/// no time here: it matters only where the power fails.
class FailingCalls {
 public:
  explicit FailingCalls(CallPlan plan);
  ~FailingCalls();
  FailingCalls(const FailingCalls&) = delete;
  FailingCalls& operator=(const FailingCalls&) = delete;

  /// The function that failed; empty where the plan's call was never reached.
  [[nodiscard]] const std::string& GetFailed() const { return failed_; }

  /// For the functions that stand in: whether this call is to have the plan's fate.
  bool IsMet(const char* function);
  [[nodiscard]] const CallPlan& GetPlan() const { return plan_; }

 private:
  CallPlan plan_;
  int count_ = 0;
  std::string failed_;
};

}  // namespace Testing
