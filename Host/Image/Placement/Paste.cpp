// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Paste.h"

#include <algorithm>
#include <memory>

#include "Host/Image/Oversize.h"
#include "Host/Image/Placement.h"
#include "Host/Util/ParallelRows.h"

namespace {

using ScEng::Box2I;

bool IsPossible(const Box2I& box, int color_mode) {
  return color_mode >= 0 && ColorMode::GetNumChannels(static_cast<unsigned>(color_mode)) > 0 && box.right >= box.left &&
         box.bottom >= box.top && box.right <= box.left + Image::GetMaxSizeX() &&
         box.bottom <= box.top + Image::GetMaxSizeY();
}

/// The result without samples, or null when it cannot be made.
std::unique_ptr<Image> MakeOutput(const Image& image, const Box2I& box, unsigned color_mode) {
  ImageHeader header = ScEng::PlaceAtCorner(box, color_mode);
  if (header.GetBox() != box) return nullptr;
  header.value_low = image.GetValueLow();
  header.value_high = image.GetValueHigh();
  return std::unique_ptr<Image>(ScEng::NullIfOversize([&] { return new Image(header, nullptr); }));
}

std::unique_ptr<Image> MakePasted(const Image* image, const Box2I& box, int color_mode, float outside) {
  if (image == nullptr || !IsPossible(box, color_mode)) return nullptr;
  const auto mode = static_cast<unsigned>(color_mode);
  std::unique_ptr<Image> output = MakeOutput(*image, box, mode);
  if (output == nullptr) return nullptr;
  output->SetOutsideValue(outside);

  const Box2I own = image->GetBox();
  const std::int64_t left = std::clamp(own.left, box.left, box.right) - box.left;
  const std::int64_t right = std::clamp(own.right, box.left, box.right) - box.left;
  const auto channels = static_cast<std::size_t>(output->GetNumChannels());
  const auto row_samples = static_cast<std::size_t>(box.Width()) * channels;
  const auto before = static_cast<std::size_t>(left) * channels;
  const auto up_to = static_cast<std::size_t>(right) * channels;
  float* samples = output->GetArray();
  constexpr std::size_t kGrainSamples = std::size_t{1} << 16;
  ScEng::ParallelRows(static_cast<std::size_t>(box.Height()), kGrainSamples / std::max<std::size_t>(row_samples, 1),
                      [&](std::size_t from, std::size_t to) {
                        for (std::size_t y = from; y < to; ++y) {
                          float* row = samples + y * row_samples;
                          const std::int64_t own_y = box.top + static_cast<std::int64_t>(y) - own.top;
                          if (own_y < 0 || own_y >= image->GetSizeY() || before >= up_to) {
                            std::fill_n(row, row_samples, outside);
                            continue;
                          }
                          const std::int64_t first = own_y * image->GetSizeX() + box.left + left - own.left;
                          std::fill(row, row + before, outside);
                          ScEng::ConvertSamples(image->GetConstArray() + first * image->GetNumChannels(),
                                                image->GetColorMode(), row + before, mode,
                                                static_cast<std::size_t>(right - left));
                          std::fill(row + up_to, row + row_samples, outside);
                        }
                      });
  return output;
}

}  // namespace

Image* Paste(const Image* image, Box2I box, int color_mode) {
  return MakePasted(image, box, color_mode, image == nullptr ? 0.0F : image->GetOutsideValue()).release();
}

Image* PasteMask(const Image* image, Box2I box, float outside) {
  std::unique_ptr<Image> output = MakePasted(image, box, static_cast<int>(ColorMode::kValue), outside);
  if (output != nullptr) output->SetValueLowHigh(0.0F, 1.0F);
  return output.release();
}
