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
#include "Host/Files/FileDescription.h"
#include "Host/Image/Image.h"
#include "Host/Image/ImageMetadata.h"
#include "Host/Util/Status.h"

// What a codec is: it opens files and makes them. It knows file formats and nothing of images, colour modes or nodes;
// which channels are wanted and what they become is decided above it. Every codec is a module that is loaded when a
// file first needs it, and the same code runs in the program and in the process that decodes for it.

namespace ScEng {

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

  /// Whether samples come out of another process, so that memory that both have spares a copy of large images.
  [[nodiscard]] virtual bool SharesMemory() const { return false; }
  /// As `Read`, into memory of the decoder's own: dense rows, `pixel_stride` floats from pixel to pixel. Null without
  /// an error where the system has no such memory now, so that `Read` is to be used.
  virtual SampleBuffer ReadShared(const ReadRequest&, std::size_t, Status&) { return {}; }
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
  /// Whether rows are packed as they come. Some libraries take a picture as a whole, and all rows are held until then.
  [[nodiscard]] virtual bool PacksRows() const { return true; }
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

  /// Whether `compression` may stand in the plan of a file of a format; the error names the words that may.
  [[nodiscard]] virtual Status CheckCompression(const std::string& format, const std::string& compression) const = 0;

  /// Does in advance what would otherwise need a file of the system later: a process that decodes calls this before it
  /// gives up its rights.
  virtual void Prepare() const {}
};

}  // namespace ScEng

/// The one entry point of the module of a codec; the codec stays the module's.
extern "C" const ScEng::ImageCodec* GetImageCodec();
