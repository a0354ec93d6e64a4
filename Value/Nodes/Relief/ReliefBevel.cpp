// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ReliefBevel.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "Host/Image/EuclideanDistance.h"
#include "Host/Image/Filter.h"
#include "Host/Image/ImageRegion.h"
#include "Host/Util/ParallelRows.h"

namespace ReliefBevel {
namespace {

/// More than any radius: no ring reaches so far.
constexpr int kNever = std::numeric_limits<std::int16_t>::max();

float GetLevelOfStep(const Rings& rings, int step) {
  const float t = static_cast<float>(step + 1) * (1.0F / static_cast<float>(rings.steps));
  return GetLevel(rings.profile, rings.is_inverted ? 1.0F - t : t);
}

/// Calls `body(i)` for each of so many pixels.
template <class Body>
void ForEachPixel(std::size_t pixels, const Body& body) {
  constexpr std::size_t kGrain = std::size_t{1} << 16;
  ScEng::ParallelRows(pixels, kGrain, [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) body(i);
  });
}

bool IsSet(float sample) { return sample > 0.0F; }

/// Each pixel's distance from the nearest set one, rounded up to whole pixels; at most kNever.
std::vector<std::int16_t> FindWholeDistances(const Image& mask, bool wrap) {
  const std::unique_ptr<const Image> distances(EuclideanDistance(mask, 0.0F, false, wrap));
  if (!distances) throw std::bad_alloc();
  std::vector<std::int16_t> whole(distances->GetNumSamples());
  const float* from = distances->GetConstArray();
  ForEachPixel(whole.size(), [&](std::size_t i) {
    whole[i] = static_cast<std::int16_t>(std::min(std::ceil(from[i]), static_cast<float>(kNever)));
  });
  return whole;
}

}  // namespace

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
  if (rings.steps <= 0) return;
  Image working(mask.GetImageHeader(), nullptr);
  for (int i = 0; i < rings.steps; ++i) {
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
  if (!is_hard_) return DrawStepByStep(mask_, wrap_, rings, output);

  if (least_offsets_.empty()) {
    least_offsets_.resize(mask_.GetNumSamples());
    const float* from = mask_.GetConstArray();
    ForEachPixel(least_offsets_.size(),
                 [&](std::size_t i) { least_offsets_[i] = static_cast<std::int16_t>(IsSet(from[i]) ? 0 : kNever); });
  }
  const int last_step = rings.steps - 1;
  if (rings.start > 0) FindGrown();
  if (rings.start - last_step < 0) FindShrunk();

  std::vector<float> levels;
  levels.reserve(static_cast<std::size_t>(rings.steps));
  for (int i = 0; i < rings.steps; ++i) levels.push_back(GetLevelOfStep(rings, i));
  float* samples = output.GetArray();
  ForEachPixel(least_offsets_.size(), [&](std::size_t i) {
    // Later rings lie within earlier ones, so the last that a pixel belongs to is what is seen.
    const int step = std::min(rings.start - least_offsets_[i], last_step);
    if (step >= 0) samples[i] = levels[static_cast<std::size_t>(step)];
  });
}

/// A pixel outside is set once the mask is grown by its distance from it.
void Analysis::FindGrown() {
  if (std::exchange(has_grown_, true)) return;
  const std::vector<std::int16_t> distances = FindWholeDistances(mask_, wrap_);
  ForEachPixel(distances.size(), [&](std::size_t i) {
    if (distances[i] > 0) least_offsets_[i] = distances[i];
  });
}

/// A pixel inside stays set while the mask is shrunk by less than its distance from the outside.
void Analysis::FindShrunk() {
  if (std::exchange(has_shrunk_, true)) return;
  Image outside(mask_.GetImageHeader(), nullptr);
  const float* from = mask_.GetConstArray();
  float* to = outside.GetArray();
  ForEachPixel(mask_.GetNumSamples(), [&](std::size_t i) { to[i] = IsSet(from[i]) ? 0.0F : 1.0F; });
  const std::vector<std::int16_t> distances = FindWholeDistances(outside, wrap_);
  ForEachPixel(distances.size(), [&](std::size_t i) {
    if (distances[i] > 0) least_offsets_[i] = static_cast<std::int16_t>(1 - distances[i]);
  });
}

}  // namespace ReliefBevel
