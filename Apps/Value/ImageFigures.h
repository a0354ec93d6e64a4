// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Host/Image/Image.h"

/// The figures of all samples of an image, every channel alike. Range, mean, deviation and histogram are those of the
/// finite samples; all 0 where there is none.
struct ImageFigures {
  ScEng::SampleRange measured;
  double mean = 0.0;
  double deviation = 0.0;
  std::uint64_t finite = 0;
  std::uint64_t nan = 0;
  std::uint64_t infinite = 0;
  /// Bars of one width from the lowest to the highest sample.
  std::vector<std::uint64_t> histogram;
};

ImageFigures MeasureFigures(const Image& image, std::size_t bars);

/// A line for each bar: where it starts, its length, how many samples it has.
std::string DrawHistogram(const ImageFigures& figures);
