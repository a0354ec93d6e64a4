// SPDX-License-Identifier: Apache-2.0
#include "Host/Math/Border.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace {

using ScEng::Border;
using ScEng::BorderIndex;
using ScEng::WrapIndex;

TEST(Border, IsChosenByAFlag) {
  EXPECT_EQ(ScEng::BorderOf(true), Border::kWrap);
  EXPECT_EQ(ScEng::BorderOf(false), Border::kExtend);
}

TEST(Border, WrapsOrRepeatsTheEnds) {
  std::vector<int> wrapped;
  std::vector<int> extended;
  for (int position = -4; position <= 6; ++position) {
    wrapped.push_back(BorderIndex(position, 3, Border::kWrap));
    extended.push_back(BorderIndex(position, 3, Border::kExtend));
  }
  EXPECT_EQ(wrapped, (std::vector<int>{2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0}));
  EXPECT_EQ(extended, (std::vector<int>{0, 0, 0, 0, 0, 1, 2, 2, 2, 2, 2}));
}

TEST(Border, HoldsForALineOfOnePixelAndFarFromIt) {
  for (const std::int64_t position : {std::numeric_limits<std::int64_t>::min(), std::int64_t{-1}, std::int64_t{0},
                                      std::numeric_limits<std::int64_t>::max()}) {
    EXPECT_EQ(WrapIndex<std::int64_t>(position, 1), 0);
    EXPECT_EQ(BorderIndex<std::int64_t>(position, 1, Border::kExtend), 0);
  }
  EXPECT_EQ(WrapIndex(-10, 10), 0);
  EXPECT_EQ(WrapIndex(std::numeric_limits<int>::min(), 10), 2);
}

}  // namespace
