// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Distance/VerticalDistances.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Host/Image/Distance/VerticalDistances.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <limits>

#include "Host/Util/ParallelRows.h"

#ifndef HOST_IMAGE_VERTICAL_DISTANCES_STRIP
#define HOST_IMAGE_VERTICAL_DISTANCES_STRIP
namespace ScEng {
namespace {

/// Columns that one task takes down and up again.
constexpr int kStrip = 512;

/// One number for each column of a strip.
using StripRow = std::array<float, kStrip>;

}  // namespace
}  // namespace ScEng
#endif

HWY_BEFORE_NAMESPACE();
namespace ScEng::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D = hn::ScalableTag<float>;

/// One row on the way down: `down` goes from the row above to this one.
void StepDown(const float* HWY_RESTRICT seeds, std::size_t count, float* HWY_RESTRICT down, float* HWY_RESTRICT to) {
  const D d;
  const auto one = hn::Set(d, 1.0F);
  const std::size_t lanes = hn::Lanes(d);
  std::size_t x = 0;
  for (; x + lanes <= count; x += lanes) {
    const auto distance = hn::Min(hn::LoadU(d, seeds + x), hn::Add(hn::LoadU(d, down + x), one));
    hn::StoreU(distance, d, down + x);
    hn::StoreU(distance, d, to + x);
  }
  for (; x < count; ++x) to[x] = down[x] = std::min(seeds[x], down[x] + 1.0F);
}

/// One row on the way up. A distance is 0 exactly where the pixel is set, so that the minimum with the distance from
/// below is all there is to it. `around` is what the row has from the tile above.
void StepUp(float* HWY_RESTRICT distances, std::size_t count, float* HWY_RESTRICT up, float* HWY_RESTRICT around) {
  const D d;
  const auto one = hn::Set(d, 1.0F);
  const std::size_t lanes = hn::Lanes(d);
  std::size_t x = 0;
  for (; x + lanes <= count; x += lanes) {
    const auto from_above = hn::LoadU(d, around + x);
    const auto from_below = hn::Add(hn::LoadU(d, up + x), one);
    const auto distance = hn::Min(hn::Min(hn::LoadU(d, distances + x), from_above), from_below);
    hn::StoreU(hn::Sub(from_above, one), d, around + x);
    hn::StoreU(distance, d, up + x);
    hn::StoreU(distance, d, distances + x);
  }
  for (; x < count; ++x) {
    distances[x] = up[x] = std::min(std::min(distances[x], around[x]), up[x] + 1.0F);
    around[x] -= 1.0F;
  }
}

}  // namespace ScEng::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ScEng {

HWY_EXPORT(StepDown);
HWY_EXPORT(StepUp);

namespace {

constexpr float kNone = std::numeric_limits<float>::infinity();

/// The columns from `left` on, `count` of them.
void MeasureStrip(float* distances, int width, int height, int left, int count, bool wrap, const SeedRow& seed) {
  const auto step_down = HWY_DYNAMIC_DISPATCH(StepDown);
  const auto step_up = HWY_DYNAMIC_DISPATCH(StepUp);
  const auto columns = static_cast<std::size_t>(count);
  const auto row_of = [&](int y) {
    return distances + static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + left;
  };

  alignas(64) StripRow seeds;
  alignas(64) StripRow down;
  alignas(64) StripRow up;
  alignas(64) StripRow around;
  down.fill(kNone);
  up.fill(kNone);
  around.fill(kNone);

  for (int y = 0; y < height; ++y) {
    seed(left, y, count, seeds.data());
    step_down(seeds.data(), columns, down.data(), row_of(y));
    if (!wrap) continue;
    // Below the last row comes the first one again: the way up starts with the distance to the first set pixel.
    for (std::size_t x = 0; x < columns; ++x) up[x] = std::min(up[x], seeds[x] + static_cast<float>(y));
  }
  if (wrap) {
    for (std::size_t x = 0; x < columns; ++x) around[x] = down[x] + static_cast<float>(height);
  }
  for (int y = height; y-- > 0;) step_up(row_of(y), columns, up.data(), around.data());
}

}  // namespace

void MeasureVerticalDistances(float* distances, int width, int height, bool wrap, const SeedRow& seed) {
  const auto strips = static_cast<std::size_t>((std::int64_t{width} + kStrip - 1) / kStrip);
  ParallelRows(strips, 1, [&](std::size_t from, std::size_t to) {
    for (std::size_t strip = from; strip < to; ++strip) {
      const int left = static_cast<int>(strip) * kStrip;
      MeasureStrip(distances, width, height, left, std::min(kStrip, width - left), wrap, seed);
    }
  });
}

}  // namespace ScEng
#endif
