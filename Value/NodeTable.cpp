// SPDX-License-Identifier: Apache-2.0
#include "Value/NodeTable.h"

#include <iterator>
#include <memory>

#include "Value/Nodes/AmbientOcclusion/ImageAmbientOcclusionNode.h"
#include "Value/Nodes/Arithmetic/ImageValueAddNode.h"
#include "Value/Nodes/Arithmetic/ImageValueDivideNode.h"
#include "Value/Nodes/Arithmetic/ImageValueMaximumNode.h"
#include "Value/Nodes/Arithmetic/ImageValueMinimumNode.h"
#include "Value/Nodes/Arithmetic/ImageValueMultiplyNode.h"
#include "Value/Nodes/Arithmetic/ImageValuePowerNode.h"
#include "Value/Nodes/Arithmetic/ImageValueSubtractNode.h"
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

template <class Descriptor, class Factory>
NodeInterface* Create() {
  auto descriptor = std::make_unique<Descriptor>();
  descriptor->SetNodeFactory(new Factory);
  return descriptor.release();
}

// The order is part of the library's interface. It is neither alphabetical nor that of the numbers.
constexpr NodeInterface* (*kRows[])() = {
    Create<ImageToValueNodeInterface, ImageToValueNodeFactory>,
    Create<ImageValueAddNodeInterface, ImageValueAddNodeFactory>,
    Create<ImageValueSubtractNodeInterface, ImageValueSubtractNodeFactory>,
    Create<ImageValueMultiplyNodeInterface, ImageValueMultiplyNodeFactory>,
    Create<ImageValueDivideNodeInterface, ImageValueDivideNodeFactory>,
    Create<ImageValuePowerNodeInterface, ImageValuePowerNodeFactory>,
    Create<ImageValueMinimumNodeInterface, ImageValueMinimumNodeFactory>,
    Create<ImageValueMaximumNodeInterface, ImageValueMaximumNodeFactory>,
    Create<ImageValueClampNodeInterface, ImageValueClampNodeFactory>,
    Create<ImageValueStepsNodeInterface, ImageValueStepsNodeFactory>,
    Create<ImageValueConditionNodeInterface, ImageValueConditionNodeFactory>,
    Create<ImageValueCompareNodeInterface, ImageValueCompareNodeFactory>,
    Create<ImageValueRangeNodeInterface, ImageValueRangeNodeFactory>,
    Create<ImageValueFunctionNodeInterface, ImageValueFunctionNodeFactory>,
    Create<ImageReliefNodeInterface, ImageReliefNodeFactory>,
    Create<ImageEuclideanDistanceNodeInterface, ImageEuclideanDistanceNodeFactory>,
    Create<ImageComputeGradientNodeInterface, ImageComputeGradientNodeFactory>,
    Create<ImageAmbientOcclusionNodeInterface, ImageAmbientOcclusionNodeFactory>,
    Create<ImageConnectedComponentsNodeInterface, ImageConnectedComponentsNodeFactory>,
    Create<ImageComponentEdgesNodeInterface, ImageComponentEdgesNodeFactory>,
};

}  // namespace

std::int32_t NodeTable::GetSize() { return static_cast<std::int32_t>(std::size(kRows)); }

NodeInterface* NodeTable::CreateDescriptor(std::uint64_t index) {
  return index < std::size(kRows) ? kRows[index]() : nullptr;
}
