// SPDX-License-Identifier: Apache-2.0
#include "Value/Operations/NearestFloat/NearestFloat.h"

#include <algorithm>
#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Operations/NearestFloat/NearestFloat.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Value/Operations/NearestFloat/Kernels-inl.h"
#include "Value/Operations/NearestFloat/PowerKernel-inl.h"
#include "Value/Operations/NearestFloat/Rows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace NearestFloat::HWY_NAMESPACE {

// One row, one pass and one value of each function.
#define FUNCTION(Name)                                                                                       \
  void Name##Row(const float* values, float* to, std::size_t count) { ComputeRow<Name>(values, to, count); } \
  ScEng::RowRanges Name##Pass(const ScEng::RowPass& row) { return ComputePass<Name>(row); }                  \
  float Name##Value(float value) { return ComputeValue<Name>(value); }

FUNCTION(Sine)
FUNCTION(Cosine)
FUNCTION(Tangent)
FUNCTION(ArcSine)
FUNCTION(ArcCosine)
FUNCTION(ArcTangent)
FUNCTION(Log)
FUNCTION(Exponential)
FUNCTION(CubicRoot)

#undef FUNCTION

void PowerRow(const float* bases, const float* exponents, float* to, std::size_t count) {
  ComputePowers(bases, ExponentRow(exponents), to, count);
}

void PowerRowOfOne(const float* HWY_RESTRICT bases, float exponent, float* HWY_RESTRICT to, std::size_t count) {
  // First those that a plain operation gives, and of which every second result may lie half way between two floats.
  if (exponent == 1.0F) {
    std::copy_n(bases, count, to);
  } else if (exponent == 2.0F) {
    for (std::size_t i = 0; i < count; ++i) to[i] = bases[i] * bases[i];
  } else if (exponent == -1.0F) {
    for (std::size_t i = 0; i < count; ++i) to[i] = 1.0F / bases[i];
  } else {
    ComputePowers(bases, OneExponent(exponent), to, count);
  }
}

float PowerValue(float base, float exponent) {
  LastSlowWay last;
  float power = 0.0F;
  ComputePowerVector(hn::CappedTag<double, 1>(), &base, OneExponent(exponent), 0, &power, last);
  return power;
}

}  // namespace NearestFloat::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace NearestFloat {

#define FUNCTION(Name)                                                                                                 \
  HWY_EXPORT(Name##Row);                                                                                               \
  HWY_EXPORT(Name##Pass);                                                                                              \
  ScEng::RowRanges Name(const ScEng::RowPass& row) { return HWY_DYNAMIC_DISPATCH(Name##Pass)(row); }                   \
  void Name(const float* values, float* to, std::size_t count) { HWY_DYNAMIC_DISPATCH(Name##Row)(values, to, count); } \
  float Name(float value) { return HWY_STATIC_DISPATCH(Name##Value)(value); }

FUNCTION(Sine)
FUNCTION(Cosine)
FUNCTION(Tangent)
FUNCTION(ArcSine)
FUNCTION(ArcCosine)
FUNCTION(ArcTangent)
FUNCTION(Log)
FUNCTION(Exponential)
FUNCTION(CubicRoot)

#undef FUNCTION

HWY_EXPORT(PowerRow);
HWY_EXPORT(PowerRowOfOne);

float Power(float base, float exponent) { return HWY_STATIC_DISPATCH(PowerValue)(base, exponent); }

void Power(const float* bases, const float* exponents, float* to, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(PowerRow)(bases, exponents, to, count);
}

void Power(const float* bases, float exponent, float* to, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(PowerRowOfOne)(bases, exponent, to, count);
}

}  // namespace NearestFloat
#endif
