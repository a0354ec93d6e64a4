// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/GraphView.h"

#include <QElapsedTimer>
#include <QFontInfo>
#include <QPaintEvent>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

#include "Apps/Editor/Canvas/FarPainter.h"

namespace {

constexpr double kLeastZoom = 0.02;
constexpr double kMostZoom = 4.0;
constexpr double kGrid = 24.0;

}  // namespace

GraphView::GraphView(GraphScene& scene, CanvasCommands& commands, QWidget* parent)
    : QGraphicsView(&scene, parent), scene_(scene), commands_(commands) {
  setObjectName(QStringLiteral("canvas.view"));
  setFrameShape(QFrame::NoFrame);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setRenderHint(QPainter::Antialiasing);
  // Items leave neither pen nor transform behind that others would trip over.
  setOptimizationFlags(DontAdjustForAntialiasing | DontSavePainterState);
  setViewportUpdateMode(SmartViewportUpdate);
  setTransformationAnchor(NoAnchor);
  setResizeAnchor(NoAnchor);
  setSceneRect(-2 * kFarthest, -2 * kFarthest, 4 * kFarthest, 4 * kFarthest);
  setMouseTracking(true);
  viewport()->setMouseTracking(true);
  setAcceptDrops(true);
  setFocusPolicy(Qt::StrongFocus);
  MeasureScale();
  setTransform(QTransform::fromScale(scale_, scale_));
  connect(&scene, &GraphScene::Changed, this, [this] { viewport()->update(); });
  connect(&scene, &QGraphicsScene::selectionChanged, this, [this] { viewport()->update(); });
}

GraphView::~GraphView() = default;

// ---- Zoom and center ----

void GraphView::MeasureScale() {
  // Nodes are made for text of this size; at a larger font of the desktop, everything grows with it.
  constexpr double kTextSize = 12.0;
  scale_ = std::clamp(QFontInfo(font()).pixelSize() / kTextSize, 0.7, 4.0);
}

double GraphView::GetZoom() const { return transform().m11() / scale_; }

void GraphView::SetZoom(double zoom, const QPoint& fixed) {
  const double scale = scale_ * std::clamp(zoom, kLeastZoom, kMostZoom);
  const QPointF before = mapToScene(fixed);
  setTransform(QTransform::fromScale(scale, scale));
  const QPointF off = (before - mapToScene(fixed)) * scale;
  PanBy(QPoint(static_cast<int>(std::round(-off.x())), static_cast<int>(std::round(-off.y()))));
  viewport()->update();
  emit ViewChanged();
}

QPointF GraphView::GetCenter() const { return viewportTransform().inverted().map(QRectF(viewport()->rect()).center()); }

void GraphView::SetCenter(const QPointF& center) {
  centerOn(center);
  emit ViewChanged();
}

void GraphView::ZoomTo(const QRectF& extent) {
  if (extent.isEmpty()) return;
  const QRectF whole = extent.adjusted(-50, -50, 50, 60);
  const double fit = std::min(viewport()->width() / whole.width(), viewport()->height() / whole.height());
  SetZoom(std::min(1.0, fit / scale_), viewport()->rect().center());
  SetCenter(whole.center());
}

double GraphView::ToScene(double pixels) const { return pixels / transform().m11(); }

QPointF GraphView::GetPointer() const {
  const QPoint pointer = viewport()->mapFromGlobal(QCursor::pos());
  return viewport()->rect().contains(pointer) && viewport()->underMouse() ? mapToScene(pointer) : GetCenter();
}

QRect GraphView::ToViewport(const QRectF& extent) const { return mapFromScene(extent).boundingRect(); }

void GraphView::PanBy(const QPoint& pixels) {
  horizontalScrollBar()->setValue(horizontalScrollBar()->value() - pixels.x());
  verticalScrollBar()->setValue(verticalScrollBar()->value() - pixels.y());
}

void GraphView::scrollContentsBy(int dx, int dy) {
  QGraphicsView::scrollContentsBy(dx, dy);
  emit ViewChanged();
}

void GraphView::resizeEvent(QResizeEvent* event) {
  QGraphicsView::resizeEvent(event);
  emit ViewChanged();
}

void GraphView::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange) scene_.SetPalette(palette());
  if (event->type() == QEvent::FontChange) {
    const double zoom = GetZoom();
    MeasureScale();
    SetZoom(zoom, viewport()->rect().center());
  }
  QGraphicsView::changeEvent(event);
}

// ---- Drawing ----

void GraphView::paintEvent(QPaintEvent* event) {
  QElapsedTimer timer;
  timer.start();
  if (transform().m11() >= Detail::kNear) {
    QGraphicsView::paintEvent(event);
  } else {
    QPainter painter(viewport());
    painter.setClipRegion(event->region());
    painter.fillRect(event->rect(), scene_.GetColors().ground);
    painter.setTransform(viewportTransform());
    PaintFromAfar(painter, scene_, mapToScene(event->rect()).boundingRect());
    drawForeground(&painter, {});
  }
  paint_seconds_ = static_cast<double>(timer.nsecsElapsed()) * 1e-9;
}

void GraphView::drawBackground(QPainter* painter, const QRectF& rect) {
  const CanvasColors& colors = scene_.GetColors();
  painter->fillRect(rect, colors.ground);
  if (transform().m11() < Detail::kText) return;
  QList<QPointF> dots;
  for (double y = std::floor(rect.top() / kGrid) * kGrid; y < rect.bottom() + kGrid; y += kGrid) {
    for (double x = std::floor(rect.left() / kGrid) * kGrid; x < rect.right() + kGrid; x += kGrid)
      dots << QPointF(x, y);
  }
  const bool was_smooth = painter->testRenderHint(QPainter::Antialiasing);
  painter->setRenderHint(QPainter::Antialiasing, false);
  QPen pen(colors.grid, 1.6);
  pen.setCosmetic(true);
  painter->setPen(pen);
  painter->drawPoints(dots.constData(), static_cast<int>(dots.size()));
  painter->setRenderHint(QPainter::Antialiasing, was_smooth);
}

void GraphView::drawForeground(QPainter* painter, const QRectF&) {
  painter->setOpacity(1.0);
  painter->setRenderHint(QPainter::Antialiasing);
  if (drag_) drag_->Paint(*painter);
  if (!scene_.GetIds().empty() || drag_) return;
  painter->resetTransform();
  painter->setPen(scene_.GetColors().faint);
  painter->setFont(font());
  painter->drawText(QRectF(viewport()->rect()), Qt::AlignCenter,
                    tr("Press Tab or double click to add a node.\nDrop image files here to read them."));
}
