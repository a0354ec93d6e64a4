// SPDX-License-Identifier: Apache-2.0
//
// Filters on images of 4096 x 4096 values: the Gaussian blur with a small, a middle and a large kernel, and the
// gradient.

#include <string>

#include "Bench/BenchSupport.h"
#include "Host/Image/Filter.h"
#include "Host/Image/Gradient.h"

namespace {

ImagePtr MakeOutput() { return ScEng::MakeRef<Image>(Bench::kSide, Bench::kSide, ColorMode::kValue, nullptr); }

void RunBlur(benchmark::State& state, float sigma, char mode) {
  const ImagePtr image = Bench::MakeNoise(ColorMode::kValue, 1);
  const ImagePtr output = MakeOutput();
  Bench::RunAgainstCopy(state, *image, 1.0, [&] {
    Filter::ApplyGaussianBlur(*image, *output, sigma, sigma, mode);
    benchmark::DoNotOptimize(output->GetConstArray());
  });
}

/// Held against one copy of the source, though it writes two images.
void RunGradient(benchmark::State& state, bool seamless) {
  const ImagePtr image = Bench::MakeNoise(ColorMode::kValue, 1);
  const ImagePtr x = MakeOutput();
  const ImagePtr y = MakeOutput();
  Bench::RunAgainstCopy(state, *image, 1.0, [&] {
    ImageValue::Gradient(*image, *x, *y, seamless);
    benchmark::DoNotOptimize(x->GetConstArray());
    benchmark::DoNotOptimize(y->GetConstArray());
  });
}

}  // namespace

void Bench::RegisterFilter() {
  for (const int sigma : {2, 8, 32}) {
    Register("Filter/GaussianBlur/sigma_" + std::to_string(sigma), Threads::kOneAndTwo,
             [sigma](benchmark::State& state) { RunBlur(state, static_cast<float>(sigma), 'p'); });
  }
  Register("Filter/Gradient", Threads::kOneAndTwo, [](benchmark::State& state) { RunGradient(state, true); });
}
