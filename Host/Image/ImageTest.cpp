// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Image.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <vector>

#include "Host/Image/SampleMemoryScope.h"
#include "Tests/Support/HostTesting.h"

namespace Testing {
namespace {

using ScEng::Box2I;
using ScEng::RefPtr;
using ScEng::SampleRange;

static_assert(!std::is_polymorphic_v<Image>);

TEST(ImageLayout, StartsWithItsReferenceCount) {
  const Image image(2, 2, ColorMode::kValue, nullptr);
  EXPECT_EQ(image.GetRefCount(), 0U);
  image.AddRef();
  image.AddRef();
  std::uint32_t first = 0;
  std::memcpy(&first, static_cast<const void*>(&image), sizeof(first));
  EXPECT_EQ(first, 2U);
}

TEST(ImageLayout, FirstSampleIsAlignedTo64Bytes) {
  for (const unsigned mode : {0U, 1U, 2U, 3U}) {
    for (const int size : {1, 3, 17, 100, 700}) {
      const Image image(size, size, mode, nullptr);
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(image.GetConstArray()) % 64, 0U) << size << ", mode " << mode;
    }
  }
}

TEST(ImageLayout, RowsAreDenseAndChannelsInterleaved) {
  EXPECT_EQ(Image(7, 5, ColorMode::kColor, nullptr).GetNumSamples(), 140U);
  EXPECT_EQ(Image(7, 5, ColorMode::kSigned, nullptr).GetNumSamples(), 140U);
  EXPECT_EQ(Image(7, 5, ColorMode::kValue, nullptr).GetNumSamples(), 35U);
  EXPECT_EQ(Image(7, 5, ColorMode::kPair, nullptr).GetNumSamples(), 70U);
  const float fill[] = {1.0F, 2.0F};
  const Image pair(3, 1, ColorMode::kPair, fill);
  EXPECT_EQ(GetSamples(pair), (std::vector<float>{1, 2, 1, 2, 1, 2}));
}

TEST(ImageLayout, WritingArrayIsTheReadingArray) {
  Image image(2, 1, ColorMode::kValue, nullptr);
  EXPECT_EQ(image.GetArray(), image.GetConstArray());
}

void ExpectFresh(const Image& image, float low) {
  EXPECT_EQ(image.GetPinX(), 0);
  EXPECT_EQ(image.GetPinY(), 0);
  EXPECT_EQ(image.GetPivotX(), 0.0F);
  EXPECT_EQ(image.GetPivotY(), 0.0F);
  EXPECT_EQ(image.GetOutsideValue(), 0.0F);
  EXPECT_EQ(image.GetValueLow(), low);
  EXPECT_EQ(image.GetValueHigh(), 1.0F);
  EXPECT_EQ(image.GetRefCount(), 0U);
}

TEST(ImageHeader, FreshHeadersOfTheFourModes) {
  for (const unsigned mode : {0U, 1U, 2U, 3U}) {
    const Image image(4, 3, mode, nullptr);
    EXPECT_EQ(image.GetSizeX(), 4);
    EXPECT_EQ(image.GetSizeY(), 3);
    EXPECT_EQ(image.GetColorMode(), mode);
    ExpectFresh(image, mode == 1 ? -1.0F : 0.0F);
  }
  EXPECT_EQ(Image(1, 1, 0, nullptr).GetNumChannels(), 4);
  EXPECT_EQ(Image(1, 1, 1, nullptr).GetNumChannels(), 4);
  EXPECT_EQ(Image(1, 1, 2, nullptr).GetNumChannels(), 1);
  EXPECT_EQ(Image(1, 1, 3, nullptr).GetNumChannels(), 2);
}

TEST(ImageHeader, ModesHaveNamesAndChannels) {
  EXPECT_STREQ(ColorMode::GetName(0), "color");
  EXPECT_STREQ(ColorMode::GetName(1), "signed");
  EXPECT_STREQ(ColorMode::GetName(2), "value");
  EXPECT_STREQ(ColorMode::GetName(3), "pair");
  EXPECT_EQ(ColorMode::GetNumChannels(4), 0);
  EXPECT_EQ(ColorMode::GetNumChannels(0xFFFFFFFFU), 0);
}

TEST(ImageHeader, SettersChangeTheirFieldOnly) {
  Image image(2, 2, ColorMode::kValue, nullptr);
  image.SetPin(-3, 4);
  image.SetPivot(0.25F, 0.75F);
  image.SetValueLow(-2.0F);
  image.SetValueHigh(9.0F);
  image.SetOutsideValue(0.5F);
  EXPECT_EQ(image.GetPinX(), -3);
  EXPECT_EQ(image.GetPinY(), 4);
  EXPECT_EQ(image.GetPivotX(), 0.25F);
  EXPECT_EQ(image.GetPivotY(), 0.75F);
  EXPECT_EQ(image.GetValueLow(), -2.0F);
  EXPECT_EQ(image.GetValueHigh(), 9.0F);
  EXPECT_EQ(image.GetOutsideValue(), 0.5F);
  image.SetValueLowHigh(3.0F, 4.0F);
  EXPECT_EQ(image.GetValueLow(), 3.0F);
  EXPECT_EQ(image.GetValueHigh(), 4.0F);
}

TEST(ImageFill, FillsEveryPixelWithOneFloatPerChannel) {
  const float fill[] = {1.0F, 2.0F, 3.0F, 4.0F, 99.0F, 98.0F};
  for (const unsigned mode : {0U, 1U, 2U, 3U}) {
    for (const std::size_t threads : {1U, 16U}) {
      const ThreadsScope scope(threads);
      // Enough pixels for several threads.
      const Image image(401, 307, mode, fill);
      const auto channels = static_cast<std::size_t>(image.GetNumChannels());
      const std::vector<float> samples = GetSamples(image);
      std::size_t wrong = 0;
      for (std::size_t i = 0; i < samples.size(); ++i) wrong += samples[i] == fill[i % channels] ? 0 : 1;
      EXPECT_EQ(wrong, 0U) << "mode " << mode;
    }
  }
}

TEST(ImageFill, ReadsNoMoreThanTheChannels) {
  // On the heap, so that a reading past the end is seen by an address sanitizer.
  const std::vector<float> one{0.5F};
  EXPECT_EQ(GetSamples(Image(2, 1, ColorMode::kValue, one.data())), (std::vector<float>{0.5F, 0.5F}));
  const std::vector<float> two{0.5F, 0.25F};
  EXPECT_EQ(GetSamples(Image(1, 1, ColorMode::kPair, two.data())), two);
}

ImageHeader MakeOddHeader(unsigned mode) {
  ImageHeader header = ImageHeader::Fresh(2, 1, mode);
  header.pin_x = 11;
  header.pin_y = -7;
  header.pivot_x = 0.5F;
  header.pivot_y = 0.125F;
  header.value_low = -3.0F;
  header.value_high = 8.0F;
  header.outside_value = 0.75F;
  return header;
}

void ExpectSamePlace(const Image& a, const Image& b) {
  EXPECT_EQ(a.GetSizeX(), b.GetSizeX());
  EXPECT_EQ(a.GetSizeY(), b.GetSizeY());
  EXPECT_EQ(a.GetPinX(), b.GetPinX());
  EXPECT_EQ(a.GetPinY(), b.GetPinY());
  EXPECT_EQ(a.GetPivotX(), b.GetPivotX());
  EXPECT_EQ(a.GetPivotY(), b.GetPivotY());
  EXPECT_EQ(a.GetOutsideValue(), b.GetOutsideValue());
}

TEST(ImageCopy, KeepsSamplesAndHeaderAndStartsUncounted) {
  for (const unsigned mode : {0U, 1U, 2U, 3U}) {
    const float fill[] = {kNan, kInfinity, -0.0F, 7.0F};
    const RefPtr<Image> image(new Image(MakeOddHeader(mode), fill));
    const Image copy(*image);
    EXPECT_EQ(copy.GetRefCount(), 0U);
    EXPECT_EQ(copy.GetColorMode(), mode);
    ExpectSamePlace(copy, *image);
    EXPECT_EQ(copy.GetValueLow(), -3.0F);
    EXPECT_EQ(copy.GetValueHigh(), 8.0F);
    EXPECT_NE(copy.GetConstArray(), image->GetConstArray());
    EXPECT_TRUE(SameSamples(GetSamples(*image), GetSamples(copy)));
  }
}

TEST(ImageCopy, IsIndependentOfTheOriginal) {
  const auto image = MakeImage(2, 1, ColorMode::kValue, {1.0F, 2.0F});
  EXPECT_EQ(image->GetSampleRange().high, 2.0F);
  Image copy(*image);
  EXPECT_EQ(copy.GetSampleRange().high, 2.0F);
  copy.GetArray()[0] = 5.0F;
  EXPECT_EQ(copy.GetSampleRange().high, 5.0F);
  EXPECT_EQ(image->GetSampleRange().high, 2.0F);
  EXPECT_EQ(GetSamples(*image), (std::vector<float>{1.0F, 2.0F}));
}

TEST(ImageCopy, LargeImagesAreCopiedWhole) {
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    Image image(1021, 509, ColorMode::kValue, nullptr);
    float* samples = image.GetArray();
    for (std::size_t i = 0; i < image.GetNumSamples(); ++i) samples[i] = static_cast<float>(i);
    EXPECT_EQ(GetSamples(Image(image)), GetSamples(image));
  }
}

TEST(ImageConversion, ColorBecomesTheOpacityWeightedMean) {
  const auto color = MakeImage(8, 1, ColorMode::kColor,
                               {
                                   0.25F,     0.5F,  0.75F, 1.0F,  // 1.5 thirds
                                   1.0F,      1.0F,  1.0F,  1.0F,  // white
                                   3.0F,      3.0F,  3.0F,  0.5F,  // 4.5 thirds
                                   9.0F,      8.0F,  7.0F,  0.0F,  // nothing shows
                                   1e8F,      1.0F,  -1e8F, 1.0F,  // green and red are added first: the 1 is lost
                                   1e8F,      -1e8F, 1.0F,  1.0F,  // here it is not
                                   kInfinity, 1.0F,  1.0F,  0.0F,  // 0 times infinity
                                   -1.0F,     -2.0F, 0.0F,  1.0F,  // -3 thirds
                               });
  const Image value(*color, ColorMode::kValue);
  EXPECT_TRUE(SameSamples({0.5F, 1.0F, 1.5F, 0.0F, 0.0F, 0.33333334F, kNan, -1.0F}, GetSamples(value)));
}

TEST(ImageConversion, SignedGivesItsThirdChannelAndPairItsFirst) {
  const auto signed_image = MakeImage(2, 1, ColorMode::kSigned, {0.1F, 0.2F, -0.5F, 1.0F, 1.0F, 1.0F, kInfinity, 0.0F});
  EXPECT_EQ(GetSamples(Image(*signed_image, ColorMode::kValue)), (std::vector<float>{-0.5F, kInfinity}));
  const auto pair = MakeImage(2, 1, ColorMode::kPair, {4.0F, 5.0F, -0.0F, 7.0F});
  EXPECT_TRUE(SameSamples({4.0F, -0.0F}, GetSamples(Image(*pair, ColorMode::kValue))));
  const auto value = MakeImage(2, 1, ColorMode::kValue, {kNan, 3.0F});
  EXPECT_TRUE(SameSamples({kNan, 3.0F}, GetSamples(Image(*value, ColorMode::kValue))));
}

TEST(ImageConversion, KeepsThePlaceAndChoosesTheRange) {
  const float fill[] = {1.0F, 1.0F, 1.0F, 1.0F};
  const float expected_low[] = {0.0F, -1.0F, -3.0F, -3.0F};
  const float expected_high[] = {1.0F, 1.0F, 8.0F, 8.0F};
  for (const unsigned mode : {0U, 1U, 2U, 3U}) {
    const Image image(MakeOddHeader(mode), fill);
    const Image value(image, ColorMode::kValue);
    EXPECT_EQ(value.GetColorMode(), ColorMode::kValue);
    EXPECT_EQ(value.GetRefCount(), 0U);
    ExpectSamePlace(value, image);
    EXPECT_EQ(value.GetValueLow(), expected_low[mode]) << "mode " << mode;
    EXPECT_EQ(value.GetValueHigh(), expected_high[mode]) << "mode " << mode;
  }
}

TEST(ImageConversion, LargeImagesConvertTheSameOnAnyNumberOfThreads) {
  Image image(700, 300, ColorMode::kSigned, nullptr);
  float* samples = image.GetArray();
  for (std::size_t i = 0; i < image.GetNumSamples(); ++i) samples[i] = static_cast<float>(i);
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    const Image value(image, ColorMode::kValue);
    const float* converted = value.GetConstArray();
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < 210000; ++i) wrong += converted[i] == static_cast<float>(i * 4 + 2) ? 0 : 1;
    EXPECT_EQ(wrong, 0U);
  }
}

TEST(ImageConversion, ConvertToMGivesAValueImageOfItsOwn) {
  EXPECT_EQ(ConvertToM(nullptr, 0.0F), nullptr);
  const float fill[] = {0.0F, 0.0F, 0.25F, 1.0F};
  const Image signed_image(MakeOddHeader(ColorMode::kSigned), fill);
  const ImagePtr converted = ConvertToM(&signed_image, 3.0F);
  ASSERT_NE(converted, nullptr);
  EXPECT_EQ(converted->GetColorMode(), ColorMode::kValue);
  EXPECT_EQ(converted->GetOutsideValue(), 3.0F);
  EXPECT_EQ(GetSamples(*converted), (std::vector<float>{0.25F, 0.25F}));

  const Image value(MakeOddHeader(ColorMode::kValue), fill + 2);
  const ImagePtr copied = ConvertToM(&value, -1.0F);
  EXPECT_NE(copied->GetConstArray(), value.GetConstArray());
  EXPECT_EQ(copied->GetValueLow(), -3.0F);
  EXPECT_EQ(copied->GetOutsideValue(), -1.0F);
  EXPECT_EQ(GetSamples(*copied), (std::vector<float>{0.25F, 0.25F}));
}

TEST(ImageConversion, ConvertToMAnswersNullForWhatCannotBe) {
  const float fill[] = {0.5F};
  const Image image(3, 2, ColorMode::kValue, fill);
  {
    const MaxSizeScope scope(2, 2);
    EXPECT_EQ(ConvertToM(&image, 0.0F), nullptr);
  }
  EXPECT_NE(ConvertToM(&image, 0.0F), nullptr);
}

Box2I BoxOf(int size_x, int size_y, int pin_x, int pin_y, float pivot_x, float pivot_y) {
  Image image(size_x, size_y, ColorMode::kValue, nullptr);
  image.SetPin(pin_x, pin_y);
  image.SetPivot(pivot_x, pivot_y);
  return image.GetBox();
}

TEST(ImageBox, StartsAtThePinWithoutAPivot) { EXPECT_EQ(BoxOf(5, 3, 10, -20, 0.0F, 0.0F), (Box2I{10, -20, 15, -17})); }

TEST(ImageBox, PivotOneEndsAtThePin) { EXPECT_EQ(BoxOf(5, 3, 10, -20, 1.0F, 1.0F), (Box2I{5, -23, 10, -20})); }

TEST(ImageBox, HalvesOfAPixelGoDown) {
  // 2.5 becomes 2 and 1.5 becomes 1.
  EXPECT_EQ(BoxOf(5, 3, 0, 0, 0.5F, 0.5F), (Box2I{-2, -1, 3, 2}));
  // -2.5 becomes -3 and -1.5 becomes -2.
  EXPECT_EQ(BoxOf(5, 3, 0, 0, -0.5F, -0.5F), (Box2I{3, 2, 8, 5}));
  // 3.75 becomes 4, 1.25 becomes 1.
  EXPECT_EQ(BoxOf(5, 5, 0, 0, 0.75F, 0.25F), (Box2I{-4, -1, 1, 4}));
}

TEST(ImageBox, TakesTheProductInFloat) {
  // The float next above 1/6 times 3 is a little more than a half, which a float product rounds to the half itself.
  const float pivot = 0.16666667163372040F;
  EXPECT_EQ(BoxOf(3, 3, 0, 0, pivot, pivot), (Box2I{0, 0, 3, 3}));
}

TEST(ImageBox, PivotsMayLieOutsideTheImage) { EXPECT_EQ(BoxOf(4, 4, 0, 0, 3.0F, -2.0F), (Box2I{-12, 8, -8, 12})); }

TEST(ImageBox, ReachesBeyond32Bits) {
  constexpr int kLowest = std::numeric_limits<int>::min();
  constexpr int kHighest = std::numeric_limits<int>::max();
  const Box2I box = BoxOf(10, 4, kLowest, kHighest, 1.0F, 0.0F);
  EXPECT_EQ(box.left, std::int64_t{-2147483658});
  EXPECT_EQ(box.right, std::int64_t{-2147483648});
  EXPECT_EQ(box.top, std::int64_t{2147483647});
  EXPECT_EQ(box.bottom, std::int64_t{2147483651});
}

TEST(ImageMaxSize, Is32768ByDefault) {
  EXPECT_EQ(Image::GetMaxSizeX(), 32768);
  EXPECT_EQ(Image::GetMaxSizeY(), 32768);
  EXPECT_NO_THROW(Image(32768, 1, ColorMode::kValue, nullptr));
  EXPECT_THROW(Image(32769, 1, ColorMode::kValue, nullptr), std::length_error);
  EXPECT_THROW(Image(1, 32769, ColorMode::kValue, nullptr), std::length_error);
}

TEST(ImageMaxSize, CanBeSet) {
  const MaxSizeScope scope(100, 50);
  EXPECT_EQ(Image::GetMaxSizeX(), 100);
  EXPECT_EQ(Image::GetMaxSizeY(), 50);
  EXPECT_NO_THROW(Image(100, 50, ColorMode::kColor, nullptr));
  EXPECT_THROW(Image(101, 50, ColorMode::kColor, nullptr), std::length_error);
  EXPECT_THROW(Image(100, 51, ColorMode::kColor, nullptr), std::length_error);
  EXPECT_THROW(Image(ImageHeader::Fresh(101, 1, ColorMode::kValue), nullptr), std::length_error);
}

TEST(ImageMaxSize, NegativeSizesAndUnknownModesAreRefused) {
  EXPECT_THROW(Image(-1, 4, ColorMode::kValue, nullptr), std::length_error);
  EXPECT_THROW(Image(4, -1, ColorMode::kValue, nullptr), std::length_error);
  EXPECT_THROW(Image(4, 4, 4, nullptr), std::invalid_argument);
  const Image image(1, 1, ColorMode::kValue, nullptr);
  EXPECT_THROW(Image(image, 17), std::invalid_argument);
}

TEST(ImageMaxSize, SamplesThatNoMemoryHoldsThrowBadAlloc) {
  constexpr int kHuge = 1 << 30;
  const MaxSizeScope scope(kHuge, kHuge);
  // 2^60 pixels of four floats are 2^64 bytes, one more than 64 bits can count.
  EXPECT_THROW(Image(kHuge, kHuge, ColorMode::kColor, nullptr), std::bad_alloc);
}

TEST(ImageMaxSize, EmptyImagesAreImages) {
  const float fill[] = {1.0F};
  for (const auto& [x, y] : {std::pair{0, 0}, std::pair{0, 5}, std::pair{5, 0}}) {
    const Image image(x, y, ColorMode::kValue, fill);
    EXPECT_EQ(image.GetNumSamples(), 0U);
    EXPECT_TRUE(image.GetSampleRange().IsEmpty());
    EXPECT_EQ(Image(image).GetSizeY(), y);
    EXPECT_EQ(Image(image, ColorMode::kColor).GetNumSamples(), 0U);
  }
}

SampleRange RangeOf(const std::vector<float>& samples) {
  return MakeImage(static_cast<int>(samples.size()), 1, ColorMode::kValue, samples)->GetSampleRange();
}

TEST(ImageRange, SkipsNaN) {
  const SampleRange range = RangeOf({kNan, 3.0F, kNan, -2.0F, 1.0F, kNan});
  EXPECT_EQ(range.low, -2.0F);
  EXPECT_EQ(range.high, 3.0F);
  EXPECT_TRUE(RangeOf({kNan, kNan}).IsEmpty());
}

TEST(ImageRange, CountsInfinities) {
  SampleRange range = RangeOf({1.0F, kInfinity, 2.0F});
  EXPECT_EQ(range.low, 1.0F);
  EXPECT_EQ(range.high, kInfinity);
  range = RangeOf({kNan, -kInfinity, 2.0F});
  EXPECT_EQ(range.low, -kInfinity);
  EXPECT_EQ(range.high, 2.0F);
  range = RangeOf({kInfinity, kInfinity});
  EXPECT_FALSE(range.IsEmpty());
  EXPECT_EQ(range.low, kInfinity);
  EXPECT_EQ(range.high, kInfinity);
  range = RangeOf({-kInfinity, kNan});
  EXPECT_FALSE(range.IsEmpty());
  EXPECT_EQ(range.low, -kInfinity);
  EXPECT_EQ(range.high, -kInfinity);
}

TEST(ImageRange, ZerosArePositive) {
  for (const auto& samples : {std::vector<float>{-0.0F}, {0.0F, -0.0F}, {-0.0F, 0.0F}, std::vector<float>(40, -0.0F)}) {
    const SampleRange range = RangeOf(samples);
    EXPECT_FALSE(std::signbit(range.low));
    EXPECT_FALSE(std::signbit(range.high));
    EXPECT_EQ(range.low, 0.0F);
    EXPECT_EQ(range.high, 0.0F);
  }
}

TEST(ImageRange, CountsAllChannels) {
  const auto image = MakeImage(1, 1, ColorMode::kColor, {0.0F, -5.0F, 2.0F, 9.0F});
  EXPECT_EQ(image->GetSampleRange().low, -5.0F);
  EXPECT_EQ(image->GetSampleRange().high, 9.0F);
}

TEST(ImageRange, IsRememberedUntilTheSamplesAreWritten) {
  const auto image = MakeImage(3, 1, ColorMode::kValue, {1.0F, 2.0F, 3.0F});
  EXPECT_FALSE(image->GetKnownSampleRange().has_value());
  EXPECT_EQ(image->GetSampleRange().high, 3.0F);
  ASSERT_TRUE(image->GetKnownSampleRange().has_value());
  EXPECT_EQ(image->GetKnownSampleRange()->low, 1.0F);
  image->GetArray()[1] = 70.0F;
  EXPECT_FALSE(image->GetKnownSampleRange().has_value());
  EXPECT_EQ(image->GetSampleRange().high, 70.0F);
}

TEST(ImageRange, FindsExtremesAnywhereInALargeImage) {
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    const float fill[] = {0.5F};
    for (const std::size_t place : {0U, 65535U, 65536U, 400000U, 516848U}) {
      Image image(1017, 509, ColorMode::kValue, fill);
      ASSERT_LT(place + 1, image.GetNumSamples());
      image.GetArray()[place] = -4.0F;
      image.GetArray()[place + 1] = 6.0F;
      EXPECT_EQ(image.GetSampleRange().low, -4.0F);
      EXPECT_EQ(image.GetSampleRange().high, 6.0F);
    }
  }
}

bool AllAre(const Image& image, float value) {
  const float* samples = image.GetConstArray();
  return std::all_of(samples, samples + image.GetNumSamples(), [&](float sample) { return sample == value; });
}

TEST(ImageMemory, RecycledSamplesAreTheNewImagesOwn) {
  // Large enough to be kept for the next image of its size.
  constexpr int kSide = 600;
  for (int round = 0; round < 20; ++round) {
    const float first_fill[] = {1.0F + static_cast<float>(round)};
    const float second_fill[] = {-1.0F - static_cast<float>(round)};
    auto first = ScEng::MakeRef<Image>(kSide, kSide, ColorMode::kValue, first_fill);
    auto second = ScEng::MakeRef<Image>(kSide, kSide, ColorMode::kValue, second_fill);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first->GetConstArray()) % 64, 0U);
    EXPECT_NE(first->GetConstArray(), second->GetConstArray());
    EXPECT_TRUE(AllAre(*first, first_fill[0]));
    EXPECT_TRUE(AllAre(*second, second_fill[0]));
    first.Reset();
    EXPECT_TRUE(AllAre(*second, second_fill[0]));
  }
}

TEST(ImageMemory, SizesBelowAndAboveTheRecycledOnesWork) {
  const float fill[] = {3.0F};
  // Around one MiB of samples, in and out of several times, more images than are kept.
  std::vector<ImagePtr> images;
  for (int round = 0; round < 3; ++round) {
    for (const int width : {511, 512, 513, 1024, 2048}) {
      for (int i = 0; i < 4; ++i) images.push_back(ScEng::MakeRef<Image>(width, 512, ColorMode::kValue, fill));
    }
    for (const auto& image : images) EXPECT_TRUE(AllAre(*image, 3.0F));
    images.clear();
  }
}

// Sanitizers have an allocator of their own, which gives memory back as it likes.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

/// The bytes of memory that the process has asked the system for.
std::size_t CountMappedBytes() {
  std::size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// Above what is kept at any time. Nothing is written there, so that it takes no memory.
constexpr int kLargeSide = 8704;
constexpr std::size_t kLargeBytes = std::size_t{kLargeSide} * kLargeSide * sizeof(float);
static_assert(kLargeBytes > std::size_t{256} << 20);

TEST(ImageMemory, ScopesKeepTheMemoryOfLargeImagesForTheNextOne) {
  const std::size_t before = CountMappedBytes();
  {
    const ScEng::SampleMemoryScope outer;
    const float* first = nullptr;
    for (int round = 0; round < 4; ++round) {
      const ScEng::SampleMemoryScope inner;
      const Image image(kLargeSide, kLargeSide, ColorMode::kValue, nullptr);
      if (round == 0) first = image.GetConstArray();
      EXPECT_EQ(image.GetConstArray(), first);
    }
    // What images before these have left may go.
    EXPECT_GT(CountMappedBytes(), before + kLargeBytes / 2);
  }
  EXPECT_LT(CountMappedBytes(), before + kLargeBytes / 2);
}

TEST(ImageMemory, ScopesKeepNoMoreThanWhatWasInUse) {
  // Two large images at most are in use, each of another size: what the older ones leave cannot stay.
  constexpr int kRounds = 12;
  const std::size_t before = CountMappedBytes();
  const ScEng::SampleMemoryScope scope;
  ImagePtr held;
  for (int round = 0; round < kRounds; ++round) {
    held = ScEng::MakeRef<Image>(kLargeSide + round, kLargeSide, ColorMode::kValue, nullptr);
    constexpr std::size_t kKeptAtAnyTime = std::size_t{512} << 20;
    EXPECT_LT(CountMappedBytes(), before + 2 * kLargeBytes + kKeptAtAnyTime + kLargeBytes / 2);
  }
}

TEST(ImageMemory, AForkedProcessHasTheScopesOfItsOwnThreadAlone) {
  /// Whether the memory of a large image that has gone is kept.
  const auto keeps = [] {
    const std::size_t before = CountMappedBytes();
    { const Image image(kLargeSide, kLargeSide, ColorMode::kValue, nullptr); }
    return CountMappedBytes() > before + kLargeBytes / 2;
  };
  const auto fork_and_check = [](const std::function<bool()>& check) {
    const pid_t child = fork();
    if (child == 0) _exit(check() ? 0 : 1);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  };
  const std::size_t at_first = CountMappedBytes();
  const ScEng::SampleMemoryScope other;
  EXPECT_TRUE(keeps());
  std::thread([&] {
    // What the scope of the other thread has kept goes with it.
    fork_and_check([&] { return !keeps() && CountMappedBytes() < at_first + kLargeBytes / 2; });
    std::optional<ScEng::SampleMemoryScope> own;
    own.emplace();
    fork_and_check([&] {
      const std::size_t before = CountMappedBytes();
      { const Image image(kLargeSide, kLargeSide, ColorMode::kValue, nullptr); }
      // It took the block that was kept, which goes with the scope.
      if (CountMappedBytes() < before) return false;
      own.reset();
      return CountMappedBytes() < before - kLargeBytes / 2 && !keeps();
    });
  }).join();
}

#endif

TEST(ImageMemory, ManyThreadsMakeAndDropImages) {
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([&wrong, thread] {
      for (int round = 0; round < 12; ++round) {
        const float fill[] = {static_cast<float>(thread * 100 + round)};
        const Image a(560, 512, ColorMode::kValue, fill);
        const Image b(a);
        if (!AllAre(a, fill[0]) || !AllAre(b, fill[0])) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace Testing
