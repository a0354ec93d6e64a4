// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TerrainCanvas.h"

#include <QKeyEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <cmath>
#include <utility>

#include "Apps/Editor/Terrain/TerrainKeys.h"

namespace {

constexpr int kRestMilliseconds = 140;
constexpr double kDegreesPerPixel = 0.35;
/// Of one unit of a wheel, of which a notch has 120.
constexpr double kZoomPerUnit = 1.0015;

QColor Mix(const QColor& a, const QColor& b, float share) {
  return QColor::fromRgbF(a.redF() + (b.redF() - a.redF()) * share, a.greenF() + (b.greenF() - a.greenF()) * share,
                          a.blueF() + (b.blueF() - a.blueF()) * share);
}

}  // namespace

TerrainCanvas::TerrainCanvas(QWidget* parent) : QWidget(parent), colors_(std::make_shared<const SurfaceColors>()) {
  setObjectName(QStringLiteral("terrain canvas"));
  setAccessibleName(tr("Terrain"));
  setAccessibleDescription(
      tr("Arrow keys turn the terrain, with Shift they move it, plus and minus zoom, Home shows all of it."));
  setFocusPolicy(Qt::StrongFocus);
  setContextMenuPolicy(Qt::PreventContextMenu);
  setCursor(Qt::OpenHandCursor);
  setAttribute(Qt::WA_OpaquePaintEvent);
  rest_.setSingleShot(true);
  rest_.setInterval(kRestMilliseconds);
  connect(&rest_, &QTimer::timeout, this, &TerrainCanvas::AskFine);
}

TerrainCanvas::~TerrainCanvas() = default;

TerrainPainter& TerrainCanvas::GetPainter() {
  if (painter_ == nullptr) {
    painter_ = std::make_unique<TerrainPainter>();
    connect(&painter_->GetWorker(), &TerrainWorker::Drawn, this, &TerrainCanvas::TakePicture);
  }
  return *painter_;
}

void TerrainCanvas::SetField(std::shared_ptr<const HeightField> field) {
  field_ = std::move(field);
  Refresh();
}

void TerrainCanvas::SetColors(std::shared_ptr<const SurfaceColors> colors) {
  colors_ = std::move(colors);
  Refresh();
}

void TerrainCanvas::SetSettings(const TerrainSettings& settings) {
  if (settings == settings_) return;
  settings_ = settings;
  Refresh();
}

void TerrainCanvas::Orbit(double right_degrees, double up_degrees) {
  camera_.Orbit(right_degrees, up_degrees);
  Refresh();
}

void TerrainCanvas::Pan(double right, double up) {
  camera_.Pan(right, up);
  Refresh();
}

void TerrainCanvas::Zoom(double factor) {
  camera_.Zoom(factor);
  Refresh();
}

void TerrainCanvas::ResetCamera() {
  camera_.Reset();
  Refresh();
}

QString TerrainCanvas::GetProblem() {
  if (picture_.problem.isEmpty()) {
    picture_.problem = GetPainter().GetProblem();
    if (!picture_.problem.isEmpty()) {
      update();
      emit ProblemFound();
    }
  }
  return picture_.problem;
}

TerrainBackground TerrainCanvas::GetBackground() const {
  const QColor window = palette().color(QPalette::Window);
  const bool is_dark = window.lightnessF() < 0.5F;
  return {Mix(window, is_dark ? Qt::black : Qt::white, is_dark ? 0.25F : 0.55F),
          Mix(window, is_dark ? Qt::white : Qt::black, is_dark ? 0.13F : 0.14F)};
}

TerrainFrame TerrainCanvas::MakeFrame(bool is_fine) const {
  TerrainFrame frame;
  frame.field = field_;
  frame.colors = colors_;
  frame.settings = settings_;
  frame.camera = camera_;
  frame.background = GetBackground();
  frame.pixels = (QSizeF(size()) * devicePixelRatioF()).toSize().expandedTo(QSize(1, 1));
  frame.is_fine = is_fine;
  return frame;
}

void TerrainCanvas::Refresh() {
  if (!HasSurface()) {
    rest_.stop();
    picture_.image = {};
    update();
    return;
  }
  if (!isVisible() || !picture_.problem.isEmpty()) return;
  GetPainter().GetWorker().Ask(MakeFrame(false));
  rest_.start();
}

void TerrainCanvas::AskFine() {
  if (HasSurface() && isVisible()) GetPainter().GetWorker().Ask(MakeFrame(true));
}

void TerrainCanvas::TakePicture(const TerrainPicture& picture) {
  // Heights may have been taken away meanwhile.
  if (!HasSurface() && picture.problem.isEmpty()) return;
  picture_ = picture;
  picture_.image.setDevicePixelRatio(devicePixelRatioF());
  update();
  if (picture_.problem.isEmpty()) {
    emit PictureDrawn();
  } else {
    emit ProblemFound();
  }
}

QImage TerrainCanvas::Grab() {
  if (HasSurface() && GetProblem().isEmpty()) {
    rest_.stop();
    TakePicture(GetPainter().Draw(MakeFrame(true)));
  }
  return grab().toImage();
}

QString TerrainCanvas::GetNotice() const {
  if (!picture_.problem.isEmpty()) {
    return tr("The 3D view needs OpenGL, which cannot be used here: %1.").arg(picture_.problem);
  }
  if (field_ == nullptr) return tr("There is no height map to show.");
  if (field_->GetSizeX() < 2 || field_->GetSizeY() < 2) {
    return tr("An image of %1 × %2 pixels is too small for a terrain.").arg(field_->GetSizeX()).arg(field_->GetSizeY());
  }
  return field_->HasSurface() ? QString() : tr("The image has no finite heights.");
}

void TerrainCanvas::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  if (!picture_.image.isNull()) {
    painter.drawImage(QRectF(rect()), picture_.image, QRectF(picture_.image.rect()));
  } else {
    const TerrainBackground background = GetBackground();
    QLinearGradient gradient(0, 0, 0, height());
    gradient.setColorAt(0, background.top);
    gradient.setColorAt(1, background.bottom);
    painter.fillRect(rect(), gradient);
    painter.setPen(palette().color(QPalette::WindowText));
    const int margin = fontMetrics().height();
    painter.drawText(rect().adjusted(margin, margin, -margin, -margin), Qt::AlignCenter | Qt::TextWordWrap,
                     GetNotice());
  }
  if (hasFocus()) {
    painter.setPen(palette().color(QPalette::Highlight));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
  }
}

void TerrainCanvas::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  Refresh();
}

void TerrainCanvas::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  Refresh();
}

void TerrainCanvas::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) Refresh();
}

void TerrainCanvas::mousePressEvent(QMouseEvent* event) {
  last_place_ = event->position();
  setCursor(Qt::ClosedHandCursor);
}

void TerrainCanvas::mouseReleaseEvent(QMouseEvent*) { setCursor(Qt::OpenHandCursor); }

void TerrainCanvas::mouseMoveEvent(QMouseEvent* event) {
  const QPointF way = event->position() - last_place_;
  last_place_ = event->position();
  if (event->buttons().testFlag(Qt::LeftButton) && !event->modifiers().testFlag(Qt::ShiftModifier)) {
    Orbit(-way.x() * kDegreesPerPixel, way.y() * kDegreesPerPixel);
  } else if (event->buttons() != Qt::NoButton) {
    Pan(-way.x() / height(), way.y() / height());
  }
}

void TerrainCanvas::wheelEvent(QWheelEvent* event) {
  Zoom(std::pow(kZoomPerUnit, event->angleDelta().y()));
  event->accept();
}

bool TerrainCanvas::event(QEvent* event) {
  // Its keys come here even where a menu of the window has them too.
  if (event->type() == QEvent::ShortcutOverride && FindTerrainKey(*static_cast<QKeyEvent*>(event))) {
    event->accept();
    return true;
  }
  return QWidget::event(event);
}

void TerrainCanvas::keyPressEvent(QKeyEvent* event) {
  const std::optional<TerrainMove> move = FindTerrainKey(*event);
  if (!move) {
    QWidget::keyPressEvent(event);
    return;
  }
  switch (move->kind) {
    case TerrainMove::kOrbit: Orbit(move->x, move->y); break;
    case TerrainMove::kPan: Pan(move->x, move->y); break;
    case TerrainMove::kZoom: Zoom(move->x); break;
    case TerrainMove::kReset: ResetCamera(); break;
    case TerrainMove::kWireframe: emit WireframeAsked(); break;
  }
}
