// SPDX-License-Identifier: Apache-2.0
//
// The float nearest to a function's true value, by MPFR.
#pragma once

#include <mpfr.h>

#include <bit>
#include <cmath>
#include <cstdint>

namespace Proofs {

using MpfrFunction = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
using MpfrFunctionOfTwo = int (*)(mpfr_ptr, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);

/// Enough that no float's result lies so near to the middle between two floats, unless exactly on it.
inline constexpr mpfr_prec_t kBits = 300;

inline bool AreSame(float first, float second) {
  if (std::isnan(first) || std::isnan(second)) return std::isnan(first) && std::isnan(second);
  return std::bit_cast<std::uint32_t>(first) == std::bit_cast<std::uint32_t>(second);
}

/// A number of MPFR that frees itself.
class Number {
 public:
  explicit Number(mpfr_prec_t bits) { mpfr_init2(value_, bits); }
  ~Number() { mpfr_clear(value_); }
  Number(const Number&) = delete;
  Number& operator=(const Number&) = delete;
  mpfr_ptr Get() { return value_; }

 private:
  mpfr_t value_;
};

/// The base 2 logarithm of how far a finite result other than 0 is from the nearest middle between two floats, relative
/// to it; minus infinity on the middle.
inline double GetDistanceFromMiddle(mpfr_srcptr result, float nearest) {
  Number distance(kBits);
  Number step(kBits);
  Number rest(kBits);
  const float other =
      std::nextafterf(nearest, mpfr_cmp_d(result, static_cast<double>(nearest)) < 0 ? -HUGE_VALF : HUGE_VALF);
  mpfr_set_d(step.Get(), static_cast<double>(nearest), MPFR_RNDN);
  mpfr_add_d(step.Get(), step.Get(), static_cast<double>(other), MPFR_RNDN);
  mpfr_div_ui(step.Get(), step.Get(), 2, MPFR_RNDN);
  mpfr_sub(rest.Get(), result, step.Get(), MPFR_RNDN);
  mpfr_div(distance.Get(), rest.Get(), result, MPFR_RNDN);
  mpfr_abs(distance.Get(), distance.Get(), MPFR_RNDN);
  mpfr_log2(distance.Get(), distance.Get(), MPFR_RNDN);
  return mpfr_get_d(distance.Get(), MPFR_RNDN);
}

/// Where a function lies nearest to the middle between two floats, of the arguments asked for.
struct Hardest {
  double distance = 0.0;
  float argument = 0.0F;
  float result = 0.0F;
};

inline float GetTrueValue(MpfrFunction function, float value, Hardest* hardest = nullptr) {
  Number argument(24);
  Number result(kBits);
  mpfr_set_flt(argument.Get(), value, MPFR_RNDN);
  function(result.Get(), argument.Get(), MPFR_RNDN);
  const float nearest = mpfr_get_flt(result.Get(), MPFR_RNDN);
  if (hardest != nullptr && std::isfinite(nearest) && nearest != 0.0F) {
    const double distance = GetDistanceFromMiddle(result.Get(), nearest);
    if (distance < hardest->distance) *hardest = {distance, value, nearest};
  }
  return nearest;
}

inline float GetTrueValue(MpfrFunctionOfTwo function, float first, float second) {
  Number a(24);
  Number b(24);
  Number result(kBits);
  mpfr_set_flt(a.Get(), first, MPFR_RNDN);
  mpfr_set_flt(b.Get(), second, MPFR_RNDN);
  function(result.Get(), a.Get(), b.Get(), MPFR_RNDN);
  return mpfr_get_flt(result.Get(), MPFR_RNDN);
}

/// Whether a double that is right to 45 bits tells the nearest float.
inline bool IsSure(double value) {
  return AreSame(static_cast<float>(value * (1.0 - 0x1p-45)), static_cast<float>(value * (1.0 + 0x1p-45)));
}

}  // namespace Proofs
