// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Png/PngChunks.h"

#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <span>
#include <string_view>

namespace ScEng::Png {
namespace {

constexpr std::size_t kSignatureSize = 8;
constexpr std::size_t kMostBytes = std::size_t{64} << 20;
constexpr std::size_t kMostChunks = 10000;
constexpr std::array<std::string_view, 14> kMetadata{"iCCP", "eXIf", "tEXt", "zTXt", "iTXt", "pHYs", "gAMA",
                                                     "cHRM", "sRGB", "cICP", "mDCV", "cLLI", "sCAL", "tRNS"};

class OpenFile {
 public:
  explicit OpenFile(int descriptor) : descriptor_(descriptor) {}

  /// Whether all of these bytes are there.
  bool Read(std::uint64_t position, std::span<std::uint8_t> to) const {
    std::size_t done = 0;
    while (done < to.size()) {
      const ssize_t piece = pread(descriptor_, to.data() + done, to.size() - done, static_cast<off_t>(position + done));
      if (piece < 0 && errno == EINTR) continue;
      if (piece <= 0) return false;
      done += static_cast<std::size_t>(piece);
    }
    return true;
  }

  [[nodiscard]] std::uint64_t GetSize() const {
    struct stat status {};
    return fstat(descriptor_, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
  }

 private:
  int descriptor_;
};

std::uint32_t GetNumber(const std::uint8_t* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) << 24 | static_cast<std::uint32_t>(bytes[1]) << 16 |
         static_cast<std::uint32_t>(bytes[2]) << 8 | bytes[3];
}

class ChunkReader {
 public:
  explicit ChunkReader(int descriptor) : file_(descriptor), size_(file_.GetSize()) {}

  ChunkList Read() {
    std::uint64_t position = kSignatureSize;
    std::array<std::uint8_t, 8> head{};
    while (file_.Read(position, head)) {
      const std::uint64_t length = GetNumber(head.data());
      const std::string type(head.begin() + 4, head.end());
      const std::uint64_t there = size_ - std::min(size_, position + head.size());
      if (type == "IDAT") list_.packed_size += std::min(length, there);
      if (length > INT32_MAX || there < length + 4 || type == "IEND") break;
      if (type == "acTL") list_.is_animation = true;
      if (std::find(kMetadata.begin(), kMetadata.end(), type) != kMetadata.end()) {
        Keep(type, position + 4, static_cast<std::size_t>(length));
      }
      position += length + 12;
    }
    if (skipped_ > 0) {
      list_.notes.push_back("more metadata than 64 MB is not read; " + std::to_string(skipped_) +
                            (skipped_ == 1 ? " chunk is" : " chunks are") + " left out");
    }
    return std::move(list_);
  }

 private:
  /// `position` is that of the type, which the checksum covers too.
  void Keep(const std::string& type, std::uint64_t position, std::size_t length) {
    if (length > kMostBytes - kept_ || list_.chunks.size() >= kMostChunks) {
      ++skipped_;
      return;
    }
    Bytes bytes(length + 8);
    if (!file_.Read(position, bytes)) return;
    const uLong sum = crc32(crc32(0, nullptr, 0), bytes.data(), static_cast<uInt>(length + 4));
    if (sum != GetNumber(bytes.data() + length + 4)) {
      constexpr std::size_t kMostNotes = 8;
      if (list_.notes.size() < kMostNotes) {
        list_.notes.push_back("the checksum of its chunk \"" + type + "\" does not match, and the chunk is ignored");
      }
      return;
    }
    // The library that decodes the pixels takes care of this one.
    if (type == "tRNS") return;
    kept_ += length;
    list_.chunks.push_back({type, Bytes(bytes.begin() + 4, bytes.end() - 4)});
  }

  OpenFile file_;
  std::uint64_t size_;
  std::size_t kept_ = 0;
  std::size_t skipped_ = 0;
  ChunkList list_;
};

}  // namespace

ChunkList ReadChunks(int descriptor) { return ChunkReader(descriptor).Read(); }

}  // namespace ScEng::Png
