// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "Host/Files/Codecs/Codec.h"

namespace ScEng {

/// Opens an image file with the codec that its content asks for. Null, and a clause without the name of the file, where
/// no codec can read it. Regular files alone are opened: others could have no end.
std::unique_ptr<ImageDecoder> OpenImageFile(const std::filesystem::path& file, std::string& problem);

}  // namespace ScEng
