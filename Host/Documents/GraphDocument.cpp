// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/GraphDocument.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "Host/Documents/AttributeText.h"
#include "Host/Documents/DocumentContent.h"
#include "Host/Documents/DocumentReader.h"
#include "Host/Documents/DocumentWriter.h"
#include "Host/Documents/MessageText.h"
#include "Host/Tools/Guard.h"
#include "Host/Tools/TypeGuard.h"

namespace ScEng {
namespace {

// Enough for a few misspelt ids in a large document.
constexpr std::size_t kMostComparisons = 100'000;

Status MakePlaceError(const char* what, std::size_t index, std::size_t count) {
  return Status::Error(std::string("there is no ") + what + " " + std::to_string(index) + "; the document has " +
                       std::to_string(count));
}

/// "before.plug" as "now.plug"; any other plug as it is.
void RenamePlug(std::string& plug, const std::string& before, const std::string& now) {
  const std::size_t dot = plug.rfind('.');
  if (dot == before.size() && plug.starts_with(before)) plug.replace(0, dot, now);
}

}  // namespace

DocumentObserver::~DocumentObserver() = default;
void DocumentObserver::OnNodeAdded(const std::string&) {}
void DocumentObserver::OnNodeRemoved(const std::string&) {}
void DocumentObserver::OnNodeRenamed(const std::string&, const std::string&) {}
void DocumentObserver::OnNodeChanged(const std::string&) {}
void DocumentObserver::OnAttributeChanged(const std::string&, const std::string&) {}
void DocumentObserver::OnOrderChanged() {}
void DocumentObserver::OnConnectionAdded(const DocumentConnection&) {}
void DocumentObserver::OnConnectionRemoved(const DocumentConnection&) {}
void DocumentObserver::OnOutputsChanged() {}
void DocumentObserver::OnFramesChanged() {}
void DocumentObserver::OnViewChanged() {}

GraphDocument::GraphDocument(std::shared_ptr<const NodeCatalog> catalog)
    : content_(std::make_unique<Content>(std::move(catalog))) {
  content_->comparisons_left = kMostComparisons;
}

GraphDocument::~GraphDocument() = default;

Engine& GraphDocument::GetEngine() { return content_->engine; }

// ---- Loading and saving ----

bool GraphDocument::Load(const std::filesystem::path& file, Findings& findings, const LoadOptions& options) {
  return DocumentReader(*this, file.string(), file.parent_path(), findings, options).ReadFile(file);
}

void GraphDocument::LoadText(std::string_view text, const std::filesystem::path& folder, const std::string& name,
                             Findings& findings, const LoadOptions& options) {
  DocumentReader(*this, name, folder, findings, options).ReadText(text);
}

Status GraphDocument::Save(const std::filesystem::path& file) const {
  std::string text;
  const Status status = SaveText(text);
  return status.IsError() ? Status::Error("cannot save " + QuotePath(file) + ": " + status.GetMessage())
                          : WriteWholeFile(file, text);
}

Status GraphDocument::SaveText(std::string& text) const {
  Status status;
  const Status guarded = CallGuarded("a node type", [&] { status = DocumentWriter(*this).Write(text); });
  if (guarded.IsError()) status = guarded;
  if (status.IsError()) text.clear();
  return status;
}

// ---- Nodes ----

Node* GraphDocument::AddNode(const std::string& id, const NodeType& type, Status& status) {
  const DocumentEntry* entry = CreateNode(id, type, status);
  if (entry == nullptr) return nullptr;
  content_->Tell(&DocumentObserver::OnNodeAdded, id);
  return entry->node;
}

DocumentEntry* GraphDocument::CreateNode(const std::string& id, const NodeType& type, Status& status) {
  const NodeInterface* const descriptor = content_->engine.GetCatalog().Find(type);
  if (descriptor == nullptr) {
    status = Status::Error("node " + Quote(id) + ": there is no node type [" + type.ToString() + "]");
    return nullptr;
  }
  DocumentEntry* entry = content_->AddEntry(id, status);
  if (entry == nullptr) return nullptr;
  Node* node = content_->engine.CreateNode(type, status);
  if (node == nullptr) {
    content_->ids.pop_back();
    content_->entries.erase(id);
    const std::string named = "node " + Quote(id);
    // An id may be the name of its type, which the error starts with.
    const bool is_named = status.GetMessage().starts_with(named + " ") || status.GetMessage().starts_with(named + ":");
    if (!is_named) status = Status::Error(named + ": " + status.GetMessage());
    return nullptr;
  }
  entry->node = node;
  content_->entries_by_node[node] = entry;
  const Status told = CallTypeGuarded(*descriptor, "GetAttributeVersion",
                                      [&] { entry->attribute_version = node->GetAttributeVersion(); });
  if (told.IsError()) {
    status = Status::Error("node " + Quote(id) + ": " + told.GetMessage());
    RemoveNode(id);
    return nullptr;
  }
  node->SetLabel(id);
  for (std::size_t i = 0; i < node->GetNumAttributes(); ++i) {
    Attribute* attribute = node->GetAttribute(i);
    if (attribute->GetKind() == Attribute::Kind::kString) attribute->SetFolder(content_->folder);
  }
  return entry;
}

Status GraphDocument::RemoveNode(const std::string& id) {
  Status status;
  const DocumentEntry* entry = content_->Find(id, status);
  if (entry == nullptr) return status;
  if (entry->num_connections > 0) {
    content_->RemoveConnections(
        [&](const ConnectionEntry& connection) { return connection.from == entry || connection.to == entry; });
  }
  const std::size_t outputs = content_->outputs.size();
  for (std::size_t i = outputs; i-- > 0;) {
    if (content_->output_entries[i].entry != entry) continue;
    content_->outputs.erase(content_->outputs.begin() + static_cast<std::ptrdiff_t>(i));
    content_->output_entries.erase(content_->output_entries.begin() + static_cast<std::ptrdiff_t>(i));
  }
  if (content_->outputs.size() != outputs) content_->Tell(&DocumentObserver::OnOutputsChanged);
  if (content_->view && content_->view->shown.substr(0, content_->view->shown.rfind('.')) == id) {
    content_->view->shown.clear();
    content_->Tell(&DocumentObserver::OnViewChanged);
  }
  if (Node* node = entry->node; node != nullptr) {
    std::erase_if(content_->sources, [&](const auto& source) { return source.first.first == node; });
    content_->entries_by_node.erase(node);
    content_->engine.DeleteNode(node);
  }
  const std::string removed = id;
  // Who removes many begins at the end.
  content_->ids.erase(std::prev(std::find(content_->ids.rbegin(), content_->ids.rend(), removed).base()));
  content_->entries.erase(removed);
  content_->Tell(&DocumentObserver::OnNodeRemoved, removed);
  return {};
}

Status GraphDocument::RenameNode(const std::string& id, const std::string& now) {
  Status status;
  if (content_->Find(id, status) == nullptr || id == now) return status;
  status = Content::CheckId(now);
  if (status.IsError()) return status;
  if (content_->entries.contains(now)) return Status::Error("a node with the id " + Quote(now) + " is there already");
  const std::string before = id;
  // The entry stays where it is in memory, so that what points to it holds.
  auto handle = content_->entries.extract(before);
  handle.key() = now;
  DocumentEntry& entry = content_->entries.insert(std::move(handle)).position->second;
  entry.id = now;
  if (entry.node != nullptr) entry.node->SetLabel(now);
  std::replace(content_->ids.begin(), content_->ids.end(), before, now);
  content_->RenameTakenInputs(before, now);
  for (std::size_t i = 0; i < content_->outputs.size(); ++i) {
    if (content_->output_entries[i].entry == &entry) RenamePlug(content_->outputs[i].from, before, now);
  }
  if (content_->view) RenamePlug(content_->view->shown, before, now);
  content_->Tell(&DocumentObserver::OnNodeRenamed, before, now);
  return {};
}

Status GraphDocument::MoveNode(const std::string& id, std::size_t place) {
  Status status;
  if (content_->Find(id, status) == nullptr) return status;
  auto& ids = content_->ids;
  const std::string moved = id;
  ids.erase(std::find(ids.begin(), ids.end(), moved));
  ids.insert(ids.begin() + static_cast<std::ptrdiff_t>(std::min(place, ids.size())), moved);
  content_->Tell(&DocumentObserver::OnOrderChanged);
  return {};
}

Node* GraphDocument::FindNode(const std::string& id) const {
  const DocumentEntry* entry = content_->Find(id);
  return entry == nullptr ? nullptr : entry->node;
}

bool GraphDocument::HasId(const std::string& id) const { return content_->Find(id) != nullptr; }

bool GraphDocument::IsPlaceholder(const std::string& id) const {
  const DocumentEntry* entry = content_->Find(id);
  return entry != nullptr && entry->node == nullptr;
}

std::string GraphDocument::GetId(const Node& node) const {
  const auto found = content_->entries_by_node.find(&node);
  return found == content_->entries_by_node.end() ? std::string() : found->second->id;
}

const std::vector<std::string>& GraphDocument::GetIds() const { return content_->ids; }

Status GraphDocument::SetEnabled(const std::string& id, bool enabled) {
  Status status;
  const DocumentEntry* entry = content_->Find(id, status);
  if (entry == nullptr) return status;
  if (entry->node != nullptr) {
    entry->node->SetEnabled(enabled);
  } else {
    entry->placeholder->enabled = enabled;
  }
  content_->Tell(&DocumentObserver::OnNodeChanged, id);
  return {};
}

bool GraphDocument::IsEnabled(const std::string& id) const {
  const DocumentEntry* entry = content_->Find(id);
  if (entry == nullptr) return true;
  return entry->node != nullptr ? entry->node->IsEnabled() : entry->placeholder->enabled;
}

Status GraphDocument::SetPosition(const std::string& id, const std::optional<Point>& position) {
  Status status;
  DocumentEntry* entry = content_->Find(id, status);
  if (entry == nullptr) return status;
  if (position && (!std::isfinite(position->x) || !std::isfinite(position->y))) {
    return Status::Error("node " + Quote(id) + ": a position takes 2 finite numbers (x, y)");
  }
  entry->position = position;
  content_->Tell(&DocumentObserver::OnNodeChanged, id);
  return {};
}

std::optional<Point> GraphDocument::GetPosition(const std::string& id) const {
  const DocumentEntry* entry = content_->Find(id);
  return entry == nullptr ? std::nullopt : entry->position;
}

Status GraphDocument::SetNote(const std::string& id, const std::string& note) {
  Status status;
  DocumentEntry* entry = content_->Find(id, status);
  if (entry == nullptr) return status;
  if (!IsUtf8(note)) return Status::Error("node " + Quote(id) + ": the note is not UTF-8");
  entry->note = note;
  content_->Tell(&DocumentObserver::OnNodeChanged, id);
  return {};
}

std::string GraphDocument::GetNote(const std::string& id) const {
  const DocumentEntry* entry = content_->Find(id);
  return entry == nullptr ? std::string() : entry->note;
}

// ---- Connections ----

Status GraphDocument::Connect(const std::string& from, const std::string& to, unsigned index) {
  return content_->Connect(from, to, index, false);
}

Status GraphDocument::Disconnect(const std::string& from, const std::string& to, unsigned index) {
  ConnectionEntry wanted;
  const Status status = content_->FindEnds(from, to, wanted);
  if (status.IsError()) return status;
  const std::size_t before = content_->connections.size();
  content_->RemoveConnections([&](const ConnectionEntry& connection) {
    return connection.from == wanted.from && connection.outplug == wanted.outplug && connection.to == wanted.to &&
           connection.inplug == wanted.inplug && connection.index == index;
  });
  if (content_->connections.size() != before) return {};
  return Status::Error("there is no connection from " + Quote(from) + " to " + Quote(to) + " at index " +
                       std::to_string(index));
}

std::vector<DocumentConnection> GraphDocument::GetConnections() const {
  std::vector<DocumentConnection> connections;
  connections.reserve(content_->connections.size());
  for (const ConnectionEntry& connection : content_->connections) {
    connections.push_back(Content::Describe(connection));
  }
  return connections;
}

// ---- Attributes ----

Status GraphDocument::SetAttribute(const std::string& attribute, const std::string& text,
                                   std::vector<std::string>& notes) {
  Status status;
  std::string name;
  DocumentEntry* entry = content_->FindPlugNode(attribute, name, status, NameUse::kAttribute);
  if (entry == nullptr) return status;
  if (entry->node == nullptr) {
    return Status::Error(Quote(attribute) + ": the node is of a type that is unknown here");
  }
  const Node& node = *entry->node;
  Attribute* found = node.GetAttribute(name);
  if (found == nullptr) {
    if (node.IsObsoleteAttribute(0, name.c_str())) {
      notes.push_back(Quote(attribute) + " is obsolete and ignored");
      return {};
    }
    return Status::Error(Quote(attribute) + ": " + content_->DescribeMissingAttribute(node, name));
  }
  const bool is_path = found->GetKind() == Attribute::Kind::kString &&
                       found->GetStringUse() != Attribute::StringUse::kText && !text.empty();
  if (is_path) {
    SetFile(*found, found->GetStringUse() == Attribute::StringUse::kReadPath ? MakeReadPath(text) : MakePath(text));
    content_->Tell(&DocumentObserver::OnAttributeChanged, entry->id, found->GetName());
    return {};
  }
  std::vector<std::string> own_notes;
  status = SetAttributeFromText(*found, text, own_notes);
  for (const std::string& note : own_notes) notes.push_back(Quote(attribute) + ": " + note);
  if (!status.IsError()) {
    entry->set_attributes.resize(node.GetNumAttributes());
    entry->set_attributes[found->GetId()] = true;
    content_->Tell(&DocumentObserver::OnAttributeChanged, entry->id, found->GetName());
  }
  return status.IsError() ? Status::Error(Quote(attribute) + ": " + status.GetMessage()) : status;
}

Status GraphDocument::SetAttributeValue(const std::string& attribute, const PlugValue& value,
                                        std::vector<std::string>& notes) {
  Status status;
  std::string name;
  DocumentEntry* entry = content_->FindPlugNode(attribute, name, status, NameUse::kAttribute);
  if (entry == nullptr) return status;
  if (entry->node == nullptr) {
    return Status::Error(Quote(attribute) + ": the node is of a type that is unknown here");
  }
  Attribute* found = entry->node->GetAttribute(name);
  if (found == nullptr) {
    return Status::Error(Quote(attribute) + ": " + content_->DescribeMissingAttribute(*entry->node, name));
  }
  std::vector<std::string> own_notes;
  status = SetAttributeFromValue(*found, value, own_notes);
  for (const std::string& note : own_notes) notes.push_back(Quote(attribute) + ": " + note);
  if (status.IsError()) return Status::Error(Quote(attribute) + ": " + status.GetMessage());
  entry->set_attributes.resize(entry->node->GetNumAttributes());
  entry->set_attributes[found->GetId()] = true;
  content_->Tell(&DocumentObserver::OnAttributeChanged, entry->id, found->GetName());
  return {};
}

// ---- Outputs ----

Status GraphDocument::AddOutput(const DocumentOutput& output) {
  OutputEntry found;
  Status status = content_->FindOutput(output, found);
  if (status.IsError()) return status;
  content_->outputs.push_back(output);
  content_->output_entries.push_back(std::move(found));
  content_->Tell(&DocumentObserver::OnOutputsChanged);
  return {};
}

Status GraphDocument::AddOutput(const std::string& plug, const std::filesystem::path& file,
                                std::optional<SampleType> type) {
  DocumentOutput output;
  output.from = plug;
  output.path = file.empty() ? std::string() : std::filesystem::absolute(file).string();
  output.type = type ? GetName(*type) : "auto";
  return AddOutput(output);
}

const std::vector<DocumentOutput>& GraphDocument::GetOutputs() const { return content_->outputs; }

Status GraphDocument::SetOutput(std::size_t index, const DocumentOutput& output) {
  if (index >= content_->outputs.size()) return MakePlaceError("output", index, content_->outputs.size());
  OutputEntry found;
  Status status = content_->FindOutput(output, found);
  if (status.IsError()) return status;
  content_->outputs[index] = output;
  content_->output_entries[index] = std::move(found);
  content_->Tell(&DocumentObserver::OnOutputsChanged);
  return {};
}

Status GraphDocument::RemoveOutput(std::size_t index) {
  if (index >= content_->outputs.size()) return MakePlaceError("output", index, content_->outputs.size());
  content_->outputs.erase(content_->outputs.begin() + static_cast<std::ptrdiff_t>(index));
  content_->output_entries.erase(content_->output_entries.begin() + static_cast<std::ptrdiff_t>(index));
  content_->Tell(&DocumentObserver::OnOutputsChanged);
  return {};
}

std::optional<DocumentOutput> GraphDocument::RemoveOutputs(const std::string& plug, const std::filesystem::path& file) {
  std::optional<DocumentOutput> removed;
  for (std::size_t i = content_->outputs.size(); i-- > 0;) {
    const DocumentOutput& output = content_->outputs[i];
    if (output.from != plug) continue;
    if (!removed && content_->GetFile(output).extension() == file.extension()) removed = output;
    static_cast<void>(RemoveOutput(i));
  }
  return removed;
}

void GraphDocument::SetCompression(const std::string& compression) { content_->compression = compression; }

// ---- For people and editors ----

const std::vector<DocumentFrame>& GraphDocument::GetFrames() const { return content_->frames; }

Status GraphDocument::SetFrames(std::vector<DocumentFrame> frames) {
  for (const DocumentFrame& frame : frames) {
    Status status = Content::CheckFrame(frame);
    if (status.IsError()) return status;
  }
  content_->frames = std::move(frames);
  content_->Tell(&DocumentObserver::OnFramesChanged);
  return {};
}

const std::optional<DocumentView>& GraphDocument::GetView() const { return content_->view; }

Status GraphDocument::SetView(std::optional<DocumentView> view) {
  if (view) {
    Status status = Content::CheckView(*view);
    OutputEntry shown;
    if (!status.IsError() && !view->shown.empty()) status = content_->FindImageOutput(view->shown, shown);
    if (status.IsError()) return status;
  }
  content_->view = std::move(view);
  content_->Tell(&DocumentObserver::OnViewChanged);
  return {};
}

const std::filesystem::path& GraphDocument::GetFolder() const { return content_->folder; }

const std::string& GraphDocument::GetSchema() const { return content_->schema; }

Status GraphDocument::SetSchema(const std::string& schema) {
  if (!IsUtf8(schema)) return Status::Error("\"$schema\" is not UTF-8");
  content_->schema = schema;
  return {};
}

void GraphDocument::AddObserver(DocumentObserver* observer) { content_->observers.push_back(observer); }

void GraphDocument::RemoveObserver(DocumentObserver* observer) { std::erase(content_->observers, observer); }

}  // namespace ScEng
