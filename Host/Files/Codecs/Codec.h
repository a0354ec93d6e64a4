// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Host/Files/Codecs/StoredSamples.h"
#include "Host/Image/ImageMetadata.h"
#include "Host/Util/Status.h"

// What a codec is: it opens files and makes them. It knows file formats and nothing of images, colour modes or nodes;
// which channels are wanted and what they become is decided above it. Every codec is a module that is loaded when a
// file first needs it, and the same code runs in the program and in the process that decodes for it.

namespace ScEng {

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

/// A rectangle of samples that is asked for, in pixels of the part from its first one, as the file stores the rows.
struct ReadRequest {
  std::size_t part = 0;
  /// Indices of channels of the part, in the order in which they are wanted; one may stand twice.
  std::vector<std::size_t> channels;
  int column_begin = 0;
  int column_end = 0;
  int row_begin = 0;
  int row_end = 0;
  SampleScale scale = SampleScale::kAuto;
};

/// Where decoded samples go: channel c of pixel (column, row) of the rectangle is
/// `samples[row * row_stride + column * pixel_stride + c]`.
struct ReadTarget {
  float* samples = nullptr;
  std::size_t pixel_stride = 1;
  std::size_t row_stride = 0;
};

/// A file that is open for reading. Not for two threads at once.
class ImageDecoder {
 public:
  virtual ~ImageDecoder() = default;
  [[nodiscard]] virtual const FileDescription& GetDescription() const = 0;
  /// Decodes a rectangle. Every sample of it is written, or the answer is an error: what the file does not hold is
  /// never left to chance. The error is a clause in plain words without the name of the file, "the file is shortened:
  /// 812 of 4096 rows are there". May throw what derives from `std::exception`.
  virtual Status Read(const ReadRequest& request, const ReadTarget& target) = 0;
};

/// What is to be written into a new file, beside the samples.
struct WritePlan {
  int size_x = 0;
  int size_y = 0;
  /// Corner of the data window, for formats that have one.
  int corner_x = 0;
  int corner_y = 0;
  /// Names of the channels, "R", "G", "B", "A" or "Y" or with the layer before a dot; the number of channels for
  /// formats without names.
  std::vector<std::string> channels;
  /// The type of the samples, one that the format has.
  StoredType type = StoredType::kFloat;
  /// The channel that is opacity, -1 for none. Colour is handed over as the format stores it.
  int opacity_channel = -1;
  /// As a person asked for it; empty for the format's own choice.
  std::string compression;
  /// As in `FilePart`; empty where the image was asked to be stripped of it.
  ImageMetadata metadata;
  /// As in `FilePart`.
  std::vector<std::pair<std::string, StoredHeader>> stored_headers;
};

/// A file that is being written: rows from the first to the last, then `Finish`. Without a `Finish` that says it is
/// fine, the file is worth nothing.
class ImageEncoder {
 public:
  virtual ~ImageEncoder() = default;
  /// Rows [row_begin, row_end), channels interleaved and rows dense, in the type of the plan; half samples are handed
  /// over as floats. Rows come in order and without gaps.
  virtual Status WriteRows(int row_begin, int row_end, const void* samples) = 0;
  /// Writes what is left and closes the file. Every write that failed before and was not noticed is an error here.
  virtual Status Finish() = 0;
};

/// One codec: the formats behind one library.
class ImageCodec {
 public:
  virtual ~ImageCodec() = default;

  /// Opens a file that the table of codecs says is for this codec. `format` is the one that was recognized, or empty
  /// where none was. Null, and an error that is a clause without the name of the file, where it cannot be read. May
  /// throw what derives from `std::exception`.
  [[nodiscard]] virtual std::unique_ptr<ImageDecoder> Open(const std::filesystem::path& file, const std::string& format,
                                                           Status& status) const = 0;

  /// Begins a file of a format. `path` is where it is written (a file that exists and is empty, which may have another
  /// ending than the format's). What the plan holds and the format does not (a coordinate system, a profile) is told in
  /// `notes`, each one line without the name of the file. Null and an error as for `Open`.
  [[nodiscard]] virtual std::unique_ptr<ImageEncoder> Create(const std::filesystem::path& path,
                                                             const std::string& format, const WritePlan& plan,
                                                             std::vector<std::string>& notes, Status& status) const = 0;

  /// Does in advance what would otherwise need a file of the system later: a process that decodes calls this before it
  /// gives up its rights.
  virtual void Prepare() const {}
};

}  // namespace ScEng

/// The one entry point of the module of a codec; the codec stays the module's.
extern "C" const ScEng::ImageCodec* GetImageCodec();
