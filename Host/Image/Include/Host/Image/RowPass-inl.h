// SPDX-License-Identifier: Apache-2.0
//
// One pass over a row: a formula is applied, and what it reads and makes is measured and written while it is still in
// registers. Libraries that register `ValueOperationLoops` make their passes with it. It needs Highway.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(HOST_IMAGE_ROW_PASS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef HOST_IMAGE_ROW_PASS_INL
#undef HOST_IMAGE_ROW_PASS_INL
#else
#define HOST_IMAGE_ROW_PASS_INL
#endif

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "Host/Image/SampleRange.h"
#include "Host/Image/ValueOperation.h"

HWY_BEFORE_NAMESPACE();
namespace ScEng::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Lowest and highest of vectors, where all their samples are finite.
template <class D>
class RowMeasure {
 public:
  HWY_INLINE RowMeasure()
      : low_(hn::Set(D(), std::numeric_limits<float>::max())), high_(hn::Neg(low_)), strange_(hn::Zero(D())) {}

  HWY_INLINE void Include(hn::Vec<D> samples) {
    low_ = hn::Min(low_, samples);
    high_ = hn::Max(high_, samples);
    // A zero for a finite sample and NaN for any other.
    strange_ = hn::MulAdd(samples, hn::Zero(D()), strange_);
  }

  HWY_INLINE void Join(const RowMeasure& other) {
    low_ = hn::Min(low_, other.low_);
    high_ = hn::Max(high_, other.high_);
    strange_ = hn::Add(strange_, other.strange_);
  }

  /// Adds what was seen of `samples`. They are looked at once more where one of them is not finite.
  template <SampleRange (*kMeasure)(const float*, std::size_t)>
  HWY_INLINE void AddTo(SampleRange& range, const float* samples, std::size_t count) const {
    const D d;
    if (hn::AllTrue(d, hn::Eq(strange_, strange_))) {
      // A sum with 0 turns -0 into +0.
      range.Include({hn::GetLane(hn::MinOfLanes(d, low_)) + 0.0F, hn::GetLane(hn::MaxOfLanes(d, high_)) + 0.0F});
    } else {
      range.Include(kMeasure(samples, count));
    }
  }

 private:
  hn::Vec<D> low_;
  hn::Vec<D> high_;
  hn::Vec<D> strange_;
};

/// How far ahead of what is read the caches are told to look: what streams past them is limited by how soon its input
/// arrives.
inline constexpr std::size_t kBytesAhead = 8192;

/// `formula(first, second, to, count)` makes `count` samples, one vector of them here, so that the compiler can keep
/// them in a register. `few` is the same formula in a loop for any count. `kVectors` at a time suit short formulas.
template <std::size_t kVectors, bool kMeasuresInput, bool kStreamed, class Formula, class Few>
HWY_INLINE RowRanges RunRowPassAs(const RowPass& row, const Formula& formula, const Few& few) {
  const hn::ScalableTag<float> d;
  using Measure = RowMeasure<hn::ScalableTag<float>>;
  const std::size_t lanes = hn::Lanes(d);
  const std::size_t step = kVectors * lanes;
  const float* HWY_RESTRICT first = row.first;
  const float* HWY_RESTRICT second = row.second;
  float* HWY_RESTRICT to = row.to;
  const std::size_t count = row.count;
  RowRanges ranges;

  std::size_t i = 0;
  if (kStreamed) {
    const std::size_t beyond = reinterpret_cast<std::uintptr_t>(to) / sizeof(float) % lanes;
    if (beyond != 0) i = std::min(lanes - beyond, count);
  }
  const std::size_t begin = i;
  Measure input[2];
  Measure output[2];
  for (; i + step <= count; i += step) {
    for (std::size_t v = 0; v < kVectors; ++v) {
      const std::size_t at = i + v * lanes;
      HWY_ALIGN float made[hn::MaxLanes(d)];
      formula(first + at, second + at, made, lanes);
      const auto samples = hn::Load(d, made);
      output[v % 2].Include(samples);
      if (kMeasuresInput) input[v % 2].Include(hn::LoadU(d, first + at));
      if (kStreamed) {
        // Beyond the image, at its end: nothing is read there.
        hwy::Prefetch(reinterpret_cast<const float*>(reinterpret_cast<std::uintptr_t>(first + at) + kBytesAhead));
        hn::Stream(samples, d, to + at);
      } else {
        hn::StoreU(samples, d, to + at);
      }
    }
  }
  // Streamed stores must be visible before another thread is told that the rows are done.
  if (kStreamed) hwy::FlushStream();
  if (i > begin) {
    output[0].Join(output[1]);
    output[0].template AddTo<MeasureFiniteRange>(ranges.output, to + begin, i - begin);
    if (kMeasuresInput) {
      input[0].Join(input[1]);
      input[0].template AddTo<MeasureRange>(ranges.input, first + begin, i - begin);
    }
  }
  // What is left at both ends.
  for (const auto& [from, end] : {std::pair<std::size_t, std::size_t>{0, begin}, {i, count}}) {
    if (from == end) continue;
    few(first + from, second + from, to + from, end - from);
    ranges.output.Include(MeasureFiniteRange(to + from, end - from));
    if (kMeasuresInput) ranges.input.Include(MeasureRange(first + from, end - from));
  }
  return ranges;
}

/// The pass of an operation's one-value form.
template <std::size_t kVectors = 4, class Formula, class Few>
HWY_INLINE RowRanges RunOneValuePass(const RowPass& row, const Formula& formula, const Few& few) {
  // Measuring costs nothing beside the way to memory.
  if (row.streamed) return RunRowPassAs<kVectors, true, true>(row, formula, few);
  if (row.measures_input) return RunRowPassAs<kVectors, true, false>(row, formula, few);
  return RunRowPassAs<kVectors, false, false>(row, formula, few);
}

/// The pass of an operation's two-value form. The inputs are not measured.
template <std::size_t kVectors = 4, class Formula, class Few>
HWY_INLINE RowRanges RunTwoValuePass(const RowPass& row, const Formula& formula, const Few& few) {
  if (row.streamed) return RunRowPassAs<kVectors, false, true>(row, formula, few);
  return RunRowPassAs<kVectors, false, false>(row, formula, few);
}

}  // namespace ScEng::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
