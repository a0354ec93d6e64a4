// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Files/Api.h"
#include "Host/Files/Codecs/Codec.h"

namespace ScEng {

/// A codec: its module, and what to install where the module cannot be loaded.
struct CodecRow {
  /// Also the argument of the program that decodes: "png".
  const char* name;
  /// The name of the module's library: "HostCodecPng".
  const char* module;
  /// The Debian package whose library the module needs and that may be absent; empty where it is always there.
  const char* package;
};

/// What of the metadata a format holds when it is written.
struct FormatMetadata {
  bool exif = false;
  bool iptc = false;
  bool xmp = false;
  bool icc = false;
  bool resolution = false;
  bool texts = false;
  /// Entries of any name and type, `value:*` among them.
  bool attributes = false;
  bool georeference = false;
  bool nodata = false;
};

/// What becomes of the two numbers of a pair when they are written.
enum class Pairs {
  /// Two plain channels.
  kPlain,
  /// Grey and opacity.
  kOpacity,
  /// The format has no two channels.
  kNone,
};

/// A file format.
struct FormatRow {
  /// As error lines and `value doctor` name it: "openexr".
  const char* name;
  const char* title;
  /// Which codec has it.
  const char* codec;
  /// Endings with their dots and commas between; the first is the usual one. Empty for formats known by content alone.
  const char* endings;
  bool writes;
  /// The types that it stores when written, the first that is preferred where none is asked for comes first.
  std::span<const StoredType> types;
  /// The most channels when written, up to four; 3 stands for one or three.
  int channels;
  bool opacity;
  FormatMetadata metadata;
  Pairs pairs = Pairs::kNone;
  bool layers = false;
  /// Whether colour is stored multiplied by opacity.
  bool multiplies = false;
  /// The largest float of formats whose floats are neither negative nor infinite nor NaN; nothing for all others.
  std::optional<float> most = {};
};

/// All codecs and all formats that are known by name, in the order in which they are tried.
HOST_FILES_API std::span<const CodecRow> GetCodecRows();
HOST_FILES_API std::span<const FormatRow> GetFormatRows();
HOST_FILES_API const CodecRow* FindCodecRow(std::string_view name);
HOST_FILES_API const FormatRow* FindFormatRow(std::string_view name);

/// Whether a file's name has one of the endings of a format, in any case of letters.
HOST_FILES_API bool HasEnding(const FormatRow& row, const std::filesystem::path& file);

/// Which codec opens a file, and as what.
struct Recognition {
  const CodecRow* codec;
  /// Empty where the codec is to find out.
  std::string format;
};

/// Tells by the content of an open file, and where that tells nothing by the ending of its name, who may be able to
/// read it, the likeliest first.
HOST_FILES_API std::vector<Recognition> Recognize(const std::filesystem::path& file, int descriptor);

/// Loads the module of a codec; null and the reason where that fails. From any thread.
HOST_FILES_API const ImageCodec* LoadCodec(const CodecRow& row, std::string& problem);

}  // namespace ScEng
