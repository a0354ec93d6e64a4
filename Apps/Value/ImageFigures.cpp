// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/ImageFigures.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>

ImageFigures MeasureFigures(const Image& image, std::size_t bars) {
  ImageFigures figures;
  const float* samples = image.GetConstArray();
  const std::size_t count = image.GetNumSamples();
  figures.measured = ScEng::MeasureFiniteRange(samples, count);
  const double low = figures.measured.low;
  const double span = static_cast<double>(figures.measured.high) - low;
  figures.histogram.assign(bars, 0);

  // Sums of differences from the lowest sample keep their digits where all samples are large and close together.
  double sum = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    if (std::isnan(samples[i])) ++figures.nan;
    if (std::isinf(samples[i])) ++figures.infinite;
    if (!std::isfinite(samples[i])) continue;
    ++figures.finite;
    const double above = static_cast<double>(samples[i]) - low;
    sum += above;
    const double place = span > 0.0 ? above / span * static_cast<double>(bars) : 0.0;
    ++figures.histogram[std::min(bars - 1, static_cast<std::size_t>(place))];
  }
  if (figures.finite == 0) return figures;
  const double mean_above = sum / static_cast<double>(figures.finite);
  figures.mean = low + mean_above;
  double squares = 0.0;
  for (std::size_t i = 0; i < count; ++i) {
    if (!std::isfinite(samples[i])) continue;
    const double difference = static_cast<double>(samples[i]) - low - mean_above;
    squares += difference * difference;
  }
  figures.deviation = std::sqrt(squares / static_cast<double>(figures.finite));
  return figures;
}

std::string DrawHistogram(const ImageFigures& figures) {
  constexpr std::size_t kWidest = 50;
  const std::uint64_t most =
      std::max<std::uint64_t>(1, *std::max_element(figures.histogram.begin(), figures.histogram.end()));
  const double low = figures.measured.low;
  const double span = static_cast<double>(figures.measured.high) - low;
  std::ostringstream text;
  for (std::size_t i = 0; i < figures.histogram.size(); ++i) {
    const double from = low + span * static_cast<double>(i) / static_cast<double>(figures.histogram.size());
    char shortest[32];
    std::string label(shortest, std::to_chars(shortest, shortest + sizeof(shortest), static_cast<float>(from)).ptr);
    label.resize(std::max<std::size_t>(label.size(), 14), ' ');
    const auto length = static_cast<std::size_t>(static_cast<double>(figures.histogram[i]) / static_cast<double>(most) *
                                                 static_cast<double>(kWidest));
    text << "  " << label << " " << std::string(length, '#') << (length > 0 ? " " : "") << figures.histogram[i] << "\n";
  }
  return text.str();
}
