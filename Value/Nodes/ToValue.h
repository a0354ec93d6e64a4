// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

/// The sample loops of the To Value node.
namespace ToValue {

struct Range {
  float from = 0.0F;
  float to = 0.0F;
};

/// Writes the value of each of `pixels` pixels to `values` and returns their lowest and highest (NaN never counts). Of
/// a colour mode that is not colour, signed or value nothing is written, and the range stays as it starts: from the
/// largest float to its negative.
Range Reduce(const float* samples, unsigned color_mode, float* values, std::size_t pixels);

/// The range that values of a mode are meant to span: (0, 1) of colour, (-1, 1) of the signed mode, the declared range
/// of the value mode, the measured one of any other.
Range GetNominalRange(unsigned color_mode, float declared_low, float declared_high, const Range& measured);

/// The range that is mapped. With automatic levels it is the measured one, its lower end replaced by the nominal one
/// when less than 0.0001 apart.
Range ChooseRange(const Range& nominal, const Range& measured, bool auto_level);

/// Maps `source` onto [low, high] linearly and without limits: (v - from) * scale * (high - low) + low.
void Remap(float* values, std::size_t count, const Range& source, float low, float high);

}  // namespace ToValue
