// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/PartDescription.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

namespace ScEng {
namespace {

constexpr int kMostChannels = 1024;

std::optional<StoredType> GetStoredType(const OIIO::TypeDesc& type) {
  switch (type.basetype) {
    case OIIO::TypeDesc::UINT8: return StoredType::kUint8;
    case OIIO::TypeDesc::INT8: return StoredType::kInt8;
    case OIIO::TypeDesc::UINT16: return StoredType::kUint16;
    case OIIO::TypeDesc::INT16: return StoredType::kInt16;
    case OIIO::TypeDesc::UINT32: return StoredType::kUint32;
    case OIIO::TypeDesc::INT32: return StoredType::kInt32;
    case OIIO::TypeDesc::UINT64: return StoredType::kUint64;
    case OIIO::TypeDesc::INT64: return StoredType::kInt64;
    case OIIO::TypeDesc::HALF: return StoredType::kHalf;
    case OIIO::TypeDesc::FLOAT: return StoredType::kFloat;
    case OIIO::TypeDesc::DOUBLE: return StoredType::kDouble;
    default: return std::nullopt;
  }
}

std::string FindProblem(const OIIO::ImageSpec& spec) {
  if (spec.deep) return "it holds deep samples, which have no single value per pixel";
  if (spec.depth > 1) return "it is a volume, not an image";
  if (spec.width < 1 || spec.height < 1) return "it has no pixels";
  if (spec.nchannels < 1) return "it has no channels";
  if (spec.nchannels > kMostChannels) {
    return "it has " + std::to_string(spec.nchannels) + " channels; up to " + std::to_string(kMostChannels) +
           " are read";
  }
  const auto row = static_cast<std::uint64_t>(spec.width) * static_cast<std::uint64_t>(spec.nchannels) * 8;
  if (row > std::numeric_limits<std::uint64_t>::max() / static_cast<std::uint64_t>(spec.height) ||
      row > static_cast<std::uint64_t>(std::numeric_limits<int>::max())) {
    return "its size " + std::to_string(spec.width) + " x " + std::to_string(spec.height) + " is too large";
  }
  for (int c = 0; c < spec.nchannels; ++c) {
    if (!GetStoredType(spec.channelformat(c))) return "its samples are of a type that is not known";
  }
  return {};
}

bool StartsWith(std::string_view text, std::string_view start) { return text.substr(0, start.size()) == start; }

/// Whether an attribute of the library describes the stored samples or repeats a block.
bool IsStructural(std::string_view name) {
  constexpr std::array kGroups{"oiio:",     "tiff:", "Exif:", "IPTC:", "XMP:", "xmp:", "GPS:", "ICCProfile",
                               "thumbnail", "jpeg:", "png:",  "bmp:",  "gif:", "raw:", "heif:"};
  constexpr std::array kNames{"compression",
                              "Compression",
                              "planarconfig",
                              "Orientation",
                              "XResolution",
                              "YResolution",
                              "ResolutionUnit",
                              "rle",
                              "BSCALE",
                              "BZERO",
                              "BLANK",
                              "targa:alpha_type",
                              "dpx:Packing",
                              "targa:version",
                              "PixelAspectRatio",
                              "dpx:ImageDescriptor",
                              "dpx:EndOfLinePadding",
                              "dpx:EndOfImagePadding",
                              "pnm:binary",
                              "pnm:bigendian",
                              "rla:NumMatteChannels",
                              "ImageDescriptor",
                              "dpx:Version",
                              "dpx:DittoKey",
                              "FramesPerSecond"};
  return std::any_of(kGroups.begin(), kGroups.end(), [&](const char* group) { return StartsWith(name, group); }) ||
         std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

/// A text as a file may give it: up to its first zero, without control characters but breaks of lines.
std::string CleanText(std::string_view text) {
  std::string clean;
  for (const char c : text) {
    if (c == '\0') break;
    if (std::iscntrl(static_cast<unsigned char>(c)) == 0 || c == '\n' || c == '\t') clean += c;
  }
  return clean;
}

std::optional<MetadataValue> ConvertValue(const OIIO::ParamValue& value) {
  const OIIO::TypeDesc type = value.type();
  const std::size_t count = type.basevalues() * static_cast<std::size_t>(value.nvalues());
  if (type.basetype == OIIO::TypeDesc::STRING) {
    std::string text = CleanText(value.get_string());
    if (text.empty()) return std::nullopt;
    return MetadataValue(std::move(text));
  }
  if (type.basetype == OIIO::TypeDesc::PTR || type.basetype == OIIO::TypeDesc::UNKNOWN) return std::nullopt;
  if (type.is_floating_point()) {
    std::vector<double> numbers(count);
    for (std::size_t i = 0; i < count; ++i) numbers[i] = value.get_float_indexed(static_cast<int>(i));
    return MetadataValue(std::move(numbers));
  }
  if (type.size() <= sizeof(std::int32_t) * count) {
    std::vector<std::int64_t> numbers(count);
    for (std::size_t i = 0; i < count; ++i) numbers[i] = value.get_int_indexed(static_cast<int>(i));
    return MetadataValue(std::move(numbers));
  }
  const auto* bytes = static_cast<const std::uint8_t*>(value.data());
  return MetadataValue(OpaqueValue{"oiio:" + std::string(type.c_str()), {bytes, bytes + value.datasize()}});
}

void CopyAttributes(const OIIO::ImageSpec& spec, ImageMetadata& metadata) {
  const float x = spec.get_float_attribute("XResolution", 0.0F);
  const float y = spec.get_float_attribute("YResolution", 0.0F);
  if (std::isfinite(x) && std::isfinite(y) && x > 0.0F && y > 0.0F) {
    metadata.resolution = {x, y};
    const std::string unit(spec.get_string_attribute("ResolutionUnit"));
    if (unit == "in" || unit == "inch") metadata.resolution_unit = "in";
    if (unit == "cm") metadata.resolution_unit = "cm";
  }
  for (const auto& attribute : spec.extra_attribs) {
    const std::string name(attribute.name());
    if (IsStructural(name)) continue;
    if (auto value = ConvertValue(attribute)) metadata.entries.push_back({name, std::move(*value)});
  }
}

/// Of FITS: what a stored number stands for.
void DescribeFitsSamples(const OIIO::ImageSpec& spec, StoredSamples& samples) {
  const double scale = spec.get_float_attribute("BSCALE", 1.0F);
  const double zero = spec.get_float_attribute("BZERO", 0.0F);
  if (scale != 1.0 || zero != 0.0) {
    samples.scale = scale;
    samples.offset = zero;
  }
  if (IsInteger(samples.type) && spec.find_attribute("BLANK") != nullptr) {
    samples.nodata = spec.get_int_attribute("BLANK", 0);
  }
}

int FindOpacity(std::string_view format, const OIIO::ImageSpec& spec) {
  if (spec.alpha_channel >= 0 && spec.alpha_channel < spec.nchannels) return spec.alpha_channel;
  // The reader of GIF names an index beyond the last one.
  if (format == "gif" && spec.nchannels == 4) return 3;
  return -1;
}

bool HasNames(std::string_view format) { return format == "psd" || format == "rla"; }

bool ReadsRegions(std::string_view format) {
  constexpr std::array kFormats{"tiff", "bmp", "dpx", "fits", "sgi", "rla", "cineon"};
  return std::find(kFormats.begin(), kFormats.end(), format) != kFormats.end();
}

}  // namespace

FilePart DescribePart(std::string_view format, const OIIO::ImageSpec& spec, bool has_blocks) {
  FilePart part;
  part.name = CleanText(spec.get_string_attribute("oiio:subimagename"));
  part.size_x = spec.width;
  part.size_y = spec.height;
  part.reads_regions = ReadsRegions(format);
  part.compression = CleanText(spec.get_string_attribute("compression"));
  if (part.compression == "none") part.compression.clear();
  part.problem = FindProblem(spec);
  if (!part.problem.empty()) return part;
  for (int c = 0; c < spec.nchannels; ++c) {
    FileChannel channel;
    channel.samples.type = *GetStoredType(spec.channelformat(c));
    if (HasNames(format)) channel.name = CleanText(spec.channel_name(c));
    if (format == "fits") DescribeFitsSamples(spec, channel.samples);
    part.channels.push_back(std::move(channel));
  }
  part.opacity_channel = FindOpacity(format, spec);
  // The library hands straight colour on as it is; the other formats with opacity say nothing of it and are straight.
  part.is_multiplied =
      part.opacity_channel >= 0 && format == "targa" && spec.get_int_attribute("targa:alpha_type", 0) == 4;
  part.orientation = std::clamp(spec.get_int_attribute("Orientation", 1), 1, 8);
  if (!has_blocks) CopyAttributes(spec, part.metadata);
  return part;
}

}  // namespace ScEng
