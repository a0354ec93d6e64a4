// SPDX-License-Identifier: Apache-2.0
#include "Apps/Panel/Preview.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "Host/Image/ColorMode.h"
#include "Host/Image/Image.h"

namespace {

constexpr double kMargin = 12.0;
constexpr int kCell = 8;

std::uint8_t ToByte(float share) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(share, 0.0F, 1.0F) * 255.0F));
}

/// One pixel as red, green, blue and opacity.
void DrawPixel(const float* pixel, const ImageHeader& header, std::uint8_t* bytes) {
  const int channels = ColorMode::GetNumChannels(header.color_mode);
  if (std::any_of(pixel, pixel + channels, [](float sample) { return std::isnan(sample); })) {
    const std::uint8_t magenta[] = {255, 0, 255, 255};
    std::copy(std::begin(magenta), std::end(magenta), bytes);
    return;
  }
  float low = header.value_low;
  float span = header.value_high - header.value_low;
  if (header.color_mode == ColorMode::kColor) {
    low = 0.0F;
    span = 1.0F;
  } else if (header.color_mode == ColorMode::kSigned) {
    low = -1.0F;
    span = 2.0F;
  }
  // A range without extent tells only what lies above it.
  const auto share = [&](float sample) { return span > 0.0F ? (sample - low) / span : (sample > low ? 1.0F : 0.0F); };
  for (int c = 0; c < 3; ++c) {
    const bool is_gray = channels == 1;
    const bool is_missing = channels == 2 && c == 2;
    bytes[c] = is_missing ? std::uint8_t{0} : ToByte(share(pixel[is_gray ? 0 : c]));
  }
  bytes[3] = header.color_mode == ColorMode::kColor ? ToByte(pixel[3]) : std::uint8_t{255};
}

}  // namespace

QImage DrawImage(const Image& image, int limit) {
  const int step = std::max(1, (std::max(image.GetSizeX(), image.GetSizeY()) + limit - 1) / limit);
  const int width = (image.GetSizeX() + step - 1) / step;
  const int height = (image.GetSizeY() + step - 1) / step;
  QImage picture(width, height, QImage::Format_RGBA8888);
  if (picture.isNull()) return picture;
  const auto channels = static_cast<std::size_t>(image.GetNumChannels());
  const auto row_samples = static_cast<std::size_t>(image.GetSizeX()) * channels;
  for (int y = 0; y < height; ++y) {
    const float* row =
        image.GetConstArray() + static_cast<std::size_t>(y) * static_cast<std::size_t>(step) * row_samples;
    std::uint8_t* bytes = picture.scanLine(y);
    for (int x = 0; x < width; ++x) {
      DrawPixel(row + static_cast<std::size_t>(x) * static_cast<std::size_t>(step) * channels, image.GetImageHeader(),
                bytes + static_cast<std::size_t>(x) * 4);
    }
  }
  return picture;
}

Preview::Preview(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("preview"));
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void Preview::Show(QImage picture, const QString& message) {
  picture_ = std::move(picture);
  message_ = message;
  update();
}

void Preview::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  // Between the colours of window and text in either theme, so that black and white are both told from the ground.
  const QColor window = palette().color(QPalette::Window);
  const QColor ground = window.lightnessF() > 0.5F ? window.darker(112) : window.darker(135);
  painter.fillRect(rect(), ground);
  if (!picture_.isNull()) {
    const QSizeF room = QSizeF(size()) - QSizeF(2 * kMargin, 2 * kMargin);
    const QSizeF shown = QSizeF(picture_.size()).scaled(room, Qt::KeepAspectRatio);
    const QRectF area(QPointF((width() - shown.width()) / 2, (height() - shown.height()) / 2), shown);
    if (picture_.hasAlphaChannel()) {
      painter.save();
      painter.setClipRect(area);
      for (int y = 0; y * kCell < height(); ++y) {
        for (int x = 0; x * kCell < width(); ++x) {
          painter.fillRect(x * kCell, y * kCell, kCell, kCell, (x + y) % 2 == 0 ? QColor(204, 204, 204) : Qt::white);
        }
      }
      painter.restore();
    }
    // Few pixels are shown as what they are, many are averaged.
    painter.setRenderHint(QPainter::SmoothPixmapTransform, shown.width() < 2.0 * picture_.width());
    painter.drawImage(area, picture_);
  }
  if (message_.isEmpty()) return;
  painter.setRenderHint(QPainter::Antialiasing);
  constexpr int kWidest = 420;
  constexpr int kPadding = 14;
  const int text_width = std::max(80, std::min(kWidest, width() - 6 * kPadding));
  const QRect text = painter.fontMetrics().boundingRect(QRect(0, 0, text_width, height()),
                                                        Qt::AlignCenter | Qt::TextWordWrap, message_);
  QRect box = text.adjusted(-kPadding, -kPadding, kPadding, kPadding);
  box.moveCenter(rect().center());
  painter.setPen(palette().color(QPalette::Mid));
  painter.setBrush(palette().color(QPalette::Base));
  painter.drawRoundedRect(box, 6, 6);
  painter.setPen(palette().color(QPalette::Text));
  painter.drawText(box, Qt::AlignCenter | Qt::TextWordWrap, message_);
}
