// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <charconv>
#include <sstream>
#include <stdexcept>

#include "Apps/Value/Common.h"
#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeRecord.h"
#include "Host/Util/RefCounter.h"

namespace {

using nlohmann::ordered_json;

// How far what is said of an attribute is indented.
constexpr std::size_t kIndent = 18;

std::string FormatDouble(double number) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof(text), number).ptr);
}

std::string FormatNumbers(std::initializer_list<double> numbers) {
  std::string text;
  for (const double number : numbers) text += (text.empty() ? "" : ",") + FormatDouble(number);
  return text;
}

std::string FormatValue(const PlugValue& value) {
  switch (value.GetType()) {
    case PlugType::kFlag: return value.GetFlag() ? "true" : "false";
    case PlugType::kNumber: return FormatDouble(value.GetNumber());
    case PlugType::kText: return value.GetText();
    case PlugType::kPoint: return FormatNumbers({value.GetPoint().x, value.GetPoint().y});
    case PlugType::kFrame: {
      const ScEng::Frame frame = value.GetFrame();
      return FormatNumbers({frame.x, frame.y, frame.width, frame.height});
    }
    case PlugType::kColor: {
      const ScEng::Rgbo color = value.GetColor();
      return FormatNumbers({color.red, color.green, color.blue, color.opacity});
    }
    default: return {};
  }
}

/// The parts of a comma-separated list.
ordered_json SplitToJson(const std::string& list) {
  ordered_json parts = ordered_json::array();
  std::istringstream stream(list);
  for (std::string part; std::getline(stream, part, ',');) parts.push_back(part);
  return parts;
}

ordered_json AttributeToJson(const Attribute& attribute) {
  ordered_json json;
  json["name"] = attribute.GetName();
  json["kind"] = attribute.GetKindName();
  json["default"] = ToJson(attribute.GetDefault());
  if (attribute.GetKind() == Attribute::Kind::kNumber) {
    json["lowest"] = attribute.GetLowest();
    json["highest"] = attribute.GetHighest();
    json["step"] = attribute.GetStep();
    json["decimals"] = attribute.GetDecimals();
  }
  if (attribute.GetKind() == Attribute::Kind::kChoice) json["choices"] = attribute.GetChoices();
  if (const AttributeRow* row = attribute.GetRow()) {
    if (*row->labels != '\0') json["labels"] = SplitToJson(row->labels);
    if (*row->unit != '\0') json["unit"] = row->unit;
    json["text"] = row->text;
  }
  return json;
}

ordered_json SummaryToJson(const NodeInterface& descriptor, const Node& node) {
  const auto numbers = descriptor.GetNodeType().GetNumbers();
  ordered_json json;
  json["class"] = descriptor.GetNodeFactory()->GetTypeName();
  json["name"] = descriptor.GetName();
  json["type"] = {numbers[0], numbers[1], numbers[2]};
  json["library"] = descriptor.GetLibraryName();
  json["group"] = descriptor.GetGroupCode();
  json["icon"] = descriptor.GetIconPath();
  json["small_icon"] = descriptor.GetSmallIconPath();
  if (const NodeRecord* record = node.GetRecord()) {
    json["heading"] = record->group;
    json["sentence"] = record->sentence;
    json["keywords"] = SplitToJson(record->keywords);
  }
  return json;
}

ordered_json NodeToJson(const NodeInterface& descriptor, const Node& node) {
  ordered_json json = SummaryToJson(descriptor, node);
  json["attribute_version"] = node.GetAttributeVersion();
  json["inputs"] = ordered_json::array();
  for (std::size_t i = 0; i < node.GetNumRegularInputs(); ++i) {
    const PlugRecord& plug = node.GetInplugs()[i];
    ordered_json input;
    input["name"] = plug.name;
    input["type"] = PlugType::GetName(plug.type);
    input["multiple"] = plug.connections == PlugRecord::kAnyNumber;
    json["inputs"].push_back(input);
  }
  json["outputs"] = ordered_json::array();
  for (unsigned i = 0; i < node.GetOutplugs().size(); ++i) {
    ordered_json output;
    output["name"] = node.GetOutplugs()[i].name;
    output["type"] = PlugType::GetName(node.GetOutplugs()[i].type);
    output["alias"] = node.GetOutplugAlias(i);
    json["outputs"].push_back(output);
  }
  json["attributes"] = ordered_json::array();
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    json["attributes"].push_back(AttributeToJson(*node.GetAttribute(i)));
  }
  return json;
}

std::string DescribeAttribute(const Attribute& attribute) {
  std::ostringstream text;
  text << Pad(attribute.GetKindName(), 10) << "default " << FormatValue(attribute.GetDefault());
  if (attribute.GetKind() == Attribute::Kind::kNumber) {
    text << ", " << FormatDouble(attribute.GetLowest()) << " to " << FormatDouble(attribute.GetHighest()) << ", step "
         << FormatFloat(static_cast<float>(attribute.GetStep())) << ", " << attribute.GetDecimals() << " decimals";
  }
  if (attribute.GetKind() == Attribute::Kind::kChoice) {
    text << ", one of";
    for (const std::string& word : attribute.GetChoices()) text << " " << word;
  }
  if (const AttributeRow* row = attribute.GetRow()) {
    if (*row->unit != '\0') text << ", in " << row->unit;
    text << "\n" << std::string(kIndent, ' ') << row->text;
  }
  return text.str();
}

std::string DescribeNode(const NodeInterface& descriptor, const Node& node) {
  std::ostringstream text;
  text << descriptor.GetName() << "\n";
  if (const NodeRecord* record = node.GetRecord()) text << "  " << record->sentence << "\n";
  text << "  class    " << descriptor.GetNodeFactory()->GetTypeName() << "\n";
  text << "  numbers  " << descriptor.GetNodeType().ToString() << "\n";
  text << "  library  " << (descriptor.GetLibraryName().empty() ? "(the host)" : descriptor.GetLibraryName()) << "\n";
  text << "Inputs\n";
  for (std::size_t i = 0; i < node.GetNumRegularInputs(); ++i) {
    const PlugRecord& plug = node.GetInplugs()[i];
    text << "  " << Pad(plug.name, 16) << PlugType::GetName(plug.type)
         << (plug.connections == PlugRecord::kAnyNumber ? ", any number of connections" : "") << "\n";
  }
  if (node.GetNumRegularInputs() == 0) text << "  (none)\n";
  text << "Outputs\n";
  for (unsigned i = 0; i < node.GetOutplugs().size(); ++i) {
    const PlugRecord& plug = node.GetOutplugs()[i];
    const std::string alias = node.GetOutplugAlias(i);
    text << "  " << Pad(plug.name, 16) << PlugType::GetName(plug.type) << (alias == plug.name ? "" : "  " + alias)
         << "\n";
  }
  if (node.GetOutplugs().empty()) text << "  (none)\n";
  text << "Attributes\n";
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    text << "  " << Pad(node.GetAttribute(i)->GetName(), 16) << DescribeAttribute(*node.GetAttribute(i)) << "\n";
  }
  if (node.GetNumAttributes() == 0) text << "  (none)\n";
  return text.str();
}

ScEng::RefPtr<Node> CreateNode(const NodeInterface& descriptor) {
  ScEng::RefPtr<Node> node(descriptor.GetNodeFactory()->CreateNode());
  if (!node) throw std::runtime_error("the factory of " + descriptor.GetName() + " creates no node");
  return node;
}

class NodesCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("nodes", "Lists the nodes, or one node's plugs and attributes");
    sub->add_option("NAME", words_, kNodeWords);
    sub->footer(
        "Examples:\n"
        "  value nodes\n"
        "  value nodes \"Value Clamp\"\n"
        "  value nodes 10,320,42 --json");
    return sub;
  }

  ExitCode Run() override {
    const auto catalog = LoadCatalog();
    if (!catalog) return ExitCode::kPlugin;
    const std::string name = JoinWords(words_);
    return words_.empty() ? ListAll(*catalog) : ShowOne(*catalog, name);
  }

 private:
  ExitCode ListAll(const ScEng::NodeCatalog& catalog) {
    ordered_json answer;
    answer["nodes"] = ordered_json::array();
    std::ostringstream text;
    text << Pad("Class", 32) << Pad("Name", 24) << Pad("Numbers", 16) << "Library\n";
    for (const NodeInterface* descriptor : catalog.GetDescriptors()) {
      const ScEng::RefPtr<Node> node = CreateNode(*descriptor);
      answer["nodes"].push_back(SummaryToJson(*descriptor, *node));
      const std::string library = descriptor->GetLibraryName();
      text << Pad(descriptor->GetNodeFactory()->GetTypeName(), 32) << Pad(descriptor->GetName(), 24)
           << Pad(descriptor->GetNodeType().ToString(), 16) << (library.empty() ? "(the host)" : library) << "\n";
      if (node->GetRecord() != nullptr) text << "    " << node->GetRecord()->sentence << "\n";
    }
    reporter_.Print(text.str());
    reporter_.Finish(answer);
    return ExitCode::kDone;
  }

  ExitCode ShowOne(const ScEng::NodeCatalog& catalog, const std::string& name) {
    const NodeInterface* descriptor = FindNode(catalog, name);
    if (descriptor == nullptr) return ExitCode::kUsage;
    const ScEng::RefPtr<Node> node = CreateNode(*descriptor);
    reporter_.Print(DescribeNode(*descriptor, *node));
    reporter_.Finish(NodeToJson(*descriptor, *node));
    return ExitCode::kDone;
  }

  std::vector<std::string> words_;
};

}  // namespace

std::unique_ptr<Command> MakeNodesCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<NodesCommand>(common, reporter);
}
