// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Host/Files/Api.h"
#include "Host/Image/ImageMetadata.h"

// What there is in an image file, as it is stored.

namespace ScEng {

/// The types that samples have in files.
enum class StoredType : std::uint8_t {
  kUint8,
  kInt8,
  kUint16,
  kInt16,
  kUint32,
  kInt32,
  kUint64,
  kInt64,
  kHalf,
  kFloat,
  kDouble,
};

/// "uint8" and so on.
HOST_FILES_API const char* GetName(StoredType type);
HOST_FILES_API std::size_t GetSize(StoredType type);
[[nodiscard]] HOST_FILES_API bool IsInteger(StoredType type);

/// What the stored numbers of a channel stand for.
struct StoredSamples {
  StoredType type = StoredType::kFloat;
  /// The stored number that stands for "no value here".
  std::optional<double> nodata;
  /// Value = stored number * scale + offset, where the file gives either.
  std::optional<double> scale;
  std::optional<double> offset;

  bool operator==(const StoredSamples&) const = default;
};

/// How stored integers become values.
enum class SampleScale : std::uint8_t {
  /// Unsigned integers of 8 and 16 bits without scale and offset are divided by the largest of their type; all others
  /// are taken as they are.
  kAuto,
  /// Integers are divided by the largest of their type, whatever it is.
  kUnit,
  /// Numbers as they are.
  kStored,
};

/// One channel of a part of a file.
struct FileChannel {
  /// As the file has it, "diffuse.R"; empty where the format has no names for channels.
  std::string name;
  StoredSamples samples;

  bool operator==(const FileChannel&) const = default;
};

/// What a file stores of the header of an image that was written by this system.
struct StoredHeader {
  /// As stored; not every number is a mode.
  std::optional<int> mode;
  std::optional<std::pair<float, float>> range;
  std::optional<std::pair<int, int>> pin;
  std::optional<std::pair<float, float>> pivot;

  bool operator==(const StoredHeader&) const = default;
};

/// An image in a file: the only one, or a part of a multi-part EXR, a page of a TIFF, a subdataset of a raster.
struct FilePart {
  /// The name of the part; empty where it has none.
  std::string name;
  int size_x = 0;
  int size_y = 0;
  /// The corner of the data window. Only EXR has others than (0, 0).
  int corner_x = 0;
  int corner_y = 0;
  std::vector<FileChannel> channels;
  /// Which channel is opacity where names do not tell: its index; -1 for none.
  int opacity_channel = -1;
  /// Whether colour is stored multiplied by opacity, where the part has opacity.
  bool is_multiplied = false;
  /// How the rows lie in the file, as EXIF numbers it: 1 is upright, 6 is to be turned clockwise by 90 degrees.
  int orientation = 1;
  /// Whether a range of rows can be read without decoding the whole part.
  bool reads_regions = true;
  /// How the samples are packed, in the words of the format ("zip", "piz"); empty for not at all.
  std::string compression;
  /// Why this part cannot be read ("it holds deep samples, which have no single value per pixel"); empty where it can.
  std::string problem;
  /// `value:*` by layer; the empty layer is the whole part.
  std::vector<std::pair<std::string, StoredHeader>> stored_headers;
  /// The georeference is in pixels of the part: column 0, row 0 is the corner of its first pixel. The display window is
  /// in the coordinates of the data window's corner.
  ImageMetadata metadata;

  bool operator==(const FilePart&) const = default;
};

/// What there is in a file.
struct FileDescription {
  /// The name of the format as the table of codecs has it, for example "openexr".
  std::string format;
  std::vector<FilePart> parts;
  /// Remarks that do not stand in the way, each one line without the name of the file.
  std::vector<std::string> notes;

  bool operator==(const FileDescription&) const = default;
};

}  // namespace ScEng
