// SPDX-License-Identifier: Apache-2.0
//
// How many images there are while a chain of nodes is evaluated, and what is left when that goes wrong.
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "Host/Image/PendingImage.h"
#include "Host/Image/SampleAllocator.h"
#include "Host/Util/Cancellation.h"
#include "Tests/Contract/ChainTesting.h"
#include "Tests/Support/ValueTesting.h"

Testing::CountingAllocator& Testing::GetAllocator() {
  static CountingAllocator& allocator = *new CountingAllocator;
  return allocator;
}

namespace {

using Testing::GetAllocator;
using Testing::Graph;
using Testing::IsSame;
using Testing::MakingNode;

const bool is_counting = [] {
  ScEng::SetSampleAllocator(&GetAllocator());
  return true;
}();

/// Eight nodes behind `first`, none of which needs more than the samples at a place.
std::vector<Node*> AddEight(Graph& graph, Node* first) {
  std::vector<Node*> nodes{first};
  const auto add = [&](const char* type) {
    nodes.push_back(graph.AddBehind(nodes.back(), type));
    return nodes.back();
  };
  Testing::SetNumber(*add("ImageValueAddNode"), "constant", 0.3);
  Testing::SetNumber(*add("ImageValueMultiplyNode"), "constant", 1.7);
  Node* const clamp = add("ImageValueClampNode");
  Testing::SetNumber(*clamp, "low", 0.1);
  Testing::SetNumber(*clamp, "high", 1.2);
  Testing::SetChoice(*clamp, "profile", "smooth");
  Testing::SetNumber(*add("ImageValueDivideNode"), "constant", 3.0);
  Testing::SetChoice(*add("ImageValueFunctionNode"), "function", "sine");
  Testing::SetNumber(*add("ImageValueRangeNode"), "falloff", 0.75);
  Testing::SetNumber(*add("ImageValueMinimumNode"), "constant", 0.6);
  Testing::SetNumber(*add("ImageValueSubtractNode"), "constant", 0.2);
  nodes.erase(nodes.begin());
  return nodes;
}

// ---- Images that there are at a time ----

class ChainOfEight : public testing::Test {
 protected:
  ChainOfEight() : making_(graph_.Add("MakingNode")), nodes_(AddEight(graph_, making_)) { GetAllocator().Begin(); }

  Graph graph_;
  Node* making_;
  std::vector<Node*> nodes_;
};

TEST_F(ChainOfEight, IsOnePass) {
  const ImagePtr result = graph_.EvaluateJoined({nodes_.back()}).front();
  ASSERT_TRUE(result);
  EXPECT_EQ(GetAllocator().made, 2U) << "what is made and the result";
  EXPECT_EQ(GetAllocator().most, 2 * MakingNode::kBytes);
  EXPECT_EQ(GetAllocator().held, MakingNode::kBytes) << "the result";
  Graph other;
  EXPECT_TRUE(
      IsSame(result.Get(), other.EvaluateEach({AddEight(other, other.Add("MakingNode")).back()}).front().Get()));
}

TEST_F(ChainOfEight, HoldsTwoImagesNodeByNode) {
  Engine::Options options;
  std::size_t timed = 0;
  // Each node takes its own time where somebody asks for it.
  options.on_timed = [&](Node& node, const Engine::NodeTiming& timing) {
    ++timed;
    EXPECT_EQ(timing.bytes_made, MakingNode::kBytes);
    EXPECT_EQ(timing.bytes_read, &node == making_ ? 0 : MakingNode::kBytes);
  };
  ASSERT_TRUE(graph_.EvaluateJoined({nodes_.back()}, options).front());
  EXPECT_EQ(timed, 9U);
  EXPECT_EQ(GetAllocator().made, 9U);
  EXPECT_EQ(GetAllocator().most, 2 * MakingNode::kBytes);
}

TEST_F(ChainOfEight, IsComputedNodeByNodeWhereResultsAreKept) {
  ASSERT_TRUE(graph_.EvaluateEach({nodes_.back()}).front());
  EXPECT_EQ(GetAllocator().made, 9U);
  for (Node* node : nodes_) EXPECT_NE(graph_.engine.GetOutputImage(node, 0), nullptr);
}

TEST_F(ChainOfEight, MakesWhatIsAskedForInBetween) {
  const auto images = graph_.EvaluateJoined({nodes_[3], nodes_.back()});
  ASSERT_TRUE(images[0] && images[1]);
  EXPECT_EQ(GetAllocator().made, 3U);
}

TEST_F(ChainOfEight, MakesWhatTwoNodesRead) {
  Node* const other = graph_.AddBehind(nodes_[3], "ImageValueAddNode");
  ASSERT_TRUE(graph_.EvaluateJoined({nodes_.back(), other}).front());
  // What is made, what two read, and the two results.
  EXPECT_EQ(GetAllocator().made, 4U);
}

TEST_F(ChainOfEight, MakesWhatANodeReadsByItself) {
  Node* const distance = graph_.AddBehind(nodes_.back(), "ImageEuclideanDistanceNode");
  Node* const last = graph_.AddBehind(distance, "ImageValueAddNode");
  const ImagePtr result = graph_.EvaluateJoined({last}).front();
  ASSERT_TRUE(result);
  EXPECT_TRUE(IsSame(result.Get(), graph_.EvaluateEach({last}).front().Get()));
}

TEST_F(ChainOfEight, MakesWhoseLowestSampleIsCompared) {
  Node* const condition = graph_.AddBehind(nodes_.back(), "ImageValueConditionNode");
  Testing::SetChoice(*condition, "condition", "v_eq_min");
  ASSERT_TRUE(graph_.EvaluateJoined({condition}).front());
  EXPECT_EQ(GetAllocator().made, 3U);
  EXPECT_EQ(GetAllocator().most, 2 * MakingNode::kBytes);
}

TEST_F(ChainOfEight, JoinsTheSidesOfASum) {
  const std::vector<Node*> others = AddEight(graph_, graph_.Add("MakingNode"));
  Node* const sum = graph_.Add("ImageValueAddNode");
  graph_.Connect(nodes_.back(), sum, "image", 0);
  graph_.Connect(others.back(), sum, "image", 1);
  const ImagePtr result = graph_.EvaluateJoined({sum}).front();
  ASSERT_TRUE(result);
  EXPECT_EQ(GetAllocator().made, 3U);
  EXPECT_EQ(GetAllocator().most, 3 * MakingNode::kBytes);
  EXPECT_TRUE(IsSame(result.Get(), graph_.EvaluateEach({sum}).front().Get()));
}

TEST_F(ChainOfEight, JoinsWithASumInItsMiddle) {
  Node* const giving = graph_.Add("GivingNode");
  const float fill = 0.125F;
  const auto given = ScEng::MakeRef<Image>(MakingNode::kSide, MakingNode::kSide, ColorMode::kValue, &fill);
  ASSERT_TRUE(graph_.engine.SetOutputOverride(giving, 0, given));
  Node* const sum = graph_.Add("ImageValueAddNode");
  graph_.Connect(nodes_.back(), sum, "image", 0);
  graph_.Connect(giving, sum, "image", 1);
  Node* const last = AddEight(graph_, sum).back();
  GetAllocator().Begin();
  const ImagePtr result = graph_.EvaluateJoined({last}).front();
  ASSERT_TRUE(result);
  EXPECT_EQ(GetAllocator().made, 2U);
  EXPECT_TRUE(IsSame(result.Get(), graph_.EvaluateEach({last}).front().Get()));
}

TEST_F(ChainOfEight, HoldsNoImagesForLaterInPlaceOfOne) {
  Node* const sum = graph_.Add("ImageValueAddNode");
  constexpr unsigned kPairs = 4;
  for (unsigned i = 0; i < kPairs; ++i) {
    Node* const product = graph_.AddBehind(graph_.Add("MakingNode"), "ImageValueMultiplyNode");
    graph_.Connect(graph_.Add("MakingNode"), product, "image", 1);
    graph_.Connect(graph_.AddBehind(product, "ImageValueSubtractNode"), sum, "image", i);
  }
  GetAllocator().Begin();
  ASSERT_TRUE(graph_.EvaluateJoined({sum}).front());
  // Three products, and the last one while it is made of two images; then four and their sum.
  EXPECT_EQ(GetAllocator().most, (kPairs - 1 + 3) * MakingNode::kBytes);
}

TEST_F(ChainOfEight, PassesThroughANodeThatIsDisabled) {
  nodes_[1]->SetEnabled(false);
  const ImagePtr result = graph_.EvaluateJoined({nodes_.back()}).front();
  ASSERT_TRUE(result);
  // The node behind which it stands gives its image to be copied.
  EXPECT_EQ(GetAllocator().made, 4U);
  EXPECT_TRUE(IsSame(result.Get(), graph_.EvaluateEach({nodes_.back()}).front().Get()));
}

TEST(JoinedPasses, TakeChainsOfAnyLength) {
  Graph graph;
  Node* last = graph.Add("MakingNode");
  for (int i = 0; i < 1000; ++i) {
    last = graph.AddBehind(last, "ImageValueAddNode");
    Testing::SetNumber(*last, "constant", 0.25);
  }
  GetAllocator().Begin();
  const ImagePtr result = graph.EvaluateJoined({last}).front();
  ASSERT_TRUE(result);
  // Each sum is exact: 0.5 and a thousand quarters.
  EXPECT_EQ(result->GetConstArray()[0], 250.5F);
  EXPECT_EQ(result->GetValueLow(), 250.5F);
  EXPECT_EQ(result->GetValueHigh(), 250.5F);
  EXPECT_LT(GetAllocator().made, 100U);
  EXPECT_EQ(GetAllocator().most, 2 * MakingNode::kBytes);
}

// ---- What goes wrong ----

TEST_F(ChainOfEight, FailsAtTheNodeThatMakesTheImage) {
  constexpr int kMadeBefore = 1;
  GetAllocator().spared = kMadeBefore;
  EXPECT_FALSE(graph_.EvaluateJoined({nodes_.back()}).front());
  GetAllocator().spared = -1;
  EXPECT_TRUE(Testing::IsInErrorState(*nodes_.back(), "Output image is larger than maximum image size."));
  EXPECT_EQ(nodes_[6]->GetState(), Node::State::kReady);
  EXPECT_EQ(GetAllocator().held, 0U);
  nodes_.front()->NotifyChanged();
  EXPECT_TRUE(graph_.EvaluateJoined({nodes_.back()}).front());
}

TEST_F(ChainOfEight, LeavesNothingBehindWhenItIsStopped) {
  ScEng::Cancellation cancellation;
  Engine::Options options;
  options.release_results = true;
  options.cancellation = &cancellation;
  options.on_evaluated = [&](Node&, std::size_t done, std::size_t) {
    if (done == 5) cancellation.Request();
  };
  const auto requests = Graph::MakeRequests({nodes_.back()});
  EXPECT_EQ(graph_.engine.Evaluate(requests, options), Engine::Outcome::kCanceled);
  EXPECT_EQ(GetAllocator().held, 0U);
  for (Node* node : nodes_) EXPECT_EQ(node->GetOutputImage(0), nullptr);
  EXPECT_TRUE(graph_.EvaluateEach({nodes_.back()}).front());
}

TEST_F(ChainOfEight, LeavesNothingBehindWhenWhoeverIsToldThrows) {
  Engine::Options options;
  options.release_results = true;
  options.on_evaluated = [&](Node&, std::size_t done, std::size_t) {
    if (done == 5) throw std::runtime_error("enough");
  };
  const auto requests = Graph::MakeRequests({nodes_.back()});
  EXPECT_THROW(graph_.engine.Evaluate(requests, options), std::runtime_error);
  EXPECT_EQ(GetAllocator().held, 0U);
  for (Node* node : nodes_) EXPECT_EQ(node->GetOutputImage(0), nullptr);
  EXPECT_TRUE(graph_.EvaluateEach({nodes_.back()}).front());
}

TEST_F(ChainOfEight, ShowsNobodyAnImageWithoutSamples) {
  Engine::Options options;
  options.release_results = true;
  std::size_t seen = 0;
  options.on_evaluated = [&](Node& node, std::size_t, std::size_t) {
    const Image* const image = graph_.engine.GetOutputImage(&node, 0);
    if (image == nullptr) return;
    ++seen;
    EXPECT_FALSE(ScEng::IsPending(*image));
    EXPECT_EQ(graph_.engine.GetStatistics(&node).bytes_made, MakingNode::kBytes);
  };
  EXPECT_EQ(graph_.engine.Evaluate(Graph::MakeRequests({nodes_.back()}), options), Engine::Outcome::kComplete);
  EXPECT_EQ(seen, 2U) << "the first and the last";
  for (std::size_t i = 0; i + 1 < nodes_.size(); ++i) {
    EXPECT_EQ(graph_.engine.GetStatistics(nodes_[i]).bytes_made, 0U);
    EXPECT_EQ(graph_.engine.GetStatistics(nodes_[i]).evaluations, 1U);
  }
}

}  // namespace
