// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Image.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>

#include "Host/Image/Oversize.h"
#include "Host/Image/SampleMemory.h"
#include "Host/Util/ParallelReduce.h"
#include "Host/Util/ParallelRows.h"

namespace {

constexpr int kDefaultMaxSize = 32768;
std::atomic<int> max_size_x{kDefaultMaxSize};
std::atomic<int> max_size_y{kDefaultMaxSize};

// Enough samples in one piece that handing it to a thread pays.
constexpr std::size_t kGrain = std::size_t{1} << 16;

void CheckHeader(const ImageHeader& header) {
  if (ColorMode::GetNumChannels(header.color_mode) == 0) {
    throw std::invalid_argument("Image: colour mode " + std::to_string(header.color_mode) + " does not exist.");
  }
  if (header.size_x < 0 || header.size_y < 0 || header.size_x > Image::GetMaxSizeX() ||
      header.size_y > Image::GetMaxSizeY()) {
    throw std::length_error("Image: size " + std::to_string(header.size_x) + " x " + std::to_string(header.size_y) +
                            " is outside 0 x 0 to " + std::to_string(Image::GetMaxSizeX()) + " x " +
                            std::to_string(Image::GetMaxSizeY()) + ".");
  }
}

void FillPixels(float* samples, std::size_t pixels, int channels, const float* fill) {
  const auto stride = static_cast<std::size_t>(channels);
  ScEng::ParallelRows(pixels, kGrain, [&](std::size_t from, std::size_t to) {
    if (stride == 1) {
      std::fill(samples + from, samples + to, *fill);
      return;
    }
    for (std::size_t i = from; i < to; ++i) std::copy_n(fill, stride, samples + i * stride);
  });
}

ImageHeader ConvertHeader(ImageHeader header, unsigned color_mode) {
  if (header.color_mode == ColorMode::kColor) {
    header.value_low = 0.0F;
    header.value_high = 1.0F;
  } else if (header.color_mode == ColorMode::kSigned) {
    header.value_low = -1.0F;
    header.value_high = 1.0F;
  }
  header.color_mode = color_mode;
  return header;
}

}  // namespace

ImageHeader ImageHeader::Fresh(int size_x, int size_y, unsigned color_mode) {
  ImageHeader header;
  header.size_x = size_x;
  header.size_y = size_y;
  header.color_mode = color_mode;
  if (color_mode == ColorMode::kSigned) header.value_low = -1.0F;
  return header;
}

ScEng::Box2I ImageHeader::GetBox() const {
  const auto first_pixel = [](int pin, int size, float pivot) {
    return std::int64_t{pin} - ScEng::RoundPlaceHalfDown(static_cast<float>(size) * pivot);
  };
  ScEng::Box2I box;
  box.left = first_pixel(pin_x, size_x, pivot_x);
  box.top = first_pixel(pin_y, size_y, pivot_y);
  box.right = box.left + size_x;
  box.bottom = box.top + size_y;
  return box;
}

void ScEng::FreeSamples::operator()(float* samples) const noexcept {
  (release != nullptr ? release : ReleaseSamples)(samples, bytes);
}

Image::Image(int size_x, int size_y, unsigned color_mode, const float* fill)
    : Image(ImageHeader::Fresh(size_x, size_y, color_mode), fill) {}

Image::Image(const ImageHeader& header, const float* fill) : header_(header) {
  CheckHeader(header_);
  Allocate();
  if (fill == nullptr) return;
  const auto channels = static_cast<std::size_t>(GetNumChannels());
  FillPixels(samples_.get(), GetNumSamples() / channels, GetNumChannels(), fill);
}

Image::Image(const ImageHeader& header, ScEng::SampleBuffer samples) : header_(header), samples_(std::move(samples)) {
  CheckHeader(header_);
}

Image::Image(const Image& image)
    : RefCounter(image), header_(image.header_), sample_range_(image.sample_range_), metadata_(image.metadata_) {
  Allocate();
  ScEng::ParallelRows(GetNumSamples(), kGrain, [&](std::size_t from, std::size_t to) {
    std::memcpy(samples_.get() + from, image.GetConstArray() + from, (to - from) * sizeof(float));
  });
}

Image::Image(const Image& image, unsigned color_mode)
    : header_(ConvertHeader(image.header_, color_mode)), metadata_(image.metadata_) {
  CheckHeader(header_);
  Allocate();
  const auto from_channels = static_cast<std::size_t>(image.GetNumChannels());
  const auto to_channels = static_cast<std::size_t>(GetNumChannels());
  ScEng::ParallelRows(GetNumSamples() / to_channels, kGrain, [&](std::size_t from, std::size_t to) {
    ScEng::ConvertSamples(image.GetConstArray() + from * from_channels, image.GetColorMode(),
                          samples_.get() + from * to_channels, color_mode, to - from);
  });
}

Image::~Image() = default;

void Image::Allocate() {
  if (GetNumSamples() > std::numeric_limits<std::size_t>::max() / sizeof(float)) throw std::bad_alloc();
  const std::size_t bytes = GetNumSamples() * sizeof(float);
  samples_ = {ScEng::AllocateSamples(bytes), ScEng::FreeSamples{bytes, nullptr}};
}

std::size_t Image::GetNumSamples() const {
  return static_cast<std::size_t>(header_.size_x) * static_cast<std::size_t>(header_.size_y) *
         static_cast<std::size_t>(GetNumChannels());
}

void Image::SetPin(int x, int y) {
  header_.pin_x = x;
  header_.pin_y = y;
}

void Image::SetPivot(float x, float y) {
  header_.pivot_x = x;
  header_.pivot_y = y;
}

void Image::SetValueLowHigh(float low, float high) {
  header_.value_low = low;
  header_.value_high = high;
}

float* Image::GetArray() {
  sample_range_.reset();
  return samples_.get();
}

ScEng::SampleRange Image::GetSampleRange() const {
  if (!sample_range_) {
    sample_range_ = ScEng::ParallelReduce<ScEng::SampleRange>(
        GetNumSamples(), kGrain,
        [&](std::size_t from, std::size_t to) { return ScEng::MeasureRange(samples_.get() + from, to - from); });
  }
  return *sample_range_;
}

int Image::GetMaxSizeX() { return max_size_x; }
int Image::GetMaxSizeY() { return max_size_y; }

void Image::SetMaxSize(int x, int y) {
  max_size_x = x;
  max_size_y = y;
}

ImagePtr ConvertToM(const Image* image, float outside) {
  if (image == nullptr) return nullptr;
  ImagePtr converted(ScEng::NullIfOversize([&] { return new Image(*image, ColorMode::kValue); }));
  if (converted) converted->SetOutsideValue(outside);
  return converted;
}

namespace ScEng {

void ConvertSamples(const float* from, unsigned from_mode, float* to, unsigned to_mode, std::size_t pixels) {
  const auto from_channels = static_cast<std::size_t>(ColorMode::GetNumChannels(from_mode));
  const auto to_channels = static_cast<std::size_t>(ColorMode::GetNumChannels(to_mode));
  const bool plain = from_mode == to_mode || (from_channels == 4 && to_channels == 4);
  if (plain) {
    std::memcpy(to, from, pixels * from_channels * sizeof(float));
    return;
  }
  for (std::size_t i = 0; i < pixels; ++i) {
    const float value = ValueOfPixel(from + i * from_channels, from_mode);
    float* pixel = to + i * to_channels;
    pixel[0] = value;
    if (to_channels == 1) continue;
    pixel[1] = to_channels == 2 ? 0.0F : value;
    if (to_channels == 2) continue;
    pixel[2] = value;
    pixel[3] = 1.0F;
  }
}

}  // namespace ScEng
