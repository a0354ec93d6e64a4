// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/ObjectOwner.h"

#include <mutex>
#include <utility>
#include <vector>

#include "Host/Util/Forks.h"
#include "Python/Module/InterpreterLock.h"

namespace ValuePython {
namespace {

/// Objects that threads without the interpreter's lock have let go of. Waiting for the lock could block for ever: who
/// has it may wait for that thread.
class LeftObjects {
 public:
  static LeftObjects& Get() {
    static auto* const objects = new LeftObjects;
    return *objects;
  }

  void Add(PyObject* object) {
    {
      const std::lock_guard lock(mutex_);
      objects_.push_back(object);
    }
    // Where the interpreter has too much pending, the objects go with the next one that is left.
    Py_AddPendingCall(&Release, nullptr);
  }

 private:
  LeftObjects() { ScEng::HoldWhileForking(mutex_); }

  static int Release(void*) {
    std::vector<PyObject*> objects;
    {
      const std::lock_guard lock(Get().mutex_);
      objects = std::exchange(Get().objects_, {});
    }
    for (PyObject* object : objects) Py_DECREF(object);
    return 0;
  }

  std::mutex mutex_;
  std::vector<PyObject*> objects_;
};

void ReleaseObject(PyObject* object) {
  if (!IsInterpreterThere()) return;
  if (PyGILState_Check() != 0) {
    Py_DECREF(object);
  } else {
    LeftObjects::Get().Add(object);
  }
}

}  // namespace

std::shared_ptr<const void> KeepObject(pybind11::object object) {
  PyObject* const kept = object.release().ptr();
  return {static_cast<const void*>(kept), [kept](const void*) { ReleaseObject(kept); }};
}

}  // namespace ValuePython
