// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Filter.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>

#include "Host/Image/Blur/GaussianBlur.h"
#include "Host/Util/ParallelRows.h"

namespace {

// Enough samples in one piece that handing it to a thread pays.
constexpr std::size_t kGrain = std::size_t{1} << 16;

bool SameShape(const Image& a, const Image& b) {
  return a.GetSizeX() == b.GetSizeX() && a.GetSizeY() == b.GetSizeY() && a.GetColorMode() == b.GetColorMode();
}

std::string Describe(const Image& image) {
  return std::to_string(image.GetSizeX()) + " x " + std::to_string(image.GetSizeY()) + " " +
         ColorMode::GetName(image.GetColorMode());
}

/// NaN counts as 0.
float Clamp(float mask) { return mask > 0.0F ? (mask < 1.0F ? mask : 1.0F) : 0.0F; }

float Blend(float sample, float value, float mask) {
  const float blended = sample + (value - sample) * mask;
  return mask == 1.0F ? value : blended;
}

template <std::size_t kChannels>
void FillPixels(float* samples, std::size_t pixels, const float* value) {
  for (std::size_t i = 0; i < pixels; ++i) {
    for (std::size_t c = 0; c < kChannels; ++c) samples[i * kChannels + c] = value[c];
  }
}

template <std::size_t kChannels>
void BlendPixels(float* samples, const float* strengths, std::size_t pixels, const float* value) {
  for (std::size_t i = 0; i < pixels; ++i) {
    const float m = Clamp(strengths[i]);
    for (std::size_t c = 0; c < kChannels; ++c) {
      samples[i * kChannels + c] = Blend(samples[i * kChannels + c], value[c], m);
    }
  }
}

template <std::size_t kChannels>
void FillImage(Image& image, const Image* mask, const float* value) {
  float fill[kChannels];
  std::copy_n(value, kChannels, fill);
  float* samples = image.GetArray();
  const std::size_t pixels = image.GetNumSamples() / kChannels;
  ScEng::ParallelRows(pixels, kGrain / kChannels, [&](std::size_t from, std::size_t to) {
    if (mask == nullptr) {
      FillPixels<kChannels>(samples + from * kChannels, to - from, fill);
      return;
    }
    constexpr std::size_t kRun = 1024;
    alignas(64) float strengths[kRun];
    const auto mask_channels = static_cast<std::size_t>(mask->GetNumChannels());
    for (std::size_t i = from; i < to; i += kRun) {
      const std::size_t count = std::min(kRun, to - i);
      ScEng::ConvertSamples(mask->GetConstArray() + i * mask_channels, mask->GetColorMode(), strengths,
                            ColorMode::kValue, count);
      BlendPixels<kChannels>(samples + i * kChannels, strengths, count, fill);
    }
  });
}

}  // namespace

void Filter::ApplyGaussianBlur(const Image& in, Image& out, float sigma_x, float sigma_y, char mode) {
  if (&in == &out || !SameShape(in, out)) {
    throw std::invalid_argument("ApplyGaussianBlur: the output, " + Describe(out) +
                                ", must be another image of the input's size and mode, " + Describe(in) + ".");
  }
  if (sigma_x > 0.0F || sigma_y > 0.0F) {
    ScEng::GaussianBlur(in, out, sigma_x, sigma_y, ScEng::BorderOf(mode == 'p'));
    out.SetValueLowHigh(in.GetValueLow(), in.GetValueHigh());
  } else {
    Copy(&in, &out);
  }
}

void Filter::Fill(Image& image, const Image* mask, const float* value, int) {
  if (mask != nullptr && (mask->GetSizeX() != image.GetSizeX() || mask->GetSizeY() != image.GetSizeY())) {
    throw std::invalid_argument("Fill: the mask, " + Describe(*mask) + ", must have the size of the image, " +
                                Describe(image) + ".");
  }
  switch (image.GetNumChannels()) {
    case 1: FillImage<1>(image, mask, value); break;
    case 2: FillImage<2>(image, mask, value); break;
    default: FillImage<4>(image, mask, value); break;
  }
}

bool Filter::Copy(const Image* from, Image* to) {
  if (from == nullptr || to == nullptr || !SameShape(*from, *to)) return false;
  if (from == to) return true;
  float* samples = to->GetArray();
  ScEng::ParallelRows(from->GetNumSamples(), kGrain, [&](std::size_t begin, std::size_t end) {
    std::memcpy(samples + begin, from->GetConstArray() + begin, (end - begin) * sizeof(float));
  });
  to->SetValueLowHigh(from->GetValueLow(), from->GetValueHigh());
  if (const auto known = from->GetKnownSampleRange()) to->RememberSampleRange(*known);
  return true;
}
