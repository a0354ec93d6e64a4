// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

#include "Host/Image/ValueOperation.h"
#include "Host/Math/Constants.h"
#include "Value/Operations/OneValueForms.h"

// The functions of one value. Where nothing is said of its domain, one gives what the function of the C library gives.
// The two-value form ignores the second value.

#define FUNCTION(Name, ...)            \
  class Name : public ValueOperation { \
   public:                             \
    ONE_VALUE_FORMS(__VA_ARGS__)       \
  }
// One that widens to double, applies the C library's function and rounds once.
#define DOUBLE_FUNCTION(Name, function) FUNCTION(Name, static_cast<float>(function(static_cast<double>(value))))

DOUBLE_FUNCTION(SineValueOperation, std::sin);
DOUBLE_FUNCTION(CosineValueOperation, std::cos);
DOUBLE_FUNCTION(TangentValueOperation, std::tan);
/// Defined everywhere: at and below -1, and for NaN, minus half pi; at and above 1 half pi.
FUNCTION(ArcSineValueOperation, !(value > -1.0F)  ? -ScEng::Math<float>::HALF_PI
                                : !(value < 1.0F) ? ScEng::Math<float>::HALF_PI
                                                  : static_cast<float>(std::asin(static_cast<double>(value))));
/// Defined everywhere: at and below -1, and for NaN, pi; at and above 1 zero.
FUNCTION(ArcCosineValueOperation, !(value > -1.0F)  ? ScEng::Math<float>::PI
                                  : !(value < 1.0F) ? 0.0F
                                                    : static_cast<float>(std::acos(static_cast<double>(value))));
DOUBLE_FUNCTION(ArcTangentValueOperation, std::atan);
DOUBLE_FUNCTION(FloorValueOperation, std::floor);
DOUBLE_FUNCTION(CeilValueOperation, std::ceil);
/// Clears the sign bit: NaN stays NaN, -0.0 gives +0.0.
FUNCTION(AbsoluteValueOperation, std::fabs(value));
/// The reciprocal: +0.0 gives infinity, -0.0 minus infinity.
FUNCTION(InverseValueOperation, 1.0F / value);
/// The natural logarithm: minus infinity for 0, NaN for a negative number.
DOUBLE_FUNCTION(LogValueOperation, std::log);
/// The natural logarithm, rounded to float, times 1/ln 2 in float.
FUNCTION(Log2ValueOperation, static_cast<float>(std::log(static_cast<double>(value))) * ScEng::Math<float>::INV_LN_2);
/// The natural logarithm, rounded to float, times 1/ln 10 in float.
FUNCTION(Log10ValueOperation, static_cast<float>(std::log(static_cast<double>(value))) * ScEng::Math<float>::INV_LN_10);
DOUBLE_FUNCTION(ExponentialValueOperation, std::exp);
/// NaN for a negative number.
DOUBLE_FUNCTION(SquareRootValueOperation, std::sqrt);
/// Defined for negative numbers. The float nearest to the root, for every float: what C libraries compute in single
/// precision differs from one to the other.
DOUBLE_FUNCTION(CubicRootValueOperation, std::cbrt);
FUNCTION(DegToRadValueOperation, ScEng::Math<float>::DEG_TO_RAD* value);
FUNCTION(RadToDegValueOperation, ScEng::Math<float>::RAD_TO_DEG* value);

#undef FUNCTION
#undef DOUBLE_FUNCTION
