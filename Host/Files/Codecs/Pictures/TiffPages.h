// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Pictures/TiffSamples.h"

namespace ScEng {

/// What the directory of a page of a TIFF says, beyond what the library of formats tells of it.
struct TiffPage {
  /// A smaller copy of another page.
  bool is_reduced = false;
  /// The first extra channel that is opacity, -1 for none.
  int opacity_channel = -1;
  bool is_multiplied = false;
  int orientation = 1;
  /// The blocks but EXIF, resolution and texts.
  ImageMetadata metadata;
  /// Where the samples are to be read by `TiffRows`.
  std::optional<TiffSamples> samples;
};

/// The directories of a TIFF in their order.
std::vector<TiffPage> ListTiffPages(const std::filesystem::path& file, std::size_t most);
void ApplyTiffPage(const TiffPage& page, FilePart& part);
/// Why the samples of the first page that has such a reason cannot be read; empty where none has.
std::string FindTiffTypeProblem(const std::filesystem::path& file);

/// Whether all strips or tiles of a page are there. Those that are packed as zlib streams are unpacked to their end,
/// since only there is the checksum that tells a damaged one, and the TIFF library does not go so far.
Status CheckTiffPage(const std::filesystem::path& file, std::uint32_t page);

}  // namespace ScEng
