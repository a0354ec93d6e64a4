// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/ExifBlock.h"

#include <algorithm>
#include <cstring>

namespace ScEng {
namespace {

constexpr unsigned kOrientationTag = 0x0112;
constexpr unsigned kPhotoTag = 0x8769;
constexpr unsigned kPositionTag = 0x8825;
constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kEntrySize = 12;

enum FieldType : unsigned { kByte = 1, kAscii = 2, kShort = 3, kLong = 4, kRational = 5, kSignedRational = 10 };

std::size_t SizeOf(unsigned type) {
  switch (type) {
    case kByte:
    case kAscii: return 1;
    case kShort: return 2;
    case kLong: return 4;
    case kRational:
    case kSignedRational: return 8;
    default: return 0;
  }
}

}  // namespace

ExifBlock::ExifBlock(std::span<const std::uint8_t> bytes) : bytes_(bytes) {
  if (bytes_.size() < kHeaderSize) return;
  is_big_endian_ = bytes_[0] == 'M';
  is_valid_ = (bytes_[0] == 'M' || bytes_[0] == 'I') && bytes_[1] == bytes_[0] && GetNumber(2, 2) == 42;
}

std::uint32_t ExifBlock::GetNumber(std::size_t position, std::size_t size) const {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < size; ++i)
    number = (number << 8) | bytes_[position + (is_big_endian_ ? i : size - 1 - i)];
  return number;
}

std::optional<std::size_t> ExifBlock::FindDirectory(Directory directory) const {
  if (!is_valid_) return std::nullopt;
  const std::size_t image = GetNumber(4, 4);
  if (directory == Directory::kImage) return image;
  const auto pointer = Find(image, directory == Directory::kPhoto ? kPhotoTag : kPositionTag);
  if (!pointer || pointer->type != kLong) return std::nullopt;
  return GetNumber(pointer->position, 4);
}

std::optional<ExifBlock::Field> ExifBlock::Find(std::size_t directory, unsigned tag) const {
  if (directory < kHeaderSize || directory + 2 > bytes_.size()) return std::nullopt;
  const std::size_t room = (bytes_.size() - directory - 2) / kEntrySize;
  const std::size_t entries = std::min<std::size_t>(GetNumber(directory, 2), room);
  for (std::size_t i = 0; i < entries; ++i) {
    const std::size_t entry = directory + 2 + i * kEntrySize;
    if (GetNumber(entry, 2) != tag) continue;
    Field field{GetNumber(entry + 2, 2), GetNumber(entry + 4, 4), entry + 8};
    const std::size_t size = SizeOf(field.type);
    if (size == 0 || field.count == 0 || field.count > bytes_.size() / size) return std::nullopt;
    if (size * field.count > 4) field.position = GetNumber(entry + 8, 4);
    if (field.position > bytes_.size() - size * field.count) return std::nullopt;
    return field;
  }
  return std::nullopt;
}

std::optional<std::string> ExifBlock::GetText(Directory directory, unsigned tag) const {
  const auto place = FindDirectory(directory);
  const auto field = place ? Find(*place, tag) : std::nullopt;
  if (!field || field->type != kAscii) return std::nullopt;
  const auto* begin = bytes_.data() + field->position;
  return std::string(begin, std::find(begin, begin + field->count, std::uint8_t{0}));
}

std::vector<double> ExifBlock::GetNumbers(Directory directory, unsigned tag) const {
  const auto place = FindDirectory(directory);
  const auto field = place ? Find(*place, tag) : std::nullopt;
  if (!field || field->type == kAscii) return {};
  return ReadNumbers(*field);
}

std::vector<double> ExifBlock::ReadNumbers(const Field& field) const {
  constexpr std::size_t kMostNumbers = 256;
  const std::size_t size = SizeOf(field.type);
  std::vector<double> numbers;
  for (std::size_t i = 0; i < std::min(field.count, kMostNumbers); ++i) {
    const std::size_t position = field.position + i * size;
    if (size <= 4) {
      numbers.push_back(GetNumber(position, size));
      continue;
    }
    const std::uint32_t above = GetNumber(position, 4);
    const std::uint32_t below = GetNumber(position + 4, 4);
    if (below == 0) return {};
    const bool is_signed = field.type == kSignedRational;
    numbers.push_back(is_signed
                          ? static_cast<double>(static_cast<std::int32_t>(above)) / static_cast<std::int32_t>(below)
                          : static_cast<double>(above) / below);
  }
  return numbers;
}

std::optional<std::size_t> ExifBlock::FindOrientation() const {
  const auto place = FindDirectory(Directory::kImage);
  const auto field = place ? Find(*place, kOrientationTag) : std::nullopt;
  if (!field || field->type != kShort) return std::nullopt;
  return field->position;
}

int ExifBlock::GetOrientation() const {
  const auto position = FindOrientation();
  const std::uint32_t orientation = position ? GetNumber(*position, 2) : 1;
  return orientation >= 1 && orientation <= 8 ? static_cast<int>(orientation) : 1;
}

int TakeOrientation(std::vector<std::uint8_t>& block) {
  const ExifBlock exif(block);
  const int orientation = exif.GetOrientation();
  if (const auto position = exif.FindOrientation()) {
    const bool is_big_endian = block[0] == 'M';
    block[*position] = is_big_endian ? 0 : 1;
    block[*position + 1] = is_big_endian ? 1 : 0;
  }
  return orientation;
}

std::optional<ExifBlock::Table> ExifBlock::FindTable(Directory directory) const {
  const auto position = FindDirectory(directory);
  if (!position || *position < kHeaderSize || *position > bytes_.size() - 2) return std::nullopt;
  const std::size_t entries = GetNumber(*position, 2);
  const std::size_t end = *position + 2 + entries * kEntrySize;
  if (end > bytes_.size()) return std::nullopt;
  return Table{*position, entries, std::min(end + 4, bytes_.size())};
}

void RemoveSampleDescription(std::vector<std::uint8_t>& block) {
  constexpr unsigned kOfImage[] = {256, 257, 258, 259, 262, 273, 277, 278, 279, 284, 530, 531};
  constexpr unsigned kOfPhoto[] = {0xA002, 0xA003};
  if (!ExifBlock(block).IsValid()) return;
  const bool is_big_endian = block[0] == 'M';
  const auto get = [&](std::size_t at) {
    return is_big_endian ? block[at] * 256U + block[at + 1] : block[at + 1] * 256U + block[at];
  };
  const auto remove = [&](ExifBlock::Directory directory, std::span<const unsigned> tags) {
    auto table = ExifBlock(block).FindTable(directory);
    if (!table) return;
    const auto begin = block.begin();
    const auto at = [&](std::size_t position) { return begin + static_cast<std::ptrdiff_t>(position); };
    std::size_t kept = 0;
    for (std::size_t i = 0; i < table->entries; ++i) {
      const std::size_t entry = table->position + 2 + i * kEntrySize;
      if (std::find(tags.begin(), tags.end(), get(entry)) != tags.end()) continue;
      std::copy_n(at(entry), kEntrySize, at(table->position + 2 + kept * kEntrySize));
      ++kept;
    }
    const std::size_t rest = table->position + 2 + kept * kEntrySize;
    // The reference to the next directory follows the last entry; after the first one comes that of the thumbnail.
    const auto end = std::copy(at(table->position + 2 + table->entries * kEntrySize), at(table->end), at(rest));
    std::fill(directory == ExifBlock::Directory::kImage ? at(rest) : end, at(table->end), std::uint8_t{0});
    block[table->position + (is_big_endian ? 0 : 1)] = static_cast<std::uint8_t>(kept >> 8);
    block[table->position + (is_big_endian ? 1 : 0)] = static_cast<std::uint8_t>(kept);
  };
  remove(ExifBlock::Directory::kPhoto, kOfPhoto);
  remove(ExifBlock::Directory::kImage, kOfImage);
}

}  // namespace ScEng
