// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/GraphScene.h"

#include <QSignalBlocker>
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "Apps/Editor/Canvas/AutoLayout.h"

namespace {

const std::vector<WireItem*> kNoWires;

QPointF BoundPlace(const ScEng::Point& point) {
  return {std::clamp(point.x, -kFarthest, kFarthest), std::clamp(point.y, -kFarthest, kFarthest)};
}

unsigned FindKind(const ScEng::GraphDocument& document, const ScEng::DocumentConnection& connection) {
  if (const Node* from = document.FindNode(GetNodeOfPlug(connection.from))) {
    const int plug = from->GetOutplugIndex(GetNameOfPlug(connection.from));
    if (plug >= 0) return from->GetOutplugs()[static_cast<std::size_t>(plug)].type;
  }
  if (const Node* to = document.FindNode(GetNodeOfPlug(connection.to))) {
    const int plug = to->GetInplugIndex(GetNameOfPlug(connection.to));
    if (plug >= 0) return to->GetInplugs()[static_cast<std::size_t>(plug)].type;
  }
  return PlugType::kNone;
}

}  // namespace

GraphScene::GraphScene(ScEng::EditSession& session, const NodeTypes& types, const QPalette& palette)
    : session_(session), types_(types), colors_(palette) {
  setItemIndexMethod(BspTreeIndex);
  change_timer_.setSingleShot(true);
  connect(&change_timer_, &QTimer::timeout, this, [this] {
    UpdateDimming();
    emit Changed();
  });
  ReadAll();
  session_.AddObserver(this);
}

GraphScene::~GraphScene() {
  session_.RemoveObserver(this);
  // Nobody is told of the selection that goes with the items.
  blockSignals(true);
}

void GraphScene::SetPalette(const QPalette& palette) {
  colors_ = CanvasColors(palette);
  for (QGraphicsItem* item : items()) item->update();
  update();
  ChangeSoon();
}

void GraphScene::ChangeSoon() {
  if (!change_timer_.isActive()) change_timer_.start(0);
}

// ---- Reading the document ----

void GraphScene::ReadAll() {
  is_reading_ = true;
  const ScEng::GraphDocument& document = session_.GetDocument();
  for (const std::string& id : document.GetIds()) AddItem(id);
  for (const ScEng::DocumentConnection& connection : document.GetConnections()) AddWire(connection);
  is_reading_ = false;
  for (const std::string& id : document.GetIds()) RefreshFace(id);
  PlaceAll();
  ReadFrames();
  if (document.GetView()) shown_ = document.GetView()->shown;
  SetShown(shown_);
  UpdateDimming();
}

NodeItem* GraphScene::AddItem(const std::string& id) {
  auto* item = new NodeItem(colors_);
  item->SetHasThumbnail(has_thumbnails_);
  nodes_[id] = item;
  wires_[id];
  addItem(item);
  return item;
}

WireItem* GraphScene::AddWire(const ScEng::DocumentConnection& connection) {
  auto* wire = new WireItem(colors_, connection, FindKind(session_.GetDocument(), connection));
  all_wires_.push_back(wire);
  const std::string from = GetNodeOfPlug(connection.from);
  const std::string to = GetNodeOfPlug(connection.to);
  wires_[from].push_back(wire);
  if (to != from) wires_[to].push_back(wire);
  addItem(wire);
  return wire;
}

void GraphScene::RefreshFace(const std::string& id) {
  NodeItem* item = FindNode(id);
  if (item == nullptr) return;
  std::vector<ScEng::DocumentConnection> connections;
  for (const WireItem* wire : GetWires(id)) connections.push_back(wire->GetConnection());
  item->SetFace(ReadNodeFace(session_.GetDocument(), types_, id, connections));
  if (!is_reading_) UpdateWires(id);
}

void GraphScene::ReadFrames() {
  const std::vector<ScEng::DocumentFrame>& frames = session_.GetDocument().GetFrames();
  while (frames_.size() > frames.size()) {
    // Nobody finds it any more who is told, while it goes, that the selection has changed.
    const std::unique_ptr<FrameItem> gone(frames_.back());
    frames_.pop_back();
  }
  for (std::size_t i = 0; i < frames.size(); ++i) {
    if (i < frames_.size()) {
      frames_[i]->SetFrame(frames[i]);
    } else {
      frames_.push_back(new FrameItem(colors_, i, frames[i]));
      addItem(frames_.back());
    }
  }
}

// ---- Items ----

NodeItem* GraphScene::FindNode(const std::string& id) const {
  const auto found = nodes_.find(id);
  return found == nodes_.end() ? nullptr : found->second;
}

WireItem* GraphScene::FindWire(const ScEng::DocumentConnection& connection) const {
  for (WireItem* wire : GetWires(GetNodeOfPlug(connection.to))) {
    if (wire->GetConnection() == connection) return wire;
  }
  return nullptr;
}

const std::vector<WireItem*>& GraphScene::GetWires(const std::string& id) const {
  const auto found = wires_.find(id);
  return found == wires_.end() ? kNoWires : found->second;
}

const std::vector<std::string>& GraphScene::GetIds() const { return session_.GetDocument().GetIds(); }

QRectF GraphScene::GetExtent() const {
  QRectF extent;
  for (const auto& [id, item] : nodes_) extent |= item->GetBody();
  for (const FrameItem* frame : frames_) extent |= frame->GetBox();
  return extent;
}

// ---- What is at a place ----

NodeItem* GraphScene::NodeAt(const QPointF& place) const {
  for (QGraphicsItem* item : items(place, Qt::IntersectsItemBoundingRect, Qt::DescendingOrder)) {
    if (item->type() != ItemType::kNode) continue;
    auto* node = static_cast<NodeItem*>(item);
    if (node->GetBody().contains(place)) return node;
  }
  return nullptr;
}

std::optional<PlugRef> GraphScene::PlugAt(const QPointF& place, double reach) const {
  const QRectF around(place - QPointF(reach, reach), QSizeF(2 * reach, 2 * reach));
  for (QGraphicsItem* item : items(around, Qt::IntersectsItemBoundingRect, Qt::DescendingOrder)) {
    if (item->type() != ItemType::kNode) continue;
    if (const auto plug = static_cast<NodeItem*>(item)->FindPlug(place, reach)) return plug;
    if (static_cast<NodeItem*>(item)->GetBody().contains(place)) return std::nullopt;
  }
  return std::nullopt;
}

WireItem* GraphScene::WireAt(const QPointF& place, double reach) const {
  const QRectF around(place - QPointF(reach, reach), QSizeF(2 * reach, 2 * reach));
  WireItem* nearest = nullptr;
  double distance = reach;
  for (QGraphicsItem* item : items(around, Qt::IntersectsItemBoundingRect)) {
    if (item->type() != ItemType::kWire) continue;
    auto* wire = static_cast<WireItem*>(item);
    const double away = wire->GetDistance(place);
    if (away > distance) continue;
    distance = away;
    nearest = wire;
  }
  return nearest;
}

FrameItem* GraphScene::FrameAt(const QPointF& place) const {
  FrameItem* smallest = nullptr;
  for (FrameItem* frame : frames_) {
    if (!frame->GetTitleBox().contains(place) && !frame->GetGrip().contains(place)) continue;
    const QSizeF size = frame->GetBox().size();
    if (smallest == nullptr ||
        size.width() * size.height() < smallest->GetBox().width() * smallest->GetBox().height()) {
      smallest = frame;
    }
  }
  return smallest;
}

// ---- Selection ----

std::vector<std::string> GraphScene::GetSelectedIds() const {
  std::vector<std::string> ids;
  for (const std::string& id : GetIds()) {
    const NodeItem* item = FindNode(id);
    if (item != nullptr && item->isSelected()) ids.push_back(id);
  }
  return ids;
}

std::vector<std::string> GraphScene::GetIdsToMove() const {
  std::vector<std::string> ids;
  for (const std::string& id : GetIds()) {
    const NodeItem* item = FindNode(id);
    const auto holds = [&](const FrameItem* frame) {
      return frame->isSelected() && frame->GetBox().contains(item->GetBody().center());
    };
    if (item->isSelected() || std::any_of(frames_.begin(), frames_.end(), holds)) ids.push_back(id);
  }
  return ids;
}

void GraphScene::SelectIds(const std::vector<std::string>& ids) {
  {
    const QSignalBlocker blocker(this);
    clearSelection();
    for (const std::string& id : ids) {
      if (NodeItem* item = FindNode(id)) item->setSelected(true);
    }
  }
  emit selectionChanged();
  update();
}

// ---- What is shown ----

void GraphScene::SetFacts(const std::vector<ScEng::NodeFacts>& facts) {
  for (const ScEng::NodeFacts& fact : facts) {
    NodeItem* item = FindNode(fact.id);
    if (item == nullptr) continue;
    NodeCondition condition;
    condition.seconds = fact.is_blocked ? -1.0 : fact.seconds;
    condition.is_in_error = fact.is_in_error;
    condition.is_blocked = fact.is_blocked;
    for (const std::string& message : fact.messages) condition.messages << QString::fromStdString(message);
    condition.thumbnail = fact.thumbnail;
    item->SetCondition(std::move(condition));
  }
  ChangeSoon();
}

void GraphScene::SetRunning(const std::string& id, double fraction) {
  if (running_ != id) {
    if (NodeItem* before = FindNode(running_)) before->SetProgress(-1.0);
    running_ = id;
  }
  if (NodeItem* item = FindNode(id)) item->SetProgress(fraction);
}

void GraphScene::SetShown(const std::string& plug) {
  if (NodeItem* before = FindNode(GetNodeOfPlug(shown_))) before->SetShown({});
  shown_ = plug;
  if (NodeItem* now = FindNode(GetNodeOfPlug(shown_))) now->SetShown(GetNameOfPlug(shown_));
  ChangeSoon();
}

void GraphScene::SetDims(bool dims) {
  dims_ = dims;
  ChangeSoon();
}

void GraphScene::SetHasThumbnails(bool has_thumbnails) {
  has_thumbnails_ = has_thumbnails;
  for (const auto& [id, item] : nodes_) item->SetHasThumbnail(has_thumbnails);
  for (const auto& [id, item] : nodes_) UpdateWires(id);
  ChangeSoon();
}

void GraphScene::UpdateDimming() {
  std::unordered_set<std::string> feeding;
  std::vector<std::string> open;
  const std::string shown = GetNodeOfPlug(shown_);
  if (dims_ && nodes_.contains(shown)) open.push_back(shown);
  const bool dims = !open.empty();
  feeding.insert(shown);
  while (!open.empty()) {
    const std::string id = std::move(open.back());
    open.pop_back();
    for (const WireItem* wire : GetWires(id)) {
      const ScEng::DocumentConnection& connection = wire->GetConnection();
      if (GetNodeOfPlug(connection.to) != id) continue;
      const std::string from = GetNodeOfPlug(connection.from);
      if (feeding.insert(from).second) open.push_back(from);
    }
  }
  for (const auto& [id, item] : nodes_) item->SetDimmed(dims && !feeding.contains(id));
  for (WireItem* wire : all_wires_) {
    wire->SetDimmed(dims && !feeding.contains(GetNodeOfPlug(wire->GetConnection().to)));
  }
}

// ---- Places ----

void GraphScene::UpdateWires(const std::string& id) {
  for (WireItem* wire : GetWires(id)) {
    const ScEng::DocumentConnection& connection = wire->GetConnection();
    const NodeItem* from = FindNode(GetNodeOfPlug(connection.from));
    const NodeItem* to = FindNode(GetNodeOfPlug(connection.to));
    if (from == nullptr || to == nullptr) continue;
    wire->SetEnds(from->GetPlugPlace(GetNameOfPlug(connection.from), 0, false),
                  to->GetPlugPlace(GetNameOfPlug(connection.to), connection.index, true));
  }
}

void GraphScene::PlaceItem(NodeItem& item) {
  const std::string& id = item.GetFace().id;
  const auto position = session_.GetDocument().GetPosition(id);
  if (position) {
    item.setPos(BoundPlace(*position));
  } else {
    const auto automatic = automatic_.find(id);
    if (automatic != automatic_.end()) item.setPos(automatic->second);
  }
  UpdateWires(id);
}

void GraphScene::ResetPlaces(const std::vector<std::string>& ids) {
  for (const std::string& id : ids) {
    if (NodeItem* item = FindNode(id)) PlaceItem(*item);
  }
}

void GraphScene::PlaceAll() {
  const ScEng::GraphDocument& document = session_.GetDocument();
  const std::vector<std::string>& ids = document.GetIds();
  const bool has_all =
      std::all_of(ids.begin(), ids.end(), [&](const std::string& id) { return document.GetPosition(id).has_value(); });
  if (!has_all) {
    // The layout is that of the whole graph, so that nodes stay where they were when others get a position.
    const std::vector<QPointF> places = MakeLayout(ids);
    for (std::size_t i = 0; i < ids.size(); ++i) automatic_[ids[i]] = places[i];
  }
  ResetPlaces(ids);
}

std::vector<QPointF> GraphScene::MakeLayout(const std::vector<std::string>& ids) const {
  std::unordered_map<std::string, std::size_t> places;
  std::vector<QSizeF> sizes;
  for (const std::string& id : ids) {
    const NodeItem* item = FindNode(id);
    places.emplace(id, sizes.size());
    sizes.push_back(item == nullptr ? QSizeF() : item->GetShape().body.size());
  }
  std::vector<std::pair<std::size_t, std::size_t>> edges;
  for (const WireItem* wire : all_wires_) {
    const auto from = places.find(GetNodeOfPlug(wire->GetConnection().from));
    const auto to = places.find(GetNodeOfPlug(wire->GetConnection().to));
    if (from != places.end() && to != places.end()) edges.emplace_back(from->second, to->second);
  }
  return LayOutGraph(sizes, edges);
}

std::vector<ScEng::EditSession::Placement> GraphScene::LayOut(const std::vector<std::string>& ids) const {
  const std::vector<QPointF> places = MakeLayout(ids);
  QRectF before;
  QRectF after;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const QSizeF size = FindNode(ids[i])->GetShape().body.size();
    before |= QRectF(FindNode(ids[i])->pos(), size);
    after |= QRectF(places[i], size);
  }
  const QPointF shift = before.topLeft() - after.topLeft();
  std::vector<ScEng::EditSession::Placement> placements;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const QPointF place = places[i] + shift;
    placements.push_back({ids[i], ScEng::Point{std::round(place.x()), std::round(place.y())}});
  }
  return placements;
}

QPointF GraphScene::FindFreePlace(const QPointF& wanted) const {
  QRectF body(wanted, QSizeF(NodeShape::kWidth, 120));
  constexpr int kTries = 40;
  for (int i = 0; i < kTries; ++i) {
    bool is_free = true;
    for (QGraphicsItem* item : items(body.adjusted(-12, -12, 12, 12), Qt::IntersectsItemBoundingRect)) {
      if (item->type() != ItemType::kNode) continue;
      body.moveTop(static_cast<NodeItem*>(item)->GetBody().bottom() + 40);
      is_free = false;
      break;
    }
    if (is_free) break;
  }
  return body.topLeft();
}
