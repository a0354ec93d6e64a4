// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/Background/SessionFollower.h"

#include <utility>
#include <vector>

#include "Host/Documents/DocumentEdits.h"

namespace ScEng {

SessionFollower::SessionFollower(EditSession& session, std::function<void(MirrorChange change)> take)
    : session_(session), take_(std::move(take)) {
  FollowFolder();
  const GraphDocument& document = session_.GetDocument();
  for (const std::string& id : document.GetIds()) OnNodeAdded(id);
  for (const DocumentConnection& connection : document.GetConnections()) OnConnectionAdded(connection);
  session_.AddObserver(this);
}

SessionFollower::~SessionFollower() { session_.RemoveObserver(this); }

void SessionFollower::OnNodeAdded(const std::string& id) {
  enabled_[id] = session_.GetDocument().IsEnabled(id);
  take_([id, state = DocumentEdits(session_.GetDocument()).CopyNode(id)](GraphDocument& copy) {
    static_cast<void>(DocumentEdits(copy).InsertNode(id, *state, copy.GetIds().size()));
  });
}

void SessionFollower::OnNodeRemoved(const std::string& id) {
  enabled_.erase(id);
  take_([id](GraphDocument& copy) { static_cast<void>(copy.RemoveNode(id)); });
}

void SessionFollower::OnNodeRenamed(const std::string& before, const std::string& now) {
  auto entry = enabled_.extract(before);
  if (!entry.empty()) {
    entry.key() = now;
    enabled_.insert(std::move(entry));
  }
  take_([before, now](GraphDocument& copy) { static_cast<void>(copy.RenameNode(before, now)); });
}

void SessionFollower::OnNodeChanged(const std::string& id) {
  const bool enabled = session_.GetDocument().IsEnabled(id);
  if (std::exchange(enabled_[id], enabled) == enabled) return;
  take_([id, enabled](GraphDocument& copy) { static_cast<void>(copy.SetEnabled(id, enabled)); });
}

void SessionFollower::OnAttributeChanged(const std::string& id, const std::string& attribute) {
  const Node* node = session_.GetDocument().FindNode(id);
  if (node == nullptr) return;
  for (std::size_t i = 0; i < node->GetNumAttributes(); ++i) {
    if (node->GetAttribute(i)->GetName() != attribute) continue;
    const auto state = DocumentEdits(session_.GetDocument()).GetAttribute(id, i);
    if (!state) return;
    take_([id, i, state](GraphDocument& copy) { static_cast<void>(DocumentEdits(copy).SetAttribute(id, i, *state)); });
    return;
  }
}

void SessionFollower::OnConnectionAdded(const DocumentConnection& connection) {
  take_([connection](GraphDocument& copy) {
    DocumentEdits edits(copy);
    static_cast<void>(edits.InsertConnection(edits.GetNumConnections(), {connection, false}));
  });
}

void SessionFollower::OnConnectionRemoved(const DocumentConnection& connection) {
  take_([connection](GraphDocument& copy) {
    static_cast<void>(copy.Disconnect(connection.from, connection.to, connection.index));
  });
}

void SessionFollower::OnHistoryChanged() { FollowFolder(); }

void SessionFollower::FollowFolder() {
  const std::filesystem::path& folder = session_.GetDocument().GetFolder();
  if (folder_ == folder) return;
  folder_ = folder;
  take_([folder](GraphDocument& copy) { DocumentEdits(copy).SetFolder(folder); });
}

}  // namespace ScEng
