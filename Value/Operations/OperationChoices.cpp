// SPDX-License-Identifier: Apache-2.0
#include "Value/Operations/OperationChoices.h"

#include "Value/Operations/ConditionOperations.h"
#include "Value/Operations/FunctionOperations.h"

namespace {

template <class Choice>
Choice GetChoice(int index) {
  const bool is_listed = index >= 0 && index < static_cast<int>(Choice::kUnknown);
  return is_listed ? static_cast<Choice>(index) : Choice::kUnknown;
}

}  // namespace

Condition GetCondition(int index) { return GetChoice<Condition>(index); }

ValueOperation* MakeOperation(Condition condition, float a, float b) {
  switch (condition) {
    case Condition::kValEqMin: return new ConditionValEqMinOperation;
    case Condition::kValDiffMin: return new ConditionValDiffMinOperation;
    case Condition::kValEqMax: return new ConditionValEqMaxOperation;
    case Condition::kValDiffMax: return new ConditionValDiffMaxOperation;
    case Condition::kValLtA: return new ConditionValLtAOperation(a);
    case Condition::kValLteA: return new ConditionValLteAOperation(a);
    case Condition::kValEqA: return new ConditionValEqAOperation(a);
    case Condition::kValGteA: return new ConditionValGteAOperation(a);
    case Condition::kValGtA: return new ConditionValGtAOperation(a);
    case Condition::kALtValLtB: return new ConditionALtValLtBOperation(a, b);
    case Condition::kALteValLtB: return new ConditionALteValLtBOperation(a, b);
    case Condition::kALtValLteB: return new ConditionALtValLteBOperation(a, b);
    case Condition::kALteValLteB: return new ConditionALteValLteBOperation(a, b);
    case Condition::kUnknown: break;
  }
  return nullptr;
}

Function GetFunction(int index) { return GetChoice<Function>(index); }

ValueOperation* MakeOperation(Function function) {
  switch (function) {
    case Function::kAbsolute: return new AbsoluteValueOperation;
    case Function::kSine: return new SineValueOperation;
    case Function::kCosine: return new CosineValueOperation;
    case Function::kTangent: return new TangentValueOperation;
    case Function::kArcSine: return new ArcSineValueOperation;
    case Function::kArcCosine: return new ArcCosineValueOperation;
    case Function::kArcTangent: return new ArcTangentValueOperation;
    case Function::kFloor: return new FloorValueOperation;
    case Function::kCeil: return new CeilValueOperation;
    case Function::kInverse: return new InverseValueOperation;
    case Function::kLog: return new LogValueOperation;
    case Function::kLog2: return new Log2ValueOperation;
    case Function::kLog10: return new Log10ValueOperation;
    case Function::kExponential: return new ExponentialValueOperation;
    case Function::kSquareRoot: return new SquareRootValueOperation;
    case Function::kCubicRoot: return new CubicRootValueOperation;
    case Function::kDegToRad: return new DegToRadValueOperation;
    case Function::kRadToDeg: return new RadToDegValueOperation;
    case Function::kUnknown: break;
  }
  return nullptr;
}
