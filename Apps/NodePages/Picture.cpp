// SPDX-License-Identifier: Apache-2.0
#include "Apps/NodePages/Picture.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <sstream>
#include <vector>

namespace {

constexpr int kSide = 256;

struct Pixel {
  float red = 0.0F;
  float green = 0.0F;
  float blue = 0.0F;
  float opacity = 1.0F;
};

constexpr Pixel kNotFinite{0.9F, 0.0F, 0.9F, 1.0F};

Pixel Mix(const Pixel& a, const Pixel& b, float t) {
  return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t, a.blue + (b.blue - a.blue) * t, 1.0F};
}

Pixel DrawSigned(float value, float most) {
  constexpr Pixel kBelow{0.10F, 0.28F, 0.62F, 1.0F};
  constexpr Pixel kZero{0.97F, 0.97F, 0.96F, 1.0F};
  constexpr Pixel kAbove{0.72F, 0.15F, 0.08F, 1.0F};
  const float t = std::clamp(value / most, -1.0F, 1.0F);
  return t < 0.0F ? Mix(kZero, kBelow, -t) : Mix(kZero, kAbove, t);
}

/// Neighbouring numbers get hues far apart, a golden section of the circle each.
Pixel DrawLabel(float value) {
  const double label = std::round(static_cast<double>(value));
  const double turn = 0.55 + label * 0.6180339887498949;
  const double hue = (turn - std::floor(turn)) * 6.0;
  const double brightness = 0.62 + 0.12 * (std::fmod(label, 4.0));
  const auto channel = [&](double offset) {
    const double place = std::fmod(hue + offset, 6.0);
    const double ramp = std::clamp(std::abs(place - 3.0) - 1.0, 0.0, 1.0);
    return static_cast<float>(brightness * (0.35 + 0.65 * ramp));
  };
  return {channel(0.0), channel(4.0), channel(2.0), 1.0F};
}

Pixel DrawValue(float value, const Look& look) {
  if (!std::isfinite(value)) return kNotFinite;
  if (look.kind == Look::Kind::kSigned) return DrawSigned(value, look.high);
  if (look.kind == Look::Kind::kLabels) return DrawLabel(value);
  const float gray = std::clamp((value - look.low) / (look.high - look.low), 0.0F, 1.0F);
  return {gray, gray, gray, 1.0F};
}

/// The mean of a block of pixels; infinite or NaN as soon as one of them is. Colour counts by its opacity.
Pixel DrawBlock(const Image& image, int left, int top, int size, const Look& look) {
  const int right = std::min(left + size, image.GetSizeX());
  const int bottom = std::min(top + size, image.GetSizeY());
  const auto channels = static_cast<std::size_t>(image.GetNumChannels());
  const bool color = look.kind == Look::Kind::kColor && channels == 4;
  std::array<double, 4> sums{};
  for (int y = top; y < bottom; ++y) {
    const float* pixel =
        image.GetConstArray() +
        (static_cast<std::size_t>(y) * static_cast<std::size_t>(image.GetSizeX()) + static_cast<std::size_t>(left)) *
            channels;
    for (int x = left; x < right; ++x, pixel += channels) {
      if (look.kind == Look::Kind::kLabels) return DrawValue(pixel[0], look);
      if (!color) {
        sums[0] += static_cast<double>(ScEng::ValueOfPixel(pixel, image.GetColorMode()));
        continue;
      }
      const auto opacity = static_cast<double>(pixel[3]);
      for (std::size_t k = 0; k < 3; ++k) sums[k] += static_cast<double>(pixel[k]) * opacity;
      sums[3] += opacity;
    }
  }
  const double pixels = static_cast<double>(right - left) * static_cast<double>(bottom - top);
  if (!color) return DrawValue(static_cast<float>(sums[0] / pixels), look);
  const double whole = sums[3] > 0.0 ? sums[3] : 1.0;
  const auto inside = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
  return {inside(sums[0] / whole), inside(sums[1] / whole), inside(sums[2] / whole), inside(sums[3] / pixels)};
}

float ToStep(float value) { return std::round(value * 255.0F) / 255.0F; }

bool IsGray(const std::vector<Pixel>& pixels) {
  return std::all_of(pixels.begin(), pixels.end(), [](const Pixel& pixel) {
    return pixel.red == pixel.green && pixel.red == pixel.blue && pixel.opacity == 1.0F;
  });
}

std::string Format(float number) {
  char text[32];
  return std::string(text, std::to_chars(text, text + sizeof(text), number).ptr);
}

}  // namespace

std::optional<Look> ParseLook(const std::string& text) {
  std::istringstream words(text);
  std::string kind;
  std::string rest;
  Look look;
  words >> kind;
  if (kind == "grey") {
    words >> look.low >> look.high;
  } else if (kind == "signed") {
    look.kind = Look::Kind::kSigned;
    words >> look.high;
  } else if (kind == "labels") {
    look.kind = Look::Kind::kLabels;
  } else if (kind == "color") {
    look.kind = Look::Kind::kColor;
  } else {
    return std::nullopt;
  }
  if (words.fail() || words >> rest || !(look.high > look.low)) return std::nullopt;
  return look;
}

std::string DescribeLook(const Look& look) {
  switch (look.kind) {
    case Look::Kind::kGray: return "black is " + Format(look.low) + ", white is " + Format(look.high);
    case Look::Kind::kSigned: return "blue is " + Format(-look.high) + ", white is 0, red is " + Format(look.high);
    case Look::Kind::kLabels: return "each number has a colour of its own";
    case Look::Kind::kColor: break;
  }
  return "in its own colours";
}

ImagePtr DrawPicture(const Image& image, const Look& look) {
  const int longest = std::max({image.GetSizeX(), image.GetSizeY(), 1});
  const int block = (longest + kSide - 1) / kSide;
  const int zoom = std::max(kSide / longest, 1);
  const int columns = (image.GetSizeX() + block - 1) / block;
  const int rows = (image.GetSizeY() + block - 1) / block;
  std::vector<Pixel> pixels;
  for (int y = 0; y < rows * zoom; ++y) {
    for (int x = 0; x < columns * zoom; ++x) {
      pixels.push_back(DrawBlock(image, x / zoom * block, y / zoom * block, block, look));
    }
  }
  const bool gray = IsGray(pixels);
  auto picture =
      ScEng::MakeRef<Image>(columns * zoom, rows * zoom, gray ? ColorMode::kValue : ColorMode::kColor, nullptr);
  float* sample = picture->GetArray();
  for (const Pixel& pixel : pixels) {
    *sample++ = ToStep(pixel.red);
    if (gray) continue;
    *sample++ = ToStep(pixel.green);
    *sample++ = ToStep(pixel.blue);
    *sample++ = ToStep(pixel.opacity);
  }
  return picture;
}

bool LookAlike(const Image& a, const Image& b) {
  if (a.GetSizeX() != b.GetSizeX() || a.GetSizeY() != b.GetSizeY()) return false;
  const auto take = [](const Image& image, std::size_t pixel, std::size_t channel) {
    if (image.GetNumChannels() == 4) return image.GetConstArray()[pixel * 4 + channel];
    return channel == 3 ? 1.0F : image.GetConstArray()[pixel];
  };
  const std::size_t pixels = static_cast<std::size_t>(a.GetSizeX()) * static_cast<std::size_t>(a.GetSizeY());
  // A step and a half: samples are multiples of a step up to the rounding of floats.
  constexpr float kMost = 1.5F / 255.0F;
  for (std::size_t i = 0; i < pixels; ++i) {
    for (std::size_t k = 0; k < 4; ++k) {
      if (!(std::abs(take(a, i, k) - take(b, i, k)) < kMost)) return false;
    }
  }
  return true;
}
