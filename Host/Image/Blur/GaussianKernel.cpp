// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Blur/GaussianKernel.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace ScEng {
namespace {

constexpr float kLargestSigma = 65536.0F;

double LimitSigma(float sigma) { return static_cast<double>(std::min(sigma, kLargestSigma)); }

}  // namespace

int GetGaussianRadius(float sigma) {
  if (!(sigma > 0.0F)) return 0;
  return static_cast<int>(std::ceil(4.0 * LimitSigma(sigma)));
}

std::vector<float> MakeGaussianWeights(float sigma) {
  const int radius = GetGaussianRadius(sigma);
  if (radius == 0) return {1.0F};
  const double width = LimitSigma(sigma);
  std::vector<double> exact;
  exact.reserve(static_cast<std::size_t>(radius) + 1);
  double sum = 0.0;
  for (int k = 0; k <= radius; ++k) {
    exact.push_back(std::exp(-static_cast<double>(k) * k / (2.0 * width * width)));
    sum += k == 0 ? exact.back() : 2.0 * exact.back();
  }
  std::vector<float> weights;
  weights.reserve(exact.size());
  for (const double weight : exact) weights.push_back(static_cast<float>(weight / sum));
  return weights;
}

BorderMap::BorderMap(int size, int reach, bool wrap) : size_(size), reach_(reach) {
  map_.reserve(static_cast<std::size_t>(size) + 2 * static_cast<std::size_t>(reach) + 1);
  int wrapped = (size - reach % size) % size;
  for (int position = -reach; position <= size + reach; ++position) {
    map_.push_back(wrap ? wrapped : std::clamp(position, 0, size - 1));
    wrapped = wrapped + 1 == size ? 0 : wrapped + 1;
  }
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
  const double radius = cosines.radius;
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

CosineStart MakeCosineStart(const GaussianCosines& cosines, const BorderMap& map) {
  constexpr std::size_t kTerms = GaussianCosines::kTerms;
  std::vector<int> slots(static_cast<std::size_t>(map.GetSize()), -1);
  CosineStart start;
  std::array<double, kTerms> current{};
  for (int position = -cosines.radius - 1; position <= cosines.radius; ++position) {
    int& slot = slots[static_cast<std::size_t>(map[position])];
    if (slot < 0) {
      slot = static_cast<int>(start.positions.size());
      start.positions.push_back(map[position]);
      start.weights.emplace_back();
    }
    auto& weights = start.weights[static_cast<std::size_t>(slot)];
    for (std::size_t p = 0; p < kTerms; ++p) {
      // The sample's weight in the response at 0, and, one further from the middle, in the one at -1.
      const double next = cosines.amplitude[p] * std::cos(cosines.frequency[p] * (position + 1));
      if (position >= -cosines.radius) weights[2 * p] += current[p];
      if (position < cosines.radius) weights[2 * p + 1] += next;
      current[p] = next;
    }
  }
  return start;
}

}  // namespace ScEng
