// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/ParallelFor.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <limits>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Tests/Support/HostTesting.h"

namespace {

using Pieces = std::vector<std::pair<int, int>>;

/// The pieces that the body is called for, from first to last.
Pieces Split(int begin, int end, int chunk) {
  Pieces pieces;
  std::mutex mutex;
  ParallelFor(begin, end, chunk, [&](int from, int to) {
    const std::lock_guard lock(mutex);
    pieces.emplace_back(from, to);
  });
  std::sort(pieces.begin(), pieces.end());
  return pieces;
}

int CountThreads() { return static_cast<int>(std::max(1U, std::thread::hardware_concurrency())); }

TEST(ParallelFor, SplitsIntoPiecesOfTheChunk) { EXPECT_EQ(Split(0, 32, 16), (Pieces{{0, 16}, {16, 32}})); }

TEST(ParallelFor, EndsWithAShorterPieceForWhatRemains) {
  EXPECT_EQ(Split(0, 33, 16), (Pieces{{0, 16}, {16, 32}, {32, 33}}));
  EXPECT_EQ(Split(0, 31, 16), (Pieces{{0, 16}, {16, 31}}));
}

TEST(ParallelFor, MakesOnePieceOfLessThanAChunk) {
  EXPECT_EQ(Split(0, 5, 16), (Pieces{{0, 5}}));
  EXPECT_EQ(Split(0, 1, 1), (Pieces{{0, 1}}));
}

TEST(ParallelFor, CountsPiecesFromTheBegin) {
  EXPECT_EQ(Split(3, 10, 4), (Pieces{{3, 7}, {7, 10}}));
  EXPECT_EQ(Split(-5, 2, 3), (Pieces{{-5, -2}, {-2, 1}, {1, 2}}));
}

TEST(ParallelFor, CallsNothingForARangeWithoutEntries) {
  for (const int chunk : {-1, 1, 16}) {
    EXPECT_EQ(Split(0, 0, chunk), Pieces{});
    EXPECT_EQ(Split(7, 7, chunk), Pieces{});
    EXPECT_EQ(Split(7, 2, chunk), Pieces{});
    EXPECT_EQ(Split(std::numeric_limits<int>::max(), std::numeric_limits<int>::min(), chunk), Pieces{});
  }
}

TEST(ParallelFor, TakesAboutOnePiecePerThreadForAChunkOfMinusOne) {
  const int threads = CountThreads();
  // One entry more than a multiple of the threads in the first pieces: count / threads + 1.
  const Pieces pieces = Split(0, 100 * threads, -1);
  ASSERT_EQ(pieces.size(), static_cast<std::size_t>((100 * threads + 100) / 101));
  for (std::size_t i = 0; i + 1 < pieces.size(); ++i) EXPECT_EQ(pieces[i].second - pieces[i].first, 101);
  EXPECT_EQ(pieces.back().second, 100 * threads);
  // Fewer entries than threads: one each.
  EXPECT_EQ(Split(0, threads - 1, -1).size(), static_cast<std::size_t>(threads - 1));
}

TEST(ParallelFor, TakesTheWholeRangeOfIntegers) {
  constexpr int kLowest = std::numeric_limits<int>::min();
  constexpr int kHighest = std::numeric_limits<int>::max();
  EXPECT_EQ(Split(kLowest, kHighest, kHighest), (Pieces{{kLowest, -1}, {-1, kHighest - 1}, {kHighest - 1, kHighest}}));
  EXPECT_EQ(Split(kHighest - 3, kHighest, kHighest), (Pieces{{kHighest - 3, kHighest}}));
  const Pieces pieces = Split(kLowest, kHighest, -1);
  EXPECT_EQ(pieces.front().first, kLowest);
  EXPECT_EQ(pieces.back().second, kHighest);
}

TEST(ParallelFor, RefusesAChunkThatIsNoNumberOfEntries) {
  for (const int chunk : {0, -2, std::numeric_limits<int>::min()}) {
    bool called = false;
    EXPECT_THROW(ParallelFor(0, 10, chunk, [&](int, int) { called = true; }), std::invalid_argument) << chunk;
    EXPECT_FALSE(called);
  }
}

RC_GTEST_PROP(ParallelFor, PiecesJoinWithoutGapAndKeepToTheChunk, ()) {
  const int begin = *rc::gen::inRange(-1000, 1000);
  const int count = *rc::gen::inRange(0, 300);
  const int chunk = *rc::gen::inRange(1, 100);
  const Pieces pieces = Split(begin, begin + count, chunk);
  RC_ASSERT(pieces.size() == static_cast<std::size_t>((count + chunk - 1) / chunk));
  int next = begin;
  for (const auto& [from, to] : pieces) {
    RC_ASSERT(from == next);
    RC_ASSERT(to == std::min(begin + count, from + chunk));
    next = to;
  }
  RC_ASSERT(next == begin + count);
}

TEST(ParallelFor, RunsAsManyPiecesAtOnceAsThereAreCores) {
  const int threads = CountThreads();
  // More threads than cores are allowed, but not taken.
  const Testing::ThreadsScope scope(2 * static_cast<std::size_t>(threads));
  // Each piece waits until all have begun: with fewer threads this would never end, so it gives up.
  std::atomic<int> begun = 0;
  std::atomic<int> met = 0;
  ParallelFor(0, threads, 1, [&](int, int) {
    ++begun;
    for (int i = 0; i < 100000 && begun < threads; ++i) std::this_thread::sleep_for(std::chrono::microseconds(100));
    if (begun == threads) ++met;
  });
  EXPECT_EQ(met, threads);
}

TEST(ParallelFor, StaysOnTheCallerWithOneThread) {
  const Testing::ThreadsScope scope(1);
  std::set<std::thread::id> threads;
  ParallelFor(0, 100, 1, [&](int, int) { threads.insert(std::this_thread::get_id()); });
  EXPECT_EQ(threads, std::set<std::thread::id>{std::this_thread::get_id()});
}

TEST(ParallelFor, TakesOnePieceForOneThreadForAChunkOfMinusOne) {
  const Testing::ThreadsScope scope(1);
  EXPECT_EQ(Split(0, 100, -1), (Pieces{{0, 100}}));
}

TEST(ParallelFor, RunsWithinItself) {
  std::atomic<int> cells = 0;
  ParallelFor(0, 10, 1, [&](int, int) { ParallelFor(0, 30, 7, [&](int from, int to) { cells += to - from; }); });
  EXPECT_EQ(cells, 300);
}

/// Derived from a standard exception and holding more than it.
class RowError : public std::runtime_error {
 public:
  explicit RowError(int row) : std::runtime_error("row " + std::to_string(row)), row_(row) {}
  [[nodiscard]] int GetRow() const { return row_; }

 private:
  int row_;
};

TEST(ParallelFor, HandsTheExceptionToTheCallerAsItWasThrown) {
  try {
    ParallelFor(0, 100, 8, [](int from, int) {
      if (from == 48) throw RowError(48);
    });
    ADD_FAILURE() << "nothing was thrown";
  } catch (const RowError& error) {
    EXPECT_EQ(error.GetRow(), 48);
    EXPECT_STREQ(error.what(), "row 48");
  }
}

TEST(ParallelFor, HandsOverWhatIsNoStandardException) {
  EXPECT_THROW(ParallelFor(0, 4, 1, [](int, int) { throw 7; }), int);
  EXPECT_THROW(ParallelFor(0, 4, -1, [](int, int) { throw std::bad_alloc(); }), std::bad_alloc);
}

TEST(ParallelFor, RunsEveryPieceBeforeTheExceptionReachesTheCaller) {
  std::atomic<int> begun = 0;
  std::atomic<int> ended = 0;
  const auto run = [&] {
    ParallelFor(0, 100, 1, [&](int from, int) {
      ++begun;
      if (from % 10 == 0) throw RowError(from);
      std::this_thread::sleep_for(std::chrono::microseconds(50));
      ++ended;
    });
  };
  EXPECT_THROW(run(), RowError);
  EXPECT_EQ(begun, 100);
  EXPECT_EQ(ended, 90);
}

}  // namespace
