// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/RowFigures.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Host/Image/Image.h"

namespace ScEng {
namespace {

/// A multiple of the channels of every mode, so that each lane meets one channel, and so many that compilers make
/// vectors of them.
constexpr std::size_t kLanes = 64;

double Sum(const float* values, std::size_t count) {
  std::array<double, 4> sums = {};
  std::size_t i = 0;
  for (; i + 4 <= count; i += 4) {
    for (std::size_t lane = 0; lane < 4; ++lane) sums[lane] += static_cast<double>(values[i + lane]);
  }
  for (; i < count; ++i) sums[0] += static_cast<double>(values[i]);
  return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

struct LaneRanges {
  std::array<float, kLanes> low;
  std::array<float, kLanes> high;
  bool is_finite = false;
};

/// Lanes of samples as far as they go in whole groups.
LaneRanges MeasureLanes(const float* samples, std::size_t count) {
  LaneRanges ranges;
  ranges.low.fill(std::numeric_limits<float>::infinity());
  ranges.high.fill(-std::numeric_limits<float>::infinity());
  std::array<float, kLanes> strange = {};
  for (std::size_t i = 0; i + kLanes <= count; i += kLanes) {
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
      const float sample = samples[i + lane];
      ranges.low[lane] = sample < ranges.low[lane] ? sample : ranges.low[lane];
      ranges.high[lane] = sample > ranges.high[lane] ? sample : ranges.high[lane];
      strange[lane] += sample - sample;
    }
  }
  ranges.is_finite = std::all_of(strange.begin(), strange.end(), [](float number) { return number == 0.0F; });
  return ranges;
}

void IncludeFinite(float sample, SampleRange& range) {
  // The sum turns -0.0 into +0.0.
  if (std::isfinite(sample)) range.Include({sample + 0.0F, sample + 0.0F});
}

}  // namespace

const float* GetValues(const float* pixels, std::size_t count, unsigned color_mode, std::vector<float>& buffer) {
  if (color_mode == ColorMode::kValue) return pixels;
  buffer.resize(count);
  const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(color_mode));
  for (std::size_t i = 0; i < count; ++i) buffer[i] = ValueOfPixel(pixels + i * channels, color_mode);
  return buffer.data();
}

void ValueTotals::Include(const ValueTotals& other) {
  finite.Include(other.finite);
  values += other.values;
  nan += other.nan;
  infinite += other.infinite;
}

double ValueTotals::IncludeRow(const float* row, std::size_t count) {
  values += count;
  finite.Include(MeasureFiniteRange(row, count));
  const double sum = Sum(row, count);
  if (std::isfinite(sum)) return sum;
  double finite_sum = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    if (std::isnan(row[i])) ++nan;
    if (std::isinf(row[i])) ++infinite;
    if (std::isfinite(row[i])) finite_sum += static_cast<double>(row[i]);
  }
  return finite_sum;
}

ViewFigures MakeFigures(const ValueTotals& totals, const std::vector<double>& row_sums) {
  ViewFigures figures;
  figures.finite = totals.finite;
  figures.values = totals.values;
  figures.nan = totals.nan;
  figures.infinite = totals.infinite;
  const std::uint64_t count = totals.values - totals.nan - totals.infinite;
  double sum = 0.0;
  for (const double row_sum : row_sums) sum += row_sum;
  if (count > 0) figures.mean = sum / static_cast<double>(count);
  return figures;
}

void ChannelTotals::Include(const ChannelTotals& other) {
  for (std::size_t c = 0; c < finite.size(); ++c) finite[c].Include(other.finite[c]);
  all.Include(other.all);
}

void ChannelTotals::IncludeRow(const float* pixels, std::size_t count, int channels) {
  const auto step = static_cast<std::size_t>(channels);
  const std::size_t samples = count * step;
  const LaneRanges lanes = MeasureLanes(pixels, samples);
  std::size_t i = 0;
  if (lanes.is_finite) {
    i = samples / kLanes * kLanes;
    for (std::size_t lane = 0; i > 0 && lane < kLanes; ++lane) {
      finite[lane % step].Include({lanes.low[lane] + 0.0F, lanes.high[lane] + 0.0F});
    }
  } else {
    all.Include(MeasureRange(pixels, samples));
  }
  for (; i < samples; ++i) {
    IncludeFinite(pixels[i], finite[i % step]);
    if (!std::isnan(pixels[i])) all.Include({pixels[i] + 0.0F, pixels[i] + 0.0F});
  }
  for (std::size_t c = 0; c < step; ++c) all.Include(finite[c]);
}

}  // namespace ScEng
