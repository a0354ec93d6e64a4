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

// No loop here would gain by what these two add to the sets below them.
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Operations/OperationLoops.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "Host/Image/RowPass-inl.h"

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

template <class... Operations>
constexpr std::size_t Size(List<Operations...>) {
  return sizeof...(Operations);
}

using One = ScEng::ValueOperationLoops::One;
using Two = ScEng::ValueOperationLoops::Two;
using Pass = ScEng::ValueOperationLoops::Pass;

/// The loops of an operation; without those of two values where the second one is ignored.
struct Loops {
  One one;
  Two two;
  Pass pass_one;
  Pass pass_two;
};

/// The loops of one instruction set, in the order of the lists.
struct Tables {
  const Loops* of_two_values;
  const Loops* of_one_value;
};

}  // namespace OperationLoops

#endif

HWY_BEFORE_NAMESPACE();
namespace OperationLoops::HWY_NAMESPACE {

// The operation is copied, so that the compiler sees that no sample written can change a constant.

/// Calls `run` with the operation's formula of one value: a function object that the compiler can look into.
template <class Operation, class Run>
HWY_INLINE auto WithOne(const ValueOperation& operation, const Run& run) {
  Operation copy = static_cast<const Operation&>(operation);
  return run([&copy](float value) HWY_ATTR { return copy.Operation::Compute(value); });
}

/// A formula for each shape, since a call through a pointer would stand in the way of vector code.
template <ThresholdProfile::Function kShape, class Run>
HWY_INLINE auto WithShape(const ThresholdValueOperation& operation, const Run& run) {
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy is for the compiler, see above.
  const ThresholdValueOperation copy = operation;
  return run([&copy](float value) HWY_ATTR { return copy.ComputeWith(value, kShape); });
}
template <class Run>
HWY_INLINE auto WithThreshold(const ValueOperation& operation, const Run& run) {
  const auto& threshold = static_cast<const ThresholdValueOperation&>(operation);
  if (threshold.profile == ThresholdProfile::Smooth) return WithShape<ThresholdProfile::Smooth>(threshold, run);
  if (threshold.profile == ThresholdProfile::ArcOut) return WithShape<ThresholdProfile::ArcOut>(threshold, run);
  if (threshold.profile == ThresholdProfile::ArcIn) return WithShape<ThresholdProfile::ArcIn>(threshold, run);
  return WithShape<ThresholdProfile::Linear>(threshold, run);
}

template <class Operation, class Run>
HWY_INLINE auto WithFormula(const ValueOperation& operation, const Run& run) {
  if constexpr (std::is_same_v<Operation, ThresholdValueOperation>) {
    return WithThreshold(operation, run);
  } else {
    return WithOne<Operation>(operation, run);
  }
}

template <class Operation>
HWY_NOINLINE void LoopOne(const ValueOperation& operation, const float* __restrict values, float* __restrict to,
                          std::size_t count) {
  WithFormula<Operation>(operation, [&](const auto& formula) HWY_ATTR {
    for (std::size_t i = 0; i < count; ++i) to[i] = formula(values[i]);
  });
}

template <class Operation>
HWY_FLATTEN ScEng::RowRanges PassOne(const ValueOperation& operation, const ScEng::RowPass& row) {
  const auto few = [&operation](const float* values, const float*, float* to, std::size_t count)
                       HWY_ATTR { LoopOne<Operation>(operation, values, to, count); };
  return WithFormula<Operation>(operation, [&](const auto& formula) HWY_ATTR {
    const auto vector = [&formula](const float* __restrict values, const float*, float* __restrict to,
                                   std::size_t count) HWY_ATTR {
#pragma GCC unroll 1
      for (std::size_t i = 0; i < count; ++i) to[i] = formula(values[i]);
    };
    return ScEng::HWY_NAMESPACE::RunOneValuePass(row, vector, few);
  });
}

template <class Operation>
HWY_NOINLINE void LoopTwo(const ValueOperation& operation, const float* __restrict first,
                          const float* __restrict second, float* __restrict to, std::size_t count) {
  Operation copy = static_cast<const Operation&>(operation);
  for (std::size_t i = 0; i < count; ++i) to[i] = copy.Operation::Compute(first[i], second[i]);
}

template <class Operation>
HWY_FLATTEN ScEng::RowRanges PassTwo(const ValueOperation& operation, const ScEng::RowPass& row) {
  Operation copy = static_cast<const Operation&>(operation);
  const auto few = [&operation](const float* first, const float* second, float* to, std::size_t count)
                       HWY_ATTR { LoopTwo<Operation>(operation, first, second, to, count); };
  const auto vector = [&copy](const float* __restrict first, const float* __restrict second, float* __restrict to,
                              std::size_t count) HWY_ATTR {
#pragma GCC unroll 1
    for (std::size_t i = 0; i < count; ++i) to[i] = copy.Operation::Compute(first[i], second[i]);
  };
  return ScEng::HWY_NAMESPACE::RunTwoValuePass(row, vector, few);
}

template <class... Operations>
const Loops* MakeLoopsOfTwo(List<Operations...>) {
  static constexpr Loops kLoops[] = {
      {LoopOne<Operations>, LoopTwo<Operations>, PassOne<Operations>, PassTwo<Operations>}...};
  return kLoops;
}

template <class... Operations>
const Loops* MakeLoopsOfOne(List<Operations...>) {
  static constexpr Loops kLoops[] = {{LoopOne<Operations>, nullptr, PassOne<Operations>, nullptr}...};
  return kLoops;
}

void Scale(float factor, float* samples, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) samples[i] *= factor;
}

Tables GetTables() { return {MakeLoopsOfTwo(TwoValueOperations{}), MakeLoopsOfOne(OneValueOperations{})}; }

}  // namespace OperationLoops::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace OperationLoops {
namespace {

HWY_EXPORT(GetTables);
HWY_EXPORT(Scale);

// What is registered looks up the instruction set at every call, that is once per block of samples.

template <class Operation>
const Loops& FindLoops() {
  const Tables tables = HWY_DYNAMIC_DISPATCH(GetTables)();
  constexpr std::size_t kIndex = IndexIn<Operation>(TwoValueOperations{});
  if constexpr (kIndex < Size(TwoValueOperations{})) {
    return tables.of_two_values[kIndex];
  } else {
    return tables.of_one_value[IndexIn<Operation>(OneValueOperations{})];
  }
}

template <class Operation>
void OneValue(const ValueOperation& operation, const float* values, float* to, std::size_t count) {
  FindLoops<Operation>().one(operation, values, to, count);
}

template <class Operation>
void TwoValues(const ValueOperation& operation, const float* first, const float* second, float* to, std::size_t count) {
  FindLoops<Operation>().two(operation, first, second, to, count);
}

template <class Operation>
ScEng::RowRanges PassOneValue(const ValueOperation& operation, const ScEng::RowPass& row) {
  return FindLoops<Operation>().pass_one(operation, row);
}

template <class Operation>
ScEng::RowRanges PassTwoValues(const ValueOperation& operation, const ScEng::RowPass& row) {
  return FindLoops<Operation>().pass_two(operation, row);
}

// How NearestFloat computes a row of an operation, and a pass where there is one.

using Row = void (*)(const float* values, float* to, std::size_t count);
using RowInOnePass = ScEng::RowRanges (*)(const ScEng::RowPass& row);

template <Row kRow, RowInOnePass kPass>
struct RowOf {
  static constexpr Pass kPassOne = [](const ValueOperation&, const ScEng::RowPass& row) { return kPass(row); };
  static void Compute(const float* values, float* to, std::size_t count) { kRow(values, to, count); }
};

template <class Operation>
struct Nearest;
template <>
struct Nearest<SineValueOperation> : RowOf<NearestFloat::Sine, NearestFloat::Sine> {};
template <>
struct Nearest<CosineValueOperation> : RowOf<NearestFloat::Cosine, NearestFloat::Cosine> {};
template <>
struct Nearest<TangentValueOperation> : RowOf<NearestFloat::Tangent, NearestFloat::Tangent> {};
template <>
struct Nearest<ArcSineValueOperation> : RowOf<NearestFloat::ArcSine, NearestFloat::ArcSine> {};
template <>
struct Nearest<ArcCosineValueOperation> : RowOf<NearestFloat::ArcCosine, NearestFloat::ArcCosine> {};
template <>
struct Nearest<ArcTangentValueOperation> : RowOf<NearestFloat::ArcTangent, NearestFloat::ArcTangent> {};
template <>
struct Nearest<LogValueOperation> : RowOf<NearestFloat::Log, NearestFloat::Log> {};
template <>
struct Nearest<ExponentialValueOperation> : RowOf<NearestFloat::Exponential, NearestFloat::Exponential> {};
template <>
struct Nearest<CubicRootValueOperation> : RowOf<NearestFloat::CubicRoot, NearestFloat::CubicRoot> {};

void ScaleLog(float factor, const float* values, float* to, std::size_t count) {
  NearestFloat::Log(values, to, count);
  HWY_DYNAMIC_DISPATCH(Scale)(factor, to, count);
}

template <>
struct Nearest<Log2ValueOperation> {
  static constexpr Pass kPassOne = nullptr;
  static void Compute(const float* values, float* to, std::size_t count) {
    ScaleLog(ScEng::Math<float>::INV_LN_2, values, to, count);
  }
};
template <>
struct Nearest<Log10ValueOperation> {
  static constexpr Pass kPassOne = nullptr;
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
void Register(One one, Two two, Pass pass_one = nullptr, Pass pass_two = nullptr) {
  static_assert(std::is_trivially_destructible_v<Operation>, "operations are freed without a destructor call");
  ScEng::RegisterValueOperationLoops(typeid(Operation),
                                     {one, two, kReadsRange<Operation>, Copy<Operation>, pass_one, pass_two});
}

template <class... Operations>
void RegisterTwoValue(List<Operations...>) {
  (Register<Operations>(OneValue<Operations>, TwoValues<Operations>, PassOneValue<Operations>,
                        PassTwoValues<Operations>),
   ...);
}

template <class... Operations>
void RegisterOneValue(List<Operations...>) {
  (Register<Operations>(OneValue<Operations>, FirstValue<Operations>, PassOneValue<Operations>), ...);
}

template <class... Operations>
void RegisterNearest(List<Operations...>) {
  (Register<Operations>(NearestOne<Operations>, NearestFirst<Operations>, Nearest<Operations>::kPassOne), ...);
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
