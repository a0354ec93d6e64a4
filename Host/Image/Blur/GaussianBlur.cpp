// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Blur/GaussianBlur.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "Host/Image/Blur/GaussianKernel.h"
#include "Host/Image/Blur/GaussianLoops.h"
#include "Host/Image/Blur/NonFiniteSpread.h"
#include "Host/Image/SampleMemory.h"
#include "Host/Util/ParallelRows.h"

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

// Images of this size are out of the caches before anybody reads them, so they are written past them.
constexpr std::size_t kStreamedSamples = std::size_t{1} << 21;

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
};

Measured Measure(const Image& image) {
  constexpr std::size_t kRun = 4096;
  Measured total;
  std::mutex mutex;
  ParallelRows(image.GetNumSamples(), kGrainSamples, [&](std::size_t from, std::size_t to) {
    Measured part;
    for (std::size_t i = from; i < to; i += kRun) {
      const std::size_t count = std::min(kRun, to - i);
      part.finite.Include(MeasureFiniteRange(image.GetConstArray() + i, count));
      part.has_non_finite = part.has_non_finite || HasNonFinite(image.GetConstArray() + i, count);
    }
    const std::lock_guard lock(mutex);
    total.finite.Include(part.finite);
    total.has_non_finite = total.has_non_finite || part.has_non_finite;
  });
  return total;
}

/// One direction of the blur: the kernel and, where it is large, its series.
struct Direction {
  Direction(float sigma, int size, bool wrap)
      : radius(GetGaussianRadius(sigma)),
        recursive(radius > kLargestDirectRadius),
        map(size, radius + kRowsAhead, wrap) {
    if (recursive) {
      cosines = MakeGaussianCosines(sigma);
      start = MakeCosineStart(cosines, map);
    } else {
      weights = MakeGaussianWeights(sigma);
    }
  }

  /// Where each position of the map lies, for lines whose positions are `stride` samples apart.
  [[nodiscard]] std::vector<const float*> Locate(const float* line, std::size_t stride) const {
    std::vector<const float*> rows;
    for (int position = -map.GetReach(); position <= map.GetSize() + map.GetReach(); ++position) {
      rows.push_back(line + static_cast<std::size_t>(map[position]) * stride);
    }
    return rows;
  }

  /// Space for the recursion of so many columns.
  [[nodiscard]] static std::size_t StateSize(std::size_t columns) {
    return 2 * GaussianCosines::kTerms * PadRow(columns);
  }

  int radius;
  bool recursive;
  BorderMap map;
  std::vector<float> weights;
  GaussianCosines cosines;
  CosineStart start;
};

class Blur {
 public:
  Blur(const Image& in, Image& out, float sigma_x, float sigma_y, bool wrap, const SampleScale& scale)
      : in_(in.GetConstArray()),
        out_(out.GetArray()),
        channels_(static_cast<std::size_t>(in.GetNumChannels())),
        size_x_(static_cast<std::size_t>(in.GetSizeX())),
        size_y_(static_cast<std::size_t>(in.GetSizeY())),
        row_(size_x_ * channels_),
        along_x_(sigma_x, in.GetSizeX(), wrap),
        along_y_(sigma_y, in.GetSizeY(), wrap),
        scale_(scale),
        is_large_(in.GetNumSamples() >= kStreamedSamples),
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
      const auto border = static_cast<std::size_t>(along_x_.radius) * channels_;
      std::vector<float> continued(border + PadRow(row_) + border + kRowUnit);
      float* row = continued.data() + border;
      for (std::size_t y = from; y < to; ++y) {
        ScaleSamples(in_ + y * row_, row, row_, scale_);
        ContinueRow(row);
        ConvolveAlong(row, between_.Row(y), PadRow(row_), channels_, along_x_.weights.data(), along_x_.radius,
                      is_large_ ? Writing::kStreamed : Writing::kCached);
        PadWithZeros(between_.Row(y));
      }
    });
  }

  /// Puts the pixels beyond the border on both sides of a row.
  void ContinueRow(float* row) const {
    const auto put = [&](int position) {
      const float* pixel = row + static_cast<std::size_t>(along_x_.map[position]) * channels_;
      std::copy_n(pixel, channels_,
                  row + static_cast<std::ptrdiff_t>(position) * static_cast<std::ptrdiff_t>(channels_));
    };
    const int size = along_x_.map.GetSize();
    for (int position = -along_x_.radius; position < 0; ++position) put(position);
    for (int position = size; position < size + along_x_.radius; ++position) put(position);
  }

  /// Puts the pixels of a few rows side by side, so that the recursion runs down columns here as well.
  void RecurseAlongRows() {
    const std::size_t rows_each = kLanes / channels_;
    const std::size_t groups = (size_y_ + rows_each - 1) / rows_each;
    ParallelRows(groups, GrainFor(rows_each * row_), [&](std::size_t from, std::size_t to) {
      const auto columns = AllocateNumbers<float>(size_x_ * kLanes + kRowUnit);
      const auto blurred = AllocateNumbers<float>(size_x_ * kLanes + kRowUnit);
      const auto state = AllocateNumbers<double>(Direction::StateSize(kLanes));
      const std::vector<const float*> positions = along_x_.Locate(columns.get(), kLanes);
      const ColumnStrip strip{positions.data() + along_x_.map.GetReach(), size_x_, 0, kLanes};
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
    const std::vector<const float*> rows = along_y_.Locate(between_.Row(0), between_.GetStride());
    const std::size_t rows_in_reach = 2 * static_cast<std::size_t>(along_y_.radius) + 1;
    const std::size_t columns = std::max<std::size_t>(1, kDirectSamples / rows_in_reach / kRowUnit) * kRowUnit;
    ParallelRows(size_y_, GrainFor(row_), [&](std::size_t from, std::size_t to) {
      for (std::size_t x = 0; x < row_; x += columns) {
        const ColumnStrip strip{rows.data() + along_y_.map.GetReach() + from, to - from, x,
                                std::min(columns, row_ - x)};
        ConvolveAcross(strip, along_y_.weights.data(), along_y_.radius, scale_, TargetAt(x, from));
      }
    });
  }

  void RecurseDownColumns() {
    const std::vector<const float*> rows = along_y_.Locate(between_.Row(0), between_.GetStride());
    const std::size_t units = PadRow(row_) / kRowUnit;
    ParallelRows(units, GrainFor(size_y_ * kRowUnit), [&](std::size_t from, std::size_t to) {
      const auto state = AllocateNumbers<double>(Direction::StateSize(kRecursiveColumns));
      const std::size_t end = std::min(to * kRowUnit, row_);
      for (std::size_t x = from * kRowUnit; x < end; x += kRecursiveColumns) {
        const ColumnStrip strip{rows.data() + along_y_.map.GetReach(), size_y_, x,
                                std::min(kRecursiveColumns, end - x)};
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

void GaussianBlur(const Image& in, Image& out, float sigma_x, float sigma_y, bool wrap) {
  if (in.GetNumSamples() == 0) return;
  const Measured measured = Measure(in);
  Blur(in, out, sigma_x, sigma_y, wrap, SampleScale::For(measured.finite)).Run();
  if (measured.has_non_finite) SpreadNonFinite(in, out, sigma_x, sigma_y, wrap);
}

}  // namespace ScEng
