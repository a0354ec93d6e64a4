// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Blur/GaussianKernel.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace ScEng {
namespace {

constexpr float kLargestSigma = 0x1p54F;

double LimitSigma(float sigma) { return static_cast<double>(std::min(sigma, kLargestSigma)); }

constexpr std::size_t kTerms = GaussianCosines::kTerms;
// Up to this radius the weights of a start are added up one by one.
constexpr std::int64_t kLargestAddedRadius = std::int64_t{1} << 18;

CosineStart AddUpStart(const GaussianCosines& cosines, int size, Border border) {
  std::vector<int> slots(static_cast<std::size_t>(size), -1);
  CosineStart start;
  std::array<double, kTerms> current{};
  for (std::int64_t position = -cosines.radius - 1; position <= cosines.radius; ++position) {
    const auto source = static_cast<int>(BorderIndex<std::int64_t>(position, size, border));
    int& slot = slots[static_cast<std::size_t>(source)];
    if (slot < 0) {
      slot = static_cast<int>(start.positions.size());
      start.positions.push_back(source);
      start.weights.emplace_back();
    }
    auto& weights = start.weights[static_cast<std::size_t>(slot)];
    for (std::size_t p = 0; p < kTerms; ++p) {
      // The sample's weight in the response at 0, and, one further from the middle, in the one at -1.
      const double next = cosines.amplitude[p] * std::cos(cosines.frequency[p] * static_cast<double>(position + 1));
      if (position >= -cosines.radius) weights[2 * p] += current[p];
      if (position < cosines.radius) weights[2 * p + 1] += next;
      current[p] = next;
    }
  }
  return start;
}

/// Offsets first, first + step and so on, `count` of them.
struct Offsets {
  std::int64_t first = 0;
  std::int64_t step = 1;
  std::int64_t count = 0;
};

/// The offsets from `lowest` to `highest`, neither of which is beyond 0, at which the position `position` of a line
/// stands.
Offsets FindOffsets(int position, int size, Border border, std::int64_t lowest, std::int64_t highest) {
  if (border == Border::kWrap) {
    const std::int64_t first = lowest + WrapIndex<std::int64_t>(position - lowest, size);
    return {first, size, first > highest ? 0 : (highest - first) / size + 1};
  }
  const std::int64_t first = position == 0 ? lowest : position;
  const std::int64_t last = position == size - 1 ? highest : std::min<std::int64_t>(position, highest);
  return {first, 1, std::max<std::int64_t>(last - first + 1, 0)};
}

/// The sum of cos(frequency k) over the offsets k.
double SumCosines(double frequency, const Offsets& offsets) {
  const auto first = static_cast<double>(offsets.first);
  const auto step = static_cast<double>(offsets.step);
  // Few are added up: their sum in closed form has a quotient that may be of two zeros.
  constexpr std::int64_t kFew = 64;
  if (offsets.count <= kFew) {
    double sum = 0.0;
    for (std::int64_t i = 0; i < offsets.count; ++i)
      sum += std::cos(frequency * (first + static_cast<double>(i) * step));
    return sum;
  }
  const auto count = static_cast<double>(offsets.count);
  const double half = 0.5 * frequency * step;
  return std::sin(count * half) / std::sin(half) * std::cos(frequency * first + (count - 1.0) * half);
}

CosineStart SumUpStart(const GaussianCosines& cosines, int size, Border border) {
  CosineStart start;
  for (int position = 0; position < size; ++position) {
    const Offsets now = FindOffsets(position, size, border, -cosines.radius, cosines.radius);
    // Seen from -1 every offset is one more.
    Offsets before = FindOffsets(position, size, border, -cosines.radius - 1, cosines.radius - 1);
    before.first += 1;
    if (now.count == 0 && before.count == 0) continue;
    start.positions.push_back(position);
    auto& weights = start.weights.emplace_back();
    for (std::size_t p = 0; p < kTerms; ++p) {
      weights[2 * p] = cosines.amplitude[p] * SumCosines(cosines.frequency[p], now);
      weights[2 * p + 1] = cosines.amplitude[p] * SumCosines(cosines.frequency[p], before);
    }
  }
  return start;
}

}  // namespace

std::int64_t GetGaussianRadius(float sigma) {
  if (!(sigma > 0.0F)) return 0;
  return static_cast<std::int64_t>(std::ceil(4.0 * LimitSigma(sigma)));
}

std::vector<float> MakeGaussianWeights(float sigma) {
  const std::int64_t radius = GetGaussianRadius(sigma);
  if (radius == 0) return {1.0F};
  const double width = LimitSigma(sigma);
  std::vector<double> exact;
  exact.reserve(static_cast<std::size_t>(radius) + 1);
  double sum = 0.0;
  for (std::int64_t k = 0; k <= radius; ++k) {
    const auto offset = static_cast<double>(k);
    exact.push_back(std::exp(-offset * offset / (2.0 * width * width)));
    sum += k == 0 ? exact.back() : 2.0 * exact.back();
  }
  std::vector<float> weights;
  weights.reserve(exact.size());
  for (const double weight : exact) weights.push_back(static_cast<float>(weight / sum));
  return weights;
}

GaussianCosines MakeGaussianCosines(float sigma) {
  // exp(-u^2 / 2) for |u| <= 4.1 as a sum of cosines of (p + 1/2) 0.69 u, fitted for the smallest largest error, which
  // is 6.5e-7. Frequencies at odd multiples spare the term of frequency 0, whose recursion would be another one.
  constexpr double kStep = 0.69;
  constexpr std::array<double, GaussianCosines::kTerms> kFit = {
      5.187323031846e-01, 3.222368325695e-01, 1.243489174908e-01, 2.980777779141e-02,
      4.439383316443e-03, 4.100786778435e-04, 2.406261465050e-05};
  GaussianCosines cosines;
  cosines.radius = GetGaussianRadius(sigma);
  const auto radius = static_cast<double>(cosines.radius);
  double sum = 0.0;
  for (std::size_t p = 0; p < GaussianCosines::kTerms; ++p) {
    const double frequency = (static_cast<double>(p) + 0.5) * kStep / LimitSigma(sigma);
    cosines.frequency[p] = frequency;
    // The sum of cos(frequency k) over |k| <= radius, in closed form.
    sum += kFit[p] * std::sin(frequency * (radius + 0.5)) / std::sin(frequency * 0.5);
  }
  for (std::size_t p = 0; p < GaussianCosines::kTerms; ++p) {
    const double frequency = cosines.frequency[p];
    cosines.amplitude[p] = kFit[p] / sum;
    cosines.turn[p] = 2.0 * std::cos(frequency);
    cosines.entering[p] = cosines.amplitude[p] * std::cos(frequency * radius);
    cosines.leaving[p] = cosines.amplitude[p] * std::cos(frequency * (radius + 1.0));
  }
  return cosines;
}

CosineStart MakeCosineStart(const GaussianCosines& cosines, int size, Border border) {
  return cosines.radius <= kLargestAddedRadius ? AddUpStart(cosines, size, border) : SumUpStart(cosines, size, border);
}

}  // namespace ScEng
