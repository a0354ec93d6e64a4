// SPDX-License-Identifier: Apache-2.0
#include <string>
#include <vector>

#include "Value/Nodes/Relief/ImageReliefNode.h"
#include "Value/SelfTests/SelfTests.h"
#include "Value/SelfTests/TestGraph.h"

namespace SelfTests {
namespace {

struct ReliefCase {
  const char* name;
  double radius_px;
  double soften_px;
};

/// The cases of one input, style and profile.
struct ReliefGroup {
  const char* path;
  const char* style;
  const char* profile;
  std::vector<ReliefCase> cases;
};

/// Where the input comes from and what is rendered.
struct Graph {
  Node* reader = nullptr;
  Node* relief = nullptr;
};

/// Creates both nodes and connects them. A test names the node that is missing in its own words.
bool Build(Graph& graph, const char* relief_is_missing) {
  graph.reader = Engine::Get()->CreateNode(kReader);
  if (graph.reader == nullptr) return Fail("ERROR: Failed to create reader node");
  graph.relief = Engine::Get()->CreateNode(ImageReliefNode::kRecord.type);
  if (graph.relief == nullptr) return Fail(relief_is_missing);
  Connect(*graph.reader, *graph.relief);
  return true;
}

bool RenderGroup(TestContext& context, const Graph& graph, const ReliefGroup& group) {
  graph.reader->GetAttribute("path")->SetString(group.path, false);
  bool passed = true;
  for (const ReliefCase& each : group.cases) {
    SetChoice(*graph.relief, "style", group.style);
    SetChoice(*graph.relief, "profile", group.profile);
    SetNumber(*graph.relief, "radius", each.radius_px);
    SetNumber(*graph.relief, "soften", each.soften_px);
    passed &= Render(context, *graph.relief, each.name);
  }
  return passed;
}

bool RunInnerBevel() {
  TestContext context("output/nodes/value/relief/inner_bevel", "Value.DLL Relief Inner Bevel");
  context.InitializeTest();
  context.InitTimer();
  Graph graph;
  if (!Build(graph, "ERROR: Failed to create Relief Inner Bevel node")) return false;
  return RenderGroup(context, graph,
                     {"input\\ae.png",
                      "inner_bevel",
                      "linear",
                      {{"ae-inner_bevel-00-linear", 0.0, 0.0},
                       {"ae-inner_bevel-10-linear", 10.0, 0.0},
                       {"ae-inner_bevel-10-linear-soften", 10.0, 2.0}}});
}

bool RunLevels() {
  TestContext context("output/nodes/value/relief/levels/", "Value.DLL Relief Levels");
  context.InitializeTest();
  context.InitTimer();
  Graph graph;
  if (!Build(graph, "ERROR: Failed to create Relief node")) return false;
  bool passed = RenderGroup(context, graph,
                            {"input\\ae.png",
                             "levels",
                             "linear",
                             {{"ae-levels-00-linear", 0.0, 0.0},
                              {"ae-levels-05-linear", 5.0, 0.0},
                              {"ae-levels-05-linear-soften", 5.0, 2.0},
                              {"ae-levels-15-linear-soften", 15.0, 2.0}}});
  passed &= RenderGroup(context, graph,
                        {"input\\ae.png",
                         "levels",
                         "arc_in",
                         {{"ae-levels-00-arc_in", 0.0, 0.0},
                          {"ae-levels-05-arc_in", 5.0, 0.0},
                          {"ae-levels-05-arc_in-soften", 5.0, 2.0},
                          {"ae-levels-15-arc_in-soften", 15.0, 2.0}}});
  passed &= RenderGroup(context, graph,
                        {"input\\rect_across.png",
                         "levels",
                         "linear",
                         {{"rect_across-levels-00-linear", 0.0, 0.0},
                          {"rect_across-levels-05-linear", 5.0, 0.0},
                          {"rect_across-levels-05-linear-soften", 5.0, 2.0},
                          {"rect_across-levels-15-linear-soften", 15.0, 2.0}}});
  return passed;
}

}  // namespace

bool RunRelief() {
  const bool inner_bevel = RunInnerBevel();
  const bool levels = RunLevels();
  return inner_bevel && levels;
}

}  // namespace SelfTests
