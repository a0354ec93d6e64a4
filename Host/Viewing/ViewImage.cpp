// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/ViewImage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <utility>

#include "Host/Util/Cancellation.h"
#include "Host/Util/ParallelReduce.h"
#include "Host/Viewing/LevelStack.h"
#include "Host/Viewing/Reduction.h"
#include "Host/Viewing/RowFigures.h"
#include "Host/Viewing/SmallCopy.h"

namespace ScEng {
namespace {

/// What is found in one pass over rows.
struct RowTotals {
  ValueTotals values;
  ChannelTotals channels;

  void Include(const RowTotals& other) {
    values.Include(other.values);
    channels.Include(other.channels);
  }
};

using Bars = std::array<std::uint64_t, ViewHistogram::kBars>;

struct BarTotals {
  Bars bars = {};

  void Include(const BarTotals& other) {
    for (std::size_t i = 0; i < bars.size(); ++i) bars[i] += other.bars[i];
  }
};

/// Counts the finite values of a row.
void CountRow(const float* values, std::size_t count, const SampleRange& range, Bars& bars) {
  const auto low = static_cast<double>(range.low);
  const double span = static_cast<double>(range.high) - low;
  const double bars_per_unit = span > 0.0 ? static_cast<double>(ViewHistogram::kBars) / span : 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    if (!std::isfinite(values[i])) continue;
    const auto bar = static_cast<int>((static_cast<double>(values[i]) - low) * bars_per_unit);
    ++bars[static_cast<std::size_t>(std::min(bar, static_cast<int>(ViewHistogram::kBars) - 1))];
  }
}

/// Short enough that a pass stops within some milliseconds, long enough that handing them out costs nothing.
constexpr std::size_t kPixelsPerPoll = std::size_t{1} << 16;

std::size_t GetGrain(int size_x) {
  return std::max<std::size_t>(1, kPixelsPerPoll / static_cast<std::size_t>(std::max(1, size_x)));
}

}  // namespace

struct ViewImage::Implementation {
  /// Sets a row of the copy.
  using SetRow = std::function<void(int row, float* to)>;

  Implementation(const ImageHeader& samples, const SetRow& set_row) : Implementation(samples, set_row, samples, 0) {}
  Implementation(const ImageHeader& samples, const SetRow& set_row, const ImageHeader& whole, int first)
      : levels(samples), header(whole), first_level(first) {
    MakeLevels(set_row);
    CountValues();
  }

  void MakeLevels(const SetRow& set_row);
  void CountValues();

  LevelStack levels;
  ImageHeader header;
  int first_level;
  ViewFigures figures;
  ViewHistogram histogram;
  std::array<SampleRange, 4> channels;
};

void ViewImage::Implementation::MakeLevels(const SetRow& set_row) {
  Image& image = levels.GetImage();
  const int size_y = image.GetSizeY();
  const auto size_x = static_cast<std::size_t>(image.GetSizeX());
  const std::size_t row_samples = size_x * static_cast<std::size_t>(image.GetNumChannels());
  const int strip_rows = levels.GetStripRows();
  const auto strips = static_cast<std::size_t>((size_y + strip_rows - 1) / strip_rows);
  float* const samples = levels.GetSamples();
  std::vector<double> sums(static_cast<std::size_t>(size_y));
  const auto make_strips = [&](std::size_t from, std::size_t to) {
    RowTotals totals;
    std::vector<float> buffer;
    const int end = std::min(size_y, static_cast<int>(to) * strip_rows);
    for (int y = static_cast<int>(from) * strip_rows; y < end; ++y) {
      PollCancellation();
      float* const row = samples + static_cast<std::size_t>(y) * row_samples;
      set_row(y, row);
      totals.channels.IncludeRow(row, size_x, image.GetNumChannels());
      const float* const values = GetValues(row, size_x, image.GetColorMode(), buffer);
      sums[static_cast<std::size_t>(y)] = totals.values.IncludeRow(values, size_x);
      levels.FinishRow(y);
    }
    return totals;
  };
  const auto totals = ParallelReduce<RowTotals>(strips, 1, make_strips);
  levels.FinishLevels();
  figures = MakeFigures(totals.values, sums);
  channels = totals.channels.finite;
  // A range that is known needs no pass that would write into the image.
  image.RememberSampleRange(totals.channels.all);
}

void ViewImage::Implementation::CountValues() {
  histogram.range = figures.finite;
  if (figures.finite.IsEmpty()) return;
  const Image& image = levels.GetImage();
  const auto size_x = static_cast<std::size_t>(image.GetSizeX());
  const std::size_t row_samples = size_x * static_cast<std::size_t>(image.GetNumChannels());
  const auto count_rows = [&](std::size_t from, std::size_t to) {
    BarTotals totals;
    std::vector<float> buffer;
    for (std::size_t y = from; y < to; ++y) {
      PollCancellation();
      const float* const row = image.GetConstArray() + y * row_samples;
      CountRow(GetValues(row, size_x, image.GetColorMode(), buffer), size_x, figures.finite, totals.bars);
    }
    return totals;
  };
  const auto totals =
      ParallelReduce<BarTotals>(static_cast<std::size_t>(image.GetSizeY()), GetGrain(image.GetSizeX()), count_rows);
  std::copy(totals.bars.begin(), totals.bars.end(), histogram.bars.begin());
}

std::shared_ptr<const ViewImage> ViewImage::Make(const Image& image) {
  return MakePreview(image, 0, image.GetImageHeader());
}

std::shared_ptr<const ViewImage> ViewImage::MakePreview(const Image& reduced, int halvings, const ImageHeader& header) {
  const bool is_of_size = reduced.GetSizeX() == HalveOften(header.size_x, halvings) &&
                          reduced.GetSizeY() == HalveOften(header.size_y, halvings);
  if (!is_of_size) throw std::invalid_argument("the preview is not of the size of the image");
  const std::size_t row_samples =
      static_cast<std::size_t>(reduced.GetSizeX()) * static_cast<std::size_t>(reduced.GetNumChannels());
  const float* const samples = reduced.GetConstArray();
  const auto copy_row = [&](int row, float* to) {
    if (row_samples == 0) return;
    std::memcpy(to, samples + static_cast<std::size_t>(row) * row_samples, row_samples * sizeof(float));
  };
  auto implementation = std::make_unique<Implementation>(reduced.GetImageHeader(), copy_row, header, halvings);
  implementation->levels.GetImage().SetMetadata(reduced.GetMetadata());
  return std::shared_ptr<const ViewImage>(new ViewImage(std::move(implementation)));
}

std::shared_ptr<const ViewImage> ViewImage::MakeSmall(const Image& image, int size) {
  const SmallCopy copy(image, size);
  const auto set_row = [&](int row, float* to) { copy.SetRow(row, to); };
  return std::shared_ptr<const ViewImage>(new ViewImage(std::make_unique<Implementation>(copy.GetHeader(), set_row)));
}

ViewImage::ViewImage(std::unique_ptr<const Implementation> implementation)
    : implementation_(std::move(implementation)) {}

ViewImage::~ViewImage() = default;

const Image& ViewImage::GetImage() const { return implementation_->levels.GetLevel(0); }

const ImageHeader& ViewImage::GetHeader() const { return implementation_->header; }

int ViewImage::GetFirstLevel() const { return implementation_->first_level; }

int ViewImage::GetNumLevels() const { return GetFirstLevel() + implementation_->levels.GetNumLevels(); }

ViewImage::Level ViewImage::GetLevel(int level) const {
  const Image& image = implementation_->levels.GetLevel(std::max(0, level - GetFirstLevel()));
  return {image.GetConstArray(), image.GetSizeX(), image.GetSizeY()};
}

SampleRange ViewImage::GetChannelRange(int channel) const {
  return channel >= 0 && channel < GetImage().GetNumChannels()
             ? implementation_->channels[static_cast<std::size_t>(channel)]
             : SampleRange{};
}

const ViewFigures& ViewImage::GetFigures() const { return implementation_->figures; }

const ViewHistogram& ViewImage::GetHistogram() const { return implementation_->histogram; }

ViewFigures MeasureBox(const ViewImage& image, const PixelBox& box) {
  const Image& samples = image.GetImage();
  const std::int64_t step = image.GetReduction();
  const auto cut = [&](int from, int length, int size) {
    const std::int64_t end = std::clamp<std::int64_t>(std::int64_t{from} + std::max(0, length), 0, size);
    return std::pair<std::size_t, std::size_t>(std::clamp(from, 0, size) / step, (end + step - 1) / step);
  };
  const auto [left, right] = cut(box.left, box.width, image.GetHeader().size_x);
  const auto [top, bottom] = cut(box.top, box.height, image.GetHeader().size_y);
  if (left >= right || top >= bottom) return {};

  const auto channels = static_cast<std::size_t>(samples.GetNumChannels());
  const std::size_t width = right - left;
  const float* const first =
      samples.GetConstArray() + (top * static_cast<std::size_t>(samples.GetSizeX()) + left) * channels;
  std::vector<double> sums(bottom - top);
  const auto measure = [&](std::size_t from, std::size_t to) {
    ValueTotals totals;
    std::vector<float> buffer;
    for (std::size_t y = from; y < to; ++y) {
      PollCancellation();
      const float* const row = first + y * static_cast<std::size_t>(samples.GetSizeX()) * channels;
      sums[y] = totals.IncludeRow(GetValues(row, width, samples.GetColorMode(), buffer), width);
    }
    return totals;
  };
  return MakeFigures(ParallelReduce<ValueTotals>(sums.size(), GetGrain(static_cast<int>(width)), measure), sums);
}

}  // namespace ScEng
