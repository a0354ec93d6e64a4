// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Arithmetic/ImageValueSubtractNode.h"

#include "Value/Operations/ArithmeticOperations.h"

ImageValueSubtractNode::ImageValueSubtractNode() { UpdateInplugsAndOutplugs(); }

NodeType ImageValueSubtractNode::GetNodeType() const { return kNodeType<ImageValueSubtractNode>; }
std::string ImageValueSubtractNode::GetName() const { return kDisplayName<ImageValueSubtractNode>; }

ValueOperation* ImageValueSubtractNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return new SubtractionOperation(ReadConstant(inputs));
}
