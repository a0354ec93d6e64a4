// SPDX-License-Identifier: Apache-2.0
#include "Value/NodeTable.h"

#include <iterator>

#include "Host/NodeKit/NodeLibraryExports.h"
#include "Value/Nodes/AmbientOcclusion/ImageAmbientOcclusionNode.h"
#include "Value/Nodes/Arithmetic/ArithmeticNodes.h"
#include "Value/Nodes/Clamp/ImageValueClampNode.h"
#include "Value/Nodes/Compare/ImageValueCompareNode.h"
#include "Value/Nodes/Components/ImageComponentEdgesNode.h"
#include "Value/Nodes/Components/ImageConnectedComponentsNode.h"
#include "Value/Nodes/Condition/ImageValueConditionNode.h"
#include "Value/Nodes/Distance/ImageEuclideanDistanceNode.h"
#include "Value/Nodes/Function/ImageValueFunctionNode.h"
#include "Value/Nodes/Gradient/ImageComputeGradientNode.h"
#include "Value/Nodes/Range/ImageValueRangeNode.h"
#include "Value/Nodes/Relief/ImageReliefNode.h"
#include "Value/Nodes/Steps/ImageValueStepsNode.h"
#include "Value/Nodes/ToValue/ImageToValueNode.h"

namespace {

// The order is part of the library's interface. It is neither alphabetical nor that of the numbers.
constexpr NodeInterface* (*kRows[])() = {
    CreateNodeDescriptor<ImageToValueNodeInterface, ImageToValueNodeFactory>,
    CreateNodeDescriptor<ImageValueAddNodeInterface, ImageValueAddNodeFactory>,
    CreateNodeDescriptor<ImageValueSubtractNodeInterface, ImageValueSubtractNodeFactory>,
    CreateNodeDescriptor<ImageValueMultiplyNodeInterface, ImageValueMultiplyNodeFactory>,
    CreateNodeDescriptor<ImageValueDivideNodeInterface, ImageValueDivideNodeFactory>,
    CreateNodeDescriptor<ImageValuePowerNodeInterface, ImageValuePowerNodeFactory>,
    CreateNodeDescriptor<ImageValueMinimumNodeInterface, ImageValueMinimumNodeFactory>,
    CreateNodeDescriptor<ImageValueMaximumNodeInterface, ImageValueMaximumNodeFactory>,
    CreateNodeDescriptor<ImageValueClampNodeInterface, ImageValueClampNodeFactory>,
    CreateNodeDescriptor<ImageValueStepsNodeInterface, ImageValueStepsNodeFactory>,
    CreateNodeDescriptor<ImageValueConditionNodeInterface, ImageValueConditionNodeFactory>,
    CreateNodeDescriptor<ImageValueCompareNodeInterface, ImageValueCompareNodeFactory>,
    CreateNodeDescriptor<ImageValueRangeNodeInterface, ImageValueRangeNodeFactory>,
    CreateNodeDescriptor<ImageValueFunctionNodeInterface, ImageValueFunctionNodeFactory>,
    CreateNodeDescriptor<ImageReliefNodeInterface, ImageReliefNodeFactory>,
    CreateNodeDescriptor<ImageEuclideanDistanceNodeInterface, ImageEuclideanDistanceNodeFactory>,
    CreateNodeDescriptor<ImageComputeGradientNodeInterface, ImageComputeGradientNodeFactory>,
    CreateNodeDescriptor<ImageAmbientOcclusionNodeInterface, ImageAmbientOcclusionNodeFactory>,
    CreateNodeDescriptor<ImageConnectedComponentsNodeInterface, ImageConnectedComponentsNodeFactory>,
    CreateNodeDescriptor<ImageComponentEdgesNodeInterface, ImageComponentEdgesNodeFactory>,
};

}  // namespace

std::int32_t NodeTable::GetSize() { return static_cast<std::int32_t>(std::size(kRows)); }

NodeInterface* NodeTable::CreateDescriptor(std::uint64_t index) {
  return index < std::size(kRows) ? kRows[index]() : nullptr;
}
