// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

#include "Host/Files/ImageFile.h"
#include "Host/Image/Image.h"

namespace ScEng {

/// An image file that was written.
struct WrittenFile {
  std::filesystem::path file;
  /// Of its first layer.
  ImageHeader header;
  /// What its samples are stored as.
  SampleType type = SampleType::kFloat;
};

}  // namespace ScEng
