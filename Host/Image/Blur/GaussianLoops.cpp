// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Blur/GaussianLoops.h"

#include <hwy/cache_control.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Host/Image/Blur/GaussianLoops.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "Host/Image/Values/Finite-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ScEng::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// At most 16 lanes, so that four vectors never exceed kRowUnit.
using DF = hn::CappedTag<float, 16>;
using VF = hn::Vec<DF>;
using DD = hn::CappedTag<double, 8>;
using VD = hn::Vec<DD>;
using DH = hn::Rebind<float, DD>;

constexpr std::size_t kTerms = GaussianCosines::kTerms;

template <class D>
HWY_INLINE hn::Vec<D> Unscale(D d, hn::Vec<D> scaled, const SampleScale& scale) {
  const auto sample = hn::Add(hn::Mul(scaled, hn::Set(d, scale.unscale)), hn::Set(d, scale.middle));
  return hn::Min(hn::Max(sample, hn::Set(d, scale.low)), hn::Set(d, scale.high));
}

/// Stores the first `count` lanes, or all where there are fewer; streamed ones are always whole vectors.
template <class D>
HWY_INLINE void StoreSome(D d, hn::Vec<D> samples, float* to, std::size_t count, Writing writing) {
  // Streaming is for whole registers; two lanes are half of one.
  if (writing == Writing::kStreamed && hn::Lanes(d) >= 4) {
    hn::Stream(samples, d, to);
    return;
  }
  if (count >= hn::Lanes(d)) {
    hn::StoreU(samples, d, to);
    return;
  }
  HWY_ALIGN float lanes[16];
  hn::Store(samples, d, lanes);
  std::memcpy(to, lanes, count * sizeof(float));
}

/// Fetches the cache lines of `count` samples.
HWY_INLINE void FetchAhead(const float* samples, std::size_t count) {
  constexpr std::size_t kLine = 64 / sizeof(float);
  for (std::size_t i = 0; i < count; i += kLine) hwy::Prefetch(samples + i);
}

bool FindNonFinite(const float* samples, std::size_t count) {
  const DF d;
  const std::size_t lanes = hn::Lanes(d);
  FiniteTest<DF> test;
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) test.Include(hn::LoadU(d, samples + i));
  if (test.SawNonFinite()) return true;
  for (; i < count; ++i) {
    if (!IsFinite(samples[i])) return true;
  }
  return false;
}

void Scale(const float* from, float* to, std::size_t count, const SampleScale& scale) {
  const DF d;
  const std::size_t lanes = hn::Lanes(d);
  const VF middle = hn::Set(d, scale.middle);
  const VF factor = hn::Set(d, scale.scale);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    const VF sample = hn::LoadU(d, from + i);
    const auto finite = hn::Eq(hn::Sub(sample, sample), hn::Zero(d));
    hn::StoreU(hn::IfThenElseZero(finite, hn::Mul(hn::Sub(sample, middle), factor)), d, to + i);
  }
  for (; i < count; ++i) to[i] = IsFinite(from[i]) ? (from[i] - scale.middle) * scale.scale : 0.0F;
}

void UnscaleAll(const float* from, float* to, std::size_t count, const SampleScale& scale) {
  const DF d;
  const std::size_t lanes = hn::Lanes(d);
  for (std::size_t i = 0; i < count; i += lanes) {
    StoreSome(d, Unscale(d, hn::LoadU(d, from + i), scale), to + i, count - i, Writing::kCached);
  }
}

/// Four vectors of weighted sums. `tap(k)` points to the samples at offset k. Small weights are added first.
struct FourSums {
  VF sum0, sum1, sum2, sum3;

  template <class Tap>
  HWY_INLINE FourSums(const float* weights, int radius, const Tap& tap) {
    const DF d;
    const std::size_t lanes = hn::Lanes(d);
    sum0 = sum1 = sum2 = sum3 = hn::Zero(d);
    for (std::ptrdiff_t k = radius; k > 0; --k) {
      const VF weight = hn::Set(d, weights[k]);
      const float* before = tap(-k);
      const float* after = tap(k);
      sum0 = hn::Add(sum0, hn::Mul(weight, hn::Add(hn::LoadU(d, before), hn::LoadU(d, after))));
      sum1 = hn::Add(sum1, hn::Mul(weight, hn::Add(hn::LoadU(d, before + lanes), hn::LoadU(d, after + lanes))));
      sum2 = hn::Add(sum2, hn::Mul(weight, hn::Add(hn::LoadU(d, before + 2 * lanes), hn::LoadU(d, after + 2 * lanes))));
      sum3 = hn::Add(sum3, hn::Mul(weight, hn::Add(hn::LoadU(d, before + 3 * lanes), hn::LoadU(d, after + 3 * lanes))));
    }
    const VF weight = hn::Set(d, weights[0]);
    const float* middle = tap(0);
    sum0 = hn::Add(sum0, hn::Mul(weight, hn::LoadU(d, middle)));
    sum1 = hn::Add(sum1, hn::Mul(weight, hn::LoadU(d, middle + lanes)));
    sum2 = hn::Add(sum2, hn::Mul(weight, hn::LoadU(d, middle + 2 * lanes)));
    sum3 = hn::Add(sum3, hn::Mul(weight, hn::LoadU(d, middle + 3 * lanes)));
  }
};

void Along(const float* from, float* to, std::size_t count, std::size_t channels, const float* weights, int radius,
           Writing writing) {
  const DF d;
  const std::size_t lanes = hn::Lanes(d);
  const auto step = static_cast<std::ptrdiff_t>(channels);
  for (std::size_t i = 0; i < count; i += 4 * lanes) {
    const FourSums sums(weights, radius, [&](std::ptrdiff_t k) { return from + i + k * step; });
    StoreSome(d, sums.sum0, to + i, lanes, writing);
    StoreSome(d, sums.sum1, to + i + lanes, lanes, writing);
    StoreSome(d, sums.sum2, to + i + 2 * lanes, lanes, writing);
    StoreSome(d, sums.sum3, to + i + 3 * lanes, lanes, writing);
  }
  // Streamed stores must be visible before another thread is told that the row is done.
  if (writing == Writing::kStreamed) hwy::FlushStream();
}

void Across(const ColumnStrip& strip, const float* weights, int radius, const SampleScale& scale,
            const ColumnTarget& target) {
  const DF d;
  const std::size_t lanes = hn::Lanes(d);
  for (std::size_t y = 0; y < strip.num_rows; ++y) {
    const float* const* rows = strip.rows + y;
    const float* ahead = rows[radius + kRowsAhead] + strip.first;
    float* to = target.to + y * target.stride;
    for (std::size_t i = 0; i < strip.count; i += 4 * lanes) {
      FetchAhead(ahead + i, 4 * lanes);
      const FourSums sums(weights, radius, [&](std::ptrdiff_t k) { return rows[k] + strip.first + i; });
      const VF all[4] = {sums.sum0, sums.sum1, sums.sum2, sums.sum3};
      for (std::size_t j = 0; j < 4; ++j) {
        const std::size_t at = i + j * lanes;
        if (at < strip.count) StoreSome(d, Unscale(d, all[j], scale), to + at, strip.count - at, target.writing);
      }
    }
  }
  if (target.writing == Writing::kStreamed) hwy::FlushStream();
}

/// The terms' responses at the first position and the one before it, for one vector of columns.
HWY_INLINE void StartColumns(const ColumnStrip& strip, std::size_t column, const CosineStart& start, double* state) {
  const DD d;
  const DH half;
  const std::size_t lanes = hn::Lanes(d);
  // One term at a time: the sums of all of them would not fit the registers.
  for (std::size_t p = 0; p < kTerms; ++p) {
    VD now = hn::Zero(d);
    VD before = hn::Zero(d);
    for (std::size_t i = 0; i < start.positions.size(); ++i) {
      const VD sample = hn::PromoteTo(d, hn::LoadU(half, strip.rows[start.positions[i]] + column));
      now = hn::Add(now, hn::Mul(hn::Set(d, start.weights[i][2 * p]), sample));
      before = hn::Add(before, hn::Mul(hn::Set(d, start.weights[i][2 * p + 1]), sample));
    }
    hn::StoreU(now, d, state + 2 * p * lanes);
    hn::StoreU(before, d, state + (2 * p + 1) * lanes);
  }
}

/// Two positions at a time, so that the responses are fetched and put back half as often.
template <bool kScaleBack>
HWY_INLINE void RunColumns(const WindowStrip& strip, const GaussianCosines& cosines, const CosineStart& start,
                           const SampleScale& scale, const ColumnTarget& target, double* all_states) {
  const DD d;
  const DH half;
  const std::size_t lanes = hn::Lanes(d);
  const std::size_t state_size = 2 * kTerms * lanes;
  for (std::size_t i = 0; i < strip.count; i += lanes) {
    StartColumns(strip, strip.first + i, start, all_states + i / lanes * state_size);
  }
  const auto finish = [&](VD total, float* to, std::size_t count) HWY_ATTR {
    const auto sample = hn::DemoteTo(half, total);
    if (kScaleBack) {
      StoreSome(half, Unscale(half, sample, scale), to, count, target.writing);
    } else {
      hn::StoreU(sample, half, to);
    }
  };
  for (std::size_t y = 0; y < strip.num_rows; y += 2) {
    const float* const* before_rows = strip.before + y;
    const float* const* after_rows = strip.after + y;
    const float* leaving_after = after_rows[0] + strip.first;
    const float* entering_after = after_rows[1] + strip.first;
    const float* next_after = after_rows[2] + strip.first;
    const float* entering_before = before_rows[-1] + strip.first;
    const float* leaving_before = before_rows[0] + strip.first;
    const float* next_before = before_rows[1] + strip.first;
    // The pass along rows has its few columns in the caches already.
    for (int i = 0; kScaleBack && i < 2; ++i) {
      FetchAhead(after_rows[kRowsAhead - 1 + i] + strip.first, strip.count);
      FetchAhead(before_rows[kRowsAhead - 1 + i] + strip.first, strip.count);
    }
    float* to = target.to + y * target.stride;
    const bool two = y + 1 < strip.num_rows;
    double* state = all_states;
    for (std::size_t i = 0; i < strip.count; i += lanes, state += state_size) {
      const VD middle_before = hn::PromoteTo(d, hn::LoadU(half, leaving_before + i));
      const VD middle_after = hn::PromoteTo(d, hn::LoadU(half, entering_after + i));
      const VD leaving0 = hn::Add(hn::PromoteTo(d, hn::LoadU(half, leaving_after + i)), middle_before);
      const VD entering0 = hn::Add(middle_after, hn::PromoteTo(d, hn::LoadU(half, entering_before + i)));
      const VD leaving1 = hn::Add(middle_after, hn::PromoteTo(d, hn::LoadU(half, next_before + i)));
      const VD entering1 = hn::Add(hn::PromoteTo(d, hn::LoadU(half, next_after + i)), middle_before);
      VD total0 = hn::Zero(d);
      VD total1 = hn::Zero(d);
      for (std::size_t p = 0; p < kTerms; ++p) {
        const VD turn = hn::Set(d, cosines.turn[p]);
        const VD entering = hn::Set(d, cosines.entering[p]);
        const VD leaving = hn::Set(d, cosines.leaving[p]);
        const VD now = hn::LoadU(d, state + 2 * p * lanes);
        const VD before = hn::LoadU(d, state + (2 * p + 1) * lanes);
        const VD drive0 = hn::Sub(hn::Sub(hn::Mul(entering, entering0), hn::Mul(leaving, leaving0)), before);
        const VD next = hn::Add(hn::Mul(turn, now), drive0);
        const VD drive1 = hn::Sub(hn::Sub(hn::Mul(entering, entering1), hn::Mul(leaving, leaving1)), now);
        const VD after_next = hn::Add(hn::Mul(turn, next), drive1);
        total0 = hn::Add(total0, now);
        total1 = hn::Add(total1, next);
        hn::StoreU(after_next, d, state + 2 * p * lanes);
        hn::StoreU(next, d, state + (2 * p + 1) * lanes);
      }
      finish(total0, to + i, strip.count - i);
      if (two) finish(total1, to + target.stride + i, strip.count - i);
    }
  }
  if (target.writing == Writing::kStreamed) hwy::FlushStream();
}

void Recurse(const WindowStrip& strip, const GaussianCosines& cosines, const CosineStart& start,
             const SampleScale* scale, const ColumnTarget& target, double* state) {
  if (scale != nullptr) {
    RunColumns<true>(strip, cosines, start, *scale, target, state);
  } else {
    RunColumns<false>(strip, cosines, start, SampleScale(), target, state);
  }
}

/// Four by four samples at a time where pixels are single samples.
void TransposeAll(const float* from, std::size_t from_stride, float* to, std::size_t to_stride, std::size_t rows,
                  std::size_t columns, std::size_t channels) {
  std::size_t y = 0;
#if HWY_TARGET != HWY_SCALAR
  if (channels == 1) {
    const hn::FixedTag<float, 4> d;
    for (; y + 4 <= rows; y += 4) {
      const float* row0 = from + y * from_stride;
      const float* row1 = row0 + from_stride;
      const float* row2 = row1 + from_stride;
      const float* row3 = row2 + from_stride;
      std::size_t x = 0;
      for (; x + 4 <= columns; x += 4) {
        const auto a = hn::LoadU(d, row0 + x);
        const auto b = hn::LoadU(d, row1 + x);
        const auto c = hn::LoadU(d, row2 + x);
        const auto e = hn::LoadU(d, row3 + x);
        const auto ab_low = hn::InterleaveLower(d, a, b);
        const auto ab_high = hn::InterleaveUpper(d, a, b);
        const auto ce_low = hn::InterleaveLower(d, c, e);
        const auto ce_high = hn::InterleaveUpper(d, c, e);
        float* column = to + x * to_stride + y;
        hn::StoreU(hn::ConcatLowerLower(d, ce_low, ab_low), d, column);
        hn::StoreU(hn::ConcatUpperUpper(d, ce_low, ab_low), d, column + to_stride);
        hn::StoreU(hn::ConcatLowerLower(d, ce_high, ab_high), d, column + 2 * to_stride);
        hn::StoreU(hn::ConcatUpperUpper(d, ce_high, ab_high), d, column + 3 * to_stride);
      }
      for (; x < columns; ++x) {
        float* column = to + x * to_stride + y;
        column[0] = row0[x];
        column[1] = row1[x];
        column[2] = row2[x];
        column[3] = row3[x];
      }
    }
  }
#endif
  for (; y < rows; ++y) {
    const float* row = from + y * from_stride;
    for (std::size_t x = 0; x < columns; ++x) {
      float* column = to + x * to_stride + y * channels;
      for (std::size_t c = 0; c < channels; ++c) column[c] = row[x * channels + c];
    }
  }
}

}  // namespace ScEng::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ScEng {

HWY_EXPORT(FindNonFinite);
HWY_EXPORT(Scale);
HWY_EXPORT(UnscaleAll);
HWY_EXPORT(Along);
HWY_EXPORT(Across);
HWY_EXPORT(Recurse);
HWY_EXPORT(TransposeAll);

SampleScale SampleScale::For(const SampleRange& range) {
  SampleScale scale;
  if (range.IsEmpty()) return scale;
  scale.low = range.low;
  scale.high = range.high;
  scale.middle = range.low;
  if (range.low == range.high) return scale;
  scale.middle = 0.5F * range.low + 0.5F * range.high;
  const double span = static_cast<double>(range.high) - static_cast<double>(range.low);
  // Both powers of two stay normal floats.
  const int exponent = std::clamp(-std::ilogb(span), -126, 126);
  scale.scale = std::ldexp(1.0F, exponent);
  scale.unscale = std::ldexp(1.0F, -exponent);
  return scale;
}

bool HasNonFinite(const float* samples, std::size_t count) {
  return HWY_DYNAMIC_DISPATCH(FindNonFinite)(samples, count);
}

void ScaleSamples(const float* from, float* to, std::size_t count, const SampleScale& scale) {
  HWY_DYNAMIC_DISPATCH(Scale)(from, to, count, scale);
}

void UnscaleSamples(const float* from, float* to, std::size_t count, const SampleScale& scale) {
  HWY_DYNAMIC_DISPATCH(UnscaleAll)(from, to, count, scale);
}

void ConvolveAlong(const float* from, float* to, std::size_t count, std::size_t channels, const float* weights,
                   int radius, Writing writing) {
  HWY_DYNAMIC_DISPATCH(Along)(from, to, count, channels, weights, radius, writing);
}

void ConvolveAcross(const ColumnStrip& strip, const float* weights, int radius, const SampleScale& scale,
                    const ColumnTarget& target) {
  HWY_DYNAMIC_DISPATCH(Across)(strip, weights, radius, scale, target);
}

void FilterAcross(const WindowStrip& strip, const GaussianCosines& cosines, const CosineStart& start,
                  const SampleScale* scale, const ColumnTarget& target, double* state) {
  HWY_DYNAMIC_DISPATCH(Recurse)(strip, cosines, start, scale, target, state);
}

void Transpose(const float* from, std::size_t from_stride, float* to, std::size_t to_stride, std::size_t rows,
               std::size_t columns, std::size_t channels) {
  HWY_DYNAMIC_DISPATCH(TransposeAll)(from, from_stride, to, to_stride, rows, columns, channels);
}

}  // namespace ScEng
#endif
