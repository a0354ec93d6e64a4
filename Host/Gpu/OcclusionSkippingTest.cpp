// SPDX-License-Identifier: Apache-2.0
//
// Fields of heights in which a group of steps that is left out wrongly shows: the horizon lies at one known step, at
// every distance and place in a tile, or just above one that is nearer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

#include "Host/Gpu/GpuEngine.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/OcclusionTesting.h"

namespace Testing {
namespace {

/// A field made by a rule of column and row.
template <class Rule>
ImagePtr MakeField(int size_x, int size_y, const Rule& rule) {
  auto image = ScEng::MakeRef<Image>(size_x, size_y, ColorMode::kValue, nullptr);
  float* sample = image->GetArray();
  for (int y = 0; y < size_y; ++y) {
    for (int x = 0; x < size_x; ++x) *sample++ = static_cast<float>(rule(x, y));
  }
  return image;
}

double SampleAt(const Image& image, int x, int y) {
  const auto row = static_cast<std::size_t>(y) * static_cast<std::size_t>(image.GetSizeX());
  return static_cast<double>(image.GetConstArray()[row + static_cast<std::size_t>(x)]);
}

TEST(OcclusionSkipping, MeetsAWallAtEveryStepUpToTheLast) {
  // A wall one pixel thin across flat ground, h high: a pixel d pixels before it rises by h / d along the row, if d is
  // within the radius. Radius 40.9 takes 40 steps.
  const int wall = 50;
  const float radius = 40.9F;
  const auto image = MakeField(200, 9, [](int x, int) { return x == wall ? 1.0 : 0.0; });
  const auto result = Occlude(*image, radius, 'b');
  for (int d = 1; d <= 60; ++d) {
    // Along the column all is flat; the other directions that look to the wall meet it, if at all, between pixels.
    double expected = 9.0 + (d <= 40 ? 1.0 / (1.0 + std::pow(static_cast<double>(radius) / d, 2.0)) : 1.0);
    for (const int direction : {1, 2, 3}) {
      double steepest = 0.0;
      for (int s = 1; s <= 40; ++s) {
        const double off = std::abs(s * std::cos(direction * std::numbers::pi / 8.0) - d);
        steepest = std::max(steepest, static_cast<double>(radius) * std::max(0.0, 1.0 - off) / s);
      }
      expected += 2.0 / (1.0 + steepest * steepest);
    }
    EXPECT_NEAR(SampleAt(*result, wall + d, 4), expected / 16.0, kAccuracy) << d;
    if (d > wall) continue;
    EXPECT_NEAR(SampleAt(*result, wall - d, 4), expected / 16.0, kAccuracy) << d;
  }
}

TEST(OcclusionSkipping, MeetsATowerFromEveryPixelAround) {
  // Every offset to the tower is seen from some place in a tile, in strips to both sides of their border.
  for (const double x : {8.0, 254.0, 256.0, 263.0}) {
    const auto image = MakeField(300, 70, [x](int column, int row) { return column == x && row == 35 ? 1.0 : 0.0; });
    EXPECT_TRUE(IsAccurate(*image, 31.0F, 'p')) << x;
  }
}

TEST(OcclusionSkipping, FindsTheHorizonAtTheFarEndOfABowl) {
  // z = c x^2: from x0 a step s to the right rises by c (2 x0 + s), which is the steepest at the last step.
  const float radius = 60.0F;
  const double c = 0.9 / (250.0 * 250.0);
  const auto image = MakeField(280, 5, [c](int x, int) { return c * x * x; });
  EXPECT_TRUE(IsAccurate(*image, radius, 'b'));
  // The columns' direction is flat, and to the left it only falls but for pixels near the bottom.
  const auto result = Occlude(*image, radius, 'b');
  const double scaled = c * static_cast<double>(radius);
  for (const int x : {70, 120, 200}) {
    double expected = 9.0;
    expected += 1.0 / (1.0 + std::pow(scaled * (2.0 * x + 60.0), 2.0));
    for (const int direction : {1, 2, 3}) {
      // Between two pixels the field is straight, at most c / 4 above the parabola, and rises by k (2 x0 + k s).
      const double k = std::cos(direction * std::numbers::pi / 8.0);
      expected += 2.0 / (1.0 + std::pow(scaled * k * (2.0 * x + k * 60.0), 2.0));
    }
    EXPECT_NEAR(SampleAt(*result, x, 2), expected / 16.0, kAccuracy + 1e-5) << x;
  }
  for (const float depth : {0.3F, 1.0F, 3.0F}) {
    const auto round = MakeField(
        90, 80, [depth](int x, int y) { return depth * ((x - 45.0) * (x - 45.0) + (y - 40.0) * (y - 40.0)) / 4000.0; });
    EXPECT_TRUE(IsAccurate(*round, 37.0F, 'p')) << depth;
    EXPECT_TRUE(IsAccurate(*round, 100.0F, 'b')) << depth;
  }
}

TEST(OcclusionSkipping, TellsRisesApartThatAreNearlyTheSame) {
  // Towers of which each is, from the first column, a little steeper than all that are nearer: every group raises.
  for (const double more : {1e-2, 1e-3, 1e-4}) {
    const auto image = MakeField(
        330, 11, [more](int x, int y) { return x % 7 == 3 && y % 3 == 0 ? 0.004 * x * (1.0 + more * x) : 0.0; });
    for (const float radius : {45.0F, 130.0F}) EXPECT_TRUE(IsAccurate(*image, radius, 'b')) << more << " " << radius;
  }
}

TEST(OcclusionSkipping, IsAccurateOnNoiseSteepSlopesAndCheckerboards) {
  const auto ramp = MakeField(270, 21, [](int x, int y) { return 0.01 * x + 0.002 * y; });
  const auto steep = MakeField(60, 50, [](int x, int y) { return 40.0 * x - 15.0 * y; });
  const auto checks = MakeField(61, 47, [](int x, int y) { return (x + y) % 2; });
  const auto blocks = MakeField(64, 64, [](int x, int y) { return (x / 8 + y / 8) % 2 + 0.001 * (x % 8); });
  const auto spikes = MakeImage(290, 20, ColorMode::kValue, Noise(290 * 20, 21));
  float* samples = spikes->GetArray();
  for (std::size_t i = 0; i < spikes->GetNumSamples(); ++i) samples[i] = std::pow(samples[i], 30.0F);
  for (const auto& image : {ramp, steep, checks, blocks, spikes}) {
    for (const float radius : {7.0F, 50.0F}) {
      EXPECT_TRUE(IsAccurate(*image, radius, 'p')) << image->GetSizeX() << " " << radius;
      EXPECT_TRUE(IsAccurate(*image, radius, 'b')) << image->GetSizeX() << " " << radius;
    }
  }
}

TEST(OcclusionSkipping, OfPitsAtMinusInfinityLeavesTheRowsBesideThemAlone) {
  // An endlessly deep pixel is dark in every direction. From the rows between them, whichever of four that share a
  // window they are, only those of the same column see the tower, which is the first of a vector.
  constexpr double kDeep = -std::numeric_limits<double>::infinity();
  for (const int first : {0, 1, 2, 3}) {
    const auto is_pit = [first](int x, int y) { return x == 16 && y < 16 && y % 4 == first; };
    const auto image = MakeField(40, 48, [&](int x, int y) {
      if (is_pit(x, y)) return kDeep;
      return x == 16 && y == 40 ? 1.0 : 0.0;
    });
    EXPECT_TRUE(IsAccurate(*image, 45.0F, 'b')) << first;
    const auto result = Occlude(*image, 45.0F, 'b');
    // At the border a pit goes on beyond it, and between infinities there is no rise.
    EXPECT_EQ(SampleAt(*result, 16, first), first == 0 ? 1.0 / 16.0 : 0.0);
    EXPECT_EQ(SampleAt(*result, 16, first + 4), 0.0);
    // Down the column the tower is 45 / (40 - y) steep from between two pits; beside it all is open.
    const int y = first + 2;
    EXPECT_NEAR(SampleAt(*result, 16, y), (15.0 + 1.0 / (1.0 + std::pow(45.0 / (40 - y), 2.0))) / 16.0, kAccuracy);
    EXPECT_EQ(SampleAt(*result, 22, y), 1.0);
  }
}

TEST(OcclusionSkipping, JoinsStripsWithoutSeams) {
  for (const int size_x : {255, 256, 257, 520}) {
    const auto image = MakeHills(size_x, 13, 0.05);
    EXPECT_TRUE(IsAccurate(*image, 26.0F, 'p')) << size_x;
    EXPECT_TRUE(IsAccurate(*image, 26.0F, 'b')) << size_x;
  }
}

}  // namespace
}  // namespace Testing
