// SPDX-License-Identifier: Apache-2.0
#include "Apps/NodePages/NodeText.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <map>
#include <set>

#include "Host/Tools/AttributeRow.h"

namespace {

constexpr const char* kUse = "What it is for";
constexpr const char* kInputs = "Inputs";
constexpr const char* kAttributes = "Attributes";
constexpr const char* kOutputs = "Outputs";
constexpr const char* kSurprises = "What surprises";
constexpr const char* kTrial = "Try it";

std::string Trim(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(" \n");
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \n") - begin + 1);
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t from = 0; from <= text.size();) {
    const std::size_t end = std::min(text.find(separator, from), text.size());
    parts.push_back(Trim(text.substr(from, end - from)));
    from = end + 1;
  }
  return parts;
}

/// Reads one file; a message starts with the file and what it is about.
class TextReader {
 public:
  TextReader(const std::filesystem::path& file, std::string name, std::vector<std::string>& errors)
      : stream_(file), name_(std::move(name)), errors_(errors) {}

  NodeText Read() {
    if (!stream_) {
      Fail("the text is missing; Docs/AddANode.md says what it holds");
      return {};
    }
    ReadHead();
    ReadSections();
    Require("disabled", text_.disabled);
    Require(kUse, text_.use);
    Require(kSurprises, text_.surprises);
    Require(kTrial, text_.trial);
    if (text_.pictures.size() < 2) Fail("there are fewer than two \"show\" lines; a page has a before and an after");
    return text_;
  }

 private:
  void Fail(const std::string& message) { errors_.push_back(name_ + ": " + message); }

  void Require(const std::string& part, const std::string& value) {
    if (value.empty()) Fail("\"" + part + "\" is missing or empty");
  }

  void ReadHead() {
    std::string line;
    if (!std::getline(stream_, line) || line != "---") return Fail(R"(the first line is not "---")");
    while (std::getline(stream_, line) && line != "---") {
      const std::size_t colon = line.find(": ");
      if (colon == std::string::npos) {
        Fail("\"" + line + R"(" is not of the form "key: value")");
      } else {
        ReadHeadLine(line.substr(0, colon), Trim(line.substr(colon + 2)));
      }
    }
  }

  void ReadHeadLine(const std::string& key, const std::string& value) {
    if (key == "disabled") {
      text_.disabled = value;
    } else if (key == "gone") {
      text_.gone_names.push_back(value);
    } else if (key == "old") {
      const auto names = Split(value, '=');
      if (names.size() != 2) return Fail("old: \"" + value + "\" is not of the form OLD = CURRENT");
      text_.old_names.emplace_back(names[0], names[1]);
    } else if (key == "show") {
      const auto parts = Split(value, '|');
      const auto look = parts.size() == 3 ? ParseLook(parts[1]) : std::nullopt;
      if (!look) return Fail("show: \"" + value + "\" is not of the form OUTPUT | LOOK | CAPTION");
      text_.pictures.push_back({parts[0], *look, parts[2]});
    } else {
      Fail("there is no key \"" + key + "\"");
    }
  }

  void ReadSections() {
    std::string section;
    NodeText::Entries* entries = nullptr;
    std::string* body = nullptr;
    std::string line;
    bool in_code = false;
    while (std::getline(stream_, line)) {
      if (line.starts_with("```")) in_code = !in_code;
      if (!in_code && line.starts_with("## ")) {
        if (body != nullptr) *body = Trim(*body);
        section = line.substr(3);
        entries = FindEntries(section);
        body = FindBody(section);
        if (entries == nullptr && body == nullptr) Fail("there is no section \"" + section + "\"");
      } else if (!in_code && line.starts_with("### ") && entries != nullptr) {
        if (body != nullptr) *body = Trim(*body);
        body = &entries->emplace_back(line.substr(4), "").second;
      } else if (body != nullptr) {
        *body += line + "\n";
      } else if (!line.empty()) {
        Fail("\"" + line + "\" belongs to no section");
      }
    }
    if (body != nullptr) *body = Trim(*body);
  }

  NodeText::Entries* FindEntries(const std::string& section) {
    if (section == kInputs) return &text_.inputs;
    if (section == kAttributes) return &text_.attributes;
    return section == kOutputs ? &text_.outputs : nullptr;
  }

  std::string* FindBody(const std::string& section) {
    if (section == kUse) return &text_.use;
    if (section == kSurprises) return &text_.surprises;
    return section == kTrial ? &text_.trial : nullptr;
  }

  std::ifstream stream_;
  std::string name_;
  std::vector<std::string>& errors_;
  NodeText text_;
};

/// Every one of `names` has an entry, but for those of `optional`, in this order, and no other has.
void CheckEntries(const std::string& kind, const NodeText::Entries& entries, const std::vector<std::string>& names,
                  const std::set<std::string>& optional, const std::function<void(const std::string&)>& fail) {
  std::vector<std::string> written;
  for (const auto& [name, body] : entries) {
    if (std::find(names.begin(), names.end(), name) == names.end()) {
      fail("the node has no " + kind + " \"" + name + "\"");
    } else if (std::find(written.begin(), written.end(), name) != written.end()) {
      fail("the " + kind + " \"" + name + "\" is there twice");
    } else {
      if (body.empty()) fail("nothing is said of the " + kind + " \"" + name + "\"");
      written.push_back(name);
    }
  }
  std::vector<std::string> expected;
  for (const std::string& name : names) {
    const bool is_written = std::find(written.begin(), written.end(), name) != written.end();
    if (is_written || !optional.contains(name)) expected.push_back(name);
    if (!is_written && !optional.contains(name)) fail("the " + kind + " \"" + name + "\" is missing");
  }
  if (written.size() == expected.size() && written != expected) {
    fail("the " + kind + "s are not in the order of the node");
  }
}

void CheckOldNames(const NodeText& text, const Node& node, const std::vector<std::string>& known_old_names,
                   const std::function<void(const std::string&)>& fail) {
  constexpr unsigned kFirstVersion = 0;
  std::map<std::string, std::string> said(text.old_names.begin(), text.old_names.end());
  for (const auto& [old_name, current] : said) {
    if (node.TranslateAttributeName(kFirstVersion, old_name) != current) {
      fail("\"" + old_name + "\" is not an old name of \"" + current + "\"");
    }
  }
  for (const std::string& gone : text.gone_names) {
    if (!node.IsObsoleteAttribute(kFirstVersion, gone.c_str())) {
      fail("\"" + gone + "\" is not an attribute that the node once had");
    }
  }
  for (const std::string& name : known_old_names) {
    if (node.TranslateAttributeName(kFirstVersion, name) != name && !said.contains(name)) {
      fail("the old name \"" + name + "\" is missing");
    }
    const bool told = std::find(text.gone_names.begin(), text.gone_names.end(), name) != text.gone_names.end();
    if (node.IsObsoleteAttribute(kFirstVersion, name.c_str()) && !told) {
      fail("the attribute that is gone, \"" + name + "\", is missing");
    }
  }
}

}  // namespace

NodeText ReadNodeText(const std::filesystem::path& file, const std::string& name, std::vector<std::string>& errors) {
  return TextReader(file, name, errors).Read();
}

void CheckNodeText(const NodeText& text, const Node& node, const std::vector<std::string>& known_old_names,
                   const std::string& name, std::vector<std::string>& errors) {
  const auto fail = [&](const std::string& message) { errors.push_back(name + ": " + message); };
  std::vector<std::string> inputs;
  std::vector<std::string> attributes;
  std::vector<std::string> outputs;
  for (std::size_t i = 0; i < node.GetNumRegularInputs(); ++i) inputs.push_back(node.GetInplugs()[i].name);
  std::set<std::string> told_by_row;
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    const Attribute& attribute = *node.GetAttribute(i);
    attributes.push_back(attribute.GetName());
    if (attribute.GetRow() != nullptr && *attribute.GetRow()->text != '\0' && attribute.GetChoices().empty()) {
      told_by_row.insert(attribute.GetName());
    }
  }
  for (const PlugRecord& plug : node.GetOutplugs()) outputs.push_back(plug.name);
  CheckEntries("input", text.inputs, inputs, {}, fail);
  CheckEntries("attribute", text.attributes, attributes, told_by_row, fail);
  CheckEntries("output", text.outputs, outputs, {}, fail);
  for (const auto& [attribute, body] : text.attributes) {
    const auto place = std::find(attributes.begin(), attributes.end(), attribute);
    if (place == attributes.end()) continue;
    const auto index = static_cast<std::size_t>(place - attributes.begin());
    for (const std::string& word : node.GetAttribute(index)->GetChoices()) {
      if (body.find("`" + word + "`") == std::string::npos) {
        fail("the text of the attribute \"" + attribute + "\" lacks its word \"" + word + "\"");
      }
    }
  }
  CheckOldNames(text, node, known_old_names, fail);
}
