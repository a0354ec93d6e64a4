// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ViewText.h"

#include <QStringList>
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "Host/Image/Image.h"
#include "Host/Viewing/Probe.h"

namespace ScEng {
namespace {

QString NameInfinite(double value) {
  if (std::isnan(value)) return QStringLiteral("NaN");
  return value > 0.0 ? QStringLiteral("∞") : QStringLiteral("−∞");
}

/// Digits behind the point that tell one tenth of a pixel from the next.
int CountGroundDigits(double step) {
  if (!(step > 0.0) || !std::isfinite(step)) return 3;
  // The step is a difference of large numbers.
  constexpr double kSlack = 1e-3;
  return std::clamp(static_cast<int>(std::ceil(1.0 - std::log10(step) - kSlack)), 0, 9);
}

}  // namespace

QString FormatValue(float value) {
  if (!std::isfinite(value)) return NameInfinite(static_cast<double>(value));
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  return QString::fromLatin1(text.data(), end - text.data());
}

QString FormatShort(double value, int digits) {
  return std::isfinite(value) ? QString::number(value, 'g', digits) : NameInfinite(value);
}

QString FormatPixel(const ViewImage& image, const QPoint& pixel) {
  const PixelReading reading = ReadPixel(image, pixel.x(), pixel.y());
  QStringList texts;
  for (int c = 0; c < reading.channels; ++c) texts.append(FormatValue(reading.samples[c]));
  return MarkPreview(image, texts.join(QStringLiteral(", ")));
}

QString FormatPixelAt(const ViewImage& image, const QPoint& place) {
  const Box2I box = image.GetHeader().GetBox();
  if (place.x() < box.left || place.x() >= box.right || place.y() < box.top || place.y() >= box.bottom) return {};
  return FormatPixel(image, QPoint(static_cast<int>(place.x() - box.left), static_cast<int>(place.y() - box.top)));
}

QString MarkPreview(const ViewImage& image, const QString& text) {
  return image.IsPreview() && !text.isEmpty() ? QStringLiteral("≈ ") + text : text;
}

QString FormatGround(const Image& image, const QPointF& place) {
  const auto at = GetMapPoint(image, place.x(), place.y());
  const auto beside = GetMapPoint(image, place.x() + 1.0, place.y());
  if (!at || !beside) return {};
  const int digits = CountGroundDigits(std::hypot((*beside)[0] - (*at)[0], (*beside)[1] - (*at)[1]));
  return QString::number((*at)[0], 'f', digits) + QStringLiteral(", ") + QString::number((*at)[1], 'f', digits);
}

bool HasGround(const Image& image) { return GetMapPoint(image, 0.0, 0.0).has_value(); }

QString FormatZoom(double zoom) {
  const double percent = zoom * 100.0;
  const QString number = percent < 100.0 ? QString::number(percent, 'g', 3) : QString::number(percent, 'f', 0);
  return number + QStringLiteral(" %");
}

}  // namespace ScEng
