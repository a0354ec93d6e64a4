// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/HeightField.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "Host/Util/ParallelRows.h"

namespace {

constexpr float kHole = std::numeric_limits<float>::quiet_NaN();

/// What the heights 0 and 1 stand for.
ScEng::SampleRange FindRange(const Image& image, const ScEng::SampleRange& finite) {
  ScEng::SampleRange range = finite;
  const float low = image.GetValueLow();
  const float high = image.GetValueHigh();
  if (std::isfinite(low) && std::isfinite(high) && low < high) range.Include({low, high});
  return range;
}

/// A position between two pixels of a row or column.
struct Between {
  Between(double place, int size) {
    const double cut = std::clamp(place, 0.0, static_cast<double>(size - 1));
    first = static_cast<int>(cut);
    second = std::min(first + 1, size - 1);
    share = static_cast<float>(cut - first);
  }
  int first;
  int second;
  float share;
};

}  // namespace

HeightField::HeightField(std::shared_ptr<const ScEng::ViewImage> image)
    : image_(std::move(image)),
      size_x_(image_->GetImage().GetSizeX()),
      size_y_(image_->GetImage().GetSizeY()),
      color_mode_(image_->GetImage().GetColorMode()),
      channels_(image_->GetImage().GetNumChannels()),
      spacing_(2.0 / std::max({size_x_ - 1, size_y_ - 1, 1})) {
  for (int level = 0; level < image_->GetNumLevels(); ++level) levels_.push_back(image_->GetLevel(level));
  const ScEng::ViewFigures& figures = image_->GetFigures();
  has_holes_ = figures.nan + figures.infinite > 0;
  if (figures.finite.IsEmpty()) return;
  const ScEng::SampleRange range = FindRange(image_->GetImage(), figures.finite);
  low_ = range.low;
  // A range without extent is flat.
  if (range.high > range.low) per_unit_ = 1.0 / (range.high - low_);
  lowest_ = ToHeight(figures.finite.low);
  highest_ = ToHeight(figures.finite.high);
}

bool HeightField::HasSurface() const { return size_x_ > 1 && size_y_ > 1 && !image_->GetFigures().finite.IsEmpty(); }

float HeightField::Read(const ScEng::ViewImage::Level& level, int x, int y) const {
  const auto pixel = static_cast<std::size_t>(y) * static_cast<std::size_t>(level.size_x) + static_cast<std::size_t>(x);
  const float value = ScEng::ValueOfPixel(level.samples + pixel * static_cast<std::size_t>(channels_), color_mode_);
  return std::isfinite(value) ? ToHeight(value) : kHole;
}

HeightField::Heights HeightField::CopyLevel(int level) const {
  const ScEng::ViewImage::Level& pixels = levels_[static_cast<std::size_t>(level)];
  Heights heights{pixels.size_x, pixels.size_y, {}};
  heights.values.resize(static_cast<std::size_t>(pixels.size_x) * static_cast<std::size_t>(pixels.size_y));
  ScEng::ParallelRows(static_cast<std::size_t>(pixels.size_y), 16, [&](std::size_t from, std::size_t to) {
    for (int y = static_cast<int>(from); y < static_cast<int>(to); ++y) {
      for (int x = 0; x < pixels.size_x; ++x) heights.values[heights.IndexOf(x, y)] = Read(pixels, x, y);
    }
  });
  return heights;
}

float HeightField::GetHeight(int level, double x, double y) const {
  const int used = std::clamp(level, 0, GetNumLevels() - 1);
  const ScEng::ViewImage::Level& pixels = levels_[static_cast<std::size_t>(used)];
  const double per_point = std::ldexp(1.0, -used);
  const Between column((x + 0.5) * per_point - 0.5, pixels.size_x);
  const Between row((y + 0.5) * per_point - 0.5, pixels.size_y);
  const float nearest =
      Read(pixels, column.share < 0.5F ? column.first : column.second, row.share < 0.5F ? row.first : row.second);
  if (column.share == 0.0F && row.share == 0.0F) return nearest;
  const std::array<float, 2> left{Read(pixels, column.first, row.first), Read(pixels, column.first, row.second)};
  const std::array<float, 2> right{Read(pixels, column.second, row.first), Read(pixels, column.second, row.second)};
  const float upper = left[0] + (right[0] - left[0]) * column.share;
  const float lower = left[1] + (right[1] - left[1]) * column.share;
  const float height = upper + (lower - upper) * row.share;
  // At the rim of a hole there is nothing to be between.
  return std::isfinite(height) ? height : nearest;
}
