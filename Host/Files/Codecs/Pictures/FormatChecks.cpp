// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/FormatChecks.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <optional>
#include <vector>

#include "Host/Files/Codecs/Pictures/RowChecks.h"

namespace ScEng {
namespace {

constexpr const char* kDamagedHeader = "its header is damaged";
constexpr const char* kDamagedData = "its data are damaged or shortened";

/// The first bytes of a file; what lies beyond them reads as zero, and is asked for before it matters.
class Bytes {
 public:
  Bytes(const std::filesystem::path& file, std::uint64_t most) : file_size_(std::filesystem::file_size(file)) {
    std::ifstream stream(file, std::ios::binary);
    bytes_.resize(std::min(file_size_, most));
    stream.read(bytes_.data(), static_cast<std::streamsize>(bytes_.size()));
    bytes_.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
  }
  [[nodiscard]] std::uint64_t GetFileSize() const { return file_size_; }
  [[nodiscard]] bool Has(std::uint64_t at, std::uint64_t size) const {
    return at <= bytes_.size() && size <= bytes_.size() - at;
  }
  [[nodiscard]] std::uint32_t Get(std::size_t at) const {
    return at < bytes_.size() ? static_cast<unsigned char>(bytes_[at]) : 0U;
  }
  [[nodiscard]] std::uint32_t Big(std::size_t at, std::size_t size) const {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < size; ++i) number = (number << 8) | Get(at + i);
    return number;
  }
  [[nodiscard]] std::uint32_t Little(std::size_t at, std::size_t size) const {
    std::uint32_t number = 0;
    for (std::size_t i = size; i > 0; --i) number = (number << 8) | Get(at + i - 1);
    return number;
  }

 private:
  std::uint64_t file_size_;
  std::vector<char> bytes_;
};

/// Walks a packed row of SGI: whether it gives exactly `width` samples of `size` bytes.
bool IsWholeSgiRow(const Bytes& bytes, std::size_t at, std::size_t length, std::size_t width, std::size_t size) {
  constexpr std::uint32_t kCount = 0x7F;
  constexpr std::uint32_t kIsLiteral = 0x80;
  const std::size_t end = at + length;
  std::size_t samples = 0;
  while (at + size <= end) {
    const std::uint32_t code = bytes.Big(at, size);
    at += size;
    const std::size_t count = code & kCount;
    if (count == 0) break;
    const std::size_t taken = (code & kIsLiteral) != 0 ? count * size : size;
    if (taken > end - at) return false;
    at += taken;
    samples += count;
    if (samples > width) return false;
  }
  return samples == width;
}

std::string CheckSgi(const Bytes& bytes) {
  constexpr std::size_t kHeader = 512;
  const bool is_packed = bytes.Get(2) == 1;
  const std::size_t size = bytes.Get(3);
  const std::uint32_t dimensions = bytes.Big(4, 2);
  const std::size_t width = bytes.Big(6, 2);
  const std::size_t height = dimensions >= 2 ? bytes.Big(8, 2) : 1;
  const std::size_t channels = dimensions >= 3 ? bytes.Big(10, 2) : 1;
  if (!bytes.Has(0, kHeader) || (size != 1 && size != 2)) return kDamagedHeader;
  if (!is_packed) return {};
  const std::size_t rows = height * channels;
  if (!bytes.Has(kHeader, std::uint64_t{rows} * 8)) return kDamagedData;
  for (std::size_t i = 0; i < rows; ++i) {
    const std::size_t at = bytes.Big(kHeader + i * 4, 4);
    const std::size_t length = bytes.Big(kHeader + (rows + i) * 4, 4);
    if (!bytes.Has(at, length) || !IsWholeSgiRow(bytes, at, length, width, size)) return kDamagedData;
  }
  return {};
}

struct PicPacket {
  bool is_packed;
  std::size_t pixel_bytes;
};

/// The channels of a Softimage picture come in packets, each of which is stored by itself in every row.
std::optional<std::vector<PicPacket>> ReadPicPackets(const Bytes& bytes, std::size_t& at) {
  constexpr std::size_t kMostPackets = 8;
  constexpr std::uint32_t kMixedRuns = 2;
  std::vector<PicPacket> packets;
  bool is_chained = true;
  while (is_chained) {
    if (!bytes.Has(at, 4) || packets.size() == kMostPackets) return std::nullopt;
    is_chained = bytes.Get(at) != 0;
    const std::uint32_t channels = bytes.Get(at + 3);
    std::size_t count = 0;
    for (std::uint32_t bit = 0x10; bit <= 0x80; bit <<= 1) count += (channels & bit) != 0 ? 1 : 0;
    const std::uint32_t kind = bytes.Get(at + 2) & 3U;
    if (count == 0 || bytes.Get(at + 1) != 8 || (kind != 0 && kind != kMixedRuns)) return std::nullopt;
    packets.push_back({kind == kMixedRuns, count});
    at += 4;
  }
  return packets;
}

bool WalkPicRow(const Bytes& bytes, const PicPacket& packet, std::size_t width, std::size_t& at) {
  constexpr std::uint32_t kLongRun = 128;
  if (!packet.is_packed) {
    const bool is_there = bytes.Has(at, std::uint64_t{width} * packet.pixel_bytes);
    at += width * packet.pixel_bytes;
    return is_there;
  }
  std::size_t pixels = 0;
  while (pixels < width) {
    const std::uint32_t code = bytes.Get(at);
    const bool is_long = code == kLongRun;
    const std::size_t count = code < kLongRun ? code + 1 : is_long ? bytes.Big(at + 1, 2) : code - kLongRun + 1;
    const std::size_t size = (is_long ? 3 : 1) + packet.pixel_bytes * (code < kLongRun ? count : 1);
    if (count == 0 || !bytes.Has(at, size)) return false;
    at += size;
    pixels += count;
  }
  return pixels == width;
}

std::string CheckPic(const Bytes& bytes) {
  constexpr std::size_t kWidthAt = 92;
  constexpr std::size_t kPacketsAt = 104;
  const std::size_t width = bytes.Big(kWidthAt, 2);
  const std::size_t height = bytes.Big(kWidthAt + 2, 2);
  std::size_t at = kPacketsAt;
  const auto packets = ReadPicPackets(bytes, at);
  if (!packets || width == 0 || height == 0) return kDamagedHeader;
  for (std::size_t row = 0; row < height; ++row) {
    for (const PicPacket& packet : *packets) {
      if (!WalkPicRow(bytes, packet, width, at)) {
        return "its data are damaged or shortened: " + std::to_string(row) + " of " + std::to_string(height) +
               " rows are there";
      }
    }
  }
  return {};
}

/// Whether a picture of an icon fits its entry in the table: the reader takes sizes from both.
bool IsWholeIcon(const Bytes& bytes, std::size_t entry) {
  constexpr std::uint32_t kPngMark = 0x89504E47;
  constexpr std::array<std::uint32_t, 5> kDepths{1, 4, 8, 24, 32};
  constexpr std::uint64_t kHeader = 40;
  const std::uint32_t width = bytes.Get(entry) == 0 ? 256 : bytes.Get(entry);
  const std::uint32_t height = bytes.Get(entry + 1) == 0 ? 256 : bytes.Get(entry + 1);
  const std::uint64_t size = bytes.Little(entry + 8, 4);
  const std::size_t at = bytes.Little(entry + 12, 4);
  if (!bytes.Has(at, std::max(size, kHeader))) return false;
  if (bytes.Big(at, 4) == kPngMark) return true;
  const std::uint32_t depth = bytes.Little(at + 14, 2);
  if (bytes.Little(at, 4) != kHeader || bytes.Little(at + 4, 4) != width || bytes.Little(at + 8, 4) != 2 * height ||
      std::find(kDepths.begin(), kDepths.end(), depth) == kDepths.end()) {
    return false;
  }
  const std::uint64_t colors = depth > 8 ? 0 : bytes.Little(at + 32, 4) != 0 ? bytes.Little(at + 32, 4) : 1U << depth;
  // Rows are filled up to 32 bits, in the picture and in its mask.
  const std::uint64_t row = (std::uint64_t{width} * depth + 31) / 32 * 4;
  return colors <= 256 && bytes.Has(at, kHeader + colors * 4 + row * height);
}

std::string CheckIcon(const Bytes& bytes) {
  constexpr std::size_t kEntry = 16;
  const std::size_t count = bytes.Little(4, 2);
  if (count == 0 || !bytes.Has(6, count * kEntry)) return kDamagedHeader;
  for (std::size_t i = 0; i < count; ++i) {
    if (!IsWholeIcon(bytes, 6 + i * kEntry)) return "its picture " + std::to_string(i) + " is damaged or shortened";
  }
  return {};
}

std::string CheckCineon(const Bytes& bytes) {
  constexpr std::size_t kChannelsAt = 193;
  constexpr std::size_t kElementsAt = 196;
  constexpr std::size_t kElement = 28;
  constexpr std::array<std::uint32_t, 4> kDepths{8, 10, 12, 16};
  const std::size_t channels = bytes.Get(kChannelsAt);
  if (channels == 0 || channels > 8 || !bytes.Has(0, 1024)) return kDamagedHeader;
  for (std::size_t i = 0; i < channels; ++i) {
    const std::uint32_t depth = bytes.Get(kElementsAt + i * kElement + 2);
    if (std::find(kDepths.begin(), kDepths.end(), depth) == kDepths.end()) {
      return "it has " + std::to_string(depth) + " bits per sample; 8, 10, 12 and 16 are read";
    }
  }
  return {};
}

std::string CheckDpx(const Bytes& bytes) {
  constexpr std::uint32_t kBigMark = 0x53445058;
  constexpr std::uint32_t kUnset = 0xFFFFFFFF;
  constexpr std::size_t kUserSizeAt = 32;
  const bool is_big = bytes.Big(0, 4) == kBigMark;
  const std::uint32_t user_size = is_big ? bytes.Big(kUserSizeAt, 4) : bytes.Little(kUserSizeAt, 4);
  return user_size == kUnset || user_size <= bytes.GetFileSize() ? std::string() : kDamagedHeader;
}

/// The header is lines of text up to an empty one.
std::string CheckHdr(const Bytes& bytes) {
  std::string line;
  for (std::size_t at = 0; bytes.Has(at, 1); ++at) {
    const char c = static_cast<char>(bytes.Get(at));
    if (c != '\n') {
      line += c;
      continue;
    }
    if (line.empty()) break;
    if (line == "FORMAT=32-bit_rle_xyze") return "its colors are XYZ, which is not supported; RGB is read";
    line.clear();
  }
  return {};
}

constexpr std::uint32_t MakeTag(const char* text) {
  std::uint32_t tag = 0;
  for (std::size_t i = 0; i < 4; ++i) tag = (tag << 8) | static_cast<unsigned char>(text[i]);
  return tag;
}

/// Finds a chunk of an IFF file from a place on; a group is entered where it is of the wanted kind. The answer is where
/// the chunk's own bytes begin.
std::optional<std::size_t> FindChunk(const Bytes& bytes, std::size_t at, const char* tag, const char* group) {
  while (bytes.Has(at, 12)) {
    const std::size_t size = bytes.Big(at + 4, 4);
    if (bytes.Big(at, 4) == MakeTag(tag) && (group == nullptr || bytes.Big(at + 8, 4) == MakeTag(group))) {
      return at + (group == nullptr ? 8 : 12);
    }
    at += 8 + (size + 3) / 4 * 4;
  }
  return std::nullopt;
}

/// The tiles of a picture, each of which must lie in it.
bool HasGoodTiles(const Bytes& bytes, std::size_t at, std::uint32_t width, std::uint32_t height) {
  std::size_t tiles = 0;
  for (; bytes.Has(at, 16); at += 8 + (std::size_t{bytes.Big(at + 4, 4)} + 3) / 4 * 4) {
    if (bytes.Big(at, 4) != MakeTag("RGBA")) continue;
    const std::uint32_t left = bytes.Big(at + 8, 2);
    const std::uint32_t top = bytes.Big(at + 10, 2);
    const std::uint32_t right = bytes.Big(at + 12, 2);
    const std::uint32_t bottom = bytes.Big(at + 14, 2);
    if (left > right || top > bottom || right >= width || bottom >= height) return false;
    if (!bytes.Has(at + 8, bytes.Big(at + 4, 4))) return false;
    ++tiles;
  }
  return tiles > 0;
}

std::string CheckIff(const Bytes& bytes) {
  constexpr std::uint32_t kColor = 1;
  constexpr std::uint32_t kBlack = 16;
  const auto header = FindChunk(bytes, 12, "TBHD", nullptr);
  if (!header || !bytes.Has(*header, 32)) return kDamagedHeader;
  const std::uint32_t width = bytes.Big(*header, 4);
  const std::uint32_t height = bytes.Big(*header + 4, 4);
  const std::uint32_t flags = bytes.Big(*header + 12, 4);
  const bool is_sound = (flags & kColor) != 0 && (flags & kBlack) == 0 && bytes.Big(*header + 16, 2) <= 1 &&
                        bytes.Big(*header + 20, 4) <= 1 && bytes.Big(*header + 24, 4) == 0 &&
                        bytes.Big(*header + 28, 4) == 0;
  if (!is_sound) return kDamagedHeader;
  const auto tiles = FindChunk(bytes, 12, "FOR4", "TBMP");
  return tiles && HasGoodTiles(bytes, *tiles, width, height) ? std::string() : kDamagedData;
}

}  // namespace

std::string FindDamage(const std::filesystem::path& file, std::string_view format) {
  if (format == "targa") return FindTargaDamage(file);
  if (format == "psd") return FindPsdDamage(file);
  struct Check {
    std::string_view format;
    std::string (*find)(const Bytes&);
    /// How much of the file it looks at.
    std::uint64_t most;
  };
  constexpr std::uint64_t kHeader = 2048;
  constexpr std::uint64_t kWhole = std::uint64_t{1} << 32;
  constexpr std::array<Check, 7> kChecks{{{"hdr", CheckHdr, kHeader},
                                          {"sgi", CheckSgi, kWhole},
                                          {"softimage", CheckPic, kWhole},
                                          {"ico", CheckIcon, kWhole},
                                          {"iff", CheckIff, kWhole},
                                          {"cineon", CheckCineon, kHeader},
                                          {"dpx", CheckDpx, kHeader}}};
  for (const Check& check : kChecks) {
    if (format == check.format) return check.find(Bytes(file, check.most));
  }
  return {};
}

}  // namespace ScEng
