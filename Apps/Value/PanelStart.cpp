// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/PanelStart.h"

#include <map>

#include "Apps/Value/Common.h"

namespace {

using ScEng::Status;

const StartNode kTerrain{"ImageTerrainNode", {"frame=0,0,512,512", "wavelength=128"}};
const StartNode kHills{"ImageTerrainNode", {"frame=0,0,512,512", "wavelength=128", "octaves=4"}};
const StartNode kWaves{"ImageWavesNode", {"frame=0,0,512,512", "wavelength=128"}};
/// Islands of 1 in 0.
const StartNode kIslands{"ImageValueConditionNode", {"condition=v_gt_a", "a=0.58"}};
const StartNode kColors{"ImageCheckerNode",
                        {"frame=0,0,512,512", "rect_x_size=64,64", "rect_y_size=64,64", "color_00=0.9,0.3,0.2,1",
                         "color_10=0.2,0.6,0.9,1", "color_01=0.95,0.85,0.3,1", "color_11=0.1,0.2,0.3,1"}};

const std::vector<StartNode> kMask{kHills, kIslands};

const std::map<std::string, PanelStart>& GetStarts() {
  static const std::map<std::string, PanelStart> kStarts{
      // Generators are larger than a thumbnail.
      {"ImageRectangleNode", {.settings = {"frame=0,0,512,320", "color=0.25,0.5,0.85,1"}}},
      {"ImageCheckerNode", {.settings = {"frame=0,0,512,512", "rect_x_size=64,64", "rect_y_size=64,64"}}},
      {"ImageWavesNode", {.settings = kWaves.settings}},
      {"ImageTerrainNode", {.settings = kTerrain.settings}},
      {"ImageToValueNode", {.inputs = {{kColors}}}},
      // Exponents from 0.5 to 2.5.
      {"ImageValuePowerNode", {.inputs = {{kTerrain}}, .further = {kWaves, {"ImageValueAddNode", {"constant=1.5"}}}}},
      {"ImageValueMinimumNode", {.inputs = {{kTerrain}}, .settings_with_inputs = {"constant=0.5"}}},
      {"ImageValueMaximumNode", {.inputs = {{kTerrain}}, .settings_with_inputs = {"constant=0.5"}}},
      {"ImageValueClampNode", {.inputs = {{kTerrain}}, .settings = {"high=0.6"}}},
      {"ImageValueStepsNode", {.inputs = {{kTerrain}}, .settings = {"steps=6"}}},
      {"ImageValueConditionNode", {.inputs = {{kTerrain}}, .settings = {"condition=v_gt_a", "a=0.5"}}},
      {"ImageValueRangeNode", {.inputs = {{kTerrain}}, .settings = {"center=0.5", "size=0.05", "falloff=0.15"}}},
      // The absolute of a terrain is the terrain.
      {"ImageValueFunctionNode", {.inputs = {{kWaves}}}},
      {"ImageReliefNode",
       {.inputs = {kMask}, .settings_with_inputs = {"style=inner_bevel", "radius=24", "profile=smooth"}}},
      {"ImageEuclideanDistanceNode", {.inputs = {kMask}}},
      {"ImageComputeGradientNode", {.inputs = {{kHills}}}},
      // Terraces, whose walls hide the sky.
      {"ImageAmbientOcclusionNode",
       {.inputs = {{kHills, {"ImageValueStepsNode", {"steps=4"}}}}, .settings_with_inputs = {"radius=60"}}},
      {"ImageConnectedComponentsNode", {.inputs = {kMask}}},
      {"ImageComponentEdgesNode", {.inputs = {kMask}}},
  };
  return kStarts;
}

Status AddNode(ScEng::GraphDocument& document, const NodeInterface& descriptor, const StartNode& node,
               const std::string& id) {
  Status status;
  document.AddNode(id, descriptor.GetNodeType(), status);
  std::vector<std::string> notes;
  for (const std::string& setting : node.settings) {
    const auto assignment = SplitAssignment(setting);
    if (status.IsError() || !assignment) break;
    status = document.SetAttribute(id + "." + assignment->first, assignment->second, notes);
  }
  return status;
}

/// Adds nodes that follow each other, named after `name`; `last` becomes the id of the last one.
Status AddChain(ScEng::GraphDocument& document, const ScEng::NodeCatalog& catalog, const std::vector<StartNode>& chain,
                const std::string& name, std::string& last) {
  for (const StartNode& node : chain) {
    const NodeInterface* descriptor = catalog.FindTypeName(node.class_name);
    if (descriptor == nullptr) continue;
    const std::string id = last.empty() ? name : name + " " + node.class_name;
    Status status = AddNode(document, *descriptor, node, id);
    if (!status.IsError() && !last.empty()) {
      const std::string plug = document.FindNode(id)->GetInplugs().front().name;
      status = document.Connect(last + ".image", id + "." + plug, 0);
    }
    if (status.IsError()) return status;
    last = id;
  }
  return {};
}

}  // namespace

const PanelStart& FindPanelStart(const std::string& class_name) {
  static const PanelStart kUsual{.inputs = {{kTerrain}, {kWaves}}};
  const auto found = GetStarts().find(class_name);
  return found == GetStarts().end() ? kUsual : found->second;
}

Status AddStartInputs(ScEng::GraphDocument& document, const ScEng::NodeCatalog& catalog, const std::string& id,
                      const std::vector<PlugRecord>& plugs, const PanelStart& start) {
  const auto connect = [&](const std::vector<StartNode>& chain, const std::string& name, const PlugRecord& plug,
                           unsigned index) {
    std::string last;
    const Status status = AddChain(document, catalog, chain, name, last);
    if (status.IsError() || last.empty()) return status;
    return document.Connect(last + ".image", id + "." + plug.name, index);
  };
  Status status;
  for (std::size_t i = 0; i < plugs.size() && i < start.inputs.size() && !status.IsError(); ++i) {
    status = connect(start.inputs[i], "input " + std::to_string(i + 1), plugs[i], 0);
  }
  if (status.IsError() || start.further.empty() || plugs.empty()) return status;
  return connect(start.further, "input 2", plugs.front(), 1);
}
