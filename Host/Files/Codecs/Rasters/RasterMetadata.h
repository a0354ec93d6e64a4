// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gdal_priv.h>

#include <string>
#include <vector>

#include "Host/Files/Codecs/Codec.h"

namespace ScEng {

/// What a raster says of itself beside its samples: into `metadata` and `stored_headers` of the part. What cannot be
/// kept is told in `notes`.
void ReadRasterMetadata(GDALDataset& dataset, FilePart& part, std::vector<std::string>& notes);

/// The coordinate system of a raster as WKT; empty where it has none.
std::string GetCoordinateSystem(const GDALDataset& dataset);

/// An ICC profile as GDAL takes it with the options of a new file.
std::string EncodeProfile(const std::vector<std::uint8_t>& icc);

/// Gives a new GeoTIFF, before its first samples, what the plan says of the image, except the profile. What the format
/// cannot hold is told in `notes`.
void WriteRasterMetadata(GDALDataset& dataset, const WritePlan& plan, std::vector<std::string>& notes);

}  // namespace ScEng
