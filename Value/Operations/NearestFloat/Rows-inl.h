// SPDX-License-Identifier: Apache-2.0
//
// Makes floats of results in double: the test whether a double tells the nearest float, and the loops over rows.
//
// Included once per instruction set, as Kernels-inl.h is.

#if defined(VALUE_OPERATIONS_NEAREST_FLOAT_ROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_OPERATIONS_NEAREST_FLOAT_ROWS_INL_H_
#undef VALUE_OPERATIONS_NEAREST_FLOAT_ROWS_INL_H_
#else
#define VALUE_OPERATIONS_NEAREST_FLOAT_ROWS_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

#include "Host/Image/RowPass-inl.h"
#include "Host/Image/ValueOperation.h"

HWY_BEFORE_NAMESPACE();
namespace NearestFloat::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// The floats nearest to doubles, infinite where they are too large.
template <class D>
HWY_INLINE hn::Vec<hn::Rebind<float, D>> Narrow(D d, hn::Vec<D> value) {
  const hn::Rebind<float, D> df;
#if HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
  // There too large ones become the largest float.
  double from[hn::MaxLanes(d)];
  float to[hn::MaxLanes(d)];
  hn::StoreU(value, d, from);
  for (std::size_t i = 0; i < hn::Lanes(d); ++i) to[i] = static_cast<float>(from[i]);
  return hn::LoadU(df, to);
#else
  static_cast<void>(d);
  return hn::DemoteTo(df, value);
#endif
}

/// What a result in double may be wrong by, relative to it, with room. Where the floats nearest to both ends differ,
/// the double does not tell which one is right.
inline constexpr double kMargin = 0x1p-43;

/// The bits of a double below those of a float, and as many of its last bits as the margin comes to at most.
inline constexpr std::uint64_t kDroppedBits = (std::uint64_t{1} << 29) - 1;
inline constexpr std::uint64_t kMiddle = std::uint64_t{1} << 28;
inline constexpr std::uint64_t kMarginBits = std::uint64_t{1} << 10;

/// Whether every double is further than the margin from the middle between two floats, so that its nearest float is
/// that of the true value. Of numbers whose float would be subnormal this says something only where they are floats.
template <class D>
HWY_INLINE bool AreFarFromMiddles(D, hn::Vec<D> results) {
  const hn::RebindToUnsigned<D> du;
  const auto beyond = hn::Sub(hn::BitCast(du, results), hn::Set(du, kMiddle - kMarginBits));
  const auto upper = hn::And(beyond, hn::Set(du, kDroppedBits & ~(2 * kMarginBits - 1)));
  return hn::AllFalse(du, hn::Eq(upper, hn::Zero(du)));
}

/// Sets `to[i]` to the float nearest to `results[i]`; `slow_way(i, estimate)` is called instead where the floats
/// nearest to both ends of the margin around it differ.
template <class D, class SlowWay>
HWY_INLINE void StoreEach(D d, hn::Vec<D> results, double margin, float* HWY_RESTRICT to, SlowWay slow_way) {
  double values[hn::MaxLanes(d)];
  hn::StoreU(results, d, values);
  for (std::size_t i = 0; i < hn::Lanes(d); ++i) {
    const auto low = static_cast<float>(values[i] * (1.0 - margin));
    const auto high = static_cast<float>(values[i] * (1.0 + margin));
    to[i] = low < high || low > high ? slow_way(i, values[i]) : static_cast<float>(values[i]);
  }
}

/// Sets `to[i]` to the float nearest to the function whose result in double is `results[i]`, right to `margin` relative
/// to it. `slow_way(i, estimate)` is called where the double does not tell.
template <class D, class SlowWay>
HWY_INLINE void StoreNearest(D d, hn::Vec<D> results, double margin, float* HWY_RESTRICT to, SlowWay slow_way) {
  const hn::Rebind<float, D> df;
  const hn::RebindToUnsigned<decltype(df)> du;
  const auto inner = Narrow(d, hn::Mul(results, hn::Set(d, 1.0 - margin)));
  const auto outer = Narrow(d, hn::Mul(results, hn::Set(d, 1.0 + margin)));
  hn::StoreU(inner, df, to);
  // Bits are compared, so that a NaN is as sure as any number.
  if (HWY_LIKELY(hn::AllTrue(du, hn::Eq(hn::BitCast(du, inner), hn::BitCast(du, outer))))) return;
  StoreEach(d, results, margin, to, slow_way);
}

/// The same with `kMargin`, faster, for functions whose results are no subnormal floats, but where they are floats.
template <class D, class SlowWay>
HWY_INLINE void StoreNearestNormal(D d, hn::Vec<D> results, float* HWY_RESTRICT to, SlowWay slow_way) {
  hn::StoreU(Narrow(d, results), hn::Rebind<float, D>(), to);
  if (HWY_LIKELY(AreFarFromMiddles(d, results))) return;
  StoreEach(d, results, kMargin, to, slow_way);
}

/// What the slow way came to last: an image may hold one hard value everywhere.
struct LastSlowWay {
  float first = 0.0F;
  float second = 0.0F;
  float result = 0.0F;
  bool is_set = false;

  template <class SlowWay>
  float Get(float one, float other, SlowWay slow_way) {
    if (!is_set || one != first || other != second) *this = {one, other, slow_way(), true};
    return result;
  }
};

/// Sets `to[i]` to the float nearest to the function of `values[i]`, for as many floats as `D` has doubles.
template <class Kernel, class D>
HWY_INLINE void ComputeVector(D d, const float* HWY_RESTRICT values, float* HWY_RESTRICT to, LastSlowWay& last) {
  const hn::Rebind<float, D> df;
  const auto results = Kernel::Compute(d, hn::PromoteTo(d, hn::LoadU(df, values)));
  const auto slow_way = [values, &last](std::size_t i, double estimate) {
    return last.Get(values[i], 0.0F, [=] { return Kernel::kSlowWay(values[i], estimate); });
  };
  if constexpr (Kernel::kHasSubnormals) {
    StoreNearest(d, results, kMargin, to, slow_way);
  } else {
    StoreNearestNormal(d, results, to, slow_way);
  }
}

template <class Kernel>
HWY_NOINLINE void ComputeRow(const float* HWY_RESTRICT values, float* HWY_RESTRICT to, std::size_t count) {
  const hn::ScalableTag<double> d;
  const std::size_t lanes = hn::Lanes(d);
  LastSlowWay last;
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) ComputeVector<Kernel>(d, values + i, to + i, last);
  if (i == count) return;
  float rest[hn::MaxLanes(d)] = {};
  float results[hn::MaxLanes(d)];
  for (std::size_t k = i; k < count; ++k) rest[k - i] = values[k];
  ComputeVector<Kernel>(d, rest, results, last);
  for (std::size_t k = i; k < count; ++k) to[k] = results[k - i];
}

/// The row in one pass with what the host's evaluator does besides.
template <class Kernel>
ScEng::RowRanges ComputePass(const ScEng::RowPass& row) {
  LastSlowWay last;
  const auto vector = [&last](const float* HWY_RESTRICT values, const float*, float* HWY_RESTRICT to, std::size_t count)
                          HWY_ATTR {
                            const hn::ScalableTag<double> d;
                            for (std::size_t i = 0; i < count; i += hn::Lanes(d))
                              ComputeVector<Kernel>(d, values + i, to + i, last);
                          };
  const auto few = [](const float* values, const float*, float* to, std::size_t count)
                       HWY_ATTR { ComputeRow<Kernel>(values, to, count); };
  constexpr std::size_t kVectors = 1;
  return ScEng::HWY_NAMESPACE::RunOneValuePass<kVectors>(row, vector, few);
}

/// The float nearest to the function of one value, without a loop.
template <class Kernel>
float ComputeValue(float value) {
  const hn::CappedTag<double, 1> d;
  LastSlowWay last;
  float result = 0.0F;
  ComputeVector<Kernel>(d, &value, &result, last);
  return result;
}

}  // namespace NearestFloat::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // once per instruction set
