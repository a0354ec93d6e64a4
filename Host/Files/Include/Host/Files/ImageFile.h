// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Files/Api.h"
#include "Host/Image/Image.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// How the channels of a file become the pixels of an image.
enum class ReadMode {
  /// By the stored mode where it suits the channels, else by their number: one is a value, two are grey and opacity,
  /// three or four are colour.
  kAuto,
  /// Colour; one channel becomes grey with opacity 1.
  kColor,
  /// The signed mode, the channels taken as they are stored.
  kSigned,
  /// The value that each pixel stands for.
  kValue,
};

/// What the samples of a written file are, where its format can store it.
enum class SampleType { kFloat, kHalf, kUint16, kUint8 };

/// "float", "half", "uint16", "uint8" and back.
HOST_FILES_API const char* GetName(SampleType type);
HOST_FILES_API std::optional<SampleType> FindSampleType(std::string_view name);

/// A path as a person or a document wrote it: backslashes are separators, and a relative one starts from `folder`.
HOST_FILES_API std::filesystem::path MakePath(const std::string& written, const std::filesystem::path& folder = {});

/// Reads an image file of any format that OpenImageIO reads.
///
/// Samples are values and are not colour-managed; integer samples become 0..1. Colour that the file stores multiplied
/// by opacity is divided out (opacity 0 leaves it as it is). Stored range, pin and pivot are restored. Null, and an
/// error that names the file and the cause, for a missing, damaged or shortened file, for no channel or more than four,
/// and beyond the maximum image size. `notes` receives remarks that do not stand in the way.
HOST_FILES_API ImagePtr ReadImageFile(const std::filesystem::path& file, ReadMode mode, Status& status,
                                      std::vector<std::string>& notes);

/// Writes an image in the format that the file's ending names, completely or not at all: it is encoded in memory,
/// written beside the target, flushed to disk and renamed over it. The folder must exist.
///
/// Integer samples hold the value times the largest integer, rounded to nearest; values outside 0..1 are cut, with a
/// note that says how many. Colour is multiplied by opacity where the format stores it so. Mode, range, pin and pivot
/// are stored where the format can.
HOST_FILES_API Status WriteImageFile(const Image& image, const std::filesystem::path& file, SampleType type,
                                     std::vector<std::string>& notes);

/// Writes bytes to a file in the same all-or-nothing way.
HOST_FILES_API Status WriteWholeFile(const std::filesystem::path& file, std::string_view bytes);

/// Where the module of image formats should be, and what is wrong with it; `problem` is empty where nothing is.
struct ImageFormatsReport {
  std::filesystem::path file;
  std::string problem;
};

/// Looks for the module without loading it.
HOST_FILES_API ImageFormatsReport FindImageFormats();

}  // namespace ScEng
