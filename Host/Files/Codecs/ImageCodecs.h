// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Host/Files/FileErrors.h"
#include "Host/Files/ImageFile.h"
#include "Host/Image/Image.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// The image formats, in a module of its own that is loaded with the first image file.
///
/// The library of formats behind it brings more than two hundred others along, and loading them costs more time than
/// all else that a program does at its start. Commands that touch no image file do without.
struct ImageCodecs {
  /// As `ReadImageFile`, of a file that exists.
  ImagePtr (*decode)(const std::filesystem::path& file, ReadMode mode, Status& status, std::vector<std::string>& notes);
  /// Encodes an image in the format that the ending of `file` names, into what is opened under `path`.
  Status (*encode)(const Image& image, const std::filesystem::path& file, const std::string& path, SampleType type,
                   std::vector<std::string>& notes);
};

}  // namespace ScEng

/// The one entry point of the module.
extern "C" const ScEng::ImageCodecs* GetImageCodecs();
