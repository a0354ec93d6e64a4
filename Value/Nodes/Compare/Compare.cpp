// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Compare/Compare.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <type_traits>

#include "Host/Image/Streaming.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Nodes/Compare/Compare.cpp"
#include <hwy/foreach_target.h>

#include "Value/Core/PixelLoops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Compare::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
namespace loops = PixelLoops::HWY_NAMESPACE;

using loops::D;
using loops::V;
using M = hn::Mask<D>;

// The four relations that are left when "a > b" is taken as "b < a".

struct Less {
  static HWY_INLINE M Holds(V a, V b) { return hn::Lt(a, b); }
};
struct LessEqual {
  static HWY_INLINE M Holds(V a, V b) { return hn::Le(a, b); }
};
struct Equal {
  static HWY_INLINE M Holds(V a, V b) { return hn::Eq(a, b); }
};
struct Different {
  // Not `Ne`, which some instruction sets answer with false for a NaN.
  static HWY_INLINE M Holds(V a, V b) { return hn::Not(hn::Eq(a, b)); }
};

/// `values` truncated toward zero where that fits into 32 bits, else -2147483648, as floats.
HWY_INLINE V Truncate(V values) {
  const D d;
  const V bound = hn::Set(d, 2147483648.0F);
  const M fits = hn::And(hn::Ge(values, hn::Neg(bound)), hn::Lt(values, bound));
  return hn::IfThenElse(fits, hn::Trunc(values), hn::Neg(bound));
}

/// Steps of 10^n with n >= 0.
struct Coarse {
  float power;
  HWY_INLINE V Round(V v) const {
    const D d;
    return hn::Mul(Truncate(hn::Add(hn::Div(v, hn::Set(d, power)), hn::Set(d, 0.5F))), hn::Set(d, power));
  }
};

/// Steps of 10^-n.
struct Fine {
  float power;
  HWY_INLINE V Round(V v) const {
    const D d;
    return hn::Div(Truncate(hn::Add(hn::Mul(hn::Set(d, power), v), hn::Set(d, 0.5F))), hn::Set(d, power));
  }
};

// What is compared at a position: the rounded samples of a row, or the value outside an image, which is not rounded.

template <class Steps>
struct RowOperand {
  const float* samples;
  Steps steps;
  HWY_INLINE V Load(std::size_t i) const { return steps.Round(hn::LoadU(D(), samples + i)); }
  /// The `count` samples from `i` on, with the last one repeated to fill a vector.
  HWY_INLINE V LoadRest(std::size_t i, std::size_t count) const {
    const D d;
    HWY_ALIGN float rest[hn::MaxLanes(D())];
    std::fill(std::copy_n(samples + i, count, rest), rest + hn::Lanes(d), samples[i + count - 1]);
    return steps.Round(hn::Load(d, rest));
  }
};

struct OutsideOperand {
  float value;
  HWY_INLINE V Load(std::size_t) const { return hn::Set(D(), value); }
  HWY_INLINE V LoadRest(std::size_t, std::size_t) const { return hn::Set(D(), value); }
};

HWY_INLINE V OneWhere(M holds) { return hn::IfThenElseZero(holds, hn::Set(D(), 1.0F)); }

template <class Relation, class A, class B>
void CompareRow(const A& a, const B& b, float* HWY_RESTRICT to, std::size_t count, bool streamed) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t i = 0;
  if (streamed) {
    for (; i + lanes <= count; i += lanes) hn::Stream(OneWhere(Relation::Holds(a.Load(i), b.Load(i))), d, to + i);
    hwy::FlushStream();
  } else {
    for (; i + lanes <= count; i += lanes) hn::StoreU(OneWhere(Relation::Holds(a.Load(i), b.Load(i))), d, to + i);
  }
  if (i == count) return;
  HWY_ALIGN float results[hn::MaxLanes(D())];
  hn::Store(OneWhere(Relation::Holds(a.LoadRest(i, count - i), b.LoadRest(i, count - i))), d, results);
  std::copy_n(results, count - i, to + i);
}

template <class Steps, class Relation>
void CompareSpan(const Span& a, const Span& b, const Steps& steps, float* to, std::size_t count, bool streamed) {
  using Row = RowOperand<Steps>;
  if (a.samples != nullptr && b.samples != nullptr) {
    CompareRow<Relation>(Row{a.samples, steps}, Row{b.samples, steps}, to, count, streamed);
  } else if (a.samples != nullptr) {
    CompareRow<Relation>(Row{a.samples, steps}, OutsideOperand{b.outside}, to, count, streamed);
  } else if (b.samples != nullptr) {
    CompareRow<Relation>(OutsideOperand{a.outside}, Row{b.samples, steps}, to, count, streamed);
  } else {
    CompareRow<Relation>(OutsideOperand{a.outside}, OutsideOperand{b.outside}, to, count, streamed);
  }
}

/// One vector of pixels of four channels: "different" needs one channel, every other relation all of them.
template <class Steps, class Relation>
HWY_INLINE V CompareColors(const float* HWY_RESTRICT a, const float* HWY_RESTRICT b, const Steps& steps) {
  const D d;
  V a0;
  V a1;
  V a2;
  V a3;
  V b0;
  V b1;
  V b2;
  V b3;
  hn::LoadInterleaved4(d, a, a0, a1, a2, a3);
  hn::LoadInterleaved4(d, b, b0, b1, b2, b3);
  const M m0 = Relation::Holds(steps.Round(a0), steps.Round(b0));
  const M m1 = Relation::Holds(steps.Round(a1), steps.Round(b1));
  const M m2 = Relation::Holds(steps.Round(a2), steps.Round(b2));
  const M m3 = Relation::Holds(steps.Round(a3), steps.Round(b3));
  if constexpr (std::is_same_v<Relation, Different>) return OneWhere(hn::Or(hn::Or(m0, m1), hn::Or(m2, m3)));
  return OneWhere(hn::And(hn::And(m0, m1), hn::And(m2, m3)));
}

template <class Steps, class Relation>
void CompareColorSpan(const Span& a, const Span& b, const Steps& steps, float* to, std::size_t count, bool streamed) {
  const D d;
  if (a.samples == nullptr || b.samples == nullptr) {
    std::fill_n(to, count, 0.0F);
    return;
  }
  const std::size_t lanes = hn::Lanes(d);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    const V holds = CompareColors<Steps, Relation>(a.samples + 4 * i, b.samples + 4 * i, steps);
    if (streamed) {
      hn::Stream(holds, d, to + i);
    } else {
      hn::StoreU(holds, d, to + i);
    }
  }
  if (streamed) hwy::FlushStream();
  if (i == count) return;
  HWY_ALIGN float rest_a[loops::kMostSamples] = {};
  HWY_ALIGN float rest_b[loops::kMostSamples] = {};
  HWY_ALIGN float results[hn::MaxLanes(D())];
  std::copy(a.samples + 4 * i, a.samples + 4 * count, rest_a);
  std::copy(b.samples + 4 * i, b.samples + 4 * count, rest_b);
  hn::Store(CompareColors<Steps, Relation>(rest_a, rest_b, steps), d, results);
  std::copy_n(results, count - i, to + i);
}

template <class Steps>
void CompareWith(const Span& a, const Span& b, const Steps& steps, int channels, Relation relation, float* to,
                 std::size_t count, bool streamed) {
  const auto run = [&]<class Holds>(const Span& left, const Span& right, Holds) HWY_ATTR {
    if (channels == 1) {
      CompareSpan<Steps, Holds>(left, right, steps, to, count, streamed);
    } else {
      CompareColorSpan<Steps, Holds>(left, right, steps, to, count, streamed);
    }
  };
  switch (relation) {
    case Relation::kLess: run(a, b, Less()); break;
    case Relation::kLessEqual: run(a, b, LessEqual()); break;
    case Relation::kEqual: run(a, b, Equal()); break;
    case Relation::kDifferent: run(a, b, Different()); break;
    case Relation::kGreaterEqual: run(b, a, LessEqual()); break;
    case Relation::kGreater: run(b, a, Less()); break;
  }
}

void CompareAny(const Span& a, const Span& b, const Rounding& rounding, int channels, Relation relation, float* to,
                std::size_t count, bool streamed) {
  if (rounding.GetExponent() < 0) {
    CompareWith(a, b, Fine{rounding.GetPower()}, channels, relation, to, count, streamed);
  } else {
    // With a power of 1 neither the quotient nor the product changes anything.
    CompareWith(a, b, Coarse{rounding.GetPower()}, channels, relation, to, count, streamed);
  }
}

}  // namespace Compare::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Compare {
namespace {

HWY_EXPORT(CompareAny);

/// 10 to the power n by n multiplications in 32-bit arithmetic that wraps.
std::int32_t WrappingPowerOfTen(int n) {
  std::uint32_t power = 1;
  for (int i = 0; i < n; ++i) power *= 10;
  return static_cast<std::int32_t>(power);
}

/// The samples of an image from a document position on; none outside its box.
Span FindSpan(const Image& image, const ScEng::Box2I& box, std::int64_t x, std::int64_t y) {
  Span span{nullptr, image.GetOutsideValue()};
  if (x < box.left || x >= box.right || y < box.top || y >= box.bottom) return span;
  span.samples = image.GetConstArray() + ((y - box.top) * image.GetSizeX() + (x - box.left)) * image.GetNumChannels();
  return span;
}

}  // namespace

std::int32_t TruncateToInt32(float value) {
  constexpr float kBound = 2147483648.0F;
  if (!(value >= -kBound && value < kBound)) return INT32_MIN;
  return static_cast<std::int32_t>(value);
}

Rounding::Rounding(int precision_index)
    : exponent_(precision_index - 9), power_(static_cast<float>(WrappingPowerOfTen(std::abs(exponent_)))) {}

float Rounding::Round(float value) const {
  if (exponent_ > 0) return static_cast<float>(TruncateToInt32(value / power_ + 0.5F)) * power_;
  if (exponent_ < 0) return static_cast<float>(TruncateToInt32(power_ * value + 0.5F)) / power_;
  return static_cast<float>(TruncateToInt32(value + 0.5F));
}

void Apply(const Image& a, const Image& b, const Rounding& rounding, Relation relation, const ScEng::Box2I& box,
           float* results) {
  const int channels = a.GetNumChannels();
  const auto width = static_cast<std::size_t>(box.Width());
  const auto height = static_cast<std::size_t>(box.Height());
  if (channels != 1 && channels != 4) {
    std::fill_n(results, width * height, 0.0F);
    return;
  }
  const ScEng::Box2I box_a = a.GetBox();
  const ScEng::Box2I box_b = b.GetBox();
  if (box_a == box_b) {
    // Both are dense runs of the same positions: no row ends to stop at.
    const bool streamed = ScEng::IsStreamed(width * height);
    PixelLoops::ForEachPiece(width * height, [&](std::size_t from, std::size_t count) {
      const std::size_t sample = from * static_cast<std::size_t>(channels);
      const Span span_a{a.GetConstArray() + sample, a.GetOutsideValue()};
      const Span span_b{b.GetConstArray() + sample, b.GetOutsideValue()};
      HWY_DYNAMIC_DISPATCH(CompareAny)
      (span_a, span_b, rounding, channels, relation, results + from, count, streamed);
    });
    return;
  }
  // Between these columns it does not change which of the images is there.
  std::array<std::int64_t, 4> edges{box_a.left, box_a.right, box_b.left, box_b.right};
  std::sort(edges.begin(), edges.end());
  for (std::int64_t y = box.top; y < box.bottom; ++y) {
    ScEng::PollCancellation();
    for (std::size_t edge = 0; edge + 1 < edges.size(); ++edge) {
      const std::int64_t x = edges[edge];
      const auto count = static_cast<std::size_t>(edges[edge + 1] - x);
      if (count == 0) continue;
      HWY_DYNAMIC_DISPATCH(CompareAny)
      (FindSpan(a, box_a, x, y), FindSpan(b, box_b, x, y), rounding, channels, relation, results, count, false);
      results += count;
    }
  }
}

}  // namespace Compare
#endif
