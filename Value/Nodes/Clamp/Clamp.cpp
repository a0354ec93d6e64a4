// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Clamp/Clamp.h"

#include "Host/Image/Streaming.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Nodes/Clamp/Clamp.cpp"
#include <hwy/foreach_target.h>

#include "Value/Core/PixelLoops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Clamp::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
namespace loops = PixelLoops::HWY_NAMESPACE;

using loops::D;
using loops::V;

// The curves over t, a limited value's place between the limits. The order of the operations is part of the result.

struct Smooth {
  static HWY_INLINE V Rise(V t) {
    const D d;
    return hn::Mul(hn::Sub(hn::Set(d, 3.0F), hn::Mul(hn::Set(d, 2.0F), t)), hn::Mul(t, t));
  }
};

struct Perlin {
  static HWY_INLINE V Rise(V t) {
    const D d;
    const V fifth = hn::Mul(hn::Mul(hn::Mul(hn::Mul(hn::Mul(t, hn::Set(d, 6.0F)), t), t), t), t);
    const V fourth = hn::Mul(hn::Mul(hn::Mul(hn::Mul(t, hn::Set(d, 15.0F)), t), t), t);
    const V third = hn::Mul(hn::Mul(hn::Mul(t, hn::Set(d, 10.0F)), t), t);
    return hn::Add(hn::Sub(fifth, fourth), third);
  }
};

// The square root of a float in single precision is the one in double precision, narrowed: the double has more than
// twice the digits, so rounding twice changes nothing.

struct ArcOut {
  static HWY_INLINE V Rise(V t) {
    const V one = hn::Set(D(), 1.0F);
    const V left = hn::Sub(t, one);
    return hn::Sqrt(hn::Sub(one, hn::Mul(left, left)));
  }
};

struct ArcIn {
  static HWY_INLINE V Rise(V t) {
    const V one = hn::Set(D(), 1.0F);
    return hn::Sub(one, hn::Sqrt(hn::Sub(one, hn::Mul(t, t))));
  }
};

HWY_INLINE V Limit(V v, const Limits& limits) {
  const D d;
  const V low = hn::Set(d, limits.low);
  const V high = hn::Set(d, limits.high);
  const V raised = hn::IfThenElse(hn::Lt(low, v), v, low);
  return hn::IfThenElse(hn::Lt(raised, high), raised, high);
}

struct Linear {
  Limits limits;
  HWY_INLINE V operator()(V v) const { return Limit(v, limits); }
};

template <class Curve>
struct Shaped {
  Limits limits;
  HWY_INLINE V operator()(V v) const {
    const D d;
    const float range = limits.high - limits.low;
    const V low = hn::Set(d, limits.low);
    const V t = hn::Mul(hn::Sub(Limit(v, limits), low), hn::Set(d, 1.0F / range));
    return hn::Add(low, hn::Mul(Curve::Rise(t), hn::Set(d, range)));
  }
};

template <class Pixel, class Op>
void Run(const float* samples, float* values, std::size_t pixels, Op op) {
  loops::Transform<Pixel>(samples, values, pixels, ScEng::IsStreamed(pixels), op);
}

template <class Pixel>
void ApplyTo(const float* samples, float* values, std::size_t pixels, const Limits& limits, Profile profile) {
  switch (profile) {
    case Profile::kLinear: Run<Pixel>(samples, values, pixels, Linear{limits}); break;
    case Profile::kSmooth: Run<Pixel>(samples, values, pixels, Shaped<Smooth>{limits}); break;
    case Profile::kPerlin: Run<Pixel>(samples, values, pixels, Shaped<Perlin>{limits}); break;
    case Profile::kArcOut: Run<Pixel>(samples, values, pixels, Shaped<ArcOut>{limits}); break;
    case Profile::kArcIn: Run<Pixel>(samples, values, pixels, Shaped<ArcIn>{limits}); break;
  }
}

void ApplyToAny(const float* samples, std::size_t stride, float* values, std::size_t pixels, const Limits& limits,
                Profile profile) {
  switch (stride) {
    case 1: ApplyTo<loops::OnlyChannel>(samples, values, pixels, limits, profile); break;
    case 2: ApplyTo<loops::FirstOfTwo>(samples, values, pixels, limits, profile); break;
    default: ApplyTo<loops::OneOfFour<0>>(samples, values, pixels, limits, profile); break;
  }
}

ValueRange MeasureAny(const float* samples, std::size_t stride, std::size_t pixels) {
  switch (stride) {
    case 1: return loops::Measure<loops::OnlyChannel>(samples, pixels);
    case 2: return loops::Measure<loops::FirstOfTwo>(samples, pixels);
    default: return loops::Measure<loops::OneOfFour<0>>(samples, pixels);
  }
}

}  // namespace Clamp::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Clamp {

HWY_EXPORT(ApplyToAny);
HWY_EXPORT(MeasureAny);

Sides GetSides(int index) {
  switch (index) {
    case 1: return Sides::kLow;
    case 2: return Sides::kHigh;
    default: return Sides::kBoth;
  }
}

Profile GetProfile(int index) {
  const bool is_listed = index >= 0 && index <= static_cast<int>(Profile::kArcIn);
  return is_listed ? static_cast<Profile>(index) : Profile::kLinear;
}

Limits OpenSide(const Limits& limits, Sides sides, const float* samples, std::size_t stride, std::size_t pixels) {
  if (sides == Sides::kBoth) return limits;
  ValueRange found;
  PixelLoops::ForEachPiece(pixels, [&](std::size_t from, std::size_t count) {
    found.Join(HWY_DYNAMIC_DISPATCH(MeasureAny)(samples + from * stride, stride, count));
  });
  return sides == Sides::kLow ? Limits{limits.low, found.high} : Limits{found.low, limits.high};
}

void Apply(const float* samples, std::size_t stride, float* values, std::size_t pixels, const Limits& limits,
           Profile profile) {
  PixelLoops::ForEachPiece(pixels, [&](std::size_t from, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(ApplyToAny)(samples + from * stride, stride, values + from, count, limits, profile);
  });
}

}  // namespace Clamp
#endif
