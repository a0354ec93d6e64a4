// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/ComputeValue.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Tests/Support/HostTesting.h"

namespace Testing {
namespace {

using ScEng::RefPtr;

// ---- Operations ----

/// An operation that the host has never seen. Neither form gives the same when its operands change places or groups.
class UnknownOperation : public ValueOperation {
 public:
  UnknownOperation() {
    a = 3.0F;
    b = -0.5F;
  }
  float Compute(float first, float second) override { return first * 0.5F - second; }
  float Compute(float value) override { return (value - min) * a + b * max; }
};

/// Counts the calls of the virtual forms, to tell whether the loops below were used instead.
std::atomic<int> virtual_calls = 0;

class LoopedOperation : public ValueOperation {
 public:
  LoopedOperation() {
    a = 0.75F;
    b = 0.0F;
  }
  float Compute(float first, float second) override {
    ++virtual_calls;
    return first - second * 0.25F;
  }
  float Compute(float value) override {
    ++virtual_calls;
    return value * a;
  }
};

class RangedOperation : public ValueOperation {
 public:
  RangedOperation() { a = b = 0.0F; }
  float Compute(float first, float second) override {
    ++virtual_calls;
    return first - second * 0.25F;
  }
  float Compute(float value) override {
    ++virtual_calls;
    return (value - min) + max;
  }
};

/// Derived from a class with loops, without loops of its own.
class DerivedOperation : public LoopedOperation {
 public:
  using LoopedOperation::Compute;
  float Compute(float value) override { return value + 100.0F; }
};

void RunLoopedOne(const ValueOperation& operation, const float* values, float* to, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) to[i] = values[i] * operation.a;
}
void RunRangedOne(const ValueOperation& operation, const float* values, float* to, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) to[i] = (values[i] - operation.min) + operation.max;
}
void RunTwo(const ValueOperation&, const float* first, const float* second, float* to, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) to[i] = first[i] - second[i] * 0.25F;
}

/// Registers the loops while the tests of this file run.
class ComputeValueLoops : public testing::Environment {
 public:
  void SetUp() override {
    ScEng::RegisterValueOperationLoops(typeid(LoopedOperation), {RunLoopedOne, RunTwo, false});
    ScEng::RegisterValueOperationLoops(typeid(RangedOperation), {RunRangedOne, RunTwo, true});
  }
  void TearDown() override {
    ScEng::UnregisterValueOperationLoops(typeid(LoopedOperation));
    ScEng::UnregisterValueOperationLoops(typeid(RangedOperation));
  }
};
const auto* const kLoops = testing::AddGlobalTestEnvironment(new ComputeValueLoops);

// ---- The slow reference ----

float ValueOf(const Image& image, std::int64_t x, std::int64_t y) {
  const float* pixel = image.GetConstArray() + (y * image.GetSizeX() + x) * image.GetNumChannels();
  if (image.GetColorMode() == 1) return pixel[2];
  if (image.GetColorMode() != 0) return pixel[0];
  const float green = pixel[3] * pixel[1];
  const float red = pixel[3] * pixel[0];
  const float blue = pixel[3] * pixel[2];
  const float two = green + red;
  return (two + blue) * 0.33333334F;
}

struct Expected {
  std::int64_t left = 0, top = 0, right = 0, bottom = 0;
  bool equal_boxes = true;
  unsigned mode = 2;
  std::vector<float> samples;
  float outside = 0.0F;
  float low = 0.0F, high = 0.0F;
};

/// The union, the fold and the header as the rules say them, one sample at a time.
template <class Operation>
Expected Compute(const std::vector<const Image*>& images, Operation operation) {
  ValueOperation& compute = operation;
  Expected result;
  result.mode = images[0]->GetColorMode();
  for (std::size_t i = 0; i < images.size(); ++i) {
    const auto box = images[i]->GetBox();
    const auto first = images[0]->GetBox();
    if (box.left != first.left || box.top != first.top || box.right != first.right || box.bottom != first.bottom) {
      result.equal_boxes = false;
    }
    result.left = i == 0 ? box.left : std::min(result.left, box.left);
    result.top = i == 0 ? box.top : std::min(result.top, box.top);
    result.right = i == 0 ? box.right : std::max(result.right, box.right);
    result.bottom = i == 0 ? box.bottom : std::max(result.bottom, box.bottom);
    if (images[i]->GetColorMode() != images[0]->GetColorMode()) result.mode = 2;
  }
  if (images.size() == 1) {
    bool any = false;
    operation.min = 0.0F;
    operation.max = 1.0F;
    for (const float sample : GetSamples(*images[0])) {
      if (std::isnan(sample)) continue;
      operation.min = any ? std::min(operation.min, sample) : sample;
      operation.max = any ? std::max(operation.max, sample) : sample;
      any = true;
    }
    // A zero has no sign here, so that it does not matter which of two zeros comes first.
    operation.min += 0.0F;
    operation.max += 0.0F;
  }
  const int channels = result.mode == 2 ? 1 : result.mode == 3 ? 2 : 4;
  for (std::int64_t y = result.top; y < result.bottom; ++y) {
    for (std::int64_t x = result.left; x < result.right; ++x) {
      for (int channel = 0; channel < channels; ++channel) {
        float folded = 0.0F;
        for (std::size_t i = 0; i < images.size(); ++i) {
          const Image& image = *images[i];
          const auto box = image.GetBox();
          float sample = image.GetOutsideValue();
          if (x >= box.left && x < box.right && y >= box.top && y < box.bottom) {
            const std::int64_t pixel = (y - box.top) * image.GetSizeX() + (x - box.left);
            sample = result.mode == image.GetColorMode()
                         ? image.GetConstArray()[pixel * image.GetNumChannels() + channel]
                         : ValueOf(image, x - box.left, y - box.top);
          }
          folded = i == 0 ? sample : compute.Compute(folded, sample);
        }
        result.samples.push_back(images.size() == 1 ? compute.Compute(folded) : folded);
      }
    }
  }
  bool any = false;
  for (const float sample : result.samples) {
    if (!std::isfinite(sample)) continue;
    result.low = any ? std::min(result.low, sample) : sample;
    result.high = any ? std::max(result.high, sample) : sample;
    any = true;
  }
  if (images.size() > 1) {
    result.outside = images[0]->GetOutsideValue();
    for (std::size_t i = 1; i < images.size(); ++i) {
      result.outside = compute.Compute(result.outside, images[i]->GetOutsideValue());
    }
  }
  return result;
}

void ExpectResult(const Expected& expected, const Image& first, const Image& result) {
  EXPECT_EQ(result.GetColorMode(), expected.mode);
  EXPECT_EQ(result.GetSizeX(), expected.right - expected.left);
  EXPECT_EQ(result.GetSizeY(), expected.bottom - expected.top);
  EXPECT_EQ(result.GetPinX(), first.GetPinX());
  EXPECT_EQ(result.GetPinY(), first.GetPinY());
  if (expected.equal_boxes) {
    EXPECT_EQ(result.GetPivotX(), first.GetPivotX());
    EXPECT_EQ(result.GetPivotY(), first.GetPivotY());
  } else {
    const auto width = static_cast<float>(expected.right - expected.left);
    const auto height = static_cast<float>(expected.bottom - expected.top);
    EXPECT_EQ(result.GetPivotX(), static_cast<float>(first.GetPinX() - expected.left) / width);
    EXPECT_EQ(result.GetPivotY(), static_cast<float>(first.GetPinY() - expected.top) / height);
    EXPECT_EQ(result.GetBox(), (ScEng::Box2I{expected.left, expected.top, expected.right, expected.bottom}));
  }
  EXPECT_TRUE(AreSame(result.GetOutsideValue(), expected.outside));
  EXPECT_EQ(result.GetValueLow(), expected.low);
  EXPECT_EQ(result.GetValueHigh(), expected.high);
  EXPECT_TRUE(SameSamples(expected.samples, GetSamples(result)));
}

/// Compares the list form, and for one image also the other form, with the reference, on 1, 2 and 16 threads.
template <class Operation>
void CheckOne(const std::vector<const Image*>& images) {
  const Expected expected = Compute(images, Operation());
  for (const std::size_t threads : {1U, 2U, 16U}) {
    SCOPED_TRACE(std::to_string(threads) + " threads");
    const ThreadsScope scope(threads);
    Operation operation;
    Image* const uncounted = ComputeValue(images, &operation);
    ASSERT_NE(uncounted, nullptr);
    EXPECT_EQ(uncounted->GetRefCount(), 0U);
    const RefPtr<Image> result(uncounted);
    ExpectResult(expected, *images[0], *result);
    if (images.size() > 1) {
      // The fields belong to the pass over one image.
      EXPECT_EQ(operation.min, 0.0F);
      EXPECT_EQ(operation.max, 1.0F);
      continue;
    }
    Operation other_operation;
    const RefPtr<Image> other(ComputeValue(images[0], &other_operation));
    ASSERT_TRUE(other);
    EXPECT_TRUE(SameSamples(expected.samples, GetSamples(*other)));
    EXPECT_EQ(other->GetValueLow(), expected.low);
    EXPECT_EQ(operation.min, other_operation.min);
    EXPECT_EQ(operation.max, other_operation.max);
  }
}

/// With an operation that the host has never seen and with both kinds of loops.
void Check(const std::vector<ImagePtr>& images) {
  std::vector<const Image*> list;
  for (const auto& image : images) list.push_back(image.Get());
  {
    SCOPED_TRACE("unknown operation");
    CheckOne<UnknownOperation>(list);
  }
  {
    SCOPED_TRACE("operation with loops");
    CheckOne<LoopedOperation>(list);
  }
  {
    SCOPED_TRACE("operation with loops that read the range");
    CheckOne<RangedOperation>(list);
  }
}

/// Samples in steps of 1/8, so that no rounding hides a mistake, and where asked NaN and infinities among them.
ImagePtr MakeRandom(int size_x, int size_y, unsigned mode, std::mt19937& random, bool strange = false) {
  auto image = ScEng::MakeRef<Image>(size_x, size_y, mode, nullptr);
  float* samples = image->GetArray();
  for (std::size_t i = 0; i < image->GetNumSamples(); ++i) {
    samples[i] = static_cast<float>(static_cast<int>(random() % 257) - 128) * 0.125F;
    if (strange && random() % 11 == 0) {
      const float kStrange[] = {kNan, kInfinity, -kInfinity, -0.0F, 1e-42F};
      samples[i] = kStrange[random() % std::size(kStrange)];
    }
  }
  image->SetOutsideValue(static_cast<float>(random() % 9) * 0.5F - 2.0F);
  return image;
}

struct Size {
  int x;
  int y;
};
constexpr Size kSizes[] = {{1, 1}, {1, 37}, {41, 1}, {7, 5}, {127, 61}, {64, 64}, {2053, 3}};

// ---- Against the reference ----

TEST(ComputeValueReference, OneImage) {
  std::mt19937 random(1);
  for (const Size size : kSizes) {
    for (const unsigned mode : {0U, 1U, 2U, 3U}) {
      for (const bool strange : {false, true}) {
        SCOPED_TRACE(std::to_string(size.x) + " x " + std::to_string(size.y) + ", mode " + std::to_string(mode));
        std::vector<ImagePtr> images;
        images.push_back(MakeRandom(size.x, size.y, mode, random, strange));
        images[0]->SetPin(5, -6);
        images[0]->SetPivot(0.3F, 0.7F);
        Check(images);
      }
    }
  }
}

TEST(ComputeValueReference, EqualBoxes) {
  std::mt19937 random(2);
  for (const Size size : kSizes) {
    for (const unsigned mode : {0U, 1U, 2U, 3U}) {
      for (const std::size_t count : {2U, 3U, 4U}) {
        SCOPED_TRACE(std::to_string(size.x) + " x " + std::to_string(size.y) + ", mode " + std::to_string(mode));
        std::vector<ImagePtr> images;
        for (std::size_t i = 0; i < count; ++i) {
          images.push_back(MakeRandom(size.x, size.y, mode, random, true));
          images.back()->SetPin(-9, 4);
        }
        Check(images);
      }
    }
  }
}

TEST(ComputeValueReference, EqualBoxesFromDifferentPins) {
  std::mt19937 random(3);
  std::vector<ImagePtr> images;
  images.push_back(MakeRandom(10, 6, 2, random));
  images.push_back(MakeRandom(10, 6, 2, random));
  images[0]->SetPin(4, 3);
  images[0]->SetPivot(0.5F, 0.5F);
  images[1]->SetPin(-1, 0);
  Check(images);
}

TEST(ComputeValueReference, MixedModesOfEqualBoxes) {
  std::mt19937 random(4);
  for (const unsigned first : {0U, 1U, 2U, 3U}) {
    for (const unsigned second : {0U, 1U, 2U, 3U}) {
      for (const unsigned third : {0U, 2U}) {
        SCOPED_TRACE(std::to_string(first) + std::to_string(second) + std::to_string(third));
        std::vector<ImagePtr> images;
        for (const unsigned mode : {first, second, third}) images.push_back(MakeRandom(53, 47, mode, random, true));
        Check(images);
      }
    }
  }
}

TEST(ComputeValueReference, DifferentSizesPinsAndPivots) {
  std::mt19937 random(5);
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    std::vector<ImagePtr> images;
    const std::size_t count = 2 + random() % 3;
    const bool mixed = random() % 2 == 0;
    const auto mode = static_cast<unsigned>(random() % 4);
    for (std::size_t i = 0; i < count; ++i) {
      const int size_x = 1 + static_cast<int>(random() % 60);
      const int size_y = 1 + static_cast<int>(random() % 40);
      images.push_back(MakeRandom(size_x, size_y, mixed ? static_cast<unsigned>(random() % 4) : mode, random, true));
      images.back()->SetPin(static_cast<int>(random() % 50) - 25, static_cast<int>(random() % 50) - 25);
      images.back()->SetPivot(static_cast<float>(random() % 9) * 0.25F - 0.5F,
                              static_cast<float>(random() % 9) * 0.25F - 0.5F);
    }
    Check(images);
  }
}

TEST(ComputeValueReference, DisjointBoxes) {
  std::mt19937 random(6);
  for (const unsigned mode : {0U, 2U, 3U}) {
    std::vector<ImagePtr> images;
    images.push_back(MakeRandom(9, 5, mode, random, true));
    images.push_back(MakeRandom(4, 7, mode, random));
    images.push_back(MakeRandom(2, 2, 2, random));
    images[1]->SetPin(40, -30);
    images[2]->SetPin(-20, 15);
    Check(images);
  }
}

TEST(ComputeValueReference, WideRowsAreTakenInPieces) {
  std::mt19937 random(7);
  for (const unsigned mode : {0U, 2U, 3U}) {
    std::vector<ImagePtr> images;
    images.push_back(MakeRandom(5003, 3, mode, random, true));
    images.push_back(MakeRandom(2999, 4, mode, random));
    images[1]->SetPin(1777, -2);
    Check(images);
  }
}

// Results of two million samples and more are written in another way.
TEST(ComputeValueReference, LargeOneImage) {
  std::mt19937 random(8);
  for (const auto& [size, mode] : {std::pair{Size{2048, 1024}, 2U}, {Size{1449, 1451}, 2U}, {Size{733, 719}, 0U}}) {
    std::vector<ImagePtr> images;
    images.push_back(MakeRandom(size.x, size.y, mode, random, mode == 0));
    Check(images);
  }
}

TEST(ComputeValueReference, LargeEqualBoxes) {
  std::mt19937 random(9);
  for (const std::size_t count : {2U, 3U}) {
    std::vector<ImagePtr> images;
    for (std::size_t i = 0; i < count; ++i) images.push_back(MakeRandom(1451, 1447, 2, random, i == 1));
    Check(images);
  }
}

TEST(ComputeValueReference, LargeByRows) {
  std::mt19937 random(10);
  std::vector<ImagePtr> images;
  images.push_back(MakeRandom(1301, 1409, 2, random));
  images.push_back(MakeRandom(1201, 907, 2, random, true));
  images.push_back(MakeRandom(300, 300, 0, random));
  images[0]->SetPin(3, 1);
  images[1]->SetPin(410, -200);
  images[2]->SetPin(1000, 1000);
  Check(images);
}

TEST(ComputeValueReference, OneSampleBelowTheLargeSize) {
  std::mt19937 random(11);
  std::vector<ImagePtr> images;
  images.push_back(MakeRandom(2097151 / 127, 127, 2, random));
  Check(images);
}

// ---- By hand ----

TEST(ComputeValue, FoldsFromTheLeft) {
  const auto first = MakeImage(2, 1, ColorMode::kValue, {8.0F, 1.0F});
  const auto second = MakeImage(2, 1, ColorMode::kValue, {2.0F, 3.0F});
  const auto third = MakeImage(2, 1, ColorMode::kValue, {1.0F, 5.0F});
  UnknownOperation operation;
  // ((8 / 2 - 2) / 2 - 1) and ((1 / 2 - 3) / 2 - 5)
  const RefPtr<Image> result(ComputeValue({first.Get(), second.Get(), third.Get()}, &operation));
  EXPECT_EQ(GetSamples(*result), (std::vector<float>{0.0F, -6.25F}));
  EXPECT_EQ(result->GetValueLow(), -6.25F);
  EXPECT_EQ(result->GetValueHigh(), 0.0F);
}

TEST(ComputeValue, MissingPixelsReadAsTheOutsideValueInEveryChannel) {
  const auto first = MakeImage(1, 1, ColorMode::kPair, {10.0F, 20.0F});
  const auto second = MakeImage(1, 1, ColorMode::kPair, {1.0F, 2.0F});
  first->SetOutsideValue(6.0F);
  second->SetOutsideValue(-4.0F);
  second->SetPin(1, 0);
  UnknownOperation operation;
  const RefPtr<Image> result(ComputeValue({first.Get(), second.Get()}, &operation));
  // Left pixel: 10 / 2 + 4, 20 / 2 + 4; right pixel: 6 / 2 - 1, 6 / 2 - 2.
  EXPECT_EQ(GetSamples(*result), (std::vector<float>{9.0F, 14.0F, 2.0F, 1.0F}));
  EXPECT_EQ(result->GetOutsideValue(), 7.0F);
  EXPECT_EQ(result->GetPinX(), 0);
  EXPECT_EQ(result->GetPivotX(), 0.0F);
}

TEST(ComputeValue, PivotOfAUnionNamesTheFirstImagesPin) {
  Image first(2, 2, ColorMode::kValue, nullptr);
  Image second(4, 8, ColorMode::kValue, nullptr);
  const float zero[] = {0.0F};
  std::fill_n(first.GetArray(), 4, zero[0]);
  std::fill_n(second.GetArray(), 32, zero[0]);
  second.SetPin(-2, -6);
  UnknownOperation operation;
  const RefPtr<Image> result(ComputeValue({&first, &second}, &operation));
  EXPECT_EQ(result->GetSizeX(), 4);
  EXPECT_EQ(result->GetSizeY(), 8);
  EXPECT_EQ(result->GetPivotX(), 0.5F);
  EXPECT_EQ(result->GetPivotY(), 0.75F);
}

TEST(ComputeValue, EqualBoxesKeepTheFirstImagesPlace) {
  const float fill[] = {1.0F};
  Image first(4, 4, ColorMode::kValue, fill);
  Image second(4, 4, ColorMode::kValue, fill);
  first.SetPin(2, 4);
  first.SetPivot(0.5F, 1.0F);
  UnknownOperation operation;
  const RefPtr<Image> result(ComputeValue({&first, &second}, &operation));
  EXPECT_EQ(result->GetPinX(), 2);
  EXPECT_EQ(result->GetPinY(), 4);
  EXPECT_EQ(result->GetPivotX(), 0.5F);
  EXPECT_EQ(result->GetPivotY(), 1.0F);
}

template <class Operation>
void ExpectFields(const std::vector<float>& samples, float min, float max) {
  const auto image = MakeImage(static_cast<int>(samples.size()), 1, ColorMode::kValue, samples);
  for (int round = 0; round < 2; ++round) {
    Operation operation;
    const RefPtr<Image> result(ComputeValue(image.Get(), &operation));
    EXPECT_EQ(operation.min, min) << "round " << round;
    EXPECT_EQ(operation.max, max) << "round " << round;
  }
}

void ExpectFieldsOfAll(const std::vector<float>& samples, float min, float max) {
  ExpectFields<UnknownOperation>(samples, min, max);
  ExpectFields<LoopedOperation>(samples, min, max);
  ExpectFields<RangedOperation>(samples, min, max);
}

TEST(ComputeValue, StoresTheLowestAndHighestSample) {
  ExpectFieldsOfAll({3.0F, -2.0F, 5.5F}, -2.0F, 5.5F);
  ExpectFieldsOfAll({kNan, 4.0F, kNan}, 4.0F, 4.0F);
  ExpectFieldsOfAll({kNan, 4.0F, -kInfinity}, -kInfinity, 4.0F);
  ExpectFieldsOfAll({kInfinity, kNan, kInfinity}, kInfinity, kInfinity);
  ExpectFieldsOfAll({kNan, kNan}, 0.0F, 1.0F);
  ExpectFieldsOfAll({}, 0.0F, 1.0F);
}

TEST(ComputeValue, StoresTheRangeBeforeThePass) {
  const auto image = MakeImage(3, 1, ColorMode::kValue, {2.0F, 4.0F, 10.0F});
  UnknownOperation operation;
  const RefPtr<Image> result(ComputeValue(image.Get(), &operation));
  // (v - 2) * 3 - 0.5 * 10
  EXPECT_EQ(GetSamples(*result), (std::vector<float>{-5.0F, 1.0F, 19.0F}));
}

TEST(ComputeValue, StoresANewRangeAfterTheSamplesChanged) {
  const auto image = MakeImage(2, 1, ColorMode::kValue, {1.0F, 2.0F});
  LoopedOperation operation;
  RefPtr<Image>(ComputeValue(image.Get(), &operation)).Reset();
  EXPECT_EQ(operation.max, 2.0F);
  image->GetArray()[0] = 8.0F;
  RefPtr<Image>(ComputeValue(image.Get(), &operation)).Reset();
  EXPECT_EQ(operation.min, 2.0F);
  EXPECT_EQ(operation.max, 8.0F);
}

TEST(ComputeValue, LeavesTheFieldsAloneForSeveralImages) {
  const auto image = MakeImage(1, 1, ColorMode::kValue, {5.0F});
  RangedOperation operation;
  operation.min = -7.0F;
  operation.max = 7.0F;
  const RefPtr<Image> result(ComputeValue({image.Get(), image.Get()}, &operation));
  EXPECT_EQ(operation.min, -7.0F);
  EXPECT_EQ(operation.max, 7.0F);
  EXPECT_EQ(GetSamples(*result), (std::vector<float>{3.75F}));
}

TEST(ComputeValue, LeavesItsInputsAlone) {
  const auto image = MakeImage(2, 1, ColorMode::kValue, {1.0F, kNan});
  image->SetOutsideValue(3.0F);
  image->SetValueLowHigh(-9.0F, 9.0F);
  UnknownOperation operation;
  const RefPtr<Image> result(ComputeValue({image.Get(), image.Get()}, &operation));
  EXPECT_EQ(image->GetRefCount(), 1U) << "the reference of this test";
  EXPECT_TRUE(SameSamples({1.0F, kNan}, GetSamples(*image)));
  EXPECT_EQ(image->GetOutsideValue(), 3.0F);
  EXPECT_EQ(image->GetValueLow(), -9.0F);
}

TEST(ComputeValue, RangeOfTheResultIsOfItsFiniteSamples) {
  LoopedOperation operation;
  const auto some = MakeImage(4, 1, ColorMode::kValue, {kNan, 4.0F, -kInfinity, -8.0F});
  RefPtr<Image> result(ComputeValue(some.Get(), &operation));
  EXPECT_EQ(result->GetValueLow(), -6.0F);
  EXPECT_EQ(result->GetValueHigh(), 3.0F);
  const auto none = MakeImage(2, 1, ColorMode::kValue, {kNan, kInfinity});
  result.Reset(ComputeValue(none.Get(), &operation));
  EXPECT_EQ(result->GetValueLow(), 0.0F);
  EXPECT_EQ(result->GetValueHigh(), 0.0F);
}

TEST(ComputeValue, OutsideValueOfOneImageIsZero) {
  const auto image = MakeImage(1, 1, ColorMode::kValue, {1.0F});
  image->SetOutsideValue(5.0F);
  LoopedOperation operation;
  RefPtr<Image> result(ComputeValue(image.Get(), &operation));
  EXPECT_EQ(result->GetOutsideValue(), 0.0F);
  result.Reset(ComputeValue(std::vector<const Image*>{image.Get()}, &operation));
  EXPECT_EQ(result->GetOutsideValue(), 0.0F);
}

TEST(ComputeValue, AnswersNullWhereThereIsNothingToCompute) {
  const auto image = MakeImage(1, 1, ColorMode::kValue, {1.0F});
  UnknownOperation operation;
  const Image* const none = nullptr;
  EXPECT_EQ(ComputeValue(none, &operation), nullptr);
  EXPECT_EQ(ComputeValue(image.Get(), nullptr), nullptr);
  EXPECT_EQ(ComputeValue(std::vector<const Image*>{}, &operation), nullptr);
  EXPECT_EQ(ComputeValue(std::vector<const Image*>{none}, &operation), nullptr);
  EXPECT_EQ(ComputeValue({image.Get(), nullptr}, &operation), nullptr);
  EXPECT_EQ(ComputeValue({image.Get(), image.Get()}, nullptr), nullptr);
}

TEST(ComputeValue, ComputesEmptyImages) {
  const Image empty(0, 4, ColorMode::kValue, nullptr);
  UnknownOperation operation;
  RefPtr<Image> result(ComputeValue(&empty, &operation));
  ASSERT_TRUE(result);
  EXPECT_EQ(result->GetSizeX(), 0);
  EXPECT_EQ(result->GetSizeY(), 4);
  EXPECT_EQ(result->GetValueLow(), 0.0F);
  EXPECT_EQ(result->GetValueHigh(), 0.0F);
  result.Reset(ComputeValue({&empty, &empty}, &operation));
  ASSERT_TRUE(result);
  EXPECT_EQ(result->GetNumSamples(), 0U);
  const auto image = MakeImage(2, 1, ColorMode::kValue, {1.0F, 3.0F});
  result.Reset(ComputeValue({image.Get(), &empty}, &operation));
  ASSERT_TRUE(result);
  EXPECT_EQ(result->GetSizeX(), 2);
  EXPECT_EQ(result->GetSizeY(), 4);
  EXPECT_EQ(GetSamples(*result), (std::vector<float>{0.5F, 1.5F, 0, 0, 0, 0, 0, 0}));
}

TEST(ComputeValue, AnswersNullForAResultBeyondTheMaximumSize) {
  const float fill[] = {1.0F};
  const Image wide(60, 2, ColorMode::kValue, fill);
  Image far(2, 2, ColorMode::kValue, fill);
  UnknownOperation operation;
  const MaxSizeScope scope(64, 32);
  far.SetPin(62, 0);
  const RefPtr<Image> fitting(ComputeValue({&wide, &far}, &operation));
  ASSERT_TRUE(fitting);
  EXPECT_EQ(fitting->GetSizeX(), 64);
  far.SetPin(63, 0);
  EXPECT_EQ(ComputeValue({&wide, &far}, &operation), nullptr);
  far.SetPin(0, 31);
  EXPECT_EQ(ComputeValue({&wide, &far}, &operation), nullptr);
  far.SetPin(std::numeric_limits<int>::max(), std::numeric_limits<int>::min());
  EXPECT_EQ(ComputeValue({&wide, &far}, &operation), nullptr);
  const MaxSizeScope smaller(59, 32);
  EXPECT_EQ(ComputeValue(&wide, &operation), nullptr);
}

TEST(ComputeValue, AnswersNullWhenNoMemoryHoldsTheSamples) {
  constexpr int kHuge = 1 << 30;
  const MaxSizeScope scope(kHuge, kHuge);
  const float fill[] = {1.0F, 1.0F, 1.0F, 1.0F};
  const Image near(1, 1, ColorMode::kColor, fill);
  Image far(1, 1, ColorMode::kColor, fill);
  far.SetPin(kHuge - 1, kHuge - 1);
  UnknownOperation operation;
  EXPECT_EQ(ComputeValue({&near, &far}, &operation), nullptr);
}

class ThrowingOperation : public ValueOperation {
 public:
  ThrowingOperation() { a = b = 0.0F; }
  float Compute(float, float second) override { return Compute(second); }
  float Compute(float value) override {
    if (value == 77.0F) throw std::runtime_error("seventy-seven");
    return value;
  }
};

TEST(ComputeValue, HandsAnExceptionOfTheOperationToTheCaller) {
  for (const Size size : {Size{5, 4}, Size{500, 400}, Size{1500, 1500}}) {
    const float fill[] = {1.0F};
    Image image(size.x, size.y, ColorMode::kValue, fill);
    image.GetArray()[image.GetNumSamples() - 2] = 77.0F;
    for (const std::size_t threads : {1U, 2U, 16U}) {
      const ThreadsScope scope(threads);
      ThrowingOperation operation;
      EXPECT_THROW(ComputeValue(&image, &operation), std::runtime_error);
      EXPECT_THROW(ComputeValue({&image, &image}, &operation), std::runtime_error);
    }
  }
}

TEST(ComputeValue, RunsOnSeveralThreadsAtOnce) {
  std::mt19937 random(12);
  const auto image = MakeRandom(301, 203, 2, random);
  const std::vector<float> expected = Compute({image.Get(), image.Get()}, UnknownOperation()).samples;
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 6; ++thread) {
    threads.emplace_back([&] {
      for (int round = 0; round < 5; ++round) {
        UnknownOperation operation;
        const RefPtr<Image> result(ComputeValue({image.Get(), image.Get()}, &operation));
        if (!SameSamples(expected, GetSamples(*result))) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

// ---- Loops ----

TEST(ValueOperationLoops, AreUsedInsteadOfTheVirtualForms) {
  const auto image = MakeImage(2, 1, ColorMode::kValue, {4.0F, 8.0F});
  image->SetOutsideValue(0.0F);
  LoopedOperation operation;
  virtual_calls = 0;
  RefPtr<Image> result(ComputeValue(image.Get(), &operation));
  EXPECT_EQ(GetSamples(*result), (std::vector<float>{3.0F, 6.0F}));
  EXPECT_EQ(virtual_calls, 0);
  result.Reset(ComputeValue({image.Get(), image.Get()}, &operation));
  EXPECT_EQ(GetSamples(*result), (std::vector<float>{3.0F, 6.0F}));
  // The fold of the outside values is a call of its own.
  EXPECT_LE(virtual_calls, 1);
}

TEST(ValueOperationLoops, AreOfExactlyTheirClass) {
  EXPECT_TRUE(ScEng::HasValueOperationLoops(typeid(LoopedOperation)));
  EXPECT_FALSE(ScEng::HasValueOperationLoops(typeid(DerivedOperation)));
  const auto image = MakeImage(1, 1, ColorMode::kValue, {4.0F});
  DerivedOperation operation;
  const RefPtr<Image> result(ComputeValue(image.Get(), &operation));
  EXPECT_EQ(GetSamples(*result), (std::vector<float>{104.0F}));
}

TEST(ValueOperationLoops, CanBeTakenBackAndReplaced) {
  class Local : public ValueOperation {
   public:
    float Compute(float first, float) override { return first; }
    float Compute(float value) override { return value + 1.0F; }
  };
  const auto image = MakeImage(1, 1, ColorMode::kValue, {4.0F});
  Local operation;
  const auto compute = [&] { return GetSamples(*RefPtr<Image>(ComputeValue(image.Get(), &operation)))[0]; };
  operation.a = 2.0F;
  EXPECT_EQ(compute(), 5.0F);
  ScEng::RegisterValueOperationLoops(typeid(Local), {RunRangedOne, RunTwo, true});
  EXPECT_EQ(compute(), 4.0F);
  ScEng::RegisterValueOperationLoops(typeid(Local), {RunLoopedOne, RunTwo, false});
  EXPECT_EQ(compute(), 8.0F);
  ScEng::UnregisterValueOperationLoops(typeid(Local));
  EXPECT_FALSE(ScEng::HasValueOperationLoops(typeid(Local)));
  EXPECT_EQ(compute(), 5.0F);
  ScEng::UnregisterValueOperationLoops(typeid(Local));
}

/// One of the two libraries that hold a class of the same name.
class Twin {
 public:
  explicit Twin(const std::string& name) {
    const std::string file = std::string(VALUE_TEST_LIBRARIES) + "/" + name;
    handle_ = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) ADD_FAILURE() << dlerror();
  }
  ~Twin() {
    if (handle_ != nullptr) dlclose(handle_);
  }
  Twin(const Twin&) = delete;
  Twin& operator=(const Twin&) = delete;

  template <class Result>
  Result Call(const char* name) const {
    return reinterpret_cast<Result (*)()>(dlsym(handle_, name))();
  }

  [[nodiscard]] std::vector<float> Compute(const Image& image) const {
    const ValueOperationPtr operation(Call<ValueOperation*>("MakeTwin"));
    operation->a = operation->b = 0.0F;
    std::vector<float> results = GetSamples(*RefPtr<Image>(ComputeValue(&image, operation.get())));
    results.push_back(GetSamples(*RefPtr<Image>(ComputeValue({&image, &image}, operation.get())))[0]);
    return results;
  }

 private:
  void* handle_ = nullptr;
};

TEST(ValueOperationLoops, AreToldFromThoseOfANamesakeInAnotherLibrary) {
  const Twin two("TwinTwo.so");
  const Twin three("TwinThree.so");
  ASSERT_STREQ(two.Call<const char*>("GetTwinName"), three.Call<const char*>("GetTwinName"));
  const auto image = MakeImage(1, 1, ColorMode::kValue, {5.0F});

  two.Call<void>("RegisterTwin");
  EXPECT_TRUE(two.Call<bool>("HasTwin"));
  EXPECT_FALSE(three.Call<bool>("HasTwin"));
  EXPECT_EQ(two.Compute(*image), (std::vector<float>{10.0F, 15.0F}));
  EXPECT_EQ(three.Compute(*image), (std::vector<float>{15.0F, 20.0F}));

  three.Call<void>("RegisterTwin");
  EXPECT_EQ(two.Compute(*image), (std::vector<float>{10.0F, 15.0F}));
  EXPECT_EQ(three.Compute(*image), (std::vector<float>{15.0F, 20.0F}));

  two.Call<void>("UnregisterTwin");
  EXPECT_FALSE(two.Call<bool>("HasTwin"));
  EXPECT_TRUE(three.Call<bool>("HasTwin"));
  EXPECT_EQ(three.Compute(*image), (std::vector<float>{15.0F, 20.0F}));
  three.Call<void>("UnregisterTwin");
}

}  // namespace
}  // namespace Testing
