// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "Host/Image/Image.h"
#include "Host/Image/ImageMetadata.h"
#include "Python/Module/Samples.h"

namespace ValuePython {

/// What the class `Image` of Python holds. It does not change; copies share the samples.
///
/// The host's own images count their references without regard to threads, so each evaluation gets one of its own that
/// borrows these samples.
struct SharedImage {
  ImageHeader header;
  Samples samples;
  std::shared_ptr<const ScEng::ImageMetadata> metadata;
  /// The lowest and highest sample, where that is known and the samples cannot change any more.
  std::optional<ScEng::SampleRange> sample_range;

  [[nodiscard]] std::size_t GetNumChannels() const {
    return static_cast<std::size_t>(ColorMode::GetNumChannels(header.color_mode));
  }
  [[nodiscard]] std::size_t GetNumSamples() const;

  /// The image for one evaluation, on this thread alone.
  [[nodiscard]] ImagePtr Lend() const;
  /// Takes an image over. Samples of one that somebody else keeps as well are copied.
  static SharedImage Take(ImagePtr image);
  /// An image of the same samples, for whoever may keep it longer than the thread that has the given one. Borrowed
  /// samples are shared, others copied.
  static SharedImage Keep(const Image& image);
};

}  // namespace ValuePython
