// SPDX-License-Identifier: Apache-2.0
//
// What tests of ambient occlusion share: a slow reference in double precision, and fields of heights.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <vector>

#include "Host/Gpu/GpuEngine.h"
#include "Tests/Support/HostTesting.h"

namespace Testing {

/// What every pixel is promised.
inline constexpr double kAccuracy = 2e-4;

/// The engine's result.
inline ImagePtr Occlude(const Image& image, float radius, char border) {
  ScEng::Status status;
  ImagePtr result(GpuEngine::Get()->ExecuteAmbientOcclusion(&image, radius, border, status));
  EXPECT_EQ(status.GetMessage(), "");
  return result;
}

/// A pixel's z.
inline double HeightOf(const Image& image, std::size_t pixel, double radius) {
  const std::size_t channels = static_cast<std::size_t>(image.GetNumChannels());
  const double value =
      static_cast<double>(ScEng::ValueOfPixel(image.GetConstArray() + pixel * channels, image.GetColorMode()));
  double low = static_cast<double>(image.GetValueLow());
  double high = static_cast<double>(image.GetValueHigh());
  if (image.GetColorMode() == ColorMode::kColor) low = 0.0, high = 1.0;
  if (image.GetColorMode() == ColorMode::kSigned) low = -1.0, high = 1.0;
  if (high == low) return 0.0;
  const double z = (value - low) * (radius / (high - low));
  return std::isnan(z) ? 0.0 : z;
}

/// A pixel beyond the border comes from the other side ('p') or is the border's.
inline int Fold(int place, int size, char border) {
  return border == 'p' ? ((place % size) + size) % size : std::clamp(place, 0, size - 1);
}

/// The same as the engine's in double precision, step by step.
inline std::vector<double> Reference(const Image& image, float radius, char border) {
  const int size_x = image.GetSizeX();
  const int size_y = image.GetSizeY();
  std::vector<double> z;
  for (std::size_t i = 0; i < static_cast<std::size_t>(size_x) * static_cast<std::size_t>(size_y); ++i) {
    z.push_back(HeightOf(image, i, static_cast<double>(radius)));
  }
  const auto at = [&](int x, int y) {
    return z[static_cast<std::size_t>(Fold(y, size_y, border)) * static_cast<std::size_t>(size_x) +
             static_cast<std::size_t>(Fold(x, size_x, border))];
  };
  // Beyond the corners border pixels go on for ever, and rises to them only sink.
  const double beyond = border == 'b' ? 8.0 * (size_x + size_y) : static_cast<double>(radius);
  const int steps = static_cast<int>(std::floor(std::min(static_cast<double>(radius), beyond)));
  std::vector<double> result;
  for (int y = 0; y < size_y; ++y) {
    for (int x = 0; x < size_x; ++x) {
      double sum = 0.0;
      for (int k = 0; k < 16; ++k) {
        double steepest = 0.0;
        for (int s = 1; s <= steps; ++s) {
          double found = 0.0;
          if (k % 4 == 0) {
            const int dx[] = {s, 0, -s, 0};
            const int dy[] = {0, s, 0, -s};
            found = at(x + dx[k / 4], y + dy[k / 4]);
          } else {
            const double px = s * std::cos(2.0 * std::numbers::pi * k / 16);
            const double py = s * std::sin(2.0 * std::numbers::pi * k / 16);
            const int ix = static_cast<int>(std::floor(px));
            const int iy = static_cast<int>(std::floor(py));
            const double fx = px - ix;
            const double fy = py - iy;
            found = (1 - fy) * ((1 - fx) * at(x + ix, y + iy) + fx * at(x + ix + 1, y + iy)) +
                    fy * ((1 - fx) * at(x + ix, y + iy + 1) + fx * at(x + ix + 1, y + iy + 1));
          }
          const double rise = (found - at(x, y)) / s;
          if (rise > steepest) steepest = rise;
        }
        sum += 1.0 / (1.0 + steepest * steepest);
      }
      result.push_back(sum / 16.0);
    }
  }
  return result;
}

/// Passes when the engine's result is the reference's within the promised accuracy, in the promised header.
inline testing::AssertionResult IsAccurate(const Image& image, float radius, char border) {
  const ImagePtr result = Occlude(image, radius, border);
  if (!result) return testing::AssertionFailure() << "there is no result";
  const ImageHeader& header = result->GetImageHeader();
  if (header.size_x != image.GetSizeX() || header.size_y != image.GetSizeY() || header.color_mode != 2 ||
      header.pin_x != image.GetPinX() || header.pin_y != image.GetPinY() || header.pivot_x != image.GetPivotX() ||
      header.pivot_y != image.GetPivotY() || header.value_low != 0.0F || header.value_high != 1.0F) {
    return testing::AssertionFailure() << "the header is wrong";
  }
  const std::vector<double> expected = Reference(image, radius, border);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const double actual = static_cast<double>(result->GetConstArray()[i]);
    if (std::abs(actual - expected[i]) <= kAccuracy) continue;
    return testing::AssertionFailure() << "pixel " << i << " is " << actual << ", not " << expected[i];
  }
  return testing::AssertionSuccess();
}

/// White noise between 0 and 1.
inline std::vector<float> Noise(std::size_t count, std::uint32_t seed) {
  std::vector<float> samples(count);
  for (float& sample : samples) {
    seed = seed * 1664525U + 1013904223U;
    sample = static_cast<float>(seed >> 8) / 16777216.0F;
  }
  return samples;
}

/// Hills of several sizes and some noise, between about 0 and 1.
inline ImagePtr MakeHills(int size_x, int size_y, double detail) {
  auto image = ScEng::MakeRef<Image>(size_x, size_y, ColorMode::kValue, nullptr);
  const std::vector<float> noise = Noise(image->GetNumSamples(), 5);
  float* samples = image->GetArray();
  for (int y = 0; y < size_y; ++y) {
    for (int x = 0; x < size_x; ++x, ++samples) {
      const double hills = std::sin(x * 0.05) * std::cos(y * 0.04) + 0.4 * std::sin(x * 0.21 + y * 0.17);
      const auto i = static_cast<std::size_t>(samples - image->GetConstArray());
      *samples = static_cast<float>(0.5 + 0.3 * hills + detail * static_cast<double>(noise[i]));
    }
  }
  return image;
}

}  // namespace Testing
