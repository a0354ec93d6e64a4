// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/PixelShades.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "Host/Viewing/AllFinite.h"

namespace ScEng {
namespace {

constexpr std::uint32_t kNanColor = 0xFF00FF;
constexpr std::uint32_t kInfinityColor = 0xFF8C00;
constexpr std::uint32_t kNegativeInfinityColor = 0x8A2BE2;
constexpr std::uint32_t kBelowColor = 0x1E5AFF;
constexpr std::uint32_t kAboveColor = 0xE6141E;

constexpr std::uint32_t Pack(std::uint32_t red, std::uint32_t green, std::uint32_t blue, std::uint32_t opacity) {
  if constexpr (std::endian::native == std::endian::little) {
    return red | green << 8U | blue << 16U | opacity << 24U;
  } else {
    return red << 24U | green << 16U | blue << 8U | opacity;
  }
}

/// The nearest of the steps of 8 bits. Written so that a NaN gives 0.
std::uint32_t ToStep(float share) {
  const float cut = share > 0.0F ? std::min(share, 1.0F) : 0.0F;
  const float raised = cut * 255.0F + 0.5F;
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(raised));
}

/// Height per pixel, cut where the ground is as good as upright, so that squares stay finite.
float GetRise(float along, float exaggeration) {
  constexpr float kUpright = 1e18F;
  return std::clamp(along * exaggeration, -kUpright, kUpright);
}

std::uint32_t PackGray(std::uint32_t step) { return Pack(step, step, step, 255); }

}  // namespace

std::uint32_t PackColor(std::uint32_t color) {
  return Pack(color >> 16U & 0xFFU, color >> 8U & 0xFFU, color & 0xFFU, 255);
}

PixelShades::PixelShades(const Look& look, const ValueRange& range)
    : shading_(look.shading), marks_(look.marks), low_(range.low), high_(range.high) {
  const float span = range.high - range.low;
  // An infinite span makes everything black, as one without extent does.
  span_ = span > 0.0F ? span : std::numeric_limits<float>::infinity();
  const bool is_gray = look.shading == Shading::kPlain || look.shading == Shading::kHillshade;
  const std::string name = is_gray ? "gray" : look.ramp;
  const RampTable& ramp = FindRamp(name);
  std::transform(ramp.begin(), ramp.end(), ramp_.begin(), PackColor);

  const double azimuth = look.light.azimuth_degrees * std::numbers::pi / 180.0;
  const double altitude = look.light.altitude_degrees * std::numbers::pi / 180.0;
  // Azimuth runs clockwise from the top, and y grows downwards.
  light_x_ = static_cast<float>(std::sin(azimuth) * std::cos(altitude));
  light_y_ = static_cast<float>(-std::cos(azimuth) * std::cos(altitude));
  light_up_ = static_cast<float>(std::sin(altitude));
  exaggeration_ = static_cast<float>(look.light.exaggeration);
}

void PixelShades::Shade(const DrawnNumbers& numbers, std::uint32_t* pixels) const {
  if (numbers.num_planes > 1) {
    ShadeChannels(numbers, pixels);
  } else if (shading_ == Shading::kHillshade) {
    ShadeByLight(numbers, pixels);
  } else if (shading_ == Shading::kSlope) {
    ShadeBySteepness(numbers, pixels);
  } else if (shading_ == Shading::kRamp) {
    const float* const values = numbers.planes[0];
    for (std::size_t i = 0; i < numbers.count; ++i) pixels[i] = ramp_[ToStep((values[i] - low_) / span_)];
  } else {
    const float* const values = numbers.planes[0];
    for (std::size_t i = 0; i < numbers.count; ++i) pixels[i] = PackGray(ToStep((values[i] - low_) / span_));
  }
  CoverStrange(numbers, pixels);
  if (marks_) CoverMarked(numbers, pixels);
}

/// The Lambertian surface of B. K. P. Horn: Hill shading and the reflectance map, 1981: brightness is the cosine of the
/// angle between the light and the normal of the ground (-p, -q, 1), p and q being the derivatives of height.
void PixelShades::ShadeByLight(const DrawnNumbers& numbers, std::uint32_t* pixels) const {
  for (std::size_t i = 0; i < numbers.count; ++i) {
    const float p = GetRise(numbers.along_x[i], exaggeration_);
    const float q = GetRise(numbers.along_y[i], exaggeration_);
    const float cosine = (light_up_ - (p * light_x_ + q * light_y_)) / std::sqrt(1.0F + (p * p + q * q));
    pixels[i] = PackGray(ToStep(cosine));
  }
}

void PixelShades::ShadeBySteepness(const DrawnNumbers& numbers, std::uint32_t* pixels) const {
  constexpr auto kSharePerRadian = static_cast<float>(2.0 / std::numbers::pi);
  for (std::size_t i = 0; i < numbers.count; ++i) {
    const float p = GetRise(numbers.along_x[i], exaggeration_);
    const float q = GetRise(numbers.along_y[i], exaggeration_);
    pixels[i] = ramp_[ToStep(std::atan(std::sqrt(p * p + q * q)) * kSharePerRadian)];
  }
}

void PixelShades::ShadeChannels(const DrawnNumbers& numbers, std::uint32_t* pixels) const {
  const float* const red = numbers.planes[0];
  const float* const green = numbers.planes[1];
  if (numbers.num_planes == 2) {
    for (std::size_t i = 0; i < numbers.count; ++i) {
      pixels[i] = Pack(ToStep((red[i] - low_) / span_), ToStep((green[i] - low_) / span_), 0, 255);
    }
    return;
  }
  const float* const blue = numbers.planes[2];
  const float* const opacity = numbers.planes[3];
  for (std::size_t i = 0; i < numbers.count; ++i) {
    pixels[i] = Pack(ToStep((red[i] - low_) / span_), ToStep((green[i] - low_) / span_),
                     ToStep((blue[i] - low_) / span_), ToStep(opacity[i]));
  }
}

/// NaN, and in relief, which has no slope there, infinities.
void PixelShades::CoverStrange(const DrawnNumbers& numbers, std::uint32_t* pixels) const {
  const std::uint32_t nan = PackColor(kNanColor);
  for (int plane = 0; plane < std::min(numbers.num_planes, 3); ++plane) {
    const float* const values = numbers.planes[static_cast<std::size_t>(plane)];
    if (AllFinite(values, numbers.count)) continue;
    for (std::size_t i = 0; i < numbers.count; ++i) {
      if (std::isnan(values[i])) pixels[i] = nan;
    }
  }
  const float* const values = numbers.planes[0];
  if (numbers.along_x == nullptr || AllFinite(values, numbers.count)) return;
  for (std::size_t i = 0; i < numbers.count; ++i) {
    if (std::isinf(values[i])) pixels[i] = values[i] > 0.0F ? PackGray(255) : PackGray(0);
  }
}

/// What is told of a pixel with several channels is the strangest of them.
void PixelShades::CoverMarked(const DrawnNumbers& numbers, std::uint32_t* pixels) const {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const int num_planes = std::min(numbers.num_planes, 3);
  const auto any = [&](std::size_t i, auto test) {
    for (int plane = 0; plane < num_planes; ++plane) {
      if (test(numbers.planes[static_cast<std::size_t>(plane)][i])) return true;
    }
    return false;
  };
  for (std::size_t i = 0; i < numbers.count; ++i) {
    if (!any(i, [this](float value) { return !(value >= low_ && value <= high_); })) continue;
    if (any(i, [](float value) { return std::isnan(value); })) continue;
    if (any(i, [](float value) { return value == kInfinity; })) {
      pixels[i] = PackColor(kInfinityColor);
    } else if (any(i, [](float value) { return value == -kInfinity; })) {
      pixels[i] = PackColor(kNegativeInfinityColor);
    } else {
      pixels[i] = PackColor(any(i, [this](float value) { return value > high_; }) ? kAboveColor : kBelowColor);
    }
  }
}

}  // namespace ScEng
