// SPDX-License-Identifier: Apache-2.0
//
// The node types that the library started with: their order, names and numbers are its interface and stay. Types that
// are added follow them, and the tests that go through the catalogue find those by themselves. Tests/Cli has the same
// list for Python in first_twenty.py.
#pragma once

#include <array>

#include "Host/Tools/NodeType.h"

namespace Testing {

struct KnownType {
  const char* type_name;
  const char* name;
  NodeType type;
  /// Base name of the icon files.
  const char* icon;
};

inline constexpr std::array<KnownType, 20> kFirstTwenty{{
    {"ImageToValueNode", "To Value", NodeType(10, 320, 0), "ToValue"},
    {"ImageValueAddNode", "Value Add", NodeType(10, 320, 5), "Add"},
    {"ImageValueSubtractNode", "Value Subtract", NodeType(10, 320, 90), "Subtract"},
    {"ImageValueMultiplyNode", "Value Multiply", NodeType(10, 320, 10), "Multiply"},
    {"ImageValueDivideNode", "Value Divide", NodeType(10, 320, 96), "Divide"},
    {"ImageValuePowerNode", "Value Power", NodeType(10, 320, 69), "Power"},
    {"ImageValueMinimumNode", "Value Minimum", NodeType(10, 320, 16), "Min"},
    {"ImageValueMaximumNode", "Value Maximum", NodeType(10, 320, 21), "Max"},
    {"ImageValueClampNode", "Value Clamp", NodeType(10, 320, 42), "Clamp"},
    {"ImageValueStepsNode", "Value Steps", NodeType(10, 320, 80), "Steps"},
    {"ImageValueConditionNode", "Value Condition", NodeType(10, 320, 32), "Condition"},
    {"ImageValueCompareNode", "Value Compare", NodeType(10, 320, 37), "Compare"},
    {"ImageValueRangeNode", "Value Range", NodeType(10, 320, 58), "Range"},
    {"ImageValueFunctionNode", "Value Function", NodeType(10, 320, 64), "Function"},
    {"ImageReliefNode", "Relief", NodeType(10, 288, 26), "Relief"},
    {"ImageEuclideanDistanceNode", "Distance", NodeType(10, 288, 74), "Distance"},
    {"ImageComputeGradientNode", "Value Gradient", NodeType(10, 320, 48), "Gradient"},
    {"ImageAmbientOcclusionNode", "Ambient Occlusion", NodeType(10, 320, 85), "AmbientOcclusion"},
    {"ImageConnectedComponentsNode", "Connected Components", NodeType(10, 320, 101), "ConnectedComponents"},
    {"ImageComponentEdgesNode", "Component Edges", NodeType(10, 320, 106), "ComponentEdges"},
}};

}  // namespace Testing
