// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <functional>
#include <optional>
#include <unordered_map>

#include "Host/Util/Cancellation.h"
#include "Host/Util/EvaluationScope.h"
#include "Host/Util/PollScope.h"

namespace ValuePython {

/// Lets a signal of Python, Ctrl-C for example, stop what the host does on this thread while the object lasts. Signals
/// are handled by the main thread alone, which asks for them wherever its work could be stopped. At the end of the
/// interpreter all work of other threads is stopped, and they with it.
///
/// Made and used with the interpreter's lock, which is released while the work is done.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  /// The innermost one of this thread; null where there is none.
  static Interruption* GetCurrent();

  [[nodiscard]] const ScEng::Cancellation& GetCancellation() const { return cancellation_; }

  /// Stops the work for an exception that code of Python has raised within it, which `Run` then throws. With the lock.
  void Stop(pybind11::error_already_set error);

  /// Remembers the exception of Python by which a node has failed; with the lock.
  void RememberFailure(const void* node, pybind11::object exception);
  /// The exception that is remembered of a node; null for none. With the lock.
  [[nodiscard]] pybind11::object FindFailure(const void* node) const;

  /// Calls `work` without the lock, then throws what the handler of a signal has raised, if anything.
  void Run(const std::function<void()>& work);

  /// Stops all that runs on other threads, and waits until they have ended it; with the lock. What is begun afterwards
  /// on a thread stops at once, and the thread for good.
  static void StopAll();

 private:
  friend class RunningWork;
  void Ask();

  Interruption* outer_;
  ScEng::Cancellation cancellation_;
  std::optional<pybind11::error_already_set> raised_;
  std::unordered_map<const void*, pybind11::object> failures_;
  ScEng::EvaluationScope scope_;
  ScEng::PollScope poll_;
};

}  // namespace ValuePython
