// SPDX-License-Identifier: Apache-2.0
//
// Where a result lies: the pin, the pivot and the box of a new image.
#pragma once

#include "Host/Image/Api.h"
#include "Host/Image/Image.h"
#include "Host/Math/Geometry.h"

namespace ScEng {

/// Pins a result of the size of `like` where that image is pinned.
inline void PlaceLike(const Image& like, Image& result) {
  result.SetPin(like.GetPinX(), like.GetPinY());
  result.SetPivot(like.GetPivotX(), like.GetPivotY());
}

/// A fresh header of an image that covers `box` and keeps the pin of `pinned`: its pivot is
/// ((pin x - left) / width, (pin y - top) / height) in single precision, which is NaN along a side without pixels. A
/// side beyond 32 bits becomes the longest one of 32 bits, which no image takes.
HOST_IMAGE_API ImageHeader PlaceOver(const Box2I& box, const Image& pinned, unsigned color_mode);

/// A fresh header of an image that covers `box` and has its pin at the top left corner, pivot (0, 0). A corner beyond
/// 32 bits is pinned at the nearest place that a pin can have, and the pivot makes up for the rest, up to 2^21 pixels;
/// where it cannot, the header's box is another one.
HOST_IMAGE_API ImageHeader PlaceAtCorner(const Box2I& box, unsigned color_mode);

}  // namespace ScEng
