// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Oversize.h"

#include <gtest/gtest.h>

#include "Host/Image/Streaming.h"
#include "Tests/Support/HostTesting.h"

namespace Testing {
namespace {

TEST(Oversize, HasOneMessage) { EXPECT_STREQ(ScEng::kOversizeMessage, kOversize); }

TEST(Oversize, TurnsWhatAnImageThrowsIntoNull) {
  int number = 3;
  EXPECT_EQ(ScEng::NullIfOversize([&] { return &number; }), &number);
  EXPECT_EQ(ScEng::NullIfOversize([]() -> int* { throw std::length_error("too large"); }), nullptr);
  EXPECT_EQ(ScEng::NullIfOversize([]() -> int* { throw std::bad_alloc(); }), nullptr);
  EXPECT_THROW(ScEng::NullIfOversize([]() -> int* { throw std::invalid_argument("wrong"); }), std::invalid_argument);
}

TEST(Streaming, BeginsWithTwoMillionSamples) {
  EXPECT_FALSE(ScEng::IsStreamed(0));
  EXPECT_FALSE(ScEng::IsStreamed(2097151));
  EXPECT_TRUE(ScEng::IsStreamed(2097152));
}

}  // namespace
}  // namespace Testing
