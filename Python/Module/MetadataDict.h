// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <string>

#include "Host/Image/ImageMetadata.h"

namespace ValuePython {

/// What an image carries of its file, by name; empty for null. Blocks of bytes are "exif", "iptc", "xmp" and "icc";
/// "coordinate_system", "geotransform", "nodata", "unit", "resolution", "resolution_unit", "display_window",
/// "compression" and "had_opacity" have fixed forms; "entries" has everything else.
pybind11::dict ToDict(const ScEng::ImageMetadata* metadata);

/// The way back; null for an empty one. ValueError for names that there are not, TypeError for values of another kind;
/// messages begin with `name`.
std::shared_ptr<const ScEng::ImageMetadata> FromDict(pybind11::handle facts, const std::string& name);

}  // namespace ValuePython
