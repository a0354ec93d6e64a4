// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

/// The samples of an image for an algorithm that reads them: dense rows, channels interleaved, 1, 2 or 4 of them.
struct PixelView {
  const float* samples = nullptr;
  std::size_t width = 0;
  std::size_t height = 0;
  std::size_t channels = 1;
};

/// The choices of "neighbors", in their order.
enum class Neighbors {
  kAll,    ///< The eight pixels around a pixel.
  kCross,  ///< The four beside, above and below it.
};

/// The choice with this index; a word that is not in the list counts as "all".
inline Neighbors GetNeighbors(int index) { return index == 1 ? Neighbors::kCross : Neighbors::kAll; }

/// Which pixels are neighbours, and how far apart neighbours may be: what Connected Components and Component Edges
/// share.
struct NeighborRule {
  /// In the unit of the samples.
  float tolerance = 0.0F;
  Neighbors neighbors = Neighbors::kAll;
  /// Whether the image continues at its opposite border.
  bool seamless = false;
};
