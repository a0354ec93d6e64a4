// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/ThreadPool.h"

#include <tbb/task_arena.h>
#include <tbb/task_group.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "Host/Util/EvaluationScope.h"
#include "Host/Util/Forks.h"
#include "Host/Util/Log.h"
#include "Host/Util/ParallelRows.h"
#include "Host/Util/TaskHandover.h"
#include "Host/Util/WorkContext.h"
#include "Host/Util/WorkerLimit.h"

namespace {

using Arena = std::unique_ptr<tbb::task_arena>;

/// The arenas of pools that are gone, for pools to come. Each new arena makes oneTBB start or wake threads of its own
/// for it, and those of the arena before go on looking for work for a while: programs that make one small pool after
/// the other would end up with every thread that there may be.
class IdleArenas {
 public:
  IdleArenas() { ScEng::HoldWhileForking(mutex_); }

  Arena Take(std::size_t threads) {
    {
      const std::lock_guard lock(mutex_);
      const auto found = arenas_.find(threads);
      if (found != arenas_.end()) return std::move(arenas_.extract(found).mapped());
    }
    // One place is kept for the thread that waits.
    return std::make_unique<tbb::task_arena>(static_cast<int>(threads), 1);
  }

  void Keep(std::size_t threads, Arena arena) {
    const std::lock_guard lock(mutex_);
    arenas_.emplace(threads, std::move(arena));
  }

 private:
  std::mutex mutex_;
  std::multimap<std::size_t, Arena> arenas_;
};

/// How many threads a pool has for which somebody asks that many.
std::size_t LimitThreads(std::size_t threads) {
  const std::size_t most = ScEng::GetNumThreads();
  return threads <= 1 || most <= 1 ? 1 : std::min(threads, ScEng::PrepareWorkers(most));
}

// Never destroyed: pools may outlive every static object.
IdleArenas& GetIdleArenas() {
  static IdleArenas& arenas = *new IdleArenas;
  return arenas;
}

}  // namespace

class ThreadPool::Workers {
 public:
  explicit Workers(std::size_t threads) : threads_(LimitThreads(threads)) {
    // Without workers the tasks are done as they are added.
    if (!ScEng::HasLostWorkers()) arena_ = GetIdleArenas().Take(threads_);
  }
  ~Workers() {
    if (arena_) GetIdleArenas().Keep(threads_, std::move(arena_));
  }
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  [[nodiscard]] std::size_t GetNumThreads() const { return threads_; }

  void AddTask(std::function<void()> task) {
    ScEng::WorkContext* const context = ScEng::GetWorkContext();
    ++added_;
    if (ScEng::HasLostWorkers()) {
      RunGuarded(context, task);
      return;
    }
    handover_.Give();
    arena_->execute([&] {
      group_.run([this, context, task = std::move(task)] {
        const ScEng::TaskHandover::Task handed(handover_);
        RunGuarded(context, task);
        ++done_;
        if (waiting_thread_ == std::this_thread::get_id()) pass_->Add(done_.exchange(0));
      });
    });
  }

  std::exception_ptr Wait() {
    ScEng::ProgressPass pass(added_.exchange(0));
    pass_ = &pass;
    waiting_thread_ = std::this_thread::get_id();
    if (!ScEng::HasLostWorkers()) arena_->execute([this] { group_.wait(); });
    handover_.Collect();
    waiting_thread_ = std::thread::id();
    const std::lock_guard lock(mutex_);
    return std::exchange(first_exception_, nullptr);
  }

 private:
  // A task that throws must not cancel the group: the others still have to run.
  void RunGuarded(ScEng::WorkContext* context, const std::function<void()>& task) {
    const ScEng::WorkContextGuard guard(context);
    try {
      if (context != nullptr) context->Poll();
      task();
    } catch (...) {
      const std::lock_guard lock(mutex_);
      if (!first_exception_) first_exception_ = std::current_exception();
    }
  }

  std::size_t threads_;
  Arena arena_;
  // The end of a group that this one may run within must not take its tasks along.
  tbb::task_group_context isolated_{tbb::task_group_context::isolated};
  tbb::task_group group_{isolated_};
  ScEng::TaskHandover handover_;
  std::mutex mutex_;
  std::exception_ptr first_exception_;
  std::atomic<std::size_t> added_{0};
  std::atomic<std::size_t> done_{0};
  // The pass that `Wait` makes of the tasks, for the thread in it alone.
  std::atomic<std::thread::id> waiting_thread_;
  ScEng::ProgressPass* pass_ = nullptr;
};

ThreadPool::ThreadPool(std::size_t threads)
    : workers_(std::make_unique<Workers>(threads)), exceptions_before_(std::uncaught_exceptions()) {}

ThreadPool::~ThreadPool() noexcept(false) {
  const std::exception_ptr unfetched = workers_->Wait();
  if (!unfetched) return;
  if (std::uncaught_exceptions() <= exceptions_before_) std::rethrow_exception(unfetched);
  try {
    std::rethrow_exception(unfetched);
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
