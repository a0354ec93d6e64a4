// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/SampleRange.h"

// Highway compiles the part between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE once per instruction set and calls
// the best one that the processor has.
#include <hwy/cache_control.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Host/Image/Values/SampleRange.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <cstdint>

#include "Host/Image/Values/Finite-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ScEng::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D = hn::ScalableTag<float>;
using V = hn::Vec<D>;

/// Lowest and highest of a run of samples, where all are finite. One set of accumulators for every other vector, since
/// each minimum waits for the one before it.
class FiniteAccumulator {
 public:
  HWY_INLINE FiniteAccumulator()
      : low0_(hn::Set(D(), std::numeric_limits<float>::infinity())),
        low1_(low0_),
        high0_(hn::Neg(low0_)),
        high1_(high0_) {}

  HWY_INLINE void Include(V even, V odd) {
    low0_ = hn::Min(low0_, even);
    low1_ = hn::Min(low1_, odd);
    high0_ = hn::Max(high0_, even);
    high1_ = hn::Max(high1_, odd);
    test_.Include(even, odd);
  }

  /// Whether a sample was no finite number, so that the result says nothing.
  [[nodiscard]] HWY_INLINE bool SawNonFinite() const { return test_.SawNonFinite(); }

  /// To be asked only where vectors were included: without, some instruction sets answer with the largest finite
  /// numbers in place of the infinities of an empty range.
  [[nodiscard]] HWY_INLINE SampleRange GetRange() const {
    const D d;
    return {hn::GetLane(hn::MinOfLanes(d, hn::Min(low0_, low1_))),
            hn::GetLane(hn::MaxOfLanes(d, hn::Max(high0_, high1_)))};
  }

 private:
  V low0_;
  V low1_;
  V high0_;
  V high1_;
  FiniteTest<D> test_;
};

void IncludeOne(float sample, bool finite_only, SampleRange& range) {
  const bool counted = finite_only ? IsFinite(sample) : sample == sample;
  if (counted && sample < range.low) range.low = sample;
  if (counted && sample > range.high) range.high = sample;
}

/// Turns -0.0 into +0.0.
SampleRange WithoutNegativeZero(const SampleRange& range) { return {range.low + 0.0F, range.high + 0.0F}; }

/// The slow way, for runs with NaN or infinities in them.
SampleRange MeasureAny(const float* HWY_RESTRICT samples, std::size_t count, bool finite_only) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  SampleRange range;
  V low = hn::Set(d, range.low);
  V high = hn::Set(d, range.high);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    const V v = hn::LoadU(d, samples + i);
    const auto counted = finite_only ? hn::Eq(hn::Sub(v, v), hn::Zero(d)) : hn::Eq(v, v);
    low = hn::Min(low, hn::IfThenElse(counted, v, low));
    high = hn::Max(high, hn::IfThenElse(counted, v, high));
  }
  // Not by the minimum of all lanes, which some instruction sets make of the largest finite number besides.
  HWY_ALIGN float lows[hn::MaxLanes(d)];
  HWY_ALIGN float highs[hn::MaxLanes(d)];
  hn::Store(low, d, lows);
  hn::Store(high, d, highs);
  for (std::size_t lane = 0; lane < lanes; ++lane) range.Include({lows[lane], highs[lane]});
  for (; i < count; ++i) IncludeOne(samples[i], finite_only, range);
  return WithoutNegativeZero(range);
}

/// In runs short enough that one strange sample does not make a whole image slow.
SampleRange Measure(const float* HWY_RESTRICT samples, std::size_t count, bool finite_only) {
  constexpr std::size_t kRun = 4096;
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  SampleRange range;
  for (std::size_t from = 0; from < count; from += kRun) {
    const std::size_t to = count - from < kRun ? count : from + kRun;
    FiniteAccumulator accumulator;
    SampleRange piece;
    std::size_t i = from;
    for (; i + 2 * lanes <= to; i += 2 * lanes) {
      accumulator.Include(hn::LoadU(d, samples + i), hn::LoadU(d, samples + i + lanes));
    }
    if (accumulator.SawNonFinite()) {
      piece = MeasureAny(samples + from, to - from, finite_only);
    } else {
      if (i > from) piece = accumulator.GetRange();
      for (; i < to; ++i) IncludeOne(samples[i], finite_only, piece);
    }
    range.Include(WithoutNegativeZero(piece));
  }
  return range;
}

SampleRange MeasureAll(const float* samples, std::size_t count) { return Measure(samples, count, false); }
SampleRange MeasureFinite(const float* samples, std::size_t count) { return Measure(samples, count, true); }

SampleRange Stream(const float* HWY_RESTRICT from, float* HWY_RESTRICT to, std::size_t count, const float* ahead) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  FiniteAccumulator accumulator;
  SampleRange range;
  std::size_t i = 0;
  for (; i < count && reinterpret_cast<std::uintptr_t>(to + i) % (lanes * sizeof(float)) != 0; ++i) {
    to[i] = from[i];
    IncludeOne(from[i], true, range);
  }
  const std::size_t first_vector = i;
  for (; i + 2 * lanes <= count; i += 2 * lanes) {
    const V even = hn::LoadU(d, from + i);
    const V odd = hn::LoadU(d, from + i + lanes);
    if (ahead != nullptr) {
      hwy::Prefetch(ahead + i);
      hwy::Prefetch(ahead + i + lanes);
    }
    hn::Stream(even, d, to + i);
    hn::Stream(odd, d, to + i + lanes);
    accumulator.Include(even, odd);
  }
  const bool has_vectors = i > first_vector;
  for (; i < count; ++i) {
    to[i] = from[i];
    IncludeOne(from[i], true, range);
  }
  // Streamed stores must be visible before another thread is told that the rows are done.
  hwy::FlushStream();
  if (accumulator.SawNonFinite()) return MeasureAny(from, count, true);
  if (has_vectors) range.Include(accumulator.GetRange());
  return WithoutNegativeZero(range);
}

}  // namespace ScEng::HWY_NAMESPACE
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

SampleRange StreamSamples(const float* from, float* to, std::size_t count, const float* ahead) {
  return HWY_DYNAMIC_DISPATCH(Stream)(from, to, count, ahead);
}

}  // namespace ScEng
#endif
