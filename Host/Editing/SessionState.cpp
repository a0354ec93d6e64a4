// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/SessionState.h"

#include <algorithm>
#include <utility>

#include "Host/Documents/NodeIds.h"
#include "Host/Tools/Guard.h"
#include "Host/Tools/NodeInterface.h"

namespace ScEng {
namespace {

/// True for one scope.
class Flag {
 public:
  explicit Flag(bool& flag) : flag_(flag) { flag_ = true; }
  ~Flag() { flag_ = false; }
  Flag(const Flag&) = delete;
  Flag& operator=(const Flag&) = delete;

 private:
  bool& flag_;
};

Status MakeBusyError() {
  return Status::Error("the document is being changed; a command cannot start until that is done");
}

}  // namespace

Status EditSession::Implementation::Run(const std::string& name, const std::function<Status(Transaction&)>& commands) {
  if (is_busy_) return MakeBusyError();
  Status status;
  if (open_ != nullptr) {
    const std::size_t before = open_->GetNumEdits();
    const Flag busy(is_busy_);
    const Status guarded = CallGuarded("a node type", [&] { status = commands(*open_); });
    if (guarded.IsError()) status = guarded;
    if (!status.IsError()) return status;
    const Status back = open_->RollBackTo(before);
    return back.IsError() ? back : status;
  }
  Transaction transaction(*document);
  {
    const Flag busy(is_busy_);
    const Status guarded = CallGuarded("a node type", [&] { status = commands(transaction); });
    if (guarded.IsError()) status = guarded;
  }
  return Finish(name, transaction, status);
}

Status EditSession::Implementation::Group(const std::string& name, const std::function<Status()>& commands) {
  if (is_busy_) return MakeBusyError();
  if (open_ != nullptr) return Run(name, [&](Transaction&) { return commands(); });
  Transaction transaction(*document);
  open_ = &transaction;
  Status status;
  const Status guarded = CallGuarded("a command", [&] { status = commands(); });
  open_ = nullptr;
  return Finish(name, transaction, guarded.IsError() ? guarded : status);
}

Status EditSession::Implementation::Finish(const std::string& name, Transaction& transaction, const Status& status) {
  const Flag busy(is_busy_);
  if (status.IsError() || transaction.ChangesNothing()) {
    const Status back = transaction.RollBackTo(0);
    if (!back.IsError()) return status;
    // A library that fails to make a node which it made before: what the history says of it holds no more.
    history.Clear();
    TellHistoryChanged();
    return Status::Error(status.GetMessage() + "; the document could not be put back: " + back.GetMessage());
  }
  history.Add(MakeLine(name), transaction.Take());
  journal.NoteChange();
  TellHistoryChanged();
  return {};
}

Status EditSession::Implementation::GoTo(std::size_t place) {
  if (is_busy_ || open_ != nullptr) return MakeBusyError();
  const Flag busy(is_busy_);
  const std::size_t before = history.GetPlace();
  const Status status = history.GoTo(*document, place);
  if (history.GetPlace() != before) {
    journal.NoteChange();
    TellHistoryChanged();
  }
  return status;
}

void EditSession::Implementation::TakeChanges(const std::string& name, Edits edits) {
  if (open_ != nullptr) {
    open_->Record(std::move(edits));
    return;
  }
  history.Add(MakeLine(name), std::move(edits));
  journal.NoteChange();
  const Flag busy(is_busy_);
  TellHistoryChanged();
}

void EditSession::Implementation::TellHistoryChanged() {
  // An observer may remove itself and others while it is told.
  const std::vector<EditObserver*> told = observers;
  for (EditObserver* observer : told) {
    if (std::find(observers.begin(), observers.end(), observer) != observers.end()) observer->OnHistoryChanged();
  }
}

Status EditSession::Implementation::CheckNodes(const std::vector<std::string>& ids) const {
  if (ids.empty()) return Status::Error("no node is given");
  for (const std::string& id : ids) {
    // Refused with the closest id there is.
    if (!document->HasId(id)) return document->SetNote(id, "");
  }
  return {};
}

std::string EditSession::Implementation::GetTypeName(const NodeType& type) const {
  const NodeInterface* descriptor = catalog->Find(type);
  if (descriptor == nullptr) return "[" + type.ToString() + "]";
  return AskGuarded("GetName", std::string("a node"), [&] { return descriptor->GetName(); });
}

Status EditSession::Implementation::AddNode(Transaction& transaction, const NewNode& node, std::string& id) const {
  id = node.id.empty() ? UniqueIds(*document).Make(MakeIdFromName(GetTypeName(node.type))) : node.id;
  const Status status = transaction.AddNode(id, node.type);
  return status.IsError() || !node.position ? status : transaction.SetPosition(id, node.position);
}

Status EditSession::Implementation::FindConnection(const DocumentConnection& connection, std::size_t& place) const {
  const auto found = DocumentEdits(*document).FindConnection(connection);
  if (found) {
    place = *found;
    return {};
  }
  // The document says in its own words what is missing.
  const Status status = document->Disconnect(connection.from, connection.to, connection.index);
  return status.IsError() ? status : Status::Error("there is no such connection");
}

}  // namespace ScEng
