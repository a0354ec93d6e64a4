// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Compare/ImageValueCompareNode.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::kNan;
using Testing::MakeRow;

// The outputs.
enum : unsigned { kLess, kLessEqual, kEqual, kDifferent, kGreaterEqual, kGreater, kCount };

class CompareNode : public testing::Test {
 protected:
  Image* Evaluate(unsigned output, const ImageRef& a, const ImageRef& b) {
    node_->Evaluate(output, Testing::MakeInputs(*node_, {a.Get(), b.Get()}));
    return node_->GetOutputImage(output);
  }
  void ExpectHeader(const Image* image, int size_x, int size_y, int pin_x, int pin_y, float pivot_x, float pivot_y) {
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->GetColorMode(), 2U);
    EXPECT_EQ(image->GetSizeX(), size_x);
    EXPECT_EQ(image->GetSizeY(), size_y);
    EXPECT_EQ(image->GetPinX(), pin_x);
    EXPECT_EQ(image->GetPinY(), pin_y);
    EXPECT_EQ(image->GetPivotX(), pivot_x);
    EXPECT_EQ(image->GetPivotY(), pivot_y);
    EXPECT_EQ(image->GetValueLow(), 0.0F);
    EXPECT_EQ(image->GetValueHigh(), 1.0F);
    EXPECT_EQ(image->GetOutsideValue(), 0.0F);
  }

  const Testing::NodeRef<ImageValueCompareNode> node_ = Testing::MakeNode<ImageValueCompareNode>();
};

TEST_F(CompareNode, NamesItsOutputsForDocumentsAndForPersons) {
  const std::vector<std::string> names{"image_a_l_b",  "image_a_le_b", "image_a_eq_b",
                                       "image_a_df_b", "image_a_ge_b", "image_a_g_b"};
  const std::vector<std::string> aliases{"a < b", "a <= b", "a == b", "a != b", "a >= b", "a > b"};
  ASSERT_EQ(node_->GetOutplugs().size(), 6U);
  for (unsigned output = 0; output < kCount; ++output) {
    EXPECT_EQ(node_->GetOutplugs()[output].type, 8U);
    EXPECT_EQ(node_->GetOutplugName(output), names[output]);
    EXPECT_EQ(node_->GetOutplugAlias(output), aliases[output]);
  }
  for (const unsigned output : {6U, 7U, 0xFFFFFFFFU}) EXPECT_EQ(node_->GetOutplugAlias(output), "");
  EXPECT_EQ(node_->GetInplugs()[0].name, "image_a");
  EXPECT_EQ(node_->GetInplugs()[1].name, "image_b");
}

TEST_F(CompareNode, GivesSixResults) {
  const ImageRef a = MakeRow({1.0F, 2.0F, 3.0F});
  const ImageRef b = MakeRow({2.0F, 2.0F, 2.0F});
  EXPECT_TRUE(HoldsSamples(Evaluate(kLess, a, b), {1.0F, 0.0F, 0.0F}));
  EXPECT_TRUE(HoldsSamples(Evaluate(kLessEqual, a, b), {1.0F, 1.0F, 0.0F}));
  EXPECT_TRUE(HoldsSamples(Evaluate(kEqual, a, b), {0.0F, 1.0F, 0.0F}));
  EXPECT_TRUE(HoldsSamples(Evaluate(kDifferent, a, b), {1.0F, 0.0F, 1.0F}));
  EXPECT_TRUE(HoldsSamples(Evaluate(kGreaterEqual, a, b), {0.0F, 1.0F, 1.0F}));
  EXPECT_TRUE(HoldsSamples(Evaluate(kGreater, a, b), {0.0F, 0.0F, 1.0F}));
  for (unsigned output = 0; output < kCount; ++output) {
    EXPECT_EQ(node_->GetOutputImage(output)->GetRefCount(), 1U);
  }
}

TEST_F(CompareNode, ComputesEachOutputAtItsOwnRequest) {
  const ImageRef a = MakeRow({1.0F});
  const ImageRef b = MakeRow({2.0F});
  const ImageRef less(Evaluate(kLess, a, b));
  for (unsigned output = kLessEqual; output < kCount; ++output) EXPECT_EQ(node_->GetOutputImage(output), nullptr);
  Evaluate(kGreater, b, a);
  EXPECT_EQ(node_->GetOutputImage(kLess), less.Get());
  EXPECT_TRUE(HoldsSamples(less.Get(), {1.0F}));
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(kGreater), {1.0F}));
}

TEST_F(CompareNode, RoundsToOneHundredThousandthByDefault) {
  const ImageRef a = MakeRow({0.1000004F, 0.10002F});
  const ImageRef b = MakeRow({0.1F, 0.1F});
  EXPECT_TRUE(HoldsSamples(Evaluate(kEqual, a, b), {1.0F, 0.0F}));
  EXPECT_TRUE(HoldsSamples(Evaluate(kGreater, a, b), {0.0F, 1.0F}));
}

TEST_F(CompareNode, RoundsToWholeNumbersTowardZero) {
  Testing::SetChoice(*node_, "precision", "1.0");
  const ImageRef a = MakeRow({-0.6F, -1.4F, -1.6F});
  const ImageRef b = MakeRow({0.0F, 0.0F, 0.0F});
  EXPECT_TRUE(HoldsSamples(Evaluate(kEqual, a, b), {1.0F, 1.0F, 0.0F}));
}

TEST_F(CompareNode, TakesLargeNumbersForEqualAtTheFinestPrecision) {
  Testing::SetChoice(*node_, "precision", "0.0000000001");
  const ImageRef a = MakeRow({3.0F, 2.0F, -5.0F});
  const ImageRef b = MakeRow({7.0F, 2.1F, 5.0F});
  EXPECT_TRUE(HoldsSamples(Evaluate(kEqual, a, b), {1.0F, 0.0F, 1.0F}));
}

TEST_F(CompareNode, TakesAnUnknownPrecisionForTheIndexBelowTheList) {
  // The power is 1410065408: 1 and 0.5 stay what they are, 2 and 3 do not fit.
  const ImageRef a = MakeRow({1.0F, 2.0F});
  const ImageRef b = MakeRow({0.5F, 3.0F});
  auto inputs = Testing::MakeInputs(*node_, {a.Get(), b.Get()});
  for (const PlugValue& precision : {PlugValue(), PlugValue(std::string("fine"))}) {
    Testing::AttributePlug(*node_, inputs, "precision") = precision;
    node_->Evaluate(kGreater, inputs);
    EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(kGreater), {1.0F, 0.0F}));
    node_->Evaluate(kEqual, inputs);
    EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(kEqual), {0.0F, 1.0F}));
  }
}

TEST_F(CompareNode, CoversBothImagesAndPinsTheResultWhereTheFirstIs) {
  const ImageRef a = MakeRow({1.0F, 2.0F, 3.0F});
  a->SetPin(10, 20);
  a->SetOutsideValue(9.0F);
  const ImageRef b = Testing::MakeImage(1, 4, ColorMode::kValue, {4.0F, 4.0F, 1.0F, 4.0F});
  b->SetPin(9, 18);
  b->SetOutsideValue(2.0F);
  // From (9, 18) to (13, 22); a is the three right pixels of the third row, b the left column.
  const Image* output = Evaluate(kGreater, a, b);
  ExpectHeader(output, 4, 4, 10, 20, 0.25F, 0.5F);
  EXPECT_TRUE(HoldsSamples(output, {1.0F, 1.0F, 1.0F, 1.0F,  // 9 against 4, then 9 against 2
                                    1.0F, 1.0F, 1.0F, 1.0F,  //
                                    1.0F, 0.0F, 0.0F, 1.0F,  // 9 against 1, then 1, 2, 3 against 2
                                    1.0F, 1.0F, 1.0F, 1.0F}));
}

TEST_F(CompareNode, HonorsThePivotsOfItsInputs) {
  const ImageRef a = MakeRow({1.0F, 2.0F});
  a->SetPivot(1.0F, 0.0F);
  const ImageRef b = MakeRow({1.0F, 2.0F});
  // a lies from -2 to 0, b from 0 to 2.
  const Image* output = Evaluate(kEqual, a, b);
  ExpectHeader(output, 4, 1, 0, 0, 0.5F, 0.0F);
  EXPECT_TRUE(HoldsSamples(output, {0.0F, 0.0F, 0.0F, 0.0F}));
}

TEST_F(CompareNode, GivesAnImageOfZerosForASingleInput) {
  const ImageRef image = Testing::MakeMarked(ColorMode::kColor);
  for (unsigned output = 0; output < kCount; ++output) {
    SCOPED_TRACE(output);
    const Image* result = Evaluate(output, ImageRef(), image);
    ExpectHeader(result, 3, 2, 7, -5, 0.25F, 0.75F);
    EXPECT_TRUE(HoldsSamples(result, std::vector<float>(6, 0.0F)));
    result = Evaluate(output, image, ImageRef());
    ExpectHeader(result, 3, 2, 7, -5, 0.25F, 0.75F);
    EXPECT_TRUE(HoldsSamples(result, std::vector<float>(6, 0.0F)));
  }
}

TEST_F(CompareNode, GivesZerosForImagesOfDifferentModes) {
  const ImageRef color = Testing::MakeImage(1, 1, ColorMode::kColor, {1.0F, 1.0F, 1.0F, 1.0F});
  const ImageRef other = Testing::MakeImage(2, 1, ColorMode::kSigned, std::vector<float>(8, 1.0F));
  const ImageRef value = MakeRow({1.0F});
  for (unsigned output = 0; output < kCount; ++output) {
    EXPECT_TRUE(HoldsSamples(Evaluate(output, color, other), {0.0F, 0.0F}));
    EXPECT_TRUE(HoldsSamples(Evaluate(output, value, color), {0.0F}));
  }
}

TEST_F(CompareNode, ComparesColorsChannelByChannel) {
  const ImageRef a = Testing::MakeColors({1.0F, 1.0F, 1.0F, 1.0F, 0.0F, 2.0F, 1.0F, 1.0F});
  const ImageRef b = Testing::MakeColors({1.0F, 1.0F, 1.0F, 1.0F, 1.0F, 1.0F, 1.0F, 1.0F});
  EXPECT_TRUE(HoldsSamples(Evaluate(kEqual, a, b), {1.0F, 0.0F}));
  EXPECT_TRUE(HoldsSamples(Evaluate(kDifferent, a, b), {0.0F, 1.0F}));
  EXPECT_TRUE(HoldsSamples(Evaluate(kLessEqual, a, b), {1.0F, 0.0F}));
  EXPECT_TRUE(HoldsSamples(Evaluate(kGreaterEqual, a, b), {1.0F, 0.0F}));
}

TEST_F(CompareNode, GivesZerosForPairs) {
  const ImageRef image = Testing::MakeImage(1, 1, ColorMode::kPair, {1.0F, 1.0F});
  for (unsigned output = 0; output < kCount; ++output) {
    EXPECT_TRUE(HoldsSamples(Evaluate(output, image, image), {0.0F}));
  }
}

TEST_F(CompareNode, HasNoOutputWithoutInputs) {
  Evaluate(kEqual, MakeRow({1.0F}), MakeRow({1.0F}));
  EXPECT_EQ(Evaluate(kEqual, ImageRef(), ImageRef()), nullptr);
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

TEST_F(CompareNode, EmptiesTheAskedOutputWhileDisabled) {
  const ImageRef image = MakeRow({1.0F});
  Evaluate(kLess, image, image);
  const Image* equal = Evaluate(kEqual, image, image);
  node_->SetEnabled(false);
  EXPECT_EQ(Evaluate(kLess, image, image), nullptr);
  EXPECT_EQ(node_->GetOutputImage(kEqual), equal);
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

TEST_F(CompareNode, DropsAllSixOutputsAtTheEventForIt) {
  const ImageRef image = MakeRow({1.0F});
  std::vector<ImageRef> outputs;
  for (unsigned output = 0; output < kCount; ++output) outputs.emplace_back(Evaluate(output, image, image));
  EXPECT_TRUE(Testing::DropCachedResults(*node_));
  for (unsigned output = 0; output < kCount; ++output) {
    EXPECT_EQ(node_->GetOutputImage(output), nullptr);
    EXPECT_EQ(outputs[output]->GetRefCount(), 1U);
  }
  EXPECT_TRUE(Testing::DropCachedResults(*node_));
}

TEST_F(CompareNode, LetsNanCompareAsALargeNegativeNumber) {
  const ImageRef a = MakeRow({kNan, kNan});
  const ImageRef b = MakeRow({-20000.0F, kNan});
  EXPECT_TRUE(HoldsSamples(Evaluate(kLess, a, b), {1.0F, 0.0F}));
  EXPECT_TRUE(HoldsSamples(Evaluate(kEqual, a, b), {0.0F, 1.0F}));
  EXPECT_TRUE(HoldsSamples(Evaluate(kDifferent, a, b), {1.0F, 0.0F}));
}

TEST_F(CompareNode, RefusesAResultBeyondTheLargestSize) {
  const ImageRef a = MakeRow({1.0F});
  const ImageRef b = MakeRow({1.0F});
  b->SetPin(40000, 0);
  EXPECT_THROW(Evaluate(kEqual, a, b), std::length_error);
  EXPECT_EQ(node_->GetOutputImage(kEqual), nullptr);
  b->SetPin(INT32_MAX, INT32_MIN);
  EXPECT_THROW(Evaluate(kEqual, a, b), std::length_error);
}

}  // namespace
