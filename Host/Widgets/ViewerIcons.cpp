// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ViewerIcons.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace ScEng {
namespace {

// All signs are drawn into a square of 16 by 16.

void DrawShading(QPainter& painter, const QColor& color) {
  QLinearGradient gradient(3.0, 3.0, 13.0, 13.0);
  QColor faint = color;
  faint.setAlphaF(0.08F);
  gradient.setColorAt(0.15, faint);
  gradient.setColorAt(0.95, color);
  painter.setBrush(gradient);
  painter.drawEllipse(QPointF(8.0, 8.0), 5.5, 5.5);
}

void DrawChannels(QPainter& painter, const QColor&) {
  painter.drawEllipse(QPointF(8.0, 5.6), 3.6, 3.6);
  painter.drawEllipse(QPointF(5.6, 9.9), 3.6, 3.6);
  painter.drawEllipse(QPointF(10.4, 9.9), 3.6, 3.6);
}

void DrawContours(QPainter& painter, const QColor&) {
  QPainterPath path;
  path.moveTo(2.0, 6.0);
  path.cubicTo(5.0, 1.0, 8.0, 8.0, 14.0, 3.0);
  path.moveTo(2.0, 10.0);
  path.cubicTo(6.0, 4.5, 9.0, 12.0, 14.0, 7.0);
  path.moveTo(2.0, 13.8);
  path.cubicTo(6.0, 9.0, 10.0, 15.0, 14.0, 11.0);
  painter.drawPath(path);
}

void DrawMarks(QPainter& painter, const QColor& color) {
  QPainterPath path;
  path.moveTo(8.0, 2.6);
  path.lineTo(14.0, 13.2);
  path.lineTo(2.0, 13.2);
  path.closeSubpath();
  painter.drawPath(path);
  painter.drawLine(QPointF(8.0, 6.4), QPointF(8.0, 9.2));
  painter.setBrush(color);
  painter.drawEllipse(QPointF(8.0, 11.2), 0.3, 0.3);
}

void DrawTiles(QPainter& painter, const QColor& color) {
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 3; ++x) {
      const QRectF tile(2.5 + 4.0 * x, 2.5 + 4.0 * y, 3.0, 3.0);
      painter.setBrush(x == 1 && y == 1 ? QBrush(color) : QBrush(Qt::NoBrush));
      painter.drawRect(tile);
    }
  }
}

void DrawProbeSign(QPainter& painter, const QColor&) {
  painter.drawEllipse(QPointF(8.0, 8.0), 3.4, 3.4);
  for (const QPointF& arm : {QPointF(1, 0), QPointF(-1, 0), QPointF(0, 1), QPointF(0, -1)}) {
    painter.drawLine(QPointF(8.0, 8.0) + arm * 1.6, QPointF(8.0, 8.0) + arm * 6.2);
  }
}

void DrawWipeSign(QPainter& painter, const QColor& color) {
  const QRectF frame(2.0, 3.5, 12.0, 9.0);
  QColor faint = color;
  faint.setAlphaF(0.35F);
  painter.fillRect(QRectF(2.0, 3.5, 6.0, 9.0), faint);
  painter.drawRect(frame);
  painter.drawLine(QPointF(8.0, 1.6), QPointF(8.0, 14.4));
}

void DrawFit(QPainter& painter, const QColor&) {
  QPainterPath path;
  for (const double x : {2.5, 13.5}) {
    for (const double y : {3.0, 13.0}) {
      const double right = x < 8.0 ? 1.0 : -1.0;
      const double down = y < 8.0 ? 1.0 : -1.0;
      path.moveTo(x + right * 3.2, y);
      path.lineTo(x, y);
      path.lineTo(x, y + down * 3.2);
    }
  }
  painter.drawPath(path);
  painter.drawRect(QRectF(6.0, 6.2, 4.0, 3.6));
}

void DrawLifeSize(QPainter& painter, const QColor& color) {
  QPainterPath path;
  for (const double x : {4.6, 12.2}) {
    path.moveTo(x - 1.8, 5.4);
    path.lineTo(x, 3.8);
    path.lineTo(x, 12.2);
  }
  painter.drawPath(path);
  painter.setBrush(color);
  painter.drawEllipse(QPointF(7.9, 6.4), 0.35, 0.35);
  painter.drawEllipse(QPointF(7.9, 10.4), 0.35, 0.35);
}

void DrawHistogramSign(QPainter& painter, const QColor& color) {
  constexpr double kHeights[] = {3.0, 6.0, 10.0, 7.0, 4.0};
  double x = 2.2;
  for (const double height : kHeights) {
    painter.fillRect(QRectF(x, 13.0 - height, 1.8, height), color);
    x += 2.4;
  }
}

void DrawMore(QPainter& painter, const QColor&) {
  QPainterPath path;
  for (const double x : {4.0, 8.5}) {
    path.moveTo(x, 4.5);
    path.lineTo(x + 3.5, 8.0);
    path.lineTo(x, 11.5);
  }
  painter.drawPath(path);
}

void DrawSign(QPainter& painter, ViewerSign sign, const QColor& color) {
  switch (sign) {
    case ViewerSign::kShading: return DrawShading(painter, color);
    case ViewerSign::kChannels: return DrawChannels(painter, color);
    case ViewerSign::kContours: return DrawContours(painter, color);
    case ViewerSign::kMarks: return DrawMarks(painter, color);
    case ViewerSign::kTiles: return DrawTiles(painter, color);
    case ViewerSign::kProbe: return DrawProbeSign(painter, color);
    case ViewerSign::kWipe: return DrawWipeSign(painter, color);
    case ViewerSign::kFit: return DrawFit(painter, color);
    case ViewerSign::kLifeSize: return DrawLifeSize(painter, color);
    case ViewerSign::kHistogram: return DrawHistogramSign(painter, color);
    case ViewerSign::kMore: return DrawMore(painter, color);
  }
}

class SignEngine : public QIconEngine {
 public:
  explicit SignEngine(ViewerSign sign) : sign_(sign) {}

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
    const QPalette palette = QGuiApplication::palette();
    const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
    const QColor color = palette.color(group, QPalette::ButtonText);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate(rect.topLeft());
    painter->scale(rect.width() / 16.0, rect.height() / 16.0);
    painter->setPen(QPen(color, 1.3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->setBrush(Qt::NoBrush);
    DrawSign(*painter, sign_, color);
    painter->restore();
  }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    QPixmap picture(size);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paint(&painter, QRect(QPoint(), size), mode, state);
    return picture;
  }

  [[nodiscard]] QIconEngine* clone() const override { return new SignEngine(*this); }

 private:
  ViewerSign sign_;
};

}  // namespace

QIcon MakeViewerIcon(ViewerSign sign) { return QIcon(new SignEngine(sign)); }

}  // namespace ScEng
