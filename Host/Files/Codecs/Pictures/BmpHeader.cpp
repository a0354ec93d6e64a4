// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/BmpHeader.h"

#include <algorithm>
#include <bit>
#include <fstream>
#include <limits>

namespace ScEng {
namespace {

// Numbers of the format.
constexpr std::uint32_t kOldHeader = 12;
constexpr std::uint32_t kHeader = 40;
constexpr std::uint32_t kHeaderWithOpacity = 56;
constexpr std::uint32_t kMostHeader = 4096;
constexpr std::size_t kFileHeader = 14;
constexpr std::size_t kMasksAt = kFileHeader + kHeader;
enum Compression : std::uint32_t { kPlain = 0, kRle8 = 1, kRle4 = 2, kMasks = 3, kJpeg = 4, kPng = 5, kFourMasks = 6 };

class HeaderReader {
 public:
  HeaderReader(const std::filesystem::path& file, std::string& problem) : problem_(problem) {
    // A header, four masks and a palette of 256 colors.
    constexpr std::size_t kMost = kFileHeader + kMostHeader + 16 + 1024;
    bytes_.resize(kMost);
    std::ifstream stream(file, std::ios::binary);
    stream.read(bytes_.data(), static_cast<std::streamsize>(kMost));
    bytes_.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
  }

  BmpHeader Read() {
    header_size_ = Get(kFileHeader, 4);
    const bool is_known = header_size_ == kOldHeader || (header_size_ >= 16 && header_size_ <= kMostHeader);
    if (bytes_.size() < kFileHeader + std::min(header_size_, kMostHeader)) {
      problem_ = "the file is shortened: it ends within its header";
    } else if (!is_known) {
      problem_ = "its header is damaged";
    } else {
      ReadSize();
    }
    if (problem_.empty()) ReadCompression();
    if (problem_.empty() && header_.IsIndexed()) ReadPalette();
    return header_;
  }

 private:
  /// What a short header lacks reads as zero.
  [[nodiscard]] std::uint32_t Get(std::size_t at, std::size_t size) const {
    std::uint32_t number = 0;
    for (std::size_t i = size; i > 0; --i) {
      const std::size_t index = at + i - 1;
      number = number << 8 | (index < bytes_.size() ? static_cast<unsigned char>(bytes_[index]) : 0U);
    }
    return number;
  }
  [[nodiscard]] std::uint32_t GetField(std::size_t at, std::size_t size) const {
    return at + size <= header_size_ ? Get(kFileHeader + at, size) : 0;
  }

  void ReadSize() {
    header_.data = Get(10, 4);
    if (header_.data < kFileHeader + header_size_) {
      problem_ = "its header is damaged";
      return;
    }
    header_.pixels_per_meter = {GetField(24, 4), GetField(28, 4)};
    const bool is_old = header_size_ == kOldHeader;
    const auto get_signed = [&](std::size_t at) {
      return static_cast<std::int64_t>(static_cast<std::int32_t>(GetField(at, 4)));
    };
    const std::int64_t size_x = is_old ? std::int64_t{GetField(4, 2)} : get_signed(4);
    const std::int64_t size_y = is_old ? std::int64_t{GetField(6, 2)} : get_signed(8);
    header_.is_bottom_up = size_y > 0;
    header_.pixel_bits = GetField(is_old ? 10 : 14, 2);
    const std::int64_t rows = size_y > 0 ? size_y : -size_y;
    constexpr std::int64_t kMost = std::numeric_limits<int>::max() / 4;
    if (size_x < 1 || rows < 1 || size_x > kMost || rows > kMost) {
      problem_ = "its size " + std::to_string(size_x) + " x " + std::to_string(rows) + " is not one of an image";
      return;
    }
    header_.size_x = static_cast<int>(size_x);
    header_.size_y = static_cast<int>(rows);
    constexpr std::array kDepths{1U, 2U, 4U, 8U, 16U, 24U, 32U};
    if (std::find(kDepths.begin(), kDepths.end(), header_.pixel_bits) == kDepths.end()) {
      problem_ =
          "its pixels are of " + std::to_string(header_.pixel_bits) + " bits; 1, 2, 4, 8, 16, 24 and 32 are read";
    }
  }

  void ReadCompression() {
    const std::uint32_t compression = header_size_ == kOldHeader ? std::uint32_t{kPlain} : GetField(16, 4);
    const unsigned bits = header_.pixel_bits;
    const bool has_masks = bits == 16 || bits == 32;
    if (compression == kPlain) {
      SetUsualFields();
    } else if (compression == kRle8 && bits == 8) {
      header_.packing = BmpPacking::kRuns8;
    } else if (compression == kRle4 && bits == 4) {
      header_.packing = BmpPacking::kRuns4;
    } else if ((compression == kMasks || compression == kFourMasks) && has_masks) {
      ReadMasks(compression == kFourMasks);
    } else if (compression == kJpeg || compression == kPng) {
      problem_ =
          std::string("it holds a ") + (compression == kJpeg ? "JPEG" : "PNG") + ", which is not supported in a BMP";
    } else {
      problem_ = "its compression " + std::to_string(compression) + " is not supported";
    }
  }

  void SetUsualFields() {
    const unsigned bits = header_.pixel_bits;
    const unsigned width = bits == 16 ? 5 : 8;
    // What is left over of 16 and 32 bits means nothing.
    if (bits > 8) header_.fields = {{{2 * width, width}, {width, width}, {0, width}, {0, 0}}};
  }

  /// Masks are the last of the header or, of the shortest one, follow it.
  void ReadMasks(bool has_four) {
    const bool has_opacity = has_four || header_size_ >= kHeaderWithOpacity;
    for (std::size_t i = 0; i < (has_opacity ? 4U : 3U); ++i) {
      const std::uint32_t mask = Get(kMasksAt + 4 * i, 4);
      if (mask == 0) {
        if (i == 3) break;
        problem_ = "a color has no bits in its pixels";
        return;
      }
      const auto shift = static_cast<unsigned>(std::countr_zero(mask));
      const auto bits = static_cast<unsigned>(std::popcount(mask));
      const bool is_whole = static_cast<unsigned>(std::countl_zero(mask)) + shift + bits == 32;
      if (!is_whole || bits > 16 || shift + bits > header_.pixel_bits) {
        problem_ = "the bits of its channels are not supported";
        return;
      }
      header_.fields.at(i) = {shift, bits};
    }
  }

  void ReadPalette() {
    const bool is_old = header_size_ == kOldHeader;
    const std::size_t entry = is_old ? 3 : 4;
    const std::uint32_t most = std::uint32_t{1} << header_.pixel_bits;
    const std::uint32_t declared = GetField(32, 4);
    std::uint32_t count = declared == 0 || declared > most ? most : declared;
    const std::uint64_t begin = kFileHeader + std::uint64_t{header_size_};
    // Some writers leave out entries without saying so.
    if (header_.data > begin)
      count = static_cast<std::uint32_t>(std::min<std::uint64_t>(count, (header_.data - begin) / entry));
    if (bytes_.size() < begin + count * entry) {
      problem_ = "the file is shortened: it ends within its palette";
      return;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
      const auto at = static_cast<std::size_t>(begin) + i * entry;
      const auto get = [&](std::size_t c) { return static_cast<std::uint8_t>(Get(at + c, 1)); };
      header_.palette.push_back({get(2), get(1), get(0)});
    }
  }

  std::string& problem_;
  std::vector<char> bytes_;
  std::uint32_t header_size_ = 0;
  BmpHeader header_;
};

}  // namespace

BmpHeader ReadBmpHeader(const std::filesystem::path& file, std::string& problem) {
  return HeaderReader(file, problem).Read();
}

}  // namespace ScEng
