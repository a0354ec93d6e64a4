// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/Interruption.h"

#include <utility>

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

constinit thread_local Interruption* current = nullptr;

}  // namespace

Interruption::Interruption()
    : outer_(current), scope_(&cancellation_, {}, IsMainThread() ? [this] { Ask(); } : ScEng::EvaluationScope::Poll()) {
  current = this;
}

Interruption::~Interruption() { current = outer_; }

Interruption* Interruption::GetCurrent() { return current; }

void Interruption::Stop(py::error_already_set error) {
  // The first one is why the others came.
  if (!raised_) raised_.emplace(std::move(error));
  cancellation_.Request();
}

void Interruption::Ask() {
  const py::gil_scoped_acquire lock;
  if (PyErr_CheckSignals() == 0) return;
  Stop(py::error_already_set());
}

}  // namespace ValuePython
