// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace ScEng {

/// Where an image lies in a view: how far it is enlarged and which of its points is in the middle. Places in the view
/// are in the view's own pixels, whatever the scale of the display; places in the image are in its pixels from its top
/// left corner.
class ViewPlacement {
 public:
  static constexpr double kLeastZoom = 1.0 / 64.0;
  static constexpr double kMostZoom = 64.0;

  /// The view's size. The point in the middle stays there; what was fitted is fitted again.
  void SetRoom(const QSizeF& room);
  /// What there is to see of the image; another extent is fitted.
  void SetExtent(const QRectF& extent);

  /// Shows all of it, as large as it goes.
  void Fit();
  /// Whether the whole image was asked for, and not a zoom.
  [[nodiscard]] bool IsFitted() const { return is_fitted_; }

  [[nodiscard]] double GetZoom() const { return zoom_; }
  /// Enlarges around a place in the view. What lies beyond the limits is cut.
  void SetZoom(double zoom, const QPointF& around);
  /// To the next power of the square root of 2.
  void StepZoom(int steps, const QPointF& around);
  /// Moves the image by so much in the view. The middle of the view always holds a point of the image.
  void Pan(const QPointF& by);
  /// Moves the image so that this pixel is seen.
  void Reveal(const QPointF& pixel);

  [[nodiscard]] QPointF ToImage(const QPointF& place) const;
  [[nodiscard]] QPointF ToView(const QPointF& point) const;
  [[nodiscard]] QRectF ToView(const QRectF& area) const { return {ToView(area.topLeft()), area.size() * zoom_}; }
  [[nodiscard]] QPointF GetMiddle() const { return {room_.width() / 2.0, room_.height() / 2.0}; }

 private:
  void KeepInside();

  QSizeF room_{1.0, 1.0};
  QRectF extent_;
  QPointF center_;
  double zoom_ = 1.0;
  bool is_fitted_ = true;
};

}  // namespace ScEng
