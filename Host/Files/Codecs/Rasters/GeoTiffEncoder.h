// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Host/Files/Codecs/Codec.h"

namespace ScEng {

/// See `ImageCodec::CheckCompression`; needs the drivers.
Status CheckGeoTiffCompression(const std::string& compression);

/// Makes the writer of a GeoTIFF: strips of rows, deflated unless something else is asked for. The same plan and
/// samples give the same bytes.
std::unique_ptr<ImageEncoder> CreateGeoTiff(const std::string& path, const WritePlan& plan,
                                            std::vector<std::string>& notes, Status& status);

}  // namespace ScEng
