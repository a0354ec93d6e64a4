// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/Wording.h"

#include <gtest/gtest.h>

namespace {

using ScEng::FormatSeconds;
using ScEng::While;
using std::chrono::milliseconds;

TEST(Wording, SecondsHaveTheDigitsThatTheyNeed) {
  EXPECT_EQ(FormatSeconds(milliseconds(10000)), "10 s");
  EXPECT_EQ(FormatSeconds(milliseconds(250)), "0.25 s");
  EXPECT_EQ(FormatSeconds(milliseconds(1005)), "1.005 s");
  EXPECT_EQ(FormatSeconds(milliseconds(0)), "0 s");
}

TEST(Wording, WhatIsNotKnownIsLeftOut) {
  EXPECT_EQ(While("loading it"), " while loading it");
  EXPECT_EQ(While(""), "");
}

}  // namespace
