// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Api.h"
#include "Host/Image/Image.h"

/// Whole-image filters. All use the host's threads, and no result depends on how many there are or on the processor's
/// instruction set.
namespace Filter {

/// Blurs every channel of `in` with a Gaussian, along x and then along y, into `out`.
///
/// `sigma_x` and `sigma_y` are standard deviations in pixels. A sigma that is not above 0 leaves its direction alone
/// (both: `out` gets the bytes of `in`); there is no largest one, and memory does not grow with it. The kernel is
/// exp(-k^2 / (2 sigma^2)) for whole k with |k| <= ceil(4 sigma), divided by its sum. `mode` says what lies beyond the
/// border: 'p' the image again, as often as needed, anything else the border's pixel.
///
/// Every sample is within 1e-5 of the range of the input's finite samples, plus the rounding of the result to a float,
/// of the same sum in double precision, and never outside that range. NaN and infinities spread exactly as far as the
/// kernel reaches: a sum over a NaN or over infinities of both signs is NaN, one over infinities of one sign is that
/// infinity.
///
/// The header of `out` stays, except for the value range, which becomes the input's. Throws `std::invalid_argument`
/// where the images differ in size or mode or are one and the same, `std::bad_alloc` for lack of memory.
///
/// Time is linear in the pixels and hardly depends on a sigma above 10: see `ScEng::GaussianCosines` for the algorithm.
HOST_IMAGE_API void ApplyGaussianBlur(const Image& in, Image& out, float sigma_x, float sigma_y, char mode);

/// Sets every pixel to `value`, one float per channel, or moves it there as far as the mask says: with m the mask's
/// value (`ScEng::ValueOfPixel`) clamped to 0..1, NaN counting as 0, each sample s becomes s + (value - s) * m, and
/// exactly `value` where m is 1. A null mask counts as 1 everywhere.
///
/// `flags` is 0; no other number has a meaning. The header stays. Throws `std::invalid_argument` for a mask of another
/// size than the image. The image may be its own mask.
HOST_IMAGE_API void Fill(Image& image, const Image* mask, const float* value, int flags);

/// Copies samples and value range. Returns false, and does nothing, where an image is null or the images differ in size
/// or mode.
HOST_IMAGE_API bool Copy(const Image* from, Image* to);

}  // namespace Filter
