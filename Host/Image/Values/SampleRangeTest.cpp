// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/SampleRange.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "Tests/Support/HostTesting.h"
#include "Tests/Support/InstructionSets.h"

namespace Testing {
namespace {

using ScEng::SampleRange;

/// The definition, sample by sample.
SampleRange Expected(const float* samples, std::size_t count, bool finite_only) {
  SampleRange range;
  bool any = false;
  for (std::size_t i = 0; i < count; ++i) {
    const float sample = samples[i];
    if (std::isnan(sample) || (finite_only && std::isinf(sample))) continue;
    if (!any || sample < range.low) range.low = sample;
    if (!any || sample > range.high) range.high = sample;
    any = true;
  }
  if (range.low == 0.0F) range.low = 0.0F;
  if (range.high == 0.0F) range.high = 0.0F;
  return range;
}

bool SameRange(const SampleRange& a, const SampleRange& b) {
  if (a.IsEmpty() || b.IsEmpty()) return a.IsEmpty() && b.IsEmpty();
  return AreSame(a.low, b.low) && AreSame(a.high, b.high);
}

enum class Kind { kPlain, kStrange, kMostlyStrange };

std::vector<float> MakeSamples(std::size_t count, Kind kind, std::mt19937& random) {
  static const float kStrange[] = {kNan,  -kNan,     kInfinity,  -kInfinity, 0.0F,
                                   -0.0F, kSmallest, -kSmallest, kLargest,   -kLargest};
  std::vector<float> samples(count);
  const unsigned one_in = kind == Kind::kPlain ? 0 : kind == Kind::kStrange ? 7 : 1;
  for (float& sample : samples) {
    sample = static_cast<float>(static_cast<int>(random() % 2001) - 1000) * 0.125F;
    if (one_in != 0 && random() % one_in == 0) sample = kStrange[random() % std::size(kStrange)];
  }
  return samples;
}

TEST(MeasureRange, IsWhatOnePlainLoopFinds) {
  OnEveryInstructionSet([] {
    std::mt19937 random(17);
    for (const Kind kind : {Kind::kPlain, Kind::kStrange, Kind::kMostlyStrange}) {
      for (std::size_t count = 0; count <= 70; ++count) {
        for (std::size_t offset = 0; offset < 17; ++offset) {
          const std::vector<float> samples = MakeSamples(count + offset, kind, random);
          const float* from = samples.data() + offset;
          ASSERT_TRUE(SameRange(ScEng::MeasureRange(from, count), Expected(from, count, false)))
              << count << " samples from " << offset;
          ASSERT_TRUE(SameRange(ScEng::MeasureFiniteRange(from, count), Expected(from, count, true)))
              << count << " samples from " << offset;
        }
      }
    }
  });
}

TEST(MeasureRange, FindsAStrangeSampleAtAnyPlaceOfALongRun) {
  OnEveryInstructionSet([] {
    for (const std::size_t count : {4095U, 4096U, 4097U, 8191U, 8192U, 8193U, 12300U}) {
      for (const float strange : {kNan, kInfinity, -kInfinity, -0.0F, -kSmallest, kLargest}) {
        std::vector<float> samples(count, 0.0F);
        for (std::size_t place = 0; place < count; place += 331) {
          samples[place] = strange;
          ASSERT_TRUE(SameRange(ScEng::MeasureRange(samples.data(), count), Expected(samples.data(), count, false)))
              << strange << " at " << place << " of " << count;
          ASSERT_TRUE(
              SameRange(ScEng::MeasureFiniteRange(samples.data(), count), Expected(samples.data(), count, true)))
              << strange << " at " << place << " of " << count;
          samples[place] = 0.0F;
        }
      }
    }
  });
}

TEST(MeasureRange, SaysPlainlyWhatItCounts) {
  OnEveryInstructionSet([] {
    const std::vector<float> samples{kNan, 2.0F, -kInfinity, 5.0F, kInfinity, -1.0F};
    const SampleRange all = ScEng::MeasureRange(samples.data(), samples.size());
    EXPECT_EQ(all.low, -kInfinity);
    EXPECT_EQ(all.high, kInfinity);
    const SampleRange finite = ScEng::MeasureFiniteRange(samples.data(), samples.size());
    EXPECT_EQ(finite.low, -1.0F);
    EXPECT_EQ(finite.high, 5.0F);
    const std::vector<float> none(33, kInfinity);
    EXPECT_TRUE(ScEng::MeasureFiniteRange(none.data(), none.size()).IsEmpty());
    EXPECT_FALSE(ScEng::MeasureRange(none.data(), none.size()).IsEmpty());
    const std::vector<float> nan(33, kNan);
    EXPECT_TRUE(ScEng::MeasureRange(nan.data(), nan.size()).IsEmpty());
    EXPECT_TRUE(ScEng::MeasureRange(nullptr, 0).IsEmpty());
    EXPECT_TRUE(ScEng::MeasureFiniteRange(nullptr, 0).IsEmpty());
  });
}

TEST(MeasureRange, TellsDenormalsFromZero) {
  OnEveryInstructionSet([] {
    std::vector<float> samples(40, 0.0F);
    samples[13] = kSmallest;
    samples[31] = -kSmallest;
    const SampleRange range = ScEng::MeasureFiniteRange(samples.data(), samples.size());
    EXPECT_TRUE(AreSame(range.low, -kSmallest));
    EXPECT_TRUE(AreSame(range.high, kSmallest));
  });
}

TEST(MeasureRange, ZerosArePositive) {
  OnEveryInstructionSet([] {
    for (std::size_t count = 1; count <= 40; ++count) {
      const std::vector<float> samples(count, -0.0F);
      for (const bool finite : {false, true}) {
        const SampleRange range =
            finite ? ScEng::MeasureFiniteRange(samples.data(), count) : ScEng::MeasureRange(samples.data(), count);
        ASSERT_TRUE(AreSame(range.low, 0.0F)) << count;
        ASSERT_TRUE(AreSame(range.high, 0.0F)) << count;
      }
    }
  });
}

TEST(StreamSamples, CopiesTheBytesAndMeasuresThem) {
  OnEveryInstructionSet([] {
    std::mt19937 random(4);
    constexpr float kGuard = 123.0F;
    for (const Kind kind : {Kind::kPlain, Kind::kStrange, Kind::kMostlyStrange}) {
      for (std::size_t count = 0; count <= 70; ++count) {
        for (std::size_t offset = 0; offset < 17; ++offset) {
          const std::size_t other_offset = (offset * 5 + 3) % 17;
          const std::vector<float> samples = MakeSamples(count + offset, kind, random);
          const std::vector<float> ahead(count, 1.0F);
          std::vector<float> target(count + other_offset + 1, kGuard);
          const float* from = samples.data() + offset;
          float* to = target.data() + other_offset;
          const SampleRange range =
              ScEng::StreamSamples(from, to, count, offset % 2 == 0 && count > 0 ? ahead.data() : nullptr);
          ASSERT_TRUE(SameRange(range, Expected(from, count, true))) << count << " samples from " << offset;
          ASSERT_TRUE(count == 0 || std::memcmp(from, to, count * sizeof(float)) == 0) << count;
          for (std::size_t i = 0; i < other_offset; ++i) ASSERT_EQ(target[i], kGuard);
          ASSERT_EQ(target.back(), kGuard);
        }
      }
    }
  });
}

TEST(StreamSamples, CopiesLongRuns) {
  OnEveryInstructionSet([] {
    std::mt19937 random(5);
    for (const std::size_t count : {2048U, 4099U, 100003U}) {
      for (const Kind kind : {Kind::kPlain, Kind::kStrange}) {
        const std::vector<float> samples = MakeSamples(count, kind, random);
        std::vector<float> target(count);
        const SampleRange range = ScEng::StreamSamples(samples.data(), target.data(), count, samples.data());
        EXPECT_TRUE(SameRange(range, Expected(samples.data(), count, true)));
        EXPECT_EQ(std::memcmp(samples.data(), target.data(), count * sizeof(float)), 0);
      }
    }
  });
}

TEST(SampleRangeParts, JoinToTheWhole) {
  SampleRange range;
  EXPECT_TRUE(range.IsEmpty());
  range.Include(SampleRange());
  EXPECT_TRUE(range.IsEmpty());
  range.Include({2.0F, 3.0F});
  range.Include({-1.0F, 2.5F});
  range.Include(SampleRange());
  EXPECT_EQ(range.low, -1.0F);
  EXPECT_EQ(range.high, 3.0F);
  range.Include({kInfinity, kInfinity});
  EXPECT_EQ(range.low, -1.0F);
  EXPECT_EQ(range.high, kInfinity);
}

}  // namespace
}  // namespace Testing
