// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ToValue.h"

#include "Host/Image/Image.h"
#include "Host/Math/Constants.h"

namespace ToValue {

Range Reduce(const float* samples, unsigned color_mode, float* values, std::size_t pixels) {
  Range range{ScEng::Math<float>::MAX_REAL, ScEng::Math<float>::MIN_REAL};
  const bool is_known =
      color_mode == ColorMode::kColor || color_mode == ColorMode::kSigned || color_mode == ColorMode::kValue;
  if (!is_known) return range;
  const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(color_mode));
  for (std::size_t i = 0; i < pixels; ++i) {
    const float value = ScEng::ValueOfPixel(samples + i * channels, color_mode);
    values[i] = value;
    if (value < range.from) range.from = value;
    if (value > range.to) range.to = value;
  }
  return range;
}

Range GetNominalRange(unsigned color_mode, float declared_low, float declared_high, const Range& measured) {
  switch (color_mode) {
    case ColorMode::kColor: return {0.0F, 1.0F};
    case ColorMode::kSigned: return {-1.0F, 1.0F};
    case ColorMode::kValue: return {declared_low, declared_high};
    default: return measured;
  }
}

Range ChooseRange(const Range& nominal, const Range& measured, bool auto_level) {
  if (!auto_level) return nominal;
  constexpr float kFlat = 0.0001F;
  return measured.to - measured.from < kFlat ? Range{nominal.from, measured.to} : measured;
}

void Remap(float* values, std::size_t count, const Range& source, float low, float high) {
  const float scale = 1.0F / (source.to - source.from);
  const float span = high - low;
  for (std::size_t i = 0; i < count; ++i) values[i] = (values[i] - source.from) * scale * span + low;
}

}  // namespace ToValue
