// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/SurfaceColors.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace {

constexpr int kRampColors = 256;
/// How much of the tint is seen where a mask is fully set.
constexpr float kTintShare = 0.8F;

bool HasPixels(const std::shared_ptr<const ScEng::ViewImage>& image) {
  return image != nullptr && image->GetImage().GetNumSamples() > 0;
}

/// The pixel at a place, of the level whose pixels are about one step wide.
const float* FindPixel(const ScEng::ViewImage& image, double x, double y, double step) {
  const double step_px = std::max(step * image.GetImage().GetSizeX(), 1.0);
  const ScEng::ViewImage::Level level = image.GetLevel(std::min(std::ilogb(step_px), image.GetNumLevels() - 1));
  const int column = std::clamp(static_cast<int>(x * level.size_x), 0, level.size_x - 1);
  const int row = std::clamp(static_cast<int>(y * level.size_y), 0, level.size_y - 1);
  const auto pixel =
      static_cast<std::size_t>(row) * static_cast<std::size_t>(level.size_x) + static_cast<std::size_t>(column);
  return level.samples + pixel * static_cast<std::size_t>(image.GetImage().GetNumChannels());
}

std::uint8_t ToByte(float share) { return static_cast<std::uint8_t>(std::lround(share * 255.0F)); }

SurfaceColor Mix(const SurfaceColor& a, const SurfaceColor& b, float share) {
  SurfaceColor mixed = a;
  for (std::size_t i = 0; i < mixed.size(); ++i) {
    const auto from = static_cast<float>(a[i]);
    mixed[i] = static_cast<std::uint8_t>(std::lround(from + (static_cast<float>(b[i]) - from) * share));
  }
  return mixed;
}

std::vector<SurfaceColor> MakeRamp(const ScEng::Look& look) {
  std::vector<SurfaceColor> ramp;
  for (int i = 0; i < kRampColors; ++i) {
    const auto gray = static_cast<std::uint8_t>(i);
    ramp.push_back({gray, gray, gray, 255});
    if (look.shading != ScEng::Shading::kRamp) continue;
    const unsigned color = ScEng::GetRampColor(look.ramp, i / static_cast<double>(kRampColors - 1));
    ramp.back() = {static_cast<std::uint8_t>(color >> 16U & 0xFFU), static_cast<std::uint8_t>(color >> 8U & 0xFFU),
                   static_cast<std::uint8_t>(color & 0xFFU), 255};
  }
  return ramp;
}

/// 0 to 1 within a range; NaN stays.
float ShareOf(float value, const ScEng::ValueRange& range) {
  if (std::isnan(value)) return value;
  if (!(range.high > range.low)) return value > range.low ? 1.0F : 0.0F;
  const double share = (static_cast<double>(value) - range.low) / (static_cast<double>(range.high) - range.low);
  return static_cast<float>(std::clamp(share, 0.0, 1.0));
}

/// The channel that is looked at alone, or -1 for the value of a pixel.
int FindChannel(ScEng::ShownChannels shown, int channels) {
  if (shown == ScEng::ShownChannels::kAll || shown == ScEng::ShownChannels::kValue) return -1;
  const int channel = static_cast<int>(shown) - static_cast<int>(ScEng::ShownChannels::kFirst);
  return channel < channels ? channel : -1;
}

}  // namespace

SurfaceColors::SurfaceColors(std::shared_ptr<const ScEng::ViewImage> colors, const ScEng::Look& look,
                             std::shared_ptr<const ScEng::ViewImage> mask)
    : channels_(look.channels) {
  if (HasPixels(colors)) {
    range_ = ScEng::GetShownRange(*colors, look);
    ramp_ = MakeRamp(look);
    colors_ = std::move(colors);
  }
  if (HasPixels(mask)) {
    mask_range_ = ScEng::GetShownRange(*mask, {});
    mask_ = std::move(mask);
  }
}

float SurfaceColors::GetShare(float value) const { return ShareOf(value, range_); }

SurfaceColor SurfaceColors::GetOwnColor(double x, double y, double step) const {
  const float* pixel = FindPixel(*colors_, x, y, step);
  const unsigned mode = colors_->GetImage().GetColorMode();
  const int channels = colors_->GetImage().GetNumChannels();
  const bool is_color = channels_ == ScEng::ShownChannels::kAll && channels == 4;
  if (!is_color) {
    const int channel = FindChannel(channels_, channels);
    const float share = GetShare(channel >= 0 ? pixel[channel] : ScEng::ValueOfPixel(pixel, mode));
    if (std::isnan(share)) return kClay;
    return ramp_[static_cast<std::size_t>(std::lround(share * static_cast<float>(kRampColors - 1)))];
  }
  const float red = GetShare(pixel[0]);
  const float green = GetShare(pixel[1]);
  const float blue = GetShare(pixel[2]);
  if (std::isnan(red) || std::isnan(green) || std::isnan(blue)) return kClay;
  const SurfaceColor color{ToByte(red), ToByte(green), ToByte(blue), 255};
  if (mode != ColorMode::kColor) return color;
  const float opacity = pixel[3];
  return Mix(kClay, color, std::isnan(opacity) ? 0.0F : std::clamp(opacity, 0.0F, 1.0F));
}

float SurfaceColors::GetMask(double x, double y, double step) const {
  const float share =
      ShareOf(ScEng::ValueOfPixel(FindPixel(*mask_, x, y, step), mask_->GetImage().GetColorMode()), mask_range_);
  return std::isnan(share) ? 0.0F : share;
}

SurfaceColor SurfaceColors::GetColor(double x, double y, double step) const {
  const SurfaceColor own = colors_ != nullptr ? GetOwnColor(x, y, step) : kClay;
  return mask_ != nullptr ? Mix(own, kTint, kTintShare * GetMask(x, y, step)) : own;
}
