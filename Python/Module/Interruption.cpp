// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/Interruption.h"

#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <unordered_set>
#include <utility>

#include "Python/Module/InterpreterLock.h"

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

/// What runs without the interpreter's lock at the moment.
class RunningWork {
 public:
  static RunningWork& Get() {
    static auto* const work = new RunningWork;
    return *work;
  }

  void Begin(Interruption* work) {
    const std::lock_guard lock(mutex_);
    running_.insert(work);
    // What the main thread still does at the end is done to its own end.
    if (is_ending_ && !IsMainThread()) work->cancellation_.Request();
  }

  /// False where the thread must not go back to Python.
  [[nodiscard]] bool End(Interruption* work) {
    const std::lock_guard lock(mutex_);
    running_.erase(work);
    if (is_ending_) ended_.notify_all();
    return !is_ending_;
  }

  void StopAll() {
    // Work that does not notice within this time is left to itself.
    constexpr auto kPatience = std::chrono::seconds(2);
    std::unique_lock lock(mutex_);
    is_ending_ = true;
    for (Interruption* work : running_) work->cancellation_.Request();
    ended_.wait_for(lock, kPatience, [this] { return running_.empty(); });
  }

 private:
  RunningWork() {
    // Of the threads of a process that forks, its child has one.
    pthread_atfork([] { Get().mutex_.lock(); }, [] { Get().mutex_.unlock(); },
                   [] {
                     Get().running_.clear();
                     Get().mutex_.unlock();
                   });
  }

  std::mutex mutex_;
  std::condition_variable ended_;
  std::unordered_set<Interruption*> running_;
  bool is_ending_ = false;
};

Interruption::Interruption()
    : outer_(current), scope_(&cancellation_), poll_(IsMainThread() ? [this] { Ask(); } : std::function<void()>()) {
  current = this;
}

Interruption::~Interruption() { current = outer_; }

Interruption* Interruption::GetCurrent() { return current; }

void Interruption::Stop(py::error_already_set error) {
  // The first one is why the others came.
  if (!raised_) raised_.emplace(std::move(error));
  cancellation_.Request();
}

void Interruption::RememberFailure(const void* node, py::object exception) { failures_[node] = std::move(exception); }

py::object Interruption::FindFailure(const void* node) const {
  const auto found = failures_.find(node);
  return found == failures_.end() ? py::object() : found->second;
}

void Interruption::Ask() {
  const WithLock lock;
  if (PyErr_CheckSignals() == 0) return;
  Stop(py::error_already_set());
}

void Interruption::Run(const std::function<void()>& work) {
  RunningWork& running = RunningWork::Get();
  std::exception_ptr failure;
  bool was_stopped = false;
  PyThreadState* const state = PyEval_SaveThread();
  running.Begin(this);
  try {
    work();
  } catch (const ScEng::Canceled&) {
    was_stopped = true;
  } catch (...) {
    failure = std::current_exception();
  }
  if (!running.End(this) && !IsMainThread()) StopForGood();
  TakeLockAgain(state);
  if (raised_) throw py::error_already_set(*raised_);
  if (failure) std::rethrow_exception(failure);
  if (was_stopped) throw std::runtime_error("the evaluation was stopped");
}

void Interruption::StopAll() {
  PyThreadState* const state = PyEval_SaveThread();
  RunningWork::Get().StopAll();
  TakeLockAgain(state);
}

}  // namespace ValuePython
