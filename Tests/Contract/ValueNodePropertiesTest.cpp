// SPDX-License-Identifier: Apache-2.0
//
// What holds of the value nodes for all inputs. Every property is run twice: over the node, where it must hold, and
// over the same node with a fault planted behind it, where it must fail and say why.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "Tests/Support/ValueTesting.h"
#include "Value/Nodes/Clamp/ImageValueClampNode.h"
#include "Value/Nodes/Compare/ImageValueCompareNode.h"
#include "Value/Nodes/Condition/ImageValueConditionNode.h"
#include "Value/Nodes/Range/ImageValueRangeNode.h"
#include "Value/Nodes/Steps/ImageValueStepsNode.h"
#include "Value/Nodes/ToValue/ImageToValueNode.h"

namespace {

using Values = std::vector<float>;
using Attributes = std::map<std::string, std::variant<double, std::string>>;

/// What is evaluated: rows of values, one for each input, with the value range that they declare.
struct Inputs {
  std::vector<Values> rows;
  float low = 0.0F;
  float high = 1.0F;
};

/// One output of a node.
using Evaluation = std::function<Values(const Attributes&, const Inputs&, unsigned output)>;

template <class NodeClass>
Values EvaluateNode(const Attributes& attributes, const Inputs& inputs, unsigned output) {
  const auto node = Testing::MakeNode<NodeClass>();
  for (const auto& [name, value] : attributes) {
    if (const double* number = std::get_if<double>(&value)) {
      RC_ASSERT(node->GetAttribute(name)->SetNumber(*number, false));
    } else {
      RC_ASSERT(node->GetAttribute(name)->SetChoice(std::get<std::string>(value), false));
    }
  }
  std::vector<Testing::ImageRef> images;
  std::vector<const Image*> given;
  for (const Values& row : inputs.rows) {
    images.push_back(Testing::MakeRow(row));
    images.back()->SetValueLowHigh(inputs.low, inputs.high);
    given.push_back(images.back().Get());
  }
  node->Evaluate(output, Testing::MakeInputs(*node, given));
  return Testing::GetSamples(*node->GetOutputImage(output));
}

using Property = std::function<void(const Evaluation&)>;

void ExpectHolds(const Property& property, const Evaluation& evaluation) {
  const auto result = rc::detail::checkTestable([&] { property(evaluation); });
  std::ostringstream text;
  rc::detail::printResultMessage(result, text);
  EXPECT_TRUE(result.is<rc::detail::SuccessResult>()) << text.str();
}

/// The property must fail with these words.
void ExpectFails(const Property& property, const Evaluation& faulty, const std::string& words) {
  const auto result = rc::detail::checkTestable([&] { property(faulty); });
  ASSERT_TRUE(result.is<rc::detail::FailureResult>());
  const std::string& description = result.get<rc::detail::FailureResult>().description;
  EXPECT_NE(description.find(words), std::string::npos) << description;
}

/// Any float at all, NaN and infinities included.
float AnyFloat() { return std::bit_cast<float>(*rc::gen::arbitrary<std::uint32_t>()); }

Values AnyFloats() {
  Values values(*rc::gen::inRange<std::size_t>(1, 40));
  std::generate(values.begin(), values.end(), AnyFloat);
  return values;
}

/// A multiple of a sixteenth: sums, differences and halves of a few of them are exact.
float AnySixteenths(int lowest, int highest) { return static_cast<float>(*rc::gen::inRange(lowest, highest)) / 16.0F; }

double Number(float value) { return static_cast<double>(value); }

// ---- Clamp ----

void ClampStaysWithinItsLimits(const Evaluation& evaluate) {
  const float low = AnySixteenths(-1000, 1000);
  const float high = low + AnySixteenths(0, 1000);
  const Values output = evaluate({{"low", Number(low)}, {"high", Number(high)}}, {{AnyFloats()}}, 0);
  for (const float value : output) {
    if (!(value >= low)) RC_FAIL("a value lies below the lower limit");
    if (!(value <= high)) RC_FAIL("a value lies above the upper limit");
  }
}

TEST(ClampProperty, LinearOutputLiesWithinTheLimits) {
  ExpectHolds(ClampStaysWithinItsLimits, EvaluateNode<ImageValueClampNode>);
}

TEST(ClampProperty, FailsWithoutTheUpperLimit) {
  const Evaluation faulty = [](Attributes attributes, const Inputs& inputs, unsigned output) {
    attributes["clamp"] = std::string("low");
    return EvaluateNode<ImageValueClampNode>(attributes, inputs, output);
  };
  ExpectFails(ClampStaysWithinItsLimits, faulty, "a value lies above the upper limit");
}

TEST(ClampProperty, FailsWhereNanIsPassedOn) {
  const Evaluation faulty = [](const Attributes& attributes, const Inputs& inputs, unsigned output) {
    Values values = EvaluateNode<ImageValueClampNode>(attributes, inputs, output);
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (std::isnan(inputs.rows[0][i])) values[i] = inputs.rows[0][i];
    }
    return values;
  };
  const Property property = [](const Evaluation& evaluate) {
    // A NaN in every case, which chance alone gives in one of some 250 floats only.
    ClampStaysWithinItsLimits([&](const Attributes& attributes, Inputs inputs, unsigned output) {
      inputs.rows[0].push_back(Testing::kNan);
      return evaluate(attributes, inputs, output);
    });
  };
  ExpectHolds(property, EvaluateNode<ImageValueClampNode>);
  ExpectFails(property, faulty, "a value lies below the lower limit");
}

// ---- Compare ----

void CompareOutputsFitTogether(const Evaluation& evaluate) {
  static const std::vector<std::string> precisions{"0.0000000001", "0.000001", "0.0001",      "0.1",
                                                   "1.0",          "10.0",     "1000000000.0"};
  const std::string precision = *rc::gen::elementOf(precisions);
  Inputs inputs{{AnyFloats(), {}}};
  // Values that are near each other, equal, or anything.
  for (const float a : inputs.rows[0]) {
    inputs.rows[1].push_back(*rc::gen::element(a, a * 1.0001F, a + 1.0F, AnyFloat()));
  }
  std::array<Values, 6> results;
  for (unsigned output = 0; output < 6; ++output) {
    results[output] = evaluate({{"precision", precision}}, inputs, output);
  }
  const auto& [less, less_equal, equal, different, greater_equal, greater] = results;
  for (std::size_t i = 0; i < less.size(); ++i) {
    for (const Values& result : results) {
      if (result[i] != 0.0F && result[i] != 1.0F) RC_FAIL("a result is neither 0 nor 1");
    }
    if (less[i] + equal[i] + greater[i] != 1.0F) RC_FAIL("not exactly one of <, = and > holds");
    if (less_equal[i] != less[i] + equal[i]) RC_FAIL("<= is not < or =");
    if (greater_equal[i] != greater[i] + equal[i]) RC_FAIL(">= is not > or =");
    if (different[i] != 1.0F - equal[i]) RC_FAIL("!= is not the opposite of =");
  }
}

TEST(CompareProperty, TheSixOutputsFitTogether) {
  ExpectHolds(CompareOutputsFitTogether, EvaluateNode<ImageValueCompareNode>);
}

TEST(CompareProperty, FailsWhereTwoOutputsAreMixedUp) {
  const Evaluation faulty = [](const Attributes& attributes, const Inputs& inputs, unsigned output) {
    return EvaluateNode<ImageValueCompareNode>(attributes, inputs, output == 4 ? 5 : output);
  };
  ExpectFails(CompareOutputsFitTogether, faulty, ">= is not > or =");
}

TEST(CompareProperty, FailsWhereOneOutputIsNotRounded) {
  const Evaluation faulty = [](const Attributes& attributes, const Inputs& inputs, unsigned output) {
    if (output != 2) return EvaluateNode<ImageValueCompareNode>(attributes, inputs, output);
    Values values;
    for (std::size_t i = 0; i < inputs.rows[0].size(); ++i) {
      values.push_back(inputs.rows[0][i] == inputs.rows[1][i] ? 1.0F : 0.0F);
    }
    return values;
  };
  ExpectFails(CompareOutputsFitTogether, faulty, "not exactly one of <, = and > holds");
}

// ---- Condition ----

void ConditionGivesZeroAndOneOnly(const Evaluation& evaluate) {
  static const std::vector<std::string> conditions{
      "v_eq_min", "v_df_min", "v_eq_max",    "v_df_max",     "v_lt_a",       "v_lte_a",      "v_eq_a",
      "v_gte_a",  "v_gt_a",   "a_lt_v_lt_b", "a_lte_v_lt_b", "a_lt_v_lte_b", "a_lte_v_lte_b"};
  const std::string condition = *rc::gen::elementOf(conditions);
  const Attributes attributes{
      {"condition", condition}, {"a", Number(AnySixteenths(-40, 40))}, {"b", Number(AnySixteenths(-40, 40))}};
  Values row = AnyFloats();
  row.push_back(AnySixteenths(-40, 40));
  for (const float value : evaluate(attributes, {{row}}, 0)) {
    if (value != 0.0F && value != 1.0F) RC_FAIL("a mask value is neither 0 nor 1");
  }
}

TEST(ConditionProperty, GivesZeroAndOneOnly) {
  ExpectHolds(ConditionGivesZeroAndOneOnly, EvaluateNode<ImageValueConditionNode>);
}

TEST(ConditionProperty, FailsWhereTheMaskKeepsTheValue) {
  const Evaluation faulty = [](const Attributes& attributes, const Inputs& inputs, unsigned output) {
    Values values = EvaluateNode<ImageValueConditionNode>(attributes, inputs, output);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] *= inputs.rows[0][i];
    return values;
  };
  ExpectFails(ConditionGivesZeroAndOneOnly, faulty, "a mask value is neither 0 nor 1");
}

// ---- To Value ----

void ToValueIsLinear(const Evaluation& evaluate) {
  const float from = AnySixteenths(-160, 160);
  // A power of two, so that its reciprocal is exact.
  const float width = std::ldexp(1.0F, *rc::gen::inRange(-3, 5));
  const float low = AnySixteenths(-160, 160);
  const float high = AnySixteenths(-160, 160);
  const float first = AnySixteenths(-400, 400);
  const float second = AnySixteenths(-400, 400);
  const Values output =
      evaluate({{"low", Number(low)}, {"high", Number(high)}},
               {{{from, from + width, first, second, (first + second) / 2.0F}}, from, from + width}, 0);
  if (output[0] != low) RC_FAIL("the lower end of the range is not low");
  if (output[1] != high) RC_FAIL("the upper end of the range is not high");
  if (output[4] != (output[2] + output[3]) / 2.0F) RC_FAIL("the mean of two values is not the mean of their results");
}

TEST(ToValueProperty, MapsTheDeclaredRangeLinearly) { ExpectHolds(ToValueIsLinear, EvaluateNode<ImageToValueNode>); }

TEST(ToValueProperty, FailsWhereTheResultIsLimited) {
  const Evaluation faulty = [](const Attributes& attributes, const Inputs& inputs, unsigned output) {
    Values values = EvaluateNode<ImageToValueNode>(attributes, inputs, output);
    const auto [low, high] = std::minmax(values[0], values[1]);
    for (float& value : values) value = std::clamp(value, low, high);
    return values;
  };
  ExpectFails(ToValueIsLinear, faulty, "the mean of two values is not the mean of their results");
}

TEST(ToValueProperty, FailsWhereTheDeclaredRangeIsIgnored) {
  const Evaluation faulty = [](const Attributes& attributes, Inputs inputs, unsigned output) {
    inputs.low = 0.0F;
    inputs.high = 1.0F;
    return EvaluateNode<ImageToValueNode>(attributes, inputs, output);
  };
  ExpectFails(ToValueIsLinear, faulty, "end of the range is not");
}

// ---- Steps ----

void StepsAreTheirOwnSteps(const Evaluation& evaluate) {
  const int steps = *rc::gen::inRange(2, 65);
  Inputs inputs{{{}}, AnySixteenths(-160, 160)};
  inputs.high = inputs.low + AnySixteenths(8, 320);
  const float span = inputs.high - inputs.low;
  // Below the top level: in the lower n - 1 of n equal parts, a little away from where two parts meet.
  const int part = *rc::gen::inRange(0, steps - 1);
  const float place = (static_cast<float>(part) + *rc::gen::element(0.25F, 0.5F, 0.75F)) / static_cast<float>(steps);
  inputs.rows[0] = {inputs.low + place * span};
  const Attributes attributes{{"steps", static_cast<double>(steps)}};
  const Values once = evaluate(attributes, inputs, 0);
  inputs.rows[0] = once;
  if (evaluate(attributes, inputs, 0) != once) RC_FAIL("a level does not stay where it is");
  const float level = (once[0] - inputs.low) / span * static_cast<float>(steps - 1);
  if (std::fabs(level - static_cast<float>(part)) > 0.01F) RC_FAIL("the level is not that of the value's part");
}

TEST(StepsProperty, StayBelowTheTopLevelWhenStepsAreTakenAgain) {
  ExpectHolds(StepsAreTheirOwnSteps, EvaluateNode<ImageValueStepsNode>);
}

TEST(StepsProperty, FailsWhereValuesAreRoundedToTheNearestLevel) {
  const Evaluation faulty = [](const Attributes& attributes, const Inputs& inputs, unsigned) {
    const auto steps = static_cast<float>(std::get<double>(attributes.at("steps")));
    const float span = inputs.high - inputs.low;
    Values values;
    for (const float v : inputs.rows[0]) {
      values.push_back(std::round((v - inputs.low) / span * steps) * span / (steps - 1.0F) + inputs.low);
    }
    return values;
  };
  ExpectFails(StepsAreTheirOwnSteps, faulty, "a level does not stay where it is");
}

TEST(StepsProperty, FailsWhereTheLevelsAreTooClose) {
  // One more step than asked for in the spacing: levels never reach the top.
  const Evaluation faulty = [](const Attributes& attributes, const Inputs& inputs, unsigned) {
    const auto steps = static_cast<float>(std::get<double>(attributes.at("steps")));
    const float span = inputs.high - inputs.low;
    Values values;
    for (const float v : inputs.rows[0]) {
      values.push_back(std::floor((v - inputs.low) / span * steps + 0.01F) * span / steps + inputs.low);
    }
    return values;
  };
  ExpectFails(StepsAreTheirOwnSteps, faulty, "the level is not that of the value's part");
}

// ---- Range ----

void RangeIsSymmetric(const Evaluation& evaluate) {
  const float center = AnySixteenths(-160, 160);
  const float distance = AnySixteenths(0, 160);
  const Attributes attributes{
      {"center", Number(center)},
      {"size", Number(AnySixteenths(0, 80))},
      {"falloff", Number(AnySixteenths(0, 80))},
      {"profile", std::string(*rc::gen::elementOf(std::vector<std::string>{"linear", "smooth", "arc_out", "arc_in"}))}};
  const Values output = evaluate(attributes, {{{center - distance, center + distance}}}, 0);
  if (output[0] != output[1]) RC_FAIL("two values equally far from the center give different results");
}

TEST(RangeProperty, IsSymmetricAboutItsCenter) { ExpectHolds(RangeIsSymmetric, EvaluateNode<ImageValueRangeNode>); }

TEST(RangeProperty, FailsWhereTheBandIsOnOneSideOnly) {
  const Evaluation faulty = [](const Attributes& attributes, const Inputs& inputs, unsigned output) {
    Values values = EvaluateNode<ImageValueRangeNode>(attributes, inputs, output);
    const double edge = std::get<double>(attributes.at("center")) - std::get<double>(attributes.at("size"));
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (static_cast<double>(inputs.rows[0][i]) < edge) values[i] = 0.0F;
    }
    return values;
  };
  ExpectFails(RangeIsSymmetric, faulty, "two values equally far from the center give different results");
}

}  // namespace
