// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Arithmetic/ImageValueDivideNode.h"

#include "Value/Operations/ArithmeticOperations.h"

ImageValueDivideNode::ImageValueDivideNode() {
  attributes_[0]->SetDefault(1.0, 0.0, 0.0, 0.0);
  attributes_[0]->SetNumber(1.0, false);
  UpdateInplugsAndOutplugs();
}

NodeType ImageValueDivideNode::GetNodeType() const { return kNodeType<ImageValueDivideNode>; }
std::string ImageValueDivideNode::GetName() const { return kDisplayName<ImageValueDivideNode>; }

ValueOperation* ImageValueDivideNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return new DivideOperation(ReadConstant(inputs));
}
