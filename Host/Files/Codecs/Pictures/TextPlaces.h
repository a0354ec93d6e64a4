// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Image/ImageMetadata.h"

namespace ScEng {

/// The most bytes that a block takes in a JPEG: a marker's, less the words that the block begins with.
inline constexpr std::size_t kMostJpegExif = 65527;
inline constexpr std::size_t kMostJpegXmp = 65504;

/// Puts each entry of the metadata where a format has a place for it: into the EXIF block what that has a tag for, a
/// comment as the user's comment there, and everything else into the XMP packet. What stays among the entries are the
/// comments of a JPEG, which has markers for them. What has no place is told in one note.
void PlaceTexts(std::string_view format, ImageMetadata& metadata, std::vector<std::string>& notes);

}  // namespace ScEng
