// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "Host/Image/Image.h"

/// The figures of all samples of an image, every channel alike. Range, mean, deviation and histogram are those of the
/// finite samples; without one, the range is empty, mean and deviation are no numbers and all bars are 0.
struct ImageFigures {
  ScEng::SampleRange measured;
  double mean = std::numeric_limits<double>::quiet_NaN();
  double deviation = std::numeric_limits<double>::quiet_NaN();
  std::uint64_t finite = 0;
  std::uint64_t nan = 0;
  std::uint64_t infinite = 0;
  /// Bars of one width from the lowest to the highest sample.
  std::vector<std::uint64_t> histogram;
};

ImageFigures MeasureFigures(const Image& image, std::size_t bars);

/// A line for each bar: where it starts, its length, how many samples it has.
std::string DrawHistogram(const ImageFigures& figures);
