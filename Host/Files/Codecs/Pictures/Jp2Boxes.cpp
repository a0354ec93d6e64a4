// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/Jp2Boxes.h"

#include <algorithm>
#include <fstream>
#include <string_view>
#include <vector>

namespace ScEng {
namespace {

using namespace std::string_view_literals;

constexpr auto kMark = "\x00\x00\x00\x0cjP  "sv;
constexpr auto kPlaceBox = "\xb1\x4b\xf8\xbd\x08\x3d\x4b\x43\xa5\xae\x8c\xd7\xd5\xa6\xce\x03"sv;
constexpr std::uint64_t kBoxHeader = 8;
constexpr std::uint64_t kLongBoxHeader = 16;

struct Box {
  std::string kind;
  std::uint64_t begin = 0;
  std::uint64_t end = 0;
};

class BoxReader {
 public:
  explicit BoxReader(const std::filesystem::path& file)
      : stream_(file, std::ios::binary), size_(std::filesystem::file_size(file)) {}

  Jp2Boxes Read() {
    if (GetBytes(0, kMark.size()) == kMark) {
      boxes_.has_boxes = true;
      ReadFileBoxes();
    } else {
      boxes_.data_end = size_;
    }
    if (boxes_.problem.empty() && !EndsWithMark())
      boxes_.problem = "the file is shortened: the end of its data is missing";
    return boxes_;
  }

 private:
  std::string GetBytes(std::uint64_t at, std::size_t count) {
    std::string bytes(count, '\0');
    stream_.clear();
    stream_.seekg(static_cast<std::streamoff>(at));
    stream_.read(bytes.data(), static_cast<std::streamsize>(count));
    bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream_.gcount(), 0)));
    return bytes;
  }

  /// Missing bytes read as zero.
  std::uint64_t GetNumber(std::uint64_t at, std::size_t count) {
    std::uint64_t number = 0;
    std::string bytes = GetBytes(at, count);
    bytes.resize(count, '\0');
    for (const char c : bytes) number = number << 8 | static_cast<unsigned char>(c);
    return number;
  }

  /// The box at a place; without an end behind its header where it is not one. One that says it goes beyond `end` does.
  Box GetBox(std::uint64_t at, std::uint64_t end) {
    Box box;
    std::uint64_t length = GetNumber(at, 4);
    box.kind = GetBytes(at + 4, 4);
    box.begin = at + (length == 1 ? kLongBoxHeader : kBoxHeader);
    if (length == 0) length = end - at;
    if (length == 1) length = GetNumber(at + kBoxHeader, 8);
    box.end = length > ~at ? ~std::uint64_t{0} : at + length;
    return box;
  }

  void ReadFileBoxes() {
    constexpr int kMostBoxes = 10000;
    std::uint64_t at = 0;
    for (int i = 0; i < kMostBoxes && at + kBoxHeader <= size_; ++i) {
      const Box box = GetBox(at, size_);
      if (box.end < box.begin) break;
      if (box.kind == "jp2c" && boxes_.data_end == 0) {
        boxes_.data_begin = box.begin;
        boxes_.data_end = std::min(box.end, size_);
        if (box.end > size_) boxes_.problem = "the file is shortened: the end of its data is missing";
      }
      if (box.kind == "jp2h") ReadHeaderBoxes(box.begin, std::min(box.end, size_));
      if (box.kind == "uuid" && GetBytes(box.begin, kPlaceBox.size()) == kPlaceBox) boxes_.has_place = true;
      at = box.end;
    }
    if (boxes_.data_end == 0) boxes_.problem = "the file is shortened: it has no data";
  }

  void ReadHeaderBoxes(std::uint64_t at, std::uint64_t end) {
    constexpr int kMostBoxes = 1000;
    for (int i = 0; i < kMostBoxes && at + kBoxHeader <= end; ++i) {
      const Box box = GetBox(at, end);
      if (box.end < box.begin) return;
      if (box.kind == "pclr") boxes_.has_palette = true;
      if (box.kind == "cdef") ReadDefinitions(box.begin, std::min(box.end, end));
      at = box.end;
    }
  }

  void ReadDefinitions(std::uint64_t at, std::uint64_t end) {
    constexpr std::uint64_t kEntry = 6;
    constexpr std::uint64_t kMultipliedOpacity = 2;
    boxes_.defines_channels = true;
    const std::uint64_t count = GetNumber(at, 2);
    at += 2;
    for (std::uint64_t i = 0; i < count && at + kEntry <= end; ++i, at += kEntry) {
      const std::uint64_t kind = GetNumber(at + 2, 2);
      if (kind == 0 || kind > kMultipliedOpacity || boxes_.opacity_channel >= 0) continue;
      boxes_.opacity_channel = static_cast<int>(GetNumber(at, 2));
      boxes_.is_multiplied = kind == kMultipliedOpacity;
    }
  }

  /// Data end with a mark that cannot occur within; some writers fill up what follows.
  bool EndsWithMark() {
    constexpr std::uint64_t kMostFilling = 64;
    const std::uint64_t size = std::min(boxes_.data_end - boxes_.data_begin, kMostFilling);
    return GetBytes(boxes_.data_end - size, size).find("\xff\xd9"sv) != std::string::npos;
  }

  std::ifstream stream_;
  std::uint64_t size_;
  Jp2Boxes boxes_;
};

}  // namespace

Jp2Boxes ReadJp2Boxes(const std::filesystem::path& file) { return BoxReader(file).Read(); }

}  // namespace ScEng
