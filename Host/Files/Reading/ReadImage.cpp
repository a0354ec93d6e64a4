// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Reading/ReadImage.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>

#include "Host/Files/Reading/ChannelSelection.h"
#include "Host/Files/Reading/Orientation.h"
#include "Host/Image/ColorMode.h"
#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

constexpr std::size_t kGrain = 65536;

std::string CheckSize(const FilePart& part) {
  if (part.size_x < 1 || part.size_y < 1) return "it has no pixels";
  const bool is_turned = Orientation(part.orientation).Transposes();
  const int size_x = is_turned ? part.size_y : part.size_x;
  const int size_y = is_turned ? part.size_x : part.size_y;
  if (size_x <= Image::GetMaxSizeX() && size_y <= Image::GetMaxSizeY()) return {};
  return "its size " + std::to_string(size_x) + " x " + std::to_string(size_y) +
         " is beyond the maximum image size of " + std::to_string(Image::GetMaxSizeX()) + " x " +
         std::to_string(Image::GetMaxSizeY()) + "; --max-size raises that";
}

/// Moves the channels that were read to where the image has them, in place.
void SpreadChannels(Image& image, const std::array<int, 4>& sources) {
  if (image.GetNumChannels() != 4 || sources == std::array{0, 1, 2, 3}) return;
  float* samples = image.GetArray();
  ParallelRows(image.GetNumSamples() / 4, kGrain, [&](std::size_t from, std::size_t to) {
    for (float* pixel = samples + from * 4; pixel != samples + to * 4; pixel += 4) {
      const std::array<float, 4> read{pixel[0], pixel[1], pixel[2], pixel[3]};
      for (std::size_t c = 0; c < 4; ++c) {
        const int source = sources[c];
        pixel[c] = source >= 0 ? read[static_cast<std::size_t>(source)] : source == kConstantOne ? 1.0F : 0.0F;
      }
    }
  });
}

void DivideByOpacity(Image& image) {
  float* samples = image.GetArray();
  ParallelRows(image.GetNumSamples() / 4, kGrain, [&](std::size_t from, std::size_t to) {
    for (float* pixel = samples + from * 4; pixel != samples + to * 4; pixel += 4) {
      if (pixel[3] == 0.0F || pixel[3] == 1.0F) continue;
      for (int c = 0; c < 3; ++c) pixel[c] /= pixel[3];
    }
  });
}

/// The picture as it is to be seen, made of rows as they are stored.
ImagePtr MakeUpright(const Image& stored, Orientation orientation) {
  ImageHeader header = stored.GetImageHeader();
  if (orientation.Transposes()) std::swap(header.size_x, header.size_y);
  auto upright = MakeRef<Image>(header, nullptr);
  const auto channels = static_cast<std::size_t>(stored.GetNumChannels());
  const auto columns = static_cast<std::size_t>(stored.GetSizeX());
  const auto width = static_cast<std::size_t>(header.size_x);
  const float* from = stored.GetConstArray();
  float* to = upright->GetArray();
  ParallelRows(static_cast<std::size_t>(header.size_y), std::max<std::size_t>(1, kGrain / width),
               [&](std::size_t begin, std::size_t end) {
                 for (std::size_t y = begin; y < end; ++y) {
                   for (std::size_t x = 0; x < width; ++x) {
                     const auto [column, row] = orientation.FindSource(static_cast<int>(x), static_cast<int>(y),
                                                                       stored.GetSizeX(), stored.GetSizeY());
                     const std::size_t source =
                         static_cast<std::size_t>(row) * columns + static_cast<std::size_t>(column);
                     std::copy_n(from + source * channels, channels, to + (y * width + x) * channels);
                   }
                 }
               });
  return upright;
}

/// Pin, pivot and range, as they are stored or as the data window has them.
void Place(Image& image, const FilePart& part, const StoredHeader* stored) {
  const int own_x = part.corner_x;
  const int own_y = part.corner_y;
  if (stored != nullptr) {
    if (stored->range) image.SetValueLowHigh(stored->range->first, stored->range->second);
    if (stored->pin) image.SetPin(stored->pin->first, stored->pin->second);
    if (stored->pivot) image.SetPivot(stored->pivot->first, stored->pivot->second);
  }
  // A program that moves the data window leaves attributes of others as they were; files without one begin at (0, 0).
  const Box2I box = image.GetBox();
  if ((own_x != 0 || own_y != 0) && (box.left != own_x || box.top != own_y)) {
    image.SetPin(own_x, own_y);
    image.SetPivot(0.0F, 0.0F);
  }
}

/// What the image carries, told in the coordinates of the document.
std::shared_ptr<const ImageMetadata> MakeMetadata(const std::string& format, const FilePart& part, const Box2I& box,
                                                  bool had_opacity) {
  auto metadata = std::make_shared<ImageMetadata>(part.metadata);
  metadata->had_opacity = had_opacity;
  for (const FileChannel& channel : part.channels) {
    if (!metadata->nodata) metadata->nodata = channel.samples.nodata;
  }
  for (const char* lossless : {"none", "rle", "zips", "zip", "piz"}) {
    if (format == "openexr" && part.compression == lossless) metadata->exr_compression = lossless;
  }
  // The display window is where the data window has put it; the ground begins at the first pixel.
  const auto display_window = std::exchange(metadata->display_window, std::nullopt);
  auto moved = std::make_shared<ImageMetadata>(*MoveMetadata(metadata, box.left, box.top));
  moved->display_window = display_window;
  if (display_window) {
    const std::int64_t columns = box.left - part.corner_x;
    const std::int64_t rows = box.top - part.corner_y;
    moved->display_window = Box2I{display_window->left + columns, display_window->top + rows,
                                  display_window->right + columns, display_window->bottom + rows};
  }
  return moved;
}

/// The image of a request for whole rows, as the file stores them.
ImagePtr Decode(ImageDecoder& decoder, const ReadRequest& request, const ImageHeader& header, std::size_t stride,
                std::string& problem) {
  constexpr std::size_t kWorthSharing = std::size_t{1} << 18;
  const std::size_t row_samples = static_cast<std::size_t>(header.size_x) * stride;
  Status status;
  SampleBuffer shared;
  if (decoder.SharesMemory() && row_samples * static_cast<std::size_t>(header.size_y) >= kWorthSharing) {
    shared = decoder.ReadShared(request, stride, status);
  }
  ImagePtr image;
  if (shared) {
    image = MakeRef<Image>(header, std::move(shared));
  } else if (!status.IsError()) {
    image = MakeRef<Image>(header, nullptr);
    status = decoder.Read(request, {image->GetArray(), stride, row_samples});
  }
  if (!status.IsError()) return image;
  problem = status.GetMessage();
  return nullptr;
}

}  // namespace

ImagePtr ReadImage(ImageDecoder& decoder, const ReadOptions& options, std::string& problem,
                   std::vector<std::string>& notes) {
  const FileDescription& file = decoder.GetDescription();
  const auto selection = SelectChannels(file, options, problem);
  if (!selection) return nullptr;
  const FilePart& part = file.parts[selection->part];
  problem = CheckSize(part);
  if (!problem.empty()) return nullptr;

  const ImageHeader header = ImageHeader::Fresh(part.size_x, part.size_y, selection->color_mode);
  const auto stride = static_cast<std::size_t>(ColorMode::GetNumChannels(header.color_mode));
  ReadRequest request;
  request.part = selection->part;
  request.channels = selection->channels;
  request.column_end = part.size_x;
  request.row_end = part.size_y;
  request.scale = options.scale;
  ImagePtr image = Decode(decoder, request, header, stride, problem);
  if (!image) return nullptr;
  SpreadChannels(*image, selection->sources);
  const bool is_color = selection->color_mode == ColorMode::kColor;
  if (is_color && selection->has_opacity && part.is_multiplied) DivideByOpacity(*image);
  const Orientation orientation(part.orientation);
  if (!orientation.IsUpright()) image = MakeUpright(*image, orientation);

  const unsigned wanted = options.mode == ReadMode::kColor   ? ColorMode::kColor
                          : options.mode == ReadMode::kValue ? ColorMode::kValue
                                                             : selection->color_mode;
  if (wanted != selection->color_mode) {
    image = MakeRef<Image>(*image, wanted);
    if (wanted == ColorMode::kColor) image->SetValueLowHigh(0.0F, 1.0F);
  }
  Place(*image, part, FindStoredHeader(part, selection->layer));
  image->SetMetadata(MakeMetadata(file.format, part, image->GetBox(), selection->has_opacity));
  notes.insert(notes.end(), file.notes.begin(), file.notes.end());
  notes.insert(notes.end(), selection->notes.begin(), selection->notes.end());
  return image;
}

}  // namespace ScEng
