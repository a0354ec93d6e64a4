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

/// The part of a record in which these nodes are alike.
constexpr NodeRecord MakeRecord(const char* type_name, const char* display_name, NodeType type,
                                std::span<const AttributeRow> attributes, std::span<const PlugRow> outputs,
                                const char* sentence, const char* keywords) {
  return {.library = &ScEng::kHostLibrary,
          .type_name = type_name,
          .display_name = display_name,
          .type = type,
          .group = "Attribute values",
          .sentence = sentence,
          .keywords = keywords,
          .attributes = attributes,
          .outputs = outputs};
}

}  // namespace

constinit const NodeRecord NumberNode::kRecord =
    MakeRecord("NumberNode", "Number", ScEng::kNumberType, kNumberAttributes, kNumberOutput,
               "Delivers a number to attributes of other nodes.", "constant,value,parameter,drive");
constinit const NodeRecord FlagNode::kRecord = MakeRecord(
    "FlagNode", "Flag", ScEng::kFlagType, kFlagAttributes, kFlagOutput,
    "Delivers true or false to attributes of other nodes.", "boolean,switch,toggle,checkbox,parameter,drive");
constinit const NodeRecord TextNode::kRecord =
    MakeRecord("TextNode", "Text", ScEng::kTextType, kTextAttributes, kTextOutput,
               "Delivers a text to attributes of other nodes: to strings such as paths, and to choices.",
               "string,word,path,choice,parameter,drive");

void FeedNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  const unsigned plug = GetInplugIdFromAttributeId(0);
  delivered_ = IsEnabled() && plug < inputs.size() ? inputs[plug] : PlugValue();
}
