// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "Host/Viewing/Api.h"
#include "Host/Viewing/Look.h"
#include "Host/Viewing/ViewImage.h"

namespace ScEng {

/// Which part of an image is seen, and how large.
struct ViewTransform {
  /// The place in the image, in its pixels from its top left corner, of the top left corner of what is drawn.
  double left = 0.0;
  double top = 0.0;
  /// Drawn pixels per pixel of the image; greater than 0, else nothing is drawn.
  double zoom = 1.0;
};

/// Pixels to draw into, row by row: red, green, blue and opacity of 8 bits each, in this order in memory. Color is not
/// multiplied with opacity.
struct DrawTarget {
  std::uint8_t* bytes = nullptr;
  int width = 0;
  int height = 0;
  std::size_t bytes_per_row = 0;
};

/// Draws an image as it is looked at. From afar its smaller copies are used, near by each pixel is a square; beside the
/// image everything is transparent. Takes time in proportion to the pixels drawn, whatever the size of the image; uses
/// the threads of the host.
HOST_VIEWING_API void DrawView(const ViewImage& image, const Look& look, const ViewTransform& transform,
                               const DrawTarget& target);

}  // namespace ScEng
