// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Host/Image/SampleRange.h"
#include "Host/Viewing/ViewImage.h"

namespace ScEng {

/// The values (`ValueOfPixel`) of a row of pixels: the samples themselves in the value mode, else written to `buffer`.
const float* GetValues(const float* pixels, std::size_t count, unsigned color_mode, std::vector<float>& buffer);

/// Figures of the values of some rows, without their sum: one that does not depend on how the rows were divided among
/// threads has to be made of those of each row, in their order.
struct ValueTotals {
  SampleRange finite;
  std::uint64_t values = 0;
  std::uint64_t nan = 0;
  std::uint64_t infinite = 0;

  void Include(const ValueTotals& other);
  /// Includes a row, and returns the sum of its finite values.
  double IncludeRow(const float* row, std::size_t count);
};

/// The figures from the totals of all rows and the sum of each.
ViewFigures MakeFigures(const ValueTotals& totals, const std::vector<double>& row_sums);

/// The ranges of the samples of each channel and of all of them.
struct ChannelTotals {
  std::array<SampleRange, 4> finite;
  /// With infinities.
  SampleRange all;

  void Include(const ChannelTotals& other);
  void IncludeRow(const float* pixels, std::size_t count, int channels);
};

}  // namespace ScEng
