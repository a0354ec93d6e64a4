// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/SampleRange.h"

// Highway compiles the part between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE once per instruction set and calls
// the best one that the processor has.
#include <hwy/cache_control.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Host/Image/SampleRange.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace ScEng {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D = hn::ScalableTag<float>;
using V = hn::Vec<D>;

template <bool kFiniteOnly>
HWY_INLINE hn::Mask<D> IsCounted(V samples) {
  if constexpr (kFiniteOnly) {
    return hn::IsFinite(samples);
  } else {
    return hn::Not(hn::IsNaN(samples));
  }
}

template <bool kFiniteOnly>
SampleRange Measure(const float* HWY_RESTRICT samples, std::size_t count) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  const V above_all = hn::Set(d, std::numeric_limits<float>::infinity());
  const V below_all = hn::Neg(above_all);
  // Two sets of accumulators, since each minimum waits for the one before it.
  V low0 = above_all;
  V low1 = above_all;
  V high0 = below_all;
  V high1 = below_all;
  std::size_t i = 0;
  for (; i + 2 * lanes <= count; i += 2 * lanes) {
    const V a = hn::LoadU(d, samples + i);
    const V b = hn::LoadU(d, samples + i + lanes);
    const auto a_counted = IsCounted<kFiniteOnly>(a);
    const auto b_counted = IsCounted<kFiniteOnly>(b);
    low0 = hn::Min(low0, hn::IfThenElse(a_counted, a, above_all));
    low1 = hn::Min(low1, hn::IfThenElse(b_counted, b, above_all));
    high0 = hn::Max(high0, hn::IfThenElse(a_counted, a, below_all));
    high1 = hn::Max(high1, hn::IfThenElse(b_counted, b, below_all));
  }
  SampleRange range;
  range.low = hn::GetLane(hn::MinOfLanes(d, hn::Min(low0, low1)));
  range.high = hn::GetLane(hn::MaxOfLanes(d, hn::Max(high0, high1)));
  for (; i < count; ++i) {
    const float sample = samples[i];
    // x - x is 0 for a finite x and NaN otherwise.
    const bool counted = kFiniteOnly ? sample - sample == 0.0F : sample == sample;
    if (counted && sample < range.low) range.low = sample;
    if (counted && sample > range.high) range.high = sample;
  }
  range.low += 0.0F;  // Turns -0.0 into +0.0.
  range.high += 0.0F;
  return range;
}

SampleRange MeasureAll(const float* samples, std::size_t count) { return Measure<false>(samples, count); }
SampleRange MeasureFinite(const float* samples, std::size_t count) { return Measure<true>(samples, count); }

void Stream(const float* HWY_RESTRICT from, float* HWY_RESTRICT to, std::size_t count) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t i = 0;
  for (; i < count && reinterpret_cast<std::uintptr_t>(to + i) % (lanes * sizeof(float)) != 0; ++i) to[i] = from[i];
  for (; i + lanes <= count; i += lanes) hn::Stream(hn::LoadU(d, from + i), d, to + i);
  for (; i < count; ++i) to[i] = from[i];
  // Streamed stores must be visible before another thread is told that the rows are done.
  hwy::FlushStream();
}

}  // namespace HWY_NAMESPACE
}  // namespace ScEng
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ScEng {

HWY_EXPORT(MeasureAll);
HWY_EXPORT(MeasureFinite);
HWY_EXPORT(Stream);

SampleRange MeasureRange(const float* samples, std::size_t count) {
  return HWY_DYNAMIC_DISPATCH(MeasureAll)(samples, count);
}

SampleRange MeasureFiniteRange(const float* samples, std::size_t count) {
  return HWY_DYNAMIC_DISPATCH(MeasureFinite)(samples, count);
}

void StreamSamples(const float* from, float* to, std::size_t count) { HWY_DYNAMIC_DISPATCH(Stream)(from, to, count); }

}  // namespace ScEng
#endif
