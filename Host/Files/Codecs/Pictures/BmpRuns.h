// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

#include "Host/Files/Codecs/Pictures/BmpHeader.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// Unpacks the runs of a BMP into one index per pixel, the rows in the order of the file. Pixels that the runs leave
/// out are the first color.
Status UnpackBmpRuns(const std::vector<std::uint8_t>& packed, const BmpHeader& header,
                     std::vector<std::uint8_t>& indices);

}  // namespace ScEng
