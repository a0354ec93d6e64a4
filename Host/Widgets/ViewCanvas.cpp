// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ViewCanvas.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "Host/Image/Image.h"
#include "Host/Viewing/DrawView.h"
#include "Host/Widgets/PixelNumbers.h"

namespace ScEng {
namespace {

bool IsSame(const ViewCanvas::Scene& a, const ViewCanvas::Scene& b) {
  return a.image == b.image && a.look == b.look && a.placement.GetZoom() == b.placement.GetZoom() &&
         a.placement.ToImage({0.0, 0.0}) == b.placement.ToImage({0.0, 0.0}) && a.offset == b.offset &&
         a.size == b.size && a.scale == b.scale && a.ground == b.ground && a.font == b.font;
}

bool HasOpacity(const Image& image) { return image.GetNumChannels() == 4; }

QRectF FindExtent(const ImageHeader& header, const Look& look) {
  const QRectF one(0.0, 0.0, header.size_x, header.size_y);
  return look.tiled ? one.adjusted(-one.width(), -one.height(), one.width(), one.height()) : one;
}

}  // namespace

void DrawCheckerboard(QPainter& painter, const QRectF& area, const QColor& ground) {
  constexpr int kCell = 8;
  const bool is_light = ground.lightnessF() > 0.5F;
  const QColor dark = is_light ? QColor(204, 204, 204) : QColor(64, 64, 64);
  const QColor light = is_light ? QColor(255, 255, 255) : QColor(96, 96, 96);
  QPixmap tile(2 * kCell, 2 * kCell);
  tile.fill(dark);
  QPainter cells(&tile);
  cells.fillRect(0, 0, kCell, kCell, light);
  cells.fillRect(kCell, kCell, kCell, kCell, light);
  cells.end();
  painter.drawTiledPixmap(area, tile, area.topLeft());
}

const QImage& ViewCanvas::Get(const Scene& scene) {
  if (drawn_ != nullptr && IsSame(*drawn_, scene)) return canvas_;
  Draw(scene);
  drawn_ = std::make_unique<Scene>(scene);
  ++drawings_;
  return canvas_;
}

void ViewCanvas::Forget() {
  drawn_.reset();
  canvas_ = QImage();
  picture_ = QImage();
}

void ViewCanvas::Draw(const Scene& scene) {
  const QSize size(std::max(1, static_cast<int>(std::ceil(scene.size.width() * scene.scale))),
                   std::max(1, static_cast<int>(std::ceil(scene.size.height() * scene.scale))));
  if (canvas_.size() != size) {
    canvas_ = QImage(size, QImage::Format_RGB32);
    picture_ = QImage(size, QImage::Format_RGBA8888);
  }
  canvas_.setDevicePixelRatio(scene.scale);
  canvas_.fill(scene.ground);
  if (scene.image == nullptr || picture_.isNull() || canvas_.isNull()) return;

  const QPointF corner = scene.placement.ToImage({0.0, 0.0}) - scene.offset;
  const ViewTransform transform{corner.x(), corner.y(), scene.placement.GetZoom() * scene.scale};
  DrawView(*scene.image, scene.look, transform,
           {picture_.bits(), picture_.width(), picture_.height(), static_cast<std::size_t>(picture_.bytesPerLine())});
  picture_.setDevicePixelRatio(scene.scale);

  QPainter painter(&canvas_);
  if (HasOpacity(scene.image->GetImage())) {
    const QRectF extent = FindExtent(scene.image->GetHeader(), scene.look).translated(scene.offset);
    const QRectF seen = scene.placement.ToView(extent).intersected(QRectF(QPointF(), QSizeF(scene.size)));
    if (!seen.isEmpty()) DrawCheckerboard(painter, seen, scene.ground);
  }
  painter.drawImage(QPointF(), picture_);
  const bool has_numbers = scene.placement.GetZoom() >= kNumbersZoom && scene.offset.isNull();
  if (!has_numbers || scene.image->IsPreview()) return;
  painter.setFont(scene.font);
  DrawPixelNumbers(painter, canvas_, *scene.image, scene.look, scene.placement);
}

}  // namespace ScEng
