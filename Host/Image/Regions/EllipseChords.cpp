// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Regions/EllipseChords.h"

#include <hwy/base.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace ScEng {
namespace {

/// A radius of 1 or more as a whole number of parts of a pixel. A float from 1 on has at most 23 binary places.
class WholeRadius {
 public:
  explicit WholeRadius(float radius) {
    double parts = std::min<double>(radius, 2147483648.0);
    while (parts != std::floor(parts)) {
      parts *= 2.0;
      ++places_;
    }
    parts_ = static_cast<std::uint64_t>(parts);
  }

  /// At most 2^31.
  [[nodiscard]] std::uint64_t Get() const { return parts_; }
  /// An offset in the same parts.
  [[nodiscard]] std::uint64_t Scale(int offset) const { return static_cast<std::uint64_t>(offset) << places_; }

 private:
  std::uint64_t parts_ = 0;
  int places_ = 0;
};

/// Whether a * a <= b * c.
bool SquareIsAtMost(std::uint64_t a, std::uint64_t b, std::uint64_t c) {
  std::uint64_t square_high = 0;
  std::uint64_t product_high = 0;
  const std::uint64_t square_low = hwy::Mul128(a, a, &square_high);
  const std::uint64_t product_low = hwy::Mul128(b, c, &product_high);
  return square_high != product_high ? square_high < product_high : square_low <= product_low;
}

/// (i / x)^2 + (j / y)^2 <= 1 as (i y)^2 <= x^2 (y - j) (y + j), where all factors are whole and below 2^63.
bool IsInside(const WholeRadius& x, const WholeRadius& y, int i, int j) {
  const std::uint64_t column = x.Scale(i);
  const std::uint64_t row = y.Scale(j);
  if (column > x.Get() || row > y.Get()) return false;
  return SquareIsAtMost(column * y.Get(), x.Get() * x.Get(), (y.Get() - row) * (y.Get() + row));
}

int WholePart(float radius, int limit) { return radius < static_cast<float>(limit) ? static_cast<int>(radius) : limit; }

}  // namespace

std::vector<int> MakeEllipseChords(float radius_x, float radius_y, int limit_x, int limit_y) {
  // Not "below 1", which a NaN would not be.
  const int furthest_x = radius_x >= 1.0F ? WholePart(radius_x, limit_x) : 0;
  const int furthest_y = radius_y >= 1.0F ? WholePart(radius_y, limit_y) : 0;
  std::vector<int> chords(static_cast<std::size_t>(furthest_y) + 1, furthest_x);
  if (furthest_x == 0 || furthest_y == 0) return chords;

  const WholeRadius x(radius_x);
  const WholeRadius y(radius_y);
  for (int j = 1; j <= furthest_y; ++j) {
    const double part = std::min(static_cast<double>(j) / static_cast<double>(radius_y), 1.0);
    const double estimate = static_cast<double>(radius_x) * std::sqrt((1.0 - part) * (1.0 + part));
    int i = estimate < furthest_x ? static_cast<int>(estimate) : furthest_x;
    while (i < furthest_x && IsInside(x, y, i + 1, j)) ++i;
    while (i > 0 && !IsInside(x, y, i, j)) --i;
    chords[static_cast<std::size_t>(j)] = i;
  }
  return chords;
}

}  // namespace ScEng
