// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Api.h"
#include "Host/Image/Image.h"
#include "Host/Math/Geometry.h"

namespace ImageOp {

/// Sets the pixels of `image` that lie in `box` to `values`, one float per channel (further numbers are not read). The
/// box and the image's own box are in document coordinates; what does not overlap stays. Header unchanged.
HOST_IMAGE_API void FillBox(Image& image, const ScEng::Box2I& box, const float* values);

}  // namespace ImageOp
