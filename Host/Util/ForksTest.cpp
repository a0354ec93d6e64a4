// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/Forks.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "Host/Util/ParallelRows.h"
#include "Host/Util/ThreadPool.h"

namespace {

constexpr std::size_t kCount = 1000;

/// The sum of the numbers below `kCount`, in pieces.
std::size_t AddInRows() {
  std::atomic<std::size_t> sum{0};
  ScEng::ParallelRows(kCount, 1, [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) sum += i;
  });
  return sum;
}

std::size_t AddInPool() {
  std::atomic<std::size_t> sum{0};
  {
    ThreadPool pool(4);
    for (std::size_t i = 0; i < kCount; ++i) pool.AddTask([&sum, i] { sum += i; });
  }
  return sum;
}

constexpr std::size_t kSum = kCount * (kCount - 1) / 2;

/// Ends a forked process: 0 where it does all work itself, and does it right.
[[noreturn]] void EndChild() {
  // One that waits for a thread that it lacks ends by this signal.
  alarm(30);
  const bool is_right = AddInRows() == kSum && AddInPool() == kSum && ScEng::GetNumThreads() == 1;
  _exit(ScEng::HasLostWorkers() && is_right ? 0 : 1);
}

TEST(ForksTest, AChildOfAProcessWhoseThreadsWorkDoesItsWorkItself) {
  ScEng::SetNumThreads(4);
  std::atomic<bool> is_ending{false};
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      while (!is_ending) {
        AddInRows();
        AddInPool();
      }
    });
  }
  AddInRows();
  for (int turn = 0; turn < 20; ++turn) {
    const pid_t child = fork();
    if (child == 0) EndChild();
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "turn " << turn;
  }
  is_ending = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_FALSE(ScEng::HasLostWorkers());
  EXPECT_EQ(ScEng::GetNumThreads(), 4U);
  ScEng::SetNumThreads(0);
}

TEST(ForksTest, NoMutexIsHeldByAThreadThatTheChildLacks) {
  static std::mutex mutex;
  ScEng::HoldWhileForking(mutex);
  std::atomic<bool> is_ending{false};
  std::thread thread([&] {
    while (!is_ending) {
      const std::lock_guard lock(mutex);
      usleep(100);
    }
  });
  for (int turn = 0; turn < 20; ++turn) {
    const pid_t child = fork();
    if (child == 0) _exit(mutex.try_lock() ? 0 : 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "turn " << turn;
  }
  is_ending = true;
  thread.join();
}

TEST(ForksTest, CallsFunctionsInTheChildAlone) {
  static std::mutex mutex;
  static bool is_free = false;
  static int calls = 0;
  ScEng::HoldWhileForking(mutex);
  ScEng::CallInForks([] {
    ++calls;
    is_free = mutex.try_lock();
    if (is_free) mutex.unlock();
  });
  const pid_t child = fork();
  if (child == 0) _exit(calls == 1 && is_free ? 0 : 1);
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(calls, 0);
}

}  // namespace
