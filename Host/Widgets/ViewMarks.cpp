// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ViewMarks.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "Host/Widgets/PanelStyle.h"

namespace ScEng {
namespace {

constexpr double kArm = 7.0;
constexpr double kReach = 9.0;
const QColor kEdge(0, 0, 0, 170);

/// Strokes a path in a color over a wider dark one.
void Stroke(QPainter& painter, const QPainterPath& path, const QColor& color, double width) {
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(kEdge, width + 2.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPath(path);
  painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.drawPath(path);
}

QPainterPath MakePointPath(const QRectF& pixel) {
  QPainterPath path;
  const QPointF at = pixel.center();
  // Near by, the pixel itself is marked; from afar it is too small to be seen.
  if (pixel.width() >= 2.0 * kArm) {
    path.addRect(pixel);
    return path;
  }
  constexpr double kGap = 2.5;
  for (const QPointF& arm : {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1), QPointF(0, -1)}) {
    path.moveTo(at + arm * kGap);
    path.lineTo(at + arm * kArm);
  }
  return path;
}

QRectF FindTag(const QFontMetricsF& metrics, const QRectF& area, bool is_point, const QString& text) {
  const double height = metrics.height() + 2.0;
  const QSizeF size(std::max(height, metrics.horizontalAdvance(text) + 8.0), height);
  const bool is_small = is_point && area.width() < 2.0 * kArm;
  const QPointF corner =
      is_small ? area.center() + QPointF(kArm, -kArm - height + 4.0) : area.topLeft() + QPointF(0.0, -height - 3.0);
  return {corner, size};
}

/// A box on which text is read, whatever lies below it.
void DrawBox(QPainter& painter, const QRectF& box, const QPalette& palette) {
  QColor ground = palette.color(QPalette::Base);
  ground.setAlphaF(0.94F);
  painter.setPen(QPen(OutlineColor(palette), 1.0));
  painter.setBrush(ground);
  painter.drawRoundedRect(box, 6.0, 6.0);
  painter.setPen(palette.color(QPalette::Text));
}

}  // namespace

void DrawProbe(QPainter& painter, const QRectF& area, bool is_point, int number, bool is_selected,
               const QPalette& palette) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor accent = palette.color(QPalette::Active, QPalette::Highlight);
  QPainterPath path;
  if (is_point) {
    path = MakePointPath(area);
  } else {
    path.addRect(area);
  }
  Stroke(painter, path, is_selected ? accent.lighter(115) : QColor(Qt::white), is_selected ? 2.0 : 1.4);

  QFont font = painter.font();
  font.setBold(true);
  painter.setFont(font);
  const QString text = QString::number(number);
  const QRectF tag = FindTag(QFontMetricsF(font), area, is_point, text);
  painter.setPen(QPen(kEdge, 1.0));
  painter.setBrush(is_selected ? accent : QColor(255, 255, 255, 235));
  painter.drawRoundedRect(tag, 3.0, 3.0);
  painter.setPen(is_selected ? palette.color(QPalette::Active, QPalette::HighlightedText) : QColor(20, 22, 26));
  painter.drawText(tag, Qt::AlignCenter, text);
  painter.restore();
}

bool IsOnProbe(const QRectF& area, bool is_point, const QPointF& place) {
  if (is_point) {
    return area.contains(place) || QLineF(area.center(), place).length() <= kReach;
  }
  const QRectF outer = area.adjusted(-kReach / 2, -kReach / 2, kReach / 2, kReach / 2);
  const QRectF inner = area.adjusted(kReach / 2, kReach / 2, -kReach / 2, -kReach / 2);
  const bool is_inside = inner.isValid() && inner.contains(place);
  return outer.contains(place) && !is_inside;
}

void DrawRubberBand(QPainter& painter, const QRectF& area, const QPalette& palette) {
  QColor fill = palette.color(QPalette::Active, QPalette::Highlight);
  fill.setAlphaF(0.18F);
  painter.fillRect(area, fill);
  QPainterPath path;
  path.addRect(area);
  Stroke(painter, path, Qt::white, 1.2);
}

void DrawPixelCursor(QPainter& painter, const QRectF& pixel) {
  QRectF frame = pixel;
  constexpr double kLeast = 7.0;
  if (frame.width() < kLeast) frame = QRectF(pixel.center() - QPointF(kLeast, kLeast) / 2.0, QSizeF(kLeast, kLeast));
  QPainterPath path;
  path.addRect(frame);
  const QPointF at = frame.center();
  const double reach = frame.width() / 2.0;
  for (const QPointF& arm : {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1), QPointF(0, -1)}) {
    path.moveTo(at + arm * (reach + 2.0));
    path.lineTo(at + arm * (reach + 9.0));
  }
  Stroke(painter, path, Qt::white, 1.2);
}

void DrawWipe(QPainter& painter, double x, double height, bool has_focus, const QPalette& palette) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  QPainterPath line;
  line.moveTo(x, 0.0);
  line.lineTo(x, height);
  Stroke(painter, line, Qt::white, 1.4);
  const QPointF middle(x, height / 2.0);
  painter.setPen(QPen(kEdge, 1.0));
  painter.setBrush(has_focus ? palette.color(QPalette::Active, QPalette::Highlight) : QColor(Qt::white));
  painter.drawEllipse(middle, 11.0, 11.0);
  painter.setPen(QPen(has_focus ? palette.color(QPalette::Active, QPalette::HighlightedText) : QColor(40, 44, 50), 1.8,
                      Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  for (const double side : {-1.0, 1.0}) {
    QPainterPath arrow;
    arrow.moveTo(middle + QPointF(side * 3.0, -3.5));
    arrow.lineTo(middle + QPointF(side * 6.5, 0.0));
    arrow.lineTo(middle + QPointF(side * 3.0, 3.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(arrow);
  }
  painter.restore();
}

void DrawMessage(QPainter& painter, const QRect& room, const QString& text, bool over_picture,
                 const QPalette& palette) {
  if (text.isEmpty()) return;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  const QFontMetrics metrics(painter.font());
  const int padding = metrics.height() * 3 / 4;
  const int widest = std::max(80, std::min(metrics.averageCharWidth() * 64, room.width() - 6 * padding));
  const int flags = Qt::AlignCenter | Qt::TextWordWrap;
  QRect box = metrics.boundingRect(QRect(0, 0, widest, room.height()), flags, text);
  box.adjust(-padding, -padding, padding, padding);
  box.moveCenter(room.center());
  if (over_picture) box.moveTop(padding);
  DrawBox(painter, QRectF(box), palette);
  painter.drawText(box, flags, text);
  painter.restore();
}

void DrawBusy(QPainter& painter, const QRect& room, const QString& text, double fraction, const QPalette& palette) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  const QFontMetricsF metrics(painter.font());
  const double padding = metrics.height() * 0.5;
  const QSizeF size(metrics.horizontalAdvance(text) + 2.0 * padding, metrics.height() + 1.4 * padding);
  const QRectF box(QPointF(room.right() - size.width() - padding, room.bottom() - size.height() - padding), size);
  DrawBox(painter, box, palette);
  painter.drawText(box.adjusted(0, 0, 0, -padding * 0.3), Qt::AlignCenter, text);
  const QRectF groove(box.left() + padding, box.bottom() - padding * 0.7, box.width() - 2.0 * padding, 2.0);
  painter.setPen(Qt::NoPen);
  painter.setBrush(OutlineColor(palette));
  painter.drawRect(groove);
  if (fraction >= 0.0) {
    painter.setBrush(palette.color(QPalette::Active, QPalette::Highlight));
    painter.drawRect(QRectF(groove.topLeft(), QSizeF(groove.width() * std::min(1.0, fraction), groove.height())));
  }
  painter.restore();
}

}  // namespace ScEng
