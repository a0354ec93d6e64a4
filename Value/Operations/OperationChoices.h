// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/ValueOperation.h"

// The operations that a word chooses.

/// The choices of Value Condition's "condition", in their order. V is the value, A and B are the bounds.
enum class Condition {
  kValEqMin,
  kValDiffMin,
  kValEqMax,
  kValDiffMax,
  kValLtA,
  kValLteA,
  kValEqA,
  kValGteA,
  kValGtA,
  kALtValLtB,
  kALteValLtB,
  kALtValLteB,
  kALteValLteB,
  kUnknown,
};

/// The choice with this index; a word that is not in the list is `kUnknown`.
Condition GetCondition(int index);

/// A new operation that tests the condition with these bounds, as far as it has any; null for `kUnknown`.
ValueOperation* MakeOperation(Condition condition, float a, float b);

/// The choices of Value Function's "function", in their order.
enum class Function {
  kAbsolute,
  kSine,
  kCosine,
  kTangent,
  kArcSine,
  kArcCosine,
  kArcTangent,
  kFloor,
  kCeil,
  kInverse,
  kLog,
  kLog2,
  kLog10,
  kExponential,
  kSquareRoot,
  kCubicRoot,
  kDegToRad,
  kRadToDeg,
  kUnknown,
};

/// The choice with this index; a word that is not in the list is `kUnknown`.
Function GetFunction(int index);

/// A new operation that computes the function; null for `kUnknown`.
ValueOperation* MakeOperation(Function function);
