// SPDX-License-Identifier: Apache-2.0
//
// Gives the host's evaluator a loop for each operation of this library, so that its formula runs over a row of samples
// without a virtual call each. The loops call the very functions that the virtual calls end in: one formula, two ways
// in. The compiler turns them into vector code once per instruction set. The functions that give the nearest float have
// vector code of their own. The loops are registered while the library is loaded and taken back when it leaves, like
// its icons.

#include <cstddef>
#include <type_traits>
#include <typeinfo>

#include "Host/Image/ValueOperation.h"
#include "Value/Operations/ArithmeticOperations.h"
#include "Value/Operations/ConditionOperations.h"
#include "Value/Operations/FunctionOperations.h"
#include "Value/Operations/NearestFloat/NearestFloat.h"
#include "Value/Operations/ThresholdValueOperation.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Operations/OperationLoops.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#ifndef VALUE_OPERATION_LISTS
#define VALUE_OPERATION_LISTS

namespace OperationLoops {

template <class... Operations>
struct List {};

/// Operations whose two-value form uses both values.
using TwoValueOperations = List<AdditionOperation, SubtractionOperation, MultiplicationOperation, DivideOperation,
                                MinimumOperation, MaximumOperation>;

/// Operations whose two-value form ignores the second value.
using OneValueOperations =
    List<ConditionValEqMinOperation, ConditionValDiffMinOperation, ConditionValEqMaxOperation,
         ConditionValDiffMaxOperation, ConditionValLtAOperation, ConditionValLteAOperation, ConditionValEqAOperation,
         ConditionValGteAOperation, ConditionValGtAOperation, ConditionALtValLtBOperation, ConditionALteValLtBOperation,
         ConditionALtValLteBOperation, ConditionALteValLteBOperation, ThresholdValueOperation, FloorValueOperation,
         CeilValueOperation, AbsoluteValueOperation, InverseValueOperation, SquareRootValueOperation,
         DegToRadValueOperation, RadToDegValueOperation>;

/// Operations of one value whose rows are computed by NearestFloat.
using NearestOperations = List<SineValueOperation, CosineValueOperation, TangentValueOperation, ArcSineValueOperation,
                               ArcCosineValueOperation, ArcTangentValueOperation, LogValueOperation, Log2ValueOperation,
                               Log10ValueOperation, ExponentialValueOperation, CubicRootValueOperation>;

/// The place of an operation in its list.
template <class Operation, class... Operations>
constexpr std::size_t IndexIn(List<Operations...>) {
  std::size_t index = 0;
  static_cast<void>(((std::is_same_v<Operation, Operations> || (++index, false)) || ...));
  return index;
}

using One = ScEng::ValueOperationLoops::One;
using Two = ScEng::ValueOperationLoops::Two;

/// The loops of one instruction set, in the order of the lists.
struct Tables {
  const One* one_of_two_value;
  const Two* two;
  const One* one;
};

}  // namespace OperationLoops

#endif

HWY_BEFORE_NAMESPACE();
namespace OperationLoops::HWY_NAMESPACE {

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

template <ThresholdProfile::Function kShape>
void LoopShape(const ThresholdValueOperation& operation, const float* __restrict values, float* __restrict to,
               std::size_t count) {
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is for the compiler, see above.
  const ThresholdValueOperation copy = operation;
  for (std::size_t i = 0; i < count; ++i) to[i] = copy.ComputeWith(values[i], kShape);
}

/// A loop per shape, since a call through a pointer would stand in the way of vector code.
template <>
void LoopOne<ThresholdValueOperation>(const ValueOperation& operation, const float* __restrict values,
                                      float* __restrict to, std::size_t count) {
  const auto& threshold = static_cast<const ThresholdValueOperation&>(operation);
  if (threshold.profile == ThresholdProfile::Smooth) {
    LoopShape<ThresholdProfile::Smooth>(threshold, values, to, count);
  } else if (threshold.profile == ThresholdProfile::ArcOut) {
    LoopShape<ThresholdProfile::ArcOut>(threshold, values, to, count);
  } else if (threshold.profile == ThresholdProfile::ArcIn) {
    LoopShape<ThresholdProfile::ArcIn>(threshold, values, to, count);
  } else {
    LoopShape<ThresholdProfile::Linear>(threshold, values, to, count);
  }
}

template <class... Operations>
const One* MakeOnes(List<Operations...>) {
  static constexpr One kLoops[] = {LoopOne<Operations>...};
  return kLoops;
}

template <class... Operations>
const Two* MakeTwos(List<Operations...>) {
  static constexpr Two kLoops[] = {LoopTwo<Operations>...};
  return kLoops;
}

Tables GetTables() {
  return {MakeOnes(TwoValueOperations{}), MakeTwos(TwoValueOperations{}), MakeOnes(OneValueOperations{})};
}

}  // namespace OperationLoops::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace OperationLoops {
namespace {

HWY_EXPORT(GetTables);

// What is registered looks up the instruction set at every call, that is once per block of samples.

template <class Operation>
void OneOfTwoValue(const ValueOperation& operation, const float* values, float* to, std::size_t count) {
  constexpr std::size_t kIndex = IndexIn<Operation>(TwoValueOperations{});
  HWY_DYNAMIC_DISPATCH(GetTables)().one_of_two_value[kIndex](operation, values, to, count);
}

template <class Operation>
void TwoValues(const ValueOperation& operation, const float* first, const float* second, float* to, std::size_t count) {
  constexpr std::size_t kIndex = IndexIn<Operation>(TwoValueOperations{});
  HWY_DYNAMIC_DISPATCH(GetTables)().two[kIndex](operation, first, second, to, count);
}

template <class Operation>
void OneValue(const ValueOperation& operation, const float* values, float* to, std::size_t count) {
  constexpr std::size_t kIndex = IndexIn<Operation>(OneValueOperations{});
  HWY_DYNAMIC_DISPATCH(GetTables)().one[kIndex](operation, values, to, count);
}

// How NearestFloat computes a row of an operation.

using Row = void (*)(const float* values, float* to, std::size_t count);

template <Row kRow>
struct RowOf {
  static void Compute(const float* values, float* to, std::size_t count) { kRow(values, to, count); }
};

template <class Operation>
struct Nearest;
template <>
struct Nearest<SineValueOperation> : RowOf<NearestFloat::Sine> {};
template <>
struct Nearest<CosineValueOperation> : RowOf<NearestFloat::Cosine> {};
template <>
struct Nearest<TangentValueOperation> : RowOf<NearestFloat::Tangent> {};
template <>
struct Nearest<ArcSineValueOperation> : RowOf<NearestFloat::ArcSine> {};
template <>
struct Nearest<ArcCosineValueOperation> : RowOf<NearestFloat::ArcCosine> {};
template <>
struct Nearest<ArcTangentValueOperation> : RowOf<NearestFloat::ArcTangent> {};
template <>
struct Nearest<LogValueOperation> : RowOf<NearestFloat::Log> {};
template <>
struct Nearest<ExponentialValueOperation> : RowOf<NearestFloat::Exponential> {};
template <>
struct Nearest<CubicRootValueOperation> : RowOf<NearestFloat::CubicRoot> {};

void ScaleLog(float factor, const float* values, float* to, std::size_t count) {
  NearestFloat::Log(values, to, count);
  for (std::size_t i = 0; i < count; ++i) to[i] *= factor;
}

template <>
struct Nearest<Log2ValueOperation> {
  static void Compute(const float* values, float* to, std::size_t count) {
    ScaleLog(ScEng::Math<float>::INV_LN_2, values, to, count);
  }
};
template <>
struct Nearest<Log10ValueOperation> {
  static void Compute(const float* values, float* to, std::size_t count) {
    ScaleLog(ScEng::Math<float>::INV_LN_10, values, to, count);
  }
};

template <class Operation>
void NearestOne(const ValueOperation&, const float* values, float* to, std::size_t count) {
  Nearest<Operation>::Compute(values, to, count);
}

template <class Operation>
void NearestFirst(const ValueOperation&, const float* first, const float*, float* to, std::size_t count) {
  Nearest<Operation>::Compute(first, to, count);
}

void PowerOfConstant(const ValueOperation& operation, const float* values, float* to, std::size_t count) {
  NearestFloat::Power(values, operation.a, to, count);
}

void PowerOfTwo(const ValueOperation&, const float* first, const float* second, float* to, std::size_t count) {
  NearestFloat::Power(first, second, to, count);
}

template <class Operation>
void FirstValue(const ValueOperation& operation, const float* first, const float*, float* to, std::size_t count) {
  OneValue<Operation>(operation, first, to, count);
}

/// Whether the operation asks for the range of the samples before it starts.
template <class Operation>
constexpr bool kReadsRange = IndexIn<Operation>(List<ConditionValEqMinOperation, ConditionValDiffMinOperation,
                                                     ConditionValEqMaxOperation, ConditionValDiffMaxOperation>{}) < 4;

template <class Operation>
ValueOperation* Copy(const ValueOperation& operation) {
  return new Operation(static_cast<const Operation&>(operation));
}

template <class Operation>
void Register(One one, Two two) {
  static_assert(std::is_trivially_destructible_v<Operation>, "operations are freed without a destructor call");
  ScEng::RegisterValueOperationLoops(typeid(Operation), {one, two, kReadsRange<Operation>, Copy<Operation>});
}

template <class... Operations>
void RegisterTwoValue(List<Operations...>) {
  (Register<Operations>(OneOfTwoValue<Operations>, TwoValues<Operations>), ...);
}

template <class... Operations>
void RegisterOneValue(List<Operations...>) {
  (Register<Operations>(OneValue<Operations>, FirstValue<Operations>), ...);
}

template <class... Operations>
void RegisterNearest(List<Operations...>) {
  (Register<Operations>(NearestOne<Operations>, NearestFirst<Operations>), ...);
}

template <class... Operations>
void Unregister(List<Operations...>) {
  (ScEng::UnregisterValueOperationLoops(typeid(Operations)), ...);
}

struct Registration {
  Registration() {
    RegisterTwoValue(TwoValueOperations{});
    RegisterOneValue(OneValueOperations{});
    RegisterNearest(NearestOperations{});
    Register<PowerOperation>(PowerOfConstant, PowerOfTwo);
  }
  ~Registration() {
    Unregister(TwoValueOperations{});
    Unregister(OneValueOperations{});
    Unregister(NearestOperations{});
    Unregister(List<PowerOperation>{});
  }
};

const Registration registration;

}  // namespace
}  // namespace OperationLoops
#endif
