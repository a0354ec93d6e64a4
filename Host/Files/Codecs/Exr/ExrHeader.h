// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Util/Status.h"

// The headers of an EXR file. They are looked at here before the library sees them, so that nothing is allocated for
// what the file cannot hold, and so that attributes are known byte by byte.

namespace ScEng::Exr {

using Bytes = std::vector<std::uint8_t>;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePointer = std::unique_ptr<std::FILE, FileCloser>;

struct HeaderAttribute {
  std::string name;
  std::string type;
  Bytes bytes;
};

struct Box {
  std::int32_t left = 0;
  std::int32_t top = 0;
  /// Inclusive.
  std::int32_t right = 0;
  std::int32_t bottom = 0;

  [[nodiscard]] std::int64_t GetWidth() const { return std::int64_t{right} - left + 1; }
  [[nodiscard]] std::int64_t GetHeight() const { return std::int64_t{bottom} - top + 1; }
};

enum class PixelType : std::uint32_t { kUint = 0, kHalf = 1, kFloat = 2 };

struct HeaderChannel {
  std::string name;
  PixelType type = PixelType::kHalf;
  /// Only columns and rows whose number is a multiple of these have a sample.
  std::int32_t step_x = 1;
  std::int32_t step_y = 1;

  [[nodiscard]] bool IsSubsampled() const { return step_x != 1 || step_y != 1; }
};

enum class PartType : std::uint8_t { kScanLines, kTiles, kDeep, kUnknown };

/// A way of packing, by its number in the file.
struct CompressionRow {
  const char* name;
  int rows_in_chunk;
};
inline constexpr CompressionRow kCompressions[] = {{"none", 1},  {"rle", 1},    {"zips", 1}, {"zip", 16},
                                                   {"piz", 32},  {"pxr24", 16}, {"b44", 32}, {"b44a", 32},
                                                   {"dwaa", 32}, {"dwab", 256}};

struct PartHeader {
  std::vector<HeaderAttribute> attributes;
  PartType type = PartType::kScanLines;
  std::string name;
  Box data_window;
  Box display_window;
  std::size_t compression = 0;
  std::vector<HeaderChannel> channels;
  std::int64_t tile_width = 0;
  std::int64_t tile_height = 0;
  std::uint64_t chunk_count = 0;
  /// Where the offsets of its chunks begin in the file.
  std::uint64_t table_position = 0;

  [[nodiscard]] const HeaderAttribute* Find(std::string_view attribute_name) const;
  /// How many rows belong together in the file.
  [[nodiscard]] std::int64_t GetRowsInChunk() const {
    return type == PartType::kTiles ? tile_height : kCompressions[compression].rows_in_chunk;
  }
};

struct FileHeader {
  bool is_multipart = false;
  std::uint64_t size = 0;
  std::vector<PartHeader> parts;
};

/// A number of 1 to 8 bytes, the lowest first.
std::uint64_t GetNumber(const std::uint8_t* bytes, std::size_t size);
std::int32_t GetInt(const std::uint8_t* bytes);
float GetFloat(const std::uint8_t* bytes);

/// Reads all headers of an open file, and refuses those that cannot be true.
Status ReadFileHeader(std::FILE* file, FileHeader& header);

/// Makes sense of the attributes of a part: windows, channels, tiles and the number of chunks.
Status InterpretHeader(bool is_tiled, bool is_deep, PartHeader& part);

}  // namespace ScEng::Exr
