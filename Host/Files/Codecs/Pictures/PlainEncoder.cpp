// SPDX-License-Identifier: Apache-2.0
#include <OpenImageIO/imageio.h>

#include "Host/Files/Codecs/Pictures/Encoders.h"
#include "Host/Files/Codecs/Pictures/PictureEncoder.h"
#include "Host/Files/Codecs/Pictures/PictureInput.h"
#include "Host/Files/Codecs/Pictures/WatchedFile.h"

namespace ScEng {
namespace {

OIIO::TypeDesc GetTypeDesc(StoredType type) {
  switch (type) {
    case StoredType::kUint8: return OIIO::TypeDesc::UINT8;
    case StoredType::kUint16: return OIIO::TypeDesc::UINT16;
    default: return OIIO::TypeDesc::FLOAT;
  }
}

std::vector<int> GetChannelCounts(const std::string& format) {
  if (format == "hdr") return {3};
  if (format == "targa") return {1, 2, 3, 4};
  return {1, 3, 4};
}

class PlainEncoder final : public PictureEncoder {
 public:
  PlainEncoder(const std::filesystem::path& path, const std::string& format, const WritePlan& plan,
               std::vector<std::string>& notes)
      : PictureEncoder(plan, GetChannelCounts(format), notes), file_(path) {
    output_ = OIIO::ImageOutput::create(format);
  }
  ~PlainEncoder() override {
    if (output_ && output_->has_error()) static_cast<void>(output_->geterror());
  }

  Status Open() {
    if (!output_ || !output_->set_ioproxy(&file_)) return Status::Error("the installed OpenImageIO does not write it");
    const WritePlan& plan = GetPlan();
    OIIO::ImageSpec spec(plan.size_x, plan.size_y, GetNumChannels(), GetTypeDesc(plan.type));
    spec.alpha_channel = GetOpacityChannel();
    spec.attribute("oiio:UnassociatedAlpha", 1);
    if (GetNumChannels() == 1) spec.channelnames = {"Y"};
    // The library would put the time of writing into it.
    spec.attribute("DateTime", "");
    // Some formats put the name that they are given into the file.
    if (!output_->open("picture", spec)) return Fail();
    // A sample format that was changed silently would change the samples.
    if (output_->spec().format != spec.format) return Status::Error("the format does not hold such samples");
    return {};
  }

 private:
  Status PutRows(int begin, int end, const void* samples) override {
    const bool ok = output_->write_scanlines(begin, end, 0, GetTypeDesc(GetPlan().type), samples);
    return ok && !output_->has_error() ? Status() : Fail();
  }

  Status Close() override {
    const bool is_closed = output_->close();
    if (!is_closed || output_->has_error()) return Fail();
    return file_.Finish() ? Status() : Status::Error("it cannot be written");
  }

  Status Fail() { return Status::Error("it cannot be written: " + MakeClause(output_->geterror())); }

  // The library keeps a pointer to the file, which is why it is declared first and destroyed last.
  CheckedFile file_;
  std::unique_ptr<OIIO::ImageOutput> output_;
};

}  // namespace

std::unique_ptr<ImageEncoder> CreatePlain(const std::filesystem::path& path, const std::string& format,
                                          const WritePlan& plan, std::vector<std::string>& notes, Status& status) {
  auto encoder = std::make_unique<PlainEncoder>(path, format, plan, notes);
  status = encoder->Open();
  if (status.IsError()) return nullptr;
  return encoder;
}

}  // namespace ScEng
