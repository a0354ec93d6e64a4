// SPDX-License-Identifier: Apache-2.0
//
// Whoever is told of an evaluation may change the graph between two nodes. Where their passes are joined, the second
// one may then be no node any more that computes with an image without samples; the result is what it is node by node.
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <vector>

#include "Host/Image/ComputeValue.h"
#include "Host/Image/ImageMetadata.h"
#include "Host/Tools/NodeRecord.h"
#include "Tests/Contract/ChainTesting.h"
#include "Tests/Support/ValueTesting.h"
#include "Value/Operations/ArithmeticOperations.h"

namespace {

using Testing::GetAllocator;
using Testing::IsSame;

/// Adds 1, or the lower end of the range that its image declares.
class LiftingNode : public Testing::TestNode {
 public:
  static constexpr NodeType kType{700, 2, 3};
  static constexpr const char* kName = "LiftingNode";
  static const NodeRecord kRecord;
  LiftingNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return "Lifting"; }
  void Evaluate(unsigned, const std::vector<PlugValue>& inputs) override {
    const Image* const image = inputs.at(0).GetImage();
    output_.Reset();
    if (image == nullptr) return;
    AdditionOperation operation(inputs.at(1).GetFlag() ? image->GetValueLow() : 1.0F);
    output_.Reset(ComputeValue(image, &operation));
  }
  bool OnProcessEvent(NodeEvent event) override {
    if (event.kind == NodeEvent::kDropCachedResults) output_.Reset();
    return true;
  }
  [[nodiscard]] Image* GetOutputImage(unsigned) const override { return output_.Get(); }

 private:
  ImagePtr output_;
};

constexpr AttributeRow kLiftingAttributes[] = {FlagRow("by_range", false, "Whether the range is what it lifts by.")};

Reach FindLiftingReach(const Node&, const std::vector<PlugValue>& inputs) {
  return Reach::Samples(inputs.at(1).GetFlag() ? Reach::Range::kDeclared : Reach::Range::kNone);
}

constinit const NodeRecord LiftingNode::kRecord{
    .type_name = LiftingNode::kName,
    .attributes = kLiftingAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = FindLiftingReach,
    .joins = true,
};

ImagePtr MakeWave(float first) {
  constexpr int kSizeX = 37;
  constexpr int kSizeY = 11;
  auto image = ScEng::MakeRef<Image>(kSizeX, kSizeY, ColorMode::kValue, nullptr);
  float* const samples = image->GetArray();
  for (std::size_t i = 0; i < image->GetNumSamples(); ++i) samples[i] = first + static_cast<float>(i * 7 % 31) / 8.0F;
  image->SetPin(3, -2);
  image->SetPivot(0.5F, 0.25F);
  image->SetOutsideValue(0.5F);
  image->SetValueLowHigh(-2.0F, 9.0F);
  static const auto metadata = std::make_shared<const ScEng::ImageMetadata>();
  image->SetMetadata(metadata);
  return image;
}

/// A graph with two images, at the same place, and what is asked for.
class Changed {
 public:
  Changed()
      : graph(Testing::MakeLibraryCatalog<LiftingNode>()), first(Give(MakeWave(-1.0F))), second(Give(MakeWave(2.0F))) {}

  Node* Give(const ImagePtr& image) {
    Node* const giving = graph.Add("GivingNode");
    EXPECT_TRUE(graph.engine.SetOutputOverride(giving, 0, image));
    return giving;
  }
  void Disconnect(Node* from, Node* to) {
    EXPECT_TRUE(graph.engine.DisconnectNodes(from, "image", 0, to, to->GetInplugs().front().name, 0));
  }

  Testing::Graph graph;
  Node* first;
  Node* second;
  /// The node that the change follows.
  Node* before = nullptr;
  std::vector<Node*> asked;
  std::function<void()> change;
};

/// Builds the graph twice, and evaluates it with its change, joined and node by node.
class ChangedChains : public testing::Test {
 protected:
  static std::vector<ImagePtr> Evaluate(Changed& changed, bool is_joined) {
    Engine::Options options;
    if (!is_joined) options.on_timed = [](Node&, const Engine::NodeTiming&) {};
    std::size_t changes = 0;
    options.on_evaluated = [&](Node& node, std::size_t, std::size_t) {
      if (&node != changed.before) return;
      // Else there would be nothing to test.
      EXPECT_EQ(changed.graph.engine.GetOutputImage(&node, 0) == nullptr, is_joined);
      changed.change();
      ++changes;
    };
    std::vector<ImagePtr> images = changed.graph.EvaluateJoined(changed.asked, options);
    EXPECT_EQ(changes, 1U);
    return images;
  }

  void Check(const std::function<void(Changed&)>& build) {
    build(joined_);
    build(each_);
    found_ = Evaluate(joined_, true);
    expected_ = Evaluate(each_, false);
    ASSERT_EQ(found_.size(), expected_.size());
    for (std::size_t i = 0; i < found_.size(); ++i) {
      ASSERT_TRUE(expected_[i]);
      EXPECT_TRUE(IsSame(found_[i].Get(), expected_[i].Get())) << i;
    }
  }

  Changed joined_;
  Changed each_;
  std::vector<ImagePtr> found_;
  std::vector<ImagePtr> expected_;
};

/// An addition behind the first image, and a node behind that.
Node* BuildTwo(Changed& changed, const char* type) {
  changed.before = changed.graph.AddBehind(changed.first, "ImageValueAddNode");
  Testing::SetNumber(*changed.before, "constant", 0.3);
  changed.asked = {changed.graph.AddBehind(changed.before, type)};
  return changed.asked.front();
}

/// The same behind the sum of both images.
Node* BuildFold(Changed& changed, const char* type) {
  changed.before = changed.graph.AddBehind(changed.first, "ImageValueAddNode");
  changed.graph.Connect(changed.second, changed.before, "image", 1);
  changed.asked = {changed.graph.AddBehind(changed.before, type)};
  return changed.asked.front();
}

TEST_F(ChangedChains, TheReaderIsDisabled) {
  Check([](Changed& changed) {
    Node* const reader = BuildTwo(changed, "ImageValueMultiplyNode");
    changed.change = [=] { reader->SetEnabled(false); };
  });
  // A copy of the sum: -1 + 0.3 to -1 + 30 / 8 + 0.3.
  EXPECT_EQ(found_[0]->GetValueLow(), -1.0F + 0.3F);
  EXPECT_EQ(found_[0]->GetValueHigh(), 2.75F + 0.3F);
  EXPECT_NE(found_[0]->GetMetadata(), nullptr);
}

TEST_F(ChangedChains, TheReaderOfAFoldIsDisabled) {
  Check([](Changed& changed) {
    Node* const reader = BuildFold(changed, "ImageValueMultiplyNode");
    changed.change = [=] { reader->SetEnabled(false); };
  });
  EXPECT_EQ(found_[0]->GetValueLow(), 1.0F);
  EXPECT_EQ(found_[0]->GetValueHigh(), 8.5F);
}

TEST_F(ChangedChains, TheReaderBeginsToReadTheRange) {
  Check([](Changed& changed) {
    Node* const reader = BuildTwo(changed, "LiftingNode");
    changed.change = [=] { Testing::SetFlag(*reader, "by_range", true); };
  });
  EXPECT_EQ(found_[0]->GetValueLow(), (-1.0F + 0.3F) + (-1.0F + 0.3F));
}

TEST_F(ChangedChains, TheReaderOfAFoldBeginsToReadTheRange) {
  Check([](Changed& changed) {
    Node* const reader = BuildFold(changed, "LiftingNode");
    changed.change = [=] { Testing::SetFlag(*reader, "by_range", true); };
  });
  EXPECT_EQ(found_[0]->GetValueLow(), 2.0F);
}

TEST_F(ChangedChains, TheReaderBeginsToCompareWithTheLowestSample) {
  Check([](Changed& changed) {
    Node* const reader = BuildFold(changed, "ImageValueConditionNode");
    Testing::SetChoice(*reader, "condition", "v_lt_a");
    changed.change = [=] { Testing::SetChoice(*reader, "condition", "v_eq_min"); };
  });
  EXPECT_EQ(found_[0]->GetConstArray()[0], 1.0F);
  EXPECT_EQ(found_[0]->GetConstArray()[1], 0.0F);
}

TEST_F(ChangedChains, TheReaderBeginsToClampOneSide) {
  Check([](Changed& changed) {
    Node* const reader = BuildTwo(changed, "ImageValueClampNode");
    changed.change = [=] { Testing::SetChoice(*reader, "clamp", "low"); };
  });
}

/// A node that declares a range of its own, and behind it one that begins to read it.
void BuildDeclared(Changed& changed, const char* type) {
  changed.before = changed.graph.AddBehind(changed.first, type);
  Node* const reader = changed.graph.AddBehind(changed.before, "LiftingNode");
  changed.asked = {reader};
  changed.change = [=] { Testing::SetFlag(*reader, "by_range", true); };
}

TEST_F(ChangedChains, TheReaderBeginsToReadTheRangeOfAClamp) {
  Check([](Changed& changed) {
    BuildDeclared(changed, "ImageValueClampNode");
    Testing::SetNumber(*changed.before, "low", -5.0);
    Testing::SetNumber(*changed.before, "high", 6.0);
  });
  // The lowest sample is -1, the limit -5.
  EXPECT_EQ(found_[0]->GetValueLow(), -6.0F);
}

TEST_F(ChangedChains, TheReaderBeginsToReadTheRangeOfSteps) {
  Check([](Changed& changed) { BuildDeclared(changed, "ImageValueStepsNode"); });
}

TEST_F(ChangedChains, AnotherNodeReadsInstead) {
  Check([](Changed& changed) {
    Node* const reader = BuildTwo(changed, "ImageValueMultiplyNode");
    Node* const other = changed.graph.AddBehind(changed.second, "ImageValueStepsNode");
    changed.asked.push_back(other);
    changed.change = [&changed, reader, other] {
      changed.Disconnect(changed.before, reader);
      changed.graph.Connect(changed.second, reader);
      changed.Disconnect(changed.second, other);
      changed.graph.Connect(changed.before, other);
    };
  });
  EXPECT_EQ(found_[1]->GetValueLow(), -1.0F + 0.3F);
}

TEST_F(ChangedChains, AnotherNodeReadsBefore) {
  Check([](Changed& changed) {
    Node* const sum = BuildTwo(changed, "ImageValueAddNode");
    Node* const distance = changed.graph.AddBehind(changed.second, "ImageEuclideanDistanceNode");
    changed.graph.Connect(distance, sum, "image", 1);
    changed.change = [&changed, distance] {
      changed.Disconnect(changed.second, distance);
      changed.graph.Connect(changed.before, distance);
    };
  });
}

TEST_F(ChangedChains, NobodyReads) {
  for (Changed* changed : {&joined_, &each_}) {
    Node* const reader = BuildTwo(*changed, "ImageValueMultiplyNode");
    changed->change = [=] {
      changed->Disconnect(changed->before, reader);
      changed->graph.Connect(changed->second, reader);
    };
  }
  const ImagePtr found = Evaluate(joined_, true).front();
  EXPECT_TRUE(IsSame(found.Get(), Evaluate(each_, false).front().Get()));
  // It waits for nobody, and is made when it is asked for.
  EXPECT_EQ(joined_.before->GetOutputImage(0), nullptr);
  EXPECT_EQ(each_.before->GetOutputImage(0), nullptr);
  const ImagePtr asked = joined_.graph.EvaluateEach({joined_.before}).front();
  ASSERT_TRUE(asked);
  EXPECT_TRUE(IsSame(asked.Get(), each_.graph.EvaluateEach({each_.before}).front().Get()));
}

TEST_F(ChangedChains, TheReaderIsDeleted) {
  for (Changed* changed : {&joined_, &each_}) {
    Node* const reader = BuildTwo(*changed, "ImageValueMultiplyNode");
    changed->asked.push_back(changed->graph.AddBehind(changed->second, "ImageValueAddNode"));
    changed->change = [=] { EXPECT_TRUE(changed->graph.engine.DeleteNode(reader)); };
  }
  const std::vector<ImagePtr> found = Evaluate(joined_, true);
  const std::vector<ImagePtr> expected = Evaluate(each_, false);
  EXPECT_FALSE(found[0]);
  ASSERT_TRUE(found[1]);
  EXPECT_TRUE(IsSame(found[1].Get(), expected[1].Get()));
  EXPECT_EQ(joined_.before->GetOutputImage(0), nullptr);
  EXPECT_TRUE(joined_.graph.EvaluateEach({joined_.before}).front());
}

TEST_F(ChangedChains, TheNodeThatWasEvaluatedIsDeleted) {
  Check([](Changed& changed) {
    Node* const reader = BuildTwo(changed, "ImageValueAddNode");
    changed.graph.Connect(changed.second, reader, "image", 1);
    changed.change = [&changed] { EXPECT_TRUE(changed.graph.engine.DeleteNode(changed.before)); };
  });
  // What is left of the reader's inputs, and its constant of 0.
  EXPECT_EQ(found_[0]->GetValueLow(), 2.0F);
}

TEST_F(ChangedChains, TheReaderIsDeletedBefore) {
  // When its image may not be made yet.
  const auto build = [](Changed& changed) {
    changed.before = changed.graph.AddBehind(changed.first, "ImageValueAddNode");
    Node* const middle = changed.graph.AddBehind(changed.before, "ImageValueMultiplyNode");
    Node* const last = changed.graph.AddBehind(middle, "ImageValueAddNode");
    Node* const other = changed.graph.AddBehind(changed.second, "ImageEuclideanDistanceNode");
    changed.asked = {last, other};
    changed.change = [&changed, middle, last, other] {
      EXPECT_TRUE(changed.graph.engine.DeleteNode(last));
      changed.Disconnect(changed.second, other);
      changed.graph.Connect(middle, other);
    };
  };
  build(joined_);
  build(each_);
  const std::vector<ImagePtr> found = Evaluate(joined_, true);
  const std::vector<ImagePtr> expected = Evaluate(each_, false);
  ASSERT_TRUE(found[1]);
  EXPECT_TRUE(IsSame(found[1].Get(), expected[1].Get()));
}

TEST_F(ChangedChains, TheNodeIsAskedForMeanwhile) {
  ImagePtr asked[2];
  std::size_t count = 0;
  for (Changed* changed : {&joined_, &each_}) {
    BuildTwo(*changed, "ImageValueMultiplyNode");
    changed->change = [&, changed] { asked[count++] = changed->graph.EvaluateEach({changed->before}).front(); };
    Evaluate(*changed, changed == &joined_);
  }
  ASSERT_TRUE(asked[0]);
  EXPECT_TRUE(IsSame(asked[0].Get(), asked[1].Get()));
}

TEST_F(ChangedChains, NoSampleIsFinite) {
  Check([](Changed& changed) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    changed.first = changed.Give(ScEng::MakeRef<Image>(5, 3, ColorMode::kValue, &nan));
    Node* const reader = BuildTwo(changed, "ImageValueMultiplyNode");
    changed.change = [=] { reader->SetEnabled(false); };
  });
  EXPECT_EQ(found_[0]->GetValueLow(), 0.0F);
  EXPECT_EQ(found_[0]->GetValueHigh(), 0.0F);
}

TEST_F(ChangedChains, ThereIsNoMemory) {
  Node* const reader = BuildTwo(joined_, "LiftingNode");
  joined_.change = [=] {
    Testing::SetFlag(*reader, "by_range", true);
    GetAllocator().spared = 0;
  };
  EXPECT_FALSE(Evaluate(joined_, true).front());
  GetAllocator().spared = -1;
  EXPECT_TRUE(Testing::IsInErrorState(*reader, "Output image is larger than maximum image size."));
  EXPECT_EQ(joined_.before->GetOutputImage(0), nullptr);
  joined_.before->NotifyChanged();
  EXPECT_TRUE(joined_.graph.EvaluateJoined({reader}).front());
}

TEST_F(ChangedChains, ThereIsMemoryForOneOfTwo) {
  Node* const one = joined_.graph.AddBehind(joined_.first, "ImageValueAddNode");
  Node* const other = joined_.graph.AddBehind(joined_.second, "ImageValueAddNode");
  Node* const reader = joined_.graph.AddBehind(one, "ImageValueMultiplyNode");
  joined_.graph.Connect(other, reader, "image", 1);
  joined_.before = other;
  joined_.asked = {reader};
  joined_.change = [=] {
    reader->SetEnabled(false);
    GetAllocator().spared = 1;
  };
  EXPECT_FALSE(Evaluate(joined_, true).front());
  GetAllocator().spared = -1;
  EXPECT_TRUE(Testing::IsInErrorState(*reader, "Output image is larger than maximum image size."));
  EXPECT_EQ(one->GetOutputImage(0), nullptr);
  EXPECT_EQ(other->GetOutputImage(0), nullptr);
}

}  // namespace
