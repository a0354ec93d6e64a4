// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/ContourLines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ScEng {
namespace {

constexpr std::int64_t kStrongEvery = 5;
/// From the middle of a strong line to where nothing is left of it, in drawn pixels. Other lines reach 1 pixel.
constexpr double kWidestReach = 1.25;

/// Darkens light pixels and lightens dark ones. The opacity of what is drawn grows to that of the line.
std::uint32_t Cover(std::uint32_t pixel, double share) {
  std::array<std::uint8_t, 4> bytes;
  std::memcpy(bytes.data(), &pixel, sizeof(pixel));
  // The weights of Rec. 709, which are enough to tell light from dark.
  const double lightness = 0.2126 * bytes[0] + 0.7152 * bytes[1] + 0.0722 * bytes[2];
  const double line = lightness > 110.0 ? 0.0 : 255.0;
  for (std::size_t i = 0; i < 3; ++i) {
    bytes[i] = static_cast<std::uint8_t>(std::lround(bytes[i] + (line - bytes[i]) * share));
  }
  bytes[3] = std::max(bytes[3], static_cast<std::uint8_t>(std::lround(255.0 * share)));
  std::memcpy(&pixel, bytes.data(), sizeof(pixel));
  return pixel;
}

/// The share of a drawn pixel that lines take, for a value, its change to the next drawn pixel and the step.
double GetShare(double value, double change, double step) {
  const double steps = value / step;
  // Beyond, neighboring lines are the same number. A value that is not finite fails too.
  if (!(std::fabs(steps) < 1e12)) return 0.0;
  // What `std::round` gives, without a call.
  const auto line = static_cast<std::int64_t>(steps + (steps < 0.0 ? -0.5 : 0.5));
  const double distance = std::fabs(value - static_cast<double>(line) * step);
  if (!(distance < kWidestReach * change)) return 0.0;
  const bool is_strong = line % kStrongEvery == 0;
  const double spacing = (is_strong ? static_cast<double>(kStrongEvery) * step : step) / change;
  const double thinning = std::clamp((spacing - 1.0) / 2.0, 0.4, 1.0);
  const double reach = is_strong ? kWidestReach : 1.0;
  return std::clamp(reach - distance / change, 0.0, 1.0) * thinning * (is_strong ? 0.85 : 0.5);
}

}  // namespace

void ContourLines::DrawRow(const RowPair& rows, const DrawnPlaces& columns, std::uint32_t* pixels) const {
  const auto down = static_cast<double>(rows.weight);
  for (std::size_t i = 0; i < columns.places.size(); ++i) {
    const DrawnPlace& place = columns.places[i];
    const auto right = static_cast<double>(place.weight);
    const auto a = static_cast<double>(rows.top[place.first - columns.low]);
    const auto b = static_cast<double>(rows.top[place.second - columns.low]);
    const auto c = static_cast<double>(rows.bottom[place.first - columns.low]);
    const auto d = static_cast<double>(rows.bottom[place.second - columns.low]);
    const double along_x = (b - a) * (1.0 - down) + (d - c) * down;
    const double along_y = (c - a) * (1.0 - right) + (d - b) * right;
    const double value = (a + (b - a) * right) * (1.0 - down) + (c + (d - c) * right) * down;
    const double share = GetShare(value, std::sqrt(along_x * along_x + along_y * along_y) * level_step_, step_);
    if (share > 0.0) pixels[i] = Cover(pixels[i], share);
  }
}

}  // namespace ScEng
