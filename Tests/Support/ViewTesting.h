// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Host/Viewing/DrawView.h"
#include "Tests/Support/ImageTesting.h"

/// What the tests of views share.
namespace Testing {

inline std::shared_ptr<const ScEng::ViewImage> MakeView(int size_x, int size_y, unsigned color_mode,
                                                        const std::vector<float>& samples) {
  return ScEng::ViewImage::Make(*MakeImage(size_x, size_y, color_mode, samples));
}

/// An image of values by a formula of column and row.
template <class Formula>
std::shared_ptr<const ScEng::ViewImage> MakeValues(int size_x, int size_y, const Formula& formula) {
  std::vector<float> samples;
  for (int y = 0; y < size_y; ++y) {
    for (int x = 0; x < size_x; ++x) samples.push_back(static_cast<float>(formula(x, y)));
  }
  return MakeView(size_x, size_y, ColorMode::kValue, samples);
}

/// Red, green, blue and opacity.
using Drawn = std::array<int, 4>;

inline constexpr Drawn kNothing = {0, 0, 0, 0};
inline constexpr Drawn kBlack = {0, 0, 0, 255};
inline constexpr Drawn kWhite = {255, 255, 255, 255};
inline constexpr Drawn kMagenta = {255, 0, 255, 255};

inline Drawn Gray(int step) { return {step, step, step, 255}; }

class DrawnPicture {
 public:
  DrawnPicture(const ScEng::ViewImage& image, const ScEng::Look& look, const ScEng::ViewTransform& transform, int width,
               int height)
      : width_(width), bytes_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, 0xAB) {
    ScEng::DrawView(image, look, transform, {bytes_.data(), width, height, static_cast<std::size_t>(width) * 4});
  }

  [[nodiscard]] Drawn Get(int x, int y) const {
    const std::uint8_t* const pixel =
        bytes_.data() +
        (static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)) * 4;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
  }
  [[nodiscard]] std::vector<Drawn> GetRow(int y) const {
    std::vector<Drawn> row;
    for (int x = 0; x < width_; ++x) row.push_back(Get(x, y));
    return row;
  }

 private:
  int width_;
  std::vector<std::uint8_t> bytes_;
};

}  // namespace Testing
