// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/JpegComments.h"

#include <cstdint>
#include <cstdio>
#include <memory>

namespace ScEng {
namespace {

constexpr std::size_t kMostComments = 1000;
constexpr int kMark = 0xFF;
constexpr int kStart = 0xD8;
constexpr int kSamples = 0xDA;
constexpr int kEnd = 0xD9;
constexpr int kComment = 0xFE;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// The next marker, which bytes of filling may come before; a negative number where there is none.
int ReadMarker(std::FILE* file) {
  if (std::fgetc(file) != kMark) return -1;
  int marker = kMark;
  while (marker == kMark) marker = std::fgetc(file);
  return marker;
}

/// How many bytes follow the length of a marker; a negative number where the file ends or the length makes no sense.
int ReadLength(std::FILE* file) {
  const int high = std::fgetc(file);
  const int low = std::fgetc(file);
  return high < 0 || low < 0 ? -1 : high * 256 + low - 2;
}

}  // namespace

std::vector<std::string> ListJpegComments(const std::filesystem::path& path) {
  std::vector<std::string> comments;
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
  if (!file || ReadMarker(file.get()) != kStart) return comments;
  while (comments.size() < kMostComments) {
    const int marker = ReadMarker(file.get());
    if (marker <= 0 || marker == kSamples || marker == kEnd) break;
    const int length = ReadLength(file.get());
    if (length < 0) break;
    if (marker != kComment) {
      if (std::fseek(file.get(), length, SEEK_CUR) != 0) break;
      continue;
    }
    std::string text(static_cast<std::size_t>(length), '\0');
    if (std::fread(text.data(), 1, text.size(), file.get()) != text.size()) break;
    while (!text.empty() && text.back() == '\0') text.pop_back();
    if (!text.empty()) comments.push_back(std::move(text));
  }
  return comments;
}

}  // namespace ScEng
