// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <optional>
#include <string>

#include "Host/Image/Image.h"
#include "Host/Viewing/Api.h"
#include "Host/Viewing/ViewImage.h"

namespace ScEng {

/// What a pixel holds.
struct PixelReading {
  /// Whether the image has such a pixel. If not, all that follows the place is 0.
  bool is_inside = false;
  int x = 0;
  int y = 0;
  int channels = 0;
  float samples[4] = {};
  /// The `ValueOfPixel`.
  float value = 0.0F;
};

/// The pixel in a column and a row of the image, counted from its top left corner. Of a preview, the sample that stands
/// for it.
HOST_VIEWING_API PixelReading ReadPixel(const ViewImage& image, int x, int y);

/// The shortest decimal number that reads back as the same sample: "0.1", "1e+20"; "nan", "inf" and "-inf".
HOST_VIEWING_API std::string FormatSample(float sample);

/// The place on the ground of a point in document coordinates, as its x and y in the coordinate system of the image.
/// Empty where the metadata of the image has no transform.
HOST_VIEWING_API std::optional<std::array<double, 2>> GetMapPoint(const Image& image, double document_x,
                                                                  double document_y);

}  // namespace ScEng
