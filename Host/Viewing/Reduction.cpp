// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/Reduction.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "Host/Viewing/AllFinite.h"

namespace ScEng {
namespace {

float GetMeanOfFinite(float a, float b, float c, float d) {
  double sum = 0.0;
  int count = 0;
  for (const float sample : {a, b, c, d}) {
    if (!std::isfinite(sample)) continue;
    sum += static_cast<double>(sample);
    ++count;
  }
  return count > 0 ? static_cast<float>(sum / count) : a;
}

/// Whole pairs of pixels, at most `kRun`.
template <int kChannels>
void ReduceRun(const float* top, const float* bottom, std::size_t pixels, float* to) {
  for (std::size_t i = 0; i < pixels; ++i) {
    for (std::size_t c = 0; c < kChannels; ++c) {
      const std::size_t left = 2 * i * kChannels + c;
      const std::size_t right = left + kChannels;
      to[i * kChannels + c] = ((top[left] + top[right]) + (bottom[left] + bottom[right])) * 0.25F;
    }
  }
  if (AllFinite(to, pixels * kChannels)) return;
  for (std::size_t i = 0; i < pixels; ++i) {
    for (std::size_t c = 0; c < kChannels; ++c) {
      const std::size_t left = 2 * i * kChannels + c;
      const std::size_t right = left + kChannels;
      to[i * kChannels + c] = GetMeanOfFinite(top[left], top[right], bottom[left], bottom[right]);
    }
  }
}

template <int kChannels>
void Reduce(const float* top, const float* bottom, std::size_t size, float* to) {
  // Runs so short that one sample that is not finite makes little work.
  constexpr std::size_t kRun = 64;
  const std::size_t pairs = size / 2;
  for (std::size_t from = 0; from < pairs; from += kRun) {
    const std::size_t offset = 2 * from * kChannels;
    ReduceRun<kChannels>(top + offset, bottom + offset, std::min(kRun, pairs - from), to + from * kChannels);
  }
  if (size % 2 == 0) return;
  for (std::size_t c = 0; c < kChannels; ++c) {
    const std::size_t last = (size - 1) * kChannels + c;
    to[pairs * kChannels + c] = GetMeanOfFinite(top[last], top[last], bottom[last], bottom[last]);
  }
}

}  // namespace

void ReduceRows(const float* top, const float* bottom, int size, int channels, float* to) {
  const auto count = static_cast<std::size_t>(size);
  if (channels == 1) Reduce<1>(top, bottom, count, to);
  if (channels == 2) Reduce<2>(top, bottom, count, to);
  if (channels == 4) Reduce<4>(top, bottom, count, to);
}

}  // namespace ScEng
