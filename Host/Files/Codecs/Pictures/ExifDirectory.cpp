// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/ExifDirectory.h"

#include <algorithm>
#include <array>
#include <bit>
#include <exception>
#include <exiv2/exiv2.hpp>
#include <mutex>

#include "Host/Files/Codecs/Pictures/ExivLock.h"
#include "Host/Files/Codecs/Pictures/MetadataBlocks.h"

namespace ScEng {
namespace {

constexpr Exiv2::ByteOrder kOwnOrder =
    std::endian::native == std::endian::little ? Exiv2::littleEndian : Exiv2::bigEndian;

/// Offsets of further directories, which would point nowhere, and sizes of the picture as it was stored.
bool IsLeftOut(std::uint16_t tag) { return tag == 0xA005 || tag == 0xA002 || tag == 0xA003; }

/// Tags of the main directory that a TIFF has values of its own for, and those that make it a raw picture or hold
/// layers.
bool IsOfTiff(std::uint16_t tag) {
  constexpr std::array<std::uint16_t, 8> kTags{274, 282, 283, 296, 34665, 34853, 37724, 40965};
  constexpr std::uint16_t kFirstOfRaw = 50706;
  constexpr std::uint16_t kLastOfRaw = 52600;
  return IsStructuralTag(tag) || std::find(kTags.begin(), kTags.end(), tag) != kTags.end() ||
         (tag >= kFirstOfRaw && tag <= kLastOfRaw);
}

bool TakeField(const Exiv2::Exifdatum& datum, std::vector<ExifParts::Field>& to) {
  constexpr int kLastType = 13;
  const int type = static_cast<int>(datum.typeId());
  if (type < 1 || type > kLastType || datum.count() < 1 || datum.size() < 1) return false;
  ExifParts::Field field;
  field.tag = datum.tag();
  field.type = static_cast<std::uint16_t>(type);
  field.bytes.resize(static_cast<std::size_t>(datum.size()));
  datum.copy(field.bytes.data(), kOwnOrder);
  field.count = static_cast<std::uint32_t>(datum.count());
  to.push_back(std::move(field));
  return true;
}

void PutNumber(std::vector<std::uint8_t>& bytes, std::uint64_t number, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t place = kOwnOrder == Exiv2::littleEndian ? i : size - 1 - i;
    bytes.push_back(static_cast<std::uint8_t>(number >> (place * 8)));
  }
}

}  // namespace

ExifParts TakeExifApart(const std::vector<std::uint8_t>& exif) {
  ExifParts parts;
  if (exif.empty()) return parts;
  const std::lock_guard lock(GetExivMutex());
  try {
    Exiv2::ExifData data;
    Exiv2::ExifParser::decode(data, exif.data(), static_cast<std::uint32_t>(exif.size()));
    for (const Exiv2::Exifdatum& datum : data) {
      const std::string group = datum.groupName();
      if (group == "Photo" && !IsLeftOut(datum.tag())) TakeField(datum, parts.photo);
      if (group == "GPSInfo") TakeField(datum, parts.gps);
      if (group == "Image" && !IsOfTiff(datum.tag())) TakeField(datum, parts.image);
    }
  } catch (const std::exception&) {
    return {};
  }
  return parts;
}

std::vector<std::uint8_t> MakeDirectory(std::vector<ExifParts::Field> fields, std::uint64_t offset, bool is_big) {
  std::stable_sort(fields.begin(), fields.end(), [](const auto& a, const auto& b) { return a.tag < b.tag; });
  fields.erase(std::unique(fields.begin(), fields.end(), [](const auto& a, const auto& b) { return a.tag == b.tag; }),
               fields.end());
  const std::size_t word = is_big ? 8 : 4;
  const std::size_t head = (is_big ? 8 : 2) + fields.size() * (4 + 2 * word) + word;
  std::vector<std::uint8_t> table;
  std::vector<std::uint8_t> values;
  PutNumber(table, fields.size(), is_big ? 8 : 2);
  for (const ExifParts::Field& field : fields) {
    PutNumber(table, field.tag, 2);
    PutNumber(table, field.type, 2);
    PutNumber(table, field.count, word);
    if (field.bytes.size() <= word) {
      table.insert(table.end(), field.bytes.begin(), field.bytes.end());
      table.resize(table.size() + word - field.bytes.size());
    } else {
      // Values begin at even offsets.
      if ((head + values.size()) % 2 != 0) values.push_back(0);
      PutNumber(table, offset + head + values.size(), word);
      values.insert(values.end(), field.bytes.begin(), field.bytes.end());
    }
  }
  PutNumber(table, 0, word);
  table.insert(table.end(), values.begin(), values.end());
  return table;
}

}  // namespace ScEng
