// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Png/PngDecoder.h"
#include "Host/Files/Codecs/Png/PngEncoder.h"
#include "Host/Files/Codecs/Png/PngMetadata.h"

namespace ScEng::Png {
namespace {

class PngCodec final : public ImageCodec {
 public:
  [[nodiscard]] std::unique_ptr<ImageDecoder> Open(const std::filesystem::path& file, const std::string& /*format*/,
                                                   Status& status) const override {
    auto decoder = std::make_unique<PngDecoder>(file);
    status = decoder->Open();
    if (status.IsError()) return nullptr;
    return decoder;
  }

  [[nodiscard]] std::unique_ptr<ImageEncoder> Create(const std::filesystem::path& path, const std::string& /*format*/,
                                                     const WritePlan& plan, std::vector<std::string>& notes,
                                                     Status& status) const override {
    auto encoder = std::make_unique<PngEncoder>(path);
    status = encoder->Begin(plan, MakeChunks(plan, notes));
    if (status.IsError()) return nullptr;
    return encoder;
  }

  [[nodiscard]] Status CheckCompression(const std::string& /*format*/, const std::string& compression) const override {
    return Png::CheckCompression(compression);
  }
};

}  // namespace
}  // namespace ScEng::Png

extern "C" __attribute__((visibility("default"))) const ScEng::ImageCodec* GetImageCodec() {
  static const ScEng::Png::PngCodec codec;
  return &codec;
}
