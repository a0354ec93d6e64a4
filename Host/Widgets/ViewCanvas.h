// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <memory>

#include "Host/Viewing/Look.h"
#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/ViewPlacement.h"

namespace ScEng {

/// What a view shows of one image, at the resolution of the display. It is drawn when it is asked for and differs from
/// what was drawn before.
class ViewCanvas {
 public:
  struct Scene {
    std::shared_ptr<const ViewImage> image;
    Look look;
    ViewPlacement placement;
    /// Where the image's top left corner is, in the pixels that `placement` counts.
    QPointF offset;
    /// Of the view.
    QSize size;
    /// Pixels of the display per pixel of the view.
    double scale = 1.0;
    QColor ground;
    QFont font;
  };

  const QImage& Get(const Scene& scene);
  /// How often something was drawn.
  [[nodiscard]] int GetDrawings() const { return drawings_; }
  void Forget();

 private:
  void Draw(const Scene& scene);

  std::unique_ptr<Scene> drawn_;
  QImage canvas_;
  QImage picture_;
  int drawings_ = 0;
};

/// The squares under what is not opaque.
void DrawCheckerboard(QPainter& painter, const QRectF& area, const QColor& ground);

}  // namespace ScEng
