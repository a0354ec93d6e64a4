// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Jobs.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

namespace {

/// Starts so many threads and refuses the next, as the system does where it has no more.
std::function<std::thread(const std::function<void()>&)> StartUpTo(int most) {
  return [left = most](const std::function<void()>& run) mutable {
    if (left-- <= 0) throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    return std::thread(run);
  };
}

/// Takes tasks from a list until none is left, and keeps who took them.
struct TaskList {
  std::atomic<int> next{0};
  std::atomic<int> done{0};
  std::mutex mutex;
  std::set<std::thread::id> takers;

  std::function<void()> GetWork(int tasks) {
    return [this, tasks] {
      {
        const std::lock_guard lock(mutex);
        takers.insert(std::this_thread::get_id());
      }
      while (next++ < tasks) ++done;
    };
  }
};

TEST(Jobs, TheCallingThreadIsOneOfThem) {
  for (const std::size_t count : {0U, 1U, 2U, 5U}) {
    TaskList list;
    const std::size_t used = RunJobs(count, list.GetWork(100));
    EXPECT_EQ(used, count == 0 ? 1U : count);
    EXPECT_EQ(list.takers.size(), used);
    EXPECT_TRUE(list.takers.contains(std::this_thread::get_id()));
    EXPECT_EQ(list.done, 100);
  }
}

TEST(Jobs, WhereTheSystemRefusesAThreadHalfOfThoseGrantedLeaveRoomForTheWork) {
  const std::pair<int, std::size_t> cases[] = {{0, 1}, {1, 1}, {2, 2}, {3, 2}, {6, 4}};
  for (const auto& [granted, expected] : cases) {
    TaskList list;
    EXPECT_EQ(RunJobs(8, list.GetWork(100), StartUpTo(granted)), expected);
    EXPECT_EQ(list.takers.size(), expected);
    EXPECT_EQ(list.done, 100);
  }
}

}  // namespace
