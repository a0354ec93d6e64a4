// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Host/Image/Api.h"
#include "Host/Math/Geometry.h"

namespace ScEng {

/// Where the pixels of an image lie on the ground.
struct Georeference {
  /// The coordinate system as WKT (ISO 19162); empty where only the transform is known.
  std::string coordinate_system;
  /// Ground x = t[0] + column * t[1] + row * t[2], ground y = t[3] + column * t[4] + row * t[5]. Columns and rows are
  /// document coordinates: pixel (0, 0) of the document has its top left corner at column 0, row 0.
  std::optional<std::array<double, 6>> transform;

  bool operator==(const Georeference&) const = default;
};

/// A value that only one format knows, kept as that format stores it.
struct OpaqueValue {
  /// The name of the type in the format, for example "chromaticities".
  std::string type;
  std::vector<std::uint8_t> bytes;

  bool operator==(const OpaqueValue&) const = default;
};

/// What a named entry of the metadata holds: a text, whole numbers, numbers, or a value of one format.
using MetadataValue = std::variant<std::string, std::vector<std::int64_t>, std::vector<double>, OpaqueValue>;

struct MetadataEntry {
  std::string name;
  MetadataValue value;

  bool operator==(const MetadataEntry&) const = default;
};

/// What a file says of its image beside the samples. It travels with the image from node to node and is written where
/// a format can hold it. What describes the stored samples (size, depth, compression, statistics, thumbnails,
/// orientation) is none of it.
struct ImageMetadata {
  /// Blocks as the standards lay them down: an EXIF block in the form of a TIFF file (without "Exif\0\0"), IPTC-IIM
  /// records, an XMP packet, an ICC profile. Empty where the file has none.
  std::vector<std::uint8_t> exif;
  std::vector<std::uint8_t> iptc;
  std::string xmp;
  std::vector<std::uint8_t> icc;

  /// Pixels per unit along x and y; `resolution_unit` is "in", "cm" or empty for a mere ratio.
  std::optional<std::array<double, 2>> resolution;
  std::string resolution_unit;

  std::optional<Georeference> georeference;
  /// The number that stands for "no value here" in files of this image.
  std::optional<double> nodata;
  /// The unit of the values, as the file names it ("metre"); empty where it does not.
  std::string value_unit;

  /// The display window of an EXR, in document coordinates.
  std::optional<Box2I> display_window;

  /// How an EXR packed its samples, where that loses nothing; an EXR that is made of it packs them alike.
  std::string exr_compression;

  /// Everything else by name, in the order of the file. Names that formats share: "ImageDescription", "Artist",
  /// "Copyright", "Software", "DateTime", "DocumentName", "Comment". Others keep the name that the file gives them.
  std::vector<MetadataEntry> entries;

  /// Whether the file had opacity. This travels by a rule of its own: an image has opacity where any of its sources
  /// has.
  std::optional<bool> had_opacity;

  /// The entry of that name, or null.
  [[nodiscard]] HOST_IMAGE_API const MetadataEntry* Find(std::string_view name) const;
  /// Whether there is nothing in it to tell; how files are stored (opacity, packing) does not count.
  [[nodiscard]] HOST_IMAGE_API bool IsEmpty() const;

  bool operator==(const ImageMetadata&) const = default;
};

/// The metadata of an image that is put elsewhere in the document, by so many columns and rows: each of its pixels
/// stays where it is on the ground. The display window moves with it.
HOST_IMAGE_API std::shared_ptr<const ImageMetadata> MoveMetadata(const std::shared_ptr<const ImageMetadata>& metadata,
                                                                 std::int64_t columns, std::int64_t rows);

}  // namespace ScEng
