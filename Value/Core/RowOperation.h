// SPDX-License-Identifier: Apache-2.0
//
// The formula of a node with a pixel loop of its own, as an operation for the host's evaluator. Nodes compute with it
// where their pass is joined with those of others; see `ScEng::PendingScope`.
#pragma once

#include <cstddef>
#include <new>
#include <type_traits>
#include <typeinfo>

#include "Host/Image/ComputeValue.h"
#include "Host/Image/Image.h"
#include "Host/Image/ValueOperation.h"

/// An operation whose class has `void Run(const float* values, float* to, std::size_t count) const`.
template <class Derived>
class RowOperation : public ValueOperation {
 public:
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override {
    float result = 0.0F;
    static_cast<const Derived*>(this)->Run(&value, &result, 1);
    return result;
  }

 protected:
  RowOperation() = default;
  ~RowOperation() = default;
};

/// Registers `Run` with the evaluator while the library is loaded: one constant for each class.
template <class Operation>
class RowOperationLoops {
 public:
  RowOperationLoops() {
    static_assert(std::is_trivially_destructible_v<Operation>, "operations are freed without a destructor call");
    constexpr bool kReadsRange = false;
    ScEng::RegisterValueOperationLoops(typeid(Operation), {RunOne, RunFirst, kReadsRange, Copy});
  }
  ~RowOperationLoops() { ScEng::UnregisterValueOperationLoops(typeid(Operation)); }
  RowOperationLoops(const RowOperationLoops&) = delete;
  RowOperationLoops& operator=(const RowOperationLoops&) = delete;

 private:
  static void RunOne(const ValueOperation& operation, const float* values, float* to, std::size_t count) {
    static_cast<const Operation&>(operation).Run(values, to, count);
  }
  static void RunFirst(const ValueOperation& operation, const float* first, const float*, float* to,
                       std::size_t count) {
    RunOne(operation, first, to, count);
  }
  static ValueOperation* Copy(const ValueOperation& operation) {
    return new Operation(static_cast<const Operation&>(operation));
  }
};

/// The image of an operation with a declared range. Throws `std::bad_alloc` where it cannot be made, like the
/// constructors of images.
inline Image* ComputeRows(const Image& image, ValueOperation& operation, float low, float high) {
  Image* const output = ComputeValue(&image, &operation);
  if (output == nullptr) throw std::bad_alloc();
  output->SetValueLowHigh(low, high);
  return output;
}
