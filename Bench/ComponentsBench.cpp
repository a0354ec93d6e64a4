// SPDX-License-Identifier: Apache-2.0
//
// Labels of connected components and their edges, on terrain as it is and cut into levels, and on noise.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

#include "Bench/BenchSupport.h"
#include "Host/Image/Image.h"
#include "Host/Util/ParallelRows.h"
#include "Value/Nodes/Components/ComponentEdges.h"
#include "Value/Nodes/Components/ComponentLabels.h"
#include "Value/Nodes/Components/NeighborEvaluation.h"

namespace {

/// A field between 0 and 1 which tiles: waves of halving length, down to ten pixels, and falling height. The steepest
/// slopes are a few 1/256 per pixel.
std::unique_ptr<Image> MakeTerrain() {
  auto image = std::make_unique<Image>(Bench::kSide, Bench::kSide, ColorMode::kValue, nullptr);
  float* samples = image->GetArray();
  ScEng::ParallelRows(Bench::kSide, 16, [&](std::size_t from, std::size_t to) {
    for (std::size_t y = from; y < to; ++y) {
      for (std::size_t x = 0; x < Bench::kSide; ++x) {
        constexpr float kTurn = 6.2831853F / static_cast<float>(Bench::kSide);
        float height = 0.0F;
        float scale = 0.17F;
        int waves = 3;
        for (int octave = 0; octave < 8; ++octave) {
          const auto along = static_cast<float>((x * static_cast<std::size_t>(waves)) % Bench::kSide);
          const auto across = static_cast<float>((y * static_cast<std::size_t>(waves + octave)) % Bench::kSide);
          height += scale * std::sin(kTurn * along + height) * std::cos(kTurn * across + 2.0F * height);
          scale *= 0.65F;
          waves *= 2;
        }
        samples[y * Bench::kSide + x] = std::clamp(height + 0.5F, 0.0F, 1.0F);
      }
    }
  });
  return image;
}

std::unique_ptr<Image> MakeLevels(float levels) {
  auto image = MakeTerrain();
  float* samples = image->GetArray();
  for (std::size_t i = 0; i < image->GetNumSamples(); ++i) samples[i] = std::floor(samples[i] * levels) / levels;
  return image;
}

std::unique_ptr<Image> MakeColorNoise() { return Bench::MakeNoise(ColorMode::kColor, 1); }
std::unique_ptr<Image> MakeValueNoise() { return Bench::MakeNoise(ColorMode::kValue, 1); }

using Maker = std::unique_ptr<Image> (*)();

void RegisterLabels(const std::string& name, Maker maker, float tolerance, Neighbors neighbors) {
  Bench::Register("ComponentLabels/" + name, Bench::Threads::kCaller, [=](benchmark::State& state) {
    const std::unique_ptr<Image> image = maker();
    const NeighborRule rule{tolerance, neighbors, true};
    const double copies = (1.0 + 1.0 / image->GetNumChannels()) / 2.0;
    Bench::RunAgainstCopy(state, *image, copies, [&] {
      Image labels(Bench::kSide, Bench::kSide, ColorMode::kValue, nullptr);
      state.counters["labels"] =
          static_cast<double>(ComponentLabels::Label(ViewPixels(*image), rule, labels.GetArray()));
      benchmark::DoNotOptimize(labels.GetConstArray());
    });
  });
}

/// On one thread the rows on the calling thread; else on the threads of the node, one per core, so that the case of two
/// threads is one of a machine with two cores.
void RegisterEdges(const std::string& name, Maker maker, float tolerance, Neighbors neighbors) {
  Bench::Register("ComponentEdges/" + name, Bench::Threads::kOneAndTwo, [=](benchmark::State& state) {
    const std::unique_ptr<Image> image = maker();
    const NeighborRule rule{tolerance, neighbors, true};
    const double copies = (1.0 + 1.0 / image->GetNumChannels()) / 2.0;
    Bench::RunAgainstCopy(state, *image, copies, [&] {
      Image marked(Bench::kSide, Bench::kSide, ColorMode::kValue, nullptr);
      if (state.range(0) == 1) {
        ComponentEdges::MarkRows(ViewPixels(*image), rule, {}, 0, Bench::kSide, marked.GetArray());
      } else {
        ComponentEdges::Mark(ViewPixels(*image), rule, {}, marked.GetArray());
      }
      benchmark::DoNotOptimize(marked.GetConstArray());
    });
  });
}

}  // namespace

void Bench::RegisterComponents() {
  constexpr float kStep = 1.0F / 256.0F;
  constexpr auto kLevels = [] { return MakeLevels(32.0F); };
  RegisterLabels("levels/all", kLevels, kStep, Neighbors::kAll);
  RegisterLabels("levels/cross", kLevels, kStep, Neighbors::kCross);
  RegisterLabels("terrain/all", MakeTerrain, kStep, Neighbors::kAll);
  RegisterLabels("terrain/cross", MakeTerrain, kStep, Neighbors::kCross);
  RegisterLabels("noise/all", MakeValueNoise, 0.1F, Neighbors::kAll);
  RegisterLabels("noise/flat_range", MakeValueNoise, 0.0F, Neighbors::kAll);
  RegisterLabels("noise/color", MakeColorNoise, 0.5F, Neighbors::kAll);
  RegisterEdges("terrain/all", MakeTerrain, kStep, Neighbors::kAll);
  RegisterEdges("terrain/cross", MakeTerrain, kStep, Neighbors::kCross);
  RegisterEdges("noise/color", MakeColorNoise, 0.5F, Neighbors::kAll);
}
