// SPDX-License-Identifier: Apache-2.0
#include <cstdint>

#include "Host/Files/Codecs/Pictures/FileBytes.h"
#include "Host/Files/Codecs/Pictures/RowChecks.h"

namespace ScEng {
namespace {

constexpr std::uint32_t kPaletteKind = 1;
constexpr std::uint32_t kPackedPaletteKind = 9;

/// The header of a Targa, as far as a palette needs it.
struct TargaHeader {
  explicit TargaHeader(FileBytes& bytes) {
    id_bytes = bytes.Little(1);
    has_palette = bytes.Little(1) != 0;
    kind = bytes.Little(1);
    first = bytes.Little(2);
    colors = bytes.Little(2);
    color_bytes = (bytes.Little(1) + 7) / 8;
    bytes.Skip(4);
    width = bytes.Little(2);
    height = bytes.Little(2);
    index_bytes = (bytes.Little(1) + 7) / 8;
    flags = bytes.Little(1);
  }
  /// The pixel with a number in the order of the file, as "(x, y)" of the image as it is shown.
  [[nodiscard]] std::string ShowPixel(std::uint64_t number) const {
    constexpr std::uint64_t kFromRight = 0x10;
    constexpr std::uint64_t kFromTop = 0x20;
    const std::uint64_t column = number % width;
    const std::uint64_t row = number / width;
    const std::uint64_t x = (flags & kFromRight) != 0 ? width - 1 - column : column;
    const std::uint64_t y = (flags & kFromTop) != 0 ? row : height - 1 - row;
    return "(" + std::to_string(x) + ", " + std::to_string(y) + ")";
  }

  std::uint64_t id_bytes;
  bool has_palette;
  std::uint64_t kind;
  std::uint64_t first;
  std::uint64_t colors;
  std::uint64_t color_bytes;
  std::uint64_t width;
  std::uint64_t height;
  std::uint64_t index_bytes;
  std::uint64_t flags;
};

std::string FindIndexBeyond(FileBytes& bytes, const TargaHeader& header) {
  constexpr std::uint64_t kIsRun = 0x80;
  const std::uint64_t pixels = header.width * header.height;
  const bool is_packed = header.kind == kPackedPaletteKind;
  std::uint64_t literals = is_packed ? 0 : pixels;
  for (std::uint64_t pixel = 0; pixel < pixels;) {
    std::uint64_t count = 1;
    if (literals == 0) {
      const std::uint64_t code = bytes.Little(1);
      const std::uint64_t length = code % kIsRun + 1;
      if (code >= kIsRun) count = length;
      literals = code >= kIsRun ? 1 : length;
    }
    const std::uint64_t index = bytes.Little(header.index_bytes);
    // How many rows are there is told by the reader.
    if (bytes.IsAtEnd()) return {};
    if (index >= header.colors) {
      return "its pixel at " + header.ShowPixel(pixel) + " is " + std::to_string(index) + ", beyond its palette of " +
             std::to_string(header.colors) + " colors";
    }
    --literals;
    pixel += count;
  }
  return {};
}

}  // namespace

std::string FindTargaDamage(const std::filesystem::path& file) {
  FileBytes bytes(file);
  const TargaHeader header(bytes);
  if (bytes.IsAtEnd() || (header.kind != kPaletteKind && header.kind != kPackedPaletteKind)) return {};
  if (!header.has_palette || header.colors == 0) return "its pixels are colors of a palette, but it has none";
  if (header.index_bytes == 0 || header.index_bytes > 4) return "its header is damaged";
  // The reader takes the first color for one that is left out.
  if (header.first != 0) {
    return "its palette begins at color " + std::to_string(header.first) + "; only palettes that begin at 0 are read";
  }
  bytes.Skip(header.id_bytes + header.colors * header.color_bytes);
  return FindIndexBeyond(bytes, header);
}

}  // namespace ScEng
