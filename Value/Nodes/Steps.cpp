// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Steps.h"

#include <cmath>
#include <limits>

namespace Steps {

std::int32_t GetCount(float steps) {
  constexpr std::int32_t kFewest = 2;
  constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
  if (!(steps >= 2.0F)) return kFewest;
  // The first float that does not fit is 2 to the 31.
  return steps >= 2147483648.0F ? kMost : static_cast<std::int32_t>(steps);
}

void Quantize(const float* samples, std::size_t stride, float* values, std::size_t pixels, std::int32_t count,
              float low, float high) {
  const float level = 1.0F / static_cast<float>(count - 1);
  const auto levels = static_cast<float>(count);
  const float span = high - low;
  const float inverse = 1.0F / span;
  const float spacing = span * level;
  for (std::size_t i = 0; i < pixels; ++i) {
    const float t = (samples[i * stride] - low) * inverse;
    const auto k = static_cast<float>(std::floor(static_cast<double>(t * levels)));
    values[i] = k * spacing + low;
  }
}

}  // namespace Steps
