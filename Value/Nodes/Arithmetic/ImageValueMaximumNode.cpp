// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Arithmetic/ImageValueMaximumNode.h"

#include "Value/Operations/ArithmeticOperations.h"

ImageValueMaximumNode::ImageValueMaximumNode() {
  UpdateInplugsAndOutplugs();
  attributes_[0]->SetNumber(-1000.0, false);
  attributes_[0]->SetDefault(-1000.0, 0.0, 0.0, 0.0);
}

NodeType ImageValueMaximumNode::GetNodeType() const { return kNodeType<ImageValueMaximumNode>; }
std::string ImageValueMaximumNode::GetName() const { return kDisplayName<ImageValueMaximumNode>; }

ValueOperation* ImageValueMaximumNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return new MaximumOperation(ReadConstant(inputs));
}
