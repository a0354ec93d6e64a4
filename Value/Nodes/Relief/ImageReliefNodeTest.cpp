// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ImageReliefNode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <string>
#include <vector>

#include "Host/Image/Filter.h"
#include "Host/Util/Log.h"
#include "Host/Util/ParallelRows.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/ValueTesting.h"
#include "Tests/Support/WatchedMemory.h"
#include "Value/Nodes/Relief/ReliefLevelsReference.h"

namespace {

using Testing::AttributePlug;
using Testing::GetSamples;
using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::IsInErrorState;
using Testing::kNan;
using Testing::MakeColors;
using Testing::MakeImage;
using Testing::MakeInputs;
using Testing::MakeRow;
using Testing::MaxSizeScope;
using Testing::SetChoice;
using Testing::SetFlag;
using Testing::SetNumber;

constexpr const char* kStyles[] = {"levels", "inner_bevel", "outer_bevel", "emboss", "pillow_emboss"};
constexpr const char* kProfiles[] = {"linear", "smooth", "arc_out", "arc_in"};

class ReliefNode : public testing::Test {
 protected:
  void Set(double radius, const char* style, bool seamless = false) {
    SetNumber(*node_, "radius", radius);
    SetChoice(*node_, "style", style);
    SetFlag(*node_, "seamless", seamless);
  }
  Image* Evaluate(const ImageRef& image) { return Testing::Evaluate(*node_, {image.Get()}); }

  Testing::NodeRef<ImageReliefNode> node_ = Testing::MakeNode<ImageReliefNode>();
};

TEST_F(ReliefNode, RaisesConesInTheLevelsStyle) {
  Set(4, "levels");
  const ImageRef image = MakeRow({0, 0, 0, 0, 1, 0, 0, 0, 0});
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {0, 0.25F, 0.5F, 0.75F, 1, 0.75F, 0.5F, 0.25F, 0}));
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

TEST_F(ReliefNode, LeavesPixelsFarFromTheMaskAtZeroInTheLevelsStyle) {
  Set(2, "levels");
  ImageRef image = MakeRow({0, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0});
  image->SetValueLowHigh(-1.0F, 9.0F);
  // The mask grown by 3 holds indices 2 to 8. Its other pixels start from the low value and take their own height:
  // q is (0 + 1) / 10, and 1 / 10 of the range of 10 from -1 up is 0 again, within the rounding of 0.1.
  const Image* output = Evaluate(image);
  ASSERT_TRUE(output != nullptr);
  const std::vector<float> samples = GetSamples(*output);
  for (const std::size_t i : {0U, 1U, 9U, 10U}) EXPECT_SAME(samples[i], 0.0F);
  for (const std::size_t i : {2U, 3U, 7U, 8U}) EXPECT_NEAR(samples[i], 0.0F, 1e-6F);
  EXPECT_NEAR(samples[5], 4.0F, 1e-6F);
}

TEST_F(ReliefNode, WithRadiusZeroTheLevelsAreTheMaskItself) {
  Set(0, "levels");
  const std::vector<float> samples = {0.25F, -3.0F, 7.0F, kNan};
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow(samples)), samples));
}

TEST_F(ReliefNode, WithRadiusZeroTheLevelsAreTheBlurredMask) {
  SetNumber(*node_, "soften", 2);
  const ImageRef image = MakeRow({0, 1, 0, 0, 1, 1, 0, 0.5F, 0, 0, 0, 1});
  for (const bool seamless : {false, true}) {
    Set(0, "levels", seamless);
    const ImageRef blurred(new Image(*image));
    Filter::ApplyGaussianBlur(*image, *blurred, 2.0F, 2.0F, seamless ? 'p' : 'b');
    EXPECT_TRUE(HoldsSamples(Evaluate(image), GetSamples(*blurred)));
  }
}

TEST_F(ReliefNode, WithRadiusZeroNoBevelIsDrawn) {
  const ImageRef image = MakeRow({0, 1, 1, 0.5F});
  for (const char* style : {"inner_bevel", "outer_bevel", "emboss"}) {
    Set(0, style);
    EXPECT_TRUE(HoldsSamples(Evaluate(image), {0, 0, 0, 0})) << style;
  }
  Set(0, "pillow_emboss");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {1, 1, 1, 1}));
}

TEST_F(ReliefNode, WithRadiusOneThePillowIsOneRingOfLevelZeroInAFieldOfOne) {
  Set(1, "pillow_emboss");
  for (const char* profile : kProfiles) {
    SetChoice(*node_, "profile", profile);
    EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({0, 0, 0, 1, 1, 0, 0})), {1, 1, 0, 0, 0, 0, 1})) << profile;
  }
}

TEST_F(ReliefNode, DrawsTheFourBevels) {
  const ImageRef image = MakeRow({0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1});
  Set(4, "inner_bevel");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {0, 0, 0, 0, 0, 0.25F, 0.5F, 0.75F, 1, 1, 1}));
  Set(4, "outer_bevel");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {0, 0.25F, 0.5F, 0.75F, 1, 1, 1, 1, 1, 1, 1}));
  Set(4, "emboss");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {0, 0, 0, 0.25F, 0.5F, 0.75F, 1, 1, 1, 1, 1}));
  // Outside, 2 rings of 1/2 and 0 on a field of 1; inside, 2 rings of 1/2 and 1.
  Set(4, "pillow_emboss");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {1, 1, 1, 0.5F, 0, 0.5F, 1, 1, 1, 1, 1}));
}

TEST_F(ReliefNode, DividesAnOddRadiusAmongTheRings) {
  const ImageRef image = MakeRow({0, 0, 0, 1, 1, 1});
  // Emboss starts at ceil(1.5) = 2; levels are i * (1 / 3) in single precision.
  const float third = 1.0F / 3.0F;
  Set(3, "emboss");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {0, third, 2.0F * third, 1, 1, 1}));
  // The pillow has 2 rings outside and 1 inside.
  Set(3, "pillow_emboss");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {1, 0.5F, 0, 1, 1, 1}));
}

TEST_F(ReliefNode, TilesWhenSeamless) {
  const ImageRef image = MakeRow({1, 0, 0, 0, 0, 0});
  Set(4, "levels", true);
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {1, 0.75F, 0.5F, 0.25F, 0.5F, 0.75F}));
  Set(4, "levels", false);
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {1, 0.75F, 0.5F, 0.25F, 0, 0}));
  Set(2, "outer_bevel", true);
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {1, 1, 0.5F, 0, 0.5F, 1}));
}

TEST_F(ReliefNode, KeepsPinAndPivotAndTakesTheRangeOfTheMask) {
  const ImageRef image = Testing::MakeMarked(ColorMode::kValue);
  for (const char* style : kStyles) {
    Set(3, style);
    const Image* output = Evaluate(image);
    ASSERT_NE(output, nullptr);
    EXPECT_EQ(output->GetSizeX(), 3);
    EXPECT_EQ(output->GetSizeY(), 2);
    EXPECT_EQ(output->GetColorMode(), 2U);
    EXPECT_EQ(output->GetPinX(), 7);
    EXPECT_EQ(output->GetPinY(), -5);
    // The pivot is 0.25 * 3 = 0.75, rounded 1, and 0.75 * 2 = 1.5, rounded 1, in whole pixels.
    EXPECT_EQ(output->GetPivotX(), 1.0F / 3.0F);
    EXPECT_EQ(output->GetPivotY(), 0.5F);
    EXPECT_EQ(output->GetValueLow(), -2.0F);
    EXPECT_EQ(output->GetValueHigh(), 6.0F);
    EXPECT_EQ(output->GetOutsideValue(), 0.0F);
    EXPECT_EQ(output->GetRefCount(), 1U);
  }
}

TEST_F(ReliefNode, ReadsOtherModesAsValuesInTheRangeFromZeroToOne) {
  Set(0, "levels");
  // Opacity 0.5 of white is half of nearly 1: 1.5 * 0.33333334 in single precision.
  ImageRef image = MakeColors({1, 1, 1, 0.5F, 0, 0, 0, 1, 1, 1, 1, 1});
  image->SetValueLowHigh(-4.0F, 4.0F);
  const Image* output = Evaluate(image);
  EXPECT_TRUE(HoldsSamples(output, {1.5F * 0.33333334F, 0, 1}));
  EXPECT_EQ(output->GetColorMode(), 2U);
  EXPECT_EQ(output->GetValueLow(), 0.0F);
  EXPECT_EQ(output->GetValueHigh(), 1.0F);
}

TEST_F(ReliefNode, GrowsTheOutputByTheRadiusOnEverySideAndKeepsThePin) {
  Set(2, "outer_bevel");
  SetFlag(*node_, "grow", true);
  ImageRef image = MakeImage(1, 1, ColorMode::kValue, {1});
  image->SetPin(10, 20);
  const Image* output = Evaluate(image);
  EXPECT_TRUE(HoldsSamples(
      output, {0, 0, 0.5F, 0, 0, 0, 0.5F, 1, 0.5F, 0, 0.5F, 1, 1, 1, 0.5F, 0, 0.5F, 1, 0.5F, 0, 0, 0, 0.5F, 0, 0}));
  EXPECT_EQ(output->GetSizeX(), 5);
  EXPECT_EQ(output->GetSizeY(), 5);
  EXPECT_EQ(output->GetPinX(), 10);
  EXPECT_EQ(output->GetPinY(), 20);
  EXPECT_EQ(output->GetPivotX(), 0.4F);
  EXPECT_EQ(output->GetPivotY(), 0.4F);
  EXPECT_EQ(output->GetBox(), (ScEng::Box2I{8, 18, 13, 23}));
}

TEST_F(ReliefNode, TakesTheOutsideOfAValueImageFromItAndZeroAroundOthers) {
  Set(0, "levels");
  SetFlag(*node_, "grow", true);
  const auto grow_by_one = [this](const ImageRef& image) {
    image->SetOutsideValue(0.75F);
    Set(1, "inner_bevel");
    return GetSamples(*Evaluate(image));
  };
  // One ring of level 1 over the mask, which is soft outside the value image.
  const std::vector<float> around_value = grow_by_one(MakeImage(1, 1, ColorMode::kValue, {1}));
  EXPECT_EQ(around_value, (std::vector<float>{0.75F, 0.75F, 0.75F, 0.75F, 1, 0.75F, 0.75F, 0.75F, 0.75F}));
  const std::vector<float> around_color = grow_by_one(MakeColors({1, 1, 1, 1}));
  EXPECT_EQ(around_color, (std::vector<float>{0, 0, 0, 0, 1, 0, 0, 0, 0}));
}

TEST_F(ReliefNode, EndsInTheErrorStateWhereTheOutputWouldBeTooLarge) {
  const MaxSizeScope scope(10, 8);
  const ImageRef image = MakeImage(6, 4, ColorMode::kValue, std::vector<float>(24, 1.0F));
  SetFlag(*node_, "grow", true);
  Set(2, "levels");
  ASSERT_NE(Evaluate(image), nullptr);
  EXPECT_EQ(node_->GetOutputImage(0)->GetSizeX(), 10);
  Set(3, "levels");
  EXPECT_EQ(Evaluate(image), nullptr);
  EXPECT_TRUE(IsInErrorState(*node_, Testing::kOversize));
}

TEST_F(ReliefNode, EndsInTheErrorStateForAnyRadiusTooLargeToGrowBy) {
  SetFlag(*node_, "grow", true);
  const ImageRef image = MakeRow({1});
  auto inputs = MakeInputs(*node_, {image.Get()});
  for (const double radius : {20000.0, 1e9, 1e300, -3.0}) {
    AttributePlug(*node_, inputs, "radius") = radius;
    node_->Evaluate(0, inputs);
    EXPECT_EQ(node_->GetOutputImage(0), nullptr);
    EXPECT_TRUE(IsInErrorState(*node_, Testing::kOversize)) << radius;
  }
}

TEST_F(ReliefNode, GrowsImagesAtTheEndsOfWhatAPinCanBe) {
  SetFlag(*node_, "grow", true);
  Set(3, "levels");
  for (const int pin : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    const ImageRef image = MakeRow({1, 1});
    image->SetPin(pin, pin);
    const Image* output = Evaluate(image);
    ASSERT_NE(output, nullptr);
    const std::int64_t place = pin;
    EXPECT_EQ(output->GetBox(), (ScEng::Box2I{place - 3, place - 3, place + 5, place + 4}));
  }
}

TEST_F(ReliefNode, FailsWhereATaskOfItsFails) {
  // Every task lists the blocks of 64 x 64 pixels that it looks at, 37 x 3 of them; nothing else has the size of such a
  // list.
  constexpr int kWidth = 37 * 64;
  constexpr int kHeight = 3 * 64;
  const ImageRef image =
      MakeImage(kWidth, kHeight, ColorMode::kValue, std::vector<float>(std::size_t{kWidth} * kHeight, 0.5F));
  Set(3, "levels");
  const auto inputs = MakeInputs(*node_, {image.Get()});
  for (const int spared : {0, 7}) {
    {
      const Testing::FailingAllocations failing(std::size_t{37} * 3 * sizeof(int), spared);
      EXPECT_THROW(node_->Evaluate(0, inputs), std::bad_alloc) << spared;
    }
    EXPECT_EQ(node_->GetOutputImage(0), nullptr);
    node_->Evaluate(0, inputs);
    EXPECT_NE(node_->GetOutputImage(0), nullptr);
  }
}

TEST_F(ReliefNode, TakesARadiusFarBeyondItsBounds) {
  std::vector<float> samples(2501, 0.0F);
  samples.back() = 1.0F;
  const ImageRef image = MakeRow(samples);
  auto inputs = MakeInputs(*node_, {image.Get()});
  AttributePlug(*node_, inputs, "seamless") = false;
  AttributePlug(*node_, inputs, "radius") = 4000.0;
  node_->Evaluate(0, inputs);
  // The cone of the last pixel is 4000 wide; the first one is 2500 pixels away.
  EXPECT_EQ(GetSamples(*node_->GetOutputImage(0)).front(), 0.375F);
  AttributePlug(*node_, inputs, "style") = std::string("outer_bevel");
  node_->Evaluate(0, inputs);
  // Drawn up to step 4000 - 2500, with the level of t = 1501 / 4000.
  EXPECT_EQ(GetSamples(*node_->GetOutputImage(0)).front(), 1501.0F * (1.0F / 4000.0F));
}

TEST_F(ReliefNode, ComesToAnEndWithAnyRadiusThatIsDelivered) {
  const ImageRef soft = MakeImage(3, 2, ColorMode::kValue, {0.0F, 0.25F, 0.5F, 1.0F, 0.0F, 0.75F});
  const ImageRef hard = MakeImage(3, 2, ColorMode::kValue, {0.0F, 1.0F, 1.0F, 1.0F, 0.0F, 1.0F});
  for (const ImageRef& image : {soft, hard}) {
    auto inputs = MakeInputs(*node_, {image.Get()});
    for (const char* style : kStyles) {
      for (const char* profile : kProfiles) {
        for (const bool seamless : {false, true}) {
          const bool repeats = std::string(style) == "levels" && std::string(profile) == "smooth" && seamless;
          AttributePlug(*node_, inputs, "style") = std::string(style);
          AttributePlug(*node_, inputs, "profile") = std::string(profile);
          AttributePlug(*node_, inputs, "seamless") = seamless;
          for (const double radius : {1e6, 1e9, 2147483647.0}) {
            SCOPED_TRACE(std::string(style) + ", " + profile + ", " + std::to_string(radius));
            AttributePlug(*node_, inputs, "radius") = radius;
            if (repeats) {
              EXPECT_THROW(node_->Evaluate(0, inputs), std::bad_alloc);
              continue;
            }
            node_->Evaluate(0, inputs);
            const Image* output = node_->GetOutputImage(0);
            ASSERT_NE(output, nullptr);
            EXPECT_EQ(node_->GetState(), Node::State::kIdle);
            // Nothing is above the highest value, and a pixel that has it is there in every style.
            const std::vector<float> samples = GetSamples(*output);
            EXPECT_LE(*std::max_element(samples.begin(), samples.end()), 1.0F);
            EXPECT_GE(*std::min_element(samples.begin(), samples.end()), 0.0F);
          }
        }
      }
    }
  }
}

TEST_F(ReliefNode, EndsInTheErrorStateForARadiusThatCountsNoPixels) {
  const ImageRef image = MakeRow({0, 1});
  auto inputs = MakeInputs(*node_, {image.Get()});
  AttributePlug(*node_, inputs, "radius") = 1e300;
  node_->Evaluate(0, inputs);
  EXPECT_EQ(node_->GetOutputImage(0), nullptr);
  EXPECT_TRUE(IsInErrorState(*node_, "Relief: a radius of 1e+300 pixels is too large; the largest is 2147483647."));
}

TEST_F(ReliefNode, RaisesNothingWithANegativeRadius) {
  ImageRef image = MakeRow({0.25F, 0.75F, 1.5F, 0.0F, -0.5F});
  image->SetValueLowHigh(-1.0F, 1.0F);
  auto inputs = MakeInputs(*node_, {image.Get()});
  for (const double radius : {-1.0, -3.0, -1e300}) {
    AttributePlug(*node_, inputs, "radius") = radius;
    node_->Evaluate(0, inputs);
    // The disc is empty, so that a pixel above 0 gets the low value, unless it keeps its own from the high value up.
    EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {-1, -1, 1.5F, 0, 0})) << radius;
  }
}

TEST_F(ReliefNode, MultipliesTheReliefAndSetsItsRange) {
  Set(2, "levels");
  ImageRef image = MakeRow({0, 1, 0.5F});
  image->SetValueLowHigh(0.0F, 1.0F);
  SetNumber(*node_, "multiplier", -2);
  const Image* output = Evaluate(image);
  EXPECT_TRUE(HoldsSamples(output, {-1, -2, -1}));
  EXPECT_EQ(output->GetValueLow(), -2.0F);
  EXPECT_EQ(output->GetValueHigh(), 0.0F);
  SetNumber(*node_, "multiplier", 3);
  output = Evaluate(image);
  EXPECT_TRUE(HoldsSamples(output, {1.5F, 3, 1.5F}));
  EXPECT_EQ(output->GetValueLow(), 0.0F);
  EXPECT_EQ(output->GetValueHigh(), 3.0F);
}

TEST_F(ReliefNode, LeavesTheRangeWithAMultiplierOfOne) {
  Set(2, "inner_bevel");
  ImageRef image = MakeRow({0, 1});
  image->SetValueLowHigh(-7.0F, 5.0F);
  const Image* output = Evaluate(image);
  EXPECT_EQ(output->GetValueLow(), -7.0F);
  EXPECT_EQ(output->GetValueHigh(), 5.0F);
}

TEST_F(ReliefNode, MultipliesEverySampleOfOddSizes) {
  SetNumber(*node_, "multiplier", 0.5);
  for (const int width : {1, 2, 3, 4, 5, 7, 17}) {
    Set(0, "pillow_emboss");
    const auto count = static_cast<std::size_t>(width);
    EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow(std::vector<float>(count))), std::vector<float>(count, 0.5F)));
  }
}

TEST_F(ReliefNode, RoundsTheRadiusWithHalvesGoingDown) {
  const ImageRef image = MakeRow({0, 0, 0, 0, 1});
  auto inputs = MakeInputs(*node_, {image.Get()});
  AttributePlug(*node_, inputs, "style") = std::string("outer_bevel");
  AttributePlug(*node_, inputs, "seamless") = false;
  const auto get_set = [&](double radius) {
    AttributePlug(*node_, inputs, "radius") = radius;
    node_->Evaluate(0, inputs);
    const std::vector<float> samples = GetSamples(*node_->GetOutputImage(0));
    return std::count_if(samples.begin(), samples.end(), [](float sample) { return sample > 0.0F; });
  };
  EXPECT_EQ(get_set(2.5), 3);
  EXPECT_EQ(get_set(2.51), 4);
  // Above one half as a double, not as a float.
  EXPECT_EQ(get_set(2.5 + 1e-9), 4);
  EXPECT_EQ(get_set(0.5), 0);
  EXPECT_EQ(get_set(1.9), 3);
  EXPECT_EQ(get_set(-4.0), 0);
  EXPECT_EQ(get_set(kNan), 0);
}

TEST_F(ReliefNode, RoundsTheSofteningBeforeItIsNarrowed) {
  const ImageRef image = MakeRow({0, 0, 0, 1, 0, 0});
  auto inputs = MakeInputs(*node_, {image.Get()});
  AttributePlug(*node_, inputs, "radius") = 0.0;
  const auto soften = [&](double sigma) {
    AttributePlug(*node_, inputs, "soften") = sigma;
    node_->Evaluate(0, inputs);
    return GetSamples(*node_->GetOutputImage(0));
  };
  const std::vector<float> by_two = soften(2.0);
  const std::vector<float> by_three = soften(3.0);
  EXPECT_NE(by_two, by_three);
  EXPECT_EQ(soften(2.5), by_two);
  EXPECT_EQ(soften(2.5 + 1e-9), by_three);
}

TEST_F(ReliefNode, ReadsPlugsWithoutAValueAsZeroAndNoStyle) {
  const ImageRef image = MakeRow({0.5F, 0.25F});
  auto inputs = MakeInputs(*node_, {image.Get()});
  for (const char* name : {"radius", "soften", "grow", "seamless", "profile"}) {
    AttributePlug(*node_, inputs, name) = PlugValue();
  }
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0.5F, 0.25F})) << "the mask itself";
  AttributePlug(*node_, inputs, "radius") = 4.0;
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0.5F, 0.25F})) << "half of a cone 2 wide";
  AttributePlug(*node_, inputs, "style") = PlugValue();
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0, 0})) << "no style";
  EXPECT_EQ(node_->GetOutputImage(0)->GetValueHigh(), 1.0F);
  AttributePlug(*node_, inputs, "multiplier") = PlugValue();
  node_->Evaluate(0, inputs);
  EXPECT_EQ(node_->GetOutputImage(0)->GetValueHigh(), 0.0F);
}

TEST_F(ReliefNode, GivesTheSameSamplesWithAnyNumberOfThreads) {
  std::vector<float> samples;
  for (int i = 0; i < 67 * 53; ++i) samples.push_back(static_cast<float>(i * 7919 % 1009) / 1009.0F);
  const ImageRef image = MakeImage(67, 53, ColorMode::kValue, samples);
  SetNumber(*node_, "soften", 3);
  for (const char* style : kStyles) {
    Set(6, style, true);
    std::vector<float> expected;
    for (const std::size_t threads : {1U, 2U, 16U}) {
      const Testing::ThreadsScope scope(threads);
      const Image* output = Evaluate(image);
      if (expected.empty()) expected = GetSamples(*output);
      EXPECT_TRUE(HoldsSamples(output, expected)) << style << ", " << threads << " threads";
    }
  }
}

TEST_F(ReliefNode, ComputesTheLevelsOfTheWholeImageByTheirDefinition) {
  std::vector<float> samples;
  for (int i = 0; i < 45 * 37; ++i) samples.push_back(static_cast<float>(i * 7919 % 1013) / 1013.0F - 0.25F);
  const ImageRef image = MakeImage(45, 37, ColorMode::kValue, samples);
  image->SetValueLowHigh(-0.125F, 0.625F);
  const std::vector<float> all(samples.size(), 1.0F);
  for (int profile = 0; profile < 4; ++profile) {
    Set(9, "levels", true);
    SetChoice(*node_, "profile", kProfiles[profile]);
    // With a set pixel in every neighbourhood of 10 pixels, the grown mask is everywhere.
    const std::vector<float> expected =
        ReliefLevels::Reference::Compute({.mask = samples.data(),
                                          .grown = all.data(),
                                          .width = 45,
                                          .height = 37,
                                          .wrap = true,
                                          .radius_px = 9,
                                          .profile = static_cast<ReliefProfile>(profile),
                                          .low = -0.125F,
                                          .high = 0.625F});
    EXPECT_TRUE(HoldsSamples(Evaluate(image), expected)) << kProfiles[profile];
  }
}

TEST_F(ReliefNode, LogsTheStartAndTheFinishOfItsTasks) {
  std::vector<std::string> lines;
  Log::SetLevel(Log::Level::kInfo);
  Log::SetSink([&](Log::Level, const std::string& line) { lines.push_back(line); });
  Set(3, "levels");
  Evaluate(MakeRow({0, 1, 0}));
  const std::size_t of_levels = lines.size();
  Set(3, "emboss");
  Evaluate(MakeRow({0, 1, 0}));
  Log::SetSink(nullptr);
  Log::SetLevel(Log::Level::kWarning);
  EXPECT_EQ(lines, (std::vector<std::string>{"ThreadPool Work DoLevelsBumpWorker - start",
                                             "ThreadPool Work DoLevelsBumpWorker - finish"}));
  EXPECT_EQ(of_levels, 2U);
}

TEST_F(ReliefNode, ReleasesItsOldResultBeforeItFails) {
  const ImageRef image = MakeRow({0, 1, 0});
  SetFlag(*node_, "grow", true);
  const ImageRef shown(Evaluate(image));
  const MaxSizeScope scope(2, 2);
  EXPECT_EQ(Evaluate(image), nullptr);
  EXPECT_EQ(shown->GetRefCount(), 1U);
}

}  // namespace
