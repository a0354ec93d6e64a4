// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/PointerHint.h"

#include <QFontMetrics>
#include <QToolTip>
#include <algorithm>

#include "Apps/Editor/Canvas/GraphView.h"

void PaintHint(QPainter& painter, const GraphView& view, const QPointF& place, const QString& text) {
  const QFontMetrics metrics(view.font());
  const QPoint pointer = view.mapFromScene(place);
  const QRect whole = view.viewport()->rect();
  QRect box(QPoint(), metrics.size(Qt::TextSingleLine, text) + QSize(metrics.height(), metrics.height() / 2));
  box.moveTopLeft(pointer + QPoint(14, metrics.height()));
  box.moveLeft(std::max(whole.left() + 2, std::min(box.left(), whole.right() - box.width() - 2)));
  // Below the pointer, and above it where there is no room.
  if (box.bottom() > whole.bottom() - 2) box.moveBottom(pointer.y() - metrics.height() / 2);
  const CanvasColors& colors = view.GetScene().GetColors();
  painter.save();
  painter.resetTransform();
  painter.setOpacity(1.0);
  painter.setPen(QPen(colors.error, 1.2));
  painter.setBrush(MixColors(colors.body, colors.error, 0.08));
  painter.drawRoundedRect(QRectF(box).adjusted(0.5, 0.5, -0.5, -0.5), 5, 5);
  painter.setFont(view.font());
  painter.setPen(colors.text);
  painter.drawText(box, Qt::AlignCenter, text);
  painter.restore();
}

void ShowHint(GraphView& view, const QPointF& place, const QString& text) {
  QToolTip::showText(view.viewport()->mapToGlobal(view.mapFromScene(place)), text, view.viewport());
}
