// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/Thumbnail.h"

#include <algorithm>

#include "Host/Image/Image.h"
#include "Host/Viewing/DrawView.h"

QImage DrawThumbnail(const ScEng::ViewImage& image) {
  const ScEng::ViewImage::Level whole = image.GetLevel(0);
  const int longest = std::max(whole.size_x, whole.size_y);
  if (longest <= 0) return {};
  // Twice what a node shows at life size, for dense displays.
  constexpr int kMost = 344;
  const double zoom = std::min(1.0, static_cast<double>(kMost) / longest);
  QImage picture(std::max(1, static_cast<int>(whole.size_x * zoom)), std::max(1, static_cast<int>(whole.size_y * zoom)),
                 QImage::Format_RGBA8888);
  if (picture.isNull()) return {};
  picture.fill(Qt::transparent);
  ScEng::DrawView(
      image, {}, {0.0, 0.0, zoom},
      {picture.bits(), picture.width(), picture.height(), static_cast<std::size_t>(picture.bytesPerLine())});
  const bool has_opacity = image.GetImage().GetNumChannels() == 4;
  return picture.convertToFormat(has_opacity ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
}
