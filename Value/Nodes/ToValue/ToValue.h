// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "Value/Core/ValueRange.h"

/// The sample loops of the To Value node. A pixel's value is `ScEng::ValueOfPixel`; a colour mode is known when it is
/// colour, signed or value.
namespace ToValue {

/// The lowest and highest value of `pixels` pixels (NaN never counts). Of a mode that is not known the range stays as
/// it starts.
ValueRange Measure(const float* samples, unsigned color_mode, std::size_t pixels);

/// The range that values of a mode are meant to span: (0, 1) of colour, (-1, 1) of the signed mode, the declared range
/// of the value mode, the measured one of any other.
ValueRange GetNominalRange(unsigned color_mode, const ValueRange& declared, const ValueRange& measured);

/// The range that is mapped. With automatic levels it is the measured one, its lower end replaced by the nominal one
/// when less than 0.0001 apart.
ValueRange ChooseRange(const ValueRange& nominal, const ValueRange& measured, bool auto_level);

/// Writes the value of each pixel, with `source` mapped onto [low, high] linearly and without limits:
/// (v - source.low) * (1 / (source.high - source.low)) * (high - low) + low. Of a mode that is not known every value
/// is taken to be `low`. Returns what `Measure` does, found on the way.
ValueRange Map(const float* samples, unsigned color_mode, float* values, std::size_t pixels, const ValueRange& source,
               float low, float high);

}  // namespace ToValue
