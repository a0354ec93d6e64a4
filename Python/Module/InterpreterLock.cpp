// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/InterpreterLock.h"

#include <cxxabi.h>
#include <unistd.h>

namespace ValuePython {

void StopForGood() {
  for (;;) pause();
}

bool IsInterpreterThere() {
#if PY_VERSION_HEX >= 0x030D0000
  return Py_IsInitialized() != 0 && Py_IsFinalizing() == 0;
#else
  return Py_IsInitialized() != 0 && _Py_IsFinalizing() == 0;
#endif
}

void TakeLockAgain(PyThreadState* state) {
  try {
    PyEval_RestoreThread(state);
  } catch (const abi::__forced_unwind&) {
    StopForGood();
  }
}

WithLock::WithLock() {
  if (!IsInterpreterThere()) StopForGood();
  try {
    state_ = PyGILState_Ensure();
  } catch (const abi::__forced_unwind&) {
    StopForGood();
  }
}

WithLock::~WithLock() { PyGILState_Release(state_); }

}  // namespace ValuePython
