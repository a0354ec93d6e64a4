// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Writing/SampleWriter.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <type_traits>

#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

// Rows that are converted at a time, so that no second image of the file's own samples is needed.
constexpr std::int64_t kRowsAtOnce = 64;

// The middle between the largest half, 65504, and what would come next: from here on infinity is nearer.
constexpr float kInfiniteHalf = 65520.0F;

template <class Sample>
class Converter {
 public:
  Converter(const Box2I& box, const std::vector<ChannelSource>& sources, const SampleRule& rule)
      : box_(box), sources_(sources), stores_values_(rule.stores_values), is_half_(rule.type == StoredType::kHalf) {
    if constexpr (std::is_integral_v<Sample>) {
      if (rule.nodata && *rule.nodata >= kLowest && *rule.nodata <= kLargest) {
        nan_ = static_cast<Sample>(std::floor(*rule.nodata));
        has_nodata_ = true;
      }
    } else {
      replaces_nan_ = rule.nodata.has_value();
      has_nodata_ = replaces_nan_;
      most_ = rule.most;
      replaces_nan_ = replaces_nan_ || most_;
      nan_ = static_cast<Sample>(rule.nodata.value_or(0.0));
    }
  }

  Status Write(ImageEncoder& encoder, SampleChanges& changes) {
    const std::size_t row_samples = static_cast<std::size_t>(box_.Width()) * sources_.size();
    std::vector<Sample> rows(row_samples * static_cast<std::size_t>(std::min(kRowsAtOnce, box_.Height())));
    for (std::int64_t begin = 0; begin < box_.Height(); begin += kRowsAtOnce) {
      const std::int64_t end = std::min(begin + kRowsAtOnce, box_.Height());
      std::atomic<std::uint64_t> cut{0};
      std::atomic<std::uint64_t> nan{0};
      std::atomic<std::uint64_t> infinite{0};
      std::atomic<std::uint64_t> taken_for_nan{0};
      ParallelRows(static_cast<std::size_t>(end - begin), 4, [&](std::size_t from, std::size_t to) {
        SampleChanges here;
        for (std::size_t row = from; row < to; ++row) {
          ConvertRow(begin + static_cast<std::int64_t>(row), rows.data() + row * row_samples, here);
        }
        cut += here.cut;
        nan += here.nan;
        infinite += here.infinite;
        taken_for_nan += here.taken_for_nan;
      });
      changes.cut += cut;
      changes.nan += nan;
      changes.infinite += infinite;
      changes.taken_for_nan += taken_for_nan;
      const Status status = encoder.WriteRows(static_cast<int>(begin), static_cast<int>(end), rows.data());
      if (status.IsError()) return status;
    }
    return {};
  }

 private:
  static constexpr double kLowest = std::is_integral_v<Sample> ? std::numeric_limits<Sample>::lowest() : 0.0;
  static constexpr double kLargest = std::is_integral_v<Sample> ? std::numeric_limits<Sample>::max() : 0.0;

  void ConvertRow(std::int64_t row, Sample* to, SampleChanges& changes) const {
    for (std::size_t c = 0; c < sources_.size(); ++c) ConvertChannel(sources_[c], row, to + c, changes);
  }

  void ConvertChannel(const ChannelSource& source, std::int64_t row, Sample* to, SampleChanges& changes) const {
    const std::size_t stride = sources_.size();
    const Box2I own = source.image->GetBox();
    const std::int64_t y = row + box_.top - own.top;
    const bool has_row = y >= 0 && y < own.Height() && source.channel >= 0;
    const auto channels = static_cast<std::size_t>(source.image->GetNumChannels());
    const float outside = source.channel >= 0 ? source.image->GetOutsideValue() : 0.0F;
    for (std::int64_t x = 0; x < box_.Width(); ++x) {
      const std::int64_t column = x + box_.left - own.left;
      float sample = outside;
      if (has_row && column >= 0 && column < own.Width()) {
        const float* pixel =
            source.image->GetConstArray() +
            (static_cast<std::size_t>(y) * static_cast<std::size_t>(own.Width()) + static_cast<std::size_t>(column)) *
                channels;
        sample = pixel[source.channel];
        if (source.multiplies) sample *= pixel[3];
      } else if (source.multiplies) {
        sample *= outside;
      }
      to[static_cast<std::size_t>(x) * stride] = Convert(sample, changes);
    }
  }

  Sample Convert(float sample, SampleChanges& changes) const {
    if (std::isnan(sample)) {
      ++changes.nan;
      if constexpr (std::is_floating_point_v<Sample>) return replaces_nan_ ? nan_ : sample;
      return nan_;
    }
    const Sample converted = ConvertNumber(sample, changes);
    if (has_nodata_ && converted == nan_) ++changes.taken_for_nan;
    return converted;
  }

  Sample ConvertNumber(float sample, SampleChanges& changes) const {
    if constexpr (std::is_floating_point_v<Sample>) {
      const float size = std::abs(sample);
      if (is_half_ && size >= kInfiniteHalf && size <= std::numeric_limits<float>::max()) ++changes.infinite;
      if (!most_ || (sample >= 0.0F && sample <= *most_)) return sample;
      ++changes.cut;
      return sample < 0.0F ? 0.0F : *most_;
    } else {
      const double low = stores_values_ ? kLowest : 0.0;
      const double number = stores_values_ ? static_cast<double>(sample) : static_cast<double>(sample) * kLargest;
      const double rounded = std::floor(number + 0.5);
      const bool is_outside = stores_values_ ? rounded < low || rounded > kLargest : sample < 0.0F || sample > 1.0F;
      if (is_outside) ++changes.cut;
      return static_cast<Sample>(std::clamp(rounded, low, kLargest));
    }
  }

  const Box2I& box_;
  const std::vector<ChannelSource>& sources_;
  bool stores_values_;
  bool is_half_;
  bool replaces_nan_ = true;
  bool has_nodata_ = false;
  std::optional<float> most_;
  Sample nan_ = 0;
};

}  // namespace

Status WriteSamples(ImageEncoder& encoder, const Box2I& box, const std::vector<ChannelSource>& sources,
                    const SampleRule& rule, SampleChanges& changes) {
  switch (rule.type) {
    case StoredType::kUint8: return Converter<std::uint8_t>(box, sources, rule).Write(encoder, changes);
    case StoredType::kUint16: return Converter<std::uint16_t>(box, sources, rule).Write(encoder, changes);
    case StoredType::kInt16: return Converter<std::int16_t>(box, sources, rule).Write(encoder, changes);
    default: return Converter<float>(box, sources, rule).Write(encoder, changes);
  }
}

}  // namespace ScEng
