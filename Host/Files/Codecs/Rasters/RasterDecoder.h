// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "Host/Files/Codecs/Codec.h"

namespace ScEng {

/// Opens a raster; null and a clause where that fails.
std::unique_ptr<ImageDecoder> OpenRasterFile(const std::filesystem::path& file, const std::string& format,
                                             Status& status);

}  // namespace ScEng
