// SPDX-License-Identifier: Apache-2.0
#include <webp/encode.h>
#include <webp/mux.h>

#include <memory>

#include "Host/Files/Codecs/Pictures/Encoders.h"
#include "Host/Files/Codecs/Pictures/MetadataBlocks.h"
#include "Host/Files/Codecs/Pictures/WholeEncoder.h"

namespace ScEng {
namespace {

using Bytes = std::vector<unsigned char>;

struct FreePicture {
  void operator()(WebPPicture* picture) const { WebPPictureFree(picture); }
};
struct FreeMux {
  void operator()(WebPMux* mux) const { WebPMuxDelete(mux); }
};

bool SetChunk(WebPMux* mux, const char* name, const Bytes& bytes) {
  if (bytes.empty()) return true;
  const WebPData data{bytes.data(), bytes.size()};
  return WebPMuxSetChunk(mux, name, &data, 1) == WEBP_MUX_OK;
}

/// Lossless, and with the colour of pixels without opacity.
class WebpEncoder final : public WholeEncoder {
 public:
  WebpEncoder(const std::filesystem::path& path, const WritePlan& plan, std::vector<std::string>& notes)
      : WholeEncoder(path, plan, {3, 4}, notes) {}

 private:
  Status Encode(const Bytes& samples, Bytes& bytes) override {
    WebPMemoryWriter writer;
    WebPMemoryWriterInit(&writer);
    const std::unique_ptr<WebPMemoryWriter, decltype(&WebPMemoryWriterClear)> clear(&writer, &WebPMemoryWriterClear);
    const Status status = EncodeInto(samples, writer);
    if (!status.IsError() && !AddMetadata(writer, bytes)) return Status::Error("it cannot be written");
    return status;
  }

  Status EncodeInto(const Bytes& samples, WebPMemoryWriter& writer) {
    constexpr int kLevel = 6;
    WebPConfig config;
    WebPPicture picture;
    if (WebPConfigInit(&config) == 0 || WebPPictureInit(&picture) == 0 ||
        WebPConfigLosslessPreset(&config, kLevel) == 0) {
      return Status::Error("the installed WebP library is of another version");
    }
    const std::unique_ptr<WebPPicture, FreePicture> free(&picture);
    config.exact = 1;
    picture.use_argb = 1;
    picture.width = GetPlan().size_x;
    picture.height = GetPlan().size_y;
    picture.writer = WebPMemoryWrite;
    picture.custom_ptr = &writer;
    const int stride = static_cast<int>(GetRowBytes());
    const int imported = GetNumChannels() == 4 ? WebPPictureImportRGBA(&picture, samples.data(), stride)
                                               : WebPPictureImportRGB(&picture, samples.data(), stride);
    if (imported == 0 || WebPEncode(&config, &picture) == 0) {
      return Status::Error(picture.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY ? "there is not enough memory for it"
                                                                             : "it cannot be written");
    }
    return {};
  }

  bool AddMetadata(const WebPMemoryWriter& writer, Bytes& bytes) {
    const ImageMetadata& metadata = GetPlan().metadata;
    const Bytes exif = MakeExifBlock(metadata, true);
    if (exif.empty() && metadata.icc.empty() && metadata.xmp.empty()) {
      bytes.assign(writer.mem, writer.mem + writer.size);
      return true;
    }
    const WebPData data{writer.mem, writer.size};
    const std::unique_ptr<WebPMux, FreeMux> mux(WebPMuxCreate(&data, 1));
    const Bytes xmp(metadata.xmp.begin(), metadata.xmp.end());
    if (!mux || !SetChunk(mux.get(), "ICCP", metadata.icc) || !SetChunk(mux.get(), "EXIF", exif) ||
        !SetChunk(mux.get(), "XMP ", xmp)) {
      return false;
    }
    WebPData whole{nullptr, 0};
    if (WebPMuxAssemble(mux.get(), &whole) != WEBP_MUX_OK) return false;
    bytes.assign(whole.bytes, whole.bytes + whole.size);
    WebPDataClear(&whole);
    return true;
  }
};

}  // namespace

Status CheckWebpCompression(const std::string& compression) {
  if (compression.empty() || compression == "lossless") return {};
  return Status::Error("the compression \"" + compression + "\" is not the one for WebP, lossless");
}

std::unique_ptr<ImageEncoder> CreateWebp(const std::filesystem::path& path, const WritePlan& plan,
                                         std::vector<std::string>& notes, Status& status) {
  status = CheckWebpCompression(plan.compression);
  if (status.IsError()) return nullptr;
  if (plan.size_x > WEBP_MAX_DIMENSION || plan.size_y > WEBP_MAX_DIMENSION) {
    status = Status::Error("WebP holds up to " + std::to_string(WEBP_MAX_DIMENSION) + " pixels in a direction");
    return nullptr;
  }
  return std::make_unique<WebpEncoder>(path, plan, notes);
}

}  // namespace ScEng
