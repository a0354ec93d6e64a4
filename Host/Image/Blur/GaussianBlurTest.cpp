// SPDX-License-Identifier: Apache-2.0
//
// The Gaussian blur against the plain double sums that define it.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "Host/Image/Filter.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/InstructionSets.h"

namespace Testing {
namespace {

/// Weights for the offsets -radius to radius.
std::vector<double> MakeKernel(float sigma) {
  const double width = static_cast<double>(sigma);
  const int radius = sigma > 0.0F ? static_cast<int>(std::ceil(4.0 * width)) : 0;
  std::vector<double> weights;
  double sum = 0.0;
  for (int k = -radius; k <= radius; ++k) {
    weights.push_back(radius == 0 ? 1.0 : std::exp(-static_cast<double>(k) * k / (2.0 * width * width)));
    sum += weights.back();
  }
  for (double& weight : weights) weight /= sum;
  return weights;
}

int Outside(int position, int size, bool wrap) {
  if (!wrap) return std::min(std::max(position, 0), size - 1);
  const int rest = position % size;
  return rest < 0 ? rest + size : rest;
}

/// The definition: the kernel along x, then along y, in double precision throughout.
std::vector<double> Reference(const Image& image, float sigma_x, float sigma_y, bool wrap) {
  const int width = image.GetSizeX();
  const int height = image.GetSizeY();
  const int channels = image.GetNumChannels();
  const auto at = [&](int x, int y, int c) { return static_cast<std::size_t>((y * width + x) * channels + c); };
  std::vector<double> samples(image.GetConstArray(), image.GetConstArray() + image.GetNumSamples());
  for (const bool along_x : {true, false}) {
    const std::vector<double> kernel = MakeKernel(along_x ? sigma_x : sigma_y);
    if (kernel.size() == 1) continue;
    const int radius = static_cast<int>(kernel.size() / 2);
    std::vector<double> blurred(samples.size());
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        for (int c = 0; c < channels; ++c) {
          double sum = 0.0;
          for (int k = -radius; k <= radius; ++k) {
            const std::size_t from =
                along_x ? at(Outside(x + k, width, wrap), y, c) : at(x, Outside(y + k, height, wrap), c);
            sum += kernel[static_cast<std::size_t>(k + radius)] * samples[from];
          }
          blurred[at(x, y, c)] = sum;
        }
      }
    }
    samples = blurred;
  }
  return samples;
}

ImagePtr Blur(const Image& image, float sigma_x, float sigma_y, char mode) {
  auto output = ScEng::MakeRef<Image>(image.GetSizeX(), image.GetSizeY(), image.GetColorMode(), nullptr);
  Filter::ApplyGaussianBlur(image, *output, sigma_x, sigma_y, mode);
  return output;
}

/// Whether `actual` keeps the accuracy that is promised: 1e-5 of the range of the finite samples, and the rounding to
/// a float; NaN and infinities exactly.
testing::AssertionResult IsBlurred(const Image& image, const Image& actual, float sigma_x, float sigma_y, bool wrap) {
  double low = std::numeric_limits<double>::infinity();
  double high = -low;
  for (const float sample : GetSamples(image)) {
    if (!std::isfinite(sample)) continue;
    low = std::min(low, static_cast<double>(sample));
    high = std::max(high, static_cast<double>(sample));
  }
  const std::vector<double> expected = Reference(image, sigma_x, sigma_y, wrap);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const double sample = static_cast<double>(actual.GetConstArray()[i]);
    const auto differ = [&] {
      return testing::AssertionFailure() << "sample " << i << " is " << sample << " instead of " << expected[i]
                                         << ", range " << low << " to " << high;
    };
    if (std::isnan(expected[i]) || std::isinf(expected[i])) {
      if (!AreSame(static_cast<float>(expected[i]), actual.GetConstArray()[i])) return differ();
      continue;
    }
    const double rounding = std::max(std::abs(expected[i]) * 0x1p-23, 0x1p-149);
    if (!(std::abs(sample - expected[i]) <= 1e-5 * (high - low) + rounding)) return differ();
    if (!(sample >= low && sample <= high)) return differ();
  }
  return testing::AssertionSuccess();
}

enum class Kind { kPlain, kFarFromZero, kSpikes, kSmallest, kLargest, kStrange };

ImagePtr MakeRandom(int width, int height, unsigned mode, Kind kind, std::mt19937& random) {
  auto image = ScEng::MakeRef<Image>(width, height, mode, nullptr);
  float* samples = image->GetArray();
  for (std::size_t i = 0; i < image->GetNumSamples(); ++i) {
    const float unit = static_cast<float>(static_cast<int>(random() % 20001) - 10000) * 1e-4F;
    switch (kind) {
      case Kind::kPlain: samples[i] = unit; break;
      case Kind::kFarFromZero: samples[i] = 1000.0F + unit; break;
      case Kind::kSpikes: samples[i] = random() % 97 == 0 ? 1e6F * unit : unit; break;
      case Kind::kSmallest: samples[i] = 1e-39F * unit; break;
      case Kind::kLargest: samples[i] = random() % 3 == 0 ? kLargest : -kLargest; break;
      case Kind::kStrange:
        samples[i] = unit;
        if (random() % 611 == 0) {
          const float strange[] = {kNan, kInfinity, -kInfinity, -0.0F, kSmallest, kLargest / 1e30F};
          samples[i] = strange[random() % std::size(strange)];
        }
        break;
    }
  }
  return image;
}

constexpr Kind kKinds[] = {Kind::kPlain,    Kind::kFarFromZero, Kind::kSpikes,
                           Kind::kSmallest, Kind::kLargest,     Kind::kStrange};

/// Both ways of filtering, and both sides of where one gives way to the other.
constexpr float kSigmas[] = {0.0F, 0.02F, 0.3F, 1.0F, 2.75F, 8.0F, 10.0F, 10.01F, 13.2F, 32.0F};

TEST(GaussianBlur, IsWithinItsAccuracyForEverySigma) {
  std::mt19937 random(1);
  for (const Kind kind : kKinds) {
    const auto image = MakeRandom(61, 47, ColorMode::kValue, kind, random);
    for (const float sigma : kSigmas) {
      for (const bool wrap : {false, true}) {
        const auto output = Blur(*image, sigma, sigma, wrap ? 'p' : 'b');
        EXPECT_TRUE(IsBlurred(*image, *output, sigma, sigma, wrap))
            << "kind " << static_cast<int>(kind) << ", sigma " << sigma << ", wrap " << wrap;
      }
    }
  }
}

TEST(GaussianBlur, IsWithinItsAccuracyForEverySize) {
  const int sizes[][2] = {{1, 1},   {1, 2},   {2, 1},   {1, 37},  {37, 1},  {3, 2},   {7, 7},
                          {15, 31}, {16, 16}, {17, 5},  {5, 17},  {31, 33}, {63, 65}, {65, 63},
                          {64, 3},  {3, 129}, {127, 2}, {1, 300}, {300, 1}};
  std::mt19937 random(2);
  for (const auto& size : sizes) {
    for (const Kind kind : {Kind::kPlain, Kind::kStrange}) {
      const auto image = MakeRandom(size[0], size[1], ColorMode::kValue, kind, random);
      for (const float sigma : {0.7F, 9.0F, 12.0F, 40.0F}) {
        for (const bool wrap : {false, true}) {
          const auto output = Blur(*image, sigma, sigma, wrap ? 'p' : 'b');
          EXPECT_TRUE(IsBlurred(*image, *output, sigma, sigma, wrap))
              << size[0] << " x " << size[1] << ", sigma " << sigma << ", wrap " << wrap;
        }
      }
    }
  }
}

TEST(GaussianBlur, BlursEveryChannelOfEveryMode) {
  std::mt19937 random(3);
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    for (const Kind kind : {Kind::kPlain, Kind::kStrange}) {
      const auto image = MakeRandom(35, 29, mode, kind, random);
      for (const float sigma : {1.5F, 11.0F}) {
        for (const bool wrap : {false, true}) {
          const auto output = Blur(*image, sigma, sigma, wrap ? 'p' : 'b');
          EXPECT_TRUE(IsBlurred(*image, *output, sigma, sigma, wrap)) << "mode " << mode << ", sigma " << sigma;
        }
      }
    }
  }
}

TEST(GaussianBlur, TakesAnotherSigmaForEachDirection) {
  std::mt19937 random(4);
  for (const Kind kind : {Kind::kPlain, Kind::kStrange}) {
    const auto image = MakeRandom(45, 52, ColorMode::kPair, kind, random);
    for (const float sigma_x : {0.0F, 1.0F, 14.0F}) {
      for (const float sigma_y : {0.0F, 2.0F, 20.0F}) {
        const auto output = Blur(*image, sigma_x, sigma_y, 'p');
        EXPECT_TRUE(IsBlurred(*image, *output, sigma_x, sigma_y, true)) << sigma_x << ", " << sigma_y;
      }
    }
  }
}

// The absolute errors of the kernel sum to the largest error that any samples between -1 and 1 can have.
TEST(GaussianBlur, HasAKernelWhoseErrorsSumToLessThanTwoMillionths) {
  for (const float sigma : {10.25F, 10.26F, 12.0F, 17.3F, 31.99F, 64.0F, 200.0F}) {
    const std::vector<double> kernel = MakeKernel(sigma);
    const int radius = static_cast<int>(kernel.size() / 2);
    // A second, negative pulse far away puts the middle of the range at zero, where floats are densest.
    const int size = 6 * radius;
    const int place = radius + 3;
    for (const bool down : {false, true}) {
      const float zero = 0.0F;
      Image image(down ? 1 : size, down ? size : 1, ColorMode::kValue, &zero);
      image.GetArray()[place] = 1.0F;
      image.GetArray()[place + 3 * radius] = -1.0F;
      const auto output = Blur(image, sigma, sigma, 'b');
      double sum = 0.0;
      for (int k = -radius - 3; k <= radius + 3; ++k) {
        const double weight = std::abs(k) > radius ? 0.0 : kernel[static_cast<std::size_t>(k + radius)];
        sum += std::abs(static_cast<double>(output->GetConstArray()[place + k]) - weight);
      }
      EXPECT_LT(sum, 2e-6) << sigma << (down ? " down" : " along");
    }
  }
}

TEST(GaussianBlur, StaysAccurateOverLongLines) {
  std::mt19937 random(5);
  for (const bool down : {false, true}) {
    const int size = 20011;
    const auto image = MakeRandom(down ? 1 : size, down ? size : 1, ColorMode::kValue, Kind::kPlain, random);
    for (const bool wrap : {false, true}) {
      const auto output = Blur(*image, 25.0F, 25.0F, wrap ? 'p' : 'b');
      EXPECT_TRUE(IsBlurred(*image, *output, 25.0F, 25.0F, wrap));
    }
  }
}

TEST(GaussianBlur, TakesAKernelThatIsMuchLargerThanTheImage) {
  std::mt19937 random(6);
  const auto image = MakeRandom(5, 3, ColorMode::kValue, Kind::kPlain, random);
  for (const float sigma : {500.0F, 3000.0F}) {
    for (const bool wrap : {false, true}) {
      EXPECT_TRUE(IsBlurred(*image, *Blur(*image, sigma, sigma, wrap ? 'p' : 'b'), sigma, sigma, wrap)) << sigma;
    }
  }
}

/// The sums of one line of a value image at some of its positions, in double precision, from the kernel's weights added
/// up for each distance (where the line repeats) or for all beyond a distance (where its ends do).
class LineReference {
 public:
  LineReference(const Image& line, double sigma, bool wrap)
      : samples_(GetSamples(line)), wrap_(wrap), weights_(samples_.size()), beyond_(samples_.size() + 1) {
    const auto size = static_cast<std::int64_t>(samples_.size());
    const auto radius = static_cast<std::int64_t>(std::ceil(4.0 * sigma));
    double sum = 0.0;
    for (std::int64_t k = -radius; k <= radius; ++k) {
      const double u = static_cast<double>(k) / sigma;
      const double weight = std::exp(-0.5 * u * u);
      sum += weight;
      if (wrap) {
        weights_[static_cast<std::size_t>((k % size + size) % size)] += weight;
      } else if (k >= 0) {
        if (k < size) weights_[static_cast<std::size_t>(k)] = weight;
        if (k >= size) beyond_.back() += weight;
      }
    }
    for (double& weight : weights_) weight /= sum;
    beyond_.back() /= sum;
    for (std::size_t k = samples_.size(); k-- > 0;) beyond_[k] = beyond_[k + 1] + weights_[k];
  }

  [[nodiscard]] double At(std::size_t position) const {
    const std::size_t size = samples_.size();
    double sum = 0.0;
    for (std::size_t i = 0; i < size; ++i) {
      const std::size_t distance = i < position ? position - i : i - position;
      const std::size_t step = wrap_ ? (i + size - position) % size : distance;
      sum += weights_[step] * static_cast<double>(samples_[i]);
    }
    if (wrap_) return sum;
    return sum + beyond_[position + 1] * static_cast<double>(samples_.front()) +
           beyond_[size - position] * static_cast<double>(samples_.back());
  }

 private:
  std::vector<float> samples_;
  bool wrap_;
  /// Of each distance.
  std::vector<double> weights_;
  /// Of all distances from one on.
  std::vector<double> beyond_;
};

TEST(GaussianBlur, IsWithinItsAccuracyForAnySigmaHoweverLarge) {
  std::mt19937 random(16);
  for (const int size : {1, 2, 3, 57, 1000, 20011}) {
    const auto line = MakeRandom(size, 1, ColorMode::kValue, Kind::kPlain, random);
    for (const float sigma : {65536.0F, 65540.0F, 300001.0F, 1e6F}) {
      for (const bool wrap : {false, true}) {
        const LineReference reference(*line, static_cast<double>(sigma), wrap);
        for (const bool down : {false, true}) {
          const auto image = MakeImage(down ? 1 : size, down ? size : 1, ColorMode::kValue, GetSamples(*line));
          const auto output = Blur(*image, sigma, sigma, wrap ? 'p' : 'b');
          for (std::size_t i = 0; i < static_cast<std::size_t>(size); i += 1 + static_cast<std::size_t>(size) / 97) {
            // The samples lie between -1 and 1.
            ASSERT_NEAR(static_cast<double>(output->GetConstArray()[i]), reference.At(i), 2e-5)
                << size << (down ? " down" : " along") << ", sigma " << sigma << ", wrap " << wrap << ", position "
                << i;
          }
        }
      }
    }
  }
}

TEST(GaussianBlur, BecomesTheMeanForASigmaWithoutEnd) {
  // Of the two ends where they go on, of all where the line repeats.
  const auto image = MakeImage(4, 1, ColorMode::kValue, {0.0F, 4.0F, 1.0F, 1.0F});
  for (const float sigma : {1e9F, 1e15F, 1e30F, kLargest, kInfinity}) {
    for (const float sample : GetSamples(*Blur(*image, sigma, 0.0F, 'b'))) EXPECT_NEAR(sample, 0.5F, 4e-5F) << sigma;
    for (const float sample : GetSamples(*Blur(*image, sigma, 0.0F, 'p'))) EXPECT_NEAR(sample, 1.5F, 4e-5F) << sigma;
  }
}

TEST(GaussianBlur, SpreadsInfinitiesOverTheWholeImageForASigmaWithoutEnd) {
  const auto image = MakeImage(3, 2, ColorMode::kValue, {0.0F, kInfinity, 1.0F, 2.0F, 3.0F, 4.0F});
  for (const char mode : {'p', 'b'}) {
    EXPECT_TRUE(HoldsSamples(Blur(*image, 1e30F, 1e30F, mode).Get(), std::vector<float>(6, kInfinity)));
  }
}

RC_GTEST_PROP(GaussianBlur, IsWithinItsAccuracy, ()) {
  const int width = *rc::gen::inRange(1, 90);
  const int height = *rc::gen::inRange(1, 40);
  const unsigned mode = *rc::gen::inRange(0U, 4U);
  const Kind kind = *rc::gen::elementOf(std::vector<Kind>(std::begin(kKinds), std::end(kKinds)));
  const float sigma_x = static_cast<float>(*rc::gen::inRange(0, 400)) * 0.05F;
  const float sigma_y = static_cast<float>(*rc::gen::inRange(0, 400)) * 0.05F;
  const bool wrap = *rc::gen::arbitrary<bool>();
  std::mt19937 random(*rc::gen::arbitrary<unsigned>());
  const auto image = MakeRandom(width, height, mode, kind, random);
  const auto output = Blur(*image, sigma_x, sigma_y, wrap ? 'p' : 'b');
  RC_ASSERT(IsBlurred(*image, *output, sigma_x, sigma_y, wrap));
}

TEST(GaussianBlur, GivesTheSameBytesOnEveryInstructionSetAndNumberOfThreads) {
  struct Case {
    int width;
    int height;
    unsigned mode;
  };
  std::mt19937 random(7);
  for (const Case& shape : {Case{331, 257, ColorMode::kValue}, Case{97, 211, ColorMode::kColor},
                            Case{3, 30001, ColorMode::kValue}, Case{30001, 3, ColorMode::kPair}}) {
    for (const Kind kind : {Kind::kPlain, Kind::kStrange}) {
      const auto image = MakeRandom(shape.width, shape.height, shape.mode, kind, random);
      for (const float sigma : {0.5F, 6.0F, 21.0F}) {
        SCOPED_TRACE(std::to_string(shape.width) + " x " + std::to_string(shape.height) + ", " + std::to_string(sigma));
        const std::vector<float> expected = GetSamples(*Blur(*image, sigma, sigma, 'p'));
        OnEveryInstructionSet([&] {
          for (const std::size_t threads : {1U, 2U, 16U}) {
            const ThreadsScope scope(threads);
            EXPECT_TRUE(SameSamples(expected, GetSamples(*Blur(*image, sigma, sigma, 'p')))) << threads << " threads";
          }
        });
      }
    }
  }
}

// Large results are written past the caches where their rows are aligned.
TEST(GaussianBlur, GivesTheSameBytesForLargeImages) {
  std::mt19937 random(8);
  for (const int width : {1600, 1601}) {
    const auto image = MakeRandom(width, 1400, ColorMode::kValue, Kind::kPlain, random);
    for (const float sigma : {1.0F, 11.0F}) {
      const auto first = Blur(*image, sigma, sigma, 'b');
      EXPECT_TRUE(IsBlurred(*image, *first, sigma, sigma, false));
      const std::vector<float> expected = GetSamples(*first);
      OnEveryInstructionSet([&] {
        for (const std::size_t threads : {1U, 2U}) {
          const ThreadsScope scope(threads);
          EXPECT_TRUE(SameSamples(expected, GetSamples(*Blur(*image, sigma, sigma, 'b')))) << threads << " threads";
        }
      });
    }
  }
}

TEST(GaussianBlur, CopiesTheBytesForSigmaZero) {
  const auto image = MakeImage(3, 2, ColorMode::kValue, {kNan, -0.0F, kSmallest, kLargest, -kInfinity, 3.0F});
  image->SetValueLowHigh(-3.0F, 7.0F);
  for (const float sigma : {0.0F, -0.0F, -1.0F, kNan}) {
    const auto output = Blur(*image, sigma, sigma, 'b');
    EXPECT_TRUE(SameSamples(GetSamples(*image), GetSamples(*output)));
    EXPECT_EQ(output->GetValueLow(), -3.0F);
    EXPECT_EQ(output->GetValueHigh(), 7.0F);
  }
}

TEST(GaussianBlur, LeavesAnEvenImageExactlyAsItIs) {
  for (const float level : {0.0F, 0.1F, -1000.3F, kLargest, -kLargest, kSmallest, 1e-42F, 3e-38F}) {
    const Image image(83, 59, ColorMode::kValue, &level);
    for (const float sigma : {0.5F, 3.0F, 30.0F}) {
      const std::vector<float> samples = GetSamples(*Blur(image, sigma, sigma, 'b'));
      EXPECT_TRUE(std::all_of(samples.begin(), samples.end(), [&](float sample) { return AreSame(sample, level); }))
          << level;
    }
  }
}

TEST(GaussianBlur, SpreadsAnInfinityExactlyAsFarAsTheKernelReaches) {
  for (const float sigma : {0.3F, 2.0F, 2.1F, 10.0F, 11.0F, 12.01F}) {
    const int radius = static_cast<int>(std::ceil(4.0F * sigma));
    const int size = 4 * radius + 5;
    const float level = 0.5F;
    for (const float strange : {kInfinity, -kInfinity, kNan}) {
      Image image(size, size, ColorMode::kValue, &level);
      const int place = size / 2;
      image.GetArray()[place * size + place] = strange;
      const auto output = Blur(image, sigma, sigma, 'b');
      for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
          const bool in_reach = std::abs(x - place) <= radius && std::abs(y - place) <= radius;
          ASSERT_TRUE(AreSame(output->GetConstArray()[y * size + x], in_reach ? strange : level))
              << x << ", " << y << ", sigma " << sigma;
        }
      }
    }
  }
}

TEST(GaussianBlur, MakesNaNOfInfinitiesOfBothSignsOnlyWhereBothAreInReach) {
  // Radius 4: plus infinity reaches 6 to 14, minus infinity 12 to 20.
  const float level = 1.0F;
  Image image(30, 1, ColorMode::kValue, &level);
  image.GetArray()[10] = kInfinity;
  image.GetArray()[16] = -kInfinity;
  const auto output = Blur(image, 1.0F, 1.0F, 'b');
  for (int x = 0; x < 30; ++x) {
    const float expected = x < 6 || x > 20 ? level : x < 12 ? kInfinity : x > 14 ? -kInfinity : kNan;
    EXPECT_TRUE(AreSame(output->GetConstArray()[x], expected)) << x;
  }
}

TEST(GaussianBlur, LeavesNothingButNaNAndInfinitiesWhereThereIsNothingElse) {
  for (const float sigma : {1.0F, 15.0F}) {
    const Image infinite(20, 20, ColorMode::kValue, &kInfinity);
    EXPECT_TRUE(SameSamples(GetSamples(infinite), GetSamples(*Blur(infinite, sigma, sigma, 'p'))));
    const Image nan(20, 20, ColorMode::kValue, &kNan);
    EXPECT_TRUE(SameSamples(GetSamples(nan), GetSamples(*Blur(nan, sigma, sigma, 'b'))));
  }
}

// Hand-made: for sigma 0.5 the kernel has e^-2 beside its middle and e^-8 beside that.
TEST(GaussianBlur, WeighsNeighborsByTheSampledGaussian) {
  const auto image = MakeImage(7, 1, ColorMode::kValue, {0.0F, 0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 0.0F});
  const auto output = Blur(*image, 0.5F, 0.5F, 'b');
  const double near = 0.1353352832366127;
  const double far = 0.00033546262790251185;
  const double sum = 1.0 + 2.0 * near + 2.0 * far;
  const double expected[] = {0.0, far / sum, near / sum, 1.0 / sum, near / sum, far / sum, 0.0};
  for (int x = 0; x < 7; ++x) EXPECT_NEAR(static_cast<double>(output->GetConstArray()[x]), expected[x], 1e-7);
}

TEST(GaussianBlur, WrapsOrRepeatsTheBorder) {
  const auto image = MakeImage(1, 5, ColorMode::kValue, {1.0F, 0.0F, 0.0F, 0.0F, 0.0F});
  const double near = 0.1353352832366127;
  const double far = 0.00033546262790251185;
  const double sum = 1.0 + 2.0 * near + 2.0 * far;
  const auto wrapped = Blur(*image, 0.5F, 0.5F, 'p');
  const double expected_wrapped[] = {1.0 / sum, near / sum, far / sum, far / sum, near / sum};
  const auto repeated = Blur(*image, 0.5F, 0.5F, 'b');
  const double expected_repeated[] = {(1.0 + near + far) / sum, (near + far) / sum, far / sum, 0.0, 0.0};
  for (int y = 0; y < 5; ++y) {
    EXPECT_NEAR(static_cast<double>(wrapped->GetConstArray()[y]), expected_wrapped[y], 1e-7);
    EXPECT_NEAR(static_cast<double>(repeated->GetConstArray()[y]), expected_repeated[y], 1e-7);
  }
}

TEST(GaussianBlur, KeepsTheHeaderButForTheValueRange) {
  const float level = 2.0F;
  Image image(4, 4, ColorMode::kValue, &level);
  image.SetValueLowHigh(-5.0F, 9.0F);
  image.SetPin(100, 200);
  Image output(4, 4, ColorMode::kValue, nullptr);
  output.SetPin(3, 4);
  output.SetPivot(0.5F, 0.25F);
  output.SetOutsideValue(6.0F);
  Filter::ApplyGaussianBlur(image, output, 1.0F, 0.0F, 'p');
  EXPECT_EQ(output.GetPinX(), 3);
  EXPECT_EQ(output.GetPinY(), 4);
  EXPECT_EQ(output.GetPivotX(), 0.5F);
  EXPECT_EQ(output.GetPivotY(), 0.25F);
  EXPECT_EQ(output.GetOutsideValue(), 6.0F);
  EXPECT_EQ(output.GetValueLow(), -5.0F);
  EXPECT_EQ(output.GetValueHigh(), 9.0F);
}

TEST(GaussianBlur, TakesImagesWithoutPixels) {
  for (const auto& [width, height] : {std::pair{0, 0}, std::pair{0, 5}, std::pair{5, 0}}) {
    Image image(width, height, ColorMode::kColor, nullptr);
    image.SetValueHigh(3.0F);
    EXPECT_EQ(Blur(image, 2.0F, 20.0F, 'p')->GetValueHigh(), 3.0F);
  }
}

TEST(GaussianBlur, RefusesAnOutputOfAnotherShapeAndItself) {
  const float level = 0.0F;
  Image image(4, 3, ColorMode::kValue, &level);
  Image wider(5, 3, ColorMode::kValue, &level);
  Image higher(4, 4, ColorMode::kValue, &level);
  Image other(4, 3, ColorMode::kPair, nullptr);
  for (Image* output : {&image, &wider, &higher, &other}) {
    EXPECT_THROW(Filter::ApplyGaussianBlur(image, *output, 1.0F, 1.0F, 'b'), std::invalid_argument);
  }
}

}  // namespace
}  // namespace Testing
