// SPDX-License-Identifier: Apache-2.0
#include <OpenImageIO/imageio.h>

#include <mutex>
#include <new>
#include <stdexcept>

#include "Host/Files/Codecs/Pictures/Encoders.h"
#include "Host/Files/Codecs/Pictures/JpegDecoder.h"
#include "Host/Files/Codecs/Pictures/PictureDecoder.h"
#include "Host/Files/Codecs/Pictures/PictureEncoder.h"
#include "Host/Files/Codecs/Pictures/TextPlaces.h"
#include "Host/Files/Codecs/Pictures/WholeDecoder.h"
#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

/// Lets the library of formats use as many threads as the host.
void ShareThreads() {
  static std::mutex mutex;
  static std::size_t shared = 0;
  const std::lock_guard lock(mutex);
  const std::size_t wanted = GetNumThreads();
  if (shared == wanted) return;
  OIIO::attribute("threads", static_cast<int>(wanted));
  shared = wanted;
}

/// What is not left to the library of formats; null for what is, and an error for what neither reads.
std::unique_ptr<ImageDecoder> OpenOwn(const std::filesystem::path& file, const std::string& format, Status& status) {
  if (format == "pnm") return OpenPnm(file, status);
  if (format == "bmp") return OpenBmp(file, status);
  if (format == "webp") return OpenWebp(file, status);
  if (format == "jpeg2000") return OpenJpeg2000(file, status);
  return nullptr;
}

class PicturesCodec final : public ImageCodec {
 public:
  [[nodiscard]] std::unique_ptr<ImageDecoder> Open(const std::filesystem::path& file, const std::string& format,
                                                   Status& status) const override {
    if (format == "jpeg") return JpegDecoder::Open(file, status);
    ShareThreads();
    try {
      auto own = OpenOwn(file, format, status);
      if (own || status.IsError()) return own;
      return PictureDecoder::Open(file, format, status);
    } catch (const std::bad_alloc&) {
      status = Status::Error("there is not enough memory for it");
    } catch (const std::length_error&) {
      // What the library says of it names a function of its own.
      status = Status::Error("there is not enough memory for it");
    }
    return nullptr;
  }

  [[nodiscard]] std::unique_ptr<ImageEncoder> Create(const std::filesystem::path& path, const std::string& format,
                                                     const WritePlan& given, std::vector<std::string>& notes,
                                                     Status& status) const override {
    WritePlan plan = given;
    plan.metadata = TakeWhatIsHeld(given.metadata, format, notes);
    PlaceTexts(format, plan.metadata, notes);
    if (format == "tiff") return CreateTiff(path, plan, notes, status);
    if (format == "jpeg") return CreateJpeg(path, plan, notes, status);
    if (format == "webp") return CreateWebp(path, plan, notes, status);
    if (format == "jpeg2000") return CreateJpeg2000(path, plan, notes, status);
    status = CheckCompression(format, plan.compression);
    if (status.IsError()) return nullptr;
    if (format == "pnm") return CreatePnm(path, plan, notes, status);
    if (format == "sgi") return CreateSgi(path, plan, notes, status);
    ShareThreads();
    if (format == "bmp") return CreateBmp(path, plan, notes, status);
    return CreatePlain(path, format, plan, notes, status);
  }

  [[nodiscard]] Status CheckCompression(const std::string& format, const std::string& compression) const override {
    if (format == "tiff") return CheckTiffCompression(compression);
    if (format == "jpeg") return CheckJpegCompression(compression);
    if (format == "webp") return CheckWebpCompression(compression);
    if (format == "jpeg2000") return CheckJpeg2000Compression(compression);
    if (compression.empty() || compression == "none") return {};
    return Status::Error("the format has the compression none alone, not \"" + compression + "\"");
  }
};

}  // namespace
}  // namespace ScEng

extern "C" __attribute__((visibility("default"))) const ScEng::ImageCodec* GetImageCodec() {
  static const ScEng::PicturesCodec& codec = *new ScEng::PicturesCodec;
  return &codec;
}
