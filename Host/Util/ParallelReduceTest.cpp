// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/ParallelReduce.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <stdexcept>

#include "Tests/Support/Threads.h"

namespace {

struct Sum {
  std::size_t entries = 0;
  std::size_t total = 0;

  void Include(const Sum& other) {
    entries += other.entries;
    total += other.total;
  }
};

Sum AddUp(std::size_t from, std::size_t to) {
  Sum sum;
  for (std::size_t i = from; i < to; ++i) sum.Include({1, i});
  return sum;
}

TEST(ParallelReduce, JoinsWhatEveryRangeGives) {
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const Testing::ThreadsScope scope(threads);
    const Sum sum = ScEng::ParallelReduce<Sum>(1001, 10, AddUp);
    EXPECT_EQ(sum.entries, 1001U);
    EXPECT_EQ(sum.total, 500500U);
  }
}

TEST(ParallelReduce, OfNothingIsAnEmptyTotal) {
  const Sum sum = ScEng::ParallelReduce<Sum>(0, 10, AddUp);
  EXPECT_EQ(sum.entries, 0U);
  EXPECT_EQ(sum.total, 0U);
}

TEST(ParallelReduce, HandsOnWhatABodyThrows) {
  const auto fail = [](std::size_t, std::size_t) -> Sum { throw std::runtime_error("no"); };
  EXPECT_THROW(ScEng::ParallelReduce<Sum>(100, 1, fail), std::runtime_error);
}

}  // namespace
