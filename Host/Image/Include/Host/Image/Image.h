// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <utility>

#include "Host/Image/Api.h"
#include "Host/Image/ColorMode.h"
#include "Host/Image/SampleRange.h"
#include "Host/Math/Geometry.h"
#include "Host/Util/RefCounter.h"

namespace ScEng {
struct ImageMetadata;
}

/// Everything about an image except its samples.
struct ImageHeader {
  int size_x = 0;
  int size_y = 0;
  unsigned color_mode = ColorMode::kValue;
  /// Document position of the point of the image that `pivot` names, in pixels.
  int pin_x = 0;
  int pin_y = 0;
  /// That point, as a fraction of the image's size: (0, 0) is the top left corner, (1, 1) the bottom right one.
  float pivot_x = 0.0F;
  float pivot_y = 0.0F;
  /// The range that the samples are meant to span (what is shown as black and as white); not a limit.
  float value_low = 0.0F;
  float value_high = 1.0F;
  /// What every channel reads as outside the image's box.
  float outside_value = 0.0F;

  /// The header of a fresh image: pin, pivot and outside value zero, value range (0, 1), or (-1, 1) for the signed
  /// mode.
  HOST_IMAGE_API static ImageHeader Fresh(int size_x, int size_y, unsigned color_mode);

  /// Where the image lies: left = pin x - R(size x * pivot x) and so on, the product taken in float and rounded with
  /// halves going down.
  [[nodiscard]] HOST_IMAGE_API ScEng::Box2I GetBox() const;
};

namespace ScEng {
/// Gives the samples of an image back to where they came from: the host's memory for them, unless `release` is set.
struct FreeSamples {
  std::size_t bytes = 0;
  void (*release)(float* samples, std::size_t bytes) noexcept = nullptr;
  HOST_IMAGE_API void operator()(float* samples) const noexcept;
};

/// The owner of samples.
using SampleBuffer = std::unique_ptr<float[], FreeSamples>;
}  // namespace ScEng

/// The host's image: float samples, channels interleaved, rows dense. Where the host allocates them, the first sample is
/// 64-byte aligned; samples of others lie at any address of a float, so nothing that reads an image counts on more.
///
/// Whoever keeps an image holds an `ImagePtr`. Functions that make an image for a node to keep (`ComputeValue`,
/// `EuclideanDistance`, `Paste`, `GpuEngine::ExecuteAmbientOcclusion`) return a pointer without a reference, to be put
/// into one at once; parameters are plain pointers or references, and the images stay the caller's.
///
/// The reference count is the object's first 32 bits; `Image` has no virtual operations. Counting is not atomic: see
/// `RefCounter`. Reading the samples of one image from many threads is fine.
class HOST_IMAGE_API Image : public RefCounter<Image> {
 public:
  /// A fresh image of `size_x` times `size_y` pixels. `fill` points to one float per channel of the mode and fills
  /// every pixel (further numbers are not read); null leaves the samples unset.
  ///
  /// Throws `std::length_error` when a size is negative or above the maximum, `std::bad_alloc` when the samples
  /// cannot be allocated, `std::invalid_argument` for a mode that does not exist.
  Image(int size_x, int size_y, unsigned color_mode, const float* fill);
  /// The same with a given header.
  Image(const ImageHeader& header, const float* fill);
  /// The same with samples that are there already, as many as the header asks for, at any address of a float. Such an
  /// image is for reading: what is written with aligned vectors into an image is one that the host has allocated.
  Image(const ImageHeader& header, ScEng::SampleBuffer samples);
  /// Copies samples and header; the copy starts with no references.
  Image(const Image& image);
  /// The image in another colour mode, by the rules of `ConvertSamples`. Size, pin, pivot and outside value stay;
  /// the value range becomes (0, 1) from colour, (-1, 1) from the signed mode, else it stays.
  Image(const Image& image, unsigned color_mode);
  Image& operator=(const Image&) = delete;
  ~Image();

  [[nodiscard]] const ImageHeader& GetImageHeader() const { return header_; }
  [[nodiscard]] int GetSizeX() const { return header_.size_x; }
  [[nodiscard]] int GetSizeY() const { return header_.size_y; }
  [[nodiscard]] int GetNumChannels() const { return ColorMode::GetNumChannels(header_.color_mode); }
  [[nodiscard]] unsigned GetColorMode() const { return header_.color_mode; }
  [[nodiscard]] std::size_t GetNumSamples() const;

  [[nodiscard]] int GetPinX() const { return header_.pin_x; }
  [[nodiscard]] int GetPinY() const { return header_.pin_y; }
  [[nodiscard]] float GetPivotX() const { return header_.pivot_x; }
  [[nodiscard]] float GetPivotY() const { return header_.pivot_y; }
  [[nodiscard]] float GetValueLow() const { return header_.value_low; }
  [[nodiscard]] float GetValueHigh() const { return header_.value_high; }
  [[nodiscard]] float GetOutsideValue() const { return header_.outside_value; }
  void SetPin(int x, int y);
  void SetPivot(float x, float y);
  void SetValueLow(float low) { header_.value_low = low; }
  void SetValueHigh(float high) { header_.value_high = high; }
  void SetValueLowHigh(float low, float high);
  void SetOutsideValue(float value) { header_.outside_value = value; }

  /// What its file said of the image, or null. Copies and conversions keep it; what evaluates nodes hands it on from
  /// the first input image that has any. Shared, and never changed once it is set.
  [[nodiscard]] const std::shared_ptr<const ScEng::ImageMetadata>& GetMetadata() const { return metadata_; }
  void SetMetadata(std::shared_ptr<const ScEng::ImageMetadata> metadata) { metadata_ = std::move(metadata); }

  /// Where the image lies; see `ImageHeader::GetBox`.
  [[nodiscard]] ScEng::Box2I GetBox() const { return header_.GetBox(); }

  [[nodiscard]] const float* GetConstArray() const { return samples_.get(); }
  /// The samples for writing. What is known of their range is forgotten; write only until the image is handed on.
  [[nodiscard]] float* GetArray();

  /// The lowest and highest sample of all channels (NaN skipped, infinities counted), measured at the first call and
  /// remembered after it. Not to be called from two threads at once on one image.
  [[nodiscard]] ScEng::SampleRange GetSampleRange() const;
  /// What `GetSampleRange` would answer where that is known without a pass over the samples.
  [[nodiscard]] std::optional<ScEng::SampleRange> GetKnownSampleRange() const { return sample_range_; }
  /// Spares the pass of `GetSampleRange` to whoever has measured the samples on the way.
  void RememberSampleRange(const ScEng::SampleRange& range) const { sample_range_ = range; }

  /// Largest size that an image may have, 32768 each unless the host sets it. Set it before images are made.
  [[nodiscard]] static int GetMaxSizeX();
  [[nodiscard]] static int GetMaxSizeY();
  static void SetMaxSize(int x, int y);

 private:
  void Allocate();

  ImageHeader header_;
  ScEng::SampleBuffer samples_;
  mutable std::optional<ScEng::SampleRange> sample_range_;
  std::shared_ptr<const ScEng::ImageMetadata> metadata_;
};

/// The owner of an image: one counted reference.
using ImagePtr = ScEng::RefPtr<Image>;

/// The image in the value mode, sharing nothing with the caller: a converted image, or a copy where the mode is the
/// value mode already. `outside` becomes its outside value. Null for a null image, and where the result would exceed
/// the largest image size or cannot be allocated.
HOST_IMAGE_API ImagePtr ConvertToM(const Image* image, float outside);

namespace ScEng {

/// The one number that a pixel stands for: of a colour ((o * c1 + o * c0) + o * c2) * 0.33333334 in single
/// precision, of a signed pixel channel 2, else channel 0.
inline float ValueOfPixel(const float* pixel, unsigned color_mode) {
  if (color_mode == ColorMode::kColor) {
    const float opacity = pixel[3];
    return ((opacity * pixel[1] + opacity * pixel[0]) + opacity * pixel[2]) * 0.33333334F;
  }
  return color_mode == ColorMode::kSigned ? pixel[2] : pixel[0];
}

/// Converts `pixels` pixels from one mode to another. To the value mode: `ValueOfPixel`. Between the two modes of
/// four channels: the channels as they are. To four channels from fewer: the value three times and opacity 1. To the
/// pair mode: the value and 0.
HOST_IMAGE_API void ConvertSamples(const float* from, unsigned from_mode, float* to, unsigned to_mode,
                                   std::size_t pixels);

}  // namespace ScEng
