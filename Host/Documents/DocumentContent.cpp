// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/DocumentContent.h"

#include <algorithm>
#include <cmath>

#include "Host/Documents/MessageText.h"
#include "Host/Tools/NodeLibrary.h"

namespace ScEng {
namespace {

constexpr std::size_t kLongestId = 200;
// Longer texts are not misspelt ids.
constexpr std::size_t kLongestMisspelt = 40;

std::vector<std::string> NamesOf(const std::vector<PlugRecord>& plugs) {
  std::vector<std::string> names;
  names.reserve(plugs.size());
  for (const PlugRecord& plug : plugs) names.push_back(plug.name);
  return names;
}

bool HasInplug(const Node& node, const std::string& name) {
  const auto& plugs = node.GetInplugs();
  return std::any_of(plugs.begin(), plugs.end(), [&](const PlugRecord& plug) { return plug.name == name; });
}

bool TakesMany(const Node& node, const std::string& inplug) {
  const int index = node.GetInplugIndex(inplug);
  return index >= 0 && node.GetInplugs()[static_cast<std::size_t>(index)].connections == PlugRecord::kAnyNumber;
}

std::string KeyOfInput(const ConnectionEntry& connection) {
  return connection.to->id + "." + connection.inplug + " " + std::to_string(connection.index);
}

Status MakeTakenError(const ConnectionEntry& connection) {
  return Status::Error("input " + Quote(connection.inplug) + " is connected already at index " +
                       std::to_string(connection.index));
}

bool InvolvesPlaceholder(const ConnectionEntry& connection) {
  return connection.from->node == nullptr || connection.to->node == nullptr;
}

}  // namespace

bool DocumentEntry::IsInForce(const KeptAttribute& kept) const {
  const Attribute* attribute = node == nullptr ? nullptr : node->GetAttribute(kept.name);
  if (attribute == nullptr) return true;
  const std::size_t place = attribute->GetId();
  const bool was_set = place < set_attributes.size() && set_attributes[place];
  return !was_set && attribute->GetValue() == attribute->GetDefault();
}

DocumentEntry* GraphDocument::Content::Find(const std::string& id) {
  const auto found = entries.find(id);
  return found == entries.end() ? nullptr : &found->second;
}

DocumentEntry* GraphDocument::Content::Find(const std::string& id, Status& status) {
  DocumentEntry* entry = Find(id);
  if (entry != nullptr) return entry;
  status = Status::Error("there is no node " + Quote(id) + SuggestNode(id));
  return nullptr;
}

DocumentEntry* GraphDocument::Content::FindPlugNode(const std::string& plug, std::string& name, Status& status,
                                                    NameUse use) {
  const std::size_t dot = plug.rfind('.');
  if (dot == std::string::npos || dot == 0 || dot + 1 == plug.size()) {
    status = Status::Error(Quote(plug) + " is not of the form NODE.NAME" + SuggestPlug(plug, use));
    return nullptr;
  }
  name = plug.substr(dot + 1);
  return Find(plug.substr(0, dot), status);
}

Status GraphDocument::Content::FindEnds(const std::string& from, const std::string& to, ConnectionEntry& connection) {
  const Status status = FindSource(from, connection);
  return status.IsError() ? status : FindTarget(to, connection);
}

Status GraphDocument::Content::FindSource(const std::string& from, ConnectionEntry& connection) {
  Status status;
  const DocumentEntry* source = FindPlugNode(from, connection.outplug, status);
  if (source == nullptr) return status;
  if (source->node != nullptr && source->node->GetOutplugIndex(connection.outplug) < 0) {
    const Node& node = *source->node;
    return Status::Error(DescribeMissingPlug(node, "output", connection.outplug, NamesOf(node.GetOutplugs())));
  }
  connection.from = source;
  return {};
}

Status GraphDocument::Content::FindTarget(const std::string& to, ConnectionEntry& connection) {
  Status status;
  const DocumentEntry* target = FindPlugNode(to, connection.inplug, status);
  if (target == nullptr) return status;
  connection.to = target;
  if (target->node != nullptr && !HasInplug(*target->node, connection.inplug)) {
    const Node& node = *target->node;
    const std::string current = node.TranslateAttributeName(target->attribute_version, connection.inplug);
    if (!HasInplug(node, current)) {
      return Status::Error(
          DescribeMissingPlug(node, "input or attribute", connection.inplug, NamesOf(node.GetInplugs())));
    }
    connection.inplug = current;
  }
  return {};
}

Status GraphDocument::Content::Connect(const std::string& from, const std::string& to, unsigned index,
                                       bool gave_index) {
  ConnectionEntry connection;
  const Status status = FindEnds(from, to, connection);
  if (status.IsError()) return status;
  connection.index = index;
  connection.gave_index = gave_index;
  return Connect(connection);
}

Status GraphDocument::Content::Connect(const ConnectionEntry& connection) {
  return InsertConnection(connection, connections.size());
}

Status GraphDocument::Content::InsertConnection(const ConnectionEntry& connection, std::size_t place) {
  const unsigned index = connection.index;
  if (InvolvesPlaceholder(connection)) {
    if (connection.to->node != nullptr && index != 0 && !TakesMany(*connection.to->node, connection.inplug)) {
      return Status::Error("input " + Quote(connection.inplug) + " takes one connection, so its index is 0, not " +
                           std::to_string(index));
    }
    // Only where the engine has a connection at this input too is it worth looking for the same index.
    const bool is_taken =
        taken_inputs.contains(KeyOfInput(connection)) ||
        (connection.to->node != nullptr && engine.IsConnected(connection.to->node, connection.inplug) &&
         std::any_of(connections.begin(), connections.end(), [&](const ConnectionEntry& other) {
           return other.to == connection.to && other.index == index && other.inplug == connection.inplug;
         }));
    if (is_taken) return MakeTakenError(connection);
    taken_inputs.insert(KeyOfInput(connection));
  } else {
    if (!taken_inputs.empty() && taken_inputs.contains(KeyOfInput(connection))) {
      return MakeTakenError(connection);
    }
    const Status status =
        engine.Connect(connection.from->node, connection.outplug, 0, connection.to->node, connection.inplug, index);
    if (status.IsError()) return status;
  }
  connections.insert(connections.begin() + static_cast<std::ptrdiff_t>(place), connection);
  // The ends are entries of this document, which a connection only looks at.
  ++Find(connection.from->id)->num_connections;
  ++Find(connection.to->id)->num_connections;
  if (!observers.empty()) Tell(&DocumentObserver::OnConnectionAdded, Describe(connection));
  return {};
}

void GraphDocument::Content::Release(const ConnectionEntry& connection) {
  if (InvolvesPlaceholder(connection)) {
    taken_inputs.erase(KeyOfInput(connection));
  } else {
    engine.DisconnectNodes(connection.from->node, connection.outplug, 0, connection.to->node, connection.inplug,
                           connection.index);
  }
  --Find(connection.from->id)->num_connections;
  --Find(connection.to->id)->num_connections;
}

void GraphDocument::Content::RemoveConnections(const std::function<bool(const ConnectionEntry&)>& is_gone) {
  std::vector<DocumentConnection> gone;
  std::erase_if(connections, [&](const ConnectionEntry& connection) {
    if (!is_gone(connection)) return false;
    Release(connection);
    gone.push_back(Describe(connection));
    return true;
  });
  for (const DocumentConnection& connection : gone) Tell(&DocumentObserver::OnConnectionRemoved, connection);
}

Status GraphDocument::Content::FindOutput(const DocumentOutput& output, OutputEntry& found) {
  const Status status = CheckOutput(output);
  return status.IsError() ? status : FindImageOutput(output.from, found);
}

Status GraphDocument::Content::CheckOutput(const DocumentOutput& output) const {
  for (const OutputWords& known : GetOutputWords()) {
    const std::string& word = output.*known.word;
    if (word.empty() || std::find(known.words.begin(), known.words.end(), word) != known.words.end()) continue;
    return Status::Error("\"" + std::string(known.key) + "\" takes one of the words " + JoinNames(known.words) +
                         ", not " + Quote(word) + SuggestName(word, known.words));
  }
  if (output.path.empty()) return Status::Error("\"path\" is empty");
  if (output.path.find('\0') != std::string::npos) return Status::Error("\"path\" cannot hold the character 0");
  return {};
}

Status GraphDocument::Content::FindImageOutput(const std::string& plug, OutputEntry& found) {
  Status status;
  found.entry = FindPlugNode(plug, found.plug, status, NameUse::kOutput);
  if (found.entry == nullptr) return status;
  found.outplug = 0;
  if (found.entry->node == nullptr) return {};
  const Node& node = *found.entry->node;
  const int outplug = node.GetOutplugIndex(found.plug);
  if (outplug < 0) {
    return Status::Error(Quote(plug) + ": " +
                         DescribeMissingPlug(node, "output", found.plug, NamesOf(node.GetOutplugs())));
  }
  found.outplug = static_cast<unsigned>(outplug);
  const unsigned type = node.GetOutplugs()[found.outplug].type;
  if (type == PlugType::kImage) return {};
  return Status::Error(Quote(plug) + ": it delivers a " + PlugType::GetName(type) + ", not an image");
}

std::string GraphDocument::Content::DescribeUnknownType(const JsonValue& type) const {
  const std::string* name = type.GetText();
  if (name == nullptr) return "there is no node type " + FormatJsonLine(type, kLongestMisspelt);
  std::string text = "there is no node type " + Quote(*name);
  const std::size_t comparisons = 2 * engine.GetCatalog().GetDescriptors().size();
  if (name->size() > kLongestMisspelt || comparisons_left < comparisons) return text;
  comparisons_left -= comparisons;
  // A display name is not a type name, but says which type is meant.
  const NodeInterface* meant = engine.GetCatalog().FindWritten(*name);
  const std::string close =
      meant != nullptr ? meant->GetNodeFactory()->GetTypeName() : engine.GetCatalog().Suggest(*name);
  return close.empty() ? text : text + "; the closest is " + close;
}

DocumentEntry* GraphDocument::Content::AddEntry(const std::string& id, Status& status) {
  status = CheckId(id);
  if (!status.IsError() && entries.contains(id)) {
    status = Status::Error("a node with the id " + Quote(id) + " is there already");
  }
  if (status.IsError()) return nullptr;
  DocumentEntry& entry = entries[id];
  entry.id = id;
  ids.push_back(id);
  return &entry;
}

void GraphDocument::Content::RenameTakenInputs(const std::string& before, const std::string& now) {
  std::vector<std::string> renamed;
  std::erase_if(taken_inputs, [&](const std::string& key) {
    const bool is_of_node = key.starts_with(before) && key.rfind('.') == before.size();
    if (is_of_node) renamed.push_back(now + key.substr(before.size()));
    return is_of_node;
  });
  taken_inputs.insert(renamed.begin(), renamed.end());
}

std::filesystem::path GraphDocument::Content::GetFile(const DocumentOutput& output) const {
  return MakePath(output.path, folder);
}

bool GraphDocument::Content::IsFed(const DocumentEntry& entry, const std::string& attribute) const {
  if (entry.node != nullptr && engine.IsConnected(entry.node, attribute)) return true;
  return !taken_inputs.empty() && taken_inputs.contains(entry.id + "." + attribute + " 0");
}

DocumentConnection GraphDocument::Content::Describe(const ConnectionEntry& connection) {
  return {connection.from->id + "." + connection.outplug, connection.to->id + "." + connection.inplug,
          connection.index};
}

Status GraphDocument::Content::CheckId(std::string_view id) {
  const bool is_short = id.size() <= 4 * kLongestId && CountCodePoints(id) <= kLongestId;
  const bool is_id = !id.empty() && is_short && IsUtf8(id) && !HasControlCharacter(id) && id.find('=') == id.npos;
  if (is_id) return {};
  return Status::Error(Quote(id) + " is not an id; an id has 1 to " + std::to_string(kLongestId) +
                       " characters, none of them a control character or \"=\"");
}

Status GraphDocument::Content::CheckFrame(const DocumentFrame& frame) {
  const Frame& box = frame.box;
  if (!std::isfinite(box.x) || !std::isfinite(box.y) || !std::isfinite(box.width) || !std::isfinite(box.height)) {
    return Status::Error("\"box\" takes 4 finite numbers (x, y, width, height)");
  }
  if (!IsUtf8(frame.title)) return Status::Error("\"title\" is not UTF-8");
  const std::string& color = frame.color;
  const bool is_color =
      color.size() == 7 && color[0] == '#' && color.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
  if (color.empty() || is_color) return {};
  return Status::Error("\"color\" takes a colour of the form \"#rrggbb\", not " + Quote(color));
}

Status GraphDocument::Content::CheckView(const DocumentView& view) {
  if (view.center && (!std::isfinite(view.center->x) || !std::isfinite(view.center->y))) {
    return Status::Error("\"center\" takes 2 finite numbers (x, y)");
  }
  if (view.zoom && (!std::isfinite(*view.zoom) || *view.zoom <= 0.0)) {
    return Status::Error("\"zoom\" takes a number greater than 0");
  }
  return {};
}

const std::vector<OutputWords>& GetOutputWords() {
  static const std::vector<OutputWords> kWords{
      {"type", &DocumentOutput::type, {"auto", "float", "half", "uint16", "uint8", "int16"}},
      {"samples", &DocumentOutput::samples, {"unit", "stored"}},
      {"opacity", &DocumentOutput::opacity, {"auto", "keep", "drop"}},
      {"metadata", &DocumentOutput::metadata, {"keep", "strip"}}};
  return kWords;
}

}  // namespace ScEng
