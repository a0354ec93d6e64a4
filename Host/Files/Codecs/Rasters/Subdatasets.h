// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gdal_priv.h>

#include <string>
#include <vector>

namespace ScEng {

/// A raster within a file that holds several.
struct Subdataset {
  /// The name of the variable; empty for the pages of a TIFF.
  std::string name;
  /// What GDAL opens it by.
  std::string connection;
  /// The directory of a TIFF that it is; -1 for other formats.
  int tiff_directory = -1;
};

/// The rasters of a file, where it holds several; those beyond the 1000th are left out with a note. A file can claim
/// any text to be a raster of its own, so that only texts are taken that name this very file.
std::vector<Subdataset> ListSubdatasets(GDALDataset& dataset, const std::string& path, std::vector<std::string>& notes);

}  // namespace ScEng
