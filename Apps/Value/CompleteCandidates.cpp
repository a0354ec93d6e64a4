// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/CompleteCandidates.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "Apps/Value/Common.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeRecord.h"
#include "Host/Tools/TypeGuard.h"
#include "Host/Util/RefCounter.h"

namespace {

char ToSmall(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter; }

bool StartsWith(std::string_view text, std::string_view start) {
  return text.size() >= start.size() &&
         std::equal(start.begin(), start.end(), text.begin(), [](char a, char b) { return ToSmall(a) == ToSmall(b); });
}

std::vector<std::string> SplitList(const std::string& list) {
  std::vector<std::string> parts;
  std::istringstream stream(list);
  for (std::string part; std::getline(stream, part, ',');) parts.push_back(part);
  return parts;
}

void AddValues(const Attribute& attribute, const std::string& prefix, Candidates& candidates) {
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag:
      candidates.Add(prefix + "true");
      candidates.Add(prefix + "false");
      break;
    case Attribute::Kind::kChoice: {
      const AttributeRow* row = attribute.GetRow();
      const std::vector<std::string> labels = row != nullptr ? SplitList(row->labels) : std::vector<std::string>();
      for (std::size_t i = 0; i < attribute.GetChoices().size(); ++i) {
        candidates.Add(prefix + attribute.GetChoices()[i], i < labels.size() ? labels[i] : "");
      }
      break;
    }
    case Attribute::Kind::kString:
      if (attribute.GetStringUse() != Attribute::StringUse::kText) candidates.AddFiles(prefix);
      break;
    default: break;
  }
}

std::vector<std::string> ImagePlugNames(const std::vector<PlugRecord>& plugs, std::size_t count) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < count; ++i) {
    if (plugs[i].type == PlugType::kImage) names.push_back(plugs[i].name);
  }
  return names;
}

bool IsReader(const Node& node) {
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    if (node.GetAttribute(i)->GetStringUse() == Attribute::StringUse::kReadPath) return true;
  }
  return false;
}

}  // namespace

void Candidates::Add(std::string text, std::string about, bool is_open) {
  words.push_back({std::move(text), std::move(about), is_open});
}

void Candidates::AddFiles(std::string prefix, std::string with_ending) {
  files = Files::kAny;
  files_prefix = std::move(prefix);
  ending = std::move(with_ending);
}

void Candidates::AddFolders() { files = Files::kFolders; }

void Candidates::Filter(std::string_view typed) {
  std::erase_if(
      words, [&](const Word& word) { return !StartsWith(word.text, typed) || (word.is_open && word.text == typed); });
}

void AddNodeNames(const ScEng::NodeCatalog& catalog, const std::vector<std::string>& before, const std::string& word,
                  Candidates& candidates) {
  const std::string start = before.empty() ? std::string() : JoinWords(before) + " ";
  for (const NodeInterface* descriptor : catalog.GetDescriptors()) {
    ScEng::Status unmade;
    const ScEng::RefPtr<Node> node = ScEng::CreateNode(*descriptor, unmade);
    const NodeRecord* record = node ? node->GetRecord() : nullptr;
    const std::string about = record != nullptr ? record->sentence : "";
    const std::string name = descriptor->GetName();
    if (StartsWith(name, start) && name.size() > start.size()) candidates.Add(name.substr(start.size()), about);
    const std::string class_name = descriptor->GetNodeFactory()->GetTypeName();
    if (start.empty() && !word.empty() && class_name != name) candidates.Add(class_name, about);
  }
}

void AddSettings(const Node& node, const std::string& prefix, const std::string& word, Candidates& candidates) {
  const std::size_t equals = word.find('=', prefix.size());
  if (equals != std::string::npos) {
    const Attribute* attribute = node.GetAttribute(word.substr(prefix.size(), equals - prefix.size()));
    if (attribute != nullptr) AddValues(*attribute, word.substr(0, equals + 1), candidates);
    return;
  }
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    const Attribute& attribute = *node.GetAttribute(i);
    const AttributeRow* row = attribute.GetRow();
    candidates.Add(prefix + attribute.GetName() + "=", row != nullptr ? row->text : attribute.GetKindName(), true);
  }
}

void AddPlugFiles(const Node& node, bool is_input, const std::string& word, Candidates& candidates) {
  const std::vector<PlugRecord>& plugs = is_input ? node.GetInplugs() : node.GetOutplugs();
  const std::vector<std::string> names = ImagePlugNames(plugs, is_input ? node.GetNumRegularInputs() : plugs.size());
  candidates.AddFiles();
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string start = names[i] + "=";
    if (word.starts_with(start)) candidates.AddFiles(start);
    const std::string about = (is_input ? "input " : "output ") + std::to_string(i + 1);
    if (names.size() > 1) candidates.Add(start, about, true);
  }
}

void AddDocumentSettings(const ScEng::GraphDocument& document, const std::string& word, Candidates& candidates) {
  const std::size_t dot = word.substr(0, word.find('=')).rfind('.');
  if (dot != std::string::npos) {
    if (const Node* node = document.FindNode(word.substr(0, dot))) {
      AddSettings(*node, word.substr(0, dot + 1), word, candidates);
    }
  }
  for (const std::string& id : document.GetIds()) {
    const Node* node = document.FindNode(id);
    if (node != nullptr && node->GetNumAttributes() > 0 && !word.starts_with(id + ".")) {
      candidates.Add(id + ".", node->GetName(), true);
    }
  }
}

void AddDocumentInputs(const ScEng::GraphDocument& document, const std::string& word, Candidates& candidates) {
  for (const std::string& id : document.GetIds()) {
    const Node* node = document.FindNode(id);
    if (node == nullptr || !IsReader(*node)) continue;
    if (word.starts_with(id + "=")) candidates.AddFiles(id + "=");
    candidates.Add(id + "=", node->GetName(), true);
  }
}

void AddDocumentOutputs(const ScEng::GraphDocument& document, const std::string& word, Candidates& candidates) {
  for (const std::string& id : document.GetIds()) {
    const Node* node = document.FindNode(id);
    if (node == nullptr) continue;
    for (const std::string& plug : ImagePlugNames(node->GetOutplugs(), node->GetOutplugs().size())) {
      const std::string start = id + "." + plug + "=";
      if (word.starts_with(start)) candidates.AddFiles(start);
      candidates.Add(start, node->GetName(), true);
    }
  }
}
