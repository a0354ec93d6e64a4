// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/ValueOperation.h"
#include "Value/Operations/OneValueForms.h"

// The conditions: 1.0 where the test on the value holds and 0.0 where it does not, by exact comparison without
// tolerance. A NaN fails every ordered test and every equality, so it gives 0.0, and 1.0 only where the test is that
// the value differs. The two-value form ignores the second value.

// Conditions on the range of the samples, on one bound, and on two.
#define CONDITION(Name, test)             \
  class Name : public ValueOperation {    \
   public:                                \
    ONE_VALUE_FORMS((test) ? 1.0F : 0.0F) \
  }
#define CONDITION_ON_A(Name, test)            \
  class Name : public ValueOperation {        \
   public:                                    \
    explicit Name(float bound) { a = bound; } \
    ONE_VALUE_FORMS((test) ? 1.0F : 0.0F)     \
  }
#define CONDITION_ON_A_AND_B(Name, test)  \
  class Name : public ValueOperation {    \
   public:                                \
    Name(float lower, float upper) {      \
      a = lower;                          \
      b = upper;                          \
    }                                     \
    ONE_VALUE_FORMS((test) ? 1.0F : 0.0F) \
  }

CONDITION(ConditionValEqMinOperation, value == min);
CONDITION(ConditionValDiffMinOperation, !(value == min));
CONDITION(ConditionValEqMaxOperation, value == max);
CONDITION(ConditionValDiffMaxOperation, !(value == max));

CONDITION_ON_A(ConditionValLtAOperation, value < a);
CONDITION_ON_A(ConditionValLteAOperation, value <= a);
CONDITION_ON_A(ConditionValEqAOperation, value == a);
CONDITION_ON_A(ConditionValGteAOperation, value >= a);
CONDITION_ON_A(ConditionValGtAOperation, value > a);

CONDITION_ON_A_AND_B(ConditionALtValLtBOperation, a < value && value < b);
CONDITION_ON_A_AND_B(ConditionALteValLtBOperation, a <= value && value < b);
CONDITION_ON_A_AND_B(ConditionALtValLteBOperation, a < value && value <= b);
CONDITION_ON_A_AND_B(ConditionALteValLteBOperation, a <= value && value <= b);

#undef CONDITION
#undef CONDITION_ON_A
#undef CONDITION_ON_A_AND_B
