// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ToValue/ImageToValueNode.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Host/Util/Log.h"
#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::kNan;
using Testing::MakeRow;

class ToValueNode : public testing::Test {
 protected:
  Image* Evaluate(const ImageRef& image) { return Testing::Evaluate(*node_, {image.Get()}); }

  const Testing::NodeRef<ImageToValueNode> node_ = Testing::MakeNode<ImageToValueNode>();
};

TEST_F(ToValueNode, TakesColorAsItIsByDefault) {
  const ImageRef image = Testing::MakeColors({1.0F, 1.0F, 1.0F, 1.0F,  //
                                              1.0F, 1.0F, 1.0F, 0.5F,  //
                                              9.0F, 9.0F, 9.0F, 0.0F,  //
                                              3.0F, 3.0F, 3.0F, 1.0F});
  const Image* output = Evaluate(image);
  EXPECT_TRUE(HoldsSamples(output, {1.0F, 0.5F, 0.0F, 3.0F}));
  EXPECT_EQ(output->GetColorMode(), ColorMode::kValue);
  EXPECT_EQ(output->GetRefCount(), 1U);
}

TEST_F(ToValueNode, MapsTheSignedModeFromMinusOneToOne) {
  const ImageRef image = Testing::MakeImage(3, 1, ColorMode::kSigned,
                                            {9.0F, 9.0F, -1.0F, 9.0F,  //
                                             9.0F, 9.0F, 1.0F, 9.0F,   //
                                             9.0F, 9.0F, -3.0F, 9.0F});
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {0.0F, 1.0F, -1.0F}));
}

TEST_F(ToValueNode, MapsTheDeclaredRangeOfTheValueMode) {
  const ImageRef image = MakeRow({2.0F, 4.0F, 6.0F, 8.0F, 0.0F});
  image->SetValueLowHigh(2.0F, 6.0F);
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {0.0F, 0.5F, 1.0F, 1.5F, -0.5F}));
}

TEST_F(ToValueNode, MapsTheMeasuredRangeWithAutomaticLevels) {
  Testing::SetFlag(*node_, "auto_level", true);
  Testing::SetNumber(*node_, "low", 10.0);
  Testing::SetNumber(*node_, "high", 20.0);
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({2.0F, 3.0F, 4.0F})), {10.0F, 15.0F, 20.0F}));
}

TEST_F(ToValueNode, MapsAFlatImageToHighWithAutomaticLevels) {
  Testing::SetFlag(*node_, "auto_level", true);
  const Image* output = Evaluate(Testing::MakeColors({0.7F, 0.7F, 0.7F, 1.0F, 0.7F, 0.7F, 0.7F, 1.0F}));
  EXPECT_FLOAT_EQ(output->GetConstArray()[0], 1.0F);
  // From -1 to 0.5 in the signed mode, from the declared 0.25 to 2 in the value mode.
  output = Evaluate(Testing::MakeImage(1, 1, ColorMode::kSigned, {9.0F, 9.0F, 0.5F, 9.0F}));
  EXPECT_FLOAT_EQ(output->GetConstArray()[0], 1.0F);
  const ImageRef value = MakeRow({2.0F, 2.0F});
  value->SetValueLowHigh(0.25F, 9.0F);
  EXPECT_FLOAT_EQ(Evaluate(value)->GetConstArray()[1], 1.0F);
}

TEST_F(ToValueNode, HasNoGuardForAFlatImageAtTheDeclaredLow) {
  Testing::SetFlag(*node_, "auto_level", true);
  const ImageRef image = MakeRow({2.0F, 2.0F});
  image->SetValueLowHigh(2.0F, 9.0F);
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {kNan, kNan}));
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

TEST_F(ToValueNode, KeepsNanToItsOwnPixel) {
  Testing::SetFlag(*node_, "auto_level", true);
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({2.0F, kNan, 4.0F})), {0.0F, kNan, 1.0F}));
}

TEST_F(ToValueNode, InvertsWhenLowIsAboveHigh) {
  Testing::SetNumber(*node_, "low", 10.0);
  Testing::SetNumber(*node_, "high", 0.0);
  const Image* output = Evaluate(MakeRow({0.0F, 0.25F, 1.0F}));
  EXPECT_TRUE(HoldsSamples(output, {10.0F, 7.5F, 0.0F}));
  EXPECT_EQ(output->GetValueLow(), 10.0F);
  EXPECT_EQ(output->GetValueHigh(), 0.0F);
}

TEST_F(ToValueNode, MakesEveryPixelOfAModeThatItDoesNotKnowLow) {
  Testing::SetNumber(*node_, "low", 0.25);
  const ImageRef image = Testing::MakeImage(2, 1, ColorMode::kPair, {1.0F, 2.0F, 3.0F, 4.0F});
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {0.25F, 0.25F}));
  Testing::SetFlag(*node_, "auto_level", true);
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {0.25F, 0.25F}));
}

TEST_F(ToValueNode, KeepsThePlaceOfTheInputAndDeclaresItsOwnRange) {
  Testing::SetNumber(*node_, "low", -4.0);
  Testing::SetNumber(*node_, "high", 12.0);
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    const ImageRef image = Testing::MakeMarked(mode);
    const Image* output = Evaluate(image);
    ASSERT_NE(output, nullptr);
    EXPECT_TRUE(Testing::IsValueImageInPlaceOf(output, *image));
    EXPECT_EQ(output->GetValueLow(), -4.0F);
    EXPECT_EQ(output->GetValueHigh(), 12.0F);
  }
}

TEST_F(ToValueNode, ReadsPlugsWithoutAValueAsZeroAndFalse) {
  const ImageRef image = MakeRow({0.25F, 2.0F});
  auto inputs = Testing::MakeInputs(*node_, {image.Get()});
  for (const char* name : {"low", "high", "auto_level"}) Testing::AttributePlug(*node_, inputs, name) = PlugValue();
  Testing::AttributePlug(*node_, inputs, "high") = PlugValue(8.0);
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {2.0F, 16.0F}));
  Testing::AttributePlug(*node_, inputs, "high") = PlugValue();
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0.0F, 0.0F}));
}

TEST_F(ToValueNode, CopiesItsInputWhileDisabled) {
  node_->SetEnabled(false);
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    const ImageRef image = Testing::MakeMarked(mode);
    EXPECT_TRUE(Testing::IsCopyOf(Evaluate(image), *image));
  }
}

TEST_F(ToValueNode, HasNoOutputWithoutAnImage) {
  Evaluate(MakeRow({1.0F}));
  EXPECT_EQ(Testing::Evaluate(*node_, {}), nullptr);
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

TEST_F(ToValueNode, TakesAnImageWithoutPixels) {
  const ImageRef empty(new Image(0, 5, ColorMode::kColor, nullptr));
  const Image* output = Evaluate(empty);
  ASSERT_NE(output, nullptr);
  EXPECT_EQ(output->GetSizeY(), 5);
}

TEST_F(ToValueNode, TranslatesItsOldNames) {
  for (const unsigned version : {0U, 3U}) {
    EXPECT_EQ(node_->TranslateAttributeName(version, "min"), "low");
    EXPECT_EQ(node_->TranslateAttributeName(version, "max"), "high");
    EXPECT_EQ(node_->TranslateAttributeName(version, "saturate"), "auto_level");
    for (const char* name : {"low", "high", "auto_level", "Min", "minimum", "value", ""}) {
      EXPECT_EQ(node_->TranslateAttributeName(version, name), name);
    }
  }
}

TEST_F(ToValueNode, LogsTheMeasuredRangeOfEachEnabledEvaluation) {
  std::vector<std::string> messages;
  Log::SetLevel(Log::Level::kInfo);
  Log::SetSink([&](Log::Level, const std::string& message) { messages.push_back(message); });
  Evaluate(MakeRow({-0.5F, 2.25F, kNan}));
  node_->SetEnabled(false);
  Evaluate(MakeRow({7.0F}));
  Log::SetSink(nullptr);
  Log::SetLevel(Log::Level::kWarning);
  EXPECT_EQ(messages, std::vector<std::string>{"Value.dll ImageToValue::Evaluate. Input range -0.500000 - 2.250000"});
}

}  // namespace
