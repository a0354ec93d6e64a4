// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <array>

#include "Host/Viewing/Look.h"

namespace ScEng {

// What people read for the choices of a look, in the order of lists.

inline constexpr std::array kRangeSources{RangeSource::kAbsolute, RangeSource::kDeclared, RangeSource::kMeasured,
                                          RangeSource::kCustom};
inline constexpr std::array kShadings{Shading::kPlain, Shading::kRamp, Shading::kHillshade, Shading::kSlope};

[[nodiscard]] QString NameRange(RangeSource source);
[[nodiscard]] QString NameShading(Shading shading);
/// A channel of a color mode: "Red" in colour, "X" in the signed mode.
[[nodiscard]] QString NameChannels(ShownChannels channels, unsigned color_mode);
/// Whether images of a mode have those channels.
[[nodiscard]] bool HasChannels(ShownChannels channels, unsigned color_mode);

}  // namespace ScEng
