// SPDX-License-Identifier: Apache-2.0
// Every format in every type that it is written in, in every mode that it holds: what is read is what was written.

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "Host/Files/ImageFile.h"
#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::FormatReport;
using ScEng::ReadMode;
using ScEng::Status;
using Testing::kInfinity;
using Testing::kLargest;
using Testing::kNan;
using Testing::kSmallest;
using Testing::MakeImage;
using Testing::TemporaryFolder;

constexpr int kSizeX = 6;
constexpr int kSizeY = 4;

struct Case {
  FormatReport format;
  std::string type;
};

void PrintTo(const Case& round, std::ostream* stream) { *stream << round.format.title << " in " << round.type; }

/// Numbers that the type holds exactly, the extreme ones first.
std::vector<float> NumbersOf(const Case& round) {
  if (round.type == "uint8") return {0.0F, 1.0F, 1.0F / 255.0F, 254.0F / 255.0F, 77.0F / 255.0F, 200.0F / 255.0F};
  if (round.type == "uint16") {
    return {0.0F, 1.0F, 1.0F / 65535.0F, 65534.0F / 65535.0F, 257.0F / 65535.0F, 12345.0F / 65535.0F};
  }
  if (round.type == "int16") return {-32768.0F, 32767.0F, 0.0F, -1.0F, 1.0F, 12345.0F};
  // A shared exponent leaves eight bits for a number, and none for its sign.
  if (round.format.title == "Radiance HDR") return {0.0F, 1.0F, 0.5F, 1.5F, 1.0F / 128.0F, 0.25F};
  std::vector<float> numbers = {0.0F, -0.0F, 1.0F, -2.5F, 65504.0F, 5.9604645e-8F, kNan, kInfinity, -kInfinity, 0.25F};
  if (round.type == "float")
    numbers.insert(numbers.end(), {kLargest, -kLargest, kSmallest, 1e-40F, 0.1F, -1.0F / 3.0F});
  return numbers;
}

ImagePtr MakeImageOf(const Case& round, unsigned mode, bool has_opacity) {
  const std::vector<float> numbers = NumbersOf(round);
  const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(mode));
  std::vector<float> samples;
  for (std::size_t i = 0; i < kSizeX * kSizeY * channels; ++i) {
    const bool is_opacity = channels == 4 && i % 4 == 3;
    samples.push_back(is_opacity && !has_opacity ? 1.0F : numbers[(i + i / numbers.size()) % numbers.size()]);
  }
  // Colour that a format stores multiplied is exact where opacity is a power of two, and where it is 0 there is none.
  if (has_opacity && mode == ColorMode::kColor && round.format.title == "OpenEXR") {
    for (std::size_t i = 0; i < samples.size(); i += 4) {
      samples[i + 3] = i % 8 == 0 ? 1.0F : 0.5F;
      for (std::size_t c = i; c < i + 3 && i % 8 != 0; ++c) samples[c] = c % 2 == 0 ? 1.5F : -8.0F;
    }
  }
  auto image = MakeImage(kSizeX, kSizeY, mode, samples);
  image->SetValueLowHigh(-3.0F, 7.5F);
  image->SetPin(5, -9);
  auto metadata = std::make_shared<ScEng::ImageMetadata>();
  metadata->had_opacity = has_opacity;
  if (round.format.title == "GeoTIFF and COG") {
    metadata->georeference = ScEng::Georeference{};
    metadata->georeference->transform = {1000.0, 10.0, 0.0, 2000.0, 0.0, -10.0};
  }
  image->SetMetadata(metadata);
  return image;
}

bool AreSameNumbers(float a, float b) { return (std::isnan(a) && std::isnan(b)) || Testing::AreSame(a, b); }

class RoundTrip : public testing::TestWithParam<Case> {
 protected:
  void Check(unsigned mode, bool has_opacity, ReadMode asked) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder / ("a" + GetParam().format.endings.front());
    const ImagePtr image = MakeImageOf(GetParam(), mode, has_opacity);
    std::vector<std::string> notes;
    const Status written = ScEng::WriteImageFile(*image, file, {.type = ScEng::FindSampleType(GetParam().type)}, notes);
    ASSERT_FALSE(written.IsError()) << written.GetMessage();
    Status status;
    const ImagePtr read = ScEng::ReadImageFile(file, {.mode = asked}, status, notes);
    ASSERT_NE(read, nullptr) << status.GetMessage();
    ASSERT_EQ(read->GetColorMode(), mode);
    ASSERT_EQ(read->GetNumSamples(), image->GetNumSamples());
    for (std::size_t i = 0; i < image->GetNumSamples(); ++i) {
      ASSERT_TRUE(AreSameNumbers(read->GetConstArray()[i], image->GetConstArray()[i]))
          << "sample " << i << " of mode " << mode << ": " << image->GetConstArray()[i] << " is read as "
          << read->GetConstArray()[i];
    }
  }

  [[nodiscard]] bool Holds(const std::string& metadata) const {
    const auto& held = GetParam().format.metadata;
    return std::find(held.begin(), held.end(), metadata) != held.end();
  }
};

TEST_P(RoundTrip, KeepsEveryNumberInEveryMode) {
  const FormatReport& format = GetParam().format;
  // These two store colour only, and three times the same number makes a gray pixel.
  if (format.title != "Radiance HDR" && format.title != "WebP") Check(ColorMode::kValue, false, ReadMode::kAuto);
  if (format.channels == 1) return;
  Check(ColorMode::kColor, false, ReadMode::kColor);
  Check(ColorMode::kSigned, false, ReadMode::kSigned);
  if (format.has_opacity) {
    Check(ColorMode::kColor, true, ReadMode::kColor);
    Check(ColorMode::kSigned, true, ReadMode::kSigned);
  }
  // Where a mode is stored, it need not be asked for; elsewhere two channels are grey and opacity.
  if (!Holds("attributes")) return;
  Check(ColorMode::kSigned, false, ReadMode::kAuto);
  Check(ColorMode::kPair, false, ReadMode::kAuto);
}

TEST(RoundTripOfAValue, IsGrayInFormatsOfColorAlone) {
  const TemporaryFolder folder;
  for (const char* name : {"a.hdr", "a.webp"}) {
    std::vector<std::string> notes;
    ASSERT_FALSE(
        ScEng::WriteImageFile(*MakeImage(2, 1, ColorMode::kValue, {0.0F, 1.0F}), folder / name, {}, notes).IsError());
    Status status;
    const ImagePtr read = ScEng::ReadImageFile(folder / name, {}, status, notes);
    ASSERT_NE(read, nullptr) << status.GetMessage();
    EXPECT_EQ(Testing::GetSamples(*read), (std::vector<float>{0, 0, 0, 1, 1, 1, 1, 1})) << name;
  }
}

std::vector<Case> AllCases() {
  std::vector<Case> cases;
  for (const FormatReport& format : ScEng::ListFormats()) {
    // Packs with loss.
    if (!format.writes || format.title == "JPEG") continue;
    for (const std::string& type : format.types) cases.push_back({format, type});
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Formats, RoundTrip, testing::ValuesIn(AllCases()));

}  // namespace
