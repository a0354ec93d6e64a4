// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <charconv>
#include <string_view>

#include "Host/Files/Codecs/Pictures/Encoders.h"
#include "Host/Files/Codecs/Pictures/JpegErrors.h"
#include "Host/Files/Codecs/Pictures/MetadataBlocks.h"
#include "Host/Files/Codecs/Pictures/PictureEncoder.h"

namespace ScEng {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr int kUsualQuality = 95;
// What a marker holds beside its own length.
constexpr std::size_t kMostInMarker = 65533;

struct Marker {
  int code;
  Bytes bytes;
};

/// Quality as it is asked for: "90" or "jpeg:90"; 0 for anything else.
int ParseQuality(std::string_view text) {
  constexpr std::string_view kPrefix = "jpeg:";
  if (text.empty() || text == "jpeg") return kUsualQuality;
  if (text.substr(0, kPrefix.size()) == kPrefix) text.remove_prefix(kPrefix.size());
  int quality = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), quality);
  return error == std::errc() && end == text.data() + text.size() && quality >= 1 && quality <= 100 ? quality : 0;
}

Bytes Join(std::string_view start, const Bytes& bytes) {
  Bytes joined(start.begin(), start.end());
  joined.insert(joined.end(), bytes.begin(), bytes.end());
  return joined;
}

class JpegEncoder final : public PictureEncoder {
 public:
  JpegEncoder(const WritePlan& plan, int quality, std::vector<std::string>& notes)
      : PictureEncoder(plan, {1, 3}, notes), quality_(quality) {
    CollectMarkers(notes);
  }
  ~JpegEncoder() override {
    jpeg_destroy_compress(&jpeg_);
    if (stream_ != nullptr) std::fclose(stream_);
  }
  JpegEncoder(const JpegEncoder&) = delete;
  JpegEncoder& operator=(const JpegEncoder&) = delete;

  Status Open(const std::filesystem::path& path) {
    stream_ = std::fopen(path.c_str(), "wbe");
    if (stream_ == nullptr) return Status::Error("it cannot be written");
    return Start() ? Status() : Fail();
  }

 private:
  void CollectMarkers(std::vector<std::string>& notes) {
    using namespace std::string_view_literals;
    const ImageMetadata& metadata = GetPlan().metadata;
    const auto add = [&](int code, std::string_view start, const Bytes& bytes, const char* what) {
      if (bytes.empty()) return;
      Marker marker{code, Join(start, bytes)};
      if (marker.bytes.size() <= kMostInMarker) {
        markers_.push_back(std::move(marker));
      } else {
        notes.push_back(std::string("the format holds no ") + what + " of " + std::to_string(bytes.size()) +
                        " bytes, which is left out");
      }
    };
    add(JPEG_APP0 + 1, "Exif\0\0"sv, MakeExifBlock(metadata, false), "EXIF block");
    add(JPEG_APP0 + 1, "http://ns.adobe.com/xap/1.0/\0"sv, {metadata.xmp.begin(), metadata.xmp.end()}, "XMP packet");
    if (!metadata.iptc.empty()) add(JPEG_APP0 + 13, {}, FrameIptc(metadata.iptc), "IPTC block");
    for (const MetadataEntry& entry : metadata.entries) {
      const auto* text = std::get_if<std::string>(&entry.value);
      if (entry.name == "Comment" && text != nullptr) add(JPEG_COM, {}, {text->begin(), text->end()}, "comment");
    }
  }

  void SetDensity() {
    const ImageMetadata& metadata = GetPlan().metadata;
    if (!metadata.resolution) return;
    const auto whole = [](double number) { return static_cast<UINT16>(std::clamp(number + 0.5, 1.0, 65535.0)); };
    jpeg_.X_density = whole((*metadata.resolution)[0]);
    jpeg_.Y_density = whole((*metadata.resolution)[1]);
    jpeg_.density_unit = metadata.resolution_unit == "in" ? 1 : metadata.resolution_unit == "cm" ? 2 : 0;
  }

  // The steps that call the library hold nothing to destroy, because its errors jump out of them.
  bool Start() {
    constexpr int kFineQuality = 90;
    jpeg_.err = jpeg_std_error(&errors_);
    PrepareJpegErrors(errors_);
    if (setjmp(errors_.escape) != 0) return false;
    jpeg_create_compress(&jpeg_);
    jpeg_stdio_dest(&jpeg_, stream_);
    jpeg_.image_width = static_cast<JDIMENSION>(GetPlan().size_x);
    jpeg_.image_height = static_cast<JDIMENSION>(GetPlan().size_y);
    jpeg_.input_components = GetNumChannels();
    jpeg_.in_color_space = GetNumChannels() == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&jpeg_);
    jpeg_set_quality(&jpeg_, quality_, TRUE);
    jpeg_.dct_method = JDCT_ISLOW;
    // At such a quality colour in half the resolution would be what is lost most.
    if (quality_ >= kFineQuality) jpeg_.comp_info[0].h_samp_factor = jpeg_.comp_info[0].v_samp_factor = 1;
    SetDensity();
    jpeg_start_compress(&jpeg_, TRUE);
    for (const Marker& marker : markers_) {
      jpeg_write_marker(&jpeg_, marker.code, marker.bytes.data(), static_cast<unsigned>(marker.bytes.size()));
    }
    const Bytes& icc = GetPlan().metadata.icc;
    if (!icc.empty()) jpeg_write_icc_profile(&jpeg_, icc.data(), static_cast<unsigned>(icc.size()));
    return true;
  }

  bool PutRow(const JSAMPLE* row) {
    if (setjmp(errors_.escape) != 0) return false;
    // The library does not change the samples, though it asks for a pointer by which it could.
    auto* samples = const_cast<JSAMPROW>(row);
    return jpeg_write_scanlines(&jpeg_, &samples, 1) == 1;
  }

  bool FinishData() {
    if (setjmp(errors_.escape) != 0) return false;
    jpeg_finish_compress(&jpeg_);
    return true;
  }

  Status PutRows(int begin, int end, const void* samples) override {
    const auto* row = static_cast<const JSAMPLE*>(samples);
    for (int y = begin; y < end; ++y, row += GetRowBytes()) {
      if (!PutRow(row)) return Fail();
    }
    return {};
  }

  Status Close() override {
    const bool is_written = FinishData();
    const bool is_closed = std::fclose(stream_) == 0;
    stream_ = nullptr;
    return is_written && is_closed ? Status() : Fail();
  }

  Status Fail() const {
    return Status::Error(errors_.text[0] == '\0' ? std::string("it cannot be written")
                                                 : std::string("it cannot be written: ") + errors_.text);
  }

  int quality_;
  std::vector<Marker> markers_;
  JpegErrors errors_{};
  jpeg_compress_struct jpeg_{};
  std::FILE* stream_ = nullptr;
};

}  // namespace

Status CheckJpegCompression(const std::string& compression) {
  if (ParseQuality(compression) != 0) return {};
  return Status::Error("the compression of JPEG is its quality, 1 to 100, not \"" + compression + "\"");
}

std::unique_ptr<ImageEncoder> CreateJpeg(const std::filesystem::path& path, const WritePlan& plan,
                                         std::vector<std::string>& notes, Status& status) {
  status = CheckJpegCompression(plan.compression);
  if (status.IsError()) return nullptr;
  if (plan.size_x > JPEG_MAX_DIMENSION || plan.size_y > JPEG_MAX_DIMENSION) {
    status = Status::Error("JPEG holds up to " + std::to_string(JPEG_MAX_DIMENSION) + " pixels in a direction");
    return nullptr;
  }
  auto encoder = std::make_unique<JpegEncoder>(plan, ParseQuality(plan.compression), notes);
  status = encoder->Open(path);
  if (status.IsError()) return nullptr;
  return encoder;
}

}  // namespace ScEng
