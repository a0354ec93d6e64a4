// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

#include "Host/Image/ValueOperation.h"
#include "Host/Math/Constants.h"

// The functions of one value. Most widen to double, apply the C library's function and round once; where one says
// nothing of its domain, it gives what that function gives. The two-value form ignores the second value.

class SineValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return static_cast<float>(std::sin(static_cast<double>(value))); }
};

class CosineValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return static_cast<float>(std::cos(static_cast<double>(value))); }
};

class TangentValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return static_cast<float>(std::tan(static_cast<double>(value))); }
};

/// Defined everywhere: at and below -1, and for NaN, minus half pi; at and above 1 half pi.
class ArcSineValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override {
    if (!(value > -1.0F)) return -ScEng::Math<float>::HALF_PI;
    if (!(value < 1.0F)) return ScEng::Math<float>::HALF_PI;
    return static_cast<float>(std::asin(static_cast<double>(value)));
  }
};

/// Defined everywhere: at and below -1, and for NaN, pi; at and above 1 zero.
class ArcCosineValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override {
    if (!(value > -1.0F)) return ScEng::Math<float>::PI;
    if (!(value < 1.0F)) return 0.0F;
    return static_cast<float>(std::acos(static_cast<double>(value)));
  }
};

class ArcTangentValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return static_cast<float>(std::atan(static_cast<double>(value))); }
};

class FloorValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return static_cast<float>(std::floor(static_cast<double>(value))); }
};

class CeilValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return static_cast<float>(std::ceil(static_cast<double>(value))); }
};

/// Clears the sign bit: NaN stays NaN, -0.0 gives +0.0.
class AbsoluteValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return std::fabs(value); }
};

/// The reciprocal: +0.0 gives infinity, -0.0 minus infinity.
class InverseValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return 1.0F / value; }
};

/// The natural logarithm: minus infinity for 0, NaN for a negative number.
class LogValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return static_cast<float>(std::log(static_cast<double>(value))); }
};

/// The natural logarithm, rounded to float, times 1/ln 2 in float.
class Log2ValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override {
    return static_cast<float>(std::log(static_cast<double>(value))) * ScEng::Math<float>::INV_LN_2;
  }
};

/// The natural logarithm, rounded to float, times 1/ln 10 in float.
class Log10ValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override {
    return static_cast<float>(std::log(static_cast<double>(value))) * ScEng::Math<float>::INV_LN_10;
  }
};

class ExponentialValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return static_cast<float>(std::exp(static_cast<double>(value))); }
};

/// NaN for a negative number.
class SquareRootValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return static_cast<float>(std::sqrt(static_cast<double>(value))); }
};

/// In single precision; defined for negative numbers.
class CubicRootValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return std::cbrt(value); }
};

class DegToRadValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return value * ScEng::Math<float>::DEG_TO_RAD; }
};

class RadToDegValueOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return value * ScEng::Math<float>::RAD_TO_DEG; }
};
