// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "Host/Math/Api.h"

namespace ScEng {

/// A rectangle of whole pixels in document coordinates; y grows downwards, `right` and `bottom` are exclusive.
/// The edges are 64 bits wide so that any 32-bit pin plus any size can be held.
struct Box2I {
  std::int64_t left = 0;
  std::int64_t top = 0;
  std::int64_t right = 0;
  std::int64_t bottom = 0;

  [[nodiscard]] std::int64_t Width() const { return right - left; }
  [[nodiscard]] std::int64_t Height() const { return bottom - top; }
  friend bool operator==(const Box2I&, const Box2I&) = default;
};

/// The smallest box that holds both: the smaller left and top, the larger right and bottom.
HOST_MATH_API Box2I Union(const Box2I& a, const Box2I& b);

/// A position in pixels (or any pair of numbers that an attribute holds).
struct Point {
  double x = 0.0;
  double y = 0.0;
  friend bool operator==(const Point&, const Point&) = default;
};

/// A placed rectangle in pixels.
struct Frame {
  double x = 0.0;
  double y = 0.0;
  double width = 0.0;
  double height = 0.0;
  friend bool operator==(const Frame&, const Frame&) = default;
};

/// A colour with opacity, straight (not multiplied); 0..1 nominal, not limited.
struct Rgbo {
  double red = 0.0;
  double green = 0.0;
  double blue = 0.0;
  double opacity = 1.0;
  friend bool operator==(const Rgbo&, const Rgbo&) = default;
};

/// Rounds to the nearest whole number, halves going down: floor(x), or ceil(x) when x - floor(x) > 0.5.
/// Values beyond the 32-bit range give the nearest 32-bit number; NaN gives 0.
HOST_MATH_API std::int32_t RoundHalfDown(double x);

/// The same rule evaluated in single precision, as pivots are.
HOST_MATH_API std::int32_t RoundHalfDown(float x);

/// The same for places in document coordinates, which may be beyond 32 bits: values beyond 2^60 either way give that
/// number, so that a pin and a size can still be added; NaN gives 0.
HOST_MATH_API std::int64_t RoundPlaceHalfDown(float x);

}  // namespace ScEng
