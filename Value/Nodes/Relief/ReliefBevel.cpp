// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ReliefBevel.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Host/Image/EuclideanDistance.h"
#include "Host/Image/Filter.h"
#include "Host/Image/ImageRegion.h"
#include "Host/Util/ParallelRows.h"
#include "Value/Nodes/Relief/ReliefSoftBevel.h"

namespace ReliefBevel {
namespace {

/// The offsets of pixels that are in no ring however far the mask grows, and in every ring however far it shrinks. No
/// distance within an image comes near them.
constexpr std::int32_t kNever = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kAlways = std::numeric_limits<std::int32_t>::min();
/// The largest float that fits.
constexpr float kFurthest = 2147483520.0F;

/// Calls `body(i)` for each of so many pixels.
template <class Body>
void ForEachPixel(std::size_t pixels, const Body& body) {
  constexpr std::size_t kGrain = std::size_t{1} << 16;
  ScEng::ParallelRows(pixels, kGrain, [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) body(i);
  });
}

bool IsSet(float sample) { return sample > 0.0F; }

/// Calls `body(i, distance)` for each pixel that is not set, with its distance from the nearest set one rounded up to
/// whole pixels; kNever where there is none.
template <class Body>
void ForEachDistance(const Image& mask, bool wrap, const Body& body) {
  const ImagePtr distances(EuclideanDistance(mask, 0.0F, false, wrap));
  if (!distances) throw std::bad_alloc();
  const float* from = distances->GetConstArray();
  ForEachPixel(distances->GetNumSamples(), [&](std::size_t i) {
    const float distance = from[i];
    if (distance > 0.0F) body(i, distance <= kFurthest ? static_cast<std::int32_t>(std::ceil(distance)) : kNever);
  });
}

/// What every sample of the mask becomes by a disc that covers it all.
float FindCovering(const Image& mask, int radius, bool by_growing) {
  Image covered(mask.GetImageHeader(), nullptr);
  Filter::Copy(&mask, &covered);
  ImageRegion region;
  region.Init(&covered, 0, 0, covered.GetSizeX(), covered.GetSizeY(), -1);
  const auto whole = static_cast<float>(radius);
  if (by_growing) {
    region.Grow(whole, whole, true);
  } else {
    region.Shrink(whole, whole, true);
  }
  return covered.GetConstArray()[0];
}

/// The different numbers among the samples of an image that is filled with the same strength everywhere. All samples
/// with one number stay alike, and soon most of the numbers meet.
class ValuesInStep {
 public:
  explicit ValuesInStep(const Image& image)
      : starts_(image.GetConstArray(), image.GetConstArray() + image.GetNumSamples()) {
    KeepDifferent(starts_);
    values_ = starts_;
    places_.resize(starts_.size());
    std::iota(places_.begin(), places_.end(), std::size_t{0});
  }

  /// Blends steps [from, to) of the rings into all values.
  void Blend(const Rings& rings, int from, int to, float strength) {
    constexpr int kStepsBetweenMeetings = 64;
    while (from < to) {
      if (static_cast<double>(to - from) * static_cast<double>(values_.size()) > kMostBlends) {
        throw std::runtime_error("Relief: a bevel of " + std::to_string(rings.steps) +
                                 " rings takes too long on a mask that is soft everywhere; use a smaller radius.");
      }
      const int next = values_.size() == 1 ? to : from + std::min(kStepsBetweenMeetings, to - from);
      for (; from < next; ++from) {
        const float level = GetLevelOfStep(rings, from);
        for (float& value : values_) value = value + (level - value) * strength;
      }
      Meet();
    }
  }

  /// Where a sample has come to that was `start`.
  [[nodiscard]] float Get(float start) const {
    const auto found = std::lower_bound(starts_.begin(), starts_.end(), start);
    return values_[places_[static_cast<std::size_t>(found - starts_.begin())]];
  }

 private:
  static void KeepDifferent(std::vector<float>& values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
  }

  void Meet() {
    std::vector<float> different = values_;
    KeepDifferent(different);
    for (std::size_t& place : places_) {
      const auto found = std::lower_bound(different.begin(), different.end(), values_[place]);
      place = static_cast<std::size_t>(found - different.begin());
    }
    values_ = std::move(different);
  }

  std::vector<float> starts_;
  std::vector<float> values_;
  /// For each start the index of its value.
  std::vector<std::size_t> places_;
};

/// Draws steps [from, to) of the rings, for which the mask is the same number everywhere.
void DrawEvenly(float mask, const Rings& rings, int from, int to, Image& output) {
  if (from >= to || !(mask > 0.0F)) return;
  if (mask >= 1.0F) {
    const float last = GetLevelOfStep(rings, to - 1);
    Filter::Fill(output, nullptr, &last, 0);
    return;
  }
  ValuesInStep values(output);
  values.Blend(rings, from, to, mask);
  float* samples = output.GetArray();
  std::transform(samples, samples + output.GetNumSamples(), samples, [&](float sample) { return values.Get(sample); });
}

/// Draws a bevel with `draw_steps(first, end)` for the steps in which no disc covers the whole mask.
template <class DrawSteps>
void DrawInParts(const Image& mask, const Rings& rings, Image& output, const DrawSteps& draw_steps) {
  if (rings.steps <= 0 || mask.GetNumSamples() == 0) return;
  // The offset from which on a disc covers the whole mask, whichever pixel it is around.
  const int covering = static_cast<int>(
      std::ceil(std::hypot(static_cast<double>(mask.GetSizeX()), static_cast<double>(mask.GetSizeY()))));
  const int last = rings.steps - 1;
  // Steps [0, first) grow the mask at least so far, and steps from `end` on shrink it so far.
  const int first = std::clamp(rings.start - covering + 1, 0, rings.steps);
  const int end = rings.start - last > -covering ? rings.steps : std::max(first, rings.start + covering);
  if (first > 0) DrawEvenly(FindCovering(mask, covering, true), rings, 0, first, output);
  if (first < end) draw_steps(first, end);
  if (end < rings.steps) DrawEvenly(FindCovering(mask, covering, false), rings, end, rings.steps, output);
}

void DrawSteps(const Image& mask, bool wrap, const Rings& rings, int first, int end, Image& output) {
  Image working(mask.GetImageHeader(), nullptr);
  for (int i = first; i < end; ++i) {
    const auto offset = static_cast<float>(rings.start - i);
    Filter::Copy(&mask, &working);
    ImageRegion region;
    region.Init(&working, 0, 0, working.GetSizeX(), working.GetSizeY(), -1);
    if (offset > 0.0F) region.Grow(offset, offset, wrap);
    if (offset < 0.0F) region.Shrink(-offset, -offset, wrap);
    const float level = GetLevelOfStep(rings, i);
    Filter::Fill(output, &working, &level, 0);
  }
}

}  // namespace

float GetLevelOfStep(const Rings& rings, int step) {
  const float t = static_cast<float>(step + 1) * (1.0F / static_cast<float>(rings.steps));
  return GetLevel(rings.profile, rings.is_inverted ? 1.0F - t : t);
}

float GetLevel(ReliefProfile profile, float v) {
  switch (profile) {
    case ReliefProfile::kLinear: return v;
    case ReliefProfile::kSmooth: return (3.0F - 2.0F * v) * (v * v);
    case ReliefProfile::kArcOut: return std::sqrt(1.0F - (v - 1.0F) * (v - 1.0F));
    case ReliefProfile::kArcIn: return 1.0F - std::sqrt(1.0F - v * v);
  }
  return v;
}

void DrawStepByStep(const Image& mask, bool wrap, const Rings& rings, Image& output) {
  DrawInParts(mask, rings, output, [&](int first, int end) { DrawSteps(mask, wrap, rings, first, end, output); });
}

Analysis::Analysis(const Image& mask, bool wrap) : mask_(mask), wrap_(wrap) {
  const float* samples = mask.GetConstArray();
  std::atomic<bool> is_soft = false;
  constexpr std::size_t kGrain = std::size_t{1} << 16;
  ScEng::ParallelRows(mask.GetNumSamples(), kGrain, [&](std::size_t from, std::size_t to) {
    if (is_soft) return;
    const auto is_hard = [](float sample) { return sample <= 0.0F || sample >= 1.0F; };
    if (!std::all_of(samples + from, samples + to, is_hard)) is_soft = true;
  });
  is_hard_ = !is_soft;
}

void Analysis::Draw(const Rings& rings, Image& output) {
  if (rings.steps <= 0) return;
  if (!is_hard_) {
    DrawInParts(mask_, rings, output, [&](int first, int end) {
      const int reach = std::max(rings.start - first, end - 1 - rings.start);
      const auto draw = CanDrawSoft(mask_, reach) ? DrawSoft : DrawSteps;
      draw(mask_, wrap_, rings, first, end, output);
    });
    return;
  }

  const std::size_t pixels = mask_.GetNumSamples();
  if (!least_offsets_) {
    least_offsets_ = std::make_unique_for_overwrite<std::int32_t[]>(pixels);
    const float* from = mask_.GetConstArray();
    ForEachPixel(pixels, [&](std::size_t i) { least_offsets_[i] = IsSet(from[i]) ? 0 : kNever; });
  }
  const int last_step = rings.steps - 1;
  if (rings.start > 0) FindGrown();
  if (rings.start - last_step < 0) FindShrunk();

  // A table pays where it is shorter than the image.
  std::vector<float> levels;
  if (static_cast<std::size_t>(rings.steps) <= pixels) {
    levels.reserve(static_cast<std::size_t>(rings.steps));
    for (int i = 0; i < rings.steps; ++i) levels.push_back(GetLevelOfStep(rings, i));
  }
  const auto get_level = [&](int step) {
    return levels.empty() ? GetLevelOfStep(rings, step) : levels[static_cast<std::size_t>(step)];
  };
  const float last_level = get_level(last_step);
  const std::int32_t least_of_last = rings.start - last_step;
  float* samples = output.GetArray();
  ForEachPixel(pixels, [&](std::size_t i) {
    // Later rings lie within earlier ones, so the last that a pixel belongs to is what is seen.
    const std::int32_t least = least_offsets_[i];
    if (least <= least_of_last) {
      samples[i] = last_level;
    } else if (least <= rings.start && least != kNever) {
      samples[i] = get_level(rings.start - least);
    }
  });
}

/// A pixel outside is set once the mask is grown by its distance from it.
void Analysis::FindGrown() {
  if (std::exchange(has_grown_, true)) return;
  ForEachDistance(mask_, wrap_, [&](std::size_t i, std::int32_t distance) { least_offsets_[i] = distance; });
}

/// A pixel inside stays set while the mask is shrunk by less than its distance from the outside.
void Analysis::FindShrunk() {
  if (std::exchange(has_shrunk_, true)) return;
  Image outside(mask_.GetImageHeader(), nullptr);
  const float* from = mask_.GetConstArray();
  float* to = outside.GetArray();
  ForEachPixel(mask_.GetNumSamples(), [&](std::size_t i) { to[i] = IsSet(from[i]) ? 0.0F : 1.0F; });
  ForEachDistance(outside, wrap_, [&](std::size_t i, std::int32_t distance) {
    least_offsets_[i] = distance == kNever ? kAlways : 1 - distance;
  });
}

}  // namespace ReliefBevel
