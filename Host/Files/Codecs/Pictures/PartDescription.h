// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <OpenImageIO/imageio.h>

#include <string_view>

#include "Host/Files/Codecs/Codec.h"

namespace ScEng {

/// What the library of formats says of a part of a file, in this system's words. `has_blocks` tells that its metadata
/// are read as blocks from the file itself, so that those of the library are not taken.
FilePart DescribePart(std::string_view format, const OIIO::ImageSpec& spec, bool has_blocks);

}  // namespace ScEng
