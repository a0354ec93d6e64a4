// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Gradient.h"

#include <hwy/cache_control.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Host/Image/Gradient/Gradient.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "Host/Image/Streaming.h"
#include "Host/Image/Values/Finite-inl.h"
#include "Host/Util/ParallelReduce.h"

#ifndef HOST_IMAGE_GRADIENT_ROW
#define HOST_IMAGE_GRADIENT_ROW
namespace ScEng {
namespace {

/// One row of the source, the rows that its derivative along y compares, and where both derivatives go.
struct GradientRow {
  const float* row = nullptr;
  const float* above = nullptr;
  const float* below = nullptr;
  /// Null, or a row that will be read soon.
  const float* ahead = nullptr;
  float factor_y = 0.5F;
  std::size_t width = 0;
  bool seamless = false;
  /// Whether the results are written past the caches.
  bool streamed = false;
  float* to_x = nullptr;
  float* to_y = nullptr;
};

struct GradientRanges {
  SampleRange x;
  SampleRange y;

  void Include(const GradientRanges& other) {
    x.Include(other.x);
    y.Include(other.y);
  }
};

/// The two positions whose difference is the derivative at a position, and what it is multiplied by.
struct Neighbors {
  std::size_t minus;
  std::size_t plus;
  float factor;
};

Neighbors FindNeighbors(std::size_t position, std::size_t size, bool seamless) {
  const bool first = position == 0;
  const bool last = position + 1 == size;
  const bool one_sided = !seamless && (first || last);
  return {first ? (seamless ? size - 1 : 0) : position - 1, last ? (seamless ? 0 : position) : position + 1,
          one_sided ? 1.0F : 0.5F};
}

}  // namespace
}  // namespace ScEng
#endif

HWY_BEFORE_NAMESPACE();
namespace ScEng::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D = hn::ScalableTag<float>;
using V = hn::Vec<D>;

/// Lowest and highest of the results of a row, where all are finite.
class ResultRange {
 public:
  HWY_INLINE ResultRange() : low_(hn::Set(D(), std::numeric_limits<float>::infinity())), high_(hn::Neg(low_)) {}

  HWY_INLINE void Include(V results) {
    low_ = hn::Min(low_, results);
    high_ = hn::Max(high_, results);
    test_.Include(results);
  }

  /// The range of the results from `from` up to `to`, of which the vectors so far were included, and of those around.
  [[nodiscard]] HWY_INLINE SampleRange Get(const float* results, std::size_t from, std::size_t to,
                                           std::size_t count) const {
    const D d;
    if (test_.SawNonFinite()) return MeasureFiniteRange(results, count);
    SampleRange range = MeasureFiniteRange(results, from);
    range.Include(MeasureFiniteRange(results + to, count - to));
    // A zero is kept without its sign.
    if (from < to) {
      range.Include({hn::GetLane(hn::MinOfLanes(d, low_)) + 0.0F, hn::GetLane(hn::MaxOfLanes(d, high_)) + 0.0F});
    }
    return range;
  }

 private:
  V low_;
  V high_;
  FiniteTest<D> test_;
};

GradientRanges Derive(const GradientRow& task) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  const auto derive_pixels = [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) {
      const Neighbors x = FindNeighbors(i, task.width, task.seamless);
      task.to_x[i] = task.width == 1 ? 0.0F : (task.row[x.plus] - task.row[x.minus]) * x.factor;
      task.to_y[i] = (task.below[i] - task.above[i]) * task.factor_y;
    }
  };
  // Both results start at the same place of their images, whose first samples are aligned.
  std::size_t from = 1;
  while (from < task.width && reinterpret_cast<std::uintptr_t>(task.to_x + from) % (lanes * sizeof(float)) != 0) ++from;
  from = std::min(from, task.width);
  derive_pixels(0, from);

  const V half = hn::Set(d, 0.5F);
  const V factor_y = hn::Set(d, task.factor_y);
  ResultRange range_x;
  ResultRange range_y;
  std::size_t i = from;
  for (; i + lanes < task.width; i += lanes) {
    const V x = hn::Mul(hn::Sub(hn::LoadU(d, task.row + i + 1), hn::LoadU(d, task.row + i - 1)), half);
    const V y = hn::Mul(hn::Sub(hn::LoadU(d, task.below + i), hn::LoadU(d, task.above + i)), factor_y);
    if (task.streamed) {
      if (task.ahead != nullptr) hwy::Prefetch(task.ahead + i);
      hn::Stream(x, d, task.to_x + i);
      hn::Stream(y, d, task.to_y + i);
    } else {
      hn::StoreU(x, d, task.to_x + i);
      hn::StoreU(y, d, task.to_y + i);
    }
    range_x.Include(x);
    range_y.Include(y);
  }
  derive_pixels(i, task.width);
  // Streamed stores must be visible before another thread is told that the row is done.
  if (task.streamed) hwy::FlushStream();
  return {range_x.Get(task.to_x, from, i, task.width), range_y.Get(task.to_y, from, i, task.width)};
}

}  // namespace ScEng::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ScEng {
namespace {

HWY_EXPORT(Derive);

// Enough samples in one piece that handing it to a thread pays.
constexpr std::size_t kGrainSamples = std::size_t{1} << 16;

void SetRange(Image& image, const SampleRange& range) {
  image.SetValueLowHigh(range.IsEmpty() ? 0.0F : range.low, range.IsEmpty() ? 0.0F : range.high);
}

bool AreFit(const Image& source, const Image& out_x, const Image& out_y) {
  const auto fits = [&](const Image& output) {
    return &output != &source && output.GetColorMode() == ColorMode::kValue && output.GetSizeX() == source.GetSizeX() &&
           output.GetSizeY() == source.GetSizeY();
  };
  return source.GetColorMode() == ColorMode::kValue && &out_x != &out_y && fits(out_x) && fits(out_y);
}

}  // namespace
}  // namespace ScEng

bool ImageValue::Gradient(const Image& source, Image& out_x, Image& out_y, bool seamless) {
  using namespace ScEng;
  if (!AreFit(source, out_x, out_y)) return false;
  const auto width = static_cast<std::size_t>(source.GetSizeX());
  const auto height = static_cast<std::size_t>(source.GetSizeY());
  const float* samples = source.GetConstArray();
  float* to_x = out_x.GetArray();
  float* to_y = out_y.GetArray();
  // What a single row is compared with.
  const std::vector<float> zeros(height == 1 ? width : 0);
  const auto derive_rows = [&](std::size_t from, std::size_t to) {
    GradientRanges part;
    GradientRow task;
    task.width = width;
    task.seamless = seamless;
    task.streamed = IsStreamed(source.GetNumSamples());
    for (std::size_t y = from; y < to; ++y) {
      const Neighbors rows = FindNeighbors(y, height, seamless);
      task.row = samples + y * width;
      task.above = height == 1 ? zeros.data() : samples + rows.minus * width;
      task.below = height == 1 ? zeros.data() : samples + rows.plus * width;
      task.ahead = y + 2 < height ? samples + (y + 2) * width : nullptr;
      task.factor_y = rows.factor;
      task.to_x = to_x + y * width;
      task.to_y = to_y + y * width;
      part.Include(HWY_DYNAMIC_DISPATCH(Derive)(task));
    }
    return part;
  };
  const auto ranges = ParallelReduce<GradientRanges>(width == 0 ? 0 : height,
                                                     kGrainSamples / std::max<std::size_t>(width, 1), derive_rows);
  SetRange(out_x, ranges.x);
  SetRange(out_y, ranges.y);
  return true;
}
#endif
