// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Api.h"
#include "Host/Image/Image.h"
#include "Host/Math/Geometry.h"

/// A new image that covers `box`, in document coordinates, in a colour mode: the samples of `image` where it overlaps
/// the box, converted by the rules of `ScEng::ConvertSamples`, and the input's outside value in every channel
/// elsewhere.
///
/// The result's pin is the box's top left corner and its pivot (0, 0), except for a corner beyond the 32 bits of a pin:
/// see `ScEng::PlaceAtCorner`. It has the input's value range and outside value and no reference. Returns null for a
/// null image, a mode that does not exist, a box of negative size or so far beyond 32 bits that no pin and pivot place
/// an image there, and where the result would exceed the largest image size or cannot be allocated.
HOST_IMAGE_API Image* Paste(const Image* image, ScEng::Box2I box, int color_mode);

/// The same in the value mode, with `outside` elsewhere and as the result's outside value, and with the value range
/// (0, 1).
HOST_IMAGE_API Image* PasteMask(const Image* image, ScEng::Box2I box, float outside);
