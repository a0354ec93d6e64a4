// SPDX-License-Identifier: Apache-2.0
#include "Value/NodeTable.h"

#include <iterator>
#include <memory>

#include "Value/Nodes/ImageAmbientOcclusionNode.h"
#include "Value/Nodes/ImageComponentEdgesNode.h"
#include "Value/Nodes/ImageComputeGradientNode.h"
#include "Value/Nodes/ImageConnectedComponentsNode.h"
#include "Value/Nodes/ImageEuclideanDistanceNode.h"
#include "Value/Nodes/ImageReliefNode.h"
#include "Value/Nodes/ImageToValueNode.h"
#include "Value/Nodes/ImageValueAddNode.h"
#include "Value/Nodes/ImageValueClampNode.h"
#include "Value/Nodes/ImageValueCompareNode.h"
#include "Value/Nodes/ImageValueConditionNode.h"
#include "Value/Nodes/ImageValueDivideNode.h"
#include "Value/Nodes/ImageValueFunctionNode.h"
#include "Value/Nodes/ImageValueMaximumNode.h"
#include "Value/Nodes/ImageValueMinimumNode.h"
#include "Value/Nodes/ImageValueMultiplyNode.h"
#include "Value/Nodes/ImageValuePowerNode.h"
#include "Value/Nodes/ImageValueRangeNode.h"
#include "Value/Nodes/ImageValueStepsNode.h"
#include "Value/Nodes/ImageValueSubtractNode.h"

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
