// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace ScEng {

/// How the numbers of a channel lie in a pixel of a BMP.
struct BmpField {
  unsigned shift = 0;
  /// Zero where the pixel does not hold the channel.
  unsigned bits = 0;
};

enum class BmpPacking { kNone, kRuns8, kRuns4 };

struct BmpHeader {
  int size_x = 0;
  int size_y = 0;
  /// Whether the first row in the file is the lowest.
  bool is_bottom_up = true;
  unsigned pixel_bits = 0;
  BmpPacking packing = BmpPacking::kNone;
  std::uint64_t data = 0;
  /// Red, green, blue and opacity of pixels that are no indices.
  std::array<BmpField, 4> fields{};
  std::array<std::uint32_t, 2> pixels_per_meter{};
  /// Red, green and blue of indices.
  std::vector<std::array<std::uint8_t, 3>> palette;

  [[nodiscard]] bool IsIndexed() const { return pixel_bits <= 8; }
  [[nodiscard]] bool HasOpacity() const { return fields[3].bits > 0; }
  /// Rows are filled up to four bytes.
  [[nodiscard]] std::uint64_t GetRowBytes() const {
    return (static_cast<std::uint64_t>(size_x) * pixel_bits + 31) / 32 * 4;
  }
};

/// Reads the header and the palette; where they cannot be used, `problem` is the clause that says why.
BmpHeader ReadBmpHeader(const std::filesystem::path& file, std::string& problem);

}  // namespace ScEng
