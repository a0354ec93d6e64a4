// SPDX-License-Identifier: Apache-2.0
//
// Holds what nodes say of their reach against the truth: evaluated on a band of rows with the margin that the reach
// asks for, a node gives the samples that it gives on the whole image.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeRecord.h"
#include "Tests/Support/LibraryNodes.h"
#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::ImageRef;

constexpr int kWidth = 23;
constexpr int kHeight = 61;
constexpr float kLow = -0.5F;
constexpr float kHigh = 1.5F;

/// What attributes are set to, as text: numbers, "true" or "false", words.
using Setting = std::vector<std::pair<std::string, std::string>>;

void Set(Node& node, const Setting& setting) {
  for (const auto& [name, value] : setting) {
    Attribute& attribute = *node.GetAttribute(name);
    switch (attribute.GetKind()) {
      case Attribute::Kind::kFlag: attribute.SetFlag(value == "true", false); break;
      case Attribute::Kind::kNumber: EXPECT_TRUE(attribute.SetNumber(std::stod(value), false)); break;
      default: EXPECT_TRUE(attribute.SetChoice(value, false)) << name << " " << value; break;
    }
  }
}

/// The lowest and highest samples are in the first row, so that a copy of that row carries the range of the image.
ImageRef MakeWhole(unsigned mode, std::uint32_t seed) {
  const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(mode));
  std::vector<float> samples(channels * kWidth * kHeight);
  std::mt19937 random(seed);
  for (float& sample : samples) sample = kLow + static_cast<float>(random() % 1025) * (kHigh - kLow) / 1024.0F;
  for (std::size_t channel = 0; channel < channels; ++channel) {
    const bool is_opacity = mode == ColorMode::kColor && channel == 3;
    samples[channel] = is_opacity ? 1.0F : kLow - 1.0F;
    samples[channels + channel] = is_opacity ? 1.0F : kHigh + 1.0F;
  }
  ImageRef image = Testing::MakeImage(kWidth, kHeight, mode, samples);
  image->SetValueLowHigh(kLow, kHigh);
  return image;
}

/// The rows of `whole` from `from` to `to`, which may lie outside of it: there the rows of the opposite side.
ImageRef CutRows(const Image& whole, std::int64_t from, std::int64_t to, Reach::Range range) {
  // What is measured is measured on the band, so that it needs the row with the lowest and highest samples.
  const bool with_first_row = range == Reach::Range::kMeasured;
  const std::size_t row_samples = static_cast<std::size_t>(whole.GetNumChannels()) * kWidth;
  std::vector<float> samples;
  const auto add = [&](std::int64_t y) {
    const auto row = static_cast<std::size_t>((y % kHeight + kHeight) % kHeight);
    const float* first = whole.GetConstArray() + row * row_samples;
    samples.insert(samples.end(), first, first + row_samples);
  };
  for (std::int64_t y = from; y < to; ++y) add(y);
  if (with_first_row) add(0);
  ImageRef band =
      Testing::MakeImage(kWidth, static_cast<int>(to - from) + (with_first_row ? 1 : 0), whole.GetColorMode(), samples);
  // Who reads no range must not mind another one.
  const bool reads_range = range != Reach::Range::kNone;
  band->SetValueLowHigh(reads_range ? whole.GetValueLow() : -3.0F, reads_range ? whole.GetValueHigh() : 7.0F);
  return band;
}

std::vector<float> GetRows(const Image& image, std::int64_t from, std::int64_t count) {
  const std::int64_t row_samples = std::int64_t{image.GetNumChannels()} * image.GetSizeX();
  const float* first = image.GetConstArray() + from * row_samples;
  return {first, first + count * row_samples};
}

/// The margins of a band of rows, and whether rows are missing from what the reach asks for.
struct Margins {
  std::int64_t above = 0;
  std::int64_t below = 0;
};

Margins GetMargins(const Reach& reach, std::int64_t from, std::int64_t to) {
  if (reach.wraps) return {reach.rows_above, reach.rows_below};
  return {std::min(reach.rows_above, from), std::min(reach.rows_below, kHeight - to)};
}

class NodeReach : public testing::Test {
 protected:
  /// How far the samples of a node's bands, cut by its reach, are from those of the whole image.
  static float FindLargestError(const std::string& type, const Setting& setting, unsigned mode) {
    const auto node = Create(type);
    Set(*node, setting);
    std::vector<ImageRef> wholes;
    for (std::uint32_t i = 0; i < CountImages(*node); ++i) wholes.push_back(MakeWhole(mode, 7 + i));
    const auto inputs = Testing::MakeInputs(*node, Pointers(wholes));
    const Reach reach = node->GetReach(inputs);
    EXPECT_TRUE(reach.kind == Reach::Kind::kSamples || reach.kind == Reach::Kind::kRows);
    float largest = 0.0F;
    for (unsigned output = 0; output < node->GetOutplugs().size(); ++output) {
      node->Evaluate(output, inputs);
      const Image* result = node->GetOutputImage(output);
      if (result == nullptr) {
        ADD_FAILURE() << type << " has no output";
        return INFINITY;
      }
      const ImageRef whole(new Image(*result));
      for (const auto& [from, to] : {std::pair<std::int64_t, std::int64_t>{0, 7}, {7, 8}, {8, 40}, {40, 61}}) {
        largest = std::max(largest, CompareBand(type, setting, wholes, *whole, output, reach, from, to));
      }
    }
    return largest;
  }

 private:
  static Testing::NodeRef<Node> Create(const std::string& type) {
    Testing::NodeRef<Node> node = Testing::MakeLibraryNode(type);
    EXPECT_TRUE(node) << type;
    return node;
  }

  static std::uint32_t CountImages(const Node& node) {
    const bool takes_many = node.GetInplugs()[0].connections == PlugRecord::kAnyNumber;
    return takes_many ? 2 : static_cast<std::uint32_t>(node.GetNumRegularInputs());
  }

  static std::vector<const Image*> Pointers(const std::vector<ImageRef>& images) {
    std::vector<const Image*> pointers;
    for (const ImageRef& image : images) pointers.push_back(image.Get());
    return pointers;
  }

  static float CompareBand(const std::string& type, const Setting& setting, const std::vector<ImageRef>& wholes,
                           const Image& expected, unsigned output, const Reach& reach, std::int64_t from,
                           std::int64_t to) {
    const Margins margins = GetMargins(reach, from, to);
    std::vector<ImageRef> bands;
    for (const ImageRef& whole : wholes) {
      bands.push_back(CutRows(*whole, from - margins.above, to + margins.below, reach.range));
    }
    const auto node = Create(type);
    Set(*node, setting);
    node->Evaluate(output, Testing::MakeInputs(*node, Pointers(bands)));
    const Image* band = node->GetOutputImage(output);
    if (band == nullptr) {
      ADD_FAILURE() << type << " has no output on a band";
      return INFINITY;
    }
    const std::vector<float> actual = GetRows(*band, margins.above, to - from);
    const std::vector<float> wanted = GetRows(expected, from, to - from);
    float largest = 0.0F;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      if (!Testing::AreSame(actual[i], wanted[i])) {
        const float error = std::abs(actual[i] - wanted[i]);
        largest = std::isnan(error) ? INFINITY : std::max(largest, error);
      }
    }
    return largest;
  }
};

TEST_F(NodeReach, OfArithmeticIsTheSample) {
  for (const char* type :
       {"ImageValueAddNode", "ImageValueSubtractNode", "ImageValueMultiplyNode", "ImageValueDivideNode",
        "ImageValuePowerNode", "ImageValueMinimumNode", "ImageValueMaximumNode"}) {
    for (const unsigned mode : {ColorMode::kColor, ColorMode::kValue}) {
      EXPECT_EQ(FindLargestError(type, {}, mode), 0.0F) << type;
    }
  }
}

TEST_F(NodeReach, OfToValueIsTheSampleAndTheRange) {
  for (const unsigned mode : {ColorMode::kColor, ColorMode::kSigned, ColorMode::kValue}) {
    for (const char* auto_level : {"false", "true"}) {
      EXPECT_EQ(FindLargestError("ImageToValueNode", {{"low", "-2"}, {"auto_level", auto_level}}, mode), 0.0F);
    }
  }
}

TEST_F(NodeReach, OfClampAndStepsIsTheSampleAndTheRange) {
  for (const char* side : {"both", "low", "high"}) {
    const Setting setting{{"clamp", side}, {"low", "0.25"}, {"high", "0.75"}, {"profile", "smooth"}};
    EXPECT_EQ(FindLargestError("ImageValueClampNode", setting, ColorMode::kValue), 0.0F) << side;
  }
  EXPECT_EQ(FindLargestError("ImageValueStepsNode", {{"steps", "5"}}, ColorMode::kValue), 0.0F);
}

TEST_F(NodeReach, OfMasksIsTheSampleAndTheRange) {
  for (const char* test : {"v_eq_min", "v_df_min", "v_eq_max", "v_df_max", "v_lt_a", "a_lte_v_lte_b"}) {
    const Setting setting{{"condition", test}, {"a", "0.25"}, {"b", "0.75"}};
    EXPECT_EQ(FindLargestError("ImageValueConditionNode", setting, ColorMode::kValue), 0.0F) << test;
  }
  const Setting range{{"center", "0.5"}, {"size", "0.1"}, {"falloff", "0.2"}};
  EXPECT_EQ(FindLargestError("ImageValueRangeNode", range, ColorMode::kValue), 0.0F);
  EXPECT_EQ(FindLargestError("ImageValueFunctionNode", {{"function", "sine"}}, ColorMode::kColor), 0.0F);
  for (const unsigned mode : {ColorMode::kColor, ColorMode::kValue}) {
    EXPECT_EQ(FindLargestError("ImageValueCompareNode", {{"precision", "0.1"}}, mode), 0.0F);
  }
}

TEST_F(NodeReach, OfGradientIsTheRowsBeside) {
  for (const char* seamless : {"false", "true"}) {
    EXPECT_EQ(FindLargestError("ImageComputeGradientNode", {{"seamless", seamless}}, ColorMode::kColor), 0.0F);
  }
}

TEST_F(NodeReach, OfComponentEdgesIsTheRowsBesideAndTheRange) {
  for (const char* seamless : {"false", "true"}) {
    for (const char* neighbors : {"all", "cross"}) {
      const Setting setting{{"seamless", seamless}, {"neighbors", neighbors}, {"threshold", "0.4"}};
      EXPECT_EQ(FindLargestError("ImageComponentEdgesNode", setting, ColorMode::kValue), 0.0F);
      EXPECT_EQ(FindLargestError("ImageComponentEdgesNode", setting, ColorMode::kColor), 0.0F);
    }
  }
}

TEST_F(NodeReach, OfReliefIsItsRadius) {
  for (const char* seamless : {"false", "true"}) {
    for (const char* style : {"levels", "inner_bevel", "outer_bevel", "emboss", "pillow_emboss"}) {
      for (const char* radius : {"0", "1", "4"}) {
        const Setting setting{{"seamless", seamless}, {"style", style}, {"radius", radius}, {"multiplier", "2"}};
        EXPECT_EQ(FindLargestError("ImageReliefNode", setting, ColorMode::kValue), 0.0F) << style << " " << radius;
      }
    }
  }
}

TEST_F(NodeReach, OfASoftenedReliefIsFourSigmasMore) {
  for (const char* seamless : {"false", "true"}) {
    for (const char* style : {"levels", "outer_bevel"}) {
      const Setting setting{{"seamless", seamless}, {"style", style}, {"radius", "2"}, {"soften", "2"}};
      // The blur is within 1e-5 of the range of its input of the true sum, for the whole and for the band; levels at
      // most doubles what its mask is off by, a bevel takes it as it is.
      constexpr float kTwice = 2.0F * 1e-5F * (kHigh - kLow + 2.0F);
      EXPECT_LE(FindLargestError("ImageReliefNode", setting, ColorMode::kValue), 2.0F * kTwice) << style;
    }
  }
}

TEST_F(NodeReach, OfAmbientOcclusionIsItsRadiusAndTheRange) {
  for (const char* seamless : {"false", "true"}) {
    for (const char* radius : {"3", "6.5"}) {
      const Setting setting{{"seamless", seamless}, {"radius", radius}};
      // Twice what a device may be off by.
      EXPECT_LE(FindLargestError("ImageAmbientOcclusionNode", setting, ColorMode::kValue), 2.0F * 2e-4F) << radius;
    }
  }
}

/// Every type says something, and is tried with its defaults where it says less than the whole image. This finds types
/// that are added; those above are tried with their other settings, too.
TEST_F(NodeReach, OfEveryTypeIsTrueByDefault) {
  for (const auto& descriptor : Testing::GetLibraryDescriptors()) {
    const Testing::NodeRef<Node> node(descriptor->GetNodeFactory()->CreateNode());
    const Reach reach = node->GetReach(Testing::MakeInputs(*node, {}));
    EXPECT_NE(reach.kind, Reach::Kind::kUnknown) << descriptor->GetName();
    if (reach.kind != Reach::Kind::kSamples && reach.kind != Reach::Kind::kRows) continue;
    const std::string type = descriptor->GetNodeFactory()->GetTypeName();
    // A device may be off by this.
    const float tolerance = type == "ImageAmbientOcclusionNode" ? 2.0F * 2e-4F : 0.0F;
    for (const unsigned mode : {ColorMode::kColor, ColorMode::kSigned, ColorMode::kValue}) {
      EXPECT_LE(FindLargestError(type, {}, mode), tolerance) << type << " in mode " << mode;
    }
  }
}

}  // namespace
