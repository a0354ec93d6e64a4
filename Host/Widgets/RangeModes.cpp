// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/RangeModes.h"

#include <QCoreApplication>

#include "Host/Image/ColorMode.h"

namespace ScEng {
namespace {

struct RangeModes {
  Q_DECLARE_TR_FUNCTIONS(ScEng::RangeModes)
};

}  // namespace

QString NameRange(RangeSource source) {
  switch (source) {
    case RangeSource::kAbsolute: return RangeModes::tr("Absolute");
    case RangeSource::kDeclared: return RangeModes::tr("Declared");
    case RangeSource::kMeasured: return RangeModes::tr("Lowest to highest");
    case RangeSource::kCustom: return RangeModes::tr("Custom");
  }
  return {};
}

QString NameShading(Shading shading) {
  switch (shading) {
    case Shading::kPlain: return RangeModes::tr("Plain");
    case Shading::kRamp: return RangeModes::tr("Color ramp");
    case Shading::kHillshade: return RangeModes::tr("Hillshade");
    case Shading::kSlope: return RangeModes::tr("Slope");
  }
  return {};
}

QString NameChannels(ShownChannels channels, unsigned color_mode) {
  const bool is_color = color_mode == ColorMode::kColor;
  const bool is_signed = color_mode == ColorMode::kSigned;
  switch (channels) {
    case ShownChannels::kAll: return RangeModes::tr("All channels");
    case ShownChannels::kFirst:
      return is_color ? RangeModes::tr("Red") : is_signed ? RangeModes::tr("X") : RangeModes::tr("First");
    case ShownChannels::kSecond:
      return is_color ? RangeModes::tr("Green") : is_signed ? RangeModes::tr("Y") : RangeModes::tr("Second");
    case ShownChannels::kThird:
      return is_color ? RangeModes::tr("Blue") : is_signed ? RangeModes::tr("Z") : RangeModes::tr("Third");
    case ShownChannels::kFourth: return RangeModes::tr("Opacity");
    case ShownChannels::kValue: return RangeModes::tr("Value");
  }
  return {};
}

bool HasChannels(ShownChannels channels, unsigned color_mode) {
  const int count = ColorMode::GetNumChannels(color_mode);
  if (channels == ShownChannels::kAll) return true;
  if (channels == ShownChannels::kValue) return count > 1;
  return count > 1 && static_cast<int>(channels) - static_cast<int>(ShownChannels::kFirst) < count;
}

}  // namespace ScEng
