// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Host/Editing/BackgroundEvaluator.h"
#include "Tests/Support/EditTesting.h"

namespace {

using ScEng::BackgroundEvaluator;
using ScEng::EditSession;
using ScEng::NodeFacts;
using ScEng::Status;

constexpr NodeType kTerrain{10, 16, 40};
constexpr NodeType kRelief{10, 288, 26};

/// Longer than anything here takes on the slowest machine.
constexpr double kLong = 300.0;

std::vector<float> SamplesOf(const Image& image) {
  return {image.GetConstArray(), image.GetConstArray() + image.GetNumSamples()};
}

/// A terrain, an addition and a clamp in a row, and a rectangle that feeds nothing.
class BackgroundEvaluatorTest : public testing::Test {
 protected:
  void SetUp() override {
    session_ = std::make_unique<EditSession>(Testing::GetCatalog(), folder_.Path());
    Do(session_->AddNode({kTerrain, "terrain", {}}));
    Do(session_->SetAttribute("terrain.frame", "0,0,40,30"));
    Do(session_->AddNode({Testing::kAdd, "add", {}}));
    Do(session_->AddNode({Testing::kClamp, "clamp", {}}));
    Do(session_->SetAttribute("clamp.high", "2"));
    Do(session_->AddNode({Testing::kRectangle, "alone", {}}));
    Do(session_->Connect({"terrain.image", "add.image", 0}));
    Do(session_->Connect({"add.image", "clamp.image", 0}));
    evaluator_ = std::make_unique<BackgroundEvaluator>(*session_, [this] { ++notices_; });
  }

  static void Do(const Status& status) { ASSERT_FALSE(status.IsError()) << status.GetMessage(); }

  void Wait() { ASSERT_TRUE(evaluator_->WaitUntilIdle(kLong)); }

  /// The newest result once everything is done.
  std::shared_ptr<const ScEng::ShownResult> TakeResult() {
    Wait();
    return evaluator_->TakeResult();
  }
  std::map<std::string, NodeFacts> TakeFacts() {
    Wait();
    std::map<std::string, NodeFacts> facts;
    for (NodeFacts& node : evaluator_->TakeFacts()) facts.emplace(node.id, std::move(node));
    return facts;
  }
  /// What the session's own document makes of an output.
  std::vector<float> EvaluateHere(const std::string& plug) {
    ScEng::RunReport report;
    const ImagePtr image = session_->GetDocument().Evaluate(plug, report);
    return image ? SamplesOf(*image) : std::vector<float>();
  }

  Testing::TemporaryFolder folder_;
  std::unique_ptr<EditSession> session_;
  std::atomic<int> notices_ = 0;
  std::unique_ptr<BackgroundEvaluator> evaluator_;
};

TEST_F(BackgroundEvaluatorTest, ShowsWhatTheDocumentMakes) {
  evaluator_->Show({"clamp.image", false});
  const auto result = TakeResult();
  ASSERT_NE(result, nullptr);
  ASSERT_NE(result->image, nullptr) << result->message;
  EXPECT_EQ(result->shown.plug, "clamp.image");
  EXPECT_EQ(result->message, "");
  EXPECT_EQ(SamplesOf(result->image->GetImage()), EvaluateHere("clamp.image"));
  EXPECT_TRUE(result->inputs.empty());
  EXPECT_GT(notices_.load(), 0);
  // It is taken once.
  EXPECT_EQ(evaluator_->TakeResult(), nullptr);
}

TEST_F(BackgroundEvaluatorTest, ShowsTheInputsToo) {
  evaluator_->Show({"add.image", true});
  const auto result = TakeResult();
  ASSERT_NE(result, nullptr);
  ASSERT_EQ(result->inputs.size(), 1U);
  EXPECT_EQ(result->inputs[0].inplug, "image");
  EXPECT_EQ(result->inputs[0].from, "terrain.image");
  EXPECT_EQ(SamplesOf(result->inputs[0].image->GetImage()), EvaluateHere("terrain.image"));
}

TEST_F(BackgroundEvaluatorTest, ShowsASecondImageBeside) {
  evaluator_->SetEvaluatesAll(false);
  evaluator_->Show({"terrain.image", false, "clamp.image"});
  auto result = TakeResult();
  ASSERT_NE(result, nullptr);
  ASSERT_NE(result->second, nullptr);
  EXPECT_EQ(SamplesOf(result->image->GetImage()), EvaluateHere("terrain.image"));
  EXPECT_EQ(SamplesOf(result->second->GetImage()), EvaluateHere("clamp.image"));
  Do(session_->SetAttribute("add.constant", "0.25"));
  result = TakeResult();
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(SamplesOf(result->second->GetImage()), EvaluateHere("clamp.image"));
  // One that is not there leaves the first alone.
  for (const char* none : {"clamp.none", "nobody.image"}) {
    evaluator_->Show({"terrain.image", false, none});
    result = TakeResult();
    ASSERT_NE(result, nullptr);
    EXPECT_NE(result->image, nullptr);
    EXPECT_EQ(result->second, nullptr);
  }
}

TEST_F(BackgroundEvaluatorTest, FollowsChanges) {
  evaluator_->Show({"clamp.image", false});
  Do(session_->SetAttribute("add.constant", "0.25"));
  EXPECT_EQ(SamplesOf(TakeResult()->image->GetImage()), EvaluateHere("clamp.image"));
  Do(session_->SetEnabled({"add"}, false));
  EXPECT_EQ(SamplesOf(TakeResult()->image->GetImage()), EvaluateHere("clamp.image"));
  Do(session_->Undo());
  Do(session_->Disconnect({"add.image", "clamp.image", 0}));
  Do(session_->Connect({"terrain.image", "clamp.image", 0}));
  EXPECT_EQ(SamplesOf(TakeResult()->image->GetImage()), EvaluateHere("terrain.image"));
  Do(session_->RenameNode("clamp", "c"));
  EXPECT_EQ(TakeResult()->message, "This node does not exist.");
  evaluator_->Show({"c.image", false});
  EXPECT_NE(TakeResult()->image, nullptr);
}

TEST_F(BackgroundEvaluatorTest, FollowsWhatAPanelSets) {
  evaluator_->Show({"add.image", false});
  Do(session_->Watch({"add"}));
  const std::vector<float> before = SamplesOf(TakeResult()->image->GetImage());
  session_->GetDocument().FindNode("add")->GetAttribute("constant")->SetNumber(2.0, false);
  const std::vector<float> now = SamplesOf(TakeResult()->image->GetImage());
  ASSERT_EQ(now.size(), before.size());
  for (std::size_t i = 0; i < now.size(); ++i) ASSERT_EQ(now[i], before[i] + 2.0F);
}

TEST_F(BackgroundEvaluatorTest, EvaluatesOnlyWhatAChangeConcerns) {
  evaluator_->Show({"clamp.image", false});
  EXPECT_EQ(TakeFacts().size(), 4U);
  Do(session_->SetAttribute("clamp.high", "0.5"));
  const auto facts = TakeFacts();
  ASSERT_EQ(facts.size(), 1U);
  EXPECT_EQ(facts.begin()->first, "clamp");
  // A note and a position concern nothing.
  Do(session_->SetNote("clamp", "kept"));
  Do(session_->SetPositions({{"add", ScEng::Point{1, 2}}}));
  EXPECT_TRUE(TakeFacts().empty());
}

TEST_F(BackgroundEvaluatorTest, TellsOfANodeThatIsBroughtBack) {
  Wait();
  static_cast<void>(evaluator_->TakeFacts());
  // Both within one round of the evaluation, as far as that can be told.
  evaluator_->Cancel();
  Do(session_->RemoveNodes({"alone"}));
  Do(session_->Undo());
  EXPECT_TRUE(TakeFacts().contains("alone"));
}

TEST_F(BackgroundEvaluatorTest, TellsOfNodes) {
  evaluator_->SetThumbnailSize(16);
  evaluator_->Show({"clamp.image", false});
  const auto facts = TakeFacts();
  ASSERT_EQ(facts.size(), 4U);
  // 40 x 30 samples of one channel.
  EXPECT_EQ(facts.at("add").bytes_held, 4800U);
  EXPECT_FALSE(facts.at("add").is_in_error);
  ASSERT_NE(facts.at("add").thumbnail, nullptr);
  EXPECT_EQ(facts.at("add").thumbnail->GetImage().GetSizeX(), 16);
  EXPECT_EQ(facts.at("add").thumbnail->GetImage().GetSizeY(), 12);
  EXPECT_NE(facts.at("alone").thumbnail, nullptr);
}

TEST_F(BackgroundEvaluatorTest, LeavesOutWhatFeedsNothingShown) {
  evaluator_->SetEvaluatesAll(false);
  evaluator_->Show({"add.image", false});
  const auto facts = TakeFacts();
  EXPECT_TRUE(facts.contains("add"));
  // They may have been evaluated before that was asked for, but not after.
  Do(session_->SetAttribute("terrain.seed", "3"));
  const auto later = TakeFacts();
  EXPECT_TRUE(later.contains("terrain"));
  EXPECT_TRUE(later.contains("add"));
  EXPECT_FALSE(later.contains("clamp"));
}

TEST_F(BackgroundEvaluatorTest, TellsErrorsAndWhatTheyBlock) {
  Do(session_->AddNode({{10, 16, 5}, "reader", {}}));
  Do(session_->SetAttribute("reader.path", "missing.exr"));
  Do(session_->Reconnect({"reader.image", "add.image", 0}));
  evaluator_->Show({"clamp.image", false});
  const auto result = TakeResult();
  EXPECT_EQ(result->image, nullptr);
  EXPECT_TRUE(Testing::Contains(result->message, "missing.exr")) << result->message;
  const auto facts = TakeFacts();
  EXPECT_TRUE(facts.at("reader").is_in_error);
  ASSERT_EQ(facts.at("reader").messages.size(), 1U);
  EXPECT_TRUE(Testing::Contains(facts.at("reader").messages[0], "missing.exr"));
  EXPECT_TRUE(facts.at("clamp").is_blocked);
  EXPECT_FALSE(facts.at("clamp").is_in_error);
}

TEST_F(BackgroundEvaluatorTest, SaysWhatCannotBeShown) {
  for (const auto& [plug, message] :
       std::vector<std::pair<std::string, std::string>>{{"nobody.image", "This node does not exist."},
                                                        {"add.picture", "The node has no output \"picture\"."},
                                                        {"", ""}}) {
    evaluator_->Show({"clamp.image", false});
    Wait();
    evaluator_->Show({plug, false});
    const auto result = TakeResult();
    EXPECT_EQ(result->image, nullptr);
    EXPECT_EQ(result->message, message);
  }
  Do(session_->AddNode({Testing::kClamp, "lonely", {}}));
  evaluator_->Show({"lonely.image", false});
  EXPECT_EQ(TakeResult()->message, "Nothing is connected to the input \"image\" of this node.");
  Do(session_->AddNode({Testing::kNumberNode, "n", {}}));
  evaluator_->Show({"n.number", false});
  EXPECT_EQ(TakeResult()->message, "This output is no image.");
}

TEST_F(BackgroundEvaluatorTest, ANewerChangeEndsWhatTakesLong) {
  // A soft mask and a large radius: half a minute and more.
  Do(session_->SetAttribute("terrain.frame", "0,0,700,700"));
  Do(session_->AddNode({kRelief, "relief", {}}));
  Do(session_->Connect({"terrain.image", "relief.image", 0}));
  Do(session_->SetAttribute("relief.style", "inner_bevel"));
  Do(session_->SetAttribute("relief.radius", "250"));
  evaluator_->SetEvaluatesAll(false);
  evaluator_->Show({"relief.image", false});
  Do(session_->SetAttribute("terrain.frame", "0,0,8,8"));
  const auto result = TakeResult();
  ASSERT_NE(result->image, nullptr) << result->message;
  EXPECT_EQ(SamplesOf(result->image->GetImage()), EvaluateHere("relief.image"));
}

TEST_F(BackgroundEvaluatorTest, GoesOnWhenItIsToldTo) {
  evaluator_->Show({"clamp.image", false});
  evaluator_->Cancel();
  Wait();
  EXPECT_TRUE(evaluator_->IsIdle());
  evaluator_->Resume();
  EXPECT_NE(TakeResult()->image, nullptr);
}

TEST_F(BackgroundEvaluatorTest, ReadsFilesAgain) {
  const auto write = [&](float value) {
    std::vector<std::string> notes;
    const auto image = Testing::MakeImage(1, 1, ColorMode::kValue, {value});
    Do(ScEng::WriteImageFile(*image, folder_ / "in.exr", {}, notes));
  };
  write(0.25F);
  Do(session_->AddNode({{10, 16, 5}, "reader", {}}));
  Do(session_->SetAttribute("reader.path", (folder_ / "in.exr").string()));
  evaluator_->Show({"reader.image", false});
  EXPECT_EQ(SamplesOf(TakeResult()->image->GetImage()), std::vector<float>{0.25F});
  write(0.75F);
  evaluator_->ReadAgain({"reader"});
  EXPECT_EQ(SamplesOf(TakeResult()->image->GetImage()), std::vector<float>{0.75F});
}

TEST_F(BackgroundEvaluatorTest, RelativePathsFollowTheDocumentsFolder) {
  std::vector<std::string> notes;
  const auto image = Testing::MakeImage(1, 1, ColorMode::kValue, {0.5F});
  Do(ScEng::WriteImageFile(*image, folder_ / "in.exr", {}, notes));
  Do(session_->AddNode({{10, 16, 5}, "reader", {}}));
  Do(session_->SetAttribute("reader.path", "in.exr"));
  evaluator_->Show({"reader.image", false});
  EXPECT_EQ(TakeResult()->image, nullptr);
  Do(session_->SaveAs(folder_ / "graph.json"));
  EXPECT_NE(TakeResult()->image, nullptr);
}

TEST_F(BackgroundEvaluatorTest, HasTheLastWordOfAnyEditing) {
  std::mt19937 random(11);
  const auto pick = [&](unsigned count) { return static_cast<unsigned>(random() % count); };
  evaluator_->Show({"clamp.image", true});
  for (int i = 0; i < 400; ++i) {
    switch (pick(7)) {
      case 0: Do(session_->SetAttribute("terrain.seed", std::to_string(pick(100)))); break;
      case 1: Do(session_->SetAttribute("add.constant", std::to_string(pick(100)))); break;
      case 2: Do(session_->SetEnabled({pick(2) == 0 ? "add" : "clamp"}, pick(2) == 0)); break;
      case 3: static_cast<void>(session_->Undo()); break;
      case 4: static_cast<void>(session_->Redo()); break;
      case 5:
        Do(session_->SetAttribute("terrain.frame",
                                  "0,0," + std::to_string(1 + pick(300)) + "," + std::to_string(1 + pick(300))));
        break;
      default: evaluator_->Show({pick(2) == 0 ? "clamp.image" : "terrain.image", pick(2) == 0}); break;
    }
    if (pick(20) == 0) Wait();
    if (pick(5) == 0) static_cast<void>(evaluator_->TakeFacts());
  }
  // To what can be compared in any case.
  evaluator_->Show({"add.image", false});
  while (session_->GetPlace() < 8) Do(session_->Redo());
  Wait();
  const std::vector<float> here = EvaluateHere("add.image");
  EXPECT_FALSE(here.empty());
  EXPECT_EQ(SamplesOf(TakeResult()->image->GetImage()), here);
}

TEST_F(BackgroundEvaluatorTest, EndsInTheMiddleOfAnything) {
  Do(session_->SetAttribute("terrain.frame", "0,0,500,500"));
  for (int i = 0; i < 20; ++i) {
    BackgroundEvaluator other(*session_, [] {});
    other.Show({"clamp.image", true});
    Do(session_->SetAttribute("terrain.seed", std::to_string(i)));
    if (i % 3 == 0) static_cast<void>(other.GetProgress());
  }
  Wait();
}

}  // namespace
