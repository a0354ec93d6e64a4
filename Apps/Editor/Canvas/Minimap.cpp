// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/Minimap.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "Apps/Editor/Canvas/FarPainter.h"
#include "Apps/Editor/Canvas/GraphView.h"

Minimap::Minimap(GraphView& view) : QWidget(&view), view_(view) {
  setObjectName(QStringLiteral("canvas.map"));
  setAccessibleName(tr("Map of the graph"));
  setToolTip(tr("Map of the graph: click to go there"));
  setCursor(Qt::PointingHandCursor);
  view.installEventFilter(this);
  connect(&view, &GraphView::ViewChanged, this, qOverload<>(&QWidget::update));
  connect(&view.GetScene(), &GraphScene::Changed, this, qOverload<>(&QWidget::update));
  connect(&view.GetScene(), &QGraphicsScene::selectionChanged, this, qOverload<>(&QWidget::update));
}

void Minimap::Place() {
  const QSize around = parentWidget()->size();
  const int line = fontMetrics().height();
  const QSize size(std::min(line * 11, around.width() / 4), std::min(line * 7, around.height() / 4));
  const int gap = line / 2;
  setGeometry(QRect(QPoint(around.width() - size.width() - gap, around.height() - size.height() - gap), size));
}

bool Minimap::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Resize) Place();
  return QWidget::eventFilter(watched, event);
}

QRectF Minimap::GetSeen() const {
  return view_.viewportTransform().inverted().mapRect(QRectF(view_.viewport()->rect()));
}

QTransform Minimap::MakeTransform() const {
  QRectF extent = view_.GetScene().GetExtent();
  if (extent.isEmpty()) extent = GetSeen();
  const QRectF area = QRectF(rect()).adjusted(8, 8, -8, -8);
  const double scale = std::min(area.width() / extent.width(), area.height() / extent.height());
  QTransform transform;
  transform.translate(area.center().x(), area.center().y());
  transform.scale(scale, scale);
  transform.translate(-extent.center().x(), -extent.center().y());
  return transform;
}

void Minimap::paintEvent(QPaintEvent*) {
  const GraphScene& scene = view_.GetScene();
  const CanvasColors& colors = scene.GetColors();
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  QPainterPath outline;
  outline.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
  QColor fill = colors.body;
  fill.setAlphaF(0.88F);
  painter.fillPath(outline, fill);
  painter.setClipPath(outline);
  const QTransform transform = MakeTransform();
  painter.setTransform(transform, true);
  PaintFromAfar(painter, scene, scene.GetExtent().adjusted(-1, -1, 1, 1));
  painter.resetTransform();
  painter.setRenderHint(QPainter::Antialiasing);
  QColor seen = colors.accent;
  seen.setAlphaF(0.12F);
  painter.setPen(QPen(colors.accent, 1.2));
  painter.setBrush(seen);
  painter.drawRect(transform.mapRect(GetSeen()));
  painter.setClipping(false);
  painter.setPen(QPen(colors.edge, 1.0));
  painter.setBrush(Qt::NoBrush);
  painter.drawPath(outline);
}

void Minimap::GoTo(const QPoint& place) { view_.SetCenter(MakeTransform().inverted().map(QPointF(place))); }

void Minimap::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) GoTo(event->pos());
  event->accept();
}

void Minimap::mouseMoveEvent(QMouseEvent* event) {
  if (event->buttons().testFlag(Qt::LeftButton)) GoTo(event->pos());
  event->accept();
}

void Minimap::wheelEvent(QWheelEvent* event) { event->ignore(); }
