// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ViewPlacement.h"

#include <algorithm>
#include <cmath>

namespace ScEng {
namespace {

/// What stays free around an image that is fitted.
constexpr double kMargin = 10.0;

}  // namespace

void ViewPlacement::SetRoom(const QSizeF& room) {
  room_ = room;
  if (is_fitted_) Fit();
}

void ViewPlacement::SetExtent(const QRectF& extent) {
  if (extent == extent_) return;
  extent_ = extent;
  Fit();
}

void ViewPlacement::Fit() {
  is_fitted_ = true;
  center_ = extent_.center();
  zoom_ = 1.0;
  if (extent_.isEmpty()) return;
  const double across = (room_.width() - 2.0 * kMargin) / extent_.width();
  const double down = (room_.height() - 2.0 * kMargin) / extent_.height();
  zoom_ = std::clamp(std::min(across, down), kLeastZoom, kMostZoom);
}

void ViewPlacement::SetZoom(double zoom, const QPointF& around) {
  const QPointF point = ToImage(around);
  zoom_ = std::clamp(zoom, kLeastZoom, kMostZoom);
  center_ = point - (around - GetMiddle()) / zoom_;
  is_fitted_ = false;
  KeepInside();
}

void ViewPlacement::StepZoom(int steps, const QPointF& around) {
  const double place = std::log2(zoom_) * 2.0;
  // A zoom between two steps, of a fitted image, goes to the next one first.
  constexpr double kSame = 1e-6;
  const double from = steps > 0 ? std::floor(place + kSame) : std::ceil(place - kSame);
  SetZoom(std::exp2((from + steps) / 2.0), around);
}

void ViewPlacement::Pan(const QPointF& by) {
  center_ -= by / zoom_;
  is_fitted_ = false;
  KeepInside();
}

void ViewPlacement::Reveal(const QPointF& pixel) {
  const QPointF place = ToView(pixel);
  const auto move = [](double at, double room) {
    const double margin = std::min(24.0, room / 4.0);
    return at < margin ? margin - at : at > room - margin ? room - margin - at : 0.0;
  };
  const QPointF by(move(place.x(), room_.width()), move(place.y(), room_.height()));
  if (!by.isNull()) Pan(by);
}

QPointF ViewPlacement::ToImage(const QPointF& place) const { return center_ + (place - GetMiddle()) / zoom_; }

QPointF ViewPlacement::ToView(const QPointF& point) const { return GetMiddle() + (point - center_) * zoom_; }

void ViewPlacement::KeepInside() {
  center_.setX(std::clamp(center_.x(), extent_.left(), extent_.right()));
  center_.setY(std::clamp(center_.y(), extent_.top(), extent_.bottom()));
}

}  // namespace ScEng
