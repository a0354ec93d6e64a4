// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/RowBlend.h"

#include <array>
#include <cmath>
#include <cstddef>

#include "Host/Viewing/AllFinite.h"

namespace ScEng {
namespace {

float BlendFinite(const RowPair& rows, std::size_t first, std::size_t second, float weight) {
  const std::array<float, 4> samples = {rows.top[first], rows.top[second], rows.bottom[first], rows.bottom[second]};
  const auto right = static_cast<double>(weight);
  const auto down = static_cast<double>(rows.weight);
  const std::array<double, 4> weights = {(1.0 - right) * (1.0 - down), right * (1.0 - down), (1.0 - right) * down,
                                         right * down};
  const std::size_t nearest = (weight >= 0.5F ? 1U : 0U) + (rows.weight >= 0.5F ? 2U : 0U);
  if (!std::isfinite(samples[nearest])) return samples[nearest];
  double sum = 0.0;
  double sum_of_weights = 0.0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (!std::isfinite(samples[i])) continue;
    sum += static_cast<double>(samples[i]) * weights[i];
    sum_of_weights += weights[i];
  }
  return static_cast<float>(sum / sum_of_weights);
}

}  // namespace

void BlendRow(const RowPair& rows, const DrawnPlaces& columns, bool blends, std::vector<float>& scratch, float* to) {
  const std::size_t count = columns.places.size();
  const DrawnPlace* const places = columns.places.data();
  const int low = columns.low;
  if (!blends) {
    for (std::size_t i = 0; i < count; ++i) to[i] = rows.top[places[i].first - low];
    return;
  }
  const float* row = rows.top;
  if (rows.weight > 0.0F) {
    const auto width = static_cast<std::size_t>(columns.high - low);
    scratch.resize(width);
    for (std::size_t i = 0; i < width; ++i) {
      scratch[i] = rows.top[i] + (rows.bottom[i] - rows.top[i]) * rows.weight;
    }
    row = scratch.data();
  }
  for (std::size_t i = 0; i < count; ++i) {
    const float first = row[places[i].first - low];
    to[i] = first + (row[places[i].second - low] - first) * places[i].weight;
  }
  if (AllFinite(to, count)) return;
  for (std::size_t i = 0; i < count; ++i) {
    if (std::isfinite(to[i])) continue;
    to[i] = BlendFinite(rows, static_cast<std::size_t>(places[i].first - low),
                        static_cast<std::size_t>(places[i].second - low), places[i].weight);
  }
}

}  // namespace ScEng
