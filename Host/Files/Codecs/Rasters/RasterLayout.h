// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Rasters/Gdal.h"

namespace ScEng {

/// Where the samples of a channel come from.
struct ChannelSource {
  /// From 0.
  int band = 0;
  /// The component of the palette's colours; -1 where the band is no index into a palette.
  int palette_component = -1;
};

/// How a part is read.
struct RasterLayout {
  /// What GDAL opens it by.
  std::string connection;
  std::string driver;
  /// Which directory of a TIFF it is; -1 for no TIFF.
  int tiff_directory = -1;
  std::vector<ChannelSource> sources;
  std::vector<std::array<std::uint8_t, 4>> palette;
  /// The index of the palette that stands for "no value here".
  int palette_nodata = -1;
};

/// Tells what is in an open raster: the part's size, channels and problems, and where its channels come from.
void DescribeRaster(GDALDataset& dataset, FilePart& part, RasterLayout& layout);

}  // namespace ScEng
