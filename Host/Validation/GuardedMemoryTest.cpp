// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/GuardedMemory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

using ScEng::GuardedMemory;

/// Six samples, 24 bytes.
constexpr std::size_t kBytes = 24;

class GuardedMemoryTest : public testing::Test {
 protected:
  ~GuardedMemoryTest() override {
    if (samples_ != nullptr) memory_.Release(samples_, kBytes);
  }

  std::string Locate(const void* address) const {
    char text[100];
    return std::string(text, memory_.Locate(address, text, sizeof(text)));
  }

  GuardedMemory memory_;
  float* samples_ = memory_.Allocate(kBytes);
};

TEST_F(GuardedMemoryTest, GivesAlignedSamplesThatHoldTheFill) {
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(samples_) % 64, 0U);
  memory_.SetFill(-3.5F);
  float* other = memory_.Allocate(kBytes);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(other[i], -3.5F);
  EXPECT_EQ(memory_.GetNumBlocks(), 2U);
  memory_.Release(other, kBytes);
  EXPECT_EQ(memory_.GetNumBlocks(), 1U);
}

TEST_F(GuardedMemoryTest, FindsNoDamageWhereEverySampleIsWritten) {
  for (int i = 0; i < 6; ++i) samples_[i] = 1.0F;
  EXPECT_EQ(memory_.TakeDamage(), "");
}

TEST_F(GuardedMemoryTest, FindsAWriteBehindTheSamples) {
  samples_[8] = 1.0F;
  EXPECT_EQ(memory_.TakeDamage(), "8 bytes behind the end of the 24 bytes of samples");
  EXPECT_EQ(memory_.TakeDamage(), "");
}

TEST_F(GuardedMemoryTest, FindsAWriteFarBehindTheSamples) {
  samples_[6 + 2500] = 1.0F;
  EXPECT_EQ(memory_.TakeDamage(), "10000 bytes behind the end of the 24 bytes of samples");
}

TEST_F(GuardedMemoryTest, FindsAWriteBeforeTheSamples) {
  samples_[-2] = 0.0F;
  EXPECT_EQ(memory_.TakeDamage(), "5 bytes before the 24 bytes of samples");
}

TEST_F(GuardedMemoryTest, FindsAWriteBesideABlockThatIsReleased) {
  samples_[6] = 1.0F;
  memory_.Release(samples_, kBytes);
  samples_ = nullptr;
  EXPECT_EQ(memory_.TakeDamage(), "directly behind the 24 bytes of samples");
}

TEST_F(GuardedMemoryTest, WatchesTheBytesUpToAForbiddenMargin) {
  memory_.SetMargins(GuardedMemory::Margins::kForbidden);
  float* other = memory_.Allocate(kBytes);
  other[15] = 1.0F;
  EXPECT_EQ(memory_.TakeDamage(), "36 bytes behind the end of the 24 bytes of samples");
  memory_.Release(other, kBytes);
}

TEST_F(GuardedMemoryTest, TakesABlockWithoutBytes) {
  float* none = memory_.Allocate(0);
  ASSERT_NE(none, nullptr);
  EXPECT_EQ(memory_.TakeDamage(), "");
  none[0] = 1.0F;
  EXPECT_EQ(memory_.TakeDamage(), "directly behind the 0 bytes of samples");
  memory_.Release(none, 0);
}

TEST_F(GuardedMemoryTest, LocatesAddressesInAndBesideABlock) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(samples_);
  EXPECT_EQ(Locate(bytes - 4), "4 bytes before the 24 bytes of samples of an image");
  EXPECT_EQ(Locate(bytes + 4), "4 bytes into the 24 bytes of samples of an image");
  EXPECT_EQ(Locate(bytes + 30), "6 bytes behind the end of the 24 bytes of samples of an image");
  EXPECT_EQ(Locate(bytes + 24), "directly behind the 24 bytes of samples of an image");
  EXPECT_EQ(Locate(this), "");
}

using GuardedMemoryDeathTest = GuardedMemoryTest;

TEST_F(GuardedMemoryDeathTest, EndsTheProcessAtAReadInAForbiddenMargin) {
  memory_.SetMargins(GuardedMemory::Margins::kForbidden);
  const volatile float* other = memory_.Allocate(kBytes);
  EXPECT_DEATH(static_cast<void>(other[16]), "");
}

}  // namespace
