// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/RangeModes.h"

#include <QCoreApplication>

#include "Host/Image/ColorMode.h"

namespace ScEng {
namespace {

QString Translate(const char* text) { return QCoreApplication::translate("ScEng::ViewerWidget", text); }

}  // namespace

QString NameRange(RangeSource source) {
  switch (source) {
    case RangeSource::kAbsolute: return Translate("Absolute");
    case RangeSource::kDeclared: return Translate("Declared");
    case RangeSource::kMeasured: return Translate("Lowest to highest");
    case RangeSource::kCustom: return Translate("Custom");
  }
  return {};
}

QString NameShading(Shading shading) {
  switch (shading) {
    case Shading::kPlain: return Translate("Plain");
    case Shading::kRamp: return Translate("Color ramp");
    case Shading::kHillshade: return Translate("Hillshade");
    case Shading::kSlope: return Translate("Slope");
  }
  return {};
}

QString NameChannels(ShownChannels channels, unsigned color_mode) {
  const bool is_color = color_mode == ColorMode::kColor;
  const bool is_signed = color_mode == ColorMode::kSigned;
  switch (channels) {
    case ShownChannels::kAll: return Translate("All channels");
    case ShownChannels::kFirst: return is_color ? Translate("Red") : is_signed ? Translate("X") : Translate("First");
    case ShownChannels::kSecond:
      return is_color ? Translate("Green") : is_signed ? Translate("Y") : Translate("Second");
    case ShownChannels::kThird: return is_color ? Translate("Blue") : is_signed ? Translate("Z") : Translate("Third");
    case ShownChannels::kFourth: return Translate("Opacity");
    case ShownChannels::kValue: return Translate("Value");
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
