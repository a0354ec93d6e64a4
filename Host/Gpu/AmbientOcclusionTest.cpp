// SPDX-License-Identifier: Apache-2.0
//
// Ambient occlusion by the engine, on whatever device it takes, held against a slow reference in double precision.
#include "Host/Gpu/AmbientOcclusion.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

#include "Host/Gpu/GpuEngine.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/OcclusionTesting.h"

namespace Testing {
namespace {

using ScEng::Status;

TEST(AmbientOcclusion, IsAccurateAtAnySize) {
  for (const auto& [x, y] : {std::pair{1, 1}, {1, 7}, {9, 1}, {2, 2}, {3, 5}, {15, 9}, {16, 8}, {17, 9}, {33, 23}}) {
    const auto image = MakeImage(x, y, ColorMode::kValue, Noise(static_cast<std::size_t>(x * y), 3));
    for (const char border : {'p', 'b'}) {
      for (const float radius : {2.5F, 3.0F, 7.9F}) {
        EXPECT_TRUE(IsAccurate(*image, radius, border)) << x << " x " << y << " " << border << " " << radius;
      }
    }
  }
}

TEST(AmbientOcclusion, IsAccurateOnTerrainAtAnyRadius) {
  for (const double detail : {0.0, 0.02, 0.5}) {
    const auto image = MakeHills(61, 47, detail);
    for (const float radius : {1.0F, 2.0F, 5.5F, 10.0F, 41.0F, 100.0F}) {
      EXPECT_TRUE(IsAccurate(*image, radius, 'p')) << detail << " " << radius;
      EXPECT_TRUE(IsAccurate(*image, radius, 'b')) << detail << " " << radius;
    }
  }
}

TEST(AmbientOcclusion, LooksFartherThanTheImageIsLarge) {
  const auto image = MakeImage(3, 2, ColorMode::kValue, {0.0F, 0.5F, 1.0F, 0.25F, 0.0F, 0.75F});
  EXPECT_TRUE(IsAccurate(*image, 100.0F, 'p'));
  EXPECT_TRUE(IsAccurate(*image, 100.0F, 'b'));
  EXPECT_TRUE(IsAccurate(*image, 1024.0F, 'p'));
}

TEST(AmbientOcclusion, TakesAnyRadius) {
  const auto small = MakeImage(5, 4, ColorMode::kValue, Noise(20, 11));
  const auto thin = MakeImage(301, 1, ColorMode::kValue, Noise(301, 12));
  for (const char border : {'p', 'b'}) {
    for (const float radius : {1025.0F, 5000.5F}) {
      EXPECT_TRUE(IsAccurate(*small, radius, border)) << border << " " << radius;
      EXPECT_TRUE(IsAccurate(*thin, radius, border)) << border << " " << radius;
    }
  }
  // Heights of some pixels, which are what a share of the declared range makes of such radii.
  for (const float radius : {1e7F, 1e9F, 3e38F}) {
    std::vector<float> samples = Noise(21 * 13, 13);
    for (float& sample : samples) sample *= 4.0F / radius;
    EXPECT_TRUE(IsAccurate(*MakeImage(21, 13, ColorMode::kValue, samples), radius, 'b')) << radius;
  }
}

TEST(AmbientOcclusion, FindsALoneTowerAtEveryDistance) {
  // On open ground one tower is all there is, so a group of steps left out wrongly shows.
  for (const float radius : {3.0F, 30.0F, 100.0F}) {
    std::vector<float> samples(75 * 53, 0.0F);
    samples[26 * 75 + 37] = 1.0F;
    EXPECT_TRUE(IsAccurate(*MakeImage(75, 53, ColorMode::kValue, samples), radius, 'b')) << radius;
  }
}

TEST(AmbientOcclusion, OfAStepIsWhatIsWorkedOutByHand) {
  // Heights 0 and 3 in two halves, radius 3: the pixel at the foot of the step, one pixel away from it, rises by 3, 3/2
  // and 1 along the row, so T = 3; the diagonals meet the step's bilinear slope.
  std::vector<float> samples(21 * 21, 0.0F);
  for (std::size_t y = 0; y < 21; ++y) {
    for (std::size_t x = 11; x < 21; ++x) samples[y * 21 + x] = 1.0F;
  }
  const auto result = Occlude(*MakeImage(21, 21, ColorMode::kValue, samples), 3.0F, 'b');
  double expected = 9.0;  // The directions along the step and away from it are open.
  expected += 1.0 / (1.0 + 9.0);
  for (const double angle : {1.0, 2.0, 3.0}) {
    // Rises over s cos(angle) pixels, cut at one: (3 min(1, s cos) ) / s, which is largest where s cos reaches 1 first.
    double steepest = 0.0;
    for (int s = 1; s <= 3; ++s) {
      steepest = std::max(steepest, 3.0 * std::min(1.0, s * std::cos(angle * std::numbers::pi / 8.0)) / s);
    }
    expected += 2.0 / (1.0 + steepest * steepest);
  }
  EXPECT_NEAR(static_cast<double>(result->GetConstArray()[10 * 21 + 10]), expected / 16.0, kAccuracy);
  // On top nothing is higher.
  EXPECT_EQ(result->GetConstArray()[10 * 21 + 15], 1.0F);
}

TEST(AmbientOcclusion, OfFlatGroundIsExactlyOpen) {
  const float level = 0.3F;
  const Image flat(40, 20, ColorMode::kValue, &level);
  const auto result = Occlude(flat, 100.0F, 'b');
  EXPECT_TRUE(SameSamples(std::vector<float>(800, 1.0F), GetSamples(*result)));
}

TEST(AmbientOcclusion, OfAnEmptyDeclaredRangeIsOpenEverywhere) {
  auto image = MakeHills(20, 10, 0.5);
  image->SetValueLowHigh(0.5F, 0.5F);
  EXPECT_TRUE(SameSamples(std::vector<float>(200, 1.0F), GetSamples(*Occlude(*image, 9.0F, 'p'))));
}

TEST(AmbientOcclusion, ReadsHeightsByTheDeclaredRange) {
  for (const auto& [low, high] : {std::pair{-2.0F, 6.0F}, {1.0F, 0.0F}, {0.0F, 1e-6F}, {-1e6F, 1e6F}}) {
    auto image = MakeHills(31, 19, 0.1);
    image->SetValueLowHigh(low, high);
    EXPECT_TRUE(IsAccurate(*image, 12.0F, 'p')) << low << " " << high;
  }
}

TEST(AmbientOcclusion, IsAccurateWhereValuesAreFarOutsideTheRange) {
  // Neighbours differ by little beside their values, which single precision would lose.
  std::vector<float> samples = Noise(33 * 17, 9);
  for (float& sample : samples) sample = 100000.0F + 4.0F * sample;
  EXPECT_TRUE(IsAccurate(*MakeImage(33, 17, ColorMode::kValue, samples), 50.0F, 'b'));
}

TEST(AmbientOcclusion, IsAccurateAtTheHighestHeightsOfSinglePrecision) {
  // Rises near 0.6, where a result changes the most with them, between heights just below 256 and just above it.
  for (const double radius : {255.5, 256.5}) {
    for (const double relief : {0.002, 0.005, 0.02}) {
      const auto image = MakeImage(41, 23, ColorMode::kValue, Noise(41 * 23, 31));
      float* samples = image->GetArray();
      for (std::size_t i = 0; i < image->GetNumSamples(); ++i) {
        samples[i] = static_cast<float>(1.0 - relief * static_cast<double>(samples[i]));
      }
      EXPECT_TRUE(IsAccurate(*image, static_cast<float>(radius), 'p')) << radius << " " << relief;
    }
  }
}

TEST(AmbientOcclusion, TakesNanForTheHeightZero) {
  std::vector<float> samples = Noise(25 * 13, 4);
  for (std::size_t i = 0; i < samples.size(); i += 7) samples[i] = kNan;
  auto image = MakeImage(25, 13, ColorMode::kValue, samples);
  image->SetValueLowHigh(-1.0F, 1.0F);
  EXPECT_TRUE(IsAccurate(*image, 8.0F, 'p'));
  const Image all(9, 9, ColorMode::kValue, &kNan);
  EXPECT_TRUE(SameSamples(std::vector<float>(81, 1.0F), GetSamples(*Occlude(all, 8.0F, 'p'))));
}

TEST(AmbientOcclusion, FollowsArithmeticAtInfiniteHeights) {
  for (const float odd : {kInfinity, -kInfinity}) {
    std::vector<float> samples = Noise(31 * 23, 6);
    samples[11 * 31 + 15] = odd;
    samples[4 * 31 + 3] = kInfinity;
    const auto image = MakeImage(31, 23, ColorMode::kValue, samples);
    EXPECT_TRUE(IsAccurate(*image, 9.0F, 'p')) << odd;
    for (const float sample : GetSamples(*Occlude(*image, 9.0F, 'p'))) {
      EXPECT_TRUE(sample >= 0.0F && sample <= 1.0F) << sample;
    }
  }
}

TEST(AmbientOcclusion, ReadsOtherModesAsValues) {
  for (const unsigned mode : {ColorMode::kColor, ColorMode::kSigned, ColorMode::kPair}) {
    const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(mode));
    auto image = MakeImage(19, 11, mode, Noise(19 * 11 * channels, 8));
    image->SetPin(7, -5);
    image->SetPivot(0.25F, 0.75F);
    image->SetValueLowHigh(-2.0F, 3.0F);
    EXPECT_TRUE(IsAccurate(*image, 6.0F, 'p')) << mode;
  }
}

TEST(AmbientOcclusion, WithoutAStepIsOpen) {
  const auto image = MakeHills(5, 4, 0.5);
  for (const float radius : {0.9F, 0.0F, -3.0F}) {
    EXPECT_TRUE(SameSamples(std::vector<float>(20, 1.0F), GetSamples(*Occlude(*image, radius, 'p'))));
  }
}

TEST(AmbientOcclusion, JoinsItsBandsWithoutSeams) {
  // More pixels than one band has, made of a small field that repeats itself, which is the reference.
  const auto tile = MakeHills(4, 64, 0.3);
  auto image = ScEng::MakeRef<Image>(4096, 1280, ColorMode::kValue, nullptr);
  float* samples = image->GetArray();
  for (std::size_t y = 0; y < 1280; ++y) {
    for (std::size_t x = 0; x < 4096; ++x) samples[y * 4096 + x] = tile->GetConstArray()[(y % 64) * 4 + x % 4];
  }
  const auto result = Occlude(*image, 3.0F, 'p');
  const std::vector<double> expected = Reference(*tile, 3.0F, 'p');
  double worst = 0.0;
  for (std::size_t y = 0; y < 1280; ++y) {
    for (std::size_t x = 0; x < 4096; ++x) {
      const double actual = static_cast<double>(result->GetConstArray()[y * 4096 + x]);
      worst = std::max(worst, std::abs(actual - expected[(y % 64) * 4 + x % 4]));
    }
  }
  EXPECT_LE(worst, kAccuracy);
}

TEST(AmbientOcclusion, IsTheSameFromSeveralThreadsAtOnce) {
  const auto image = MakeHills(64, 64, 0.1);
  const std::vector<float> expected = GetSamples(*Occlude(*image, 20.0F, 'p'));
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int run = 0; run < 3; ++run) {
        EXPECT_TRUE(SameSamples(expected, GetSamples(*Occlude(*image, 20.0F, 'p'))));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

/// The chosen device, as if it had so many lanes.
std::shared_ptr<Gpu::Device> OpenDevice(unsigned lanes, bool is_processor) {
  static Gpu::OpenClApi api;
  Status status;
  if (Gpu::LoadOpenCl("libOpenCL.so.1", api, status) == nullptr) return nullptr;
  std::vector<Gpu::DeviceRecord> devices = Gpu::ListDevices(api);
  const int chosen = Gpu::ChooseDevice(devices, "", "", status);
  if (chosen < 0) return nullptr;
  Gpu::DeviceRecord& record = devices[static_cast<std::size_t>(chosen)];
  record.lanes = lanes;
  record.is_processor = is_processor;
  return Gpu::Device::Open(api, record, status);
}

TEST(AmbientOcclusion, IsAccurateOnOneLaneAsOnAGpuAndOnAnyOfAProcessor) {
  // A largest height above 256 asks for double precision.
  struct Case {
    unsigned lanes;
    bool is_processor;
    double largest_height;
  };
  const auto image = MakeHills(37, 29, 0.2);
  Gpu::HeightField field;
  field.values = image->GetConstArray();
  field.size_x = 37;
  field.size_y = 29;
  field.scale = 15.0;
  field.border = ScEng::Border::kWrap;
  const std::vector<double> expected = Reference(*image, 15.0F, 'p');
  for (const Case& tried :
       {Case{1, false, 15.0}, {1, true, 15.0}, {2, true, 15.0}, {4, true, 15.0}, {8, true, 15.0}, {4, true, 1000.0}}) {
    const auto device = OpenDevice(tried.lanes, tried.is_processor);
    ASSERT_TRUE(device);
    std::vector<float> result(image->GetNumSamples());
    const Status status = Gpu::RunAmbientOcclusion(*device, field, 15, tried.largest_height, result.data());
    EXPECT_EQ(status.GetMessage(), "");
    for (std::size_t i = 0; i < result.size(); ++i) {
      ASSERT_NEAR(static_cast<double>(result[i]), expected[i], kAccuracy) << tried.lanes << " lanes, pixel " << i;
    }
  }
}

TEST(AmbientOcclusion, RefusesWhatMakesNoSense) {
  const auto image = MakeHills(4, 4, 0.1);
  const auto refuse = [&](const Image* input, float radius, char border, const char* part) {
    Status status;
    EXPECT_EQ(GpuEngine::Get()->ExecuteAmbientOcclusion(input, radius, border, status), nullptr);
    EXPECT_EQ(status.GetCode(), 2U);
    EXPECT_TRUE(Contains(status.GetMessage(), part));
  };
  refuse(nullptr, 3.0F, 'p', "no image");
  refuse(image.Get(), kNan, 'p', "radius");
  refuse(image.Get(), kInfinity, 'b', "the radius is inf");
  // More steps than tables can hold.
  refuse(image.Get(), 1e30F, 'p', "not enough memory");
  refuse(image.Get(), 3.0F, 'x', "border");
}

TEST(AmbientOcclusion, IsAccurateWhateverTheImage) {
  rc::check([] {
    const int x = *rc::gen::inRange(1, 24);
    const int y = *rc::gen::inRange(1, 24);
    const float radius = static_cast<float>(*rc::gen::inRange(4, 80)) / 4.0F;
    const char border = *rc::gen::element('p', 'b');
    const auto seed = *rc::gen::arbitrary<std::uint32_t>();
    auto image = MakeImage(x, y, ColorMode::kValue, Noise(static_cast<std::size_t>(x * y), seed));
    image->SetValueLowHigh(static_cast<float>(*rc::gen::inRange(-3, 1)), static_cast<float>(*rc::gen::inRange(1, 9)));
    RC_ASSERT(IsAccurate(*image, radius, border));
  });
}

TEST(GpuEngine, IsOne) { EXPECT_EQ(GpuEngine::Get(), GpuEngine::Get()); }

TEST(GpuEngine, ComputesOnTheDeviceThatIsSelected) {
  Status status;
  const std::vector<GpuDevice> devices = GpuEngine::Get()->GetDevices(status);
  ASSERT_FALSE(devices.empty());
  EXPECT_EQ(std::count_if(devices.begin(), devices.end(), [](const GpuDevice& device) { return device.is_chosen; }), 1);
  const std::size_t last = devices.size() - 1;
  EXPECT_FALSE(GpuEngine::Get()->SelectDevice(std::to_string(last)).IsError());
  EXPECT_TRUE(GpuEngine::Get()->GetDevices(status)[last].is_chosen);
  EXPECT_TRUE(Contains(GpuEngine::Get()->SelectDevice("zebra").GetMessage(), devices[0].name));
  EXPECT_TRUE(GpuEngine::Get()->GetDevices(status)[last].is_chosen) << "a wrong word changes nothing";
  EXPECT_FALSE(GpuEngine::Get()->SelectDevice("").IsError());
}

}  // namespace
}  // namespace Testing
