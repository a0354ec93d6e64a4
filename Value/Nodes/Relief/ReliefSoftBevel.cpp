// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ReliefSoftBevel.h"

#include "Value/Nodes/Relief/DiscRings.h"

// Highway compiles the part between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE once per instruction set and calls
// the best one that the processor has.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Nodes/Relief/ReliefSoftBevel.cpp"
#include <hwy/aligned_allocator.h>
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Host/Math/Border.h"
#include "Host/Util/Cancellation.h"
#include "Host/Util/ParallelRows.h"
#include "Value/Nodes/Relief/SoftPlane.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefBevel::HWY_NAMESPACE {
namespace {
namespace hn = hwy::HWY_NAMESPACE;

using D = hn::CappedTag<float, kMostLanes>;
using V = hn::Vec<D>;

/// Row `y` of the windows; the lowest and rightmost ones are cut off.
void FillWindows(const Plane& plane, std::size_t y, float* columns) {
  static_assert(DiscRings::kWindow == 8);
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  const std::size_t end = std::min(y + DiscRings::kWindow, plane.rows);
  const float* from = plane.samples.get() + y * plane.stride;
  for (std::size_t x = 0; x < plane.stride; x += lanes) {
    V largest = hn::Load(d, from + x);
    for (std::size_t row = y + 1; row < end; ++row) {
      largest = hn::Max(largest, hn::Load(d, plane.samples.get() + row * plane.stride + x));
    }
    hn::Store(largest, d, columns + x);
  }
  std::fill_n(columns + plane.stride, kMostLanes, plane.signs.nothing);
  float* to = plane.windows.get() + y * plane.stride;
  for (std::size_t x = 0; x < plane.stride; x += lanes) {
    V largest = hn::Load(d, columns + x);
    for (std::size_t i = 1; i < DiscRings::kWindow; ++i) largest = hn::Max(largest, hn::LoadU(d, columns + x + i));
    hn::Store(largest, d, to + x);
  }
}

/// Searches around vectors of pixels, one below the other.
class Search {
 public:
  Search(const Plane& plane, const DiscRings& discs, const Phase& phase)
      : plane_(plane),
        discs_(discs),
        phase_(phase),
        found_(Plane::Allocate((static_cast<std::size_t>(phase.to) + 1) * kMostLanes)) {}

  /// Draws the pixels from column `x` on, as many as fit into a vector, in rows [from, to).
  void Draw(int x, int from, int to, float* output) {
    const D d;
    const auto width = static_cast<std::size_t>(plane_.mask.GetSizeX());
    const std::size_t columns = std::min(hn::Lanes(d), width - static_cast<std::size_t>(x));
    // Nothing is known about a row above.
    first_ = 0;
    for (int y = from; y < to; ++y) {
      Look(x, y, columns);
      float* samples = output + static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x);
      if (columns == hn::Lanes(d)) {
        hn::StoreU(Blend(hn::LoadU(d, samples)), d, samples);
        continue;
      }
      alignas(64) std::array<float, kMostLanes> part{};
      std::copy_n(samples, columns, part.data());
      hn::Store(Blend(hn::Load(d, part.data())), d, part.data());
      std::copy_n(part.data(), columns, samples);
    }
  }

 private:
  /// The largest numbers within each radius from `begin_` to `last_` - 1, in `found_`.
  void Look(int x, int y, std::size_t columns) {
    const D d;
    const V base = hn::Set(d, plane_.signs.base);
    const V full = hn::Set(d, plane_.signs.full);
    const std::size_t at = plane_.Find(x, y);
    // Pixels beyond the image have nothing to look for.
    V best = hn::IfThenElse(hn::FirstN(d, columns), hn::LoadU(d, plane_.samples.get() + at), full);
    const bool is_known = hn::AllTrue(d, hn::Ge(best, base));
    const auto counts = hn::FirstN(d, columns);
    const auto is_met = [d, base, counts](V numbers) {
      return !hn::AllFalse(d, hn::And(hn::Gt(numbers, base), counts));
    };
    const int above = first_;
    begin_ = 0;
    end_ = 0;
    first_ = phase_.to + 1;
    if (is_met(best)) {
      first_ = 0;
    } else if (is_known) {
      begin_ = std::max(above - 2, 0);
    }
    Keep(best);
    if (hn::AllTrue(d, hn::Ge(best, full))) return;
    int ring = begin_ + 1;
    while (ring <= phase_.to) {
      const int belt = DiscRings::GetBelt(ring);
      const int last = std::min(DiscRings::GetFirstRing(belt + 1) - 1, phase_.to);
      FindSectors(belt, x, y, hn::GetLane(hn::MinOfLanes(d, best)));
      if (sectors_.empty()) {
        for (; ring <= last; ++ring) Keep(best);
        continue;
      }
      for (; ring <= last; ++ring) {
        best = LookAtRing(ring, at, best);
        Keep(best);
        if (first_ > phase_.to && is_met(best)) first_ = ring;
        if (hn::AllTrue(d, hn::Ge(best, full))) return;
      }
    }
  }

  void Keep(V best) {
    const D d;
    hn::Store(best, d, found_.get() + static_cast<std::size_t>(end_++) * hn::Lanes(d));
  }

  /// Finds the sectors of a belt in which some number is above `least`.
  void FindSectors(int belt, int x, int y, float least) {
    sectors_.clear();
    const std::uint32_t begin = discs_.belts[static_cast<std::size_t>(belt)];
    const std::uint32_t end = discs_.belts[static_cast<std::size_t>(belt) + 1];
    x += plane_.border;
    y += plane_.border;
    for (std::uint32_t i = begin; i < end; ++i) {
      const DiscRings::Sector& sector = discs_.sectors[i];
      const auto column = static_cast<std::size_t>(x + sector.left) / kCoarseStep;
      const auto row = static_cast<std::size_t>(y + sector.top) / kCoarseStep;
      if (plane_.coarse[row * plane_.coarse_stride + column] > least) sectors_.push_back(i - begin);
    }
  }

  HWY_NOINLINE V LookAtRing(int ring, std::size_t at, V best) const {
    const D d;
    const float* HWY_RESTRICT samples = plane_.samples.get() + at;
    const float* HWY_RESTRICT windows = plane_.windows.get() + at;
    const std::uint32_t* parts = discs_.parts.data() + discs_.rings[static_cast<std::size_t>(ring)];
    const DiscRings::Arc* const arcs = discs_.arcs.data();
    const std::int32_t* HWY_RESTRICT offsets = discs_.offsets.data();
    for (const std::uint32_t sector : sectors_) {
      const DiscRings::Arc* const end = arcs + parts[sector + 1];
      for (const DiscRings::Arc* arc = arcs + parts[sector]; arc != end; ++arc) {
        if (HWY_LIKELY(hn::AllFalse(d, hn::Gt(hn::LoadU(d, windows + arc->window), best)))) continue;
        V other = best;
        std::uint32_t i = arc[0].first;
        for (; i + 1 < arc[1].first; i += 2) {
          best = hn::Max(best, hn::LoadU(d, samples + offsets[i]));
          other = hn::Max(other, hn::LoadU(d, samples + offsets[i + 1]));
        }
        if (i < arc[1].first) other = hn::Max(other, hn::LoadU(d, samples + offsets[i]));
        best = hn::Max(best, other);
      }
    }
    return best;
  }

  /// Draws the levels over a vector of the output.
  [[nodiscard]] V Blend(V output) const { return plane_.is_growing ? BlendInwards(output) : BlendOutwards(output); }

  /// Radii from large to small. Beyond the last one that was looked at all pixels are set.
  [[nodiscard]] V BlendInwards(V output) const {
    for (int radius = std::max(std::min(begin_ + end_ - 1, phase_.to), phase_.from); radius >= phase_.from; --radius) {
      if (radius < begin_) break;
      output = BlendOne(output, radius, GetFound(std::min(radius, begin_ + end_ - 1)));
    }
    return output;
  }

  /// Radii from small to large. Beyond the last one that was looked at no pixel is set.
  [[nodiscard]] V BlendOutwards(V output) const {
    const D d;
    const V nothing = hn::Set(d, plane_.signs.nothing);
    int radius = phase_.from;
    if (radius < begin_) {
      radius = std::min(begin_, phase_.to);
      output = hn::Set(d, GetLevel(radius));
      ++radius;
    }
    const int last = std::min(phase_.to, begin_ + end_ - 1);
    for (; radius <= last; ++radius) {
      const V found = GetFound(radius);
      output = BlendOne(output, radius, hn::IfThenZeroElse(hn::Eq(found, nothing), hn::Neg(found)));
    }
    return output;
  }

  [[nodiscard]] float GetLevel(int radius) const {
    return phase_.levels[static_cast<std::size_t>(radius - phase_.from)];
  }

  [[nodiscard]] V GetFound(int radius) const {
    const D d;
    return hn::Load(d, found_.get() + static_cast<std::size_t>(radius - begin_) * hn::Lanes(d));
  }

  /// Where the strength is 0 the output stays.
  [[nodiscard]] HWY_INLINE V BlendOne(V output, int radius, V strength) const {
    const D d;
    const V level = hn::Set(d, GetLevel(radius));
    const V blended = hn::Add(output, hn::Mul(hn::Sub(level, output), strength));
    const V drawn = hn::IfThenElse(hn::Ge(strength, hn::Set(d, 1.0F)), level, blended);
    return hn::IfThenElse(hn::Gt(strength, hn::Zero(d)), drawn, output);
  }

  const Plane& plane_;
  const DiscRings& discs_;
  const Phase& phase_;
  /// The first radius within which a pixel has met a number above the base; beyond all if none has.
  int first_ = 0;
  /// The first radius in `found_`, and how many there are.
  int begin_ = 0;
  int end_ = 0;
  hwy::AlignedFreeUniquePtr<float[]> found_;
  std::vector<std::uint32_t> sectors_;
};

void DrawRows(const Plane& plane, const DiscRings& discs, const Phase& phase, std::size_t from, std::size_t to,
              float* output) {
  Search search(plane, discs, phase);
  for (int x = 0; x < plane.mask.GetSizeX(); x += static_cast<int>(hn::Lanes(D()))) {
    ScEng::PollCancellation();
    search.Draw(x, static_cast<int>(from), static_cast<int>(to), output);
  }
}

}  // namespace
}  // namespace ReliefBevel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ReliefBevel {
namespace {

HWY_EXPORT(FillWindows);
HWY_EXPORT(DrawRows);

constexpr std::size_t kGrainRows = 16;

/// Row `y` of the plane.
void FillRow(const Plane& plane, std::size_t y) {
  float* to = plane.samples.get() + y * plane.stride;
  const int width = plane.mask.GetSizeX();
  const int height = plane.mask.GetSizeY();
  int row = static_cast<int>(y) - plane.border;
  if (plane.wrap) row = ScEng::WrapIndex(row, height);
  std::fill_n(to, plane.stride, plane.signs.nothing);
  if (row < 0 || row >= height) return;
  const float* from = plane.mask.GetConstArray() + static_cast<std::size_t>(row) * static_cast<std::size_t>(width);
  float* inside = to + plane.border;
  for (int x = 0; x < width; ++x) {
    const float sample = from[x];
    const float cut = sample > 0.0F ? (sample < 1.0F ? sample : 1.0F) : 0.0F;
    inside[x] = plane.is_growing ? cut : std::isnan(sample) ? plane.signs.nothing : -cut;
  }
  if (!plane.wrap) return;
  for (int x = 0; x < plane.border; ++x) to[x] = inside[ScEng::WrapIndex(x - plane.border, width)];
  const int behind = static_cast<int>(plane.stride) - plane.border;
  for (int x = width; x < behind; ++x) inside[x] = inside[x % width];
}

/// Row `y` of the coarse table, from the windows.
void FillCoarse(const Plane& plane, std::size_t y) {
  for (std::size_t x = 0; x < plane.coarse_stride; ++x) {
    float largest = plane.signs.nothing;
    for (std::size_t j = y * kCoarseStep; j < std::min(y * kCoarseStep + kCoarseSide, plane.rows); j += kCoarseStep) {
      const float* row = plane.windows.get() + j * plane.stride;
      for (std::size_t i = x * kCoarseStep; i < std::min(x * kCoarseStep + kCoarseSide, plane.stride);
           i += kCoarseStep) {
        largest = std::max(largest, row[i]);
      }
    }
    plane.coarse[y * plane.coarse_stride + x] = largest;
  }
}

void Fill(const Plane& plane) {
  static_assert(DiscRings::kWindow == kCoarseStep);
  ScEng::ParallelRows(plane.rows, kGrainRows, [&](std::size_t from, std::size_t to) {
    for (std::size_t y = from; y < to; ++y) FillRow(plane, y);
  });
  ScEng::ParallelRows(plane.rows, kGrainRows, [&](std::size_t from, std::size_t to) {
    const auto columns = Plane::Allocate(plane.stride);
    for (std::size_t y = from; y < to; ++y) HWY_DYNAMIC_DISPATCH(FillWindows)(plane, y, columns.get());
  });
  ScEng::ParallelRows(plane.coarse_rows, 1, [&](std::size_t from, std::size_t to) {
    for (std::size_t y = from; y < to; ++y) FillCoarse(plane, y);
  });
}

void Draw(const Image& mask, bool wrap, bool is_growing, const Phase& phase, Image& output) {
  const Plane plane(mask, wrap, phase.to, is_growing);
  Fill(plane);
  const DiscRings discs(phase.to, static_cast<std::ptrdiff_t>(plane.stride));
  float* samples = output.GetArray();
  ScEng::ParallelRows(static_cast<std::size_t>(mask.GetSizeY()), kGrainRows, [&](std::size_t from, std::size_t to) {
    HWY_DYNAMIC_DISPATCH(DrawRows)(plane, discs, phase, from, to, samples);
  });
}

}  // namespace

bool CanDrawSoft(const Image& mask, int reach) {
  constexpr int kFurthest = 1024;
  if (reach > kFurthest) return false;
  const double border = 2.0 * reach + 2 * kCoarseSide;
  const double pixels = (mask.GetSizeX() + border) * (mask.GetSizeY() + border);
  return pixels <= 16777216.0 + 4.0 * static_cast<double>(mask.GetNumSamples());
}

void DrawSoft(const Image& mask, bool wrap, const Rings& rings, int from, int to, Image& output) {
  const int largest = rings.start - from;
  const int smallest = rings.start - to + 1;
  if (largest > 0) {
    Phase growing{std::max(smallest, 1), largest, {}};
    for (int r = growing.from; r <= growing.to; ++r) growing.levels.push_back(GetLevelOfStep(rings, rings.start - r));
    Draw(mask, wrap, true, growing, output);
  }
  if (smallest <= 0) {
    Phase shrinking{std::max(-largest, 0), -smallest, {}};
    for (int r = shrinking.from; r <= shrinking.to; ++r) {
      shrinking.levels.push_back(GetLevelOfStep(rings, rings.start + r));
    }
    Draw(mask, wrap, false, shrinking, output);
  }
}

}  // namespace ReliefBevel
#endif
