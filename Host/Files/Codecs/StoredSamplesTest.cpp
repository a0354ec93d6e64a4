// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/StoredSamples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

using ScEng::SampleScale;
using ScEng::StoredSamples;
using ScEng::StoredType;

template <class Number>
std::vector<float> Decode(const std::vector<Number>& numbers, const StoredSamples& stored,
                          SampleScale scale = SampleScale::kAuto) {
  std::vector<float> values(numbers.size(), -77.0F);
  ScEng::DecodeSamples(numbers.data(), sizeof(Number), stored, scale, values.data(), 1, numbers.size());
  return values;
}

using Values = std::vector<float>;

TEST(StoredSamples, UnsignedIntegersOfEightAndSixteenBitsBecomeSharesOfTheirLargest) {
  EXPECT_EQ(Decode<std::uint8_t>({0, 51, 255}, {.type = StoredType::kUint8, .nodata = {}, .scale = {}, .offset = {}}),
            (Values{0.0F, 0.2F, 1.0F}));
  EXPECT_EQ(
      Decode<std::uint16_t>({0, 13107, 65535}, {.type = StoredType::kUint16, .nodata = {}, .scale = {}, .offset = {}}),
      (Values{0.0F, 0.2F, 1.0F}));
}

TEST(StoredSamples, AllOthersAreTheNumbersThatTheyAre) {
  StoredSamples stored;
  stored.type = StoredType::kInt16;
  EXPECT_EQ(Decode<std::int16_t>({-32768, -1, 8848}, stored), (Values{-32768.0F, -1.0F, 8848.0F}));
  stored.type = StoredType::kUint32;
  EXPECT_EQ(Decode<std::uint32_t>({0, 4294967295U}, stored), (Values{0.0F, 4294967296.0F}));
  stored.type = StoredType::kInt8;
  EXPECT_EQ(Decode<std::int8_t>({-128, 127}, stored), (Values{-128.0F, 127.0F}));
  stored.type = StoredType::kDouble;
  EXPECT_EQ(Decode<double>({0.1, 1e300}, stored), (Values{0.1F, std::numeric_limits<float>::infinity()}));
}

TEST(StoredSamples, UnitDividesEveryIntegerAndStoredNone) {
  StoredSamples stored;
  stored.type = StoredType::kInt16;
  EXPECT_EQ(Decode<std::int16_t>({-32767, 32767}, stored, SampleScale::kUnit), (Values{-1.0F, 1.0F}));
  stored.type = StoredType::kUint32;
  EXPECT_EQ(Decode<std::uint32_t>({4294967295U, 858993459U}, stored, SampleScale::kUnit), (Values{1.0F, 0.2F}));
  stored.type = StoredType::kUint8;
  EXPECT_EQ(Decode<std::uint8_t>({7, 255}, stored, SampleScale::kStored), (Values{7.0F, 255.0F}));
  stored.type = StoredType::kFloat;
  EXPECT_EQ(Decode<float>({7.5F}, stored, SampleScale::kUnit), (Values{7.5F}));
}

TEST(StoredSamples, TheNumberThatMeansNoValueBecomesNaN) {
  StoredSamples stored;
  stored.type = StoredType::kInt16;
  stored.nodata = -9999.0;
  const Values values = Decode<std::int16_t>({-9999, -9998}, stored);
  EXPECT_TRUE(std::isnan(values[0]));
  EXPECT_EQ(values[1], -9998.0F);
  // Of an unsigned band, no number is below zero; and no integer is a fraction.
  stored.type = StoredType::kUint8;
  EXPECT_EQ(Decode<std::uint8_t>({241}, stored, SampleScale::kStored), Values{241.0F});
  stored.nodata = 0.5;
  EXPECT_EQ(Decode<std::uint8_t>({0, 1}, stored, SampleScale::kStored), (Values{0.0F, 1.0F}));
  // A file gives the number of a float band with the digits of a double.
  stored.type = StoredType::kFloat;
  stored.nodata = -3.4028234663852886e38;
  EXPECT_TRUE(std::isnan(Decode<float>({-std::numeric_limits<float>::max()}, stored)[0]));
}

TEST(StoredSamples, ScaleAndOffsetMakeABandCountAsStored) {
  StoredSamples stored;
  stored.type = StoredType::kUint8;
  stored.scale = 0.5;
  stored.offset = -10.0;
  stored.nodata = 255.0;
  const Values values = Decode<std::uint8_t>({0, 100, 255}, stored);
  EXPECT_EQ(values[0], -10.0F);
  EXPECT_EQ(values[1], 40.0F);
  EXPECT_TRUE(std::isnan(values[2]));
  stored.scale.reset();
  EXPECT_EQ(Decode<std::uint8_t>({1}, stored), Values{-9.0F});
}

TEST(StoredSamples, EveryHalfIsAFloat) {
  StoredSamples stored;
  stored.type = StoredType::kHalf;
  // Zero, the smallest and the largest number below 2^-14, 1, -2, the largest number, infinity.
  const std::vector<std::uint16_t> halves{0x0000, 0x0001, 0x03FF, 0x3C00, 0xC000, 0x7BFF, 0x7C00};
  const float tiny = std::ldexp(1.0F, -24);
  EXPECT_EQ(Decode(halves, stored),
            (Values{0.0F, tiny, 1023.0F * tiny, 1.0F, -2.0F, 65504.0F, std::numeric_limits<float>::infinity()}));
  EXPECT_TRUE(std::signbit(Decode<std::uint16_t>({0x8000}, stored)[0]));
  EXPECT_TRUE(std::isnan(Decode<std::uint16_t>({0x7E00}, stored)[0]));
}

TEST(StoredSamples, StridesAreBytesInTheFileAndFloatsInTheImage) {
  const std::vector<std::uint8_t> bytes{51, 9, 9, 102, 9, 9, 255};
  Values values(6, -1.0F);
  StoredSamples stored;
  stored.type = StoredType::kUint8;
  ScEng::DecodeSamples(bytes.data(), 3, stored, SampleScale::kAuto, values.data() + 1, 2, 3);
  EXPECT_EQ(values, (Values{-1.0F, 0.2F, -1.0F, 0.4F, -1.0F, 1.0F}));
}

}  // namespace
