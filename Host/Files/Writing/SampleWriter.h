// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Image/Image.h"

namespace ScEng {

/// What the channels of a file are made of.
struct ChannelSource {
  const Image* image = nullptr;
  /// A channel of the image; a negative number for a constant 0.
  int channel = 0;
  /// Whether the sample is multiplied by the pixel's opacity.
  bool multiplies = false;
};

/// How values become stored numbers.
struct SampleRule {
  StoredType type = StoredType::kFloat;
  /// Whether integers hold the value itself, and not the share of the type's largest.
  bool stores_values = false;
  /// What NaN becomes; in float files without it NaN stays.
  std::optional<double> nodata;
  /// The largest float of a format whose floats are neither negative nor infinite nor NaN; nothing for all others.
  std::optional<float> most;
};

/// What had to be changed on the way, in samples.
struct SampleChanges {
  std::uint64_t cut = 0;
  std::uint64_t nan = 0;
  /// Finite numbers that are infinite as halves.
  std::uint64_t infinite = 0;
  /// Numbers that happen to be the one that NaN becomes.
  std::uint64_t taken_for_nan = 0;
};

/// Writes all rows of a file whose box in the document is `box`. A source that does not reach a pixel gives its image's
/// outside value there. The answer is that of the encoder.
Status WriteSamples(ImageEncoder& encoder, const Box2I& box, const std::vector<ChannelSource>& sources,
                    const SampleRule& rule, SampleChanges& changes);

}  // namespace ScEng
