// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/PendingImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <typeinfo>
#include <vector>

#include "Host/Image/ComputeValue.h"
#include "Host/Image/ImageMetadata.h"
#include "Tests/Support/ImageTesting.h"

namespace {

using ScEng::IsPending;
using ScEng::PendingScope;
using Testing::HoldsSamples;
using Testing::MakeRow;

/// Adds `a`, or the second value.
class Sum : public ValueOperation {
 public:
  explicit Sum(float constant) { a = constant; }
  float Compute(float first, float second) override { return first + second; }
  float Compute(float value) override { return value + a; }
};

/// What is above the lowest sample.
class AboveLowest : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return value - min; }
};

/// One that nobody has loops for.
class Unknown : public Sum {
 public:
  Unknown() : Sum(1.0F) {}
};

template <class Operation>
class Loops {
 public:
  explicit Loops(bool reads_range) {
    const auto one = [](const ValueOperation& operation, const float* values, float* to, std::size_t count) {
      auto copy = static_cast<const Operation&>(operation);
      for (std::size_t i = 0; i < count; ++i) to[i] = copy.Compute(values[i]);
    };
    const auto two = [](const ValueOperation& operation, const float* first, const float* second, float* to,
                        std::size_t count) {
      auto copy = static_cast<const Operation&>(operation);
      for (std::size_t i = 0; i < count; ++i) to[i] = copy.Compute(first[i], second[i]);
    };
    const auto copy = [](const ValueOperation& operation) -> ValueOperation* {
      return new Operation(static_cast<const Operation&>(operation));
    };
    ScEng::RegisterValueOperationLoops(typeid(Operation), {one, two, reads_range, copy});
  }
  ~Loops() { ScEng::UnregisterValueOperationLoops(typeid(Operation)); }
  Loops(const Loops&) = delete;
  Loops& operator=(const Loops&) = delete;
};

class PendingImages : public testing::Test {
 protected:
  /// In a scope.
  static ImagePtr Later(const ImagePtr& image, ValueOperation& operation) {
    const PendingScope scope(true);
    return ImagePtr(ComputeValue(image.Get(), &operation));
  }
  static ImagePtr AddLater(const ImagePtr& image, float constant) {
    Sum sum(constant);
    return Later(image, sum);
  }
  static ImagePtr Now(const std::vector<const Image*>& images, ValueOperation& operation) {
    return ImagePtr(ComputeValue(images, &operation));
  }

  const Loops<Sum> sum_loops_{false};
  const Loops<AboveLowest> lowest_loops_{true};
};

TEST_F(PendingImages, AreMadeInAScopeAlone) {
  const ImagePtr image = MakeRow({1.0F, 2.0F});
  Sum sum(0.5F);
  EXPECT_FALSE(IsPending(*image));
  EXPECT_FALSE(PendingScope::IsOn());
  EXPECT_FALSE(IsPending(*Now({image.Get()}, sum)));
  {
    const PendingScope scope(true);
    EXPECT_TRUE(PendingScope::IsOn());
    EXPECT_TRUE(IsPending(*Now({image.Get()}, sum)));
    {
      const PendingScope inner(false);
      EXPECT_FALSE(IsPending(*Now({image.Get()}, sum)));
    }
    EXPECT_TRUE(IsPending(*Now({image.Get()}, sum)));
  }
  EXPECT_FALSE(IsPending(*Now({image.Get()}, sum)));
}

TEST_F(PendingImages, HaveTheHeaderOfTheResult) {
  const ImagePtr image = Testing::MakeMarked(ColorMode::kColor);
  const ImagePtr pending = AddLater(image, 0.5F);
  ASSERT_TRUE(IsPending(*pending));
  EXPECT_EQ(pending->GetBox(), image->GetBox());
  EXPECT_EQ(pending->GetColorMode(), ColorMode::kColor);
  EXPECT_EQ(pending->GetPinX(), 7);
  EXPECT_EQ(pending->GetPivotY(), 0.75F);
  EXPECT_EQ(pending->GetOutsideValue(), 0.0F);
}

TEST_F(PendingImages, AreComputedByTheNextOperation) {
  const ImagePtr image = MakeRow({1.0F, 2.0F, -3.0F});
  // Nothing but the pending images holds what they are computed from.
  ImagePtr pending = AddLater(AddLater(AddLater(image, 1.0F), 2.0F), 4.0F);
  EXPECT_EQ(image->GetRefCount(), 2U);
  Sum last(8.0F);
  const ImagePtr result = Now({pending.Get()}, last);
  EXPECT_TRUE(HoldsSamples(result.Get(), {16.0F, 17.0F, 12.0F}));
  EXPECT_EQ(result->GetValueLow(), 12.0F);
  EXPECT_EQ(result->GetValueHigh(), 17.0F);
  // As often as one likes.
  EXPECT_TRUE(HoldsSamples(Now({pending.Get()}, last).Get(), {16.0F, 17.0F, 12.0F}));
  pending.Reset();
  EXPECT_EQ(image->GetRefCount(), 1U);
}

TEST_F(PendingImages, KeepTheOperationAsItWas) {
  const ImagePtr image = MakeRow({1.0F});
  Sum sum(1.0F);
  const ImagePtr pending = Later(image, sum);
  sum.a = 100.0F;
  EXPECT_TRUE(HoldsSamples(ScEng::Settle(*pending).Get(), {2.0F}));
}

TEST_F(PendingImages, HaveTheRangeOfTheirInputWhereTheFormulaReadsIt) {
  const ImagePtr image = MakeRow({5.0F, 3.0F});
  AboveLowest above;
  // Of an image, and of a pending one, whose lowest sample is 4.
  EXPECT_TRUE(HoldsSamples(ScEng::Settle(*Later(image, above)).Get(), {2.0F, 0.0F}));
  EXPECT_EQ(above.min, 3.0F);
  EXPECT_EQ(above.max, 5.0F);
  EXPECT_TRUE(HoldsSamples(ScEng::Settle(*Later(AddLater(image, 1.0F), above)).Get(), {2.0F, 0.0F}));
  EXPECT_EQ(above.min, 4.0F);
  EXPECT_TRUE(HoldsSamples(Now({AddLater(image, 2.0F).Get()}, above).Get(), {2.0F, 0.0F}));
  EXPECT_EQ(above.min, 5.0F);
}

TEST_F(PendingImages, AreFoldedWithOthers) {
  const ImagePtr image = MakeRow({1.0F, 2.0F});
  const ImagePtr left = AddLater(image, 0.5F);
  const ImagePtr right = AddLater(image, 10.0F);
  Sum sum(0.0F);
  EXPECT_TRUE(HoldsSamples(Now({left.Get(), right.Get()}, sum).Get(), {12.5F, 14.5F}));
  EXPECT_TRUE(HoldsSamples(Now({left.Get(), image.Get(), right.Get()}, sum).Get(), {13.5F, 16.5F}));
}

TEST_F(PendingImages, ReadAsTheirOutsideValueOutside) {
  const ImagePtr image = MakeRow({1.0F, 2.0F});
  const ImagePtr moved = MakeRow({10.0F, 20.0F});
  moved->SetPin(1, 0);
  moved->SetOutsideValue(100.0F);
  // A result of one image has the outside value 0, whatever that of its input.
  const ImagePtr pending = AddLater(moved, 5.0F);
  Sum sum(0.0F);
  EXPECT_TRUE(HoldsSamples(Now({image.Get(), pending.Get()}, sum).Get(), {1.0F, 17.0F, 25.0F}));
  EXPECT_TRUE(HoldsSamples(Now({pending.Get(), image.Get()}, sum).Get(), {1.0F, 17.0F, 25.0F}));
}

TEST_F(PendingImages, AreReadAsValuesBesideValues) {
  // Opacity 1 after the sum: (1 * 3 + 1 * 2) + 1 * 4 = 9, a third of which is the value.
  const ImagePtr color = Testing::MakeColors({2.0F, 1.0F, 3.0F, 0.0F});
  const ImagePtr value = MakeRow({1.0F});
  Sum sum(0.0F);
  const ImagePtr result = Now({value.Get(), AddLater(color, 1.0F).Get()}, sum);
  EXPECT_TRUE(HoldsSamples(result.Get(), {1.0F + 9.0F * 0.33333334F}));
}

TEST_F(PendingImages, AreNotMadeWithoutLoopsOrACopy) {
  const ImagePtr image = MakeRow({1.0F});
  Unknown unknown;
  const ImagePtr made = Later(image, unknown);
  EXPECT_FALSE(IsPending(*made));
  EXPECT_TRUE(HoldsSamples(made.Get(), {2.0F}));
}

TEST_F(PendingImages, AreNotMadeOfAnImageThatNobodyHolds) {
  const float fill = 2.0F;
  const Image image(1, 1, ColorMode::kValue, &fill);
  const PendingScope scope(true);
  Sum sum(1.0F);
  const ImagePtr made(ComputeValue(&image, &sum));
  EXPECT_FALSE(IsPending(*made));
  EXPECT_TRUE(HoldsSamples(made.Get(), {3.0F}));
  EXPECT_EQ(image.GetRefCount(), 0U);
}

TEST_F(PendingImages, AreRefusedLikeImagesThatAreTooLarge) {
  const ImagePtr image = MakeRow({1.0F, 2.0F, 3.0F});
  const Testing::MaxSizeScope size(2, 2);
  const PendingScope scope(true);
  Sum sum(1.0F);
  EXPECT_EQ(ComputeValue(image.Get(), &sum), nullptr);
}

TEST_F(PendingImages, AreComputedAtOnceWhereThereAreTooMany) {
  const ImagePtr image = MakeRow({1.0F});
  std::vector<ImagePtr> images;
  std::size_t pending = 0;
  for (int i = 0; i < 3000; ++i) {
    images.push_back(AddLater(image, static_cast<float>(i)));
    if (IsPending(*images.back())) ++pending;
  }
  EXPECT_GT(pending, 0U);
  EXPECT_LT(pending, images.size());
  Sum sum(0.0F);
  for (int i = 0; i < 3000; ++i) {
    EXPECT_TRUE(
        HoldsSamples(Now({images[static_cast<std::size_t>(i)].Get()}, sum).Get(), {1.0F + static_cast<float>(i)}));
  }
  images.clear();
  EXPECT_TRUE(IsPending(*AddLater(image, 1.0F)));
}

TEST_F(PendingImages, SettleOnlyWhereTheyArePending) {
  const ImagePtr image = Testing::MakeMarked(ColorMode::kValue);
  EXPECT_FALSE(ScEng::Settle(*image));
  const ImagePtr pending = AddLater(image, 1.0F);
  pending->SetValueLowHigh(3.0F, 4.0F);
  const ImagePtr settled = ScEng::Settle(*pending);
  EXPECT_FALSE(IsPending(*settled));
  EXPECT_EQ(settled->GetValueLow(), 3.0F);
  EXPECT_EQ(settled->GetPinX(), 7);
  EXPECT_EQ(settled->GetConstArray()[1], image->GetConstArray()[1] + 1.0F);
}

TEST_F(PendingImages, AreMadeWholeWithWhatTheyWouldHaveHad) {
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const ImagePtr image = MakeRow({1.0F, kNan, -2.0F, kInfinity});
  EXPECT_FALSE(ScEng::MakeWhole(*image));
  const ImagePtr pending = AddLater(image, 10.0F);
  EXPECT_TRUE(std::isnan(pending->GetValueLow()));
  EXPECT_TRUE(std::isnan(pending->GetValueHigh()));
  const auto metadata = std::make_shared<const ScEng::ImageMetadata>();
  pending->SetMetadata(metadata);
  const ImagePtr whole = ScEng::MakeWhole(*pending);
  EXPECT_TRUE(HoldsSamples(whole.Get(), {11.0F, kNan, 8.0F, kInfinity}));
  EXPECT_EQ(whole->GetValueLow(), 8.0F);
  EXPECT_EQ(whole->GetValueHigh(), 11.0F);
  EXPECT_EQ(whole->GetMetadata(), metadata);

  pending->SetValueLowHigh(0.0F, 1.0F);
  const ImagePtr declared = ScEng::MakeWhole(*pending);
  EXPECT_EQ(declared->GetValueLow(), 0.0F);
  EXPECT_EQ(declared->GetValueHigh(), 1.0F);

  // Nothing to measure.
  const ImagePtr empty = ScEng::MakeWhole(*AddLater(MakeRow({kNan, -kInfinity}), 1.0F));
  EXPECT_EQ(empty->GetValueLow(), 0.0F);
  EXPECT_EQ(empty->GetValueHigh(), 0.0F);
}

TEST_F(PendingImages, AreFoldedThemselvesWhereTheyLieAtOnePlace) {
  const ImagePtr image = MakeRow({1.0F, 2.0F});
  const ImagePtr other = MakeRow({10.0F, 20.0F});
  other->SetOutsideValue(3.0F);
  Sum sum(0.0F);
  const ImagePtr first = AddLater(image, 0.5F);
  ImagePtr folded;
  {
    const PendingScope scope(true);
    folded = Now({first.Get(), other.Get(), image.Get()}, sum);
    EXPECT_FALSE(IsPending(*Now({other.Get(), first.Get()}, sum))) << "the second one is pending";
    const ImagePtr moved = MakeRow({7.0F, 8.0F});
    moved->SetPin(1, 0);
    EXPECT_FALSE(IsPending(*Now({other.Get(), moved.Get()}, sum)));
  }
  ASSERT_TRUE(IsPending(*folded));
  EXPECT_EQ(folded->GetOutsideValue(), 3.0F);
  EXPECT_EQ(other->GetRefCount(), 2U);
  const ImagePtr last = AddLater(folded, 100.0F);
  EXPECT_TRUE(HoldsSamples(ScEng::Settle(*last).Get(), {112.5F, 124.5F}));
}

TEST_F(PendingImages, AreFoldedWithThemselves) {
  const ImagePtr image = MakeRow({1.0F, 2.0F});
  const ImagePtr pending = AddLater(image, 10.0F);
  Sum sum(0.0F);
  const PendingScope scope(true);
  const ImagePtr twice(ComputeValue({pending.Get(), pending.Get()}, &sum));
  const ImagePtr settled = IsPending(*twice) ? ScEng::Settle(*twice) : twice;
  EXPECT_TRUE(HoldsSamples(settled.Get(), {22.0F, 24.0F}));
}

TEST_F(PendingImages, AreFetchedPieceByPiece) {
  const ImagePtr image = MakeRow({1.0F, 2.0F, 3.0F});
  const ImagePtr pending = AddLater(image, 10.0F);
  float buffer[2] = {};
  EXPECT_EQ(ScEng::FetchSamples(*image, 1, 2, buffer), image->GetConstArray() + 1);
  EXPECT_EQ(ScEng::FetchSamples(*pending, 1, 2, buffer), buffer);
  EXPECT_EQ(buffer[0], 12.0F);
  EXPECT_EQ(buffer[1], 13.0F);
}

using PendingImagesDeathTest = PendingImages;

TEST_F(PendingImagesDeathTest, EndTheProgramOfWhoeverReadsTheirSamples) {
  const ImagePtr pending = AddLater(MakeRow({1.0F}), 1.0F);
  volatile float read = 0.0F;
  EXPECT_DEATH(read = pending->GetConstArray()[0], "");
  EXPECT_EQ(read, 0.0F);
}

}  // namespace
