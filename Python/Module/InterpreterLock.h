// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

namespace ValuePython {

// Python ends a thread that asks for its lock while the interpreter is going away, by unwinding its stack, which C++
// does not survive where a destructor asks. These stop such a thread for good instead: the process is about to end.

/// Takes the lock again that `PyEval_SaveThread` has given away.
void TakeLockAgain(PyThreadState* state);

/// Holds the lock while it lasts, on any thread: for code of Python that the host calls.
class WithLock {
 public:
  WithLock();
  ~WithLock();
  WithLock(const WithLock&) = delete;
  WithLock& operator=(const WithLock&) = delete;

 private:
  PyGILState_STATE state_;
};

/// Whether the interpreter can be asked for its lock.
bool IsInterpreterThere();

/// Stops this thread until the process ends.
[[noreturn]] void StopForGood();

}  // namespace ValuePython
