// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>

#include "Value/Nodes/Relief/ReliefField.h"

/// The "levels" style of the Relief node: every pixel of a mask raises a bump whose height and radius are in proportion
/// to the pixel's value, and the result is the upper envelope of all bumps.
namespace ReliefLevels {

struct Tree;

/// The relief of a field.
///
/// A pixel with a value of at least `high` keeps it. Any other starts with `low` and takes the largest candidate of the
/// pixels b at distances d < radius, where q = (b - low) * (1 / (high - low)), t = min(1, max(0, d / (radius * q))) and
/// candidate = (level * q) * (high - low) + low. With u = 1 - t the level is u (linear), (3 - 2u) * (u * u) (smooth),
/// sqrt(1 - t * t) (arc out, a dome) or 1 - sqrt(1 - u * u) (arc in, a spike). All of it is in single precision: the
/// square of a distance is rounded once, and a root is the float nearest to it. A NaN never wins: not as a candidate,
/// and t is 0 where the quotient is NaN. The samples are these to the last bit, in a time that grows far less
/// than the number of pixels in reach.
///
/// The mask is kept as a tree of blocks with the highest q of each. For a few neighbouring pixels at a time the tree is
/// searched for what can raise them: a bump is never higher than one of the block's highest q at the block's nearest
/// pixel, so that most blocks are ruled out by one comparison (branch and bound; the principle of A. Gray and
/// A. Moore, "N-Body Problems in Statistical Learning", 2000). Smaller blocks are held against the group more closely,
/// by a plane above their bumps and one below what the pixels hold. Pixels near each other are mostly raised by the
/// same bumps, so each search starts from those that raised the pixels before. And on smooth ground the bumps lie about
/// the same step away from each pixel, so that a guess from the pixels before raises most of them first. Single bumps
/// are held against each pixel of the group, in one comparison for a row of them.
///
/// Construction takes one pass over the mask and memory for one more image of its size. Where the mask tiles there is a
/// border around it: of the radius, but at most of half the image, unless the profile is "smooth". Throws
/// `std::bad_alloc`, also where that border would take more than 2 GiB.
class Analysis {
 public:
  explicit Analysis(const Field& field);
  ~Analysis();
  Analysis(const Analysis&) = delete;
  Analysis& operator=(const Analysis&) = delete;

  /// Writes rows [from, to) of `output`, an image of the mask's size. May be called from many threads at once. Throws
  /// `std::bad_alloc`.
  void ComputeRows(int from, int to, float* output) const;

 private:
  Field field_;
  std::unique_ptr<Tree> tree_;
};

}  // namespace ReliefLevels
