// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ReliefLevels.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "Host/Util/ThreadPool.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/InstructionSets.h"
#include "Tests/Support/ValueTesting.h"
#include "Value/Nodes/Relief/ReliefLevelsReference.h"

namespace {

namespace Reference = ReliefLevels::Reference;

using Testing::AreSame;
using Testing::kInfinity;
using Testing::kLargest;
using Testing::kNan;
using Testing::kSmallest;
using Testing::OnEveryInstructionSet;

constexpr std::array kProfiles = {ReliefProfile::kLinear, ReliefProfile::kSmooth, ReliefProfile::kArcOut,
                                  ReliefProfile::kArcIn};

/// A mask with all that goes with it; every pixel is computed unless the test says otherwise.
struct Scene {
  int width = 0;
  int height = 0;
  std::vector<float> mask;
  std::vector<float> grown = std::vector<float>(mask.size(), 1.0F);
  bool wrap = false;
  int radius = 1;
  ReliefProfile profile = ReliefProfile::kLinear;
  float low = 0.0F;
  float high = 1.0F;

  [[nodiscard]] ReliefLevels::Field GetField() const {
    return {mask.data(), grown.data(), width, height, wrap, radius, profile, low, high};
  }
};

Scene MakeRowScene(const std::vector<float>& mask, int radius) {
  Scene scene{static_cast<int>(mask.size()), 1, mask};
  scene.radius = radius;
  return scene;
}

std::vector<float> Compute(const Scene& scene) {
  std::vector<float> output(scene.mask.size(), -1.0F);
  const ReliefLevels::Analysis analysis(scene.GetField());
  for (int y = 0; y < scene.height; y += 10) {
    analysis.ComputeRows(y, std::min(y + 10, scene.height), output.data());
  }
  return output;
}

testing::AssertionResult AreSameSamples(const std::vector<float>& actual, const std::vector<float>& expected) {
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (AreSame(actual[i], expected[i])) continue;
    return testing::AssertionFailure() << "sample " << i << " is " << testing::PrintToString(actual[i]) << ", not "
                                       << testing::PrintToString(expected[i]);
  }
  return testing::AssertionSuccess();
}

class Random {
 public:
  explicit Random(std::uint32_t seed) : state_(seed) {}
  /// A multiple of 2 to the -20 in [0, 1).
  float Next() {
    state_ = state_ * 1664525U + 1013904223U;
    return static_cast<float>(state_ >> 12) / 1048576.0F;
  }

 private:
  std::uint32_t state_;
};

/// Kinds of masks, each of which the search meets in another way.
const std::vector<std::pair<const char*, std::function<float(int x, int y, Random&)>>> kMasks = {
    {"Noise", [](int, int, Random& random) { return random.Next(); }},
    {"Hills",
     [](int x, int y, Random& random) {
       const double hill = std::sin(0.21 * x) * std::cos(0.17 * y) + 0.4 * std::sin(0.9 * x + 0.7 * y);
       return static_cast<float>(0.5 + 0.3 * hill) + 0.02F * random.Next();
     }},
    {"Peaks", [](int, int, Random& random) { return random.Next() > 0.98F ? random.Next() : 0.0F; }},
    {"BlackAndWhite", [](int x, int y, Random&) { return x / 9 % 2 == 0 && y / 7 % 3 == 0 ? 1.0F : 0.0F; }},
    {"Plain", [](int, int, Random&) { return 0.375F; }},
    {"Ramp", [](int x, int y, Random&) { return 0.01F * static_cast<float>(x) + 0.004F * static_cast<float>(y); }},
    // With a radius of 16, slopes as steep as the cone to the last bit.
    {"Slopes", [](int x, int y, Random&) { return static_cast<float>((x + 3 * y) % 17) / 16.0F; }},
    {"Terraces", [](int x, int y, Random&) { return static_cast<float>((x / 5 + y / 4) % 5) / 4.0F; }},
    {"BeyondTheRange", [](int, int, Random& random) { return 3.0F * random.Next() - 1.5F; }},
    {"Tiny", [](int, int, Random& random) { return random.Next() * 1e-38F; }},
    {"Strange",
     [](int, int, Random& random) {
       const float pick = random.Next();
       if (pick < 0.02F) return kNan;
       if (pick < 0.03F) return -kInfinity;
       if (pick < 0.035F) return kInfinity;
       if (pick < 0.04F) return kLargest;
       if (pick < 0.05F) return -kLargest;
       return pick < 0.06F ? -0.0F : random.Next();
     }},
    // With a radius of 16 and the profile of the same name, bumps on which those of many pixels meet.
    {"Bells",
     [](int x, int y, Random&) {
       const double t = std::min(1.0, std::hypot(x % 18 - 9, y % 20 - 8) / 16.0);
       return static_cast<float>(1.0 - t * t * (3.0 - 2.0 * t));
     }},
    {"Domes",
     [](int x, int y, Random&) {
       const double t = std::min(1.0, std::hypot(x % 22 - 9, y % 17 - 8) / 16.0);
       return static_cast<float>(0.875 * std::sqrt(1.0 - t * t));
     }},
    {"Neighbors", [](int x, int y, Random&) { return (x * y + x) % 3 == 0 ? 0.5F : std::nextafter(0.5F, 1.0F); }},
    {"Checkerboard", [](int x, int y, Random&) { return (x + y) % 2 == 0 ? 0.25F : 0.75F; }},
    {"Spike", [](int x, int y, Random&) { return x == 20 && y == 11 ? 0.9375F : 0.125F; }},
};

Scene MakeScene(int width, int height, std::size_t kind, std::uint32_t seed) {
  Scene scene{width, height, std::vector<float>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))};
  scene.grown.resize(scene.mask.size());
  Random random(seed);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto i = static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
      scene.mask[i] = kMasks[kind].second(x, y, random);
      const float pick = random.Next();
      scene.grown[i] = pick < 0.03F ? 0.0F : pick < 0.04F ? -1.0F : pick < 0.05F ? kNan : 0.001F;
    }
  }
  return scene;
}

void ExpectSameAs(const Scene& scene, const std::vector<float>& expected) {
  OnEveryInstructionSet([&] { EXPECT_TRUE(AreSameSamples(Compute(scene), expected)); });
}

void ExpectSameAsReference(const Scene& scene) { ExpectSameAs(scene, Reference::Compute(scene.GetField())); }

void ExpectSameAsReferenceForAll(Scene scene, std::initializer_list<int> radii) {
  for (const int radius : radii) {
    for (const ReliefProfile profile : kProfiles) {
      SCOPED_TRACE("radius " + std::to_string(radius) + ", profile " + std::to_string(static_cast<int>(profile)));
      scene.radius = radius;
      scene.profile = profile;
      ExpectSameAsReference(scene);
    }
  }
}

/// The computation and its definition against numbers worked out by hand.
void ExpectSamples(const Scene& scene, const std::vector<float>& expected) {
  EXPECT_TRUE(AreSameSamples(Reference::Compute(scene.GetField()), expected)) << "the definition";
  ExpectSameAs(scene, expected);
}

TEST(ReliefLevels, RaisesAConeFromAPixelOfFullHeight) {
  ExpectSamples(MakeRowScene({0, 0, 0, 0, 1, 0, 0, 0, 0}, 4), {0, 0.25F, 0.5F, 0.75F, 1, 0.75F, 0.5F, 0.25F, 0});
}

TEST(ReliefLevels, MakesTheConeOfAPixelOfHalfTheHeightHalfAsWide) {
  ExpectSamples(MakeRowScene({0, 0, 0, 0.5F, 0, 0, 0}, 4), {0, 0, 0.25F, 0.5F, 0.25F, 0, 0});
}

TEST(ReliefLevels, FollowsTheProfile) {
  // At distance 2 of 4: t and u are 1/2.
  Scene scene = MakeRowScene({1, 0, 0, 0, 0}, 4);
  const std::array<float, 4> at_half = {0.5F, 0.5F, std::sqrt(0.75F), 1.0F - std::sqrt(0.75F)};
  // At distance 1: t is 1/4, u is 3/4.
  const std::array<float, 4> near = {0.75F, 27.0F / 32.0F, std::sqrt(15.0F / 16.0F), 1.0F - std::sqrt(7.0F / 16.0F)};
  const std::array<float, 4> far = {0.25F, 5.0F / 32.0F, std::sqrt(7.0F / 16.0F), 1.0F - std::sqrt(15.0F / 16.0F)};
  for (std::size_t i = 0; i < kProfiles.size(); ++i) {
    SCOPED_TRACE(i);
    scene.profile = kProfiles[i];
    ExpectSamples(scene, {1.0F, near[i], at_half[i], far[i], 0.0F});
  }
}

TEST(ReliefLevels, MeasuresHeightsAgainstTheRange) {
  Scene scene = MakeRowScene({-2, -2, -2, 2, -2, -2, -2}, 4);
  scene.low = -2.0F;
  scene.high = 6.0F;
  // q is 1/2: the cone is 2 wide and rises by 4.
  ExpectSamples(scene, {-2, -2, 0, 2, 0, -2, -2});
}

TEST(ReliefLevels, StartsFromTheLowValue) {
  Scene scene = MakeRowScene({-3, -3, -3}, 2);
  ExpectSamples(scene, {0, 0, 0});
}

TEST(ReliefLevels, KeepsPixelsFromTheHighValueUp) {
  ExpectSamples(MakeRowScene({1.0F, 3.0F, 1.5F}, 5), {1.0F, 3.0F, 1.5F});
}

TEST(ReliefLevels, EndsTheBumpOfAPixelBeyondTheRangeAtTheRadius) {
  // q is 2: t is d / 8.
  ExpectSamples(MakeRowScene({2, 0, 0, 0, 0, 0}, 4), {2, 1.75F, 1.5F, 1.25F, 0, 0});
}

TEST(ReliefLevels, LeavesPixelsOutsideTheGrownMaskAtZero) {
  Scene scene = MakeRowScene({5, 5, 5, 7}, 2);
  scene.low = 4.0F;
  scene.high = 6.0F;
  scene.grown = {0.0F, 0.25F, kNan, -1.0F};
  // The second pixel: q is 1/2 of its own and its neighbours, 3/2 of the one at distance 2, which is out of reach.
  ExpectSamples(scene, {0, 5, 0, 0});
}

TEST(ReliefLevels, WithARadiusOfOneLetsEachPixelCountForItselfOnly) {
  ExpectSamples(MakeRowScene({0.25F, 0.75F, -1.0F, 2.0F, kNan}, 1), {0.25F, 0.75F, 0.0F, 2.0F, 0.0F});
}

TEST(ReliefLevels, TilesWhereItWraps) {
  Scene scene = MakeRowScene({1, 0, 0, 0, 0, 0}, 4);
  ExpectSamples(scene, {1, 0.75F, 0.5F, 0.25F, 0, 0});
  scene.wrap = true;
  ExpectSamples(scene, {1, 0.75F, 0.5F, 0.25F, 0.5F, 0.75F});
}

TEST(ReliefLevels, NeverLetsANanWin) {
  ExpectSamples(MakeRowScene({kNan, 0.5F, 0, kNan}, 4), {0.25F, 0.5F, 0.25F, 0.0F});
}

TEST(ReliefLevels, RaisesEverythingInReachOfAnInfinitePixelToInfinity) {
  ExpectSamples(MakeRowScene({0, 0.5F, 0, -kInfinity, 0, kInfinity}, 4),
                {0.25F, 0.5F, kInfinity, kInfinity, kInfinity, kInfinity});
}

TEST(ReliefLevels, GivesTheLowValueWhereTheRangeIsEmpty) {
  Scene scene = MakeRowScene({0.5F, 0.25F, 0.75F, kNan, -0.5F}, 3);
  scene.low = 0.5F;
  scene.high = 0.5F;
  ExpectSamples(scene, {0.5F, 0.5F, 0.75F, 0.5F, 0.5F});
}

TEST(ReliefLevels, TakesTheLargestOfTheDiscWhereTheRangeIsReversed) {
  Scene scene = MakeRowScene({0.0F, -1.0F, 0.5F, -1.0F, -1.0F, 3.0F}, 2);
  scene.low = 0.25F;
  scene.high = 0.125F;
  // At or above 0.125 a pixel keeps its value; the others take the largest within one pixel that is above 0.25.
  ExpectSamples(scene, {0.25F, 0.5F, 0.5F, 0.5F, 3.0F, 3.0F});
}

TEST(ReliefLevels, AnEmptyImageIsNoTrouble) {
  const Scene scene{0, 0, {}};
  EXPECT_TRUE(Compute(scene).empty());
}

TEST(ReliefLevels, IsTheSameAsTheDefinitionForEveryKindOfMask) {
  for (std::size_t kind = 0; kind < kMasks.size(); ++kind) {
    Scene scene = MakeScene(37, 29, kind, 5);
    for (const int radius : {2, 7, 16}) {
      for (const bool wrap : {false, true}) {
        for (const ReliefProfile profile : kProfiles) {
          SCOPED_TRACE(std::string(kMasks[kind].first) + ", radius " + std::to_string(radius) + ", wrap " +
                       std::to_string(wrap) + ", profile " + std::to_string(static_cast<int>(profile)));
          scene.radius = radius;
          scene.wrap = wrap;
          scene.profile = profile;
          ExpectSameAsReference(scene);
        }
      }
    }
  }
}

TEST(ReliefLevels, IsTheSameAsTheDefinitionForGentleSlopes) {
  // As on a terrain, the bumps of many pixels are nearly the highest.
  Scene scene = MakeScene(90, 70, 0, 5);
  Random random(9);
  for (std::size_t i = 0; i < scene.mask.size(); ++i) {
    const auto x = static_cast<double>(i % 90);
    const auto y = static_cast<double>(i / 90);
    const double hill = std::sin(0.06 * x) * std::cos(0.05 * y) + 0.2 * std::sin(0.3 * x + 0.2 * y);
    scene.mask[i] = static_cast<float>(0.5 + 0.35 * hill) + 0.004F * random.Next();
  }
  ExpectSameAsReferenceForAll(scene, {40, 90});
}

TEST(ReliefLevels, IsTheSameAsTheDefinitionForSmoothGroundBeyondTheRange) {
  // Much ground raises its surroundings as far as the radius cuts it off, and the rest nothing at all.
  Scene scene = MakeScene(110, 60, 0, 5);
  for (std::size_t i = 0; i < scene.mask.size(); ++i) {
    const auto x = static_cast<double>(i % 110);
    const auto y = static_cast<double>(i / 110);
    scene.mask[i] = static_cast<float>(2.5 * std::sin(0.04 * x + 0.03 * y) * std::cos(0.05 * y - 0.01 * x) - 0.4);
  }
  for (const float high : {1.0F, 0.5F}) {
    SCOPED_TRACE("high " + std::to_string(high));
    scene.high = high;
    ExpectSameAsReferenceForAll(scene, {6, 13, 30});
  }
}

TEST(ReliefLevels, IsTheSameAsTheDefinitionForSmoothGroundWithAWallAtEachBorder) {
  // What lies beside the right border in memory is the wall at the left one, which is far away.
  Scene scene = MakeScene(96, 60, 0, 5);
  for (std::size_t i = 0; i < scene.mask.size(); ++i) {
    const auto x = static_cast<double>(i % 96);
    const auto y = static_cast<double>(i / 96);
    const bool is_wall = x < 4 || y < 2;
    scene.mask[i] =
        is_wall ? 0.97F : static_cast<float>(0.3 + 0.003 * x + 0.1 * std::sin(0.09 * x) * std::cos(0.07 * y));
  }
  ExpectSameAsReferenceForAll(scene, {25, 60});
}

TEST(ReliefLevels, IsTheSameAsTheDefinitionForSlopesBesideNoise) {
  // Noise, which many bumps raise, beside slopes on which each bump ends where the next one begins, or nearly so.
  Scene scene = MakeScene(120, 40, 0, 5);
  Random random(3);
  for (std::size_t i = 0; i < scene.mask.size(); ++i) {
    const auto x = static_cast<float>(i % 120);
    const bool is_slope = i / 120 / 5 % 2 == 1;
    scene.mask[i] = is_slope ? 1.9F - x / 64.0F + 3e-7F * random.Next() : 0.4F * random.Next();
  }
  scene.high = 2.0F;
  ExpectSameAsReferenceForAll(scene, {32, 127, 128});
}

// Waves of all lengths and heights on ground of any height: what planes and chords are drawn around, and what they
// touch.
RC_GTEST_PROP(ReliefLevels, IsTheSameAsTheDefinitionForAnyWaves, ()) {
  const int width = *rc::gen::inRange(9, 80);
  const int height = *rc::gen::inRange(6, 60);
  Scene scene = MakeScene(width, height, 0, 5);
  Random random(*rc::gen::arbitrary<std::uint32_t>());
  const auto get_between = [&random](double a, double b) { return a + (b - a) * static_cast<double>(random.Next()); };
  const double scale = std::exp(get_between(-3.0, 1.0));
  const double ground = get_between(-0.3, 1.0);
  std::array<std::array<double, 4>, 4> waves{};
  for (auto& [of_x, of_y, phase, swing] : waves) {
    const double frequency = std::exp(get_between(-4.5, 0.4));
    const double direction = get_between(0.0, 6.28);
    of_x = frequency * std::cos(direction);
    of_y = frequency * std::sin(direction);
    phase = get_between(0.0, 6.28);
    swing = get_between(0.0, 2.0) * std::min(1.0, 0.1 / frequency);
  }
  for (std::size_t i = 0; i < scene.mask.size(); ++i) {
    const auto x = static_cast<double>(i % static_cast<std::size_t>(width));
    const auto y = static_cast<double>(i / static_cast<std::size_t>(width));
    double sum = ground;
    for (const auto& [of_x, of_y, phase, swing] : waves) sum += swing * std::sin(of_x * x + of_y * y + phase);
    scene.mask[i] = static_cast<float>(scale * sum);
  }
  scene.radius = *rc::gen::inRange(2, 90);
  scene.wrap = *rc::gen::arbitrary<bool>();
  scene.profile = *rc::gen::elementOf(kProfiles);
  const std::vector<float> expected = Reference::Compute(scene.GetField());
  bool are_same = true;
  OnEveryInstructionSet([&] { are_same = are_same && AreSameSamples(Compute(scene), expected); });
  RC_ASSERT(are_same);
}

TEST(ReliefLevels, IsTheSameAsTheDefinitionForNumbersWhoseProductsAreTooLarge) {
  // A block on a slope beside pixels that hold a little more: the radius times what they hold is more than a float can
  // be for the last two.
  for (const float size : {3.3e35F, 3e36F, 3e37F}) {
    Scene scene{64, 16, std::vector<float>(std::size_t{64} * 16)};
    for (int y = 0; y < 16; ++y) {
      float* row = scene.mask.data() + static_cast<std::size_t>(y) * 64;
      std::fill_n(row + 8, 8, 1.2F * size);
      for (int x = 0; x < 4; ++x) {
        const float step = static_cast<float>(x) - 1.5F + (static_cast<float>(y % 4) - 1.5F);
        row[16 + x] = size * (1.0F + 0.1F * step);
      }
    }
    scene.radius = 100;
    for (const ReliefProfile profile : kProfiles) {
      SCOPED_TRACE("size " + std::to_string(size) + ", profile " + std::to_string(static_cast<int>(profile)));
      scene.profile = profile;
      ExpectSameAsReference(scene);
    }
  }
}

TEST(ReliefLevels, IsTheSameAsTheDefinitionForWavesThatReachFar) {
  // Squares of distances are rounded here, and few pixels are computed, since the definition takes its time.
  Scene scene{5200, 6, std::vector<float>(std::size_t{5200} * 6)};
  std::fill(scene.grown.begin(), scene.grown.end(), 0.0F);
  for (std::size_t i = 0; i < scene.mask.size(); ++i) {
    const auto x = static_cast<double>(i % 5200);
    scene.mask[i] = static_cast<float>(0.5 + 0.3 * std::sin(0.0011 * x) + 0.1 * std::sin(0.013 * x));
    if (i % 977 == 0) scene.grown[i] = 1.0F;
  }
  ExpectSameAsReferenceForAll(scene, {4300, 9000});
}

TEST(ReliefLevels, IsTheSameAsTheDefinitionForEverySize) {
  constexpr std::array<std::array<int, 2>, 11> kSizes = {
      {{1, 1}, {1, 31}, {31, 1}, {2, 3}, {7, 5}, {8, 10}, {9, 11}, {64, 4}, {65, 13}, {3, 67}, {127, 2}}};
  for (const auto& [width, height] : kSizes) {
    for (const std::size_t kind : {0U, 1U, 10U}) {
      Scene scene = MakeScene(width, height, kind, static_cast<std::uint32_t>(width * 131 + height));
      for (const int radius : {1, 3, 12, 70}) {
        scene.radius = radius;
        scene.profile = kProfiles[static_cast<std::size_t>(radius) % 4];
        for (const bool wrap : {false, true}) {
          SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + ", kind " + std::to_string(kind) +
                       ", radius " + std::to_string(radius) + ", wrap " + std::to_string(wrap));
          scene.wrap = wrap;
          ExpectSameAsReference(scene);
        }
      }
    }
  }
}

TEST(ReliefLevels, IsTheSameAsTheDefinitionAtTheLargestRadius) {
  for (const ReliefProfile profile : kProfiles) {
    Scene scene = MakeScene(17, 3, 1, 3);
    scene.radius = 250;
    scene.wrap = profile != ReliefProfile::kSmooth;
    scene.profile = profile;
    SCOPED_TRACE(static_cast<int>(profile));
    ExpectSameAsReference(scene);
  }
}

constexpr std::array kHugeRadii = {2049, 20000, 1000000, 1000000000, 2147483647};

TEST(ReliefLevels, IsTheSameAsTheDefinitionForRadiiFarBeyondTheImage) {
  for (const std::size_t kind : {0U, 1U, 2U, 3U, 8U, 10U}) {
    Scene scene = MakeScene(37, 29, kind, 7);
    for (const int radius : kHugeRadii) {
      for (const ReliefProfile profile : kProfiles) {
        SCOPED_TRACE(std::string(kMasks[kind].first) + ", radius " + std::to_string(radius) + ", profile " +
                     std::to_string(static_cast<int>(profile)));
        scene.radius = radius;
        scene.profile = profile;
        ExpectSameAsReference(scene);
      }
    }
  }
}

TEST(ReliefLevels, TilesAsOftenAsTheRadiusReaches) {
  for (const std::size_t kind : {0U, 2U, 10U}) {
    Scene scene = MakeScene(9, 4, kind, 2);
    scene.wrap = true;
    scene.radius = 150;
    for (const ReliefProfile profile : kProfiles) {
      SCOPED_TRACE(std::string(kMasks[kind].first) + ", profile " + std::to_string(static_cast<int>(profile)));
      scene.profile = profile;
      ExpectSameAsReference(scene);
    }
  }
}

TEST(ReliefLevels, TakesTheNearestRepetitionWhateverTheRadius) {
  // Candidates fall with the distance, so that repetitions further away than half the image change nothing.
  for (const auto& [width, height] : {std::array{37, 29}, {1, 50}, {64, 1}, {7, 2}}) {
    for (const std::size_t kind : {0U, 1U, 2U, 10U}) {
      Scene scene = MakeScene(width, height, kind, 7);
      scene.wrap = true;
      for (const int radius : kHugeRadii) {
        for (const ReliefProfile profile : {ReliefProfile::kLinear, ReliefProfile::kArcOut, ReliefProfile::kArcIn}) {
          SCOPED_TRACE(std::string(kMasks[kind].first) + ", radius " + std::to_string(radius) + ", profile " +
                       std::to_string(static_cast<int>(profile)));
          scene.radius = radius;
          scene.profile = profile;
          ExpectSameAs(scene, Reference::Compute(scene.GetField(), width / 2, height / 2));
        }
      }
    }
  }
}

TEST(ReliefLevels, RefusesRepetitionsThatNoMemoryHolds) {
  Scene scene = MakeScene(37, 29, 1, 7);
  scene.wrap = true;
  scene.profile = ReliefProfile::kSmooth;
  for (const int radius : {1000000, 1000000000, 2147483647}) {
    scene.radius = radius;
    EXPECT_THROW(ReliefLevels::Analysis(scene.GetField()), std::bad_alloc) << radius;
  }
  // Where the range is reversed all candidates have their full height, and the nearest ones are enough.
  scene.high = -1.0F;
  EXPECT_NO_THROW(ReliefLevels::Analysis(scene.GetField()));
}

TEST(ReliefLevels, RoundsLargeDistancesOnce) {
  // Squares of distances beyond 4096 need more than the 24 bits of a float. The one peak, in a corner, raises all.
  constexpr int kWidth = 5000;
  constexpr int kHeight = 4;
  Scene scene{kWidth, kHeight, std::vector<float>(std::size_t{kWidth} * kHeight)};
  scene.mask.back() = 0.75F;
  for (std::size_t i = 0; i < scene.grown.size(); ++i) {
    if (i % kWidth > 900 || i % 3 != 0) scene.grown[i] = 0.0F;
  }
  for (const ReliefProfile profile : kProfiles) {
    scene.profile = profile;
    for (const int radius : {6663, 7001}) {
      SCOPED_TRACE("radius " + std::to_string(radius) + ", profile " + std::to_string(static_cast<int>(profile)));
      scene.radius = radius;
      ExpectSameAsReference(scene);
    }
  }
}

TEST(ReliefLevels, RaisesNothingWithoutADisc) {
  for (const int radius : {0, -1, -2147483647}) {
    Scene scene = MakeRowScene({0.25F, 0.75F, -1.0F, 2.0F, kNan, 0.5F}, radius);
    scene.low = 0.125F;
    scene.grown = {1.0F, 1.0F, 1.0F, 1.0F, 1.0F, 0.0F};
    ExpectSameAs(scene, {0.125F, 0.125F, 0.125F, 2.0F, 0.125F, 0.0F});
  }
}

TEST(ReliefLevels, IsTheSameAsTheDefinitionForEveryRange) {
  constexpr std::array<std::array<float, 2>, 14> kRanges = {{{0.0F, 1.0F},
                                                             {-1.0F, 0.5F},
                                                             {0.3F, 0.9F},
                                                             {1.0F, 0.0F},
                                                             {0.7F, 0.7F},
                                                             {-0.0F, 1.0F},
                                                             {0.5F, kLargest},
                                                             {-kLargest, kLargest},
                                                             {0.0F, kSmallest},
                                                             {0.0F, 1e-30F},
                                                             {0.0F, kInfinity},
                                                             {-kInfinity, 1.0F},
                                                             {kNan, 1.0F},
                                                             {0.0F, kNan}}};
  for (const std::size_t kind : {0U, 1U, 10U}) {
    Scene scene = MakeScene(29, 23, kind, 11);
    for (const auto& [low, high] : kRanges) {
      for (const ReliefProfile profile : kProfiles) {
        SCOPED_TRACE(testing::PrintToString(low) + " to " + testing::PrintToString(high) + ", kind " +
                     std::to_string(kind) + ", profile " + std::to_string(static_cast<int>(profile)));
        scene.low = low;
        scene.high = high;
        scene.radius = 6;
        scene.wrap = profile == ReliefProfile::kArcOut;
        scene.profile = profile;
        ExpectSameAsReference(scene);
      }
    }
  }
}

TEST(ReliefLevels, DoesNotDependOnHowTheRowsAreSplitAmongThreads) {
  Scene scene = MakeScene(75, 64, 1, 9);
  scene.radius = 40;
  scene.wrap = true;
  const std::vector<float> expected = Compute(scene);
  const ReliefLevels::Analysis analysis(scene.GetField());
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const Testing::ThreadsScope scope(threads);
    for (const int rows : {1, 2, 7, 64}) {
      std::vector<float> output(scene.mask.size(), -1.0F);
      ThreadPool pool(threads);
      for (int y = 0; y < scene.height; y += rows) {
        const int to = std::min(y + rows, scene.height);
        pool.AddTask([&, y, to] { analysis.ComputeRows(y, to, output.data()); });
      }
      pool.Wait();
      EXPECT_TRUE(AreSameSamples(output, expected)) << rows << " rows, " << threads << " threads";
    }
  }
}

TEST(ReliefLevels, WritesNoOtherRows) {
  Scene scene = MakeScene(20, 12, 0, 1);
  scene.radius = 5;
  std::vector<float> output(scene.mask.size(), -7.0F);
  ReliefLevels::Analysis(scene.GetField()).ComputeRows(3, 9, output.data());
  EXPECT_TRUE(std::all_of(output.begin(), output.begin() + 60, [](float value) { return value == -7.0F; }));
  EXPECT_TRUE(std::none_of(output.begin() + 60, output.begin() + 180, [](float value) { return value == -7.0F; }));
  EXPECT_TRUE(std::all_of(output.begin() + 180, output.end(), [](float value) { return value == -7.0F; }));
}

RC_GTEST_PROP(ReliefLevels, IsTheSameAsTheDefinitionForAnyMask, ()) {
  const int width = *rc::gen::inRange(1, 24);
  const int height = *rc::gen::inRange(1, 16);
  Scene scene =
      MakeScene(width, height, *rc::gen::inRange(std::size_t{0}, kMasks.size()), *rc::gen::arbitrary<std::uint32_t>());
  scene.radius = *rc::gen::inRange(1, 30);
  scene.wrap = *rc::gen::arbitrary<bool>();
  scene.profile = *rc::gen::elementOf(kProfiles);
  const auto number = rc::gen::map(rc::gen::inRange(-8, 9), [](int i) { return 0.25F * static_cast<float>(i); });
  scene.low = *number;
  scene.high = *number;
  RC_ASSERT(AreSameSamples(Compute(scene), Reference::Compute(scene.GetField())));
}

RC_GTEST_PROP(ReliefLevels, IsNeverBelowThePixelNorBelowTheLowValue, ()) {
  Scene scene = MakeScene(*rc::gen::inRange(1, 40), *rc::gen::inRange(1, 30), 0, *rc::gen::arbitrary<std::uint32_t>());
  scene.radius = *rc::gen::inRange(1, 60);
  scene.profile = *rc::gen::elementOf(kProfiles);
  scene.low = 0.25F;
  const std::vector<float> output = Compute(scene);
  for (std::size_t i = 0; i < output.size(); ++i) {
    if (!(scene.grown[i] > 0.0F)) continue;
    RC_ASSERT(output[i] >= scene.low);
    // A pixel's own candidate is (b - low) / range * range + low, with three roundings.
    RC_ASSERT(output[i] >= scene.mask[i] - 1e-6F);
  }
}

}  // namespace
