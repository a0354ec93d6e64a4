// SPDX-License-Identifier: Apache-2.0
// How the scene follows what the document tells.
#include <algorithm>
#include <memory>
#include <utility>

#include "Apps/Editor/Canvas/GraphScene.h"

namespace {

void Drop(std::vector<WireItem*>& wires, WireItem* wire) {
  wires.erase(std::remove(wires.begin(), wires.end(), wire), wires.end());
}

}  // namespace

void GraphScene::OnNodeAdded(const std::string& id) {
  NodeItem* item = AddItem(id);
  RefreshFace(id);
  if (!session_.GetDocument().GetPosition(id) && !automatic_.contains(id)) {
    automatic_[id] = FindFreePlace(place_for_new_);
  }
  PlaceItem(*item);
  if (GetNodeOfPlug(shown_) == id) item->SetShown(GetNameOfPlug(shown_));
  ChangeSoon();
}

void GraphScene::OnNodeRemoved(const std::string& id) {
  const auto found = nodes_.find(id);
  if (found == nodes_.end()) return;
  // Nobody finds it any more who is told, while it goes, that the selection has changed.
  const std::unique_ptr<NodeItem> gone(found->second);
  nodes_.erase(found);
  wires_.erase(id);
  if (running_ == id) running_.clear();
  ChangeSoon();
}

void GraphScene::OnNodeRenamed(const std::string& before, const std::string& now) {
  auto node = nodes_.extract(before);
  if (node.empty()) return;
  node.key() = now;
  nodes_.insert(std::move(node));
  auto wires = wires_.extract(before);
  if (!wires.empty()) {
    for (WireItem* wire : wires.mapped()) wire->Rename(before, now);
    wires.key() = now;
    wires_.insert(std::move(wires));
  }
  auto place = automatic_.extract(before);
  if (!place.empty()) {
    place.key() = now;
    automatic_.insert(std::move(place));
  }
  if (GetNodeOfPlug(shown_) == before) shown_ = now + "." + GetNameOfPlug(shown_);
  if (running_ == before) running_ = now;
  RefreshFace(now);
  emit ShownChanged();
  emit selectionChanged();
  ChangeSoon();
}

void GraphScene::OnNodeChanged(const std::string& id) {
  NodeItem* item = FindNode(id);
  if (item == nullptr) return;
  RefreshFace(id);
  PlaceItem(*item);
  ChangeSoon();
}

void GraphScene::OnConnectionAdded(const ScEng::DocumentConnection& connection) {
  AddWire(connection);
  RefreshFace(GetNodeOfPlug(connection.from));
  RefreshFace(GetNodeOfPlug(connection.to));
  ChangeSoon();
}

void GraphScene::OnConnectionRemoved(const ScEng::DocumentConnection& connection) {
  WireItem* wire = FindWire(connection);
  if (wire == nullptr) return;
  const std::string from = GetNodeOfPlug(connection.from);
  const std::string to = GetNodeOfPlug(connection.to);
  Drop(wires_[from], wire);
  Drop(wires_[to], wire);
  Drop(all_wires_, wire);
  delete wire;
  RefreshFace(from);
  RefreshFace(to);
  ChangeSoon();
}

void GraphScene::OnFramesChanged() {
  ReadFrames();
  ChangeSoon();
}

void GraphScene::OnViewChanged() {
  const auto& view = session_.GetDocument().GetView();
  const std::string shown = view ? view->shown : std::string();
  if (shown == shown_) return;
  SetShown(shown);
  emit ShownChanged();
}
