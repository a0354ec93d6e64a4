// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <typeinfo>

#include "Host/Image/Api.h"
#include "Host/Image/SampleRange.h"

/// Computes one output value from one or two input values: what a value node hands to `ComputeValue`.
///
/// Plain data plus behaviour: no virtual destructor, and derived classes hold trivially destructible members only. Both
/// operations read fields and arguments and change nothing, so one object may be called from many threads at once.
class ValueOperation {
 public:
  /// The two-value form: combines two or more images pixel by pixel, folded from the left.
  virtual float Compute(float first, float second) = 0;
  /// The one-value form: combines one image with the operation's constants.
  virtual float Compute(float value) = 0;

  /// Lowest and highest sample of the input; `ComputeValue` stores the real ones before its pass over one image.
  float min = 0.0F;
  float max = 1.0F;
  /// First and second constant; what they mean, and whether `b` is used at all, is each operation's.
  float a;
  float b;

 protected:
  ValueOperation() = default;
  ~ValueOperation() = default;
};

/// Frees an operation that `new` made. The concrete type is not known here and needs no destructor call, so the
/// memory is returned as it is.
struct FreeValueOperation {
  void operator()(ValueOperation* operation) const noexcept { ::operator delete(operation); }
};
using ValueOperationPtr = std::unique_ptr<ValueOperation, FreeValueOperation>;

namespace ScEng {

/// A row that an operation is applied to in one pass, with what the evaluator does on the way.
struct RowPass {
  const float* first = nullptr;
  /// Unused by the one-value form, but not null.
  const float* second = nullptr;
  float* to = nullptr;
  std::size_t count = 0;
  /// Whether the samples are written past the caches.
  bool streamed = false;
  /// Whether the samples at `first` are measured.
  bool measures_input = false;
};

/// What a pass has measured: `MeasureRange` of the input, where that was asked for, and `MeasureFiniteRange` of the
/// samples that it has made.
struct RowRanges {
  SampleRange input;
  SampleRange output;

  void Include(const RowRanges& other) {
    input.Include(other.input);
    output.Include(other.output);
  }
};

/// An operation's formula applied to a run of samples without a virtual call each. Both loops must give, bit for bit,
/// what the operation's `Compute` gives. `to` never overlaps the inputs.
struct ValueOperationLoops {
  using One = void (*)(const ValueOperation& operation, const float* values, float* to, std::size_t count);
  using Two = void (*)(const ValueOperation& operation, const float* first, const float* second, float* to,
                       std::size_t count);
  One one = nullptr;
  Two two = nullptr;
  /// Whether the formula reads `min` or `max`. Where it does not, the input's range is measured in the same pass.
  bool reads_range = true;
  /// A copy of an operation, made with `new`, so that the formula can be applied when its owner has freed it already;
  /// see `PendingScope`. Null where there is none to be had.
  using Copy = ValueOperation* (*)(const ValueOperation& operation);
  Copy copy = nullptr;
  /// The loops in one pass with measuring and writing, see `RowPass-inl.h`. Null where there are none: the evaluator
  /// then runs the loops and looks at the samples again.
  using Pass = RowRanges (*)(const ValueOperation& operation, const RowPass& row);
  Pass pass_one = nullptr;
  Pass pass_two = nullptr;
};

/// Gives the evaluator loops for the operation class `type` (exactly that class: one derived from it computes through
/// its virtual operations). A library registers its loops while it is loaded and takes them back before it leaves;
/// `type` and the functions must stay valid in between. May be called from any thread.
HOST_IMAGE_API void RegisterValueOperationLoops(const std::type_info& type, const ValueOperationLoops& loops);
HOST_IMAGE_API void UnregisterValueOperationLoops(const std::type_info& type);

/// Whether loops are registered for the class, for tests and for `value doctor`-like reports.
HOST_IMAGE_API bool HasValueOperationLoops(const std::type_info& type);

}  // namespace ScEng
