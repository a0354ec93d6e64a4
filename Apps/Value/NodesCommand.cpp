// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <sstream>
#include <stdexcept>

#include "Apps/Value/Common.h"
#include "Apps/Value/NodeSearch.h"
#include "Apps/Value/NodeText.h"
#include "Apps/Value/UsageText.h"
#include "Apps/Value/WrapText.h"
#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeRecord.h"
#include "Host/Util/ClosestName.h"
#include "Host/Util/RefCounter.h"

namespace {

using nlohmann::ordered_json;

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

ScEng::RefPtr<Node> CreateNode(const NodeInterface& descriptor) {
  ScEng::RefPtr<Node> node(descriptor.GetNodeFactory()->CreateNode());
  if (!node) throw std::runtime_error("the factory of " + descriptor.GetName() + " creates no node");
  return node;
}

std::string GetHeading(const Node& node) {
  const NodeRecord* record = node.GetRecord();
  return record == nullptr || *record->group == '\0' ? "Others" : record->group;
}

class NodesCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("nodes", "Lists the nodes, finds some by words, or shows all about one");
    sub->add_option("WORDS", words_,
                    std::string(kNodeWords) +
                        " shows its plugs and attributes; other words find the nodes that "
                        "hold all of them");
    sub->footer(
        "Examples:\n"
        "  value nodes\n"
        "  value nodes \"Value Clamp\"\n"
        "  value nodes soft mask\n"
        "  value nodes 10,320,42 --json");
    return sub;
  }

  ExitCode Run() override {
    const auto catalog = LoadCatalog();
    if (!catalog) return ExitCode::kPlugin;
    if (words_.empty()) return ListAll(*catalog);
    const NodeInterface* named = catalog->FindWritten(JoinWords(words_));
    return named != nullptr ? ShowOne(*named) : ShowFound(*catalog);
  }

 private:
  ExitCode ListAll(const ScEng::NodeCatalog& catalog) {
    ordered_json answer;
    answer["nodes"] = ordered_json::array();
    std::vector<std::pair<std::string, std::string>> headings;
    for (const NodeInterface* descriptor : catalog.GetDescriptors()) {
      const ScEng::RefPtr<Node> node = CreateNode(*descriptor);
      answer["nodes"].push_back(SummaryToJson(*descriptor, *node));
      const std::string heading = GetHeading(*node);
      auto found = std::find_if(headings.begin(), headings.end(), [&](const auto& h) { return h.first == heading; });
      if (found == headings.end()) found = headings.insert(headings.end(), {heading, ""});
      found->second += DescribeBriefly(*descriptor, *node);
    }
    std::string text;
    for (const auto& [heading, nodes] : headings) text += (text.empty() ? "" : "\n") + heading + "\n" + nodes;
    text += "\n\"value nodes NAME\" shows all about a node, \"value nodes WORDS\" finds nodes.\n";
    reporter_.Print(text);
    reporter_.Finish(answer);
    return ExitCode::kDone;
  }

  ExitCode ShowOne(const NodeInterface& descriptor) {
    const ScEng::RefPtr<Node> node = CreateNode(descriptor);
    reporter_.Print(DescribeNode(descriptor, *node));
    reporter_.Finish(NodeToJson(descriptor, *node));
    return ExitCode::kDone;
  }

  ExitCode ShowFound(const ScEng::NodeCatalog& catalog) {
    const std::vector<SearchTexts> texts = MakeSearchTexts(catalog);
    const std::vector<std::size_t> found = Search(texts, words_);
    if (found.empty()) return Fail(ExitCode::kUsage, DescribeNothingFound(catalog, texts));
    const std::vector<NodeInterface*> descriptors = catalog.GetDescriptors();
    ordered_json answer;
    answer["words"] = words_;
    answer["nodes"] = ordered_json::array();
    std::string text;
    for (const std::size_t place : found) {
      const NodeInterface& descriptor = *descriptors[place];
      const ScEng::RefPtr<Node> node = CreateNode(descriptor);
      answer["nodes"].push_back(SummaryToJson(descriptor, *node));
      text += DescribeBriefly(descriptor, *node);
    }
    answer["hints"] = FindHints(words_);
    for (const std::string& hint : FindHints(words_)) text += "\n" + Wrap(hint, 0) + "\n";
    reporter_.Print(text);
    reporter_.Finish(answer);
    return ExitCode::kDone;
  }

  /// The words that no node holds are told, with the closest that some do.
  [[nodiscard]] std::string DescribeNothingFound(const ScEng::NodeCatalog& catalog,
                                                 const std::vector<SearchTexts>& texts) const {
    const std::string written = JoinWords(words_);
    const std::string start = "there is no node " + ShowWord(written);
    const std::string list = "; \"value nodes\" lists all";
    const std::vector<std::string> known = ListSearchWords(catalog, texts);
    constexpr std::size_t kMostLookedFor = 16;
    for (std::size_t i = 0; i < std::min(words_.size(), kMostLookedFor); ++i) {
      const std::string& word = words_[i];
      if (word.empty() || !Search(texts, {word}).empty()) continue;
      const std::string closest = ScEng::SuggestClosestNames(word, known);
      return start + ", and none speaks of " + ShowWord(word) + (closest.empty() ? list : closest);
    }
    return start + (words_.size() > 1 ? ", and none speaks of all these words" : "") + list;
  }

  std::vector<std::string> words_;
};

}  // namespace

std::unique_ptr<Command> MakeNodesCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<NodesCommand>(common, reporter);
}
