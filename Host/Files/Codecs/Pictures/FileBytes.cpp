// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/FileBytes.h"

#include <algorithm>

namespace ScEng {

FileBytes::FileBytes(const std::filesystem::path& file)
    : stream_(file, std::ios::binary), size_(std::filesystem::file_size(file)) {}

void FileBytes::GoTo(std::uint64_t offset) {
  if (offset >= buffer_offset_ && offset - buffer_offset_ <= buffer_.size()) {
    at_ = static_cast<std::size_t>(offset - buffer_offset_);
    return;
  }
  buffer_.clear();
  buffer_offset_ = offset;
  at_ = 0;
}

bool FileBytes::Refill() {
  constexpr std::size_t kPiece = 1 << 16;
  buffer_offset_ += buffer_.size();
  at_ = 0;
  const std::uint64_t left = size_ - std::min(buffer_offset_, size_);
  buffer_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(left, kPiece)));
  stream_.clear();
  stream_.seekg(static_cast<std::streamoff>(buffer_offset_));
  stream_.read(reinterpret_cast<char*>(buffer_.data()), static_cast<std::streamsize>(buffer_.size()));
  buffer_.resize(static_cast<std::size_t>(std::max<std::streamsize>(stream_.gcount(), 0)));
  is_at_end_ = is_at_end_ || buffer_.empty();
  return !buffer_.empty();
}

std::uint64_t FileBytes::Big(std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < size; ++i) number = number << 8 | Next();
  return number;
}

std::uint64_t FileBytes::Little(std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < size; ++i) number |= std::uint64_t{Next()} << (8 * i);
  return number;
}

}  // namespace ScEng
