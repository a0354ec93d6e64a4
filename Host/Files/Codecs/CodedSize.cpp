// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/CodedSize.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace ScEng {
namespace {

using Bytes = std::vector<unsigned char>;

/// Up to `most` bytes from `at` on; what is behind the block is not given.
class Block {
 public:
  Block(std::istream& file, std::uint64_t offset, std::uint64_t size) : file_(file), offset_(offset), size_(size) {}

  [[nodiscard]] Bytes Get(std::uint64_t at, std::size_t most) const {
    Bytes bytes(static_cast<std::size_t>(std::min<std::uint64_t>(most, size_ - std::min(at, size_))));
    file_.clear();
    file_.seekg(static_cast<std::streamoff>(offset_ + at));
    file_.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(file_.gcount(), 0)));
    return bytes;
  }

 private:
  std::istream& file_;
  std::uint64_t offset_;
  std::uint64_t size_;
};

std::uint32_t Big16(const Bytes& bytes, std::size_t at) { return std::uint32_t{bytes[at]} << 8 | bytes[at + 1]; }

std::uint32_t Little(const Bytes& bytes, std::size_t at, std::size_t size) {
  std::uint32_t number = 0;
  for (std::size_t i = size; i > 0; --i) number = number << 8 | bytes[at + i - 1];
  return number;
}

/// Whether a marker begins a frame; three of their numbers mean something else.
bool BeginsFrame(unsigned marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

std::optional<BlockSize> FindJpegSize(const Block& block) {
  constexpr int kMostSegments = 1000;
  constexpr std::size_t kFrameStart = 9;
  std::uint64_t at = 2;
  for (int i = 0; i < kMostSegments; ++i) {
    const Bytes bytes = block.Get(at, kFrameStart);
    if (bytes.size() < 4 || bytes[0] != 0xFF) return std::nullopt;
    const unsigned marker = bytes[1];
    if (BeginsFrame(marker)) {
      if (bytes.size() < kFrameStart) return std::nullopt;
      return BlockSize{Big16(bytes, 7), Big16(bytes, 5)};
    }
    // Markers may be filled up with further bytes of 0xFF.
    at += marker == 0xFF ? 1 : 2 + std::uint64_t{Big16(bytes, 2)};
  }
  return std::nullopt;
}

std::optional<BlockSize> FindWebpSize(const Block& block) {
  constexpr std::size_t kStart = 30;
  constexpr std::size_t kChunkAt = 12;
  const Bytes bytes = block.Get(0, kStart);
  if (bytes.size() < kStart) return std::nullopt;
  const std::string kind(bytes.begin() + kChunkAt, bytes.begin() + kChunkAt + 4);
  constexpr std::uint32_t kMost = 0x3FFF;
  if (kind == "VP8 ") return BlockSize{Little(bytes, 26, 2) & kMost, Little(bytes, 28, 2) & kMost};
  if (kind == "VP8X") return BlockSize{Little(bytes, 24, 3) + 1, Little(bytes, 27, 3) + 1};
  if (kind != "VP8L") return std::nullopt;
  const std::uint32_t sizes = Little(bytes, 21, 4);
  return BlockSize{(sizes & kMost) + 1, (sizes >> 14 & kMost) + 1};
}

std::string Show(BlockSize size) { return std::to_string(size.width) + " x " + std::to_string(size.height); }

}  // namespace

BlockCoding GetBlockCoding(std::uint16_t compression) {
  constexpr std::uint16_t kJpeg = 7;
  constexpr std::uint16_t kWebp = 50001;
  if (compression == kJpeg) return BlockCoding::kJpeg;
  return compression == kWebp ? BlockCoding::kWebp : BlockCoding::kOther;
}

std::string FindCodedSizeProblem(std::istream& file, std::uint64_t offset, std::uint64_t size, BlockCoding coding,
                                 BlockSize needed) {
  if (coding == BlockCoding::kOther) return {};
  const Block block(file, offset, size);
  const auto found = coding == BlockCoding::kJpeg ? FindJpegSize(block) : FindWebpSize(block);
  if (!found) return "does not tell its size";
  if (found->width >= needed.width && found->height >= needed.height) return {};
  return "holds " + Show(*found) + " pixels and should hold " + Show(needed);
}

}  // namespace ScEng
