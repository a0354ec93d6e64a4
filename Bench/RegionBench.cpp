// SPDX-License-Identifier: Apache-2.0
//
// Distances and regions of images of 4096 x 4096 values: Euclidean distance of masks with few set pixels and with
// many, growing of grey images and of masks.

#include <cmath>
#include <string>
#include <vector>

#include "Bench/BenchSupport.h"
#include "Host/Image/EuclideanDistance.h"
#include "Host/Image/ImageRegion.h"

namespace {

/// Noise of `octaves` wavelengths, each half of the one before, of about the same steepness: a coast line with islands
/// where it is cut. Between 0 and 1, mostly near 0.5.
ImagePtr MakeTerrain(int octaves) {
  auto image = ScEng::MakeRef<Image>(Bench::kSide, Bench::kSide, ColorMode::kValue, nullptr);
  const ImagePtr noise = Bench::MakeNoise(ColorMode::kValue, 3);
  const float* lattice = noise->GetConstArray();
  float* samples = image->GetArray();
  for (int y = 0; y < Bench::kSide; ++y) {
    for (int x = 0; x < Bench::kSide; ++x) {
      float sum = 0.0F;
      float weight = 0.5F;
      for (int octave = 0; octave < octaves; ++octave, weight *= 0.5F) {
        const int cell = 1024 >> octave;
        const int count = Bench::kSide / cell;
        const auto at = [&](int i, int j) {
          return lattice[((j % count) * Bench::kSide + i % count) + octave * 4096 * 16];
        };
        const int i = x / cell;
        const int j = y / cell;
        const float u = static_cast<float>(x % cell) / static_cast<float>(cell);
        const float v = static_cast<float>(y % cell) / static_cast<float>(cell);
        const float upper = at(i, j) + u * (at(i + 1, j) - at(i, j));
        const float lower = at(i, j + 1) + u * (at(i + 1, j + 1) - at(i, j + 1));
        sum += weight * (upper + v * (lower - upper));
      }
      samples[y * Bench::kSide + x] = sum;
    }
  }
  return image;
}

/// 1 where `image` is above `level`, else 0.
ImagePtr MakeMask(const Image& image, float level) {
  auto mask = ScEng::MakeRef<Image>(image);
  float* samples = mask->GetArray();
  for (std::size_t i = 0; i < mask->GetNumSamples(); ++i) samples[i] = samples[i] > level ? 1.0F : 0.0F;
  return mask;
}

enum class Content { kFewPixels, kHalfOfThePixels, kIslands, kNoise };

ImagePtr MakeContent(Content content) {
  switch (content) {
    case Content::kFewPixels:
      // One pixel in about 20000.
      return MakeMask(*Bench::MakeNoise(ColorMode::kValue, 5), 1.00095F);
    case Content::kHalfOfThePixels: return MakeMask(*Bench::MakeNoise(ColorMode::kValue, 5), 0.501F);
    case Content::kIslands: return MakeMask(*MakeTerrain(8), 0.6F);
    case Content::kNoise: break;
  }
  return Bench::MakeNoise(ColorMode::kValue, 5);
}

void RegisterDistance(const std::string& name, Content content, bool wrap) {
  Bench::Register("EuclideanDistance/" + name, Bench::Threads::kOneAndTwo, [=](benchmark::State& state) {
    const ImagePtr mask = MakeContent(content);
    Bench::RunAgainstCopy(state, *mask, 1.0, [&] {
      const ImagePtr result(EuclideanDistance(*mask, 0.5F, false, wrap));
      benchmark::DoNotOptimize(result->GetConstArray());
    });
  });
}

void RegisterGrow(const std::string& name, Content content, float radius, bool wrap) {
  Bench::Register("Grow/" + name, Bench::Threads::kOneAndTwo, [=](benchmark::State& state) {
    const ImagePtr original = MakeContent(content);
    Image image(*original);
    // Growing what has grown before would be another case; the copy back is part of the time, about one copy.
    Bench::RunAgainstCopy(state, *original, 1.0, [&] {
      std::copy_n(original->GetConstArray(), original->GetNumSamples(), image.GetArray());
      ImageRegion region;
      region.Init(&image, 0, 0, image.GetSizeX(), image.GetSizeY(), -1);
      region.Grow(radius, radius, wrap);
      benchmark::DoNotOptimize(image.GetConstArray());
    });
  });
}

}  // namespace

void Bench::RegisterRegion() {
  RegisterDistance("few_pixels", Content::kFewPixels, false);
  RegisterDistance("few_pixels_tiling", Content::kFewPixels, true);
  RegisterDistance("half_of_the_pixels", Content::kHalfOfThePixels, false);
  RegisterDistance("islands", Content::kIslands, false);
  RegisterDistance("islands_tiling", Content::kIslands, true);
  RegisterGrow("grey/radius_5", Content::kNoise, 5.0F, false);
  RegisterGrow("grey/radius_25", Content::kNoise, 25.0F, false);
  RegisterGrow("grey/radius_100", Content::kNoise, 100.0F, false);
  RegisterGrow("grey/radius_100_tiling", Content::kNoise, 100.0F, true);
  RegisterGrow("mask/radius_5", Content::kIslands, 5.0F, false);
  RegisterGrow("mask/radius_100", Content::kIslands, 100.0F, false);
  RegisterGrow("mask/radius_100_tiling", Content::kIslands, 100.0F, true);
}
