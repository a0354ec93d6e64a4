// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>

#include "Host/Widgets/ImageViewParts.h"
#include "Host/Widgets/ViewMarks.h"

namespace ScEng {
namespace {

constexpr double kWipeReach = 6.0;
/// From where on a press that moves is a drag.
constexpr double kDragStart = 4.0;
constexpr double kWipeStep = 0.02;

QPoint Floor(const QPointF& point) {
  return {static_cast<int>(std::floor(point.x())), static_cast<int>(std::floor(point.y()))};
}

}  // namespace

// ---- Mouse ----

void ImageView::Implementation::Press(const QPointF& at, Qt::MouseButton button) {
  if (drag_ != Drag::kNone || image_ == nullptr) return;
  if (button != Qt::LeftButton && button != Qt::MiddleButton) return;
  button_ = button;
  pressed_ = at;
  last_ = at;
  drag_ = Drag::kPan;
  if (button == Qt::LeftButton) {
    const Probe* probe = FindProbe(at);
    if (IsOnWipe(at)) {
      drag_ = Drag::kWipe;
    } else if (probe != nullptr) {
      drag_ = Drag::kMoveProbe;
      taken_ = *probe;
      probes_->Select(taken_.number);
    } else if (is_probe_tool_ && probes_ != nullptr) {
      drag_ = Drag::kNewProbe;
    } else if (probes_ != nullptr) {
      probes_->Select(0);
    }
  }
  ShowPointer(at);
  Update();
}

void ImageView::Implementation::Move(const QPointF& at) {
  const QPointF by = at - last_;
  last_ = at;
  switch (drag_) {
    case Drag::kNone: break;
    case Drag::kPan: placement_.Pan(by); break;
    case Drag::kWipe: view_.SetWipePlace(at.x() / std::max(1, view_.width())); break;
    case Drag::kNewProbe: break;
    case Drag::kMoveProbe: {
      const QPoint steps = Floor(placement_.ToImage(at)) - Floor(placement_.ToImage(pressed_));
      Probe moved = taken_;
      moved.x += steps.x();
      moved.y += steps.y();
      if (probes_ != nullptr) probes_->Place(moved);
      break;
    }
  }
  ShowPointer(at);
  SetCursorPixel(FindPixel(at), false);
  if (drag_ != Drag::kNone) Update();
}

void ImageView::Implementation::Release(const QPointF& at, Qt::MouseButton button) {
  if (drag_ == Drag::kNone || button != button_) return;
  if (drag_ == Drag::kNewProbe && probes_ != nullptr && image_ != nullptr) {
    const QRect band = FindBand(at);
    const QPoint corner = GetCorner(*image_);
    if (!band.isEmpty()) probes_->Add(band.x() + corner.x(), band.y() + corner.y(), band.width(), band.height());
  }
  drag_ = Drag::kNone;
  ShowPointer(at);
  Update();
}

void ImageView::Implementation::ShowPointer(const QPointF& at) {
  if (drag_ == Drag::kPan) return view_.setCursor(Qt::ClosedHandCursor);
  if (drag_ == Drag::kWipe || (drag_ == Drag::kNone && IsOnWipe(at))) return view_.setCursor(Qt::SplitHCursor);
  if (drag_ == Drag::kMoveProbe || (drag_ == Drag::kNone && FindProbe(at) != nullptr)) {
    return view_.setCursor(Qt::SizeAllCursor);
  }
  view_.setCursor(is_probe_tool_ ? Qt::CrossCursor : Qt::ArrowCursor);
}

void ImageView::Implementation::Leave() {
  if (!is_key_cursor_) SetCursorPixel(std::nullopt, false);
}

const Probe* ImageView::Implementation::FindProbe(const QPointF& at) const {
  if (probes_ == nullptr || image_ == nullptr) return nullptr;
  const std::vector<Probe>& probes = probes_->GetProbes();
  // The last one is drawn on top.
  const auto found = std::find_if(probes.rbegin(), probes.rend(),
                                  [&](const Probe& probe) { return IsOnProbe(GetArea(probe), probe.IsPoint(), at); });
  return found == probes.rend() ? nullptr : &*found;
}

bool ImageView::Implementation::IsOnWipe(const QPointF& at) const {
  return is_wiped_ && before_ != nullptr && std::abs(at.x() - wipe_ * view_.width()) <= kWipeReach;
}

QRect ImageView::Implementation::FindBand(const QPointF& at) const {
  if (image_ == nullptr) return {};
  const QRect whole(0, 0, image_->GetHeader().size_x, image_->GetHeader().size_y);
  const QPoint from = Floor(placement_.ToImage(pressed_));
  if ((at - pressed_).manhattanLength() < kDragStart) {
    const std::optional<QPoint> pixel = FindPixel(pressed_);
    return pixel ? QRect(*pixel, QSize(1, 1)) : QRect();
  }
  const QPoint to = Floor(placement_.ToImage(at));
  const QRect band(QPoint(std::min(from.x(), to.x()), std::min(from.y(), to.y())),
                   QPoint(std::max(from.x(), to.x()), std::max(from.y(), to.y())));
  return band.intersected(whole);
}

std::optional<QPoint> ImageView::Implementation::FindPixel(const QPointF& at) const {
  if (image_ == nullptr) return std::nullopt;
  const int across = image_->GetHeader().size_x;
  const int down = image_->GetHeader().size_y;
  QPoint pixel = Floor(placement_.ToImage(at));
  if (look_.tiled && across > 0 && down > 0) {
    const bool is_seen = pixel.x() >= -across && pixel.x() < 2 * across && pixel.y() >= -down && pixel.y() < 2 * down;
    if (is_seen) pixel = QPoint((pixel.x() + across) % across, (pixel.y() + down) % down);
  }
  if (!QRect(0, 0, across, down).contains(pixel)) return std::nullopt;
  return pixel;
}

void ImageView::Implementation::SetCursorPixel(const std::optional<QPoint>& pixel, bool is_of_keys) {
  if (is_key_cursor_ || is_of_keys) Update();
  is_key_cursor_ = is_of_keys && pixel.has_value();
  if (pixel == cursor_) return;
  cursor_ = pixel;
  Q_EMIT view_.CursorMoved(pixel);
}

void ImageView::Implementation::Zoom(double zoom, const QPointF& around) {
  placement_.SetZoom(zoom, around);
  TellZoom();
  Update();
}

void ImageView::Implementation::TellZoom() { Q_EMIT view_.ZoomChanged(placement_.GetZoom()); }

// ---- Keys ----

bool ImageView::Implementation::IsOwnKey(int key, Qt::KeyboardModifiers modifiers) {
  switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down: return true;
    case Qt::Key_F:
    case Qt::Key_1:
    case Qt::Key_Plus:
    case Qt::Key_Equal:
    case Qt::Key_Minus:
    case Qt::Key_Comma:
    case Qt::Key_Period:
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown: return !modifiers.testFlag(Qt::ControlModifier) && !modifiers.testFlag(Qt::AltModifier);
    default: return false;
  }
}

bool ImageView::Implementation::TakeKey(int key, Qt::KeyboardModifiers modifiers) {
  switch (key) {
    case Qt::Key_Left: return TakeArrow({-1, 0}, modifiers);
    case Qt::Key_Right: return TakeArrow({1, 0}, modifiers);
    case Qt::Key_Up: return TakeArrow({0, -1}, modifiers);
    case Qt::Key_Down: return TakeArrow({0, 1}, modifiers);
    default: break;
  }
  if (modifiers.testFlag(Qt::ControlModifier) || modifiers.testFlag(Qt::AltModifier)) return false;
  if (is_wiped_ && (key == Qt::Key_Comma || key == Qt::Key_Period)) {
    view_.SetWipePlace(wipe_ + (key == Qt::Key_Comma ? -kWipeStep : kWipeStep));
    return true;
  }
  return TakeZoomKey(key) || TakeProbeKey(key);
}

bool ImageView::Implementation::TakeArrow(const QPoint& direction, Qt::KeyboardModifiers modifiers) {
  const bool has_shift = modifiers.testFlag(Qt::ShiftModifier);
  if (modifiers.testFlag(Qt::ControlModifier)) {
    constexpr int kFar = 10;
    MoveCursor(direction * (has_shift ? kFar : 1));
    return true;
  }
  const Probe* selected = probes_ != nullptr ? probes_->Find(probes_->GetSelected()) : nullptr;
  if (has_shift || modifiers.testFlag(Qt::AltModifier)) {
    if (selected == nullptr) return false;
    Probe changed = *selected;
    (has_shift ? changed.x : changed.width) += direction.x();
    (has_shift ? changed.y : changed.height) += direction.y();
    probes_->Place(changed);
    return true;
  }
  const double step = std::max(16, view_.width() / 16);
  placement_.Pan(QPointF(-direction) * step);
  Update();
  return true;
}

bool ImageView::Implementation::TakeZoomKey(int key) {
  switch (key) {
    case Qt::Key_F: view_.Fit(); return true;
    case Qt::Key_1: view_.SetZoom(1.0); return true;
    case Qt::Key_Plus:
    case Qt::Key_Equal: view_.StepZoom(1); return true;
    case Qt::Key_Minus: view_.StepZoom(-1); return true;
    default: return false;
  }
}

bool ImageView::Implementation::TakeProbeKey(int key) {
  if (probes_ == nullptr) return false;
  switch (key) {
    case Qt::Key_Return:
    case Qt::Key_Enter: {
      if (!cursor_ || image_ == nullptr) return false;
      const QPoint place = *cursor_ + GetCorner(*image_);
      probes_->Add(place.x(), place.y());
      return true;
    }
    case Qt::Key_Delete:
    case Qt::Key_Backspace: {
      const int selected = probes_->GetSelected();
      if (selected == 0) return false;
      probes_->Remove(selected);
      return true;
    }
    case Qt::Key_PageDown: probes_->SelectNext(1); return true;
    case Qt::Key_PageUp: probes_->SelectNext(-1); return true;
    case Qt::Key_Escape: {
      if (probes_->GetSelected() == 0 && !is_key_cursor_) return false;
      probes_->Select(0);
      SetCursorPixel(std::nullopt, true);
      return true;
    }
    default: return false;
  }
}

void ImageView::Implementation::MoveCursor(const QPoint& by) {
  if (image_ == nullptr) return;
  const int across = image_->GetHeader().size_x;
  const int down = image_->GetHeader().size_y;
  if (across < 1 || down < 1) return;
  QPoint pixel = cursor_ ? *cursor_ + by : Floor(placement_.ToImage(placement_.GetMiddle()));
  pixel.setX(std::clamp(pixel.x(), 0, across - 1));
  pixel.setY(std::clamp(pixel.y(), 0, down - 1));
  // Only the cursor of the keyboard is followed by the view.
  placement_.Reveal(QPointF(pixel) + QPointF(0.5, 0.5));
  SetCursorPixel(pixel, true);
}

}  // namespace ScEng
