// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>

#include "Host/Image/Image.h"
#include "Value/Nodes/Relief/ReliefChoices.h"

/// The bevel styles of the Relief node: rings of rising level around the edge of a mask, each drawn over the one
/// before.
namespace ReliefBevel {

/// One bevel. Step i of `steps` draws where the mask is set once it is grown by `start` - i pixels, or shrunk where
/// that is negative, with the level of t = (i + 1) * (1 / steps), or of 1 - t when inverted.
struct Rings {
  int steps = 0;  ///< Nothing is drawn when it is not positive.
  int start = 0;
  bool is_inverted = false;
  ReliefProfile profile = ReliefProfile::kLinear;
};

/// How many values may be blended with levels, step by step, once the discs cover the mask: some minutes of work.
inline constexpr double kMostBlends = 3e10;

/// The level of a ring, in single precision: linear v, smooth (3 - 2v) * v^2, arc out sqrt(1 - (v - 1)^2), arc in
/// 1 - sqrt(1 - v^2).
float GetLevel(ReliefProfile profile, float v);

/// The level of step `step` of a bevel.
float GetLevelOfStep(const Rings& rings, int step);

/// Draws a bevel as it is defined: one copy of the mask for each step, grown or shrunk by a disc and filled into the
/// output. `output` and `mask` are images of one size in the value mode.
///
/// Takes time in proportion to the steps, and to their offsets where the mask has more than two different samples; but
/// where a disc covers the whole mask, all pixels of one value are drawn at once. Throws `std::runtime_error` where
/// that still leaves more to do than `kMostBlends`.
void DrawStepByStep(const Image& mask, bool wrap, const Rings& rings, Image& output);

/// What the bevels of one mask have in common.
class Analysis {
 public:
  /// The mask must outlive the analysis.
  Analysis(const Image& mask, bool wrap);

  /// Draws the same samples as `DrawStepByStep`.
  ///
  /// Where every sample of the mask is at most 0 or at least 1, a pixel belongs to all rings from the first on up to
  /// one that its exact distance from the edge tells. The distances are found once, for all bevels of the mask. Any
  /// other mask is drawn by `DrawSoft`, or step by step where that does not take it.
  void Draw(const Rings& rings, Image& output);

 private:
  void FindGrown();
  void FindShrunk();

  const Image& mask_;
  bool wrap_;
  bool is_hard_;
  /// For each pixel the least number of pixels by which the mask must grow (negative: may shrink) for it to be set.
  /// Not set in advance: zeros written to the memory of a large image in one go delay the end of a cancelled node.
  std::unique_ptr<std::int32_t[]> least_offsets_;
  bool has_grown_ = false;
  bool has_shrunk_ = false;
};

}  // namespace ReliefBevel
