// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "Host/Image/Api.h"
#include "Host/Image/Image.h"
#include "Host/Image/ValueOperation.h"

/// Applies an operation's one-value form to every sample of every channel.
///
/// The result has the image's size, colour mode, pin and pivot, outside value 0, and its lowest and highest finite
/// sample as value range ((0, 0) when there is none). Before the pass the image's lowest and highest sample go into
/// `operation->min` and `max` (NaN skipped, infinities counted; 0 and 1 when every sample is NaN).
///
/// Returns a new image without references, or null for a null image or operation and when the result would exceed the
/// maximum size or cannot be allocated. The arguments stay the caller's. Uses the host's threads; the result is, bit
/// for bit, what one plain loop over `Compute` gives, whatever their number and whatever the processor. An exception
/// thrown by the operation reaches the caller.
HOST_IMAGE_API Image* ComputeValue(const Image* image, ValueOperation* operation);

/// Folds the two-value form over a list of images from the left: r is the first image's sample, then r becomes
/// `Compute(r, sample)` for each further image in order. A list of one image gives what the form above gives.
///
/// The result covers the union of the images' boxes; a pixel that an image lacks reads as that image's outside value in
/// every channel. If all boxes are equal it keeps the first image's size, pin and pivot, otherwise its pin is the first
/// image's and its pivot follows from it. Images of different colour modes are read as values (`ValueOfPixel`) and give
/// the value mode. The outside value is the fold of the outside values. Null also for an empty list and for a list that
/// holds a null; `min` and `max` are stored only when the list has exactly one image. Otherwise as above.
HOST_IMAGE_API Image* ComputeValue(std::vector<const Image*> images, ValueOperation* operation);
