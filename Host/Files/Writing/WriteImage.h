// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Host/Files/Codecs/CodecTable.h"
#include "Host/Files/ImageFile.h"

namespace ScEng {

/// Encodes layers in a format into the file at `path`, which exists and is empty. One layer without a name is a plain
/// image. `type` receives the type of the stored samples. The error and the notes are clauses without the name of the
/// file. May throw `std::bad_alloc`.
Status EncodeImage(const std::vector<ImageLayer>& layers, const FormatRow& format, const std::filesystem::path& path,
                   std::vector<std::string>& notes, SampleType& type);

/// The format in which an image is written to a file of that name, or null and the reason. Of formats with one ending,
/// the image's metadata chooses: what lies on the ground is written as a raster.
const FormatRow* ChooseFormat(const std::filesystem::path& file, const std::vector<ImageLayer>& layers,
                              std::string& problem);

}  // namespace ScEng
