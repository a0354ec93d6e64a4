// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/EvaluationScope.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "Host/Util/ParallelFor.h"
#include "Host/Util/ParallelRows.h"
#include "Host/Util/ThreadPool.h"
#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::Canceled;
using ScEng::Cancellation;
using ScEng::EvaluationScope;
using ScEng::ParallelRows;
using ScEng::PollCancellation;
using ScEng::ProgressPart;
using ScEng::ProgressPass;
using Testing::ThreadsScope;

void Sleep(int milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

// ---- Requests ----

TEST(Cancellation, StandsUntilItIsReset) {
  Cancellation cancellation;
  EXPECT_FALSE(cancellation.IsRequested());
  cancellation.Request();
  EXPECT_TRUE(cancellation.IsRequested());
  cancellation.Reset();
  EXPECT_FALSE(cancellation.IsRequested());
}

TEST(Cancellation, StopsTheWorkOfItsScopeAlone) {
  Cancellation cancellation;
  cancellation.Request();
  EXPECT_NO_THROW(PollCancellation());
  {
    const EvaluationScope scope(&cancellation);
    EXPECT_FALSE(scope.WasStopped());
    EXPECT_THROW(PollCancellation(), Canceled);
    EXPECT_TRUE(scope.WasStopped());
    std::thread([] { EXPECT_NO_THROW(PollCancellation()); }).join();
  }
  EXPECT_NO_THROW(PollCancellation());
}

TEST(Cancellation, OfAnOuterScopeStopsTheInnerOne) {
  Cancellation outer_request;
  Cancellation inner_request;
  const EvaluationScope outer(&outer_request);
  {
    const EvaluationScope inner(&inner_request);
    inner_request.Request();
    EXPECT_THROW(PollCancellation(), Canceled);
    EXPECT_FALSE(outer.WasStopped());
    inner_request.Reset();
    EXPECT_NO_THROW(PollCancellation());
    outer_request.Request();
    EXPECT_THROW(PollCancellation(), Canceled);
  }
  EXPECT_THROW(PollCancellation(), Canceled);
  EXPECT_TRUE(outer.WasStopped());
}

TEST(Cancellation, StopsRowsBetweenTwoPieces) {
  for (const std::size_t threads : {1U, 2U, 4U}) {
    const ThreadsScope threads_scope(threads);
    Cancellation cancellation;
    const EvaluationScope scope(&cancellation);
    std::atomic<std::size_t> rows = 0;
    EXPECT_THROW(ParallelRows(1000, 1,
                              [&](std::size_t from, std::size_t to) {
                                rows += to - from;
                                cancellation.Request();
                                Sleep(5);
                              }),
                 Canceled);
    // Each thread may have been within a piece, which has one row as long as none has taken less than a millisecond.
    EXPECT_GE(rows, 1U);
    EXPECT_LE(rows, threads);
  }
}

TEST(Cancellation, StopsRowsOnOneThreadThatTakeLong) {
  const ThreadsScope threads_scope(1);
  Cancellation cancellation;
  const EvaluationScope scope(&cancellation);
  std::vector<std::size_t> pieces;
  EXPECT_THROW(ParallelRows(100, 1,
                            [&](std::size_t from, std::size_t to) {
                              pieces.push_back(to - from);
                              Sleep(2);
                              if (to == 20) cancellation.Request();
                            }),
               Canceled);
  EXPECT_EQ(pieces, std::vector<std::size_t>(20, 1));
}

TEST(Cancellation, StopsRowsWithinRows) {
  const ThreadsScope threads_scope(4);
  Cancellation cancellation;
  const EvaluationScope scope(&cancellation);
  std::atomic<int> begun = 0;
  const auto inner = [&](std::size_t, std::size_t) {
    ++begun;
    cancellation.Request();
    Sleep(5);
  };
  EXPECT_THROW(ParallelRows(100, 1, [&](std::size_t, std::size_t) { ParallelRows(100, 1, inner); }), Canceled);
  EXPECT_LE(begun, 16);
}

TEST(Cancellation, LeavesOutTheTasksThatAreLeft) {
  for (const std::size_t threads : {1U, 4U}) {
    const ThreadsScope threads_scope(threads);
    Cancellation cancellation;
    const EvaluationScope scope(&cancellation);
    std::atomic<int> ran = 0;
    ThreadPool pool(threads);
    for (int i = 0; i < 200; ++i) {
      pool.AddTask([&] {
        ++ran;
        cancellation.Request();
        Sleep(5);
      });
    }
    EXPECT_THROW(pool.Wait(), Canceled);
    EXPECT_GE(ran, 1);
    EXPECT_LE(ran, static_cast<int>(threads));
  }
}

TEST(Cancellation, LeavesOutThePiecesThatAreLeft) {
  const ThreadsScope threads_scope(1);
  Cancellation cancellation;
  const EvaluationScope scope(&cancellation);
  int ran = 0;
  EXPECT_THROW(ParallelFor(0, 100, 1,
                           [&](int, int) {
                             ++ran;
                             cancellation.Request();
                           }),
               Canceled);
  EXPECT_EQ(ran, 1);
}

TEST(Cancellation, IsSeenByLoopsOnThreadsOfThePool) {
  const ThreadsScope threads_scope(4);
  Cancellation cancellation;
  const EvaluationScope scope(&cancellation);
  std::atomic<bool> gave_up = false;
  ThreadPool pool(4);
  for (int i = 0; i < 4; ++i) {
    pool.AddTask([&] {
      for (int step = 0; step < 10000; ++step) {
        PollCancellation();
        Sleep(1);
      }
      gave_up = true;
    });
  }
  std::thread other([&] {
    Sleep(10);
    cancellation.Request();
  });
  EXPECT_THROW(pool.Wait(), Canceled);
  other.join();
  EXPECT_FALSE(gave_up);
  EXPECT_TRUE(scope.WasStopped());
}

TEST(EvaluationScope, AsksItsOwnThreadWhetherToStop) {
  Cancellation cancellation;
  std::size_t asked = 0;
  const auto own_thread = std::this_thread::get_id();
  const EvaluationScope scope(&cancellation, {}, [&] {
    EXPECT_EQ(std::this_thread::get_id(), own_thread);
    if (++asked == 3) cancellation.Request();
  });
  const auto work = [] {
    for (;;) PollCancellation();
  };
  EXPECT_THROW(work(), Canceled);
  EXPECT_EQ(asked, 3U);
  EXPECT_TRUE(scope.WasStopped());
}

TEST(EvaluationScope, AsksForItsInnerScopesToo) {
  Cancellation outer_request;
  Cancellation inner_request;
  const EvaluationScope outer(&outer_request, {}, [&] { outer_request.Request(); });
  const EvaluationScope inner(&inner_request);
  const auto work = [] {
    for (;;) PollCancellation();
  };
  EXPECT_THROW(work(), Canceled);
}

TEST(EvaluationScope, RowsKeepToTheGrainAndComeOnceEach) {
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope threads_scope(threads);
    const EvaluationScope scope(nullptr);
    for (const std::size_t count : {5U, 99U, 100U, 101U, 150U, 199U, 200U, 1000U, 100000U}) {
      constexpr std::size_t kGrain = 100;
      std::mutex mutex;
      std::size_t shortest = count;
      std::vector<std::atomic<int>> visits(count);
      ParallelRows(count, kGrain, [&](std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i) ++visits.at(i);
        const std::lock_guard lock(mutex);
        shortest = std::min(shortest, to - from);
      });
      EXPECT_GE(shortest, std::min(count, kGrain)) << threads << " threads, " << count << " rows";
      EXPECT_TRUE(std::all_of(visits.begin(), visits.end(), [](const auto& visit) { return visit == 1; }));
    }
  }
}

// ---- Progress ----

/// What a scope was told, and that it was told on its own thread.
class Told {
 public:
  [[nodiscard]] EvaluationScope::Progress Listen() {
    return [this, thread = std::this_thread::get_id()](double fraction) {
      EXPECT_EQ(std::this_thread::get_id(), thread);
      EXPECT_GT(fraction, fractions.empty() ? 0.0 : fractions.back());
      EXPECT_LE(fraction, 1.0);
      fractions.push_back(fraction);
    };
  }
  std::vector<double> fractions;
};

TEST(Progress, OfPassesTakesHalfOfWhatIsLeft) {
  Told told;
  const EvaluationScope scope(nullptr, told.Listen());
  for (int i = 0; i < 3; ++i) {
    ProgressPass pass(4);
    pass.Step();
    Sleep(12);
    pass.Step();
  }
  // The middle of each pass is told of, since nothing was told of for so long.
  ASSERT_EQ(told.fractions.size(), 3U);
  EXPECT_DOUBLE_EQ(told.fractions[0], 0.25);
  EXPECT_DOUBLE_EQ(told.fractions[1], 0.625);
  EXPECT_DOUBLE_EQ(told.fractions[2], 0.8125);
}

TEST(Progress, OfPartsIsAsTheySay) {
  Told told;
  const EvaluationScope scope(nullptr, told.Listen());
  const auto pass_half = [] {
    ProgressPass pass(10);
    Sleep(12);
    pass.Step(5);
  };
  {
    const ProgressPart preparation(0.2);
    pass_half();
  }
  const ProgressPart rest(1.0, 2);
  pass_half();
  pass_half();
  ASSERT_EQ(told.fractions.size(), 3U);
  EXPECT_DOUBLE_EQ(told.fractions[0], 0.1);
  EXPECT_DOUBLE_EQ(told.fractions[1], 0.4);
  EXPECT_DOUBLE_EQ(told.fractions[2], 0.8);
}

TEST(Progress, OfRowsAndTasksRises) {
  for (const std::size_t threads : {1U, 4U}) {
    const ThreadsScope threads_scope(threads);
    Told told;
    const EvaluationScope scope(nullptr, told.Listen());
    ParallelRows(40, 1, [](std::size_t from, std::size_t to) { Sleep(3 * static_cast<int>(to - from)); });
    const std::size_t of_rows = told.fractions.size();
    EXPECT_GE(of_rows, 2U);
    EXPECT_LE(told.fractions.back(), 0.5);
    ParallelFor(0, 40, 1, [](int, int) { Sleep(3); });
    EXPECT_GE(told.fractions.size(), of_rows + 2);
    EXPECT_LE(told.fractions.back(), 0.75);
    EXPECT_GT(told.fractions.back(), 0.5);
  }
}

TEST(Progress, DoesNotCountPassesWithinPasses) {
  Told told;
  const EvaluationScope scope(nullptr, told.Listen());
  ProgressPass outer(2);
  {
    ProgressPass inner(10);
    Sleep(12);
    inner.Step(10);
  }
  EXPECT_TRUE(told.fractions.empty());
  outer.Step();
  ASSERT_EQ(told.fractions.size(), 1U);
  EXPECT_DOUBLE_EQ(told.fractions[0], 0.25);
}

TEST(Progress, IsToldAHundredTimesASecondAtMost) {
  Told told;
  const auto begun = std::chrono::steady_clock::now();
  {
    const EvaluationScope scope(nullptr, told.Listen());
    ProgressPass pass(50000);
    for (int i = 0; i < 50000; ++i) {
      if (i % 1000 == 0) Sleep(1);
      pass.Step();
    }
  }
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begun;
  EXPECT_LE(static_cast<double>(told.fractions.size()), taken.count() * 100.0);
  EXPECT_GE(told.fractions.size(), 1U);
}

}  // namespace
