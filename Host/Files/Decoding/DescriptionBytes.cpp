// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/DescriptionBytes.h"

#include <algorithm>
#include <limits>

namespace ScEng {

// The fields of each structure, in one list for both directions.

template <class Archive, Is<StoredSamples> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.type, value.nodata, value.scale, value.offset);
}

template <class Archive, Is<FileChannel> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.name, value.samples);
}

template <class Archive, Is<StoredHeader> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.mode, value.range, value.pin, value.pivot);
}

template <class Archive, Is<Georeference> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.coordinate_system, value.transform);
}

template <class Archive, Is<OpaqueValue> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.type, value.bytes);
}

template <class Archive, Is<MetadataEntry> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.name, value.value);
}

template <class Archive, Is<Box2I> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.left, value.top, value.right, value.bottom);
}

template <class Archive, Is<ImageMetadata> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.exif, value.iptc, value.xmp, value.icc, value.resolution, value.resolution_unit, value.georeference,
          value.nodata, value.value_unit, value.display_window, value.entries, value.had_opacity);
}

template <class Archive, Is<FilePart> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.name, value.size_x, value.size_y, value.corner_x, value.corner_y, value.channels, value.opacity_channel,
          value.is_multiplied, value.orientation, value.reads_regions, value.compression, value.problem,
          value.stored_headers, value.metadata);
}

template <class Archive, Is<FileDescription> Value>
void Fields(Archive& archive, Value& value) {
  archive(value.format, value.parts, value.notes);
}

namespace {

constexpr std::size_t kMostNameBytes = 1024;

bool IsPossible(const FileChannel& channel) { return channel.samples.type <= StoredType::kDouble; }

/// Whether the last pixel has a number as the first one has.
bool FitsFrom(int corner, int size) {
  return size >= 0 && static_cast<std::int64_t>(corner) + size <= std::numeric_limits<int>::max();
}

bool IsPossible(const FilePart& part) {
  constexpr int kLastOrientation = 8;
  return FitsFrom(part.corner_x, part.size_x) && FitsFrom(part.corner_y, part.size_y) && part.opacity_channel >= -1 &&
         part.opacity_channel < static_cast<std::int64_t>(part.channels.size()) && part.orientation >= 1 &&
         part.orientation <= kLastOrientation &&
         std::all_of(part.channels.begin(), part.channels.end(),
                     [](const auto& channel) { return IsPossible(channel); });
}

void Clean(std::string& name) { name = MakePrintable(name, kMostNameBytes); }

void MakeNamesPrintable(FileDescription& description) {
  Clean(description.format);
  for (std::string& note : description.notes) Clean(note);
  for (FilePart& part : description.parts) {
    Clean(part.name);
    Clean(part.compression);
    Clean(part.problem);
    for (FileChannel& channel : part.channels) Clean(channel.name);
  }
}

/// The number of bytes of the character at the start of the text, in the shortest form that UTF-8 has for it; 0 where
/// there is none or where it controls a terminal.
std::size_t PrintableLength(std::string_view text) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned first = byte(0);
  if (first < 0x80) return first >= 0x20 && first != 0x7F ? 1 : 0;
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  std::uint32_t character = first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80U) return 0;
    character = character << 6 | (byte(i) & 0x3FU);
  }
  const bool is_overlong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
  const bool is_surrogate = character >= 0xD800 && character <= 0xDFFF;
  const bool is_control =
      character < 0xA0 || (character >= 0x2028 && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
  return is_overlong || is_surrogate || is_control || character > 0x10FFFF ? 0 : length;
}

}  // namespace

Bytes ToBytes(const FileDescription& description) {
  Bytes bytes;
  ByteWriter writer(bytes);
  writer(description);
  return bytes;
}

std::optional<FileDescription> ToDescription(std::span<const std::uint8_t> bytes) {
  FileDescription description;
  ByteReader reader(bytes);
  reader(description);
  if (!reader.IsDone()) return std::nullopt;
  if (!std::all_of(description.parts.begin(), description.parts.end(),
                   [](const auto& part) { return IsPossible(part); })) {
    return std::nullopt;
  }
  MakeNamesPrintable(description);
  return description;
}

std::string MakePrintable(std::string_view text, std::size_t most) {
  std::string printable;
  while (!text.empty()) {
    const std::size_t length = PrintableLength(text);
    if (printable.size() + std::max<std::size_t>(length, 1) > most) break;
    if (length == 0) {
      printable += '?';
    } else {
      printable += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return printable;
}

}  // namespace ScEng
