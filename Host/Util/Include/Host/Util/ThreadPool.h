// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "Host/Util/Api.h"

/// A queue of tasks that a fixed number of threads works off, built on oneTBB.
///
/// Tasks may be added while others run. The one thread of a pool of one is that which waits: its tasks run in `Wait` or
/// the destructor. Every task is run, also when an earlier one throws; the first exception is
/// kept and thrown again by `Wait`. The destructor waits for every task and logs an exception that nobody fetched.
class HOST_UTIL_API ThreadPool {
 public:
  /// `threads` workers; 0 counts as 1.
  explicit ThreadPool(std::size_t threads);
  ~ThreadPool();
  ThreadPool(const ThreadPool&) = delete;
  ThreadPool& operator=(const ThreadPool&) = delete;

  [[nodiscard]] std::size_t GetNumThreads() const;
  void AddTask(std::function<void()> task);
  /// Blocks until every task added so far has run, then throws the first exception that a task threw, if any.
  void Wait();

 private:
  class Workers;
  std::unique_ptr<Workers> workers_;
};
