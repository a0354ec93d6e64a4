// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Host/Files/ImageFile.h"
#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::Box2I;
using ScEng::Status;
using Testing::GetSamples;
using Testing::MakeImage;
using Testing::MaxSizeScope;
using Testing::TemporaryFolder;

constexpr int kSizeX = 7;
constexpr int kSizeY = 5;

/// Sample 0 of pixel (x, y) is 10 y + x.
ImagePtr MakeNumbered() {
  std::vector<float> samples;
  for (int y = 0; y < kSizeY; ++y) {
    for (int x = 0; x < kSizeX; ++x) samples.push_back(static_cast<float>(10 * y + x));
  }
  auto image = MakeImage(kSizeX, kSizeY, ColorMode::kValue, samples);
  image->SetPin(100, 200);
  image->SetPivot(1.0F, 0.0F);
  image->SetValueLowHigh(0.0F, 50.0F);
  return image;
}

class ReadRegion : public testing::Test {
 protected:
  std::filesystem::path Write(const std::string& name, bool stores_values = false) {
    std::vector<std::string> notes;
    const std::filesystem::path file = folder_ / name;
    ScEng::WriteOptions options;
    if (stores_values) options.type = ScEng::SampleType::kUint8;
    options.stores_values = stores_values;
    const Status status = ScEng::WriteImageFile(*MakeNumbered(), file, options, notes);
    EXPECT_FALSE(status.IsError()) << status.GetMessage();
    return file;
  }

  static ImagePtr Read(const std::filesystem::path& file, std::optional<Box2I> region, std::string* problem = nullptr) {
    Status status;
    std::vector<std::string> notes;
    auto image = ScEng::ReadImageFile(file, {.scale = ScEng::SampleScale::kStored, .region = region}, status, notes);
    if (problem != nullptr) *problem = status.GetMessage();
    return image;
  }

  TemporaryFolder folder_;
};

TEST_F(ReadRegion, GivesThePixels) {
  for (const char* name : {"a.exr", "a.tif"}) {
    const ImagePtr image = Read(Write(name), Box2I{2, 1, 5, 3});
    ASSERT_NE(image, nullptr) << name;
    EXPECT_EQ(image->GetSizeX(), 3);
    EXPECT_EQ(image->GetSizeY(), 2);
    EXPECT_EQ(GetSamples(*image), (std::vector<float>{12, 13, 14, 22, 23, 24})) << name;
  }
}

TEST_F(ReadRegion, LiesWhereItsPixelsLieInTheWhole) {
  // The whole one reaches from 93 to 100 and from 200 to 205.
  const ImagePtr image = Read(Write("a.exr"), Box2I{2, 1, 5, 3});
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->GetBox(), (Box2I{95, 201, 98, 203}));
  EXPECT_EQ(image->GetValueHigh(), 50.0F);
}

TEST_F(ReadRegion, OfAllIsTheWhole) {
  const auto file = Write("a.exr");
  const ImagePtr whole = Read(file, std::nullopt);
  const ImagePtr region = Read(file, Box2I{0, 0, kSizeX, kSizeY});
  ASSERT_NE(region, nullptr);
  EXPECT_EQ(GetSamples(*region), GetSamples(*whole));
  EXPECT_EQ(region->GetPinX(), 100);
  EXPECT_EQ(region->GetPivotX(), 1.0F);
}

TEST_F(ReadRegion, IsOfTheUprightPicture) {
  // A tag alone, so that the samples stay as they are.
  const auto file = Write("a.tif", true);
  for (int orientation = 1; orientation <= 8; ++orientation) {
    ASSERT_EQ(std::system(("exiftool -q -q -overwrite_original -n -IFD0:Orientation=" + std::to_string(orientation) +
                           " " + file.string())
                              .c_str()),
              0);
    const ImagePtr whole = Read(file, std::nullopt);
    ASSERT_NE(whole, nullptr);
    const Box2I region{1, 2, 4, 5};
    const ImagePtr part = Read(file, region);
    ASSERT_NE(part, nullptr) << orientation;
    for (int y = 0; y < 3; ++y) {
      for (int x = 0; x < 3; ++x) {
        EXPECT_EQ(part->GetConstArray()[y * 3 + x], whole->GetConstArray()[(y + 2) * whole->GetSizeX() + x + 1])
            << orientation << ": " << x << ", " << y;
      }
    }
  }
}

TEST_F(ReadRegion, NeedNotFitAsAWholeIntoTheLargestImage) {
  const auto file = Write("a.exr");
  const MaxSizeScope size(4, 4);
  EXPECT_EQ(Read(file, std::nullopt), nullptr);
  EXPECT_NE(Read(file, Box2I{3, 0, 7, 4}), nullptr);
  EXPECT_EQ(Read(file, Box2I{0, 0, 5, 1}), nullptr);
}

TEST_F(ReadRegion, OutsideOfItIsAnError) {
  const auto file = Write("a.exr");
  for (const Box2I& region : {Box2I{-1, 0, 2, 2}, Box2I{0, 0, 8, 2}, Box2I{0, 4, 2, 6}, Box2I{3, 3, 3, 4}}) {
    std::string problem;
    EXPECT_EQ(Read(file, region, &problem), nullptr);
    EXPECT_TRUE(Testing::Contains(problem, "it has no such region: it is 7 x 5 pixels")) << problem;
  }
}

}  // namespace
