// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Api.h"
#include "Host/Image/Image.h"

/// Grows and shrinks the bright parts of an image, or of a box of it: dilation and erosion by an ellipse.
///
/// The ellipse of the radii rx and ry, in pixels, holds the whole offsets (i, j) with (i / rx)^2 + (j / ry)^2 <= 1,
/// decided without rounding. A radius below 1 (or NaN) leaves only offset 0 in its direction; a radius may be infinite.
///
/// NaN samples are ignored; where the ellipse meets nothing else the result is NaN. -0.0 counts as smaller than
/// +0.0, so that every result is one sample of the image, bit for bit, whatever the order of the comparisons.
///
/// Uses the host's threads; their number changes no bit. Throws `std::bad_alloc` when there is no memory for a copy of
/// one channel; the image is then as it was, or has some of its channels done.
class HOST_IMAGE_API ImageRegion {
 public:
  /// Chooses what the operations below work on: the pixels with left <= x < right and top <= y < bottom, counted from
  /// the image's first pixel and cut to the image, in one channel, or in each channel on its own for -1. Nothing
  /// outside the box is read or written: it is treated as an image of its own, also where it tiles.
  ///
  /// The image stays the caller's and must live as long as it is worked on. A null image, an empty box and a channel
  /// that the image does not have make the operations do nothing.
  void Init(Image* image, int left, int top, int right, int bottom, int channel);

  /// Each sample becomes the largest one within the ellipse around it. With `wrap` the box tiles, and the ellipse may
  /// reach round it more than once; without it, offsets that fall outside are left out.
  ///
  /// Takes time proportional to the vertical radius for each pixel, but whatever the radius for a channel with at most
  /// two different samples, such as a mask.
  void Grow(float radius_x, float radius_y, bool wrap);

  /// The same with the smallest sample.
  void Shrink(float radius_x, float radius_y, bool wrap);

 private:
  void Replace(float radius_x, float radius_y, bool wrap, bool by_largest);

  Image* image_ = nullptr;
  int left_ = 0;
  int top_ = 0;
  int right_ = 0;
  int bottom_ = 0;
  int channel_ = -1;
};
