// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Reading/ReadImage.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <tuple>
#include <utility>

#include "Host/Files/Reading/ChannelSelection.h"
#include "Host/Files/Reading/Orientation.h"
#include "Host/Image/ColorMode.h"
#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

constexpr std::size_t kGrain = 65536;

std::string DescribeSize(std::int64_t size_x, std::int64_t size_y) {
  return std::to_string(size_x) + " x " + std::to_string(size_y);
}

/// All pixels of the upright picture.
Box2I WholeOf(const FilePart& part) {
  return Orientation(part.orientation).Transposes() ? Box2I{0, 0, part.size_y, part.size_x}
                                                    : Box2I{0, 0, part.size_x, part.size_y};
}

std::string CheckSize(const Box2I& whole, const Box2I& region) {
  if (whole.Width() < 1 || whole.Height() < 1) return "it has no pixels";
  const bool is_inside = 0 <= region.left && region.left < region.right && region.right <= whole.right &&
                         0 <= region.top && region.top < region.bottom && region.bottom <= whole.bottom;
  if (!is_inside) {
    return "it has no such region: it is " + DescribeSize(whole.right, whole.bottom) + " pixels";
  }
  if (region.Width() <= Image::GetMaxSizeX() && region.Height() <= Image::GetMaxSizeY()) return {};
  return "its size " + DescribeSize(region.Width(), region.Height()) + " is beyond the maximum image size of " +
         DescribeSize(Image::GetMaxSizeX(), Image::GetMaxSizeY()) + "; --max-size raises that";
}

/// Which columns and rows of the file a region of the upright picture is made of.
void RequestRegion(const FilePart& part, const Box2I& region, ReadRequest& request) {
  const Orientation orientation(part.orientation);
  const auto find = [&](std::int64_t x, std::int64_t y) {
    return orientation.FindSource(static_cast<int>(x), static_cast<int>(y), part.size_x, part.size_y);
  };
  const auto first = find(region.left, region.top);
  const auto last = find(region.right - 1, region.bottom - 1);
  std::tie(request.column_begin, request.column_end) = std::minmax(first[0], last[0]);
  std::tie(request.row_begin, request.row_end) = std::minmax(first[1], last[1]);
  ++request.column_end;
  ++request.row_end;
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

/// Pin, pivot and range of the whole picture, as they are stored or as the data window has them.
void Place(ImageHeader& header, const FilePart& part, const StoredHeader* stored) {
  const int own_x = part.corner_x;
  const int own_y = part.corner_y;
  if (stored != nullptr) {
    if (stored->range) std::tie(header.value_low, header.value_high) = *stored->range;
    if (stored->pin) std::tie(header.pin_x, header.pin_y) = *stored->pin;
    if (stored->pivot) std::tie(header.pivot_x, header.pivot_y) = *stored->pivot;
  }
  // A program that moves the data window leaves attributes of others as they were; files without one begin at (0, 0).
  const Box2I box = header.GetBox();
  if ((own_x != 0 || own_y != 0) && (box.left != own_x || box.top != own_y)) {
    std::tie(header.pin_x, header.pin_y) = std::pair(own_x, own_y);
    header.pivot_x = header.pivot_y = 0.0F;
  }
}

/// Gives an image the header of the whole picture that it is a region of; all of it where `whole` has its size.
void TakeHeader(Image& image, const ImageHeader& whole, const Box2I& region) {
  image.SetValueLowHigh(whole.value_low, whole.value_high);
  if (region.Width() == whole.size_x && region.Height() == whole.size_y) {
    image.SetPin(whole.pin_x, whole.pin_y);
    image.SetPivot(whole.pivot_x, whole.pivot_y);
    return;
  }
  const Box2I box = whole.GetBox();
  image.SetPin(static_cast<int>(box.left + region.left), static_cast<int>(box.top + region.top));
  image.SetPivot(0.0F, 0.0F);
}

/// What the image carries, told in the coordinates of the document.
std::shared_ptr<const ImageMetadata> MakeMetadata(const std::string& format, const FilePart& part, const Box2I& box,
                                                  bool had_opacity) {
  auto metadata = std::make_shared<ImageMetadata>(part.metadata);
  metadata->had_opacity = had_opacity;
  for (const FileChannel& channel : part.channels) {
    if (!metadata->nodata) metadata->nodata = channel.samples.nodata;
  }
  if (format == "openexr" && part.compression.empty()) metadata->exr_compression = "none";
  for (const char* lossless : {"rle", "zips", "zip", "piz"}) {
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

/// The image of a request, as the file stores its rows.
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
  const Box2I whole_box = WholeOf(part);
  const Box2I region = options.region.value_or(whole_box);
  problem = CheckSize(whole_box, region);
  if (!problem.empty()) return nullptr;

  ReadRequest request;
  request.part = selection->part;
  request.channels = selection->channels;
  request.scale = options.scale;
  RequestRegion(part, region, request);
  const ImageHeader header = ImageHeader::Fresh(request.column_end - request.column_begin,
                                                request.row_end - request.row_begin, selection->color_mode);
  const auto stride = static_cast<std::size_t>(ColorMode::GetNumChannels(header.color_mode));
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
  ImageHeader whole = image->GetImageHeader();
  whole.size_x = static_cast<int>(whole_box.right);
  whole.size_y = static_cast<int>(whole_box.bottom);
  Place(whole, part, FindStoredHeader(part, selection->layer));
  TakeHeader(*image, whole, region);
  image->SetMetadata(MakeMetadata(file.format, part, whole.GetBox(), selection->has_opacity));
  notes.insert(notes.end(), file.notes.begin(), file.notes.end());
  notes.insert(notes.end(), selection->notes.begin(), selection->notes.end());
  return image;
}

}  // namespace ScEng
