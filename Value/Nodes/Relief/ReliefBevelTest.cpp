// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ReliefBevel.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "Tests/Support/InstructionSets.h"
#include "Tests/Support/ValueTesting.h"

namespace {

using ReliefBevel::Rings;
using Testing::GetSamples;
using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::kInfinity;
using Testing::kNan;
using Testing::MakeImage;
using Testing::MakeRow;
using Testing::OnEveryInstructionSet;

constexpr std::array kProfiles = {ReliefProfile::kLinear, ReliefProfile::kSmooth, ReliefProfile::kArcOut,
                                  ReliefProfile::kArcIn};

ImageRef MakeCanvas(const Image& mask, float value) { return ImageRef(new Image(mask.GetImageHeader(), &value)); }

/// Draws on zeros, in both ways, and expects the same.
void ExpectDrawn(const Image& mask, bool wrap, const Rings& rings, const std::vector<float>& expected) {
  const ImageRef stepwise = MakeCanvas(mask, 0.0F);
  ReliefBevel::DrawStepByStep(mask, wrap, rings, *stepwise);
  EXPECT_TRUE(HoldsSamples(stepwise.Get(), expected)) << "step by step";
  const ImageRef drawn = MakeCanvas(mask, 0.0F);
  ReliefBevel::Analysis(mask, wrap).Draw(rings, *drawn);
  EXPECT_TRUE(HoldsSamples(drawn.Get(), expected));
}

/// The definition with discs and fills of its own.
class Reference {
 public:
  Reference(const Image& mask, bool wrap)
      : mask_(GetSamples(mask)), width_(mask.GetSizeX()), height_(mask.GetSizeY()), wrap_(wrap) {}

  void Draw(const Rings& rings, std::vector<float>& output) const {
    const float k = 1.0F / static_cast<float>(rings.steps);
    for (int i = 0; i < rings.steps; ++i) {
      const std::vector<float> working = Move(rings.start - i);
      const float t = static_cast<float>(i + 1) * k;
      const float v = rings.is_inverted ? 1.0F - t : t;
      const float level = GetLevel(rings.profile, v);
      for (std::size_t p = 0; p < output.size(); ++p) {
        const float m = working[p] > 0.0F ? std::min(working[p], 1.0F) : 0.0F;
        output[p] = m == 1.0F ? level : output[p] + (level - output[p]) * m;
      }
    }
  }

 private:
  static float GetLevel(ReliefProfile profile, float v) {
    const float square = v * v;
    const float rest = v - 1.0F;
    const float rest_square = rest * rest;
    if (profile == ReliefProfile::kSmooth) return (3.0F - 2.0F * v) * square;
    if (profile == ReliefProfile::kArcOut)
      return static_cast<float>(std::sqrt(static_cast<double>(1.0F - rest_square)));
    if (profile == ReliefProfile::kArcIn)
      return 1.0F - static_cast<float>(std::sqrt(static_cast<double>(1.0F - square)));
    return v;
  }

  /// The mask grown, or shrunk by a negative number of pixels.
  [[nodiscard]] std::vector<float> Move(int offset) const {
    std::vector<float> moved(mask_.size());
    const int r = std::abs(offset);
    for (int y = 0; y < height_; ++y) {
      for (int x = 0; x < width_; ++x) {
        float best = kNan;
        for (int j = -r; j <= r; ++j) {
          for (int i = -r; i <= r; ++i) {
            if (i * i + j * j > r * r) continue;
            const float sample = Get(x + i, y + j);
            const bool is_better = offset > 0 ? sample > best : sample < best;
            if (std::isnan(best) || is_better) best = sample;
          }
        }
        moved[static_cast<std::size_t>(y * width_ + x)] = best;
      }
    }
    return moved;
  }

  /// NaN outside an image that does not tile.
  [[nodiscard]] float Get(int x, int y) const {
    if (wrap_) {
      x = ((x % width_) + width_) % width_;
      y = ((y % height_) + height_) % height_;
    }
    if (x < 0 || x >= width_ || y < 0 || y >= height_) return kNan;
    return mask_[static_cast<std::size_t>(y * width_ + x)];
  }

  std::vector<float> mask_;
  int width_;
  int height_;
  bool wrap_;
};

/// A mask of blots with samples from `values`.
ImageRef MakeMask(int width, int height, std::uint32_t seed, const std::vector<float>& values) {
  std::vector<float> samples;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      seed = seed * 1664525U + 1013904223U;
      const double blot = std::sin(0.5 * x + 0.01 * (seed >> 26)) + std::cos(0.4 * y + 0.3 * x);
      const auto pick = static_cast<std::size_t>((blot + 2.0) / 4.0 * static_cast<double>(values.size()));
      const bool is_stray = (seed >> 8) % 40 == 0;
      samples.push_back(values[is_stray ? (seed >> 16) % values.size() : std::min(pick, values.size() - 1)]);
    }
  }
  return MakeImage(width, height, ColorMode::kValue, samples);
}

TEST(ReliefBevel, DrawsRingsInwards) {
  ExpectDrawn(*MakeRow({0, 0, 0, 1, 1, 1, 0, 0, 0}), false, {.steps = 2, .start = 0},
              {0, 0, 0, 0.5F, 1, 0.5F, 0, 0, 0});
}

TEST(ReliefBevel, DrawsRingsOutwards) {
  ExpectDrawn(*MakeRow({0, 0, 0, 0, 1, 0, 0, 0, 0}), false, {.steps = 2, .start = 2},
              {0, 0, 0.5F, 1, 1, 1, 0.5F, 0, 0});
}

TEST(ReliefBevel, DrawsRingsAcrossTheEdge) {
  ExpectDrawn(*MakeRow({0, 0, 0, 1, 1, 1, 1, 1}), false, {.steps = 4, .start = 2}, {0, 0.25F, 0.5F, 0.75F, 1, 1, 1, 1});
}

TEST(ReliefBevel, LowersTheRingsWhenInverted) {
  ExpectDrawn(*MakeRow({1, 1, 1, 1, 0, 0}), false, {.steps = 4, .start = 0, .is_inverted = true},
              {0, 0.25F, 0.5F, 0.75F, 0, 0});
}

TEST(ReliefBevel, FollowsTheProfile) {
  const std::array<float, 4> at_half = {0.5F, 0.5F, std::sqrt(0.75F), 1.0F - std::sqrt(0.75F)};
  for (std::size_t i = 0; i < kProfiles.size(); ++i) {
    ExpectDrawn(*MakeRow({0, 1, 1, 1, 0}), false, {.steps = 2, .start = 0, .profile = kProfiles[i]},
                {0, at_half[i], 1, at_half[i], 0});
    EXPECT_SAME(ReliefBevel::GetLevel(kProfiles[i], 0.0F), 0.0F);
    EXPECT_SAME(ReliefBevel::GetLevel(kProfiles[i], 1.0F), 1.0F);
  }
}

TEST(ReliefBevel, TakesRoundNeighborhoods) {
  // Of the 5 x 5 pixels around the set one, 13 are within 2.
  ExpectDrawn(
      *MakeImage(5, 5, ColorMode::kValue, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
      false, {.steps = 1, .start = 2}, {0, 0, 1, 0, 0, 0, 1, 1, 1, 0, 1, 1, 1, 1, 1, 0, 1, 1, 1, 0, 0, 0, 1, 0, 0});
}

TEST(ReliefBevel, ShrinksAtTheBorderOnlyWhereTheMaskTiles) {
  const ImageRef mask = MakeRow({1, 1, 0});
  ExpectDrawn(*mask, false, {.steps = 2, .start = 0}, {1, 0.5F, 0});
  ExpectDrawn(*mask, true, {.steps = 2, .start = 0}, {0.5F, 0.5F, 0});
}

TEST(ReliefBevel, FillsAFullMaskWithTheLastLevelAndAnEmptyOneWithNothing) {
  ExpectDrawn(*MakeRow({1, 1, 1}), true, {.steps = 3, .start = 1}, {1, 1, 1});
  ExpectDrawn(*MakeRow({0, 0, 0}), true, {.steps = 3, .start = 1}, {0, 0, 0});
}

TEST(ReliefBevel, DrawsNothingWithoutSteps) {
  for (const int steps : {0, -1, -250}) ExpectDrawn(*MakeRow({1, 0.5F}), true, {.steps = steps, .start = 3}, {0, 0});
}

TEST(ReliefBevel, MixesWhereTheMaskIsSoft) {
  // One step of level 1, moved half way from 0, and a quarter.
  ExpectDrawn(*MakeRow({0.5F, 0.25F, 2.0F, -1.0F, kNan}), false, {.steps = 1, .start = 0}, {0.5F, 0.25F, 1, 0, 0});
}

TEST(ReliefBevel, IsTheSameAsTheDefinitionForEveryKindOfMask) {
  const std::vector<std::vector<float>> kinds = {{0.0F, 1.0F},
                                                 {1.0F, 1.0F, 1.0F, 0.0F},
                                                 {-0.0F, 1.0F, 3.5F, -2.0F, kInfinity, -kInfinity},
                                                 {0.0F, 0.25F, 0.5F, 1.0F},
                                                 {0.0F, 1.0F, kNan},
                                                 {kNan},
                                                 {0.0F, 1e-30F, 1.0F}};
  constexpr std::array<Rings, 7> kRings = {{{.steps = 5, .start = 0},
                                            {.steps = 5, .start = 5},
                                            {.steps = 5, .start = 3},
                                            {.steps = 4, .start = 4, .is_inverted = true},
                                            {.steps = 1, .start = 0},
                                            {.steps = 9, .start = 2},
                                            {.steps = 2, .start = -3}}};
  constexpr std::array<std::array<int, 2>, 5> kSizes = {{{23, 17}, {1, 13}, {29, 1}, {1, 1}, {4, 3}}};
  for (const auto& [width, height] : kSizes) {
    for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
      const ImageRef mask = MakeMask(width, height, static_cast<std::uint32_t>(width + height), kinds[kind]);
      for (const bool wrap : {false, true}) {
        const Reference reference(*mask, wrap);
        for (std::size_t i = 0; i < kRings.size(); ++i) {
          SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + ", kind " + std::to_string(kind) +
                       ", wrap " + std::to_string(wrap) + ", rings " + std::to_string(i));
          Rings rings = kRings[i];
          rings.profile = kProfiles[i % kProfiles.size()];
          std::vector<float> expected(mask->GetNumSamples(), 0.0F);
          reference.Draw(rings, expected);
          OnEveryInstructionSet([&] { ExpectDrawn(*mask, wrap, rings, expected); });
        }
      }
    }
  }
}

TEST(ReliefBevel, IsTheSameAsTheDefinitionWhereDiscsCoverTheMask) {
  // Soft in places, and soft everywhere, so that the rings beyond the mask still change it.
  const std::vector<std::vector<float>> kinds = {
      {0.0F, 1.0F}, {0.0F, 0.25F, 0.5F, 1.0F}, {0.25F, 0.5F, 0.375F}, {0.875F, 0.0625F, 0.5F, kNan}, {kNan}};
  for (std::size_t kind = 0; kind < kinds.size(); ++kind) {
    const ImageRef mask = MakeMask(5, 3, static_cast<std::uint32_t>(kind), kinds[kind]);
    for (const bool wrap : {false, true}) {
      for (const int start : {0, 7, 12, 24, -9}) {
        for (const bool is_inverted : {false, true}) {
          const Rings rings{.steps = 24,
                            .start = start,
                            .is_inverted = is_inverted,
                            .profile = kProfiles[static_cast<std::size_t>(start + 9) % kProfiles.size()]};
          SCOPED_TRACE("kind " + std::to_string(kind) + ", wrap " + std::to_string(wrap) + ", start " +
                       std::to_string(start));
          std::vector<float> expected(mask->GetNumSamples(), 0.0F);
          Reference(*mask, wrap).Draw(rings, expected);
          ExpectDrawn(*mask, wrap, rings, expected);
        }
      }
    }
  }
}

TEST(ReliefBevel, ReachesPixelsFurtherAwayThanSixteenBitsCount) {
  const Testing::MaxSizeScope scope(40001, 1);
  std::vector<float> samples(40001, 0.0F);
  samples.back() = 1.0F;
  const ImageRef mask = MakeRow(samples);
  const ImageRef canvas = MakeCanvas(*mask, 0.0F);
  ReliefBevel::Analysis(*mask, false).Draw({.steps = 65536, .start = 65536}, *canvas);
  // The pixel at a distance of d is in every ring up to the one with the offset d, number 65536 - d from 0.
  const std::vector<float> drawn = GetSamples(*canvas);
  EXPECT_EQ(drawn[0], 25537.0F / 65536.0F);
  EXPECT_EQ(drawn[20000], 45537.0F / 65536.0F);
  EXPECT_EQ(drawn[40000], 1.0F);
}

TEST(ReliefBevel, DrawsAThousandMillionRings) {
  constexpr int kMany = 1000000000;
  // Growing, the last ring is drawn with an offset of 1, and covers both pixels. Shrinking, only the first one, with an
  // offset of 0, is left where there is an outside.
  ExpectDrawn(*MakeRow({1, 0}), false, {.steps = kMany, .start = kMany}, {1, 1});
  ExpectDrawn(*MakeRow({1, 1}), false, {.steps = kMany, .start = 0}, {1, 1});
  ExpectDrawn(*MakeRow({1, 0}), false, {.steps = kMany, .start = 0}, {1e-9F, 0});
  ExpectDrawn(*MakeRow({0, 0}), false, {.steps = kMany, .start = kMany}, {0, 0});
}

TEST(ReliefBevel, RefusesRingsThatWouldTakeTooLongOnASoftMask) {
  // With so little strength no two of the values ever meet.
  std::vector<float> samples;
  for (int i = 0; i < 64; ++i) samples.push_back(1e-30F);
  const ImageRef mask = MakeRow(samples);
  const ImageRef canvas = MakeCanvas(*mask, 0.0F);
  for (int i = 0; i < 64; ++i) canvas->GetArray()[i] = static_cast<float>(i + 1) / 64.0F;
  EXPECT_THROW(ReliefBevel::DrawStepByStep(*mask, false, {.steps = 1000000000, .start = 1000000000}, *canvas),
               std::runtime_error);
}

TEST(ReliefBevel, DrawsSeveralBevelsOfOneMaskOverEachOther) {
  for (const bool wrap : {false, true}) {
    const ImageRef mask = MakeMask(31, 19, 3, {0.0F, 1.0F, 0.0F});
    ReliefBevel::Analysis analysis(*mask, wrap);
    const ImageRef canvas = MakeCanvas(*mask, 1.0F);
    std::vector<float> expected(mask->GetNumSamples(), 1.0F);
    for (const Rings& rings : {Rings{.steps = 4, .start = 4, .is_inverted = true}, Rings{.steps = 3, .start = 0},
                               Rings{.steps = 0}, Rings{.steps = 2, .start = 1, .profile = ReliefProfile::kArcIn}}) {
      analysis.Draw(rings, *canvas);
      Reference(*mask, wrap).Draw(rings, expected);
      EXPECT_TRUE(HoldsSamples(canvas.Get(), expected));
    }
  }
}

RC_GTEST_PROP(ReliefBevel, IsTheSameAsTheDefinitionForAnyBlackAndWhiteMask, ()) {
  const int width = *rc::gen::inRange(1, 20);
  const int height = *rc::gen::inRange(1, 20);
  const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const auto bits =
      *rc::gen::container<std::vector<bool>>(count, rc::gen::weightedElement<bool>({{3, false}, {1, true}}));
  const bool is_inverse = *rc::gen::arbitrary<bool>();
  std::vector<float> samples;
  for (const bool bit : bits) samples.push_back(bit != is_inverse ? 1.0F : 0.0F);
  const ImageRef mask = MakeImage(width, height, ColorMode::kValue, samples);
  const Rings rings{.steps = *rc::gen::inRange(0, 9),
                    .start = *rc::gen::inRange(-4, 9),
                    .is_inverted = *rc::gen::arbitrary<bool>(),
                    .profile = *rc::gen::elementOf(kProfiles)};
  const bool wrap = *rc::gen::arbitrary<bool>();
  std::vector<float> expected(count, 0.0F);
  Reference(*mask, wrap).Draw(rings, expected);
  const ImageRef drawn = MakeCanvas(*mask, 0.0F);
  ReliefBevel::Analysis(*mask, wrap).Draw(rings, *drawn);
  RC_ASSERT(HoldsSamples(drawn.Get(), expected));
}

}  // namespace
