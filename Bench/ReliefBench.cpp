// SPDX-License-Identifier: Apache-2.0
//
// The styles of the Relief node on images of 4096 x 4096 values: levels on a fractal terrain, bevels on a black and
// white mask of its upper parts, as it is and with soft edges.

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "Bench/BenchSupport.h"
#include "Host/Image/Filter.h"
#include "Host/Nodes/Terrain.h"
#include "Host/Util/ThreadPool.h"
#include "Value/Nodes/Relief/ReliefBevel.h"
#include "Value/Nodes/Relief/ReliefLevels.h"

namespace {

constexpr std::array<const char*, 4> kProfileNames = {"linear", "smooth", "arc_out", "arc_in"};

ImagePtr MakeTerrain() {
  auto image = ScEng::MakeRef<Image>(Bench::kSide, Bench::kSide, ColorMode::kValue, nullptr);
  Terrain::Generate(*image, 7, 8, 512.0);
  return image;
}

ImagePtr MakeMask() {
  auto image = MakeTerrain();
  float* samples = image->GetArray();
  std::transform(samples, samples + image->GetNumSamples(), samples,
                 [](float height) { return height > 0.6F ? 1.0F : 0.0F; });
  return image;
}

void RunLevels(benchmark::State& state, int radius_px, ReliefProfile profile) {
  const ImagePtr terrain = MakeTerrain();
  const std::vector<float> everywhere(terrain->GetNumSamples(), 1.0F);
  const auto output = ScEng::MakeRef<Image>(*terrain);
  Bench::RunAgainstCopy(state, *terrain, 1.0, [&] {
    const ReliefLevels::Analysis analysis({.mask = terrain->GetConstArray(),
                                           .grown = everywhere.data(),
                                           .width = Bench::kSide,
                                           .height = Bench::kSide,
                                           .wrap = true,
                                           .radius_px = radius_px,
                                           .profile = profile});
    float* samples = output->GetArray();
    ThreadPool pool(static_cast<std::size_t>(state.range(0)));
    for (int from = 0; from < Bench::kSide; from += 10) {
      const int to = std::min(from + 10, Bench::kSide);
      pool.AddTask([&analysis, samples, from, to] { analysis.ComputeRows(from, to, samples); });
    }
    pool.Wait();
  });
}

void RunBevel(benchmark::State& state, const Image& mask, const ReliefBevel::Rings& rings) {
  const auto output = ScEng::MakeRef<Image>(mask);
  Bench::RunAgainstCopy(state, mask, 1.0, [&] { ReliefBevel::Analysis(mask, true).Draw(rings, *output); });
}

}  // namespace

void Bench::RegisterRelief() {
  for (const ReliefProfile profile :
       {ReliefProfile::kLinear, ReliefProfile::kSmooth, ReliefProfile::kArcOut, ReliefProfile::kArcIn}) {
    for (const int radius_px : {25, 100, 160, 250}) {
      Register("Relief/levels/" + std::string(kProfileNames[static_cast<std::size_t>(profile)]) + "/" +
                   std::to_string(radius_px),
               Threads::kOneAndTwo,
               [radius_px, profile](benchmark::State& state) { RunLevels(state, radius_px, profile); });
    }
  }
  for (const int radius_px : {25, 250}) {
    Register("Relief/emboss/hard_mask/" + std::to_string(radius_px), Threads::kOneAndTwo,
             [radius_px](benchmark::State& state) {
               RunBevel(state, *MakeMask(), {.steps = radius_px, .start = (radius_px + 1) / 2});
             });
  }
  struct Softening {
    const char* name;
    float sigma;
  };
  for (const Softening& softening : {Softening{"antialiased", 0.5F}, {"soft", 2.0F}, {"very_soft", 16.0F}}) {
    for (const int radius_px : {5, 25, 250}) {
      Register(std::string("Relief/emboss/") + softening.name + "_mask/" + std::to_string(radius_px),
               Threads::kOneAndTwo, [radius_px, sigma = softening.sigma](benchmark::State& state) {
                 const ImagePtr mask = MakeMask();
                 Image soft(*mask);
                 Filter::ApplyGaussianBlur(*mask, soft, sigma, sigma, 'p');
                 RunBevel(state, soft, {.steps = radius_px, .start = (radius_px + 1) / 2});
               });
    }
  }
}
