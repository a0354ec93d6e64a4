// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/ThreadPool.h"

#include <tbb/task_arena.h>
#include <tbb/task_group.h>

#include <algorithm>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "Host/Util/Log.h"
#include "Host/Util/WorkerLimit.h"

namespace {

using Arena = std::unique_ptr<tbb::task_arena>;

/// The arenas of pools that are gone, for pools to come. Each new arena makes oneTBB start or wake threads of its own
/// for it, and those of the arena before go on looking for work for a while: programs that make one small pool after
/// the other would end up with every thread that there may be.
class IdleArenas {
 public:
  Arena Take(std::size_t threads) {
    {
      const std::lock_guard lock(mutex_);
      const auto found = arenas_.find(threads);
      if (found != arenas_.end()) return std::move(arenas_.extract(found).mapped());
    }
    ScEng::LiftWorkerLimit();
    // An arena has two slots at least, so that the one thread of a pool of one is the one that waits.
    return std::make_unique<tbb::task_arena>(static_cast<int>(threads), threads == 1 ? 1 : 0);
  }

  void Keep(std::size_t threads, Arena arena) {
    const std::lock_guard lock(mutex_);
    arenas_.emplace(threads, std::move(arena));
  }

 private:
  std::mutex mutex_;
  std::multimap<std::size_t, Arena> arenas_;
};

// Never destroyed: pools may outlive every static object.
IdleArenas& GetIdleArenas() {
  static IdleArenas& arenas = *new IdleArenas;
  return arenas;
}

}  // namespace

class ThreadPool::Workers {
 public:
  explicit Workers(std::size_t threads)
      : threads_(std::max<std::size_t>(threads, 1)), arena_(GetIdleArenas().Take(threads_)) {}
  ~Workers() { GetIdleArenas().Keep(threads_, std::move(arena_)); }
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  [[nodiscard]] std::size_t GetNumThreads() const { return threads_; }

  void AddTask(std::function<void()> task) {
    arena_->execute([&] { group_.run([this, task = std::move(task)] { RunGuarded(task); }); });
  }

  std::exception_ptr Wait() {
    arena_->execute([this] { group_.wait(); });
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
  Arena arena_;
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
