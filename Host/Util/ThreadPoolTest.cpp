// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/ThreadPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <memory>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Host/Util/Log.h"
#include "Host/Util/ParallelRows.h"
#include "Tests/Support/HostTesting.h"

namespace {

using Testing::ThreadsScope;

TEST(ThreadPool, TellsItsNumberOfThreads) {
  const ThreadsScope scope(16);
  EXPECT_EQ(ThreadPool(3).GetNumThreads(), 3U);
  EXPECT_EQ(ThreadPool(16).GetNumThreads(), 16U);
  EXPECT_EQ(ThreadPool(0).GetNumThreads(), 1U);
}

TEST(ThreadPool, HasNoMoreThreadsThanTheHostAllows) {
  {
    const ThreadsScope scope(2);
    EXPECT_EQ(ThreadPool(16).GetNumThreads(), 2U);
    EXPECT_EQ(ThreadPool(1).GetNumThreads(), 1U);
  }
  const ThreadsScope scope(1);
  ThreadPool pool(16);
  EXPECT_EQ(pool.GetNumThreads(), 1U);
  std::set<std::thread::id> threads;
  for (int i = 0; i < 100; ++i) pool.AddTask([&threads] { threads.insert(std::this_thread::get_id()); });
  pool.Wait();
  EXPECT_EQ(threads, std::set<std::thread::id>{std::this_thread::get_id()});
}

TEST(ThreadPool, RunsEveryTaskBeforeItsDestructorReturns) {
  const ThreadsScope scope(16);
  for (const std::size_t threads : {0U, 1U, 2U, 16U}) {
    std::vector<int> ran(500, 0);
    {
      ThreadPool pool(threads);
      for (int& one : ran) pool.AddTask([&one] { ++one; });
    }
    EXPECT_EQ(ran, std::vector<int>(500, 1)) << threads << " threads";
  }
}

TEST(ThreadPool, RunsTasksThatTasksAdd) {
  const ThreadsScope scope(4);
  std::atomic<int> ran = 0;
  {
    ThreadPool pool(4);
    for (int i = 0; i < 20; ++i) {
      pool.AddTask([&] {
        ++ran;
        for (int j = 0; j < 5; ++j) {
          pool.AddTask([&] {
            ++ran;
            pool.AddTask([&ran] { ++ran; });
          });
        }
      });
    }
  }
  EXPECT_EQ(ran, 20 + 20 * 5 * 2);
}

TEST(ThreadPool, RunsNoMoreTasksAtOnceThanItHasThreads) {
  const ThreadsScope scope(3);
  for (const int threads : {1, 2, 3}) {
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    for (int round = 0; round < 20; ++round) {
      ThreadPool pool(static_cast<std::size_t>(threads));
      for (int i = 0; i < 20; ++i) {
        pool.AddTask([&] {
          const int now = ++running;
          int seen = most;
          while (seen < now && !most.compare_exchange_weak(seen, now)) {
          }
          std::this_thread::sleep_for(std::chrono::microseconds(50));
          --running;
        });
      }
      pool.Wait();
    }
    EXPECT_LE(most, threads);
  }
}

TEST(ThreadPool, TakesTasksFromSeveralThreads) {
  std::atomic<int> ran = 0;
  {
    ThreadPool pool(2);
    std::vector<std::thread> feeders;
    for (int i = 0; i < 4; ++i) {
      feeders.emplace_back([&] {
        for (int j = 0; j < 100; ++j) pool.AddTask([&ran] { ++ran; });
      });
    }
    for (std::thread& feeder : feeders) feeder.join();
  }
  EXPECT_EQ(ran, 400);
}

TEST(ThreadPool, WaitsForWhatWasAdded) {
  ThreadPool pool(4);
  std::atomic<int> ran = 0;
  for (int round = 1; round <= 3; ++round) {
    for (int i = 0; i < 50; ++i) pool.AddTask([&ran] { ++ran; });
    pool.Wait();
    EXPECT_EQ(ran, round * 50);
  }
  pool.Wait();
}

TEST(ThreadPool, RunsTheOtherTasksAfterOneThrows) {
  for (const std::size_t threads : {1U, 4U}) {
    ThreadPool pool(threads);
    std::atomic<int> ran = 0;
    for (int i = 0; i < 100; ++i) {
      pool.AddTask([&ran, i] {
        ++ran;
        if (i % 10 == 0) throw std::runtime_error("task failed");
      });
    }
    EXPECT_THROW(pool.Wait(), std::runtime_error);
    EXPECT_EQ(ran, 100);
    // The exception has been handed over; the pool goes on.
    pool.AddTask([&ran] { ++ran; });
    EXPECT_NO_THROW(pool.Wait());
    EXPECT_EQ(ran, 101);
  }
}

TEST(ThreadPool, WaitThrowsTheFirstException) {
  const ThreadsScope scope(4);
  ThreadPool pool(4);
  // The pool lets go of a task when it is done with it, its exception included.
  auto first_task = std::make_shared<int>(1);
  const std::weak_ptr<int> first_is_running = first_task;
  pool.AddTask([held = std::move(first_task)] { throw std::runtime_error("first"); });
  pool.AddTask([first_is_running] {
    while (!first_is_running.expired()) std::this_thread::yield();
    throw std::runtime_error("second");
  });
  std::string caught;
  try {
    pool.Wait();
  } catch (const std::runtime_error& error) {
    caught = error.what();
  }
  EXPECT_EQ(caught, "first");
}

#if defined(__linux__)
std::ptrdiff_t CountThreadsOfTheProcess() {
  const std::filesystem::directory_iterator threads("/proc/self/task");
  return std::distance(begin(threads), end(threads));
}

TEST(ThreadPool, ManyPoolsInTurnDoNotGatherThreads) {
  const std::ptrdiff_t before = CountThreadsOfTheProcess();
  std::atomic<int> ran = 0;
  for (int i = 0; i < 500; ++i) {
    ThreadPool pool(2);
    for (int task = 0; task < 4; ++task) pool.AddTask([&ran] { ++ran; });
  }
  EXPECT_EQ(ran, 2000);
  EXPECT_LE(CountThreadsOfTheProcess() - before, 16);
}
#endif

TEST(ThreadPool, DestructorThrowsWhatNobodyFetched) {
  for (const std::size_t threads : {1U, 4U}) {
    const ThreadsScope scope(threads);
    std::atomic<int> ran = 0;
    std::string caught;
    try {
      ThreadPool pool(threads);
      for (int i = 0; i < 20; ++i) {
        pool.AddTask([&ran, i] {
          ++ran;
          if (i == 7) throw std::runtime_error("the rows are gone");
        });
      }
    } catch (const std::runtime_error& error) {
      caught = error.what();
    }
    EXPECT_EQ(caught, "the rows are gone");
    EXPECT_EQ(ran, 20);
  }
  EXPECT_THROW(
      {
        ThreadPool pool(2);
        pool.AddTask([] { throw std::bad_alloc(); });
      },
      std::bad_alloc);
}

TEST(ThreadPool, AnExceptionThatIsOnItsWayStandsForThatOfATask) {
  std::vector<std::string> logged;
  Log::SetSink([&](Log::Level, const std::string& text) { logged.push_back(text); });
  std::string caught;
  try {
    ThreadPool pool(2);
    pool.AddTask([] { throw std::runtime_error("the rows are gone"); });
    throw std::logic_error("the caller is gone");
  } catch (const std::exception& error) {
    caught = error.what();
  }
  Log::SetSink(nullptr);
  EXPECT_EQ(caught, "the caller is gone");
  ASSERT_EQ(logged.size(), 1U);
  EXPECT_NE(logged[0].find("the rows are gone"), std::string::npos);
}

TEST(ThreadPool, ThrowsAlsoWhereItWorksForADestructor) {
  // The exception that is on its way is none of the pool's, which was made after it.
  struct Worker {
    ~Worker() {
      try {
        ThreadPool pool(2);
        pool.AddTask([] { throw std::runtime_error("the rows are gone"); });
      } catch (const std::runtime_error& error) {
        *caught = error.what();
      }
    }
    std::string* caught;
  };
  std::string caught;
  try {
    const Worker worker{&caught};
    throw 7;
  } catch (int) {
  }
  EXPECT_EQ(caught, "the rows are gone");
}

TEST(ThreadPool, RunsItsTasksAlthoughTheGroupAroundItFails) {
  const ThreadsScope scope(4);
  std::atomic<int> ran = 0;
  std::atomic<int> pools = 0;
  const auto run = [&] {
    ScEng::ParallelRows(64, 1, [&](std::size_t from, std::size_t to) {
      for (std::size_t i = from; i < to; ++i) {
        ++pools;
        ThreadPool pool(2);
        for (int task = 0; task < 10; ++task) pool.AddTask([&ran] { ++ran; });
        if (i == 0) throw std::runtime_error("row 0");
        pool.Wait();
      }
    });
  };
  EXPECT_THROW(run(), std::runtime_error);
  EXPECT_EQ(ran, 10 * pools);
}

}  // namespace
