// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Files/Api.h"
#include "Host/Files/FileDescription.h"
#include "Host/Image/Image.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// How the channels of a file become the pixels of an image.
enum class ReadMode {
  /// By the stored mode where it suits the channels, else by their names and number: one is a value, grey and opacity
  /// or three or four are colour, any other two are a pair.
  kAuto,
  /// Colour; one channel becomes grey with opacity 1, a pair the first two colours.
  kColor,
  /// The signed mode, the channels taken as they are stored: one is z, two are x and y.
  kSigned,
  /// The value that each pixel stands for.
  kValue,
};

struct ReadOptions {
  ReadMode mode = ReadMode::kAuto;
  /// How stored integers become values.
  SampleScale scale = SampleScale::kAuto;
  /// The part of the file: its name, or an index from 0. Empty for the first that has what is asked for.
  std::string part = {};
  /// The layer, "diffuse" of a channel "diffuse.R". Empty for the channels without a layer.
  std::string layer = {};
  /// One to four names of channels with commas between, read in that order. Channels of formats without names are
  /// numbered from 0. Empty for those that the layer's names suggest.
  std::string channels = {};
  /// The pixels that are read, from the upper left corner of the upright picture; nothing for all. The image lies where
  /// they lie in the whole one. Rows outside it are not even decoded where `FilePart::reads_regions` is true; elsewhere
  /// it takes the time of the whole part, but not its memory as an image.
  std::optional<Box2I> region = {};
};

/// What the samples of a written file are, where its format can store it.
enum class SampleType { kFloat, kHalf, kUint16, kUint8, kInt16 };

/// "float", "half", "uint16", "uint8", "int16" and back.
HOST_FILES_API const char* GetName(SampleType type);
HOST_FILES_API std::optional<SampleType> FindSampleType(std::string_view name);

/// Whether the opacity of an image is written.
enum class OpacityRule {
  /// Unless all files that the image was made of were without.
  kAuto,
  kKeep,
  kDrop,
};

struct WriteOptions {
  /// Nothing for the first that the format has of float, half, uint16 and uint8.
  std::optional<SampleType> type;
  /// Whether integers hold the values themselves, rounded, and not the share of the type's largest. Always so for
  /// `kInt16`.
  bool stores_values = false;
  OpacityRule opacity = OpacityRule::kAuto;
  /// Whether metadata is left out.
  bool strips_metadata = false;
  /// How the samples are packed, in the format's words ("piz", "none", a JPEG quality); empty for the format's choice.
  std::string compression = {};
};

/// The options that the words of documents and writers mean: "type", "samples", "opacity" and "metadata". Words that
/// there are not, and empty ones, count as the default.
HOST_FILES_API WriteOptions MakeWriteOptions(std::string_view type, std::string_view samples, std::string_view opacity,
                                             std::string_view metadata);

/// One layer of a file with several: the samples go into channels "name.R" and so on, a single value into "name.Y". An
/// empty name is the layer of plain channels.
struct ImageLayer {
  std::string name;
  const Image* image = nullptr;
  /// Type and packing are the file's: the highest type that any layer asks for, the first packing that one asks for.
  WriteOptions options;
};

/// A path as a person or a document wrote it: backslashes are separators, and a relative one starts from `folder`.
HOST_FILES_API std::filesystem::path MakePath(const std::string& written, const std::filesystem::path& folder = {});
/// The same of a file that is read. One that has exactly the written name, backslashes included, is the one that is
/// meant: a shell or a pattern has found it.
HOST_FILES_API std::filesystem::path MakeReadPath(const std::string& written, const std::filesystem::path& folder = {});

/// Reads an image file of any format that there is a codec for, told by its content.
///
/// Samples are values and are not colour-managed. Colour that the file stores multiplied by opacity is divided out
/// (opacity 0 leaves it as it is). Stored range, pin and pivot are restored, a data window places the image, EXIF
/// orientation is applied, a number that means "no value" becomes NaN, and the image carries the file's metadata.
///
/// Null, and an error of one line that names the file and the cause, for what is missing, no regular file, damaged or
/// shortened, has no such part, layer or channels, or is beyond the maximum image size, which is told before anything
/// is allocated. `notes` receives remarks that do not stand in the way. `description`, unless null, receives what there
/// is in the file wherever it could be opened. From any thread.
HOST_FILES_API ImagePtr ReadImageFile(const std::filesystem::path& file, const ReadOptions& options, Status& status,
                                      std::vector<std::string>& notes,
                                      std::optional<FileDescription>* description = nullptr);

/// What there is in an image file, without its samples; nothing and an error as above.
HOST_FILES_API std::optional<FileDescription> DescribeImageFile(const std::filesystem::path& file, Status& status);

/// Writes an image in the format that the file's ending names, completely or not at all: it is encoded in memory,
/// written beside the target, flushed to disk and renamed over it. The folder must exist.
///
/// Unsigned integers hold the value times the largest integer, rounded to nearest; values outside 0..1 are cut, with a
/// note that says how many. NaN becomes the image's nodata number where there is one, else 0 in integer files. Colour
/// is multiplied by opacity where the format stores it so. Mode, range, pin and pivot are stored where the format can,
/// and so is the image's metadata.
HOST_FILES_API Status WriteImageFile(const Image& image, const std::filesystem::path& file, const WriteOptions& options,
                                     std::vector<std::string>& notes);

/// Writes several images as the layers of one file, which is as large as all their boxes together; outside values fill
/// what an image lacks. The format must have layers. `type`, unless null, receives the type of the samples in the file.
HOST_FILES_API Status WriteImageLayers(const std::vector<ImageLayer>& layers, const std::filesystem::path& file,
                                       std::vector<std::string>& notes, SampleType* type = nullptr);
/// What would keep an image from being saved under this name, as far as that can be told ahead: an ending of no format,
/// a missing folder, something there that cannot be replaced. Whole lines, as writing reports them. Changes nothing.
HOST_FILES_API std::vector<std::string> FindSaveProblems(const std::filesystem::path& file);
/// Whether files of that ending can have layers.
HOST_FILES_API bool HasLayers(const std::filesystem::path& file);

/// Writes bytes to a file in the same all-or-nothing way.
HOST_FILES_API Status WriteWholeFile(const std::filesystem::path& file, std::string_view bytes);
/// Why that would fail at this place, or nothing: a clause without the name of the file. It is tried with an empty file
/// beside it, which is taken away again.
HOST_FILES_API std::string TryPlace(const std::filesystem::path& file);

/// A file format, and what is written of an image in it. What can be read is told by the files themselves.
struct FormatReport {
  /// As people call it: "OpenEXR".
  std::string title;
  /// The codec that reads and writes it.
  std::string codec;
  /// With their dots; the first is the usual one.
  std::vector<std::string> endings;
  bool writes = false;
  /// The types of written samples.
  std::vector<std::string> types;
  /// The most channels that are written, opacity among them.
  int channels = 0;
  bool has_opacity = false;
  bool has_layers = false;
  /// What is written of the metadata: "EXIF", "IPTC", "XMP", "profile", "resolution", "texts", "attributes",
  /// "coordinates", "nodata".
  std::vector<std::string> metadata;
};

/// All formats that are known by name.
HOST_FILES_API std::vector<FormatReport> ListFormats();

/// A module of the host that reads and writes formats; `problem` is empty where it can be loaded.
struct CodecReport {
  std::string name;
  std::filesystem::path file;
  std::string problem;
  /// What people call the formats of the codec.
  std::vector<std::string> formats;
  /// Why no process can be started that decodes for it; empty where one can.
  std::string decoder_problem;
  /// Whether the system keeps that process from files and networks.
  bool is_confined = false;
};

/// Loads the modules of all codecs, starts what decodes for them, and tells.
HOST_FILES_API std::vector<CodecReport> FindCodecs();

}  // namespace ScEng
