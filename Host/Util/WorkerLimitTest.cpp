// SPDX-License-Identifier: Apache-2.0
//
// What happens where threads cannot be started: this file stands in for the function that starts them.

#include "Host/Util/WorkerLimit.h"

#include <gtest/gtest.h>

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // These stand in for it themselves.

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "Host/Util/ParallelFor.h"
#include "Host/Util/ParallelRows.h"
#include "Host/Util/ThreadPool.h"

namespace {

// How many threads may be alive beside the first; negative for any number.
std::atomic<int> most_threads{-1};
std::atomic<int> threads_alive{0};

struct Start {
  void* (*routine)(void*);
  void* argument;
};

void* RunAndCount(void* data) {
  const Start start = *static_cast<Start*>(data);
  delete static_cast<Start*>(data);
  void* result = start.routine(start.argument);
  --threads_alive;
  return result;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int pthread_create(pthread_t* thread,
                                                                     const pthread_attr_t* attributes,
                                                                     void* (*routine)(void*), void* argument) {
  using Function = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_create"));
  if (++threads_alive > most_threads && most_threads >= 0) {
    --threads_alive;
    return EAGAIN;
  }
  auto* start = new Start{routine, argument};
  const int error = next(thread, attributes, &RunAndCount, start);
  if (error != 0) {
    delete start;
    --threads_alive;
  }
  return error;
}

namespace {

/// Uses everything that brings in threads, says on standard error how many it saw, and ends the process.
[[noreturn]] void WorkAndExit(int threads) {
  most_threads = threads;
  ScEng::SetNumThreads(16);
  std::set<std::thread::id> seen;
  std::mutex mutex;
  std::atomic<std::size_t> done = 0;
  const auto work = [&](std::size_t count) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    done += count;
    const std::lock_guard lock(mutex);
    seen.insert(std::this_thread::get_id());
  };
  ScEng::ParallelRows(200, 1, [&](std::size_t from, std::size_t to) { work(to - from); });
  ThreadPool pool(16);
  for (int i = 0; i < 100; ++i) pool.AddTask([&] { work(1); });
  pool.Wait();
  ParallelFor(0, 50, 1, [&](int, int) { work(1); });
  std::cerr << done << " done, " << (seen.size() <= static_cast<std::size_t>(threads) + 1 ? "few" : "many")
            << " threads, " << (seen.size() > 1 ? "several" : "one") << std::endl;
  std::quick_exit(0);
}

TEST(WorkerLimitDeathTest, TheCallerWorksWhereNoThreadCanBeStarted) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(WorkAndExit(0), testing::ExitedWithCode(0), "350 done, few threads, one");
}

TEST(WorkerLimitDeathTest, AsManyWorkAsCanBeStarted) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(WorkAndExit(3), testing::ExitedWithCode(0), "350 done, few threads, several");
}

}  // namespace

#endif
