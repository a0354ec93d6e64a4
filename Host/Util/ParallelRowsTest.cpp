// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/ParallelRows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Host/Util/Status.h"
#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::ParallelRows;
using Testing::ThreadsScope;

TEST(ParallelRows, CoversEachIndexOnce) {
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    for (const std::size_t count : {1U, 2U, 7U, 64U, 1000U, 4099U}) {
      for (const std::size_t grain : {0U, 1U, 3U, 64U, 5000U}) {
        std::vector<std::atomic<int>> visits(count);
        ParallelRows(count, grain, [&](std::size_t from, std::size_t to) {
          for (std::size_t i = from; i < to; ++i) ++visits.at(i);
        });
        const bool once = std::all_of(visits.begin(), visits.end(), [](const auto& visit) { return visit == 1; });
        EXPECT_TRUE(once) << threads << " threads, " << count << " rows, grain " << grain;
      }
    }
  }
}

TEST(ParallelRows, DoesNothingForNoRows) {
  const ThreadsScope scope(2);
  bool called = false;
  ParallelRows(0, 1, [&](std::size_t, std::size_t) { called = true; });
  EXPECT_FALSE(called);
}

TEST(ParallelRows, KeepsToTheGrain) {
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    for (const std::size_t count : {5U, 99U, 100U, 101U, 150U, 199U, 200U, 1000U}) {
      constexpr std::size_t kGrain = 100;
      std::mutex mutex;
      std::size_t shortest = count;
      ParallelRows(count, kGrain, [&](std::size_t from, std::size_t to) {
        const std::lock_guard lock(mutex);
        shortest = std::min(shortest, to - from);
      });
      EXPECT_GE(shortest, std::min(count, kGrain)) << threads << " threads, " << count << " rows";
    }
  }
}

TEST(ParallelRows, HandsAnExceptionToTheCaller) {
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    const auto run = [] {
      ParallelRows(1000, 1, [](std::size_t from, std::size_t to) {
        if (from <= 500 && 500 < to) throw std::runtime_error("row 500");
      });
    };
    EXPECT_THROW(run(), std::runtime_error) << threads << " threads";
    // Afterwards everything works as before.
    std::atomic<std::size_t> rows = 0;
    ParallelRows(1000, 1, [&](std::size_t from, std::size_t to) { rows += to - from; });
    EXPECT_EQ(rows, 1000U);
  }
}

TEST(ParallelRows, RunsWithinItself) {
  const ThreadsScope scope(4);
  std::atomic<std::size_t> cells = 0;
  ParallelRows(20, 1, [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) {
      ParallelRows(30, 1, [&](std::size_t inner_from, std::size_t inner_to) { cells += inner_to - inner_from; });
    }
  });
  EXPECT_EQ(cells, 600U);
}

TEST(ParallelRows, StaysOnTheCallerWithOneThread) {
  const ThreadsScope scope(1);
  std::set<std::thread::id> threads;
  ParallelRows(1000, 1, [&](std::size_t, std::size_t) { threads.insert(std::this_thread::get_id()); });
  EXPECT_EQ(threads, std::set<std::thread::id>{std::this_thread::get_id()});
}

TEST(ParallelRows, NumberOfThreadsCanBeSetAndRestored) {
  ScEng::SetNumThreads(0);
  const std::size_t offered = ScEng::GetNumThreads();
  EXPECT_GE(offered, 1U);
  ScEng::SetNumThreads(16);
  EXPECT_EQ(ScEng::GetNumThreads(), 16U);
  ScEng::SetNumThreads(1);
  EXPECT_EQ(ScEng::GetNumThreads(), 1U);
  ScEng::SetNumThreads(0);
  EXPECT_EQ(ScEng::GetNumThreads(), offered);
}

TEST(ParallelRows, MoreThreadsThanCoresReallyRun) {
  const ThreadsScope scope(8);
  // Each of eight rows waits until all eight have begun: with fewer threads this would never end, so it gives up.
  std::atomic<int> begun = 0;
  std::atomic<int> met = 0;
  ParallelRows(8, 1, [&](std::size_t from, std::size_t to) {
    begun += static_cast<int>(to - from);
    for (int i = 0; i < 100000 && begun < 8; ++i) std::this_thread::sleep_for(std::chrono::microseconds(100));
    if (begun == 8) met += static_cast<int>(to - from);
  });
  EXPECT_EQ(met, 8);
}

TEST(ParallelRows, NumberOfThreadsMayChangeWhileRowsRun) {
  const ThreadsScope scope(4);
  std::atomic<std::size_t> rows = 0;
  ParallelRows(200, 1, [&](std::size_t from, std::size_t to) {
    if (from == 0) ScEng::SetNumThreads(2);
    rows += to - from;
  });
  EXPECT_EQ(rows, 200U);
  EXPECT_EQ(ScEng::GetNumThreads(), 2U);
}

TEST(Status, IsFineUntilToldOtherwise) {
  const ScEng::Status fine;
  EXPECT_EQ(fine.GetCode(), 0U);
  EXPECT_EQ(fine.GetMessage(), "");
  EXPECT_FALSE(fine.IsError());
  const ScEng::Status warning(1, "half the rows");
  EXPECT_EQ(warning.GetCode(), 1U);
  EXPECT_FALSE(warning.IsError());
  const ScEng::Status error = ScEng::Status::Error("no rows");
  EXPECT_EQ(error.GetCode(), 2U);
  EXPECT_EQ(error.GetMessage(), "no rows");
  EXPECT_TRUE(error.IsError());
}

}  // namespace
