// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

namespace ScEng {

/// An EXIF block taken apart for a TIFF, whose own directories take up what it holds.
struct ExifParts {
  struct Field {
    std::uint16_t tag = 0;
    std::uint16_t type = 0;
    std::uint32_t count = 0;
    /// In the order of bytes of the processor.
    std::vector<std::uint8_t> bytes;
  };
  /// The main directory without what a TIFF says itself: samples, resolution, other directories.
  std::vector<Field> image;
  std::vector<Field> photo;
  std::vector<Field> gps;
};

/// What cannot be read is left out.
ExifParts TakeExifApart(const std::vector<std::uint8_t>& exif);

/// A directory as it stands in a TIFF of the processor's order of bytes, with its values behind it, when its first byte
/// is byte `offset` of the file. `is_big` is for TIFF with offsets of 64 bits.
std::vector<std::uint8_t> MakeDirectory(std::vector<ExifParts::Field> fields, std::uint64_t offset, bool is_big);

}  // namespace ScEng
