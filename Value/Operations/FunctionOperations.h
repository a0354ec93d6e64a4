// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

#include "Host/Image/ValueOperation.h"
#include "Host/Math/Constants.h"
#include "Value/Operations/NearestFloat/NearestFloat.h"
#include "Value/Operations/OneValueForms.h"

// The functions of one value. Sines, arcs, logarithms, the exponential and the cubic root give the float nearest to the
// true value, on every processor and with every C library; where nothing is said of its domain, a function has the
// special values of the C library's. The two-value form ignores the second value.

#define FUNCTION(Name, ...)            \
  class Name : public ValueOperation { \
   public:                             \
    ONE_VALUE_FORMS(__VA_ARGS__)       \
  }

FUNCTION(SineValueOperation, NearestFloat::Sine(value));
FUNCTION(CosineValueOperation, NearestFloat::Cosine(value));
FUNCTION(TangentValueOperation, NearestFloat::Tangent(value));
/// Defined everywhere: at and below -1, and for NaN, minus half pi; at and above 1 half pi.
FUNCTION(ArcSineValueOperation, NearestFloat::ArcSine(value));
/// Defined everywhere: at and below -1, and for NaN, pi; at and above 1 zero.
FUNCTION(ArcCosineValueOperation, NearestFloat::ArcCosine(value));
FUNCTION(ArcTangentValueOperation, NearestFloat::ArcTangent(value));
FUNCTION(FloorValueOperation, static_cast<float>(std::floor(static_cast<double>(value))));
FUNCTION(CeilValueOperation, static_cast<float>(std::ceil(static_cast<double>(value))));
/// Clears the sign bit: NaN stays NaN, -0.0 gives +0.0.
FUNCTION(AbsoluteValueOperation, std::fabs(value));
/// The reciprocal: +0.0 gives infinity, -0.0 minus infinity.
FUNCTION(InverseValueOperation, 1.0F / value);
/// The natural logarithm: minus infinity for 0, NaN for a negative number.
FUNCTION(LogValueOperation, NearestFloat::Log(value));
/// The natural logarithm, rounded to float, times 1/ln 2 in float.
FUNCTION(Log2ValueOperation, NearestFloat::Log(value) * ScEng::Math<float>::INV_LN_2);
/// The natural logarithm, rounded to float, times 1/ln 10 in float.
FUNCTION(Log10ValueOperation, NearestFloat::Log(value) * ScEng::Math<float>::INV_LN_10);
FUNCTION(ExponentialValueOperation, NearestFloat::Exponential(value));
/// NaN for a negative number.
FUNCTION(SquareRootValueOperation, static_cast<float>(std::sqrt(static_cast<double>(value))));
/// Defined for negative numbers.
FUNCTION(CubicRootValueOperation, NearestFloat::CubicRoot(value));
FUNCTION(DegToRadValueOperation, ScEng::Math<float>::DEG_TO_RAD* value);
FUNCTION(RadToDegValueOperation, ScEng::Math<float>::RAD_TO_DEG* value);

#undef FUNCTION
