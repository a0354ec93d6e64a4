// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/EditSession.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "Host/Editing/Names.h"
#include "Host/Editing/SessionState.h"

namespace ScEng {
namespace {

std::string NameConnection(const DocumentConnection& connection) { return connection.from + " to " + connection.to; }

std::string NameOutput(const DocumentOutput& output) { return output.from + " to " + output.path; }

std::string NameFrame(const DocumentFrame& frame) {
  return frame.title.empty() ? "frame" : "frame \"" + frame.title + "\"";
}

}  // namespace

void EditObserver::OnHistoryChanged() {}

EditSession::EditSession(std::shared_ptr<const NodeCatalog> catalog, std::filesystem::path state_folder)
    : implementation_(std::make_unique<Implementation>(std::move(catalog), std::move(state_folder))) {}

EditSession::~EditSession() = default;

GraphDocument& EditSession::GetDocument() { return *implementation_->document; }

const GraphDocument& EditSession::GetDocument() const { return *implementation_->document; }

const std::shared_ptr<const NodeCatalog>& EditSession::GetCatalog() const { return implementation_->catalog; }

const std::filesystem::path& EditSession::GetFile() const { return implementation_->file; }

void EditSession::AddObserver(EditObserver* observer) {
  implementation_->observers.push_back(observer);
  implementation_->document->AddObserver(observer);
}

void EditSession::RemoveObserver(EditObserver* observer) {
  std::erase(implementation_->observers, observer);
  implementation_->document->RemoveObserver(observer);
}

// ---- Nodes ----

Status EditSession::AddNode(const NewNode& node, std::string* id) {
  std::string made;
  const Status status =
      implementation_->Run("Add " + implementation_->GetTypeName(node.type),
                           [&](Transaction& transaction) { return implementation_->AddNode(transaction, node, made); });
  if (id != nullptr && !status.IsError()) *id = made;
  return status;
}

Status EditSession::RemoveNodes(const std::vector<std::string>& ids) {
  return implementation_->Run("Remove " + NameNodes(ids), [&](Transaction& transaction) {
    const Status status = implementation_->CheckNodes(ids);
    return status.IsError() ? status : transaction.RemoveNodes({ids.begin(), ids.end()});
  });
}

Status EditSession::RenameNode(const std::string& id, const std::string& now) {
  return implementation_->Run("Rename " + id + " to " + now,
                              [&](Transaction& transaction) { return transaction.RenameNode(id, now); });
}

Status EditSession::SetEnabled(const std::vector<std::string>& ids, bool enabled) {
  return implementation_->Run((enabled ? "Enable " : "Disable ") + NameNodes(ids), [&](Transaction& transaction) {
    Status status = implementation_->CheckNodes(ids);
    for (std::size_t i = 0; i < ids.size() && !status.IsError(); ++i) status = transaction.SetEnabled(ids[i], enabled);
    return status;
  });
}

Status EditSession::SetNote(const std::string& id, const std::string& note) {
  return implementation_->Run("Edit note of " + id,
                              [&](Transaction& transaction) { return transaction.SetNote(id, note); });
}

Status EditSession::MoveNode(const std::string& id, std::size_t place) {
  return implementation_->Run("Reorder " + id,
                              [&](Transaction& transaction) { return transaction.MoveNode(id, place); });
}

Status EditSession::SetPositions(const std::vector<Placement>& positions) {
  const std::string name = positions.size() == 1 ? positions[0].id : std::to_string(positions.size()) + " nodes";
  return implementation_->Run("Move " + name, [&](Transaction& transaction) {
    Status status;
    for (std::size_t i = 0; i < positions.size() && !status.IsError(); ++i) {
      status = transaction.SetPosition(positions[i].id, positions[i].position);
    }
    return status;
  });
}

// ---- Connections ----

Status EditSession::Connect(const DocumentConnection& connection) {
  return implementation_->Run("Connect " + NameConnection(connection), [&](Transaction& transaction) {
    return transaction.Connect(ConnectionState{connection, false});
  });
}

Status EditSession::Disconnect(const DocumentConnection& connection) {
  return implementation_->Run("Disconnect " + connection.from + " from " + connection.to,
                              [&](Transaction& transaction) {
                                std::size_t place = 0;
                                const Status status = implementation_->FindConnection(connection, place);
                                return status.IsError() ? status : transaction.RemoveConnection(place);
                              });
}

// ---- Attributes ----

Status EditSession::SetAttribute(const std::string& attribute, const std::string& text,
                                 std::vector<std::string>* notes) {
  return implementation_->Run("Set " + attribute, [&](Transaction& transaction) {
    std::vector<std::string> own_notes;
    GraphDocument& document = *implementation_->document;
    const std::string id = GetNodeOfPlug(attribute);
    const Node* node = document.FindNode(id);
    const Attribute* found = node == nullptr ? nullptr : node->GetAttribute(GetNameOfPlug(attribute));
    const auto set = [&] {
      const bool is_path = found != nullptr && found->GetKind() == Attribute::Kind::kString;
      return is_path ? document.SetAttributeValue(attribute, PlugValue(text), own_notes)
                     : document.SetAttribute(attribute, text, own_notes);
    };
    const Status status = found == nullptr ? set() : transaction.ChangeAttribute(id, found->GetId(), set);
    if (notes != nullptr) notes->insert(notes->end(), own_notes.begin(), own_notes.end());
    return status;
  });
}

Status EditSession::SetAttributes(const std::vector<AttributeValue>& values, std::vector<std::string>* notes) {
  const std::string name = values.size() == 1 ? values[0].attribute : std::to_string(values.size()) + " attributes";
  return implementation_->Run("Set " + name, [&](Transaction& transaction) {
    std::vector<std::string> own_notes;
    GraphDocument& document = *implementation_->document;
    Status status;
    for (std::size_t i = 0; i < values.size() && !status.IsError(); ++i) {
      const std::string& attribute = values[i].attribute;
      const std::string id = GetNodeOfPlug(attribute);
      const Node* node = document.FindNode(id);
      const Attribute* found = node == nullptr ? nullptr : node->GetAttribute(GetNameOfPlug(attribute));
      const auto set = [&] { return document.SetAttributeValue(attribute, values[i].value, own_notes); };
      status = found == nullptr ? set() : transaction.ChangeAttribute(id, found->GetId(), set);
    }
    if (notes != nullptr) notes->insert(notes->end(), own_notes.begin(), own_notes.end());
    return status;
  });
}

Status EditSession::Watch(const std::vector<std::string>& ids) {
  Implementation& state = *implementation_;
  const Status status = ids.empty() ? Status() : state.CheckNodes(ids);
  if (status.IsError()) return status;
  state.watches.clear();
  for (const std::string& id : ids) {
    Node* node = state.document->FindNode(id);
    if (node == nullptr) continue;
    state.watches.push_back(std::make_unique<AttributeWatch>(
        *state.document, *node, [&state] { return state.IsBusy(); },
        [&state](const std::string& name, Edits edits) { state.TakeChanges(name, std::move(edits)); }));
  }
  return {};
}

// ---- Outputs, frames and the view ----

Status EditSession::AddOutput(const DocumentOutput& output) {
  return implementation_->Run("Add output " + NameOutput(output),
                              [&](Transaction& transaction) { return transaction.AddOutput(output); });
}

Status EditSession::SetOutput(std::size_t index, const DocumentOutput& output) {
  return implementation_->Run("Change output " + NameOutput(output),
                              [&](Transaction& transaction) { return transaction.SetOutput(index, output); });
}

Status EditSession::RemoveOutput(std::size_t index) {
  const auto& outputs = implementation_->document->GetOutputs();
  const std::string name = index < outputs.size() ? NameOutput(outputs[index]) : std::string();
  return implementation_->Run("Remove output " + name,
                              [&](Transaction& transaction) { return transaction.RemoveOutput(index); });
}

Status EditSession::AddFrame(const DocumentFrame& frame) {
  return implementation_->Run("Add " + NameFrame(frame),
                              [&](Transaction& transaction) { return transaction.AddFrame(frame); });
}

Status EditSession::SetFrame(std::size_t index, const DocumentFrame& frame) {
  return implementation_->Run("Change " + NameFrame(frame),
                              [&](Transaction& transaction) { return transaction.SetFrame(index, frame); });
}

Status EditSession::RemoveFrame(std::size_t index) {
  const auto& frames = implementation_->document->GetFrames();
  const std::string name = index < frames.size() ? NameFrame(frames[index]) : std::string("frame");
  return implementation_->Run("Remove " + name,
                              [&](Transaction& transaction) { return transaction.RemoveFrame(index); });
}

Status EditSession::SetView(const std::optional<DocumentView>& view) {
  if (implementation_->IsBusy()) return Status::Error("the document is being changed; its view cannot be set now");
  return implementation_->document->SetView(view);
}

// ---- History ----

Status EditSession::Group(const std::string& name, const std::function<Status()>& commands) {
  return implementation_->Group(name, commands);
}

void EditSession::BeginGesture() { implementation_->history.BeginGesture(); }

void EditSession::EndGesture() { implementation_->history.EndGesture(); }

Status EditSession::Undo() {
  const std::size_t place = GetPlace();
  return place == 0 ? Status::Error("there is nothing to undo") : GoTo(place - 1);
}

Status EditSession::Redo() {
  const std::size_t place = GetPlace();
  return place == GetHistory().size() ? Status::Error("there is nothing to redo") : GoTo(place + 1);
}

Status EditSession::GoTo(std::size_t place) { return implementation_->GoTo(place); }

std::size_t EditSession::GetPlace() const { return implementation_->history.GetPlace(); }

const std::vector<std::string>& EditSession::GetHistory() const { return implementation_->history.GetNames(); }

bool EditSession::IsModified() const { return implementation_->history.IsModified(); }

}  // namespace ScEng
