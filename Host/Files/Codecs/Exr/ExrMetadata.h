// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <OpenEXR/ImfHeader.h>

#include <string>
#include <string_view>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Exr/ExrHeader.h"

namespace ScEng::Exr {

/// An attribute of EXR, and the name that the formats share for it.
struct NameRow {
  const char* attribute;
  const char* name;
};
inline constexpr NameRow kNames[] = {{"owner", "Copyright"}, {"comments", "ImageDescription"}, {"capDate", "DateTime"}};

inline constexpr const char* kOpaquePrefix = "exr:";
inline constexpr const char* kXmpName = "xmp";
inline constexpr const char* kDensityName = "xDensity";
inline constexpr const char* kAspectName = "pixelAspectRatio";

/// Whether an attribute describes how the samples are stored, so that it does not travel with the image.
bool IsStructural(std::string_view attribute);

/// Puts the attributes of a part into its metadata and stored headers.
void ReadMetadata(const PartHeader& header, FilePart& part);

/// Puts the metadata and the stored headers of a plan into a header; what EXR cannot hold is told in `notes`.
void WriteMetadata(const WritePlan& plan, Imf::Header& header, std::vector<std::string>& notes);

}  // namespace ScEng::Exr
