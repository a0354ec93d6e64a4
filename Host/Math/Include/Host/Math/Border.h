// SPDX-License-Identifier: Apache-2.0
//
// What lies beyond the border of an image.
#pragma once

#include <algorithm>

namespace ScEng {

/// The image again, as often as needed, or the border's pixel.
enum class Border { kWrap, kExtend };

/// For functions that take a flag: whether an image tiles.
constexpr Border BorderOf(bool wrap) { return wrap ? Border::kWrap : Border::kExtend; }

/// The position from 0 to before `size` that any position of a line that repeats itself stands for; `size` is at
/// least 1.
template <class Whole>
constexpr Whole WrapIndex(Whole position, Whole size) {
  const Whole rest = position % size;
  return rest < 0 ? rest + size : rest;
}

/// The position of a line of `size` pixels, at least 1, that stands at a position which may be beyond its ends.
template <class Whole>
constexpr Whole BorderIndex(Whole position, Whole size, Border border) {
  return border == Border::kWrap ? WrapIndex(position, size) : std::clamp<Whole>(position, 0, size - 1);
}

}  // namespace ScEng
