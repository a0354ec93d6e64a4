// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/NodeItem.h"

#include <QCoreApplication>
#include <QLineF>
#include <utility>

#include "Apps/Editor/Canvas/NodePainter.h"
#include "Apps/Editor/Canvas/Thumbnail.h"
#include "Apps/Editor/Canvas/WireFit.h"

NodeItem::NodeItem(const CanvasColors& colors) : colors_(colors) {
  setFlags(ItemIsSelectable | ItemUsesExtendedStyleOption);
  setCacheMode(DeviceCoordinateCache);
  setZValue(1.0);
}

void NodeItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*) {
  NodePainter(*this, *painter, colors_).Paint();
}

void NodeItem::SetFace(NodeFace face) {
  face_ = std::move(face);
  offered_ = 0;
  Measure();
}

void NodeItem::Measure() {
  prepareGeometryChange();
  shape_ = NodeShape(face_, has_thumbnail_);
  bounds_ = shape_.body.adjusted(-16, -14, 16, 10);
  // What stands below the body: the time, the messages and the note.
  if (!face_.is_reroute) bounds_.setBottom(shape_.body.bottom() + (face_.note.isEmpty() ? 22 : 66));
  if (!condition_.messages.isEmpty()) bounds_.setBottom(bounds_.bottom() + 44);
  update();
}

void NodeItem::SetCondition(NodeCondition condition) {
  if (condition.thumbnail != condition_.thumbnail) thumbnail_ = QImage();
  const bool resizes = condition.messages.isEmpty() != condition_.messages.isEmpty();
  condition_ = std::move(condition);
  if (resizes) Measure();
  update();
}

void NodeItem::SetProgress(double progress) {
  if (condition_.progress == progress) return;
  condition_.progress = progress;
  update();
}

void NodeItem::SetHasThumbnail(bool has_thumbnail) {
  if (has_thumbnail == has_thumbnail_) return;
  has_thumbnail_ = has_thumbnail;
  Measure();
}

void NodeItem::SetShown(const std::string& output) {
  if (output == shown_) return;
  shown_ = output;
  update();
}

void NodeItem::SetDimmed(bool is_dimmed) {
  if (is_dimmed == is_dimmed_) return;
  is_dimmed_ = is_dimmed;
  update();
}

void NodeItem::Offer(std::vector<PlugFace> attributes) {
  if (attributes.empty() && offered_ == 0) return;
  face_.inputs.resize(face_.inputs.size() - offered_);
  offered_ = attributes.size();
  face_.inputs.insert(face_.inputs.end(), attributes.begin(), attributes.end());
  setZValue(offered_ > 0 ? 3.0 : 1.0);
  Measure();
}

void NodeItem::SetHovered(const PlugRef& plug) {
  if (plug == hovered_) return;
  hovered_ = plug;
  update();
}

QPointF NodeItem::GetPlugPlace(const std::string& name, unsigned index, bool is_input) const {
  const std::vector<PlugFace>& plugs = is_input ? face_.inputs : face_.outputs;
  const std::vector<QPointF>& places = is_input ? shape_.inputs : shape_.outputs;
  for (std::size_t i = 0; i < plugs.size(); ++i) {
    if (plugs[i].name == name && plugs[i].index == index) return pos() + places[i];
  }
  return pos() + QPointF(is_input ? shape_.body.left() : shape_.body.right(), shape_.body.center().y());
}

std::optional<PlugRef> NodeItem::FindPlug(const QPointF& place, double reach) const {
  const QPointF local = place - pos();
  std::optional<PlugRef> nearest;
  double distance = reach;
  const auto look = [&](const std::vector<PlugFace>& plugs, const std::vector<QPointF>& places, bool is_input) {
    for (std::size_t i = 0; i < plugs.size(); ++i) {
      const double away = QLineF(local, places[i]).length();
      if (away > distance) continue;
      distance = away;
      nearest = PlugRef{face_.id, plugs[i].name, plugs[i].index, plugs[i].type, is_input};
    }
  };
  look(face_.inputs, shape_.inputs, true);
  look(face_.outputs, shape_.outputs, false);
  return nearest;
}

bool NodeItem::IsAtEye(const QPointF& place) const { return shape_.eye.contains(place - pos()); }

QString NodeItem::GetToolTip(const QPointF& place) const {
  if (const auto plug = FindPlug(place, 9.0)) {
    const QString name = QString::fromStdString(plug->GetPlug()).toHtmlEscaped();
    return QStringLiteral("<b>%1</b> – %2").arg(name, NamePlugKind(plug->type));
  }
  if (IsAtEye(place)) return QCoreApplication::translate("NodeItem", "Show this node (V)");
  QString text = QStringLiteral("<b>%1</b><br>%2").arg(face_.title.toHtmlEscaped(), face_.type_name.toHtmlEscaped());
  for (const QString& message : condition_.messages) text += QStringLiteral("<br>") + message.toHtmlEscaped();
  if (condition_.is_blocked && condition_.messages.isEmpty()) {
    text +=
        QStringLiteral("<br>") + QCoreApplication::translate("NodeItem", "Not evaluated: a node that feeds it failed.");
  }
  if (!face_.note.isEmpty()) text += QStringLiteral("<br><i>%1</i>").arg(face_.note.toHtmlEscaped());
  return text;
}

const QImage& NodeItem::GetThumbnail() const {
  if (thumbnail_.isNull() && condition_.thumbnail) thumbnail_ = DrawThumbnail(*condition_.thumbnail);
  return thumbnail_;
}
