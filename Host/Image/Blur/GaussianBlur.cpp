// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Blur/GaussianBlur.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "Host/Image/Blur/GaussianKernel.h"
#include "Host/Image/Blur/GaussianLoops.h"
#include "Host/Image/Blur/NonFiniteSpread.h"
#include "Host/Image/SampleMemory.h"
#include "Host/Image/Streaming.h"
#include "Host/Util/ParallelReduce.h"

namespace ScEng {
namespace {

// From this radius on the recursion is the faster way.
constexpr int kLargestDirectRadius = 40;
// Samples under the kernel, over all rows, that are to stay in the first cache level while columns are convolved.
constexpr std::size_t kDirectSamples = 6144;
// Columns whose recursion runs together: as many as let their responses stay in the first cache level.
constexpr std::size_t kRecursiveColumns = 2 * kRowUnit;
// Samples of one position that a pass along rows puts side by side.
constexpr std::size_t kLanes = 16;

// Enough samples in one piece that handing it to a thread pays.
constexpr std::size_t kGrainSamples = std::size_t{1} << 15;

std::size_t GrainFor(std::size_t samples_each) { return std::max<std::size_t>(1, kGrainSamples / samples_each); }

/// Memory for numbers, aligned as that of samples is.
template <class Number>
struct FreeNumbers {
  std::size_t bytes = 0;
  void operator()(Number* numbers) const noexcept { ReleaseSamples(reinterpret_cast<float*>(numbers), bytes); }
};

template <class Number>
using Numbers = std::unique_ptr<Number[], FreeNumbers<Number>>;

template <class Number>
Numbers<Number> AllocateNumbers(std::size_t count) {
  const std::size_t bytes = count * sizeof(Number);
  return {reinterpret_cast<Number*>(AllocateSamples(bytes)), FreeNumbers<Number>{bytes}};
}

/// Samples between the passes, in rows that are padded with zeros. Rows are an odd number of units apart: at multiples
/// of a large power of two the samples of a column would compete for the same few places in the caches.
class Buffer {
 public:
  Buffer(std::size_t rows, std::size_t row_samples)
      : stride_((PadRow(row_samples) / kRowUnit | 1) * kRowUnit), samples_(AllocateNumbers<float>(rows * stride_)) {}

  [[nodiscard]] std::size_t GetStride() const { return stride_; }
  [[nodiscard]] float* Row(std::size_t y) { return samples_.get() + y * stride_; }
  [[nodiscard]] const float* Row(std::size_t y) const { return samples_.get() + y * stride_; }

 private:
  std::size_t stride_;
  Numbers<float> samples_;
};

struct Measured {
  SampleRange finite;
  bool has_non_finite = false;

  void Include(const Measured& other) {
    finite.Include(other.finite);
    has_non_finite = has_non_finite || other.has_non_finite;
  }
};

Measured Measure(const Image& image) {
  constexpr std::size_t kRun = 4096;
  return ParallelReduce<Measured>(image.GetNumSamples(), kGrainSamples, [&](std::size_t from, std::size_t to) {
    Measured part;
    for (std::size_t i = from; i < to; i += kRun) {
      const float* run = image.GetConstArray() + i;
      const std::size_t count = std::min(kRun, to - i);
      part.Include({MeasureFiniteRange(run, count), HasNonFinite(run, count)});
    }
    return part;
  });
}

/// One direction of the blur: the kernel and, where it is large, its series.
struct Direction {
  Direction(float sigma, int line_size, Border line_border)
      : size(line_size),
        border(line_border),
        radius(GetGaussianRadius(sigma)),
        recursive(radius > kLargestDirectRadius) {
    if (recursive) {
      cosines = MakeGaussianCosines(sigma);
      start = MakeCosineStart(cosines, size, border);
    } else {
      weights = MakeGaussianWeights(sigma);
    }
  }

  [[nodiscard]] int At(std::int64_t position) const {
    return static_cast<int>(BorderIndex<std::int64_t>(position, size, border));
  }

  /// Space for the recursion of so many columns.
  [[nodiscard]] static std::size_t StateSize(std::size_t columns) {
    return 2 * GaussianCosines::kTerms * PadRow(columns);
  }

  int size;
  Border border;
  std::int64_t radius;
  bool recursive;
  std::vector<float> weights;
  GaussianCosines cosines;
  CosineStart start;
};

/// Where positions of a line lie that begin at `first`, at the line's own positions or beyond them; the line's are
/// `stride` samples apart.
class Positions {
 public:
  Positions(const Direction& direction, const float* line, std::size_t stride, std::int64_t first, std::int64_t end)
      : first_(first) {
    places_.reserve(static_cast<std::size_t>(end - first));
    for (std::int64_t position = first; position < end; ++position) {
      places_.push_back(line + static_cast<std::size_t>(direction.At(position)) * stride);
    }
  }

  /// The entry of a position, in a list that goes on before and after it.
  [[nodiscard]] const float* const* At(std::int64_t position) const { return places_.data() + (position - first_); }

 private:
  std::int64_t first_;
  std::vector<const float*> places_;
};

/// The positions of a line, and those that enter and leave the kernel's window while it moves along.
struct Window {
  Window(const Direction& direction, const float* line, std::size_t stride)
      : radius(direction.radius),
        middle(direction, line, stride, 0, direction.size),
        before(direction, line, stride, -radius - 1, direction.size - radius + kRowsAhead + 1),
        after(direction, line, stride, radius - 1, direction.size + radius + kRowsAhead + 1) {}

  [[nodiscard]] WindowStrip Strip(std::size_t num_rows, std::size_t first, std::size_t count) const {
    return {{middle.At(0), num_rows, first, count}, before.At(-radius), after.At(radius)};
  }

  std::int64_t radius;
  Positions middle;
  Positions before;
  Positions after;
};

class Blur {
 public:
  Blur(const Image& in, Image& out, float sigma_x, float sigma_y, Border border, const SampleScale& scale)
      : in_(in.GetConstArray()),
        out_(out.GetArray()),
        channels_(static_cast<std::size_t>(in.GetNumChannels())),
        size_x_(static_cast<std::size_t>(in.GetSizeX())),
        size_y_(static_cast<std::size_t>(in.GetSizeY())),
        row_(size_x_ * channels_),
        along_x_(sigma_x, in.GetSizeX(), border),
        along_y_(sigma_y, in.GetSizeY(), border),
        scale_(scale),
        is_large_(IsStreamed(in.GetNumSamples())),
        between_(size_y_, row_) {}

  void Run() {
    if (along_x_.radius == 0) {
      ScaleRows();
    } else if (along_x_.recursive) {
      RecurseAlongRows();
    } else {
      ConvolveRows();
    }
    if (along_y_.radius == 0) {
      UnscaleRows();
    } else if (along_y_.recursive) {
      RecurseDownColumns();
    } else {
      ConvolveColumns();
    }
  }

 private:
  void PadWithZeros(float* row) const { std::fill(row + row_, row + PadRow(row_), 0.0F); }

  void ScaleRows() {
    ParallelRows(size_y_, GrainFor(row_), [&](std::size_t from, std::size_t to) {
      for (std::size_t y = from; y < to; ++y) {
        ScaleSamples(in_ + y * row_, between_.Row(y), row_, scale_);
        PadWithZeros(between_.Row(y));
      }
    });
  }

  void UnscaleRows() {
    ParallelRows(size_y_, GrainFor(row_), [&](std::size_t from, std::size_t to) {
      for (std::size_t y = from; y < to; ++y) UnscaleSamples(between_.Row(y), out_ + y * row_, row_, scale_);
    });
  }

  void ConvolveRows() {
    ParallelRows(size_y_, GrainFor(row_), [&](std::size_t from, std::size_t to) {
      const auto beside = static_cast<std::size_t>(along_x_.radius) * channels_;
      std::vector<float> continued(beside + PadRow(row_) + beside + kRowUnit);
      float* row = continued.data() + beside;
      for (std::size_t y = from; y < to; ++y) {
        ScaleSamples(in_ + y * row_, row, row_, scale_);
        ContinueRow(row);
        ConvolveAlong(row, between_.Row(y), PadRow(row_), channels_, along_x_.weights.data(),
                      static_cast<int>(along_x_.radius), is_large_ ? Writing::kStreamed : Writing::kCached);
        PadWithZeros(between_.Row(y));
      }
    });
  }

  /// Puts the pixels beyond the border on both sides of a row.
  void ContinueRow(float* row) const {
    const auto put = [&](std::int64_t position) {
      const float* pixel = row + static_cast<std::size_t>(along_x_.At(position)) * channels_;
      std::copy_n(pixel, channels_, row + position * static_cast<std::ptrdiff_t>(channels_));
    };
    const int size = along_x_.size;
    for (std::int64_t position = -along_x_.radius; position < 0; ++position) put(position);
    for (std::int64_t position = size; position < size + along_x_.radius; ++position) put(position);
  }

  /// Puts the pixels of a few rows side by side, so that the recursion runs down columns here as well.
  void RecurseAlongRows() {
    const std::size_t rows_each = kLanes / channels_;
    const std::size_t groups = (size_y_ + rows_each - 1) / rows_each;
    ParallelRows(groups, GrainFor(rows_each * row_), [&](std::size_t from, std::size_t to) {
      const auto columns = AllocateNumbers<float>(size_x_ * kLanes + kRowUnit);
      const auto blurred = AllocateNumbers<float>(size_x_ * kLanes + kRowUnit);
      const auto state = AllocateNumbers<double>(Direction::StateSize(kLanes));
      const Window window(along_x_, columns.get(), kLanes);
      const WindowStrip strip = window.Strip(size_x_, 0, kLanes);
      std::fill_n(columns.get(), size_x_ * kLanes + kRowUnit, 0.0F);
      for (std::size_t group = from; group < to; ++group) {
        const std::size_t first = group * rows_each;
        const std::size_t rows = std::min(rows_each, size_y_ - first);
        for (std::size_t y = 0; y < rows; ++y) {
          ScaleSamples(in_ + (first + y) * row_, between_.Row(first + y), row_, scale_);
        }
        Transpose(between_.Row(first), between_.GetStride(), columns.get(), kLanes, rows, size_x_, channels_);
        FilterAcross(strip, along_x_.cosines, along_x_.start, nullptr, {blurred.get(), kLanes}, state.get());
        Transpose(blurred.get(), kLanes, between_.Row(first), between_.GetStride(), size_x_, rows, channels_);
        for (std::size_t y = 0; y < rows; ++y) PadWithZeros(between_.Row(first + y));
      }
    });
  }

  /// Where the columns from `x` on of rows from `y` on go.
  [[nodiscard]] ColumnTarget TargetAt(std::size_t x, std::size_t y) const {
    const bool streamed = is_large_ && row_ % 16 == 0;
    return {out_ + y * row_ + x, row_, streamed ? Writing::kStreamed : Writing::kCached};
  }

  void ConvolveColumns() {
    const auto radius = static_cast<int>(along_y_.radius);
    const Positions rows(along_y_, between_.Row(0), between_.GetStride(), -radius, along_y_.size + radius + kRowsAhead);
    const std::size_t rows_in_reach = 2 * static_cast<std::size_t>(radius) + 1;
    const std::size_t columns = std::max<std::size_t>(1, kDirectSamples / rows_in_reach / kRowUnit) * kRowUnit;
    ParallelRows(size_y_, GrainFor(row_), [&](std::size_t from, std::size_t to) {
      for (std::size_t x = 0; x < row_; x += columns) {
        const ColumnStrip strip{rows.At(static_cast<std::int64_t>(from)), to - from, x, std::min(columns, row_ - x)};
        ConvolveAcross(strip, along_y_.weights.data(), radius, scale_, TargetAt(x, from));
      }
    });
  }

  void RecurseDownColumns() {
    const Window window(along_y_, between_.Row(0), between_.GetStride());
    const std::size_t units = PadRow(row_) / kRowUnit;
    ParallelRows(units, GrainFor(size_y_ * kRowUnit), [&](std::size_t from, std::size_t to) {
      const auto state = AllocateNumbers<double>(Direction::StateSize(kRecursiveColumns));
      const std::size_t end = std::min(to * kRowUnit, row_);
      for (std::size_t x = from * kRowUnit; x < end; x += kRecursiveColumns) {
        const WindowStrip strip = window.Strip(size_y_, x, std::min(kRecursiveColumns, end - x));
        FilterAcross(strip, along_y_.cosines, along_y_.start, &scale_, TargetAt(x, 0), state.get());
      }
    });
  }

  const float* in_;
  float* out_;
  std::size_t channels_;
  std::size_t size_x_;
  std::size_t size_y_;
  std::size_t row_;
  Direction along_x_;
  Direction along_y_;
  SampleScale scale_;
  bool is_large_;
  Buffer between_;
};

}  // namespace

void GaussianBlur(const Image& in, Image& out, float sigma_x, float sigma_y, Border border) {
  if (in.GetNumSamples() == 0) return;
  const Measured measured = Measure(in);
  Blur(in, out, sigma_x, sigma_y, border, SampleScale::For(measured.finite)).Run();
  if (measured.has_non_finite) SpreadNonFinite(in, out, sigma_x, sigma_y, border);
}

}  // namespace ScEng
