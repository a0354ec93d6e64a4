// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "Host/Util/Api.h"

/// A queue of tasks that a fixed number of threads works through, built on oneTBB.
///
/// Tasks may be added while others run. The thread that waits is one of the pool's, and the only one of a pool of one:
/// its tasks run in `Wait` or the destructor. Every task is run, also when an earlier one throws; the first exception
/// is kept and thrown again by `Wait`.
///
/// No exception is lost: the destructor waits too and throws what no `Wait` has fetched. Only where it runs because
/// another exception is on its way, which then stands for both, it logs its own instead. A pool that is a member of a
/// class, or owned by a smart pointer, is in a place that must not throw, so there `Wait` has to come first.
///
/// Tasks work for the `EvaluationScope` of the thread that adds them; once that has been asked to stop, the tasks that
/// are left are not run, and `Wait` throws `Canceled`.
class HOST_UTIL_API ThreadPool {
 public:
  /// `threads` workers, but no more than `ScEng::GetNumThreads`; 0 counts as 1.
  explicit ThreadPool(std::size_t threads);
  ~ThreadPool() noexcept(false);
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  [[nodiscard]] std::size_t GetNumThreads() const;
  void AddTask(std::function<void()> task);
  /// Blocks until every task added so far has run, then throws the first exception that a task threw, if any.
  void Wait();

 private:
  class Workers;
  std::unique_ptr<Workers> workers_;
  // How many exceptions were on their way when the pool was made.
  int exceptions_before_;
};
