// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "Host/Image/Image.h"
#include "Tests/Support/Numbers.h"

/// Small images, their samples, and the limit of sizes.
namespace Testing {

inline std::vector<float> GetSamples(const Image& image) {
  return {image.GetConstArray(), image.GetConstArray() + image.GetNumSamples()};
}

/// Whether the image is there and holds exactly these samples, by `AreSame`.
inline testing::AssertionResult HoldsSamples(const Image* image, const std::vector<float>& expected) {
  if (image == nullptr) return testing::AssertionFailure() << "there is no image";
  return SameSamples(expected, GetSamples(*image));
}

/// An image with given samples, row by row, and a fresh header.
inline ImagePtr MakeImage(int size_x, int size_y, unsigned color_mode, const std::vector<float>& samples) {
  auto image = ScEng::MakeRef<Image>(size_x, size_y, color_mode, nullptr);
  EXPECT_EQ(image->GetNumSamples(), samples.size());
  std::copy_n(samples.begin(), std::min(image->GetNumSamples(), samples.size()), image->GetArray());
  return image;
}

/// One row of the value mode.
inline ImagePtr MakeRow(const std::vector<float>& values) {
  return MakeImage(static_cast<int>(values.size()), 1, ColorMode::kValue, values);
}

/// One pixel of the colour mode for each four numbers.
inline ImagePtr MakeColors(const std::vector<float>& samples) {
  return MakeImage(static_cast<int>(samples.size() / 4), 1, ColorMode::kColor, samples);
}

/// An image whose header differs from a fresh one in every entry, for tests that ask what is kept.
inline ImagePtr MakeMarked(unsigned color_mode) {
  const int channels = ColorMode::GetNumChannels(color_mode);
  std::vector<float> samples;
  for (int i = 0; i < 6 * channels; ++i) samples.push_back(0.25F * static_cast<float>(i) - 1.0F);
  ImagePtr image = MakeImage(3, 2, color_mode, samples);
  image->SetPin(7, -5);
  image->SetPivot(0.25F, 0.75F);
  image->SetValueLowHigh(-2.0F, 6.0F);
  image->SetOutsideValue(0.5F);
  return image;
}

/// Whether `image` is another image with the same samples and the same header.
inline testing::AssertionResult IsCopyOf(const Image* image, const Image& original) {
  if (image == &original) return testing::AssertionFailure() << "it is the original itself";
  const testing::AssertionResult same = HoldsSamples(image, GetSamples(original));
  if (!same) return same;
  const bool same_header =
      image->GetSizeX() == original.GetSizeX() && image->GetSizeY() == original.GetSizeY() &&
      image->GetColorMode() == original.GetColorMode() && image->GetPinX() == original.GetPinX() &&
      image->GetPinY() == original.GetPinY() && image->GetPivotX() == original.GetPivotX() &&
      image->GetPivotY() == original.GetPivotY() && image->GetValueLow() == original.GetValueLow() &&
      image->GetValueHigh() == original.GetValueHigh() && image->GetOutsideValue() == original.GetOutsideValue();
  return same_header ? testing::AssertionSuccess() : testing::AssertionFailure() << "its header is another one";
}

/// Sets the largest size of images for one scope.
class MaxSizeScope {
 public:
  MaxSizeScope(int x, int y) : x_(Image::GetMaxSizeX()), y_(Image::GetMaxSizeY()) { Image::SetMaxSize(x, y); }
  ~MaxSizeScope() { Image::SetMaxSize(x_, y_); }
  MaxSizeScope(const MaxSizeScope&) = delete;
  MaxSizeScope& operator=(const MaxSizeScope&) = delete;

 private:
  int x_;
  int y_;
};

}  // namespace Testing
