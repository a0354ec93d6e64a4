// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/PixelNumbers.h"

#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/ViewPlacement.h"
#include "Host/Widgets/ViewText.h"

namespace ScEng {
namespace {

/// The numbers of a pixel that are seen.
std::vector<float> FindNumbers(const Image& image, std::size_t pixel, ShownChannels shown) {
  const auto channels = static_cast<std::size_t>(image.GetNumChannels());
  const float* samples = image.GetConstArray() + pixel * channels;
  if (shown == ShownChannels::kValue) return {ValueOfPixel(samples, image.GetColorMode())};
  if (shown == ShownChannels::kAll) return {samples, samples + channels};
  const auto channel = static_cast<std::size_t>(shown) - static_cast<std::size_t>(ShownChannels::kFirst);
  return {samples[std::min(channel, channels - 1)]};
}

QString JoinLines(const std::vector<float>& numbers, int digits) {
  QStringList lines;
  for (const float number : numbers) lines.append(FormatShort(static_cast<double>(number), digits));
  return lines.join(QLatin1Char('\n'));
}

/// The relative luminance of a color, by which its contrast to others is told.
double FindLuminance(const QColor& color) {
  const auto linear = [](double share) { return std::pow(share, 2.2); };
  return 0.2126 * linear(static_cast<double>(color.redF())) + 0.7152 * linear(static_cast<double>(color.greenF())) +
         0.0722 * linear(static_cast<double>(color.blueF()));
}

/// White on what is darker than the color that black and white are told from equally well.
QColor FindInk(const QColor& ground) { return FindLuminance(ground) < 0.18 ? Qt::white : Qt::black; }

QFont MakeFont(const QFont& font, double cell, std::size_t lines, int digits) {
  QFont small = font;
  // A sign, a point and digits across; all lines one below the other.
  const double by_width = cell * 0.92 / (0.56 * (digits + 2));
  const double by_height = cell * 0.92 / (1.25 * static_cast<double>(lines));
  small.setPixelSize(std::max(5, static_cast<int>(std::min({by_width, by_height, 14.0}))));
  return small;
}

}  // namespace

void DrawPixelNumbers(QPainter& painter, const QImage& canvas, const ViewImage& image, const Look& look,
                      const ViewPlacement& placement) {
  const Image& samples = image.GetImage();
  const int across = samples.GetSizeX();
  const int down = samples.GetSizeY();
  if (across < 1 || down < 1) return;
  const double zoom = placement.GetZoom();
  const double scale = canvas.devicePixelRatio();
  const QPointF first = placement.ToImage({0.0, 0.0});
  const QPointF last = placement.ToImage(QPointF(canvas.width(), canvas.height()) / scale);
  const int repeats = look.tiled ? 1 : 0;
  const int left = std::max(-repeats * across, static_cast<int>(std::floor(first.x())));
  const int top = std::max(-repeats * down, static_cast<int>(std::floor(first.y())));
  const int right = std::min((1 + repeats) * across - 1, static_cast<int>(std::floor(last.x())));
  const int bottom = std::min((1 + repeats) * down - 1, static_cast<int>(std::floor(last.y())));
  const int digits = zoom < 48.0 ? 3 : 4;
  painter.setFont(MakeFont(painter.font(), zoom, FindNumbers(samples, 0, look.channels).size(), digits));
  for (int y = top; y <= bottom; ++y) {
    for (int x = left; x <= right; ++x) {
      const auto row = static_cast<std::size_t>((y + down) % down) * static_cast<std::size_t>(across);
      const std::size_t pixel = row + static_cast<std::size_t>((x + across) % across);
      const QRectF cell = placement.ToView(QRectF(x, y, 1.0, 1.0));
      const QPoint at = (cell.center() * scale).toPoint();
      const QPoint inside(std::clamp(at.x(), 0, canvas.width() - 1), std::clamp(at.y(), 0, canvas.height() - 1));
      painter.setPen(FindInk(canvas.pixelColor(inside)));
      painter.drawText(cell, Qt::AlignCenter, JoinLines(FindNumbers(samples, pixel, look.channels), digits));
    }
  }
}

}  // namespace ScEng
