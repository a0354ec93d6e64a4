// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/PlugMark.h"

#include <QPolygonF>
#include <cmath>

#include "Host/Tools/PlugValue.h"

namespace {

QPolygonF MakePolygon(const QPointF& middle, double radius, int corners, double start_degrees) {
  constexpr double kPi = 3.14159265358979323846;
  QPolygonF polygon;
  for (int i = 0; i < corners; ++i) {
    const double angle = (start_degrees + 360.0 * i / corners) * kPi / 180.0;
    polygon << middle + QPointF(std::cos(angle), std::sin(angle)) * radius;
  }
  return polygon;
}

QRectF MakeSquare(const QPointF& middle, double half) {
  return {middle.x() - half, middle.y() - half, 2 * half, 2 * half};
}

}  // namespace

void DrawPlugMark(QPainter& painter, const QPointF& middle, double radius, unsigned type, bool is_filled,
                  const CanvasColors& colors) {
  const QColor color = colors.GetKind(type);
  painter.setPen(QPen(color, 1.6));
  painter.setBrush(is_filled ? color : colors.body);
  switch (type) {
    case PlugType::kImage: painter.drawEllipse(middle, radius, radius); break;
    case PlugType::kNumber: painter.drawPolygon(MakePolygon(middle, radius * 1.25, 4, 0)); break;
    case PlugType::kFlag: painter.drawPolygon(MakePolygon(middle, radius * 1.3, 3, 0)); break;
    case PlugType::kText: painter.drawRect(MakeSquare(middle, radius * 0.85)); break;
    case PlugType::kColor: painter.drawPolygon(MakePolygon(middle, radius * 1.15, 6, 0)); break;
    case PlugType::kPoint: painter.drawPolygon(MakePolygon(middle, radius * 1.2, 5, -90)); break;
    case PlugType::kFrame:
      painter.drawRect(QRectF(middle.x() - radius * 1.2, middle.y() - radius * 0.7, radius * 2.4, radius * 1.4));
      break;
    default: painter.drawRoundedRect(MakeSquare(middle, radius * 0.8), 2, 2); break;
  }
}

QPen MakeWirePen(unsigned type, const QColor& color, double width) {
  QPen pen(color, width, Qt::SolidLine, Qt::RoundCap);
  switch (type) {
    case PlugType::kImage: break;
    case PlugType::kNumber: pen.setDashPattern({6, 3}); break;
    case PlugType::kFlag: pen.setDashPattern({1, 3}); break;
    case PlugType::kText: pen.setDashPattern({8, 3, 1, 3}); break;
    default: pen.setDashPattern({3, 3}); break;
  }
  return pen;
}
