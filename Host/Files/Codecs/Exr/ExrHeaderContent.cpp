// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <limits>

#include "Host/Files/Codecs/Exr/ExrHeader.h"

namespace ScEng::Exr {
namespace {

constexpr std::size_t kMostChannels = 1024;
// The library counts the bytes of a row, and columns and rows, in numbers of 32 bits.
constexpr std::int64_t kMostPixels = std::numeric_limits<std::int32_t>::max() / 2;

Status Damaged(const std::string& what) { return Status::Error("the file is damaged: " + what); }

/// The attribute of this name and type and of at least so many bytes.
const HeaderAttribute* FindOfType(const PartHeader& part, const char* name, const char* type, std::size_t least) {
  const HeaderAttribute* attribute = part.Find(name);
  return attribute != nullptr && attribute->type == type && attribute->bytes.size() >= least ? attribute : nullptr;
}

Status ReadBox(const PartHeader& part, const char* name, const char* title, Box& box) {
  const HeaderAttribute* attribute = FindOfType(part, name, "box2i", 16);
  if (attribute == nullptr) return Damaged(std::string("it has no ") + title);
  const std::uint8_t* bytes = attribute->bytes.data();
  box = {GetInt(bytes), GetInt(bytes + 4), GetInt(bytes + 8), GetInt(bytes + 12)};
  const bool is_sane = box.GetWidth() >= 1 && box.GetHeight() >= 1 && box.GetWidth() <= kMostPixels &&
                       box.GetHeight() <= kMostPixels && std::abs(std::int64_t{box.left}) <= kMostPixels &&
                       std::abs(std::int64_t{box.top}) <= kMostPixels;
  return is_sane ? Status() : Damaged(std::string("its ") + title + " makes no sense");
}

Status ReadChannels(PartHeader& part) {
  constexpr std::size_t kAfterName = 16;
  const HeaderAttribute* attribute = FindOfType(part, "channels", "chlist", 1);
  if (attribute == nullptr) return Damaged("it has no list of channels");
  auto at = attribute->bytes.begin();
  const auto end = attribute->bytes.end();
  while (at != end && *at != 0) {
    const auto name_end = std::find(at, end, std::uint8_t{0});
    if (static_cast<std::size_t>(end - name_end) < kAfterName + 1) return Damaged("its list of channels is cut off");
    const std::uint8_t* numbers = &*name_end + 1;
    const std::int32_t type = GetInt(numbers);
    HeaderChannel channel{std::string(at, name_end), static_cast<PixelType>(type), GetInt(numbers + 8),
                          GetInt(numbers + 12)};
    if (type < 0 || type > 2 || channel.step_x < 1 || channel.step_y < 1) {
      return Damaged("its channel \"" + channel.name + "\" makes no sense");
    }
    if (part.channels.size() == kMostChannels) {
      return Status::Error("it has more than " + std::to_string(kMostChannels) + " channels");
    }
    part.channels.push_back(std::move(channel));
    at = name_end + 1 + kAfterName;
  }
  return {};
}

std::uint64_t CountTiles(std::int64_t pixels, std::int64_t tile) {
  return static_cast<std::uint64_t>((pixels + tile - 1) / tile);
}

/// The size of a level along one axis.
std::int64_t GetLevelSize(std::int64_t size, int level, bool rounds_up) {
  const std::int64_t step = std::int64_t{1} << level;
  return std::max<std::int64_t>((size + (rounds_up ? step - 1 : 0)) / step, 1);
}

int CountLevels(std::int64_t size, bool rounds_up) {
  int levels = 1;
  while ((rounds_up ? (size + 1) / 2 : size / 2) >= 1 && size > 1) {
    size = rounds_up ? (size + 1) / 2 : size / 2;
    ++levels;
  }
  return levels;
}

Status ReadTiles(PartHeader& part) {
  const HeaderAttribute* attribute = FindOfType(part, "tiles", "tiledesc", 9);
  if (attribute == nullptr) return Damaged("it does not say how large its tiles are");
  part.tile_width = static_cast<std::int64_t>(GetNumber(attribute->bytes.data(), 4));
  part.tile_height = static_cast<std::int64_t>(GetNumber(attribute->bytes.data() + 4, 4));
  const unsigned mode = attribute->bytes[8] & 0xFU;
  const bool rounds_up = (attribute->bytes[8] >> 4) == 1;
  constexpr std::int64_t kMostTile = 1 << 16;
  // A tile is unpacked as a whole, however little of it lies within the image.
  constexpr std::int64_t kMostTileBytes = std::int64_t{512} << 20;
  if (part.tile_width < 1 || part.tile_height < 1 || part.tile_width > kMostTile || part.tile_height > kMostTile ||
      mode > 2) {
    return Damaged("the size of its tiles makes no sense");
  }
  std::int64_t pixel_bytes = 0;
  for (const HeaderChannel& channel : part.channels) pixel_bytes += channel.type == PixelType::kHalf ? 2 : 4;
  if (part.tile_width * part.tile_height > kMostTileBytes / std::max<std::int64_t>(pixel_bytes, 1)) {
    return Status::Error("it has tiles of more than 512 MB");
  }
  const std::int64_t width = part.data_window.GetWidth();
  const std::int64_t height = part.data_window.GetHeight();
  const int levels_x = mode == 0 ? 1 : CountLevels(mode == 1 ? std::max(width, height) : width, rounds_up);
  const int levels_y = mode == 2 ? CountLevels(height, rounds_up) : 1;
  for (int y = 0; y < levels_y; ++y) {
    for (int x = 0; x < levels_x; ++x) {
      part.chunk_count += CountTiles(GetLevelSize(width, x, rounds_up), part.tile_width) *
                          CountTiles(GetLevelSize(height, mode == 2 ? y : x, rounds_up), part.tile_height);
    }
  }
  return {};
}

PartType GetType(bool is_tiled, bool is_deep, const PartHeader& part) {
  const HeaderAttribute* attribute = part.Find("type");
  if (attribute == nullptr) return is_deep ? PartType::kDeep : is_tiled ? PartType::kTiles : PartType::kScanLines;
  const std::string type(attribute->bytes.begin(), attribute->bytes.end());
  if (type == "deepscanline" || type == "deeptile") return PartType::kDeep;
  // The flags of a file of one part count more than the name of its type.
  if (is_tiled || type == "tiledimage") return PartType::kTiles;
  return type == "scanlineimage" ? PartType::kScanLines : PartType::kUnknown;
}

/// Deep parts are not read, and those of an unknown type neither; how many chunks they have they say themselves.
Status ReadChunkCount(PartHeader& part) {
  const HeaderAttribute* attribute = FindOfType(part, "chunkCount", "int", 4);
  const std::int32_t count = attribute == nullptr ? 0 : GetInt(attribute->bytes.data());
  if (count < 0) return Damaged("its number of chunks makes no sense");
  part.chunk_count = static_cast<std::uint64_t>(count);
  return {};
}

}  // namespace

Status InterpretHeader(bool is_tiled, bool is_deep, PartHeader& part) {
  if (const HeaderAttribute* name = part.Find("name")) part.name.assign(name->bytes.begin(), name->bytes.end());
  part.type = GetType(is_tiled, is_deep, part);
  if (Status status = ReadBox(part, "dataWindow", "data window", part.data_window); status.IsError()) return status;
  if (Status status = ReadBox(part, "displayWindow", "display window", part.display_window); status.IsError()) {
    return status;
  }
  if (Status status = ReadChannels(part); status.IsError()) return status;
  if (part.type == PartType::kDeep || part.type == PartType::kUnknown) return ReadChunkCount(part);
  const HeaderAttribute* compression = FindOfType(part, "compression", "compression", 1);
  if (compression == nullptr) return Damaged("it does not say how it is packed");
  part.compression = compression->bytes[0];
  if (part.compression >= std::size(kCompressions)) {
    return Status::Error("it is packed in a way that is not known here");
  }
  if (part.type == PartType::kTiles) return ReadTiles(part);
  part.chunk_count = CountTiles(part.data_window.GetHeight(), kCompressions[part.compression].rows_in_chunk);
  return {};
}

}  // namespace ScEng::Exr
