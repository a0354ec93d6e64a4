// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/ValueOperation.h"
#include "Value/Operations/NearestFloat/NearestFloat.h"

// The arithmetic operations: both forms have a meaning of their own. Single precision without guards, except Power:
// division by zero and the like give the infinities and NaN of plain arithmetic.

class AdditionOperation : public ValueOperation {
 public:
  explicit AdditionOperation(float constant) { a = constant; }
  float Compute(float first, float second) override { return first + second; }
  float Compute(float value) override { return value + a; }
};

class SubtractionOperation : public ValueOperation {
 public:
  explicit SubtractionOperation(float constant) { a = constant; }
  float Compute(float first, float second) override { return first - second; }
  float Compute(float value) override { return value - a; }
};

class MultiplicationOperation : public ValueOperation {
 public:
  explicit MultiplicationOperation(float constant) { a = constant; }
  float Compute(float first, float second) override { return first * second; }
  float Compute(float value) override { return value * a; }
};

class DivideOperation : public ValueOperation {
 public:
  explicit DivideOperation(float constant) { a = constant; }
  float Compute(float first, float second) override { return first / second; }
  float Compute(float value) override { return value / a; }
};

/// The float nearest to the true value, on every processor and with every C library. Special values are those of
/// `std::pow`: the power of a negative number and a fractional exponent is NaN, of 0 and a negative one infinity.
class PowerOperation : public ValueOperation {
 public:
  explicit PowerOperation(float exponent) { a = exponent; }
  float Compute(float first, float second) override { return NearestFloat::Power(first, second); }
  float Compute(float value) override { return NearestFloat::Power(value, a); }
};

/// A NaN on either side gives the side that is not the constant: `first` of two, the value of one.
class MinimumOperation : public ValueOperation {
 public:
  explicit MinimumOperation(float bound) { a = bound; }
  float Compute(float first, float second) override { return second < first ? second : first; }
  float Compute(float value) override { return a < value ? a : value; }
};

/// NaN as for the minimum.
class MaximumOperation : public ValueOperation {
 public:
  explicit MaximumOperation(float bound) { a = bound; }
  float Compute(float first, float second) override { return second > first ? second : first; }
  float Compute(float value) override { return a > value ? a : value; }
};
