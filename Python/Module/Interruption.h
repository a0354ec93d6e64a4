// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <optional>

#include "Host/Util/Cancellation.h"
#include "Host/Util/EvaluationScope.h"
#include "Host/Util/PollScope.h"

namespace ValuePython {

/// Lets a signal of Python, Ctrl-C for example, stop what the host does on this thread while the object lasts. Signals
/// are handled by the main thread alone, which asks for them wherever its work could be stopped.
///
/// Made and used with the interpreter's lock, which is released while the work is done.
class Interruption {
 public:
  Interruption();

  [[nodiscard]] const ScEng::Cancellation& GetCancellation() const { return cancellation_; }

  /// Calls `work` without the lock, then throws what the handler of a signal has raised, if anything.
  template <class Work>
  void Run(const Work& work) {
    try {
      const pybind11::gil_scoped_release unlocked;
      work();
    } catch (const ScEng::Canceled&) {
      // Only a request of this object's own can have stopped it.
    }
    if (raised_) throw pybind11::error_already_set(*raised_);
  }

 private:
  void Ask();

  ScEng::Cancellation cancellation_;
  std::optional<pybind11::error_already_set> raised_;
  ScEng::EvaluationScope scope_;
  ScEng::PollScope poll_;
};

}  // namespace ValuePython
