// SPDX-License-Identifier: Apache-2.0
//
// Gives the host's evaluator a loop for each operation of this library, so that its formula runs over a row of samples
// without a virtual call each. The loops call the very functions that the virtual calls end in: one formula, two ways
// in. They are registered while the library is loaded and taken back when it leaves, like its icons.

#include <concepts>
#include <cstddef>
#include <type_traits>
#include <typeinfo>

#include "Host/Image/ValueOperation.h"
#include "Value/Operations/ArithmeticOperations.h"
#include "Value/Operations/ConditionOperations.h"
#include "Value/Operations/FunctionOperations.h"
#include "Value/Operations/ThresholdValueOperation.h"

namespace {

// The operation is copied, so that the compiler sees that no sample written can change a constant.

template <class Operation>
void LoopOne(const ValueOperation& operation, const float* __restrict values, float* __restrict to, std::size_t count) {
  Operation copy = static_cast<const Operation&>(operation);
  for (std::size_t i = 0; i < count; ++i) to[i] = copy.Operation::Compute(values[i]);
}

template <class Operation>
void LoopTwo(const ValueOperation& operation, const float* __restrict first, const float* __restrict second,
             float* __restrict to, std::size_t count) {
  Operation copy = static_cast<const Operation&>(operation);
  for (std::size_t i = 0; i < count; ++i) to[i] = copy.Operation::Compute(first[i], second[i]);
}

/// The two-value form of an operation that ignores the second value.
template <class Operation>
void LoopFirst(const ValueOperation& operation, const float* __restrict first, const float* __restrict,
               float* __restrict to, std::size_t count) {
  LoopOne<Operation>(operation, first, to, count);
}

template <class Operation>
concept ReadsRange =
    std::same_as<Operation, ConditionValEqMinOperation> || std::same_as<Operation, ConditionValDiffMinOperation> ||
    std::same_as<Operation, ConditionValEqMaxOperation> || std::same_as<Operation, ConditionValDiffMaxOperation>;

template <class... Operations>
struct List {};

using TwoValueOperations = List<AdditionOperation, SubtractionOperation, MultiplicationOperation, DivideOperation,
                                PowerOperation, MinimumOperation, MaximumOperation>;
using OneValueOperations =
    List<ConditionValEqMinOperation, ConditionValDiffMinOperation, ConditionValEqMaxOperation,
         ConditionValDiffMaxOperation, ConditionValLtAOperation, ConditionValLteAOperation, ConditionValEqAOperation,
         ConditionValGteAOperation, ConditionValGtAOperation, ConditionALtValLtBOperation, ConditionALteValLtBOperation,
         ConditionALtValLteBOperation, ConditionALteValLteBOperation, ThresholdValueOperation, SineValueOperation,
         CosineValueOperation, TangentValueOperation, ArcSineValueOperation, ArcCosineValueOperation,
         ArcTangentValueOperation, FloorValueOperation, CeilValueOperation, AbsoluteValueOperation,
         InverseValueOperation, LogValueOperation, Log2ValueOperation, Log10ValueOperation, ExponentialValueOperation,
         SquareRootValueOperation, CubicRootValueOperation, DegToRadValueOperation, RadToDegValueOperation>;

template <class Operation>
void Register(ScEng::ValueOperationLoops::Two two) {
  static_assert(std::is_trivially_destructible_v<Operation>, "operations are freed without a destructor call");
  ScEng::RegisterValueOperationLoops(typeid(Operation), {LoopOne<Operation>, two, ReadsRange<Operation>});
}

template <class... Operations>
void RegisterTwoValue(List<Operations...>) {
  (Register<Operations>(LoopTwo<Operations>), ...);
}

template <class... Operations>
void RegisterOneValue(List<Operations...>) {
  (Register<Operations>(LoopFirst<Operations>), ...);
}

template <class... Operations>
void Unregister(List<Operations...>) {
  (ScEng::UnregisterValueOperationLoops(typeid(Operations)), ...);
}

struct Registration {
  Registration() {
    RegisterTwoValue(TwoValueOperations{});
    RegisterOneValue(OneValueOperations{});
  }
  ~Registration() {
    Unregister(TwoValueOperations{});
    Unregister(OneValueOperations{});
  }
};

const Registration registration;

}  // namespace
