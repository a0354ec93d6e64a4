// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/ThreadPool.h"

#include <tbb/task_arena.h>
#include <tbb/task_group.h>

#include <algorithm>
#include <exception>
#include <mutex>
#include <utility>

#include "Host/Util/Log.h"
#include "Host/Util/WorkerLimit.h"

class ThreadPool::Workers {
 public:
  explicit Workers(std::size_t threads)
      : threads_(std::max<std::size_t>(threads, 1)),
        // An arena has two slots at least, so that the one thread of a pool of one is the one that waits.
        arena_(static_cast<int>(threads_), threads_ == 1 ? 1 : 0) {
    ScEng::LiftWorkerLimit();
  }

  [[nodiscard]] std::size_t GetNumThreads() const { return threads_; }

  void AddTask(std::function<void()> task) {
    arena_.execute([&] { group_.run([this, task = std::move(task)] { RunGuarded(task); }); });
  }

  std::exception_ptr Wait() {
    arena_.execute([this] { group_.wait(); });
    const std::lock_guard lock(mutex_);
    return std::exchange(first_exception_, nullptr);
  }

 private:
  // A task that throws must not cancel the group: the others still have to run.
  void RunGuarded(const std::function<void()>& task) {
    try {
      task();
    } catch (...) {
      const std::lock_guard lock(mutex_);
      if (!first_exception_) first_exception_ = std::current_exception();
    }
  }

  std::size_t threads_;
  tbb::task_arena arena_;
  tbb::task_group group_;
  std::mutex mutex_;
  std::exception_ptr first_exception_;
};

ThreadPool::ThreadPool(std::size_t threads) : workers_(std::make_unique<Workers>(threads)) {}

ThreadPool::~ThreadPool() {
  try {
    if (const std::exception_ptr unfetched = workers_->Wait()) std::rethrow_exception(unfetched);
  } catch (const std::exception& error) {
    Log::Error("ThreadPool: a task failed: %s", error.what());
  } catch (...) {
    Log::Error("ThreadPool: a task failed with an exception of unknown type");
  }
}

std::size_t ThreadPool::GetNumThreads() const { return workers_->GetNumThreads(); }

void ThreadPool::AddTask(std::function<void()> task) { workers_->AddTask(std::move(task)); }

void ThreadPool::Wait() {
  if (const std::exception_ptr error = workers_->Wait()) std::rethrow_exception(error);
}
