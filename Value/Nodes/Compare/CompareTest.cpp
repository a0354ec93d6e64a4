// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Compare/Compare.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <random>
#include <vector>

#include "Tests/Support/InstructionSets.h"
#include "Tests/Support/ValueTesting.h"
#include "Value/Nodes/Compare/CompareReference.h"

namespace {

using Compare::Relation;
using Testing::ImageRef;
using Testing::kInfinity;
using Testing::kLargest;
using Testing::kNan;
using Testing::MakeRow;

constexpr std::array kRelations{Relation::kLess,      Relation::kLessEqual,    Relation::kEqual,
                                Relation::kDifferent, Relation::kGreaterEqual, Relation::kGreater};

float Round(float value, int precision_index) { return Compare::Rounding(precision_index).Round(value); }

TEST(CompareTruncate, GoesTowardZero) {
  EXPECT_EQ(Compare::TruncateToInt32(1.9F), 1);
  EXPECT_EQ(Compare::TruncateToInt32(-1.9F), -1);
  EXPECT_EQ(Compare::TruncateToInt32(-0.9F), 0);
  EXPECT_EQ(Compare::TruncateToInt32(2147483520.0F), 2147483520);
  EXPECT_EQ(Compare::TruncateToInt32(-2147483648.0F), INT32_MIN);
}

TEST(CompareTruncate, MakesWhatDoesNotFitTheLowestInteger) {
  for (const float value : {2147483648.0F, -2147483904.0F, kLargest, -kLargest, kInfinity, -kInfinity, kNan}) {
    EXPECT_EQ(Compare::TruncateToInt32(value), INT32_MIN) << value;
  }
}

TEST(CompareRounding, ToWholeNumbersIsNotSymmetric) {
  constexpr int kOne = 9;
  EXPECT_SAME(Round(0.4F, kOne), 0.0F);
  EXPECT_SAME(Round(0.5F, kOne), 1.0F);
  EXPECT_SAME(Round(2.4F, kOne), 2.0F);
  EXPECT_SAME(Round(-0.6F, kOne), 0.0F);
  EXPECT_SAME(Round(-1.4F, kOne), 0.0F);
  EXPECT_SAME(Round(-1.5F, kOne), -1.0F);
  EXPECT_SAME(Round(-2.6F, kOne), -2.0F);
}

TEST(CompareRounding, ToCoarserStepsDividesAndMultiplies) {
  constexpr int kTen = 10;
  EXPECT_SAME(Round(14.0F, kTen), 10.0F);
  EXPECT_SAME(Round(15.0F, kTen), 20.0F);
  EXPECT_SAME(Round(-14.0F, kTen), 0.0F);
  EXPECT_SAME(Round(-25.0F, kTen), -20.0F);
  constexpr int kThousandMillion = 18;
  EXPECT_SAME(Round(7.0e8F, kThousandMillion), 1.0e9F);
  EXPECT_SAME(Round(4.0e8F, kThousandMillion), 0.0F);
}

TEST(CompareRounding, ToFinerStepsMultipliesAndDivides) {
  constexpr int kTenth = 8;
  EXPECT_SAME(Round(0.14F, kTenth), 0.1F);
  EXPECT_SAME(Round(0.16F, kTenth), 0.2F);
  EXPECT_SAME(Round(-0.14F, kTenth), 0.0F);
  EXPECT_SAME(Round(-0.16F, kTenth), -0.1F);
}

TEST(CompareRounding, IsTenTimesCoarserThanItsFirstFiveLabels) {
  // "0.000001" at index 4 rounds to steps of one hundred-thousandth.
  EXPECT_SAME(Round(0.1000004F, 4), 0.1F);
  EXPECT_SAME(Round(0.1000060F, 4), 0.10001F);
  // "0.0001" at index 5 is what it says.
  EXPECT_SAME(Round(0.10004F, 5), 0.1F);
  EXPECT_SAME(Round(0.10006F, 5), 0.1001F);
}

TEST(CompareRounding, MakesWhatDoesNotFitALargeNegativeNumber) {
  for (const float value : {kNan, kInfinity, -kInfinity, kLargest}) {
    EXPECT_SAME(Round(value, 9), -2147483648.0F);
    EXPECT_SAME(Round(value, 4), -21474.83648F);
    EXPECT_SAME(Round(value, 0), -2.147483648F);
  }
  EXPECT_SAME(Round(kNan, 10), -21474836480.0F);
  EXPECT_SAME(Round(2.0F, 0), 2.0F);
  EXPECT_SAME(Round(2.2F, 0), -2.147483648F);
  EXPECT_SAME(Round(-2.2F, 0), -2.147483648F);
}

TEST(CompareRounding, TakesThePowerOfAnUnknownWordModulo32Bits) {
  // Ten to the ten is 1410065408 modulo two to the 32.
  EXPECT_SAME(Round(1.0F, -1), 1.0F);
  EXPECT_SAME(Round(0.5F, -1), 0.5F);
  EXPECT_SAME(Round(2.0F, -1), -1.5229674577713013F);
}

std::vector<float> Apply(const Image& a, const Image& b, Relation relation, int precision_index = 4) {
  const ScEng::Box2I box = ScEng::Union(a.GetBox(), b.GetBox());
  std::vector<float> results(static_cast<std::size_t>(box.Width() * box.Height()), 7.0F);
  Compare::Apply(a, b, Compare::Rounding(precision_index), relation, box, results.data());
  return results;
}

TEST(CompareApply, KnowsItsSixRelations) {
  const ImageRef a = MakeRow({1.0F, 2.0F, 3.0F});
  const ImageRef b = MakeRow({2.0F, 2.0F, 2.0F});
  EXPECT_EQ(Apply(*a, *b, Relation::kLess), (std::vector<float>{1.0F, 0.0F, 0.0F}));
  EXPECT_EQ(Apply(*a, *b, Relation::kLessEqual), (std::vector<float>{1.0F, 1.0F, 0.0F}));
  EXPECT_EQ(Apply(*a, *b, Relation::kEqual), (std::vector<float>{0.0F, 1.0F, 0.0F}));
  EXPECT_EQ(Apply(*a, *b, Relation::kDifferent), (std::vector<float>{1.0F, 0.0F, 1.0F}));
  EXPECT_EQ(Apply(*a, *b, Relation::kGreaterEqual), (std::vector<float>{0.0F, 1.0F, 1.0F}));
  EXPECT_EQ(Apply(*a, *b, Relation::kGreater), (std::vector<float>{0.0F, 0.0F, 1.0F}));
}

TEST(CompareApply, ReadsTheOutsideValueUnroundedWhereAnImageIsMissing) {
  const ImageRef a = MakeRow({1.0F, 2.0F});
  const ImageRef b = MakeRow({2.0F, 5.0F});
  b->SetPin(1, 0);
  a->SetOutsideValue(5.25F);
  b->SetOutsideValue(0.75F);
  // 1 against 0.75, 2 against 2, 5.25 against 5, in whole numbers.
  EXPECT_EQ(Apply(*a, *b, Relation::kGreater, 9), (std::vector<float>{1.0F, 0.0F, 1.0F}));
  EXPECT_EQ(Apply(*a, *b, Relation::kEqual, 9), (std::vector<float>{0.0F, 1.0F, 0.0F}));
}

TEST(CompareApply, ComparesBothOutsideValuesWhereBothAreMissing) {
  const ImageRef a = MakeRow({4.0F});
  const ImageRef b = MakeRow({4.0F});
  b->SetPin(1, 1);
  a->SetOutsideValue(4.0F);
  b->SetOutsideValue(3.0F);
  EXPECT_EQ(Apply(*a, *b, Relation::kGreater), (std::vector<float>{1.0F, 1.0F, 1.0F, 0.0F}));
}

TEST(CompareApply, OnlyDifferentHoldsForAnOutsideValueThatIsNotANumber) {
  const ImageRef a = MakeRow({1.0F});
  const ImageRef b = MakeRow({1.0F, 1.0F});
  a->SetOutsideValue(kNan);
  for (const Relation relation : kRelations) {
    EXPECT_EQ(Apply(*a, *b, relation)[1], relation == Relation::kDifferent ? 1.0F : 0.0F);
  }
}

TEST(CompareApply, TakesAPixelThatIsNotANumberForALargeNegativeOne) {
  const ImageRef a = MakeRow({kNan, kNan, kInfinity, kNan});
  const ImageRef b = MakeRow({0.0F, kNan, 0.0F, -kInfinity});
  EXPECT_EQ(Apply(*a, *b, Relation::kLess), (std::vector<float>{1.0F, 0.0F, 1.0F, 0.0F}));
  EXPECT_EQ(Apply(*a, *b, Relation::kEqual), (std::vector<float>{0.0F, 1.0F, 0.0F, 1.0F}));
}

TEST(CompareApply, AsksEveryChannelOfFour) {
  const ImageRef a = Testing::MakeColors({1.0F, 1.0F, 1.0F, 1.0F,  //
                                          1.0F, 2.0F, 1.0F, 1.0F,  //
                                          0.0F, 0.0F, 0.0F, 0.0F,  //
                                          0.0F, 2.0F, 0.0F, 2.0F});
  const ImageRef b = Testing::MakeColors(std::vector<float>(16, 1.0F));
  // Equal, greater or equal, less in all, mixed.
  EXPECT_EQ(Apply(*a, *b, Relation::kLess), (std::vector<float>{0.0F, 0.0F, 1.0F, 0.0F}));
  EXPECT_EQ(Apply(*a, *b, Relation::kLessEqual), (std::vector<float>{1.0F, 0.0F, 1.0F, 0.0F}));
  EXPECT_EQ(Apply(*a, *b, Relation::kEqual), (std::vector<float>{1.0F, 0.0F, 0.0F, 0.0F}));
  EXPECT_EQ(Apply(*a, *b, Relation::kDifferent), (std::vector<float>{0.0F, 1.0F, 1.0F, 1.0F}));
  EXPECT_EQ(Apply(*a, *b, Relation::kGreaterEqual), (std::vector<float>{1.0F, 1.0F, 0.0F, 0.0F}));
  EXPECT_EQ(Apply(*a, *b, Relation::kGreater), (std::vector<float>{0.0F, 0.0F, 0.0F, 0.0F}));
}

TEST(CompareApply, FailsWhereOneOfTwoColorImagesHasNoPixel) {
  const ImageRef a = Testing::MakeColors({1.0F, 1.0F, 1.0F, 1.0F});
  const ImageRef b = Testing::MakeColors({1.0F, 1.0F, 1.0F, 1.0F, 2.0F, 2.0F, 2.0F, 2.0F});
  a->SetOutsideValue(2.0F);
  for (const Relation relation : kRelations) EXPECT_EQ(Apply(*a, *b, relation)[1], 0.0F);
}

TEST(CompareApply, GivesZeroForOtherChannelCounts) {
  const ImageRef a = Testing::MakeImage(1, 1, ColorMode::kPair, {1.0F, 1.0F});
  for (const Relation relation : kRelations) EXPECT_EQ(Apply(*a, *a, relation), std::vector<float>{0.0F});
}

/// Images that overlap, touch or lie apart, row by row and column by column.
TEST(CompareApply, GivesWhatTheDefinitionGivesForBoxesOfAllKinds) {
  std::mt19937 random(11);
  const auto any = [&](int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); };
  for (int trial = 0; trial < 400; ++trial) {
    const unsigned mode = random() % 2 == 0 ? ColorMode::kValue : ColorMode::kColor;
    const auto make = [&] {
      const int x = 1 + any(40);
      const int y = 1 + any(5);
      std::vector<float> samples(static_cast<std::size_t>(x * y * ColorMode::GetNumChannels(mode)));
      for (float& sample : samples) {
        sample = random() % 16 == 0 ? kNan : static_cast<float>(any(3)) + 0.001F * static_cast<float>(any(3));
      }
      ImageRef image = Testing::MakeImage(x, y, mode, samples);
      image->SetPin(any(60) - 30, any(8) - 4);
      image->SetOutsideValue(static_cast<float>(any(3)));
      return image;
    };
    const ImageRef a = make();
    const ImageRef b = make();
    const ScEng::Box2I box = ScEng::Union(a->GetBox(), b->GetBox());
    const Compare::Rounding rounding(any(20) - 1);
    const auto relation = static_cast<Relation>(any(6));
    std::vector<float> expected(static_cast<std::size_t>(box.Width() * box.Height()));
    Compare::Reference::Apply(*a, *b, rounding, relation, box, expected.data());
    Testing::OnEveryInstructionSet([&] {
      std::vector<float> results(expected.size(), 7.0F);
      Compare::Apply(*a, *b, rounding, relation, box, results.data());
      ASSERT_EQ(results, expected) << "trial " << trial;
    });
    if (HasFatalFailure()) return;
  }
}

float AnyFloat() { return std::bit_cast<float>(*rc::gen::arbitrary<std::uint32_t>()); }

RC_GTEST_PROP(CompareProperties, TheSixResultsFitTogether, ()) {
  const ImageRef a = MakeRow({AnyFloat()});
  const ImageRef b = MakeRow({*rc::gen::element(AnyFloat(), a->GetConstArray()[0])});
  const int index = *rc::gen::inRange(-1, 19);
  std::array<float, 6> result{};
  for (std::size_t i = 0; i < kRelations.size(); ++i) result[i] = Apply(*a, *b, kRelations[i], index)[0];
  const auto [less, less_equal, equal, different, greater_equal, greater] = result;
  RC_ASSERT(less + equal + greater == 1.0F);
  RC_ASSERT(less_equal == less + equal);
  RC_ASSERT(greater_equal == greater + equal);
  RC_ASSERT(different == less + greater);
}

RC_GTEST_PROP(CompareProperties, WhatIsRoundedLiesWithinOneStep, ()) {
  // Whole numbers of thousandths, so that nothing but the rule moves them.
  const float value = static_cast<float>(*rc::gen::inRange(-1000000, 1000000)) / 1024.0F;
  constexpr int kOne = 9;
  const float rounded = Round(value, kOne);
  RC_ASSERT(rounded == std::trunc(rounded));
  RC_ASSERT(std::fabs(rounded - value) < 1.5F);
  if (value >= 0.0F) RC_ASSERT(std::fabs(rounded - value) <= 0.5F);
}

}  // namespace
