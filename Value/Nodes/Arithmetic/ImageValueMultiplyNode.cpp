// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Arithmetic/ImageValueMultiplyNode.h"

#include "Value/Operations/ArithmeticOperations.h"

ImageValueMultiplyNode::ImageValueMultiplyNode() {
  attributes_[0]->SetDefault(1.0, 0.0, 0.0, 0.0);
  UpdateInplugsAndOutplugs();
  attributes_[0]->SetNumber(1.0, false);
}

NodeType ImageValueMultiplyNode::GetNodeType() const { return kNodeType<ImageValueMultiplyNode>; }
std::string ImageValueMultiplyNode::GetName() const { return kDisplayName<ImageValueMultiplyNode>; }

ValueOperation* ImageValueMultiplyNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return new MultiplicationOperation(ReadConstant(inputs));
}
