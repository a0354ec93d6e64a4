// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/Trial.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Host/Validation/Checks.h"
#include "Host/Validation/GuardedMemory.h"

namespace {

using ScEng::MakeSetup;
using ScEng::RefPtr;
using ScEng::Samples;
using ScEng::Trial;

/// A node with a single input, one for many and one for a number, whose evaluation is given from outside.
class ScriptedNode : public Node {
 public:
  ScriptedNode() {
    attributes_ = {RefPtr<Attribute>(new Attribute(this, 0, "level", 0.25, 0.0, 1.0, 0.1, 2)),
                   RefPtr<Attribute>(new Attribute(this, 1, "style", 1, "plain,fancy"))};
    inplugs_ = {PlugRecord::Input(PlugType::kImage, "one"), PlugRecord::MultipleInput(PlugType::kImage, "many"),
                PlugRecord::Input(PlugType::kNumber, "number")};
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "result")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return {}; }
  [[nodiscard]] std::string GetName() const override { return "Scripted"; }
  void Evaluate(unsigned, const std::vector<PlugValue>&) override { script(*this); }
  [[nodiscard]] Image* GetOutputImage(unsigned) const override { return output.Get(); }

  std::function<void(ScriptedNode&)> script = [](ScriptedNode&) {};
  RefPtr<Image> output;
};

class TrialTest : public testing::Test {
 protected:
  Trial Run(const std::function<void(ScriptedNode&)>& script) {
    node_->script = script;
    return ScEng::Evaluate(subject_, *node_, MakeSetup({3, 2}, ColorMode::kValue, Samples::kOrdinary));
  }

  std::vector<std::string> said_;
  ScEng::EntryPoints entry_points_;
  ScEng::GuardedMemory memory_;
  ScEng::Subject subject_{entry_points_, memory_, 1, 0,
                          [this](const char*, const std::string& text) { said_.push_back(text); }};
  RefPtr<ScriptedNode> node_{new ScriptedNode};
};

TEST_F(TrialTest, GivesInputsInTheEnginesOrder) {
  const ScEng::Setup setup = MakeSetup({3, 2}, ColorMode::kValue, Samples::kOrdinary);
  const std::vector<PlugValue> inputs = ScEng::MakeInputs(*node_, setup);
  // One, two for many, the number, the two attributes.
  ASSERT_EQ(inputs.size(), 6U);
  EXPECT_EQ(inputs[0].GetImage(), setup.images[0].Get());
  EXPECT_EQ(inputs[1].GetImage(), setup.images[0].Get());
  EXPECT_EQ(inputs[2].GetImage(), setup.images[1].Get());
  EXPECT_EQ(inputs[3].GetType(), PlugType::kNumber);
  EXPECT_EQ(inputs[4].GetNumber(), 0.25);
  EXPECT_EQ(inputs[5].GetText(), "fancy");
  EXPECT_EQ(node_->GetInplugIdFromAttributeId(1), 5U);
}

TEST_F(TrialTest, GivesEmptyPlugsWhereNothingIsConnected) {
  const std::vector<PlugValue> inputs = ScEng::MakeInputs(*node_, {});
  ASSERT_EQ(inputs.size(), 5U);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_FALSE(inputs[i].HasValue());
  EXPECT_EQ(node_->GetInplugIdFromAttributeId(0), 3U);
}

TEST_F(TrialTest, MakesTheSameImagesAtEveryCall) {
  for (const Samples samples : {Samples::kOrdinary, Samples::kAwkward}) {
    const ScEng::Setup first = MakeSetup({17, 3}, ColorMode::kColor, samples);
    const ScEng::Setup second = MakeSetup({17, 3}, ColorMode::kColor, samples);
    for (std::size_t i = 0; i < 2; ++i) {
      EXPECT_TRUE(ScEng::AreSame(ScEng::CopyOf(*first.images[i]), ScEng::CopyOf(*second.images[i])));
    }
    EXPECT_FALSE(ScEng::AreSame(ScEng::CopyOf(*first.images[0]), ScEng::CopyOf(*first.images[1])));
  }
}

TEST_F(TrialTest, AwkwardImagesOfOnePixelStartWithNan) {
  const ScEng::Setup setup = MakeSetup({1, 1}, ColorMode::kValue, Samples::kAwkward);
  EXPECT_TRUE(std::isnan(setup.images[0]->GetConstArray()[0]));
}

TEST_F(TrialTest, FindsNothingWrongWithANodeWithoutOutput) {
  const Trial trial = Run([](ScriptedNode&) {});
  EXPECT_EQ(trial.problem, "");
  ASSERT_EQ(trial.outputs.size(), 1U);
  EXPECT_FALSE(trial.outputs[0].has_image);
  EXPECT_EQ(said_, std::vector<std::string>{"evaluating 3 x 2 value images"});
}

TEST_F(TrialTest, CopiesTheOutput) {
  const Trial trial = Run([](ScriptedNode& node) {
    const float value = 0.5F;
    node.output.Reset(new Image(2, 1, ColorMode::kValue, &value));
  });
  EXPECT_EQ(trial.problem, "");
  EXPECT_EQ(trial.outputs[0].samples, (std::vector<float>{0.5F, 0.5F}));
}

TEST_F(TrialTest, TakesAnErrorWithAMessageAsHandled) {
  const Trial trial = Run([](ScriptedNode& node) { node.SetState(0, Node::State::kError, "no device"); });
  EXPECT_TRUE(trial.in_error);
  EXPECT_EQ(trial.message, "no device");
  EXPECT_EQ(trial.problem, "");
}

TEST_F(TrialTest, TakesAnExceptionWithATextAsAnError) {
  const Trial trial = Run([](ScriptedNode&) { throw std::runtime_error("too wide"); });
  EXPECT_TRUE(trial.in_error);
  EXPECT_EQ(trial.message, "too wide");
  EXPECT_EQ(trial.problem, "");
}

TEST_F(TrialTest, FindsFaultWithAnErrorWithoutAMessage) {
  const Trial trial = Run([](ScriptedNode& node) { node.SetState(0, Node::State::kFileError, ""); });
  EXPECT_NE(trial.problem.find("without a message"), std::string::npos) << trial.problem;
}

TEST_F(TrialTest, FindsFaultWithAnExceptionOfUnknownType) {
  const Trial trial = Run([](ScriptedNode&) { throw 7; });
  EXPECT_NE(trial.problem.find("not a std::exception"), std::string::npos) << trial.problem;
}

TEST_F(TrialTest, NamesTheFirstSampleThatDiffers) {
  const auto make = [](float second) {
    return [second](ScriptedNode& node) {
      node.output.Reset(new Image(2, 1, ColorMode::kValue, nullptr));
      node.output->GetArray()[0] = NAN;
      node.output->GetArray()[1] = second;
    };
  };
  const Trial first = Run(make(0.5F));
  EXPECT_EQ(ScEng::FindDifference(*node_, first, Run(make(0.5F))), "");
  EXPECT_EQ(ScEng::FindDifference(*node_, first, Run(make(-2.0F))), "sample 1 of output \"result\" is 0.5 and then -2");
  EXPECT_EQ(ScEng::FindDifference(*node_, first, Run([](ScriptedNode& node) { node.output.Reset(); })),
            "output \"result\" has an image only sometimes");
  const auto moved = [&](ScriptedNode& node) {
    make(0.5F)(node);
    node.output->SetPin(1, 0);
  };
  EXPECT_EQ(ScEng::FindDifference(*node_, first, Run(moved)),
            "output \"result\" has another size, mode, pin, pivot or value range");
}

TEST_F(TrialTest, LimitsGoBeyondTheBounds) {
  const std::vector<PlugValue> numbers = ScEng::GetLimits(*node_->GetAttribute(std::size_t{0}));
  std::vector<std::string> words;
  for (const PlugValue& value : numbers) words.push_back(ScEng::Describe(value));
  EXPECT_EQ(words, (std::vector<std::string>{"nothing", "0", "1", "-1e+308", "1e+308"}));
  words.clear();
  for (const PlugValue& value : ScEng::GetLimits(*node_->GetAttribute(std::size_t{1}))) {
    words.push_back(ScEng::Describe(value));
  }
  EXPECT_EQ(words, (std::vector<std::string>{"\"plain\"", "\"fancy\"", "nothing", "\"no such word\""}));
}

}  // namespace
