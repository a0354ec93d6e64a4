// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/Interruption.h"

#include <functional>

namespace py = pybind11;

namespace ValuePython {
namespace {

/// Whether this is the thread that Python handles signals on.
bool IsMainThread() {
  // Without the guard of a local static, which a thread would hold that waits for the interpreter's lock.
  static unsigned long main_thread = 0;
  if (main_thread == 0) {
    main_thread = py::module_::import("threading").attr("main_thread")().attr("ident").cast<unsigned long>();
  }
  return PyThread_get_thread_ident() == main_thread;
}

}  // namespace

Interruption::Interruption()
    : scope_(&cancellation_), poll_(IsMainThread() ? [this] { Ask(); } : std::function<void()>()) {}

void Interruption::Ask() {
  const py::gil_scoped_acquire lock;
  if (PyErr_CheckSignals() == 0) return;
  raised_.emplace();
  cancellation_.Request();
}

}  // namespace ValuePython
