// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/ImageFile.h"

namespace ScEng {

/// Reads the image that `options` ask for from an open file. Null, and a clause without the name of the file, where
/// that fails. May throw `std::bad_alloc`.
ImagePtr ReadImage(ImageDecoder& decoder, const ReadOptions& options, std::string& problem,
                   std::vector<std::string>& notes);

}  // namespace ScEng
