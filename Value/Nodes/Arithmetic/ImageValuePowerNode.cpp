// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Arithmetic/ImageValuePowerNode.h"

#include "Value/Operations/ArithmeticOperations.h"

ImageValuePowerNode::ImageValuePowerNode() { UpdateInplugsAndOutplugs(); }

NodeType ImageValuePowerNode::GetNodeType() const { return kNodeType<ImageValuePowerNode>; }
std::string ImageValuePowerNode::GetName() const { return kDisplayName<ImageValuePowerNode>; }

ValueOperation* ImageValuePowerNode::CreateValueOperation(const std::vector<PlugValue>&) {
  constexpr float kExponent = 1.0F;
  return new PowerOperation(kExponent);
}
