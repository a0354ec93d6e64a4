// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/LineSubject.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "Apps/Value/DeclaredOptions.h"
#include "Apps/Value/ExitGuard.h"
#include "Apps/Value/PluginSearch.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeInterface.h"

namespace {

constexpr const char* kNodeId = "node";
// A message need not wait for larger ones.
constexpr std::uintmax_t kLargestDocument = 16U << 20U;
constexpr std::size_t kMostOffered = 3;

bool IsNumber(const std::string& text) {
  char* end = nullptr;
  static_cast<void>(std::strtod(text.c_str(), &end));
  return !text.empty() && *end == '\0';
}

/// The attribute of a node that an option's name stands for; null where there is none.
const Attribute* FindAttribute(const Node& node, std::string name) {
  if (const Attribute* found = node.GetAttribute(name)) return found;
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return c == '-' ? '_' : static_cast<char>(std::tolower(c)); });
  return node.GetAttribute(name);
}

/// What a flag is set to; empty for a word that has nothing to do with it.
std::string ReadFlag(std::string word) {
  std::transform(word.begin(), word.end(), word.begin(), [](unsigned char c) { return std::tolower(c); });
  if (word == "true" || word == "1" || word == "yes" || word == "on") return "true";
  return word == "false" || word == "0" || word == "no" || word == "off" ? "false" : "";
}

/// The value that was typed for an attribute: in one word with the option, or behind it.
std::string FindValue(const Attribute& attribute, const Argument& option, std::span<const Argument> following) {
  std::vector<std::string> words;
  if (option.is_joined) words.push_back(option.values.front());
  for (const Argument& argument : following) {
    if (option.is_joined || argument.kind != Argument::Kind::kWord) break;
    if (argument.text != "=" || !words.empty()) words.push_back(argument.text);
  }
  const std::string first = words.empty() ? "" : words.front();
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag: {
      const std::string flag = ReadFlag(first);
      return flag.empty() ? "true" : flag;
    }
    case Attribute::Kind::kPoint:
    case Attribute::Kind::kFrame:
    case Attribute::Kind::kColor: break;
    default: return first.empty() ? "VALUE" : first;
  }
  // "--frame 0 0 16 16".
  std::string numbers = first;
  for (std::size_t i = 1; IsNumber(first) && i < words.size() && IsNumber(words[i]); ++i) numbers += "," + words[i];
  return numbers.empty() ? "VALUE" : numbers;
}

std::vector<std::string> ListReaders(const ScEng::GraphDocument& document) {
  std::vector<std::string> readers;
  for (const std::string& id : document.GetIds()) {
    const Node* node = document.FindNode(id);
    for (std::size_t i = 0; node != nullptr && i < node->GetNumAttributes(); ++i) {
      const Attribute& attribute = *node->GetAttribute(i);
      const bool is_path = attribute.GetKind() == Attribute::Kind::kString &&
                           attribute.GetStringUse() == Attribute::StringUse::kReadPath;
      if (is_path) readers.push_back(id);
    }
  }
  return readers;
}

/// The image outputs of one node; without one, what the document writes.
std::vector<std::string> ListOutputs(const ScEng::GraphDocument& document, const std::string& id) {
  std::vector<std::string> outputs;
  const Node* const node = document.FindNode(id);
  if (node == nullptr) {
    for (const ScEng::DocumentOutput& output : document.GetOutputs()) outputs.push_back(output.from);
    return outputs;
  }
  for (const PlugRecord& plug : node->GetOutplugs()) {
    if (plug.type == PlugType::kImage) outputs.push_back(id + "." + plug.name);
  }
  return outputs;
}

}  // namespace

std::vector<LineAdvice::Setting> LineSubject::FindSettings(const Argument& option,
                                                           std::span<const Argument> following) {
  std::vector<Setting> settings;
  ScEng::GraphDocument* const document = GetDocument();
  const std::size_t start = option.name.find_first_not_of('-');
  if (document == nullptr || start == std::string::npos || option.name.size() - start < 2) return settings;
  const std::string typed = option.name.substr(start);
  const std::size_t dot = typed.rfind('.');
  for (const std::string& id : document->GetIds()) {
    const bool is_named = dot != std::string::npos && typed.substr(0, dot) == id;
    const Node* const node = document->FindNode(id);
    const Attribute* const attribute =
        node != nullptr ? FindAttribute(*node, is_named ? typed.substr(dot + 1) : typed) : nullptr;
    if (attribute == nullptr) continue;
    const std::string value = FindValue(*attribute, option, following);
    const std::string name = attribute->GetName();
    std::vector<std::string> notes;
    const bool is_accepted = !document->SetAttribute(id + "." + name, value, notes).IsError();
    settings.push_back({(is_node_ ? "" : id + ".") + name + "=" + value, is_accepted});
  }
  const bool has_accepted =
      std::any_of(settings.begin(), settings.end(), [](const Setting& setting) { return setting.is_accepted; });
  if (has_accepted) std::erase_if(settings, [](const Setting& setting) { return !setting.is_accepted; });
  settings.resize(std::min(settings.size(), kMostOffered));
  return settings;
}

std::vector<std::string> LineSubject::FindLeftSides(const CLI::Option& option, const std::string& node) {
  const ScEng::GraphDocument* const document = GetDocument();
  if (document == nullptr || is_node_) return {};
  const std::string type = GetTypeName(option);
  const std::string left = type.substr(0, type.find('='));
  std::vector<std::string> sides;
  if (left == "NODE") sides = ListReaders(*document);
  if (left == "NODE.PLUG") sides = ListOutputs(*document, node);
  sides.resize(std::min(sides.size(), kMostOffered));
  return sides;
}

std::vector<std::string> LineSubject::ListWords(bool with_doubtful) const {
  std::vector<std::string> words;
  bool is_doubtful = false;
  for (const Argument& argument : line_.behind) {
    const bool is_word = argument.kind == Argument::Kind::kWord;
    if (is_word && (with_doubtful || !is_doubtful)) words.push_back(argument.text);
    if (!is_word) is_doubtful = argument.kind == Argument::Kind::kUnknownOption && !argument.is_joined;
  }
  return words;
}

ScEng::GraphDocument* LineSubject::GetDocument() {
  if (!is_loaded_) {
    is_loaded_ = true;
    try {
      Load();
    } catch (...) {
      // What a library throws is told by the command that needs it.
      document_.reset();
    }
  }
  return document_.get();
}

void LineSubject::Load() {
  if (line_.command == nullptr || FindOption(*line_.command, "--set") == nullptr) return;
  if (Takes("NODE")) LoadNode();
  if (Takes("GRAPH")) LoadDocument();
}

void LineSubject::LoadCatalog() {
  PluginOptions options;
  for (const std::vector<Argument>* arguments : {&line_.before, &line_.behind}) {
    for (const Argument& argument : *arguments) {
      if (argument.option == nullptr) continue;
      if (argument.option->check_lname("plugin")) {
        options.files.insert(options.files.end(), argument.values.begin(), argument.values.end());
      }
      options.no_defaults |= argument.option->check_lname("no-default-plugins");
      options.trusts |= argument.option->check_lname("trust-plugins");
    }
  }
  const auto catalog = ScEng::CreateHostCatalog();
  const ScEng::Status status = PluginSearch(options).LoadInto(*catalog);
  ExitGuard::Renew();
  if (!status.IsError()) catalog_ = catalog;
}

void LineSubject::LoadNode() {
  LoadCatalog();
  if (!catalog_) return;
  std::vector<std::string> names;
  for (const bool with_doubtful : {false, true}) {
    std::string& name = names.emplace_back();
    for (const std::string& word : ListWords(with_doubtful)) name += (name.empty() ? "" : " ") + word;
  }
  // Behind "-i FILE..." the name of the node is one more value of that option.
  for (const Argument& argument : line_.behind) {
    const bool is_input = argument.option != nullptr && argument.option->check_lname("input");
    if (is_input) names.insert(names.end(), argument.values.begin(), argument.values.end());
  }
  const NodeInterface* type = nullptr;
  for (const std::string& name : names) {
    if (type == nullptr && !name.empty()) type = catalog_->FindWritten(name);
  }
  if (type == nullptr) return;
  document_ = std::make_unique<ScEng::GraphDocument>(catalog_);
  is_node_ = true;
  ScEng::Status status;
  document_->AddNode(kNodeId, type->GetNodeType(), status);
}

void LineSubject::LoadDocument() {
  for (const bool with_doubtful : {false, true}) {
    for (const std::string& word : ListWords(with_doubtful)) {
      const std::filesystem::path file = ScEng::MakeReadPath(word);
      std::error_code error;
      const bool is_file = std::filesystem::is_regular_file(file, error) && file.extension() == ".json" &&
                           std::filesystem::file_size(file, error) <= kLargestDocument && !error;
      if (!is_file || document_) continue;
      if (!catalog_) LoadCatalog();
      if (!catalog_) return;
      auto document = std::make_unique<ScEng::GraphDocument>(catalog_);
      ScEng::Findings findings;
      if (document->Load(file, findings, {ScEng::UnknownTypes::kKeep})) document_ = std::move(document);
    }
  }
}

bool LineSubject::Takes(const char* positional) const {
  const auto positionals = GetPositionals(*line_.command);
  return std::any_of(positionals.begin(), positionals.end(),
                     [&](const CLI::Option* option) { return GetTypeName(*option) == positional; });
}
