// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Exr/ExrDecoder.h"
#include "Host/Files/Codecs/Exr/ExrEncoder.h"
#include "Host/Files/Codecs/Exr/ExrThreads.h"

namespace ScEng::Exr {
namespace {

class ExrCodec final : public ImageCodec {
 public:
  [[nodiscard]] std::unique_ptr<ImageDecoder> Open(const std::filesystem::path& file, const std::string& /*format*/,
                                                   Status& status) const override {
    auto decoder = std::make_unique<ExrDecoder>();
    status = decoder->Open(file);
    if (status.IsError()) return nullptr;
    return decoder;
  }

  [[nodiscard]] std::unique_ptr<ImageEncoder> Create(const std::filesystem::path& path, const std::string& /*format*/,
                                                     const WritePlan& plan, std::vector<std::string>& notes,
                                                     Status& status) const override {
    auto encoder = std::make_unique<ExrEncoder>();
    status = encoder->Begin(path, plan, notes);
    if (status.IsError()) return nullptr;
    return encoder;
  }

  [[nodiscard]] Status CheckCompression(const std::string& /*format*/, const std::string& compression) const override {
    return Exr::CheckCompression(compression);
  }

  /// Threads are started before the process gives up the right to.
  void Prepare() const override { ShareThreads(); }
};

}  // namespace
}  // namespace ScEng::Exr

extern "C" __attribute__((visibility("default"))) const ScEng::ImageCodec* GetImageCodec() {
  static const ScEng::Exr::ExrCodec codec;
  return &codec;
}
