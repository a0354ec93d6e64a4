// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Apps/Value/Common.h"
#include "Apps/Value/NodeSearch.h"
#include "Apps/Value/NodeText.h"
#include "Apps/Value/PluginSearch.h"
#include "Apps/Value/UsageText.h"
#include "Apps/Value/WrapText.h"
#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeRecord.h"
#include "Host/Tools/TypeGuard.h"
#include "Host/Util/ClosestName.h"
#include "Host/Util/RefCounter.h"

namespace {

using nlohmann::ordered_json;
using ScEng::Status;

// What is going on while a library is asked for all that is shown of a node.
constexpr const char* kDescribing = "its description";

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

std::string GetHeading(const Node& node) {
  const NodeRecord* record = node.GetRecord();
  return record == nullptr || *record->group == '\0' ? "Others" : record->group;
}

/// What a list says of a node type.
struct ListedNode {
  ordered_json json;
  std::string heading;
  std::string text;
};

Status MakeListed(const NodeInterface& descriptor, ListedNode& listed) {
  Status status;
  const ScEng::RefPtr<Node> node = ScEng::CreateNode(descriptor, status);
  if (!node) return status;
  return ScEng::CallTypeGuarded(descriptor, kDescribing, [&] {
    listed = {SummaryToJson(descriptor, *node), GetHeading(*node), DescribeBriefly(descriptor, *node)};
  });
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
    PluginSearch search(common_.plugins);
    search_ = &search;
    Status status;
    const auto catalog = LoadCatalog(search, status);
    reporter_.Notes(search.GetNotes());
    if (!catalog) return Fail(ExitCode::kPlugin, status.GetMessage());
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
      ListedNode listed;
      if (!List(*descriptor, listed)) continue;
      answer["nodes"].push_back(std::move(listed.json));
      auto found =
          std::find_if(headings.begin(), headings.end(), [&](const auto& h) { return h.first == listed.heading; });
      if (found == headings.end()) found = headings.insert(headings.end(), {listed.heading, ""});
      found->second += listed.text;
    }
    std::string text;
    for (const auto& [heading, nodes] : headings) text += (text.empty() ? "" : "\n") + heading + "\n" + nodes;
    text += "\n\"value nodes NAME\" shows all about a node, \"value nodes WORDS\" finds nodes.\n";
    reporter_.Print(text);
    reporter_.Finish(answer);
    return code_;
  }

  ExitCode ShowOne(const NodeInterface& descriptor) {
    Status status;
    std::string text;
    ordered_json answer;
    if (const ScEng::RefPtr<Node> node = ScEng::CreateNode(descriptor, status)) {
      status = ScEng::CallTypeGuarded(descriptor, kDescribing, [&] {
        text = DescribeNode(descriptor, *node);
        answer = NodeToJson(descriptor, *node);
      });
    }
    if (status.IsError()) return Fail(ExitCode::kNodeError, status.GetMessage());
    reporter_.Print(text);
    reporter_.Finish(answer);
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
      ListedNode listed;
      if (!List(*descriptors[place], listed)) continue;
      answer["nodes"].push_back(std::move(listed.json));
      text += listed.text;
    }
    answer["hints"] = FindHints(words_);
    for (const std::string& hint : FindHints(words_)) text += "\n" + Wrap(hint, 0) + "\n";
    reporter_.Print(text);
    reporter_.Finish(answer);
    return code_;
  }

  /// False where the type cannot be shown, which is reported: one bad node in a shared folder does not stop the list,
  /// but one of a library that was asked for is an error.
  bool List(const NodeInterface& descriptor, ListedNode& listed) {
    const Status status = MakeListed(descriptor, listed);
    if (!status.IsError()) return true;
    if (search_->IsNamed(descriptor)) {
      reporter_.Error(status.GetMessage());
      code_ = ExitCode::kNodeError;
    } else {
      reporter_.Note(status.GetMessage() + "; it is left out");
    }
    return false;
  }

  /// The words that no node holds are told, with the closest that some do.
  [[nodiscard]] std::string DescribeNothingFound(const ScEng::NodeCatalog& catalog,
                                                 const std::vector<SearchTexts>& texts) const {
    const std::string written = JoinWords(words_);
    if (const std::string missing = DescribeMissing(words_); !missing.empty())
      return ShowWord(written) + ": " + missing;
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
  /// While the command runs.
  const PluginSearch* search_ = nullptr;
  ExitCode code_ = ExitCode::kDone;
};

}  // namespace

std::unique_ptr<Command> MakeNodesCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<NodesCommand>(common, reporter);
}
