// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/DocumentReader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>
#include <utility>

#include "Host/Documents/AttributeText.h"

namespace ScEng {
namespace {

using nlohmann::json;

constexpr const char* kFormat = "value-graph";
constexpr std::uint32_t kVersion = 1;

std::string Quote(const std::string& text) { return "\"" + text + "\""; }

/// The library's message without its leading "[json.exception...]".
std::string DescribeJsonError(const json::exception& error) {
  std::string text = error.what();
  const std::size_t end = text.find("] ");
  if (!text.empty() && text.front() == '[' && end != std::string::npos) text.erase(0, end + 2);
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

/// A whole number from 0 to the largest of 32 bits, also where it is written with a fraction of zero.
std::optional<std::uint32_t> ReadUnsigned(const json& value) {
  if (!value.is_number()) return std::nullopt;
  const auto number = value.get<double>();
  if (number < 0.0 || number > static_cast<double>(UINT32_MAX) || number != std::floor(number)) return std::nullopt;
  return static_cast<std::uint32_t>(number);
}

std::optional<NodeType> ReadNumbers(const json& value) {
  if (!value.is_array() || value.size() != 3) return std::nullopt;
  const auto first = ReadUnsigned(value[0]);
  const auto second = ReadUnsigned(value[1]);
  const auto third = ReadUnsigned(value[2]);
  if (!first || !second || !third) return std::nullopt;
  return NodeType(*first, *second, *third);
}

/// A value for a message.
std::string Describe(const json& value) { return value.dump(-1, ' ', false, json::error_handler_t::replace); }

std::string Place(const char* list, std::size_t index) { return std::string(list) + "[" + std::to_string(index) + "]"; }

}  // namespace

DocumentReader::DocumentReader(GraphDocument& document, std::filesystem::path file, Findings& findings)
    : document_(document), file_(std::move(file)), findings_(findings) {}

bool DocumentReader::Read() {
  std::error_code error;
  const auto fail = [&](const std::string& reason) {
    findings_.errors.push_back("cannot read document " + Quote(file_.string()) + ": " + reason);
    return false;
  };
  if (!std::filesystem::exists(file_, error)) return fail("there is no such file");
  if (std::filesystem::is_directory(file_, error)) return fail("it is a folder");
  std::ifstream stream(file_, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  if (!stream) return fail("it cannot be opened");
  ReadText(text);
  return true;
}

void DocumentReader::ReadText(const std::string& text) {
  // The parser keeps the last of two values under one key; here that is an error.
  std::vector<std::set<std::string>> open_objects;
  const auto watch_keys = [&](int, json::parse_event_t event, const json& parsed) {
    if (event == json::parse_event_t::object_start) open_objects.emplace_back();
    if (event == json::parse_event_t::object_end) open_objects.pop_back();
    if (event == json::parse_event_t::key && !open_objects.back().insert(parsed.get<std::string>()).second) {
      AddError("the key " + Quote(parsed.get<std::string>()) + " is there twice in one object");
    }
    return true;
  };
  try {
    ReadDocument(json::parse(text, watch_keys));
  } catch (const json::exception& error) {
    AddError(DescribeJsonError(error));
  }
}

void DocumentReader::ReadDocument(const json& document) {
  if (!CheckObject(document, "the document", {"format", "version", "nodes", "connections", "outputs"})) return;
  if (!document.contains("format") || document["format"] != kFormat) {
    AddError("\"format\" is not " + Quote(kFormat) + ", so this is no graph document");
  }
  if (!document.contains("version") || ReadUnsigned(document["version"]) != kVersion) {
    AddError("\"version\" is not " + std::to_string(kVersion) + ", the one version that can be read");
  }
  if (!document.contains("nodes")) AddError("\"nodes\" is missing");

  const auto read_list = [&](const char* key, void (DocumentReader::*read)(const json&, std::size_t)) {
    if (!document.contains(key)) return;
    const json& list = document[key];
    if (!list.is_array()) {
      AddError(Quote(key) + " is not a list");
      return;
    }
    for (std::size_t index = 0; index < list.size(); ++index) (this->*read)(list[index], index);
  };
  read_list("nodes", &DocumentReader::ReadNode);
  read_list("connections", &DocumentReader::ReadConnection);
  read_list("outputs", &DocumentReader::ReadOutput);
}

void DocumentReader::ReadNode(const json& node, std::size_t index) {
  const std::string place = Place("nodes", index);
  if (!CheckObject(node, place, {"id", "type", "enabled", "attributeVersion", "attributes"})) return;
  std::string id;
  const bool has_id = ReadString(node, place, "id", id);
  const std::string what = has_id ? "node " + Quote(id) : place;

  const NodeCatalog& catalog = document_.engine_.GetCatalog();
  const NodeInterface* descriptor = nullptr;
  if (!node.contains("type")) {
    AddError(what + ": \"type\" is missing");
  } else if (const json& type = node["type"]; type.is_string()) {
    const auto name = type.get<std::string>();
    descriptor = catalog.FindTypeName(name);
    if (descriptor == nullptr) {
      // A display name is no type name, but says which type is meant.
      const NodeInterface* meant = catalog.FindWritten(name);
      const std::string close = meant != nullptr ? meant->GetNodeFactory()->GetTypeName() : catalog.Suggest(name);
      AddError(what + ": there is no node type " + Quote(name) + (close.empty() ? "" : "; the closest is " + close));
    }
  } else if (const auto numbers = ReadNumbers(type)) {
    descriptor = catalog.Find(*numbers);
    if (descriptor == nullptr) AddError(what + ": there is no node type [" + numbers->ToString() + "]");
  } else {
    AddError(what + ": \"type\" is neither a type name nor its three numbers");
  }
  if (!has_id) return;
  if (descriptor == nullptr) {
    broken_ids_.insert(id);
    return;
  }
  Status status;
  Node* created = document_.AddNode(id, descriptor->GetNodeType(), status);
  if (created == nullptr) {
    AddError(place + ": " + status.GetMessage());
    return;
  }
  for (std::size_t i = 0; i < created->GetNumAttributes(); ++i) {
    created->GetAttribute(i)->SetFolder(file_.parent_path());
  }

  if (node.contains("enabled")) {
    if (node["enabled"].is_boolean()) {
      created->SetEnabled(node["enabled"].get<bool>());
    } else {
      AddError(what + ": \"enabled\" takes true or false");
    }
  }
  if (node.contains("attributeVersion")) {
    if (const auto version = ReadUnsigned(node["attributeVersion"])) {
      document_.entries_[id].attribute_version = *version;
    } else {
      AddError(what + ": \"attributeVersion\" takes a whole number from 0");
    }
  }
  if (node.contains("attributes")) ReadAttributes(node["attributes"], id);
}

void DocumentReader::ReadAttributes(const json& attributes, const std::string& id) {
  if (!attributes.is_object()) {
    AddError("node " + Quote(id) + ": \"attributes\" is not an object");
    return;
  }
  const auto& entry = document_.entries_[id];
  // By current name; a name that is current itself comes first.
  std::map<std::string, std::vector<std::string>> written_names;
  for (const auto& [written, value] : attributes.items()) {
    const std::string current = entry.node->TranslateAttributeName(entry.attribute_version, written);
    auto& names = written_names[current];
    names.insert(written == current ? names.begin() : names.end(), written);
  }
  for (const auto& [current, names] : written_names) {
    ReadAttribute(id, names.front(), attributes[names.front()]);
    for (std::size_t i = 1; i < names.size(); ++i) {
      AddNote(Quote(id + "." + names[i]) + " is an old name of " + Quote(current) + " and passed over, since " +
              Quote(names.front()) + " is given too");
    }
  }
}

void DocumentReader::ReadAttribute(const std::string& id, const std::string& written, const json& value) {
  const auto& entry = document_.entries_[id];
  const std::string what = Quote(id + "." + written);
  const std::string current = entry.node->TranslateAttributeName(entry.attribute_version, written);
  std::vector<std::string> names;
  Attribute* attribute = nullptr;
  for (std::size_t i = 0; i < entry.node->GetNumAttributes(); ++i) {
    names.push_back(entry.node->GetAttribute(i)->GetName());
    if (names.back() == current) attribute = entry.node->GetAttribute(i);
  }
  if (attribute == nullptr) {
    if (entry.node->IsObsoleteAttribute(entry.attribute_version, written.c_str())) {
      AddNote(what + " is obsolete and passed over");
    } else {
      AddError(what + ": " + entry.node->GetName() + " has no such attribute" +
               (names.empty() ? "" : "; it has " + JoinNames(names)));
    }
    return;
  }
  std::vector<std::string> notes;
  const Status status = SetAttributeFromJson(*attribute, value, notes);
  if (status.IsError()) AddError(what + ": " + status.GetMessage());
  for (const std::string& note : notes) AddNote(what + ": " + note);
}

void DocumentReader::ReadConnection(const json& connection, std::size_t index) {
  const std::string place = Place("connections", index);
  if (!CheckObject(connection, place, {"from", "to", "index"})) return;
  std::string from;
  std::string to;
  const bool has_from = ReadString(connection, place, "from", from);
  if (!ReadString(connection, place, "to", to) || !has_from) return;
  std::uint32_t to_index = 0;
  if (connection.contains("index")) {
    const auto number = ReadUnsigned(connection["index"]);
    if (!number) {
      AddError(place + ": \"index\" takes a whole number from 0");
      return;
    }
    to_index = *number;
  }
  if (IsOfBrokenNode(from) || IsOfBrokenNode(to)) return;
  const Status status = document_.Connect(from, to, to_index);
  if (status.IsError()) AddError(place + " " + Quote(from) + " to " + Quote(to) + ": " + status.GetMessage());
}

void DocumentReader::ReadOutput(const json& output, std::size_t index) {
  const std::string place = Place("outputs", index);
  if (!CheckObject(output, place, {"from", "path", "type"})) return;
  std::string from;
  std::string path;
  const bool has_from = ReadString(output, place, "from", from);
  if (!ReadString(output, place, "path", path) || !has_from) return;
  SampleType type = SampleType::kFloat;
  if (output.contains("type")) {
    const auto found =
        output["type"].is_string() ? FindSampleType(output["type"].get<std::string>()) : std::optional<SampleType>();
    if (!found) {
      AddError(place + ": \"type\" takes one of the words float, half, uint16, uint8, not " + Describe(output["type"]));
      return;
    }
    type = *found;
  }
  if (IsOfBrokenNode(from)) return;
  const auto folder = file_.parent_path();
  const Status status = document_.AddOutput(from, MakePath(path, folder), type);
  if (status.IsError()) AddError(place + ": " + status.GetMessage());
}

void DocumentReader::AddError(const std::string& text) { findings_.errors.push_back(file_.string() + ": " + text); }

void DocumentReader::AddNote(const std::string& text) { findings_.notes.push_back(file_.string() + ": " + text); }

bool DocumentReader::CheckObject(const json& json, const std::string& what, std::initializer_list<const char*> keys) {
  if (!json.is_object()) {
    AddError(what + " is not an object");
    return false;
  }
  for (const auto& [key, value] : json.items()) {
    const bool known = std::find(keys.begin(), keys.end(), key) != keys.end();
    if (known) continue;
    AddError(what + ": the key " + Quote(key) + " is unknown; known are " +
             JoinNames(std::vector<std::string>(keys.begin(), keys.end())));
  }
  return true;
}

bool DocumentReader::ReadString(const json& json, const std::string& what, const char* key, std::string& value) {
  if (!json.contains(key)) {
    AddError(what + ": " + Quote(key) + " is missing");
    return false;
  }
  if (!json[key].is_string() || json[key].get<std::string>().empty()) {
    AddError(what + ": " + Quote(key) + " is not a string with something in it");
    return false;
  }
  value = json[key].get<std::string>();
  return true;
}

bool DocumentReader::IsOfBrokenNode(const std::string& plug) const {
  return broken_ids_.contains(plug.substr(0, plug.rfind('.')));
}

}  // namespace ScEng
