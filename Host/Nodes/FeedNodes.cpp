// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/FeedNodes.h"

#include <limits>

#include "Host/Nodes/HostLibrary.h"
#include "Host/Nodes/HostNodes.h"

namespace {

constexpr double kMost = std::numeric_limits<double>::max();

constexpr AttributeRow kNumberAttributes[] = {
    NumberRow("value", 0.0, -kMost, kMost, 0.01, 6, "The number that is delivered.")};
constexpr AttributeRow kFlagAttributes[] = {FlagRow("value", false, "The flag that is delivered.")};
constexpr AttributeRow kTextAttributes[] = {
    StringRow("value", "", "The text that is delivered; to a choice, one of its words.")};

constexpr PlugRow kNumberOutput[] = {{PlugType::kNumber, "number"}};
constexpr PlugRow kFlagOutput[] = {{PlugType::kFlag, "flag"}};
constexpr PlugRow kTextOutput[] = {{PlugType::kText, "text"}};

}  // namespace

constinit const NodeRecord NumberNode::kRecord{
    .library = &ScEng::kHostLibrary,
    .type_name = "NumberNode",
    .display_name = "Number",
    .type = ScEng::kNumberType,
    .group = "Attribute values",
    .sentence = "Delivers a number to attributes of other nodes.",
    .keywords = "constant,value,parameter,drive",
    .attributes = kNumberAttributes,
    .outputs = kNumberOutput,
};

constinit const NodeRecord FlagNode::kRecord{
    .library = &ScEng::kHostLibrary,
    .type_name = "FlagNode",
    .display_name = "Flag",
    .type = ScEng::kFlagType,
    .group = "Attribute values",
    .sentence = "Delivers true or false to attributes of other nodes.",
    .keywords = "boolean,switch,checkbox,parameter,drive",
    .attributes = kFlagAttributes,
    .outputs = kFlagOutput,
};

constinit const NodeRecord TextNode::kRecord{
    .library = &ScEng::kHostLibrary,
    .type_name = "TextNode",
    .display_name = "Text",
    .type = ScEng::kTextType,
    .group = "Attribute values",
    .sentence = "Delivers a text to attributes of other nodes: to strings such as paths, and to choices.",
    .keywords = "string,word,path,choice,parameter,drive",
    .attributes = kTextAttributes,
    .outputs = kTextOutput,
};

void FeedNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  const unsigned plug = GetInplugIdFromAttributeId(0);
  delivered_ = IsEnabled() && plug < inputs.size() ? inputs[plug] : PlugValue();
}
