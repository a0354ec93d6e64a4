// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/ValueOperation.h"

// The conditions: 1.0 where the test on the value holds and 0.0 where it does not, by exact comparison without
// tolerance. A NaN fails every ordered test and every equality, so it gives 0.0, and 1.0 only where the test is that
// the value differs. The two-value form ignores the second value.

class ConditionValEqMinOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return value == min ? 1.0F : 0.0F; }
};

class ConditionValDiffMinOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return !(value == min) ? 1.0F : 0.0F; }
};

class ConditionValEqMaxOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return value == max ? 1.0F : 0.0F; }
};

class ConditionValDiffMaxOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return !(value == max) ? 1.0F : 0.0F; }
};

class ConditionValLtAOperation : public ValueOperation {
 public:
  explicit ConditionValLtAOperation(float bound) { a = bound; }
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return value < a ? 1.0F : 0.0F; }
};

class ConditionValLteAOperation : public ValueOperation {
 public:
  explicit ConditionValLteAOperation(float bound) { a = bound; }
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return value <= a ? 1.0F : 0.0F; }
};

class ConditionValEqAOperation : public ValueOperation {
 public:
  explicit ConditionValEqAOperation(float bound) { a = bound; }
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return value == a ? 1.0F : 0.0F; }
};

class ConditionValGteAOperation : public ValueOperation {
 public:
  explicit ConditionValGteAOperation(float bound) { a = bound; }
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return value >= a ? 1.0F : 0.0F; }
};

class ConditionValGtAOperation : public ValueOperation {
 public:
  explicit ConditionValGtAOperation(float bound) { a = bound; }
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return value > a ? 1.0F : 0.0F; }
};

class ConditionALtValLtBOperation : public ValueOperation {
 public:
  ConditionALtValLtBOperation(float lower, float upper) {
    a = lower;
    b = upper;
  }
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return a < value && value < b ? 1.0F : 0.0F; }
};

class ConditionALteValLtBOperation : public ValueOperation {
 public:
  ConditionALteValLtBOperation(float lower, float upper) {
    a = lower;
    b = upper;
  }
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return a <= value && value < b ? 1.0F : 0.0F; }
};

class ConditionALtValLteBOperation : public ValueOperation {
 public:
  ConditionALtValLteBOperation(float lower, float upper) {
    a = lower;
    b = upper;
  }
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return a < value && value <= b ? 1.0F : 0.0F; }
};

class ConditionALteValLteBOperation : public ValueOperation {
 public:
  ConditionALteValLteBOperation(float lower, float upper) {
    a = lower;
    b = upper;
  }
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override { return a <= value && value <= b ? 1.0F : 0.0F; }
};
