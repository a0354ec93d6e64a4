// SPDX-License-Identifier: Apache-2.0
//
// Nodes that follow one another are computed in one pass where nobody sees it: any graph gives what it gives node by
// node, to the bit. Node by node is how the engine evaluates where results are kept.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Host/Image/ImageMetadata.h"
#include "Host/Image/PendingImage.h"
#include "Host/Util/ParallelRows.h"
#include "Tests/Contract/ChainTesting.h"
#include "Tests/Support/Threads.h"

namespace {

using Testing::Graph;
using Testing::IsSame;

/// A node of a graph: its type, what differs from its defaults, and what feeds its inputs.
struct Step {
  std::string type;
  std::vector<std::pair<std::string, std::variant<double, std::string, bool>>> attributes;
  bool is_enabled = true;
  std::vector<std::size_t> sources;
};

std::ostream& operator<<(std::ostream& stream, const Step& step) {
  stream << step.type << (step.is_enabled ? "" : " (disabled)");
  for (const auto& [name, value] : step.attributes) {
    stream << " " << name << "=";
    std::visit([&](const auto& held) { stream << held; }, value);
  }
  stream << " of";
  for (const std::size_t source : step.sources) stream << " " << source;
  return stream << "\n";
}

double AnyNumber() { return *rc::gen::element(-1.5, -0.5, 0.0, 0.25, 0.5, 0.75, 1.0, 2.0, 3.0); }
std::string AnyWord(const std::vector<std::string>& words) { return *rc::gen::elementOf(words); }

/// `before` is the number of images that there are to be connected; the latest of them is the likeliest.
Step AnyStep(std::size_t before) {
  const std::vector<std::string> many = {"ImageValueAddNode",    "ImageValueSubtractNode", "ImageValueMultiplyNode",
                                         "ImageValueDivideNode", "ImageValuePowerNode",    "ImageValueMinimumNode",
                                         "ImageValueMaximumNode"};
  const auto any_source = [&] {
    return *rc::gen::weightedOneOf<std::size_t>(
        {{4, rc::gen::just(before - 1)}, {1, rc::gen::inRange<std::size_t>(0, before)}});
  };
  Step step;
  step.is_enabled = *rc::gen::weightedElement<bool>({{9, true}, {1, false}});
  step.sources = {any_source()};
  const int kind = *rc::gen::inRange(0, 12);
  if (kind < 5) {
    step.type = AnyWord(many);
    step.attributes = {{"constant", AnyNumber()}};
    while (*rc::gen::weightedElement<bool>({{1, true}, {3, false}})) step.sources.push_back(any_source());
  } else if (kind < 7) {
    step.type = "ImageValueClampNode";
    step.attributes = {{"low", AnyNumber()},
                       {"high", AnyNumber()},
                       {"clamp", AnyWord({"both", "both", "low", "high"})},
                       {"profile", AnyWord({"linear", "smooth", "perlin", "arc_out", "arc_in"})}};
  } else if (kind == 7) {
    step.type = "ImageValueConditionNode";
    step.attributes = {{"a", AnyNumber()},
                       {"b", AnyNumber()},
                       {"condition", AnyWord({"v_eq_min", "v_df_max", "v_lt_a", "v_gte_a", "a_lte_v_lt_b"})}};
  } else if (kind == 8) {
    step.type = "ImageValueRangeNode";
    step.attributes = {{"center", AnyNumber()},
                       {"size", std::fabs(AnyNumber())},
                       {"falloff", std::fabs(AnyNumber())},
                       {"profile", AnyWord({"linear", "smooth", "arc_out", "arc_in"})}};
  } else if (kind == 9) {
    step.type = "ImageValueFunctionNode";
    step.attributes = {{"function", AnyWord({"absolute", "sine", "inverse", "log2", "square_root", "floor"})}};
  } else if (kind == 10) {
    step.type = "ImageValueStepsNode";
    step.attributes = {{"steps", 2.0 + std::fabs(AnyNumber())}};
  } else {
    step.type = AnyWord({"ImageToValueNode", "ImageEuclideanDistanceNode", "ImageComputeGradientNode"});
    if (step.type == "ImageToValueNode") step.attributes = {{"auto_level", *rc::gen::arbitrary<bool>()}};
  }
  return step;
}

float AnySample() {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  return *rc::gen::weightedOneOf<float>(
      {{20, rc::gen::map(rc::gen::inRange(-64, 65), [](int i) { return static_cast<float>(i) / 16.0F; })},
       {1, rc::gen::element(std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity, -0.0F, 1e30F)}});
}

ImagePtr AnyImage(int size_x, int size_y) {
  const auto mode = *rc::gen::weightedElement<unsigned>(
      {{6, ColorMode::kValue}, {1, ColorMode::kColor}, {1, ColorMode::kSigned}, {1, ColorMode::kPair}});
  const auto pixels = static_cast<std::size_t>(size_x) * static_cast<std::size_t>(size_y);
  const auto samples =
      *rc::gen::container<std::vector<float>>(std::size_t{97} * 4, rc::gen::exec([] { return AnySample(); }));
  auto image = ScEng::MakeRef<Image>(size_x, size_y, mode, nullptr);
  float* const to = image->GetArray();
  // Repeated with a step that is prime to the number of samples, since drawing each one takes its time.
  const std::size_t count = pixels * static_cast<std::size_t>(image->GetNumChannels());
  for (std::size_t i = 0; i < count; ++i) to[i] = samples[(i * 101) % samples.size()];
  image->SetPin(*rc::gen::inRange(-3, 4), *rc::gen::inRange(-3, 4));
  image->SetPivot(*rc::gen::element(0.0F, 0.5F), *rc::gen::element(0.0F, 0.25F));
  image->SetOutsideValue(*rc::gen::element(0.0F, 0.5F));
  image->SetValueLowHigh(-1.0F, 4.0F);
  image->SetMetadata(std::make_shared<const ScEng::ImageMetadata>());
  return image;
}

void SetAttributes(Node& node, const Step& step) {
  for (const auto& [name, value] : step.attributes) {
    Attribute* const attribute = node.GetAttribute(name);
    if (const double* number = std::get_if<double>(&value)) {
      EXPECT_TRUE(attribute->SetNumber(*number, false));
    } else if (const bool* flag = std::get_if<bool>(&value)) {
      EXPECT_TRUE(attribute->SetFlag(*flag, false));
    } else {
      EXPECT_TRUE(attribute->SetChoice(std::get<std::string>(value), false));
    }
  }
}

/// The nodes of the steps, behind those that give the images.
std::vector<Node*> Build(Graph& graph, const std::vector<ImagePtr>& images, const std::vector<Step>& steps) {
  std::vector<Node*> nodes;
  for (const ImagePtr& image : images) {
    nodes.push_back(graph.Add("GivingNode"));
    EXPECT_TRUE(graph.engine.SetOutputOverride(nodes.back(), 0, image));
  }
  for (const Step& step : steps) {
    Node* const node = graph.Add(step.type);
    for (unsigned i = 0; i < step.sources.size(); ++i) graph.Connect(nodes[step.sources[i]], node, nullptr, i);
    SetAttributes(*node, step);
    node->SetEnabled(step.is_enabled);
    nodes.push_back(node);
  }
  return nodes;
}

/// How many images were not made in all graphs together.
std::size_t num_spared = 0;

void CheckAnyGraph() {
  const int size_x = *rc::gen::element(1, 7, 64, 97);
  const int size_y = *rc::gen::element(1, 5, 80);
  std::vector<ImagePtr> images{AnyImage(size_x, size_y)};
  // A second one at the same place, or at one of its own.
  images.push_back(*rc::gen::arbitrary<bool>() ? ScEng::MakeRef<Image>(*images.front()) : AnyImage(13, 11));
  std::vector<Step> steps;
  const std::size_t count = *rc::gen::inRange<std::size_t>(1, 14);
  while (steps.size() < count) steps.push_back(AnyStep(images.size() + steps.size()));
  for (const Step& step : steps) RC_LOG() << step;
  Graph joined;
  Graph each;
  const std::vector<Node*> joined_nodes = Build(joined, images, steps);
  const std::vector<Node*> each_nodes = Build(each, images, steps);
  std::vector<Node*> joined_asked{joined_nodes.back()};
  std::vector<Node*> each_asked{each_nodes.back()};
  if (*rc::gen::arbitrary<bool>()) {
    const auto another = *rc::gen::inRange<std::size_t>(images.size(), joined_nodes.size());
    joined_asked.push_back(joined_nodes[another]);
    each_asked.push_back(each_nodes[another]);
  }
  const Testing::ThreadsScope threads(*rc::gen::element<std::size_t>(1, 3));
  Graph timed;
  const std::vector<Node*> timed_nodes = Build(timed, images, steps);
  std::vector<Node*> timed_asked;
  for (Node* node : joined_asked) {
    const auto place = std::find(joined_nodes.begin(), joined_nodes.end(), node) - joined_nodes.begin();
    timed_asked.push_back(timed_nodes[static_cast<std::size_t>(place)]);
  }
  const std::vector<ImagePtr> expected = each.EvaluateEach(each_asked);
  // As few images as node by node, where each drops its own as soon as it can.
  Engine::Options options;
  options.on_timed = [](Node&, const Engine::NodeTiming&) {};
  Testing::GetAllocator().Begin();
  timed.EvaluateJoined(timed_asked, options);
  const std::size_t most = Testing::GetAllocator().most;
  const std::size_t made = Testing::GetAllocator().made;
  Testing::GetAllocator().Begin();
  const std::vector<ImagePtr> found = joined.EvaluateJoined(joined_asked);
  RC_ASSERT(Testing::GetAllocator().most <= most);
  RC_ASSERT(Testing::GetAllocator().made <= made);
  num_spared += made - Testing::GetAllocator().made;
  for (std::size_t i = 0; i < expected.size(); ++i) RC_ASSERT(IsSame(found[i].Get(), expected[i].Get()));
  for (std::size_t i = 0; i < each_nodes.size(); ++i) {
    RC_ASSERT(joined_nodes[i]->GetState() == each_nodes[i]->GetState());
    RC_ASSERT(joined_nodes[i]->GetStateMessage() == each_nodes[i]->GetStateMessage());
  }
  // Once more, from what is there now and with what is kept.
  if (*rc::gen::arbitrary<bool>()) {
    const std::vector<ImagePtr> again = joined.EvaluateEach(joined_asked);
    for (std::size_t i = 0; i < expected.size(); ++i) RC_ASSERT(IsSame(again[i].Get(), expected[i].Get()));
  }
}

TEST(JoinedPasses, GiveWhatNodesGiveOneByOne) {
  EXPECT_TRUE(rc::check(CheckAnyGraph));
  EXPECT_GT(num_spared, 0U);
}

// ---- Graphs that change while they are evaluated ----

/// What happens to a node when some others have been evaluated.
struct Change {
  std::size_t after = 0;
  std::size_t step = 0;
  Step becomes;
  bool is_rewired = false;
};

void Apply(const Change& change, Graph& graph, const std::vector<Step>& steps, const std::vector<Node*>& nodes) {
  const Step& before = steps[change.step];
  Node* const node = nodes[nodes.size() - steps.size() + change.step];
  node->SetEnabled(change.becomes.is_enabled);
  if (change.becomes.type == before.type) SetAttributes(*node, change.becomes);
  if (!change.is_rewired) return;
  Node* const from = nodes[before.sources.front()];
  const std::string plug = node->GetInplugs().front().name;
  EXPECT_TRUE(graph.engine.DisconnectNodes(from, from->GetOutplugName(0), 0, node, plug, 0));
  graph.Connect(nodes[change.becomes.sources.front()], node);
}

bool HasPendingImage(const Node& node) {
  const Image* const image = node.GetOutputImage(0);
  return image != nullptr && ScEng::IsPending(*image);
}

/// How many pending images there were in all graphs together.
std::size_t num_unseen = 0;

void CheckAnyChange() {
  constexpr int kSizeX = 31;
  constexpr int kSizeY = 9;
  const std::vector<ImagePtr> images{AnyImage(kSizeX, kSizeY)};
  std::vector<Step> steps;
  const std::size_t count = *rc::gen::inRange<std::size_t>(2, 10);
  while (steps.size() < count) steps.push_back(AnyStep(images.size() + steps.size()));
  for (const Step& step : steps) RC_LOG() << step;
  std::vector<Change> changes(*rc::gen::inRange<std::size_t>(1, 3));
  for (Change& change : changes) {
    change.after = *rc::gen::inRange<std::size_t>(1, count + 1);
    change.step = *rc::gen::inRange<std::size_t>(0, count);
    change.becomes = AnyStep(images.size() + change.step);
    if (*rc::gen::arbitrary<bool>()) change.becomes.is_enabled = false;
    change.is_rewired = *rc::gen::arbitrary<bool>();
    RC_LOG() << "after " << change.after << ", " << change.step << (change.is_rewired ? " rewired " : " ")
             << change.becomes;
  }
  if (changes.size() == 2 && changes[0].step == changes[1].step) changes.pop_back();
  std::vector<ImagePtr> found[2];
  std::vector<Node*> nodes[2];
  Graph graphs[2];
  for (const std::size_t i : {0U, 1U}) {
    nodes[i] = Build(graphs[i], images, steps);
    Engine::Options options;
    if (i == 1) options.on_timed = [](Node&, const Engine::NodeTiming&) {};
    options.on_evaluated = [&, i](Node& node, std::size_t done, std::size_t) {
      if (HasPendingImage(node)) ++num_unseen;
      for (const Change& change : changes) {
        if (change.after == done) Apply(change, graphs[i], steps, nodes[i]);
      }
    };
    found[i] = graphs[i].EvaluateJoined({nodes[i].back()}, options);
  }
  RC_ASSERT(IsSame(found[0].front().Get(), found[1].front().Get()));
  for (std::size_t i = 0; i < nodes[0].size(); ++i) {
    RC_ASSERT(nodes[0][i]->GetState() == nodes[1][i]->GetState());
    RC_ASSERT(nodes[0][i]->GetStateMessage() == nodes[1][i]->GetStateMessage());
    RC_ASSERT(!HasPendingImage(*nodes[0][i]));
  }
  // Once more, as the graph is now.
  const std::vector<ImagePtr> again = graphs[0].EvaluateEach({nodes[0].back()});
  RC_ASSERT(IsSame(again.front().Get(), graphs[1].EvaluateEach({nodes[1].back()}).front().Get()));
}

TEST(JoinedPasses, GiveTheSameWhereTheGraphChangesMeanwhile) {
  EXPECT_TRUE(rc::check(CheckAnyChange));
  EXPECT_GT(num_unseen, 0U);
}

}  // namespace
