// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/Neighbors.h"

#include <QLineF>
#include <cmath>
#include <limits>

#include "Apps/Editor/Canvas/GraphScene.h"

namespace {

/// The node at the other end of the topmost wire on a side.
std::string FollowWire(const GraphScene& scene, const std::string& id, bool goes_left) {
  std::string found;
  double highest = std::numeric_limits<double>::max();
  for (const WireItem* wire : scene.GetWires(id)) {
    const std::string near = GetNodeOfPlug(goes_left ? wire->GetConnection().to : wire->GetConnection().from);
    const std::string far = GetNodeOfPlug(goes_left ? wire->GetConnection().from : wire->GetConnection().to);
    // Of several inputs the topmost, of several wires at one output the one that leads to the topmost input.
    if (near != id || wire->GetEnd().y() >= highest) continue;
    highest = wire->GetEnd().y();
    found = far;
  }
  return found;
}

QPointF GetDirection(int key) {
  switch (key) {
    case Qt::Key_Left: return {-1, 0};
    case Qt::Key_Right: return {1, 0};
    case Qt::Key_Up: return {0, -1};
    default: return {0, 1};
  }
}

}  // namespace

std::string FindFirst(const GraphScene& scene) {
  std::string first;
  double least = std::numeric_limits<double>::max();
  for (const std::string& id : scene.GetIds()) {
    const QPointF place = scene.FindNode(id)->pos();
    if (place.x() + place.y() >= least) continue;
    least = place.x() + place.y();
    first = id;
  }
  return first;
}

std::string FindNeighbor(const GraphScene& scene, const std::string& id, int key) {
  if (key == Qt::Key_Left || key == Qt::Key_Right) {
    const std::string wired = FollowWire(scene, id, key == Qt::Key_Left);
    if (!wired.empty()) return wired;
  }
  const NodeItem* start = scene.FindNode(id);
  if (start == nullptr) return {};
  const QPointF direction = GetDirection(key);
  std::string nearest;
  double least = std::numeric_limits<double>::max();
  for (const std::string& other : scene.GetIds()) {
    const QPointF way = scene.FindNode(other)->GetBody().center() - start->GetBody().center();
    const double along = QPointF::dotProduct(way, direction);
    if (other == id || along <= 1.0) continue;
    // What lies to the side counts as farther away.
    const double aside = std::abs(way.x() * direction.y()) + std::abs(way.y() * direction.x());
    const double cost = along + 2.5 * aside;
    if (cost >= least) continue;
    least = cost;
    nearest = other;
  }
  return nearest;
}
