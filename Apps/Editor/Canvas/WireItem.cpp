// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/WireItem.h"

#include <QLineF>
#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "Apps/Editor/Canvas/PlugMark.h"
#include "Apps/Editor/Canvas/PlugRef.h"

namespace {

/// How far the curve leaves its ends straight.
double GetReach(const QPointF& from, const QPointF& to) {
  const double dx = to.x() - from.x();
  const double dy = std::abs(to.y() - from.y());
  if (dx >= 0.0) return std::max(std::min(dx * 0.5, 120.0), std::min(36.0, (dx + dy) * 0.5));
  return std::min(60.0 - dx * 0.35, 220.0);
}

QPointF GetPointOfCurve(const QPointF& from, const QPointF& to, double t) {
  const double reach = GetReach(from, to);
  const QPointF a = from + QPointF(reach, 0);
  const QPointF b = to - QPointF(reach, 0);
  const double s = 1.0 - t;
  return from * (s * s * s) + a * (3 * s * s * t) + b * (3 * s * t * t) + to * (t * t * t);
}

double GetDistanceToLine(const QPointF& place, const QPointF& a, const QPointF& b) {
  const QPointF along = b - a;
  const double length = QPointF::dotProduct(along, along);
  const double share = length == 0.0 ? 0.0 : std::clamp(QPointF::dotProduct(place - a, along) / length, 0.0, 1.0);
  return QLineF(place, a + along * share).length();
}

}  // namespace

QPainterPath MakeWirePath(const QPointF& from, const QPointF& to) {
  const double reach = GetReach(from, to);
  QPainterPath path(from);
  path.cubicTo(from + QPointF(reach, 0), to - QPointF(reach, 0), to);
  return path;
}

WireItem::WireItem(const CanvasColors& colors, ScEng::DocumentConnection connection, unsigned kind)
    : colors_(colors), connection_(std::move(connection)), kind_(kind) {
  setFlags(ItemIsSelectable);
  setZValue(0.0);
}

void WireItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) {
  const double zoom = QStyleOptionGraphicsItem::levelOfDetailFromTransform(painter->worldTransform());
  if (is_dimmed_ && !isSelected()) painter->setOpacity(0.32);
  const bool is_marked = isSelected() || is_highlighted_;
  painter->setBrush(Qt::NoBrush);
  if (is_marked) {
    painter->setPen(QPen(colors_.accent, 6.0, Qt::SolidLine, Qt::RoundCap));
    painter->drawPath(path_);
  }
  const double width = (kind_ == PlugType::kImage ? 2.2 : 1.8) / std::clamp(zoom, 0.5, 1.0);
  const QColor color = MixColors(colors_.ground, colors_.GetKind(kind_), is_marked ? 1.0 : 0.85);
  painter->setPen(zoom < Detail::kText ? QPen(color, width) : MakeWirePen(kind_, color, width));
  painter->drawPath(path_);
}

void WireItem::Rename(const std::string& before, const std::string& now) {
  for (std::string* plug : {&connection_.from, &connection_.to}) {
    if (GetNodeOfPlug(*plug) == before) *plug = now + "." + GetNameOfPlug(*plug);
  }
}

void WireItem::SetEnds(const QPointF& from, const QPointF& to) {
  if (from == from_ && to == to_ && !path_.isEmpty()) return;
  prepareGeometryChange();
  from_ = from;
  to_ = to;
  path_ = MakeWirePath(from, to);
  bounds_ = path_.controlPointRect().adjusted(-4, -4, 4, 4);
}

void WireItem::SetDimmed(bool is_dimmed) {
  if (is_dimmed == is_dimmed_) return;
  is_dimmed_ = is_dimmed;
  update();
}

void WireItem::SetHighlighted(bool is_highlighted) {
  if (is_highlighted == is_highlighted_) return;
  is_highlighted_ = is_highlighted;
  update();
}

QPolygonF WireItem::MakePolyline() const {
  constexpr int kSteps = 24;
  QPolygonF points;
  for (int i = 0; i <= kSteps; ++i) points << GetPointOfCurve(from_, to_, static_cast<double>(i) / kSteps);
  return points;
}

double WireItem::GetDistance(const QPointF& place) const {
  const QPolygonF points = MakePolyline();
  double distance = std::numeric_limits<double>::max();
  for (qsizetype i = 1; i < points.size(); ++i) {
    distance = std::min(distance, GetDistanceToLine(place, points[i - 1], points[i]));
  }
  return distance;
}

bool WireItem::Crosses(const QLineF& line) const {
  const QRectF around = QRectF(line.p1(), line.p2()).normalized().adjusted(-1, -1, 1, 1);
  if (!bounds_.intersects(around)) return false;
  const QPolygonF points = MakePolyline();
  for (qsizetype i = 1; i < points.size(); ++i) {
    if (line.intersects(QLineF(points[i - 1], points[i]), nullptr) == QLineF::BoundedIntersection) return true;
  }
  return false;
}
