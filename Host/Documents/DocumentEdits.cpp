// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/DocumentEdits.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <utility>

#include "Host/Documents/DocumentContent.h"
#include "Host/Documents/MessageText.h"

namespace ScEng {
namespace {

template <class Iterator>
Iterator At(Iterator begin, std::size_t place) {
  return begin + static_cast<std::ptrdiff_t>(place);
}

Status CheckPlace(const char* what, std::size_t place, std::size_t count) {
  if (place < count) return {};
  return Status::Error(std::string("there is no place ") + std::to_string(place) + " among " + std::to_string(count) +
                       " " + what);
}

std::vector<double> GetNumbers(const PlugValue& value) {
  switch (value.GetType()) {
    case PlugType::kNumber: return {value.GetNumber()};
    case PlugType::kPoint: return {value.GetPoint().x, value.GetPoint().y};
    case PlugType::kFrame: {
      const Frame frame = value.GetFrame();
      return {frame.x, frame.y, frame.width, frame.height};
    }
    case PlugType::kColor: {
      const Rgbo color = value.GetColor();
      return {color.red, color.green, color.blue, color.opacity};
    }
    default: return {};
  }
}

/// The value comes from an attribute of this kind, so that nothing in it is refused.
void RestoreValue(Attribute& attribute, const PlugValue& value) {
  const std::vector<double> numbers = GetNumbers(value);
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag: attribute.SetFlag(value.GetFlag(), false); break;
    case Attribute::Kind::kNumber: attribute.SetNumber(numbers[0], false); break;
    case Attribute::Kind::kString: attribute.SetString(value.GetText(), false); break;
    case Attribute::Kind::kPoint: attribute.SetPoint(numbers[0], numbers[1], false); break;
    case Attribute::Kind::kFrame: attribute.SetFrame(numbers[0], numbers[1], numbers[2], numbers[3], false); break;
    case Attribute::Kind::kColor: attribute.SetRgbo(numbers[0], numbers[1], numbers[2], numbers[3], false); break;
    case Attribute::Kind::kChoice:
      // A default may be no word of the list, and is taken back all the same.
      if (!attribute.SetChoice(value.GetText(), false)) attribute.ResetToDefault();
      break;
  }
}

bool GetBit(const std::vector<bool>& bits, std::size_t index) { return index < bits.size() && bits[index]; }

void SetBit(std::vector<bool>& bits, std::size_t index, std::size_t count, bool bit) {
  // None at all stands for no attribute, as it does for those who only read.
  if (bits.empty() && !bit) return;
  bits.resize(count);
  bits[index] = bit;
}

}  // namespace

struct NodeState {
  NodeType type;
  /// For a placeholder, which has no other values.
  std::optional<Placeholder> placeholder;
  bool enabled = true;
  std::vector<PlugValue> values;
  bool has_lost_connection = false;
  unsigned attribute_version = 0;
  std::optional<Point> position;
  std::string note;
  bool gave_numbers = false;
  bool gave_enabled = false;
  bool gave_version = false;
  std::vector<bool> gave_attributes;
  std::vector<bool> set_attributes;
  std::vector<KeptAttribute> kept_attributes;
};

bool IsSameValue(const PlugValue& one, const PlugValue& other) {
  if (one.GetType() != other.GetType()) return false;
  const std::vector<double> left = GetNumbers(one);
  const std::vector<double> right = GetNumbers(other);
  if (left.empty()) return one == other;
  return std::equal(left.begin(), left.end(), right.begin(), [](double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
  });
}

DocumentEdits::DocumentEdits(GraphDocument& document) : document_(document) {}

// ---- Nodes ----

std::shared_ptr<const NodeState> DocumentEdits::CopyNode(const std::string& id) const {
  const DocumentEntry* entry = document_.content_->Find(id);
  if (entry == nullptr) return nullptr;
  auto state = std::make_shared<NodeState>();
  if (entry->node == nullptr) {
    state->placeholder = *entry->placeholder;
  } else {
    const Node& node = *entry->node;
    state->type = node.GetNodeType();
    state->enabled = node.IsEnabled();
    state->values.reserve(node.GetNumAttributes());
    for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
      state->values.push_back(node.GetAttribute(i)->GetValue());
    }
  }
  state->has_lost_connection = entry->has_lost_connection;
  state->attribute_version = entry->attribute_version;
  state->position = entry->position;
  state->note = entry->note;
  state->gave_numbers = entry->gave_numbers;
  state->gave_enabled = entry->gave_enabled;
  state->gave_version = entry->gave_version;
  state->gave_attributes = entry->gave_attributes;
  state->set_attributes = entry->set_attributes;
  state->kept_attributes = entry->kept_attributes;
  return state;
}

Status DocumentEdits::InsertNode(const std::string& id, const NodeState& state, std::size_t place) {
  GraphDocument::Content& content = *document_.content_;
  Status status = CheckPlace("nodes", place, content.ids.size() + 1);
  if (status.IsError()) return status;
  DocumentEntry* entry =
      state.placeholder ? content.AddEntry(id, status) : document_.CreateNode(id, state.type, status);
  if (entry == nullptr) return status;
  if (state.placeholder) {
    entry->placeholder = std::make_unique<Placeholder>(*state.placeholder);
  } else {
    const std::size_t count = std::min(state.values.size(), entry->node->GetNumAttributes());
    for (std::size_t i = 0; i < count; ++i) {
      Attribute& attribute = *entry->node->GetAttribute(i);
      if (!IsSameValue(attribute.GetValue(), state.values[i])) RestoreValue(attribute, state.values[i]);
    }
    if (!state.enabled) entry->node->SetEnabled(false);
  }
  entry->has_lost_connection = state.has_lost_connection;
  entry->attribute_version = state.attribute_version;
  entry->position = state.position;
  entry->note = state.note;
  entry->gave_numbers = state.gave_numbers;
  entry->gave_enabled = state.gave_enabled;
  entry->gave_version = state.gave_version;
  entry->gave_attributes = state.gave_attributes;
  entry->set_attributes = state.set_attributes;
  entry->kept_attributes = state.kept_attributes;
  std::rotate(At(content.ids.begin(), place), std::prev(content.ids.end()), content.ids.end());
  content.Tell(&DocumentObserver::OnNodeAdded, id);
  return {};
}

std::optional<std::size_t> DocumentEdits::FindPlace(const std::string& id) const {
  const std::vector<std::string>& ids = document_.content_->ids;
  const auto found = std::find(ids.rbegin(), ids.rend(), id);
  if (found == ids.rend()) return std::nullopt;
  return static_cast<std::size_t>(std::distance(found, ids.rend())) - 1;
}

// ---- Attributes ----

std::optional<AttributeState> DocumentEdits::GetAttribute(const std::string& id, std::size_t attribute) const {
  const DocumentEntry* entry = document_.content_->Find(id);
  if (entry == nullptr || entry->node == nullptr || attribute >= entry->node->GetNumAttributes()) return std::nullopt;
  return AttributeState{entry->node->GetAttribute(attribute)->GetValue(), GetBit(entry->gave_attributes, attribute),
                        GetBit(entry->set_attributes, attribute)};
}

Status DocumentEdits::SetAttribute(const std::string& id, std::size_t attribute, const AttributeState& state) {
  Status status;
  DocumentEntry* entry = document_.content_->Find(id, status);
  if (entry == nullptr) return status;
  const std::size_t count = entry->node == nullptr ? 0 : entry->node->GetNumAttributes();
  status = CheckPlace("attributes", attribute, count);
  if (status.IsError()) return status;
  Attribute& restored = *entry->node->GetAttribute(attribute);
  if (restored.GetPlugType() != state.value.GetType()) {
    return Status::Error(Quote(id + "." + restored.GetName()) + " holds no " +
                         PlugType::GetName(state.value.GetType()));
  }
  SetBit(entry->gave_attributes, attribute, count, state.was_given);
  SetBit(entry->set_attributes, attribute, count, state.was_set);
  RestoreValue(restored, state.value);
  document_.content_->Tell(&DocumentObserver::OnAttributeChanged, entry->id, restored.GetName());
  return {};
}

void DocumentEdits::TellAttributeChanged(const std::string& id, const std::string& attribute) {
  document_.content_->Tell(&DocumentObserver::OnAttributeChanged, id, attribute);
}

void DocumentEdits::TellNodeChanged(const std::string& id) {
  document_.content_->Tell(&DocumentObserver::OnNodeChanged, id);
}

// ---- Connections ----

std::size_t DocumentEdits::GetNumConnections() const { return document_.content_->connections.size(); }

ConnectionState DocumentEdits::GetConnection(std::size_t place) const {
  const ConnectionEntry& connection = document_.content_->connections.at(place);
  return {GraphDocument::Content::Describe(connection), connection.gave_index};
}

std::vector<std::size_t> DocumentEdits::FindConnections(const std::unordered_set<std::string>& ids) const {
  GraphDocument::Content& content = *document_.content_;
  std::unordered_set<const DocumentEntry*> entries;
  for (const std::string& id : ids) {
    const DocumentEntry* entry = content.Find(id);
    if (entry != nullptr && entry->num_connections > 0) entries.insert(entry);
  }
  std::vector<std::size_t> places;
  if (entries.empty()) return places;
  for (std::size_t i = 0; i < content.connections.size(); ++i) {
    const ConnectionEntry& connection = content.connections[i];
    if (entries.contains(connection.from) || entries.contains(connection.to)) places.push_back(i);
  }
  return places;
}

std::optional<std::size_t> DocumentEdits::FindConnection(const DocumentConnection& connection) const {
  GraphDocument::Content& content = *document_.content_;
  ConnectionEntry wanted;
  if (content.FindEnds(connection.from, connection.to, wanted).IsError()) return std::nullopt;
  for (std::size_t i = content.connections.size(); i-- > 0;) {
    const ConnectionEntry& other = content.connections[i];
    const bool is_wanted = other.from == wanted.from && other.outplug == wanted.outplug && other.to == wanted.to &&
                           other.inplug == wanted.inplug && other.index == connection.index;
    if (is_wanted) return i;
  }
  return std::nullopt;
}

Status DocumentEdits::InsertConnection(std::size_t place, const ConnectionState& state) {
  GraphDocument::Content& content = *document_.content_;
  ConnectionEntry connection;
  Status status = CheckPlace("connections", place, content.connections.size() + 1);
  if (!status.IsError()) status = content.FindEnds(state.connection.from, state.connection.to, connection);
  if (status.IsError()) return status;
  connection.index = state.connection.index;
  connection.gave_index = state.gave_index;
  return content.InsertConnection(connection, place);
}

Status DocumentEdits::RemoveConnection(std::size_t place) {
  GraphDocument::Content& content = *document_.content_;
  const Status status = CheckPlace("connections", place, content.connections.size());
  if (status.IsError()) return status;
  const DocumentConnection gone = GraphDocument::Content::Describe(content.connections[place]);
  content.Release(content.connections[place]);
  content.connections.erase(At(content.connections.begin(), place));
  content.Tell(&DocumentObserver::OnConnectionRemoved, gone);
  return {};
}

// ---- Outputs, frames and the view ----

Status DocumentEdits::InsertOutput(std::size_t place, const DocumentOutput& output) {
  GraphDocument::Content& content = *document_.content_;
  OutputEntry found;
  Status status = CheckPlace("outputs", place, content.outputs.size() + 1);
  if (!status.IsError()) status = content.FindOutput(output, found);
  if (status.IsError()) return status;
  content.outputs.insert(At(content.outputs.begin(), place), output);
  content.output_entries.insert(At(content.output_entries.begin(), place), std::move(found));
  content.Tell(&DocumentObserver::OnOutputsChanged);
  return {};
}

Status DocumentEdits::InsertFrame(std::size_t place, const DocumentFrame& frame) {
  GraphDocument::Content& content = *document_.content_;
  Status status = CheckPlace("frames", place, content.frames.size() + 1);
  if (!status.IsError()) status = GraphDocument::Content::CheckFrame(frame);
  if (status.IsError()) return status;
  content.frames.insert(At(content.frames.begin(), place), frame);
  content.Tell(&DocumentObserver::OnFramesChanged);
  return {};
}

Status DocumentEdits::SetFrame(std::size_t place, const DocumentFrame& frame) {
  GraphDocument::Content& content = *document_.content_;
  Status status = CheckPlace("frames", place, content.frames.size());
  if (!status.IsError()) status = GraphDocument::Content::CheckFrame(frame);
  if (status.IsError()) return status;
  content.frames[place] = frame;
  content.Tell(&DocumentObserver::OnFramesChanged);
  return {};
}

Status DocumentEdits::RemoveFrame(std::size_t place) {
  GraphDocument::Content& content = *document_.content_;
  const Status status = CheckPlace("frames", place, content.frames.size());
  if (status.IsError()) return status;
  content.frames.erase(At(content.frames.begin(), place));
  content.Tell(&DocumentObserver::OnFramesChanged);
  return {};
}

Status DocumentEdits::SetShown(const std::string& plug) {
  std::optional<DocumentView> view = document_.GetView();
  if (!view && plug.empty()) return {};
  if (!view) view.emplace();
  view->shown = plug;
  return document_.SetView(std::move(view));
}

void DocumentEdits::SetFolder(const std::filesystem::path& folder) {
  GraphDocument::Content& content = *document_.content_;
  if (content.folder == folder) return;
  content.folder = folder;
  for (auto& [id, entry] : content.entries) {
    if (entry.node == nullptr) continue;
    for (std::size_t i = 0; i < entry.node->GetNumAttributes(); ++i) {
      Attribute& attribute = *entry.node->GetAttribute(i);
      if (attribute.GetKind() != Attribute::Kind::kString) continue;
      attribute.SetFolder(folder);
      // What was read from the file of that name before is out of date.
      const bool is_path = attribute.GetStringUse() != Attribute::StringUse::kText;
      if (is_path && !attribute.GetValue().GetText().empty()) entry.node->NotifyChanged();
    }
  }
}

}  // namespace ScEng
