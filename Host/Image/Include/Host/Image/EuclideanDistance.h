// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Api.h"
#include "Host/Image/Image.h"

/// Every pixel's Euclidean distance, in pixels, to the nearest set pixel, from centre to centre; 0 on set pixels. A
/// pixel is set when its value (`ScEng::ValueOfPixel`) is greater than `level`; a NaN is not.
///
/// With `wrap` the image tiles, and distances are measured across its borders. With `normalize` each distance is
/// divided by the largest one. Without a set pixel every distance is +infinity, or 1 when normalised; where the largest
/// distance is 0 normalising leaves the zeros.
///
/// The result is in the value mode and has the image's size, pin and pivot, outside value 0, and as value range 0 to
/// the largest distance (0 to 0 when that is infinite), or (0, 1) when normalised. It is a new image without
/// references, or null when it exceeds the maximum size or cannot be allocated.
///
/// Exact: the square root, in double precision and then rounded to float, of the whole squared distance. Time is
/// linear in the number of pixels, whatever they are. Uses the host's threads; their number changes no bit.
///
/// The two passes (distances within columns, then the lower envelope of one parabola per column along each row) are
/// those of A. Meijster, J. Roerdink, W. Hesselink: A general algorithm for computing distance transforms in linear
/// time, 2000, section 2, and P. Felzenszwalb, D. Huttenlocher: Distance transforms of sampled functions, 2012.
HOST_IMAGE_API Image* EuclideanDistance(const Image& image, float level, bool normalize, bool wrap);
