// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Image.h"
#include "Host/Viewing/Api.h"

namespace ScEng {

/// The size that a side has after it is halved so many times, each time rounded up.
HOST_VIEWING_API int ReduceSize(int size, int halvings);

/// The header of an image that is reduced by 2^halvings along each side: its box lies where that of the image is, by
/// the same scale, to the nearest pixel.
HOST_VIEWING_API ImageHeader ReduceHeader(const ImageHeader& header, int halvings);

/// A reduced copy, with the mode, range, outside value and metadata of the image. Each halving makes of four samples
/// the mean of the finite ones, as the levels of a `ViewImage` are made. Uses the threads of the host, and asks whether
/// to stop (`PollCancellation`).
HOST_VIEWING_API ImagePtr ReduceImage(const Image& image, int halvings);

}  // namespace ScEng
