// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/EuclideanDistance.h"

#include "Host/Image/Distance/VerticalDistances.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Host/Image/Distance/EuclideanDistance.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "Host/Image/Oversize.h"
#include "Host/Image/Placement.h"
#include "Host/Util/ParallelReduce.h"

HWY_BEFORE_NAMESPACE();
namespace ScEng::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Takes the root of the smaller of `squares` and the square of `row`, in place of the latter.
void TakeRoots(const double* HWY_RESTRICT squares, float* HWY_RESTRICT row, std::size_t count) {
  const hn::ScalableTag<double> d;
  const hn::Rebind<float, decltype(d)> d_float;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    const auto own = hn::PromoteTo(d, hn::LoadU(d_float, row + i));
    const auto square = hn::Min(hn::LoadU(d, squares + i), hn::Mul(own, own));
    hn::StoreU(hn::DemoteTo(d_float, hn::Sqrt(square)), d_float, row + i);
  }
  for (; i < count; ++i) {
    const double own = row[i];
    row[i] = static_cast<float>(std::sqrt(std::min(squares[i], own * own)));
  }
}

/// Distances where each is known to be at most `kNear`: looks at one column after another to both sides until none can
/// be nearer. `squares` may be read for kNear columns on either side and for a vector beyond.
///
/// The root is taken in single precision, which comes to the same: rounding it to double first changes nothing (S.
/// Figueroa: When is double rounding innocuous?, 1995).
void MeasureNear(const float* HWY_RESTRICT squares, std::size_t count, float* HWY_RESTRICT to) {
  const hn::CappedTag<float, 64> d;
  const std::size_t lanes = hn::Lanes(d);
  for (std::size_t x = 0; x < count; x += lanes) {
    // What lies beyond the row has no bound, and must not keep the rest waiting.
    auto best = hn::IfThenElseZero(hn::FirstN(d, count - x), hn::LoadU(d, squares + x));
    for (std::size_t i = 1;; ++i) {
      const auto column = static_cast<float>(i);
      const auto aside = hn::Set(d, column * column);
      if (hn::AllTrue(d, hn::Le(best, aside))) break;
      best = hn::Min(best, hn::Add(aside, hn::Min(hn::LoadU(d, squares + x - i), hn::LoadU(d, squares + x + i))));
    }
    hn::StoreU(hn::Sqrt(best), d, to + x);
  }
}

}  // namespace ScEng::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ScEng {
namespace {

HWY_EXPORT(TakeRoots);
HWY_EXPORT(MeasureNear);

/// Rows whose vertical distances are at most this are measured without an envelope.
constexpr int kNear = 16;
/// The most samples that a vector holds here.
constexpr std::size_t kLongestVector = 64;

constexpr float kNone = std::numeric_limits<float>::infinity();

/// Turns rows of vertical distances into Euclidean ones.
///
/// The squared distance of pixel x to the nearest set pixel of column c is (x - c)^2 + vertical(c)^2: a parabola over
/// x. Its minimum over all columns is the lower envelope of the parabolas, which is built from left to right as a stack
/// of those that are lowest somewhere, and read off afterwards. All numbers are whole.
class RowMeasure {
 public:
  RowMeasure(int width, bool wrap)
      : width_(width),
        wrap_(wrap),
        pieces_(Size() + 1),
        squares_(Size()),
        near_squares_(Size() + std::size_t{2} * kNear + kLongestVector),
        near_distances_(Size() + kLongestVector) {}

  /// In place. There must be a finite distance in the row.
  void Measure(float* row) {
    const auto is_far = [](float distance) { return distance > static_cast<float>(kNear); };
    if (std::any_of(row, row + width_, is_far)) {
      MeasureByEnvelope(row);
    } else {
      MeasureByNeighbors(row);
    }
  }

 private:
  struct Piece {
    std::int64_t column;
    std::int64_t height;
    /// The first pixel at which this parabola is the lowest.
    std::int64_t from;

    [[nodiscard]] std::int64_t At(std::int64_t x) const { return (x - column) * (x - column) + height; }
  };

  [[nodiscard]] std::size_t Size() const { return static_cast<std::size_t>(width_); }

  void MeasureByNeighbors(float* row) {
    float* const squares = near_squares_.data() + kNear;
    for (int x = 0; x < width_; ++x) squares[x] = row[x] * row[x];
    for (int i = 0; i < kNear; ++i) {
      squares[-1 - i] = wrap_ ? squares[width_ - 1 - i % width_] : kNone;
      squares[width_ + i] = wrap_ ? squares[i % width_] : kNone;
    }
    HWY_DYNAMIC_DISPATCH(MeasureNear)(squares, Size(), near_distances_.data());
    std::copy_n(near_distances_.data(), Size(), row);
  }

  void MeasureByEnvelope(float* row) {
    // In a row that tiles, every pixel from the column with the smallest vertical distance to its next copy is as near
    // to one of the two as to anything beyond them, so that one tile, started there, has all that matters.
    float* const lowest = wrap_ ? std::min_element(row, row + width_) : row;
    std::rotate(row, lowest, row + width_);
    Push(row);
    Spread();
    HWY_DYNAMIC_DISPATCH(TakeRoots)(squares_.data(), row, Size());
    std::rotate(row, row + width_ - (lowest - row), row + width_);
  }

  /// Builds the envelope.
  ///
  /// A column that is at least as far from a set pixel as the ones on both sides is ignored: to the left of it the
  /// left one's parabola is as low, to the right the right one's. It matters to its own pixel alone, where its vertical
  /// distance is compared in the end.
  void Push(const float* vertical) {
    Piece* const bottom = pieces_.data();
    Piece* end = bottom;
    const int columns = wrap_ ? width_ + 1 : width_;
    for (int i = 0; i < columns; ++i) {
      const float own = vertical[i == width_ ? 0 : i];
      const bool is_end = i == 0 || i + 1 >= width_;
      const bool is_summit = own == kNone || (!is_end && vertical[i - 1] <= own && vertical[i + 1] <= own);
      if (is_summit) continue;
      const auto distance = static_cast<std::int64_t>(own);
      Piece added{i, distance * distance, 0};
      while (end != bottom && end[-1].At(end[-1].from) > added.At(end[-1].from)) --end;
      if (end != bottom) {
        added.from = LastBefore(end[-1], added) + 1;
        if (added.from >= width_) continue;
      }
      *end++ = added;
    }
    count_ = static_cast<std::size_t>(end - bottom);
  }

  /// The last pixel at which `left` is as low as `right`; `left` is as low at its own first pixel. The quotient is
  /// rounded to a double, which never takes it up to the next whole number: both of its parts are whole and small.
  static std::int64_t LastBefore(const Piece& left, const Piece& right) {
    const std::int64_t over = (right.column - left.column) * (right.column + left.column) + right.height - left.height;
    return static_cast<std::int64_t>(static_cast<double>(over) / static_cast<double>(2 * (right.column - left.column)));
  }

  /// Reads the envelope off.
  void Spread() {
    double* const squares = squares_.data();
    for (std::size_t k = 0; k < count_; ++k) {
      const Piece& piece = pieces_[k];
      const std::int64_t to = k + 1 < count_ ? pieces_[k + 1].from : width_;
      for (std::int64_t x = piece.from; x < to; ++x) squares[x] = static_cast<double>(piece.At(x));
    }
  }

  int width_;
  bool wrap_;
  std::vector<Piece> pieces_;
  std::size_t count_ = 0;
  std::vector<double> squares_;
  std::vector<float> near_squares_;
  std::vector<float> near_distances_;
};

/// Which pixels are set, for the first pass.
SeedRow MakeSeeds(const Image& image, float level) {
  return [&image, level](int x, int y, int count, float* to) {
    const auto channels = static_cast<std::size_t>(image.GetNumChannels());
    const auto pixel =
        static_cast<std::size_t>(y) * static_cast<std::size_t>(image.GetSizeX()) + static_cast<std::size_t>(x);
    const float* from = image.GetConstArray() + pixel * channels;
    const auto pixels = static_cast<std::size_t>(count);
    if (image.GetColorMode() != ColorMode::kValue) {
      ConvertSamples(from, image.GetColorMode(), to, ColorMode::kValue, pixels);
      from = to;
    }
    for (std::size_t i = 0; i < pixels; ++i) to[i] = from[i] > level ? 0.0F : kNone;
  };
}

/// The result without samples.
std::unique_ptr<Image> MakeOutput(const Image& image) {
  auto output = std::make_unique<Image>(image.GetSizeX(), image.GetSizeY(), ColorMode::kValue, nullptr);
  PlaceLike(image, *output);
  return output;
}

/// Enough rows in one piece that the working memory of a thread pays.
constexpr std::size_t kGrainRows = 16;

/// The second pass; returns the largest distance.
float MeasureRows(Image& output, bool wrap) {
  const auto width = static_cast<std::size_t>(output.GetSizeX());
  float* samples = output.GetArray();
  const auto measure_rows = [&](std::size_t from, std::size_t to) {
    RowMeasure measure(output.GetSizeX(), wrap);
    for (std::size_t y = from; y < to; ++y) measure.Measure(samples + y * width);
    return MeasureRange(samples + from * width, (to - from) * width);
  };
  return ParallelReduce<SampleRange>(static_cast<std::size_t>(output.GetSizeY()), kGrainRows, measure_rows).high;
}

void Divide(Image& image, float divisor) {
  float* samples = image.GetArray();
  constexpr std::size_t kGrain = std::size_t{1} << 16;
  ParallelRows(image.GetNumSamples(), kGrain, [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) samples[i] /= divisor;
  });
}

std::unique_ptr<Image> Measure(const Image& image, float level, bool normalize, bool wrap) {
  std::unique_ptr<Image> output = MakeOutput(image);
  const int width = output->GetSizeX();
  const int height = output->GetSizeY();
  if (!normalize) output->SetValueLowHigh(0.0F, 0.0F);
  if (width == 0 || height == 0) return output;

  float* samples = output->GetArray();
  MeasureVerticalDistances(samples, width, height, wrap, MakeSeeds(image, level));
  // A set pixel anywhere gives its column a finite distance in every row, the first one included.
  const bool any_set = std::any_of(samples, samples + width, [](float distance) { return distance != kNone; });
  if (!any_set) {
    if (normalize) std::fill_n(samples, output->GetNumSamples(), 1.0F);
    return output;
  }
  const float largest = MeasureRows(*output, wrap);
  if (!normalize) {
    output->SetValueLowHigh(0.0F, largest);
  } else if (largest > 0.0F) {
    Divide(*output, largest);
  }
  return output;
}

}  // namespace
}  // namespace ScEng

Image* EuclideanDistance(const Image& image, float level, bool normalize, bool wrap) {
  return ScEng::NullIfOversize([&] { return ScEng::Measure(image, level, normalize, wrap).release(); });
}
#endif
