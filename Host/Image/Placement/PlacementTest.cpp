// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Placement.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "Host/Image/ComputeValue.h"
#include "Host/Image/ImageOp.h"
#include "Host/Image/Paste.h"
#include "Tests/Support/HostTesting.h"

namespace Testing {
namespace {

using ScEng::Box2I;

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();

class Addition : public ValueOperation {
 public:
  float Compute(float first, float second) override { return first + second; }
  float Compute(float value) override { return value + 1.0F; }
};

TEST(Placement, LikeAnotherImageTakesItsPinAndPivotAlone) {
  const ImagePtr like = MakeMarked(ColorMode::kColor);
  Image result(5, 4, ColorMode::kValue, nullptr);
  ScEng::PlaceLike(*like, result);
  EXPECT_EQ(result.GetPinX(), 7);
  EXPECT_EQ(result.GetPinY(), -5);
  EXPECT_EQ(result.GetPivotX(), 0.25F);
  EXPECT_EQ(result.GetPivotY(), 0.75F);
  EXPECT_EQ(result.GetSizeX(), 5);
  EXPECT_EQ(result.GetValueHigh(), 1.0F);
  EXPECT_EQ(result.GetOutsideValue(), 0.0F);
}

TEST(Placement, OverABoxKeepsThePinAndCoversTheBox) {
  Image pinned(1, 1, ColorMode::kSigned, nullptr);
  pinned.SetPin(12, -4);
  const Box2I box{10, -5, 18, 3};
  const ImageHeader header = ScEng::PlaceOver(box, pinned, ColorMode::kColor);
  EXPECT_EQ(header.size_x, 8);
  EXPECT_EQ(header.size_y, 8);
  EXPECT_EQ(header.color_mode, ColorMode::kColor);
  EXPECT_EQ(header.pin_x, 12);
  EXPECT_EQ(header.pin_y, -4);
  EXPECT_EQ(header.pivot_x, 0.25F);
  EXPECT_EQ(header.pivot_y, 0.125F);
  EXPECT_EQ(header.GetBox(), box);
}

TEST(Placement, OverABoxWiderThanAnyImageIsRefusedByTheImage) {
  const Image pinned(1, 1, ColorMode::kValue, nullptr);
  const ImageHeader header =
      ScEng::PlaceOver({-(std::int64_t{1} << 40), 0, std::int64_t{1} << 40, 1}, pinned, ColorMode::kValue);
  EXPECT_EQ(header.size_x, kMost);
  EXPECT_THROW(Image(header, nullptr), std::length_error);
}

TEST(Placement, AtACornerBeyondThePinsRangeIsMadeUpByThePivot) {
  const ImageHeader plain = ScEng::PlaceAtCorner({-7, 21, 30, 26}, ColorMode::kValue);
  EXPECT_EQ(plain.pin_x, -7);
  EXPECT_EQ(plain.pin_y, 21);
  EXPECT_EQ(plain.pivot_x, 0.0F);
  EXPECT_EQ(plain.pivot_y, 0.0F);

  for (const std::int64_t beyond : {1, 2, 3, 5, 250, 32768}) {
    for (const std::int64_t size : {1, 3, 7, 510, 32768}) {
      const Box2I box{kLeast - beyond, kMost + beyond, kLeast - beyond + size, kMost + beyond + size};
      const ImageHeader header = ScEng::PlaceAtCorner(box, ColorMode::kValue);
      EXPECT_EQ(header.pin_x, kLeast);
      EXPECT_EQ(header.pin_y, kMost);
      EXPECT_EQ(header.GetBox(), box) << beyond << " " << size;
    }
  }
}

TEST(Placement, AtACornerFarBeyondThePinsRangeIsElsewhere) {
  const std::int64_t far = kMost + (std::int64_t{1} << 40);
  const ImageHeader header = ScEng::PlaceAtCorner({far, 0, far + 1, 1}, ColorMode::kValue);
  EXPECT_EQ(header.GetBox(), (Box2I{kMost, 0, std::int64_t{kMost} + 1, 1}));
}

TEST(Placement, OfABoxIsNotBoundTo32Bits) {
  // 2^15 x 2^20 pixels away from the pin.
  Image image(32768, 1, ColorMode::kValue, nullptr);
  image.SetPin(kLeast, 0);
  image.SetPivot(0x1p20F, 0.0F);
  EXPECT_EQ(image.GetBox().left, std::int64_t{kLeast} - 34359738368);
  EXPECT_EQ(image.GetBox().Width(), 32768);
  image.SetPivot(-0x1p20F, 0.0F);
  EXPECT_EQ(image.GetBox().left, std::int64_t{kLeast} + 34359738368);
  // Where no number of 64 bits holds the place, boxes still have a width that does.
  image.SetPivot(-std::numeric_limits<float>::max(), 0.0F);
  const Box2I right = image.GetBox();
  image.SetPivot(std::numeric_limits<float>::max(), 0.0F);
  EXPECT_GT(ScEng::Union(image.GetBox(), right).Width(), std::int64_t{1} << 60);
}

TEST(PlacementAtTheEnds, PastesAroundAnImage) {
  for (const int pin : {kLeast, kMost}) {
    const ImagePtr image = MakeImage(2, 1, ColorMode::kValue, {3.0F, 4.0F});
    image->SetPin(pin, pin);
    image->SetOutsideValue(0.5F);
    Box2I box = image->GetBox();
    box = {box.left - 1, box.top, box.right + 1, box.bottom};
    const ImagePtr around(Paste(image.Get(), box, static_cast<int>(ColorMode::kValue)));
    ASSERT_TRUE(around);
    EXPECT_TRUE(HoldsSamples(around.Get(), {0.5F, 3.0F, 4.0F, 0.5F}));
    EXPECT_EQ(around->GetBox(), box);
  }
}

TEST(PlacementAtTheEnds, ComputesListsOfImages) {
  for (const int pin : {kLeast, kMost}) {
    const ImagePtr first = MakeImage(2, 1, ColorMode::kValue, {3.0F, 4.0F});
    first->SetPin(pin, 0);
    const ImagePtr second = MakeImage(2, 1, ColorMode::kValue, {10.0F, 20.0F});
    second->SetPin(pin, 0);
    // One pixel further out than any pin.
    second->SetPivot(pin < 0 ? 0.5F : -0.5F, 0.0F);
    Addition operation;
    const ImagePtr sum(ComputeValue({first.Get(), second.Get()}, &operation));
    ASSERT_TRUE(sum);
    EXPECT_EQ(sum->GetBox(), ScEng::Union(first->GetBox(), second->GetBox()));
    EXPECT_TRUE(HoldsSamples(
        sum.Get(), pin < 0 ? std::vector<float>{10.0F, 23.0F, 4.0F} : std::vector<float>{3.0F, 14.0F, 20.0F}));
  }
}

TEST(PlacementAtTheEnds, FillsBoxes) {
  const float zero = 0.0F;
  const float one = 1.0F;
  Image image(3, 1, ColorMode::kValue, &zero);
  image.SetPin(kMost, 0);
  ImageOp::FillBox(image, {std::int64_t{kMost} + 1, 0, std::int64_t{kMost} + 2, 1}, &one);
  EXPECT_TRUE(HoldsSamples(&image, {0.0F, 1.0F, 0.0F}));
}

}  // namespace
}  // namespace Testing
