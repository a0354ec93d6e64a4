// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Arithmetic/ImageValueMinimumNode.h"

#include "Value/Operations/ArithmeticOperations.h"

ImageValueMinimumNode::ImageValueMinimumNode() {
  UpdateInplugsAndOutplugs();
  attributes_[0]->SetNumber(1000.0, false);
  attributes_[0]->SetDefault(1000.0, 0.0, 0.0, 0.0);
}

NodeType ImageValueMinimumNode::GetNodeType() const { return kNodeType<ImageValueMinimumNode>; }
std::string ImageValueMinimumNode::GetName() const { return kDisplayName<ImageValueMinimumNode>; }

ValueOperation* ImageValueMinimumNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return new MinimumOperation(ReadConstant(inputs));
}
