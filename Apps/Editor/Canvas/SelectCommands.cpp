// SPDX-License-Identifier: Apache-2.0
// The commands that concern what is selected.
#include <algorithm>
#include <tuple>
#include <unordered_set>
#include <utility>

#include "Apps/Editor/Canvas/CanvasCommands.h"

namespace {

void SelectOnly(GraphScene& scene, QGraphicsItem& item) {
  {
    const QSignalBlocker blocker(&scene);
    scene.clearSelection();
    item.setSelected(true);
  }
  emit scene.selectionChanged();
}

}  // namespace

void CanvasCommands::SelectAll() {
  {
    const QSignalBlocker blocker(&scene_);
    for (const std::string& id : scene_.GetIds()) {
      if (NodeItem* item = scene_.FindNode(id)) item->setSelected(true);
    }
    for (FrameItem* frame : scene_.GetFrames()) frame->setSelected(true);
  }
  emit scene_.selectionChanged();
}

void CanvasCommands::SelectConnected() {
  std::vector<std::string> open = scene_.GetSelectedIds();
  std::unordered_set<std::string> found(open.begin(), open.end());
  while (!open.empty()) {
    const std::string id = std::move(open.back());
    open.pop_back();
    for (const WireItem* wire : scene_.GetWires(id)) {
      for (const std::string& plug : {wire->GetConnection().from, wire->GetConnection().to}) {
        if (found.insert(GetNodeOfPlug(plug)).second) open.push_back(GetNodeOfPlug(plug));
      }
    }
  }
  scene_.SelectIds({found.begin(), found.end()});
}

QRectF CanvasCommands::SelectNextWire() {
  const std::vector<std::string> ids = scene_.GetSelectedIds();
  std::vector<WireItem*> wires = scene_.GetAllWires();
  const auto selected =
      std::find_if(wires.begin(), wires.end(), [](const WireItem* wire) { return wire->isSelected(); });
  const WireItem* before = selected == wires.end() ? nullptr : *selected;
  if (!ids.empty()) node_of_wires_ = ids.front();
  if (ids.empty() && before == nullptr) node_of_wires_.clear();
  const std::vector<WireItem*>& own = scene_.GetWires(node_of_wires_);
  if (before == nullptr || std::find(own.begin(), own.end(), before) != own.end()) {
    if (!own.empty()) wires = own;
  }
  if (wires.empty()) return {};
  std::stable_sort(wires.begin(), wires.end(), [](const WireItem* a, const WireItem* b) {
    const auto place = [](const WireItem* wire) {
      return std::tuple(wire->GetStart().x(), wire->GetEnd().y(), wire->GetEnd().x());
    };
    return place(a) < place(b);
  });
  auto next = std::find(wires.begin(), wires.end(), before);
  if (next == wires.end() || ++next == wires.end()) next = wires.begin();
  SelectOnly(scene_, **next);
  return QRectF((*next)->GetStart(), (*next)->GetEnd()).normalized();
}

QRectF CanvasCommands::SelectNextFrame() {
  const std::vector<FrameItem*>& frames = scene_.GetFrames();
  if (frames.empty()) return {};
  auto next = std::find_if(frames.begin(), frames.end(), [](const FrameItem* frame) { return frame->isSelected(); });
  if (next == frames.end() || ++next == frames.end()) next = frames.begin();
  SelectOnly(scene_, **next);
  return (*next)->GetBox();
}
