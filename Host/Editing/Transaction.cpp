// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/Transaction.h"

#include <algorithm>
#include <iterator>

#include "Host/Tools/Guard.h"

namespace ScEng {
namespace {

constexpr const char* kNodeType = "a node type";

/// One edit; what a library throws becomes an error.
Status Guarded(GraphDocument& document, Edit& edit, Status (Edit::*what)(GraphDocument&)) {
  Status status;
  const Status guarded = CallGuarded(kNodeType, [&] { status = (edit.*what)(document); });
  return guarded.IsError() ? guarded : status;
}

Status MakePlaceError(const char* what, std::size_t place, std::size_t count) {
  return Status::Error(std::string("there is no ") + what + " " + std::to_string(place) + "; the document has " +
                       std::to_string(count));
}

}  // namespace

Status UndoEdits(GraphDocument& document, const Edits& edits) {
  for (std::size_t i = edits.size(); i-- > 0;) {
    const Status status = Guarded(document, *edits[i], &Edit::Undo);
    if (!status.IsError()) continue;
    for (std::size_t j = i + 1; j < edits.size(); ++j) static_cast<void>(Guarded(document, *edits[j], &Edit::Do));
    return status;
  }
  return {};
}

Status RedoEdits(GraphDocument& document, const Edits& edits) {
  for (std::size_t i = 0; i < edits.size(); ++i) {
    const Status status = Guarded(document, *edits[i], &Edit::Do);
    if (!status.IsError()) continue;
    for (std::size_t j = i; j-- > 0;) static_cast<void>(Guarded(document, *edits[j], &Edit::Undo));
    return status;
  }
  return {};
}

Status Transaction::RollBackTo(std::size_t count) {
  const auto from = edits_.begin() + static_cast<std::ptrdiff_t>(std::min(count, edits_.size()));
  Edits undone(std::make_move_iterator(from), std::make_move_iterator(edits_.end()));
  edits_.erase(from, edits_.end());
  return UndoEdits(document_, undone);
}

void Transaction::Record(Edits edits) {
  edits_.insert(edits_.end(), std::make_move_iterator(edits.begin()), std::make_move_iterator(edits.end()));
}

bool Transaction::ChangesNothing() const {
  return std::all_of(edits_.begin(), edits_.end(), [](const auto& edit) { return edit->ChangesNothing(); });
}

Status Transaction::Perform(std::unique_ptr<Edit> edit) {
  const Status status = edit->Do(document_);
  if (!status.IsError()) edits_.push_back(std::move(edit));
  return status;
}

Status Transaction::CheckNode(const std::string& id) const {
  if (document_.HasId(id)) return {};
  // Asks for a change of nothing, which tells of a missing node with the closest one.
  return document_.MoveNode(id, 0);
}

// ---- Nodes ----

Status Transaction::AddNode(const std::string& id, const NodeType& type) {
  Status status;
  if (document_.AddNode(id, type, status) == nullptr) return status;
  const std::size_t place = document_.GetIds().size() - 1;
  edits_.push_back(std::make_unique<NodePresence>(Presence::kAdded, place, NamedNode{id, exact_.CopyNode(id)}));
  return {};
}

Status Transaction::InsertNode(const std::string& id, const std::shared_ptr<const NodeState>& state) {
  return Perform(std::make_unique<NodePresence>(Presence::kAdded, document_.GetIds().size(), NamedNode{id, state}));
}

Status Transaction::RemoveNodes(const std::unordered_set<std::string>& ids) {
  for (const std::string& id : ids) {
    const Status status = CheckNode(id);
    if (status.IsError()) return status;
  }
  const std::vector<std::size_t> places = exact_.FindConnections(ids);
  for (auto place = places.rbegin(); place != places.rend(); ++place) {
    const Status status = RemoveConnection(*place);
    if (status.IsError()) return status;
  }
  for (std::size_t i = document_.GetOutputs().size(); i-- > 0;) {
    if (!ids.contains(GetNodeOfPlug(document_.GetOutputs()[i].from))) continue;
    const Status status = RemoveOutput(i);
    if (status.IsError()) return status;
  }
  const auto& view = document_.GetView();
  if (view && ids.contains(GetNodeOfPlug(view->shown))) {
    const Status status = SetShown("");
    if (status.IsError()) return status;
  }
  std::size_t left = ids.size();
  for (std::size_t i = document_.GetIds().size(); left > 0 && i-- > 0;) {
    const std::string id = document_.GetIds()[i];
    if (!ids.contains(id)) continue;
    --left;
    const Status status =
        Perform(std::make_unique<NodePresence>(Presence::kRemoved, i, NamedNode{id, exact_.CopyNode(id)}));
    if (status.IsError()) return status;
  }
  return {};
}

Status Transaction::RenameNode(const std::string& id, const std::string& now) {
  const Status status = CheckNode(id);
  if (status.IsError() || id == now) return status;
  return Perform(std::make_unique<RenameEdit>(id, now));
}

Status Transaction::MoveNode(const std::string& id, std::size_t place) {
  const Status status = CheckNode(id);
  if (status.IsError()) return status;
  const std::size_t before = *exact_.FindPlace(id);
  const std::size_t now = std::min(place, document_.GetIds().size() - 1);
  return now == before ? Status() : Perform(std::make_unique<NodePlaceEdit>(id, before, now));
}

Status Transaction::SetEnabled(const std::string& id, bool enabled) {
  const Status status = CheckNode(id);
  if (status.IsError() || document_.IsEnabled(id) == enabled) return status;
  return Perform(std::make_unique<EnabledEdit>(id, !enabled, enabled));
}

Status Transaction::SetPosition(const std::string& id, const std::optional<Point>& position) {
  const Status status = CheckNode(id);
  if (status.IsError()) return status;
  return Perform(std::make_unique<PositionEdit>(id, document_.GetPosition(id), position));
}

Status Transaction::SetNote(const std::string& id, const std::string& note) {
  const Status status = CheckNode(id);
  if (status.IsError()) return status;
  return Perform(std::make_unique<NoteEdit>(id, document_.GetNote(id), note));
}

// ---- Connections ----

Status Transaction::Connect(const ConnectionState& connection, std::optional<std::size_t> place) {
  const std::size_t wanted = place.value_or(exact_.GetNumConnections());
  return Perform(std::make_unique<ConnectionPresence>(Presence::kAdded, wanted, connection));
}

Status Transaction::RemoveConnection(std::size_t place) {
  if (place >= exact_.GetNumConnections()) return MakePlaceError("connection", place, exact_.GetNumConnections());
  return Perform(std::make_unique<ConnectionPresence>(Presence::kRemoved, place, exact_.GetConnection(place)));
}

// ---- Outputs, frames and the view ----

Status Transaction::AddOutput(const DocumentOutput& output) {
  return Perform(std::make_unique<OutputPresence>(Presence::kAdded, document_.GetOutputs().size(), output));
}

Status Transaction::SetOutput(std::size_t place, const DocumentOutput& output) {
  const auto& outputs = document_.GetOutputs();
  if (place >= outputs.size()) return MakePlaceError("output", place, outputs.size());
  return Perform(std::make_unique<OutputEdit>(place, outputs[place], output));
}

Status Transaction::RemoveOutput(std::size_t place) {
  const auto& outputs = document_.GetOutputs();
  if (place >= outputs.size()) return MakePlaceError("output", place, outputs.size());
  return Perform(std::make_unique<OutputPresence>(Presence::kRemoved, place, outputs[place]));
}

Status Transaction::AddFrame(const DocumentFrame& frame) {
  return Perform(std::make_unique<FramePresence>(Presence::kAdded, document_.GetFrames().size(), frame));
}

Status Transaction::SetFrame(std::size_t place, const DocumentFrame& frame) {
  const auto& frames = document_.GetFrames();
  if (place >= frames.size()) return MakePlaceError("frame", place, frames.size());
  return Perform(std::make_unique<FrameEdit>(place, frames[place], frame));
}

Status Transaction::RemoveFrame(std::size_t place) {
  const auto& frames = document_.GetFrames();
  if (place >= frames.size()) return MakePlaceError("frame", place, frames.size());
  return Perform(std::make_unique<FramePresence>(Presence::kRemoved, place, frames[place]));
}

Status Transaction::SetShown(const std::string& plug) {
  const auto& view = document_.GetView();
  const std::string before = view ? view->shown : std::string();
  return before == plug ? Status() : Perform(std::make_unique<ShownEdit>(NoKey(), before, plug));
}

}  // namespace ScEng
