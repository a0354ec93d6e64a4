// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Host/Image/ImageMetadata.h"

namespace ScEng {

/// Reads the EXIF block of a file, upright and without what describes the stored samples, and with `reads_all` also its
/// other blocks, its comment, and the resolution and texts of the EXIF block. What is damaged is left out with a note.
/// The answer is the orientation that the EXIF block gives.
int ReadBlocks(const std::filesystem::path& file, bool reads_all, ImageMetadata& metadata,
               std::vector<std::string>& notes);

/// The EXIF block for a new file: that of the metadata, with their resolution. Empty where there is nothing to say; a
/// resolution alone counts only with `for_resolution`, for formats that have no other place for it.
std::vector<std::uint8_t> MakeExifBlock(const ImageMetadata& metadata, bool for_resolution);

/// Whether a tag of the main directory says how the samples are stored, where they lie on the ground, or where other
/// directories and blocks are.
bool IsStructuralTag(std::uint16_t tag);

/// The IPTC records in the frame in which JPEG holds them.
std::vector<std::uint8_t> FrameIptc(const std::vector<std::uint8_t>& iptc);

}  // namespace ScEng
