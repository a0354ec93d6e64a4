// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ImageView.h"

#include <QEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

#include "Host/Widgets/ImageViewParts.h"
#include "Host/Widgets/PanelStyle.h"
#include "Host/Widgets/ViewMarks.h"

namespace ScEng {

// ---- Drawing ----

QPoint ImageView::Implementation::GetCorner(const ViewImage& image) const {
  const Box2I box = image.GetHeader().GetBox();
  return {static_cast<int>(box.left), static_cast<int>(box.top)};
}

QRectF ImageView::Implementation::GetArea(const Probe& probe) const {
  const QPoint corner = image_ != nullptr ? GetCorner(*image_) : QPoint();
  return placement_.ToView(QRectF(QPointF(QPoint(probe.x, probe.y) - corner), QSizeF(probe.width, probe.height)));
}

void ImageView::Implementation::FollowExtent() {
  if (image_ == nullptr) return;
  const ImageHeader& header = image_->GetHeader();
  QRectF extent(0.0, 0.0, header.size_x, header.size_y);
  if (look_.tiled) extent.adjust(-extent.width(), -extent.height(), extent.width(), extent.height());
  placement_.SetExtent(extent);
  TellZoom();
}

ViewCanvas::Scene ImageView::Implementation::MakeScene(bool of_before) const {
  ViewCanvas::Scene scene;
  scene.image = of_before ? before_ : image_;
  scene.look = look_;
  scene.placement = placement_;
  scene.size = view_.size();
  scene.scale = view_.devicePixelRatioF();
  scene.font = view_.font();
  // Between the colors of window and text, so that black and white are both told from it.
  const QColor window = view_.palette().color(QPalette::Window);
  scene.ground = window.lightnessF() > 0.5F ? window.darker(112) : window.darker(135);
  if (!of_before || image_ == nullptr || before_ == nullptr) return scene;
  scene.offset = QPointF(GetCorner(*before_) - GetCorner(*image_));
  // Equal values of both images are to look equal.
  if (before_->GetImage().GetColorMode() == image_->GetImage().GetColorMode()) {
    scene.look.custom = GetShownRange(*image_, look_);
    scene.look.range = RangeSource::kCustom;
  }
  return scene;
}

void ImageView::Implementation::Paint(QPainter& painter) {
  painter.drawImage(QPointF(), canvas_.Get(MakeScene(false)));
  const bool is_split = is_wiped_ && before_ != nullptr && image_ != nullptr;
  if (is_split) {
    const QImage& picture = before_canvas_.Get(MakeScene(true));
    const double x = wipe_ * view_.width();
    painter.save();
    painter.setClipRect(QRectF(0.0, 0.0, x, view_.height()));
    painter.drawImage(QPointF(), picture);
    painter.restore();
  }
  PaintProbes(painter);
  if (is_key_cursor_ && cursor_ && image_ != nullptr) {
    DrawPixelCursor(painter, placement_.ToView(QRectF(QPointF(*cursor_), QSizeF(1.0, 1.0))));
  }
  if (is_split) DrawWipe(painter, wipe_ * view_.width(), view_.height(), drag_ == Drag::kWipe, view_.palette());
  DrawMessage(painter, view_.rect(), message_, image_ != nullptr, view_.palette());
  const bool is_preview = image_ != nullptr && image_->IsPreview();
  if (is_busy_ || is_preview) DrawBusy(painter, view_.rect(), DescribeState(), fraction_, view_.palette());
  if (!view_.hasFocus()) return;
  painter.setPen(QPen(view_.palette().color(QPalette::Highlight), 2.0));
  painter.setBrush(Qt::NoBrush);
  painter.drawRect(QRectF(view_.rect()).adjusted(1.0, 1.0, -1.0, -1.0));
}

QString ImageView::Implementation::DescribeState() const {
  QStringList parts;
  if (image_ != nullptr && image_->IsPreview()) parts.append(ImageView::tr("Preview 1:%1").arg(image_->GetReduction()));
  if (is_busy_) {
    parts.append(fraction_ < 0.0 ? ImageView::tr("Computing…")
                                 : ImageView::tr("Computing… %1 %").arg(std::lround(fraction_ * 100.0)));
  }
  return parts.join(QStringLiteral("  ·  "));
}

void ImageView::Implementation::PaintProbes(QPainter& painter) const {
  if (image_ == nullptr) return;
  if (probes_ != nullptr) {
    for (const Probe& probe : probes_->GetProbes()) {
      DrawProbe(painter, GetArea(probe), probe.IsPoint(), probe.number, probe.number == probes_->GetSelected(),
                view_.palette());
    }
  }
  if (drag_ != Drag::kNewProbe) return;
  const QRect band = FindBand(last_);
  DrawRubberBand(painter, placement_.ToView(QRectF(band)), view_.palette());
}

// ---- The widget ----

ImageView::ImageView(QWidget* parent) : QWidget(parent), implementation_(std::make_unique<Implementation>(*this)) {
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  setAccessibleName(tr("Image"));
  setAccessibleDescription(tr("Arrow keys move the image, Ctrl with arrow keys moves a cursor over its pixels"));
}

ImageView::~ImageView() = default;

void ImageView::SetImage(std::shared_ptr<const ViewImage> image) {
  if (image == implementation_->image_) return;
  implementation_->image_ = std::move(image);
  implementation_->FollowExtent();
  if (implementation_->cursor_) {
    // What is under the cursor may be another value, or nothing.
    const auto& shown = implementation_->image_;
    const QPoint at = *implementation_->cursor_;
    const bool is_there = shown != nullptr && at.x() < shown->GetHeader().size_x && at.y() < shown->GetHeader().size_y;
    implementation_->cursor_.reset();
    implementation_->SetCursorPixel(is_there ? std::optional<QPoint>(at) : std::nullopt,
                                    implementation_->is_key_cursor_);
  }
  update();
}

const std::shared_ptr<const ViewImage>& ImageView::GetImage() const { return implementation_->image_; }

void ImageView::SetBefore(std::shared_ptr<const ViewImage> before) {
  if (before == nullptr) implementation_->before_canvas_.Forget();
  implementation_->before_ = std::move(before);
  update();
}

void ImageView::SetLook(const Look& look) {
  if (look == implementation_->look_) return;
  implementation_->look_ = look;
  implementation_->FollowExtent();
  update();
}

const Look& ImageView::GetLook() const { return implementation_->look_; }

void ImageView::SetWipe(bool on) {
  implementation_->is_wiped_ = on;
  update();
}

bool ImageView::IsWiped() const { return implementation_->is_wiped_; }

void ImageView::SetWipePlace(double share) {
  const double place = std::clamp(share, 0.0, 1.0);
  if (place == implementation_->wipe_) return;
  implementation_->wipe_ = place;
  update();
  Q_EMIT WipeMoved(place);
}

double ImageView::GetWipePlace() const { return implementation_->wipe_; }

void ImageView::SetMessage(const QString& message) {
  if (message == implementation_->message_) return;
  implementation_->message_ = message;
  update();
}

const QString& ImageView::GetMessage() const { return implementation_->message_; }

void ImageView::SetBusy(bool busy, double fraction) {
  implementation_->is_busy_ = busy;
  implementation_->fraction_ = fraction;
  update();
}

void ImageView::SetProbes(ProbeList* probes) {
  if (implementation_->probes_ != nullptr) implementation_->probes_->disconnect(this);
  implementation_->probes_ = probes;
  update();
  if (probes == nullptr) return;
  connect(probes, &ProbeList::Changed, this, qOverload<>(&QWidget::update));
  connect(probes, &ProbeList::SelectionChanged, this, qOverload<>(&QWidget::update));
}

void ImageView::SetProbeTool(bool on) {
  implementation_->is_probe_tool_ = on;
  setCursor(on ? Qt::CrossCursor : Qt::ArrowCursor);
}

bool ImageView::IsProbeTool() const { return implementation_->is_probe_tool_; }

void ImageView::Fit() {
  implementation_->placement_.Fit();
  implementation_->TellZoom();
  update();
}

bool ImageView::IsFitted() const { return implementation_->placement_.IsFitted(); }

double ImageView::GetZoom() const { return implementation_->placement_.GetZoom(); }

void ImageView::SetZoom(double zoom) { implementation_->Zoom(zoom, implementation_->placement_.GetMiddle()); }

void ImageView::StepZoom(int steps) {
  implementation_->placement_.StepZoom(steps, implementation_->placement_.GetMiddle());
  implementation_->TellZoom();
  update();
}

QPointF ImageView::ToView(const QPointF& point) const { return implementation_->placement_.ToView(point); }

QPointF ImageView::ToImage(const QPointF& place) const { return implementation_->placement_.ToImage(place); }

std::optional<QPoint> ImageView::GetCursor() const { return implementation_->cursor_; }

int ImageView::GetDrawings() const { return implementation_->canvas_.GetDrawings(); }

QSize ImageView::sizeHint() const { return {520, 480}; }

QSize ImageView::minimumSizeHint() const { return {160, 120}; }

void ImageView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  implementation_->Paint(painter);
}

void ImageView::resizeEvent(QResizeEvent*) {
  implementation_->placement_.SetRoom(QSizeF(size()));
  implementation_->TellZoom();
}

void ImageView::wheelEvent(QWheelEvent* event) {
  const double turn = event->angleDelta().y();
  if (implementation_->image_ == nullptr || turn == 0.0) return event->ignore();
  constexpr double kNotch = 120.0;
  implementation_->Zoom(GetZoom() * std::exp2(turn / kNotch / 2.0), event->position());
  event->accept();
}

void ImageView::mousePressEvent(QMouseEvent* event) { implementation_->Press(event->position(), event->button()); }

void ImageView::mouseMoveEvent(QMouseEvent* event) { implementation_->Move(event->position()); }

void ImageView::mouseReleaseEvent(QMouseEvent* event) { implementation_->Release(event->position(), event->button()); }

void ImageView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && !implementation_->is_probe_tool_) return Fit();
  implementation_->Press(event->position(), event->button());
}

void ImageView::leaveEvent(QEvent*) { implementation_->Leave(); }

void ImageView::keyPressEvent(QKeyEvent* event) {
  if (!implementation_->TakeKey(event->key(), event->modifiers())) QWidget::keyPressEvent(event);
}

bool ImageView::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride) {
    // Keys of the view are no shortcuts of the window while the view has the focus.
    const auto* key = dynamic_cast<QKeyEvent*>(event);
    if (key != nullptr && Implementation::IsOwnKey(key->key(), key->modifiers())) {
      event->accept();
      return true;
    }
  }
  return QWidget::event(event);
}

}  // namespace ScEng
