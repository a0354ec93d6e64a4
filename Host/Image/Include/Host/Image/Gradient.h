// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Api.h"
#include "Host/Image/Image.h"

namespace ImageValue {

/// The derivatives of a value image v along x and, downwards, along y: (v(x + 1) - v(x - 1)) * 0.5 in single precision.
///
/// With `seamless` the image repeats beyond its borders. Else the first and the last column (row) take the difference
/// to their one neighbour, v(x + 1) - v(x) or v(x) - v(x - 1). Along a side of one pixel the derivative is 0, whatever
/// the pixel is.
///
/// Each output's value range becomes its lowest and highest finite sample, (0, 0) where there is none; the rest of its
/// header stays. Returns false, and does nothing, unless all three are of one size and of the value mode and the
/// outputs are two images apart from the source. Uses the host's threads; the result does not depend on them.
HOST_IMAGE_API bool Gradient(const Image& source, Image& out_x, Image& out_y, bool seamless);

}  // namespace ImageValue
