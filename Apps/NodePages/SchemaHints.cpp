// SPDX-License-Identifier: Apache-2.0
#include "Apps/NodePages/SchemaHints.h"

#include <nlohmann/json.hpp>
#include <sstream>

#include "Host/Tools/Node.h"
#include "Host/Tools/NodeRecord.h"

namespace {

using nlohmann::ordered_json;

ordered_json NumbersForm(const std::vector<double>& numbers) {
  return {{"type", "array"},
          {"items", {{"type", "number"}}},
          {"minItems", numbers.size()},
          {"maxItems", numbers.size()},
          {"default", numbers}};
}

ordered_json DescribeForm(const Attribute& attribute) {
  const PlugValue& value = attribute.GetDefault();
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag: return {{"type", "boolean"}, {"default", value.GetFlag()}};
    case Attribute::Kind::kNumber: return {{"type", "number"}, {"default", value.GetNumber()}};
    case Attribute::Kind::kChoice: return {{"enum", attribute.GetChoices()}, {"default", value.GetText()}};
    case Attribute::Kind::kString: return {{"type", "string"}, {"default", value.GetText()}};
    case Attribute::Kind::kPoint: return NumbersForm({value.GetPoint().x, value.GetPoint().y});
    case Attribute::Kind::kFrame: {
      const ScEng::Frame frame = value.GetFrame();
      return NumbersForm({frame.x, frame.y, frame.width, frame.height});
    }
    case Attribute::Kind::kColor: break;
  }
  const ScEng::Rgbo color = value.GetColor();
  return NumbersForm({color.red, color.green, color.blue, color.opacity});
}

std::string DescribeAttribute(const Attribute& attribute) {
  ordered_json hint = {{"description", attribute.GetRow()->text}};
  hint.update(DescribeForm(attribute));
  return ordered_json(attribute.GetName()).dump() + ": " + hint.dump();
}

/// Hints for a node that names its type by the class name.
std::string DescribeType(const Node& node) {
  const NodeRecord& record = *node.GetRecord();
  const std::string indent(8, ' ');
  std::ostringstream text;
  text << indent << R"({"if": {"required": ["type"], "properties": {"type": {"const": )"
       << ordered_json(record.type_name).dump() << "}}},\n";
  text << indent << R"( "then": {"description": )" << ordered_json(record.sentence).dump();
  if (node.GetNumAttributes() == 0) {
    text << "}}";
    return text.str();
  }
  text << R"(, "properties": {"attributes": {"properties": {)";
  for (std::size_t id = 0; id < node.GetNumAttributes(); ++id) {
    text << (id == 0 ? "\n" : ",\n") << indent << "   " << DescribeAttribute(*node.GetAttribute(id));
  }
  text << "\n" << indent << " }}}}}";
  return text.str();
}

}  // namespace

std::string AddSchemaHints(const std::string& schema, const std::vector<NodeInterface*>& descriptors) {
  const std::string place = "      \"allOf\": [],\n";
  const std::size_t at = schema.find(place);
  if (at == std::string::npos) return {};
  std::string hints;
  for (const NodeInterface* descriptor : descriptors) {
    const ScEng::RefPtr<Node> node(descriptor->GetNodeFactory()->CreateNode());
    if (node->GetRecord() == nullptr) continue;
    hints += (hints.empty() ? "" : ",\n") + DescribeType(*node);
  }
  return schema.substr(0, at) + "      \"allOf\": [\n" + hints + "\n      ],\n" + schema.substr(at + place.size());
}
