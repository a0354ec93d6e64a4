// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Host/Files/Api.h"

namespace ScEng {

/// Takes out of an XMP packet what describes the stored samples of the file that it was in: orientation, size, layout
/// and thumbnails. Everything else stays to the byte.
HOST_FILES_API void RemoveSampleDescription(std::string& packet);

}  // namespace ScEng
