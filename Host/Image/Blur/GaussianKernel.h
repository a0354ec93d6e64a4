// SPDX-License-Identifier: Apache-2.0
//
// The sampled, truncated Gaussian along one direction, in the two forms in which the blur applies it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Host/Math/Border.h"

namespace ScEng {

/// Reach of the kernel in pixels: ceil(4 sigma); 0 for a sigma that is not above 0.
///
/// A sigma above 2^54 counts as 2^54, here and below. That is no bound on what can be asked for: the pixels of a line
/// of 2^31 then weigh less than 1e-7 together beside its continuation, and a line that repeats itself is its mean.
std::int64_t GetGaussianRadius(float sigma);

/// Weights for the offsets 0 to the radius, each also that of the negative offset; all of them sum to 1.
std::vector<float> MakeGaussianWeights(float sigma);

/// The kernel as a sum of cosines that are cut off at its radius r:
///
///   w(k) = sum over p of amplitude(p) cos(frequency(p) k)   for |k| <= r, else 0.
///
/// Each term's response to a line obeys a recursion of second order, whatever the radius (Sugimoto and Kamata,
/// "Efficient constant-time Gaussian filtering with sliding DCT/DST-5 and dual-domain error minimization", ITE
/// Transactions on Media Technology and Applications 3 (1), 2015). With B(n) the response at n and x the line,
///
///   B(n + 1) = turn B(n) - B(n - 1) + entering (x(n + r + 1) + x(n - r - 1)) - leaving (x(n + r) + x(n - r)).
///
/// The frequencies are not tied to the radius as in a discrete cosine transform, which needs many more terms to follow
/// the kernel to its cut end.
struct GaussianCosines {
  static constexpr std::size_t kTerms = 7;

  std::int64_t radius = 0;
  std::array<double, kTerms> amplitude{};
  std::array<double, kTerms> frequency{};
  std::array<double, kTerms> turn{};
  std::array<double, kTerms> entering{};
  std::array<double, kTerms> leaving{};
};

/// The series sums to 1. Its absolute differences from the kernel sum to less than 2e-6 for every sigma above 10.
GaussianCosines MakeGaussianCosines(float sigma);

/// With what weights the positions of a line add up to the terms' responses at positions 0 and -1.
struct CosineStart {
  std::vector<int> positions;
  /// For each of the positions: for each term its weight at 0, then at -1.
  std::vector<std::array<double, 2 * GaussianCosines::kTerms>> weights;
};

/// Of lines of `size` positions, which stand for those beyond their ends as `border` says. Time grows with the radius
/// up to 2^18, and beyond with the size alone.
CosineStart MakeCosineStart(const GaussianCosines& cosines, int size, Border border);

}  // namespace ScEng
