// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Arithmetic/ImageValueAddNode.h"

#include <string_view>

#include "Value/Operations/ArithmeticOperations.h"

ImageValueAddNode::ImageValueAddNode() { UpdateInplugsAndOutplugs(); }

NodeType ImageValueAddNode::GetNodeType() const { return kNodeType<ImageValueAddNode>; }
std::string ImageValueAddNode::GetName() const { return kDisplayName<ImageValueAddNode>; }

bool ImageValueAddNode::IsObsoleteAttribute(unsigned, const char* name) const {
  return std::string_view(name) == "mask_min";
}

ValueOperation* ImageValueAddNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return new AdditionOperation(ReadConstant(inputs));
}
