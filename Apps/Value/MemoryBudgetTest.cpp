// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/MemoryBudget.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

namespace {

/// The most that so many threads ever hold at once of a budget of 100.
std::uint64_t FindMostHeld(const std::vector<std::uint64_t>& wishes) {
  MemoryBudget budget(100);
  std::atomic<std::uint64_t> held{0};
  std::atomic<std::uint64_t> most{0};
  std::vector<std::thread> threads;
  for (const std::uint64_t wish : wishes) {
    threads.emplace_back([&, wish] {
      for (int i = 0; i < 200; ++i) {
        const MemoryBudget::Share share(budget, wish);
        const std::uint64_t now = held += wish;
        std::uint64_t before = most;
        while (before < now && !most.compare_exchange_weak(before, now)) {
        }
        std::this_thread::yield();
        held -= wish;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  return most;
}

TEST(MemoryBudget, SharesNeverExceedIt) { EXPECT_LE(FindMostHeld({40, 40, 40, 30, 25}), 100U); }

TEST(MemoryBudget, AWishBeyondItGoesAlone) {
  EXPECT_EQ(FindMostHeld({500, 500}), 500U);
  EXPECT_LE(FindMostHeld({500, 60, 60}), 500U);
}

TEST(MemoryBudget, SharesThatFitAreHeldTogether) {
  MemoryBudget budget(100);
  std::atomic<int> held{0};
  const MemoryBudget::Share first(budget, 50);
  std::thread other([&] {
    const MemoryBudget::Share second(budget, 50);
    const MemoryBudget::Share nothing(budget, 0);
    held = 2;
  });
  other.join();
  EXPECT_EQ(held, 2);
}

TEST(MemoryBudget, AShareThatDoesNotFitWaits) {
  MemoryBudget budget(100);
  std::atomic<bool> is_released{false};
  std::atomic<bool> was_early{false};
  std::thread other;
  {
    const MemoryBudget::Share first(budget, 60);
    other = std::thread([&] {
      const MemoryBudget::Share second(budget, 50);
      was_early = !is_released;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    is_released = true;
  }
  other.join();
  EXPECT_FALSE(was_early);
}

TEST(MemoryBudget, TheMachineHasSome) { EXPECT_GT(MemoryBudget::FindDefault(), 1U << 20U); }

}  // namespace
