// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/FarPainter.h"

#include <QLineF>
#include <QList>
#include <map>

#include "Apps/Editor/Canvas/GraphScene.h"

namespace {

/// Lines and rectangles by the color that they are drawn in.
template <class Shape>
using ByColor = std::map<QRgb, QList<Shape>>;

void DrawWires(QPainter& painter, const GraphScene& scene, const QRectF& exposed) {
  const CanvasColors& colors = scene.GetColors();
  ByColor<QLineF> lines;
  for (const WireItem* wire : scene.GetAllWires()) {
    const QRectF box = QRectF(wire->GetStart(), wire->GetEnd()).normalized().adjusted(-1, -1, 1, 1);
    if (!box.intersects(exposed)) continue;
    const double share = wire->IsDimmed() ? 0.2 : 0.55;
    const QColor color =
        wire->isSelected() ? colors.accent : MixColors(colors.ground, colors.GetKind(wire->GetKind()), share);
    lines[color.rgb()] << QLineF(wire->GetStart(), wire->GetEnd());
  }
  for (const auto& [color, group] : lines) {
    QPen pen(QColor::fromRgb(color), 1.0);
    pen.setCosmetic(true);
    painter.setPen(pen);
    painter.drawLines(group);
  }
}

QColor ChooseFill(const NodeItem& item, const CanvasColors& colors) {
  QColor fill = MixColors(colors.body, colors.text, 0.35);
  if (item.GetFace().is_placeholder) fill = MixColors(fill, colors.warning, 0.5);
  if (!item.GetFace().is_enabled) fill = MixColors(fill, colors.ground, 0.6);
  if (item.GetCondition().is_in_error) fill = colors.error;
  if (item.IsShown() || item.isSelected()) fill = colors.accent;
  return item.IsDimmed() ? MixColors(colors.ground, fill, 0.4) : fill;
}

void DrawNodes(QPainter& painter, const GraphScene& scene, const QRectF& exposed) {
  const CanvasColors& colors = scene.GetColors();
  ByColor<QRectF> boxes;
  for (const std::string& id : scene.GetIds()) {
    const NodeItem* item = scene.FindNode(id);
    if (item == nullptr || !item->GetBody().intersects(exposed)) continue;
    boxes[ChooseFill(*item, colors).rgb()] << item->GetBody();
  }
  painter.setPen(Qt::NoPen);
  for (const auto& [color, group] : boxes) {
    painter.setBrush(QColor::fromRgb(color));
    painter.drawRects(group);
  }
}

void DrawFrames(QPainter& painter, const GraphScene& scene, const QRectF& exposed) {
  for (const FrameItem* frame : scene.GetFrames()) {
    if (!frame->GetBox().intersects(exposed)) continue;
    QColor fill = frame->GetColor();
    fill.setAlphaF(0.18F);
    painter.fillRect(frame->GetBox(), fill);
  }
}

}  // namespace

void PaintFromAfar(QPainter& painter, const GraphScene& scene, const QRectF& exposed) {
  painter.setRenderHint(QPainter::Antialiasing, false);
  DrawFrames(painter, scene, exposed);
  DrawWires(painter, scene, exposed);
  DrawNodes(painter, scene, exposed);
}
