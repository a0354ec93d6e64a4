// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "Value/Nodes/Relief/ReliefProfile.h"

/// The "levels" style of the Relief node: every pixel of a mask raises a bump whose height and radius are in proportion
/// to the pixel's value, and the result is the upper envelope of all bumps.
namespace ReliefLevels {

/// What a relief is made from. The samples are not owned; they must outlive whatever works on them.
struct Field {
  const float* mask = nullptr;   ///< `width` times `height` samples, rows dense.
  const float* grown = nullptr;  ///< The same size; pixels that are not above 0 here become 0.
  int width = 0;
  int height = 0;
  bool wrap = false;  ///< Whether the mask tiles; otherwise it ends at its border.
  int radius_px = 0;  ///< Of the bump of a pixel as high as `high`; 1 to 250.
  ReliefProfile profile = ReliefProfile::kLinear;
  float low = 0.0F;   ///< The value whose bump has height and radius 0.
  float high = 1.0F;  ///< Pixels from this value up keep their value.
};

/// The plain loop over the disc around each pixel, which defines the result:
///
/// A pixel with a value of at least `high` keeps it. Any other starts with `low` and takes the largest candidate of the
/// pixels b at distances d < radius, where q = (b - low) * (1 / (high - low)), t = min(1, max(0, d / (radius * q))) and
/// candidate = (level * q) * (high - low) + low. With u = 1 - t the level is u (linear), (3 - 2u) * (u * u) (smooth),
/// sqrt(1 - t * t) (arc out, a dome) or 1 - sqrt(1 - u * u) (arc in, a spike). All of it is in single precision, a root
/// being the float nearest to it. A NaN never wins: not as a candidate, and t is 0 where the quotient is NaN.
///
/// Writes rows [from, to) of `output`, an image of the mask's size. Takes time in proportion to the squared radius.
void ComputeRowsPlainly(const Field& field, int from, int to, float* output);

struct Tree;

/// Computes the same samples, to the last bit, in a time that hardly grows with the radius.
///
/// The mask is kept as a tree of blocks with the highest q of each. For a few neighbouring pixels at a time the tree is
/// searched for what can raise them: a bump is never higher than one of the block's highest q at the block's nearest
/// pixel, so that most blocks are passed over after one comparison (branch and bound; the principle of A. Gray and
/// A. Moore, "N-Body Problems in Statistical Learning", 2000). Pixels near each other are mostly raised by the same
/// bumps, so each search starts from those that raised the pixels before.
///
/// Construction takes one pass over the mask and memory for one more image of its size, plus a border of the radius
/// where the mask tiles. Throws `std::bad_alloc`.
class Analysis {
 public:
  explicit Analysis(const Field& field);
  ~Analysis();
  Analysis(const Analysis&) = delete;
  Analysis& operator=(const Analysis&) = delete;

  /// Writes rows [from, to) of `output`, an image of the mask's size. May be called from many threads at once.
  void ComputeRows(int from, int to, float* output) const;

 private:
  Field field_;
  std::unique_ptr<Tree> tree_;
};

}  // namespace ReliefLevels
