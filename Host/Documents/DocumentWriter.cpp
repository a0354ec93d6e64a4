// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/DocumentWriter.h"

#include <cmath>
#include <utility>

#include "Host/Documents/AttributeText.h"
#include "Host/Documents/MessageText.h"

namespace ScEng {
namespace {

constexpr int kWrittenVersion = 2;

void StartList(const char* key, std::string& text) { text += std::string(",\n  \"") + key + "\": [\n"; }

void AppendEntry(const JsonValue& entry, bool is_last, std::string& text) {
  constexpr std::size_t kIndent = 4;
  text.append(kIndent, ' ');
  AppendJson(entry, kIndent, kIndent, is_last ? 0 : 1, text);
  text += is_last ? "\n  ]" : ",\n";
}

/// Zeros of different sign are equal, and not the same.
bool HasDefault(const Attribute& attribute) {
  const double number = attribute.GetValue().GetNumber();
  const double given = attribute.GetDefault().GetNumber();
  return attribute.GetValue() == attribute.GetDefault() && std::signbit(number) == std::signbit(given);
}

JsonValue MakeObject() { return JsonValue(JsonValue::Object()); }

}  // namespace

Status DocumentWriter::Write(std::string& text) const {
  text = "{\n";
  if (!content_.schema.empty()) {
    text += "  \"$schema\": ";
    AppendJson(JsonValue(content_.schema), 2, 2, 1, text);
    text += ",\n";
  }
  text += "  \"format\": \"value-graph\",\n  \"version\": " + std::to_string(kWrittenVersion);
  Status status = WriteNodes(text);
  if (status.IsError()) return status;
  if (!content_.connections.empty()) WriteConnections(text);
  const std::size_t outputs = content_.outputs.size();
  if (outputs > 0) StartList("outputs", text);
  for (std::size_t i = 0; i < outputs; ++i) {
    const DocumentOutput& output = content_.outputs[i];
    if (!IsUtf8(output.path) || !IsUtf8(output.layer)) {
      return Status::Error("output " + Quote(output.from) + ": its path or layer is not UTF-8");
    }
    AppendEntry(MakeOutput(output), i + 1 == outputs, text);
  }
  if (!content_.frames.empty()) WriteFrames(text);
  const JsonValue view = MakeView();
  if (!view.GetObject()->empty()) {
    constexpr std::string_view kLead = "  \"view\": ";
    text += ",\n" + std::string(kLead);
    AppendJson(view, 2, kLead.size(), 0, text);
  }
  text += "\n}\n";
  return {};
}

Status DocumentWriter::WriteNodes(std::string& text) const {
  const std::size_t count = content_.ids.size();
  if (count == 0) {
    text += ",\n  \"nodes\": []";
    return {};
  }
  StartList("nodes", text);
  for (std::size_t i = 0; i < count; ++i) {
    JsonValue node = MakeObject();
    Status status = MakeNode(content_.entries.at(content_.ids[i]), node);
    if (status.IsError()) return status;
    AppendEntry(node, i + 1 == count, text);
  }
  return {};
}

Status DocumentWriter::MakeNode(const DocumentEntry& entry, JsonValue& node) const {
  const bool is_placeholder = entry.node == nullptr;
  node.Add("id", JsonValue(entry.id));
  if (is_placeholder) {
    node.Add("type", entry.placeholder->type);
  } else if (entry.gave_numbers) {
    const auto numbers = entry.node->GetNodeType().GetNumbers();
    node.Add("type", JsonValue::Numbers({numbers.begin(), numbers.end()}));
  } else {
    node.Add("type", JsonValue(FindTypeName(entry.node->GetNodeType())));
  }
  const bool is_enabled = is_placeholder ? entry.placeholder->enabled : entry.node->IsEnabled();
  if (!is_enabled || entry.gave_enabled) node.Add("enabled", JsonValue(is_enabled));
  if (is_placeholder) {
    const Placeholder& placeholder = *entry.placeholder;
    if (placeholder.attribute_version) node.Add("attributeVersion", JsonValue(*placeholder.attribute_version));
    if (placeholder.attributes) node.Add("attributes", *placeholder.attributes);
  } else {
    // Attributes are written under their current names, whatever they were read under.
    const unsigned version = entry.node->GetAttributeVersion();
    if (version != 0 || entry.gave_version) node.Add("attributeVersion", JsonValue(static_cast<double>(version)));
    JsonValue attributes = MakeObject();
    Status status = MakeAttributes(entry, attributes);
    if (status.IsError()) return status;
    if (!attributes.GetObject()->empty()) node.Add("attributes", std::move(attributes));
  }
  if (entry.position) node.Add("position", JsonValue::Numbers({entry.position->x, entry.position->y}));
  if (!entry.note.empty()) node.Add("note", JsonValue(entry.note));
  return {};
}

const std::string& DocumentWriter::FindTypeName(const NodeType& type) const {
  std::string& name = type_names_[type];
  if (name.empty()) name = content_.engine.GetCatalog().Find(type)->GetNodeFactory()->GetTypeName();
  return name;
}

Status DocumentWriter::MakeAttributes(const DocumentEntry& entry, JsonValue& attributes) {
  for (std::size_t i = 0; i < entry.node->GetNumAttributes(); ++i) {
    const Attribute& attribute = *entry.node->GetAttribute(i);
    const auto kept = std::find_if(
        entry.kept_attributes.begin(), entry.kept_attributes.end(),
        [&](const KeptAttribute& other) { return other.name == attribute.GetName() && entry.IsInForce(other); });
    if (kept != entry.kept_attributes.end()) {
      attributes.Add(kept->name, kept->value);
      continue;
    }
    const bool was_given = i < entry.gave_attributes.size() && entry.gave_attributes[i];
    if (!was_given && HasDefault(attribute)) continue;
    JsonValue value;
    const Status status = GetAttributeAsJson(attribute, value);
    if (status.IsError()) {
      return Status::Error(Quote(entry.id + "." + attribute.GetName()) + ": " + status.GetMessage());
    }
    attributes.Add(attribute.GetName(), std::move(value));
  }
  for (const KeptAttribute& kept : entry.kept_attributes) {
    if (entry.node->GetAttribute(kept.name) == nullptr) attributes.Add(kept.name, kept.value);
  }
  return {};
}

void DocumentWriter::WriteConnections(std::string& text) const {
  StartList("connections", text);
  for (const ConnectionEntry& connection : content_.connections) {
    const DocumentConnection told = GraphDocument::Content::Describe(connection);
    JsonValue entry = MakeObject();
    entry.Add("from", JsonValue(told.from));
    entry.Add("to", JsonValue(told.to));
    if (told.index != 0 || connection.gave_index) entry.Add("index", JsonValue(static_cast<double>(told.index)));
    AppendEntry(entry, &connection == &content_.connections.back(), text);
  }
}

JsonValue DocumentWriter::MakeOutput(const DocumentOutput& output) const {
  JsonValue entry = MakeObject();
  entry.Add("from", JsonValue(output.from));
  entry.Add("path", JsonValue(output.path));
  for (const OutputWords& known : GetOutputWords()) {
    const std::string& word = output.*known.word;
    if (!word.empty()) entry.Add(known.key, JsonValue(word));
  }
  if (!output.layer.empty()) entry.Add("layer", JsonValue(output.layer));
  return entry;
}

void DocumentWriter::WriteFrames(std::string& text) const {
  StartList("frames", text);
  for (const DocumentFrame& frame : content_.frames) {
    JsonValue entry = MakeObject();
    if (!frame.title.empty()) entry.Add("title", JsonValue(frame.title));
    entry.Add("box", JsonValue::Numbers({frame.box.x, frame.box.y, frame.box.width, frame.box.height}));
    if (!frame.color.empty()) entry.Add("color", JsonValue(frame.color));
    AppendEntry(entry, &frame == &content_.frames.back(), text);
  }
}

JsonValue DocumentWriter::MakeView() const {
  JsonValue view = MakeObject();
  if (!content_.view) return view;
  if (content_.view->center) {
    view.Add("center", JsonValue::Numbers({content_.view->center->x, content_.view->center->y}));
  }
  if (content_.view->zoom) view.Add("zoom", JsonValue(*content_.view->zoom));
  if (!content_.view->shown.empty()) view.Add("shown", JsonValue(content_.view->shown));
  return view;
}

}  // namespace ScEng
