// SPDX-License-Identifier: Apache-2.0
#include <webp/decode.h>

#include <fstream>
#include <iterator>

#include "Host/Files/Codecs/Pictures/MetadataBlocks.h"
#include "Host/Files/Codecs/Pictures/WholeDecoder.h"

namespace ScEng {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes ReadAll(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

Status DecodeWebp(const Bytes& bytes, int size_x, int size_y, bool has_opacity, Bytes& samples) {
  WebPDecoderConfig config;
  if (WebPInitDecoderConfig(&config) == 0) return Status::Error("the installed WebP library is of another version");
  const std::size_t row = static_cast<std::size_t>(size_x) * (has_opacity ? 4 : 3);
  samples.assign(row * static_cast<std::size_t>(size_y), 0);
  config.output.colorspace = has_opacity ? MODE_RGBA : MODE_RGB;
  config.output.is_external_memory = 1;
  config.output.u.RGBA.rgba = samples.data();
  config.output.u.RGBA.stride = static_cast<int>(row);
  config.output.u.RGBA.size = samples.size();
  switch (WebPDecode(bytes.data(), bytes.size(), &config)) {
    case VP8_STATUS_OK: return {};
    case VP8_STATUS_NOT_ENOUGH_DATA: return Status::Error("the file is shortened");
    case VP8_STATUS_OUT_OF_MEMORY: return Status::Error("there is not enough memory for it");
    default: return Status::Error("its data are damaged");
  }
}

}  // namespace

std::unique_ptr<ImageDecoder> OpenWebp(const std::filesystem::path& file, Status& status) {
  constexpr std::size_t kHeader = 12;
  const auto bytes = std::make_shared<const Bytes>(ReadAll(file));
  WebPBitstreamFeatures features;
  const VP8StatusCode code = WebPGetFeatures(bytes->data(), bytes->size(), &features);
  if (code != VP8_STATUS_OK || bytes->size() < kHeader) {
    status = Status::Error(code == VP8_STATUS_NOT_ENOUGH_DATA ? "the file is shortened: it ends within its header"
                                                              : "its header is damaged");
    return nullptr;
  }
  if (features.has_animation != 0) return nullptr;
  // The size that the container declares covers what stands after the picture.
  std::size_t declared = 8;
  for (std::size_t i = 0; i < 4; ++i) declared += std::size_t{(*bytes)[4 + i]} << (8 * i);
  if (bytes->size() < declared) {
    status = Status::Error("the file is shortened: " + std::to_string(bytes->size()) + " of " +
                           std::to_string(declared) + " bytes are there");
    return nullptr;
  }
  FilePart part;
  part.size_x = features.width;
  part.size_y = features.height;
  part.reads_regions = false;
  part.compression = features.format == 2 ? "lossless" : "webp";
  const bool has_opacity = features.has_alpha != 0;
  part.channels.assign(has_opacity ? 4 : 3,
                       {"", {.type = StoredType::kUint8, .nodata = {}, .scale = {}, .offset = {}}});
  part.opacity_channel = has_opacity ? 3 : -1;
  FileDescription description{"webp", {part}, {}};
  FilePart& first = description.parts.front();
  first.orientation = ReadBlocks(file, true, first.metadata, description.notes);
  const auto decode = [bytes, size_x = part.size_x, size_y = part.size_y, has_opacity](Bytes& samples) {
    return DecodeWebp(*bytes, size_x, size_y, has_opacity, samples);
  };
  return std::make_unique<WholeDecoder>(std::move(description), decode);
}

}  // namespace ScEng
