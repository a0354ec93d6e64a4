// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/Look.h"

#include <algorithm>
#include <cmath>

#include "Host/Viewing/Ramps.h"
#include "Host/Viewing/ShownChannels.h"
#include "Host/Viewing/ViewImage.h"

namespace ScEng {
namespace {

/// -1 where the look names no channel that the image has.
int FindChannel(unsigned color_mode, const Look& look) {
  const int channel = static_cast<int>(look.channels) - static_cast<int>(ShownChannels::kFirst);
  return channel >= 0 && channel < ColorMode::GetNumChannels(color_mode) ? channel : -1;
}

ValueRange GetMeasuredRange(const ViewImage& image, const Look& look) {
  const ShownSamples shown = ChooseSamples(image.GetImage().GetColorMode(), look);
  SampleRange range;
  if (shown.is_value) {
    range = image.GetFigures().finite;
  } else {
    // Opacity has a range of its own.
    for (int c = 0; c < std::min(shown.count, 3); ++c) range.Include(image.GetChannelRange(shown.first_channel + c));
  }
  if (range.IsEmpty()) return {};
  return {range.low, range.high};
}

}  // namespace

ShownSamples ChooseSamples(unsigned color_mode, const Look& look) {
  const ShownSamples value = ChooseValue(color_mode, look);
  const bool shows_value = look.shading != Shading::kPlain || look.channels == ShownChannels::kValue ||
                           FindChannel(color_mode, look) >= 0 || ColorMode::GetNumChannels(color_mode) < 2;
  return shows_value ? value : ShownSamples{false, 0, ColorMode::GetNumChannels(color_mode)};
}

ShownSamples ChooseValue(unsigned color_mode, const Look& look) {
  const int channel = FindChannel(color_mode, look);
  return channel >= 0 ? ShownSamples{false, channel, 1} : ShownSamples{};
}

const std::vector<std::string>& GetRampNames() { return ListRamps(); }

unsigned GetRampColor(const std::string& ramp, double share) {
  const double cut = share > 0.0 ? std::min(share, 1.0) : 0.0;
  return FindRamp(ramp)[static_cast<std::size_t>(std::lround(cut * static_cast<double>(kRampColors - 1)))];
}

ValueRange GetShownRange(const ViewImage& image, const Look& look) {
  const Image& samples = image.GetImage();
  switch (look.range) {
    case RangeSource::kAbsolute: return {samples.GetColorMode() == ColorMode::kSigned ? -1.0F : 0.0F, 1.0F};
    case RangeSource::kDeclared: return {samples.GetValueLow(), samples.GetValueHigh()};
    case RangeSource::kMeasured: return GetMeasuredRange(image, look);
    case RangeSource::kCustom: return look.custom;
  }
  return {};
}

}  // namespace ScEng
