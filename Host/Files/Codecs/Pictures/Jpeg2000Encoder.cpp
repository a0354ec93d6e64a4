// SPDX-License-Identifier: Apache-2.0
#include <openjpeg.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string_view>

#include "Host/Files/Codecs/Pictures/Encoders.h"
#include "Host/Files/Codecs/Pictures/MetadataBlocks.h"
#include "Host/Files/Codecs/Pictures/WholeEncoder.h"
#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

using Bytes = std::vector<unsigned char>;
using namespace std::string_view_literals;

constexpr std::size_t kBoxHeader = 8;

// Which block a box with an identifier of its own holds.
constexpr auto kExifBox = "JpgTiffExif->JP2"sv;
constexpr auto kIptcBox = "\x33\xc7\xa4\xd2\xb8\x1d\x47\x23\xa0\xba\xf1\xa3\xe0\x97\xad\x38"sv;
constexpr auto kXmpBox = "\xbe\x7a\xcf\xcb\x97\xa9\x42\xe8\x9c\x71\x99\x94\x91\xe3\xaf\xac"sv;

/// A stream of the library over bytes in memory.
struct MemoryStream {
  Bytes bytes;
  std::size_t at = 0;

  static OPJ_SIZE_T Write(void* from, OPJ_SIZE_T size, void* user) {
    auto* self = static_cast<MemoryStream*>(user);
    if (self->bytes.size() < self->at + size) self->bytes.resize(self->at + size);
    std::memcpy(self->bytes.data() + self->at, from, size);
    self->at += size;
    return size;
  }
  static OPJ_OFF_T Skip(OPJ_OFF_T size, void* user) {
    auto* self = static_cast<MemoryStream*>(user);
    self->at = static_cast<std::size_t>(static_cast<OPJ_OFF_T>(self->at) + size);
    return size;
  }
  static OPJ_BOOL Seek(OPJ_OFF_T at, void* user) {
    static_cast<MemoryStream*>(user)->at = static_cast<std::size_t>(at);
    return OPJ_TRUE;
  }
};

void PutBig32(Bytes& bytes, std::size_t number) {
  for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<unsigned char>(number >> shift));
}

std::size_t GetBig32(const Bytes& bytes, std::size_t at) {
  std::size_t number = 0;
  for (std::size_t i = 0; i < 4; ++i) number = (number << 8) | bytes[at + i];
  return number;
}

void PutBox(Bytes& bytes, std::string_view identifier, const Bytes& block) {
  if (block.empty()) return;
  PutBig32(bytes, kBoxHeader + identifier.size() + block.size());
  for (const char c : "uuid"sv) bytes.push_back(static_cast<unsigned char>(c));
  bytes.insert(bytes.end(), identifier.begin(), identifier.end());
  bytes.insert(bytes.end(), block.begin(), block.end());
}

/// Where the box of a kind begins between two places, of which the second is the answer where there is none.
std::size_t FindBox(const Bytes& bytes, std::size_t at, std::size_t end, const char* kind) {
  while (at + kBoxHeader <= end) {
    if (std::memcmp(bytes.data() + at + 4, kind, 4) == 0) return at;
    const std::size_t size = GetBig32(bytes, at);
    if (size < kBoxHeader) break;
    at += size;
  }
  return end;
}

/// Puts a profile in the place of the named colour space, which the library cannot do.
void SetProfile(Bytes& bytes, const Bytes& icc) {
  const std::size_t header = FindBox(bytes, 0, bytes.size(), "jp2h");
  if (icc.empty() || header == bytes.size()) return;
  const std::size_t header_size = GetBig32(bytes, header);
  const std::size_t color = FindBox(bytes, header + kBoxHeader, header + header_size, "colr");
  if (color == header + header_size) return;
  const std::size_t color_size = GetBig32(bytes, color);
  Bytes box;
  PutBig32(box, kBoxHeader + 3 + icc.size());
  // Method 2 is a profile; the two numbers after it are zero.
  for (const char c : "colr\x02\0\0"sv) box.push_back(static_cast<unsigned char>(c));
  box.insert(box.end(), icc.begin(), icc.end());
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(color);
  bytes.erase(begin, begin + static_cast<std::ptrdiff_t>(color_size));
  bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(color), box.begin(), box.end());
  Bytes size;
  PutBig32(size, header_size - color_size + box.size());
  std::copy(size.begin(), size.end(), bytes.begin() + static_cast<std::ptrdiff_t>(header));
}

struct FreeImage {
  void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
struct FreeCodec {
  void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct FreeStream {
  void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};

/// Lossless.
class Jpeg2000Encoder final : public WholeEncoder {
 public:
  Jpeg2000Encoder(const std::filesystem::path& path, const WritePlan& plan, std::vector<std::string>& notes)
      : WholeEncoder(path, plan, {1, 3, 4}, notes) {}

 private:
  Status Encode(const Bytes& samples, Bytes& bytes) override {
    const auto image = MakeImage(samples);
    const std::unique_ptr<opj_codec_t, FreeCodec> codec(opj_create_compress(OPJ_CODEC_JP2));
    MemoryStream memory;
    const std::unique_ptr<opj_stream_t, FreeStream> stream(opj_stream_create(OPJ_J2K_STREAM_CHUNK_SIZE, OPJ_FALSE));
    if (!image || !codec || !stream) return Status::Error("there is not enough memory for it");
    opj_stream_set_user_data(stream.get(), &memory, nullptr);
    opj_stream_set_write_function(stream.get(), MemoryStream::Write);
    opj_stream_set_skip_function(stream.get(), MemoryStream::Skip);
    opj_stream_set_seek_function(stream.get(), MemoryStream::Seek);
    opj_cparameters_t parameters = MakeParameters();
    const bool ok = opj_setup_encoder(codec.get(), &parameters, image.get()) != OPJ_FALSE &&
                    opj_start_compress(codec.get(), image.get(), stream.get()) != OPJ_FALSE &&
                    opj_encode(codec.get(), stream.get()) != OPJ_FALSE &&
                    opj_end_compress(codec.get(), stream.get()) != OPJ_FALSE;
    if (!ok) return Status::Error("it cannot be written");
    bytes = std::move(memory.bytes);
    AddMetadata(bytes);
    return {};
  }

  [[nodiscard]] opj_cparameters_t MakeParameters() const {
    opj_cparameters_t parameters{};
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_numlayers = 1;
    parameters.tcp_rates[0] = 0.0F;
    parameters.cp_disto_alloc = 1;
    parameters.irreversible = 0;
    parameters.tcp_mct = GetNumChannels() >= 3 ? 1 : 0;
    // Every level halves the picture, which must not vanish.
    int smallest = std::min(GetPlan().size_x, GetPlan().size_y);
    parameters.numresolution = 1;
    while (parameters.numresolution < 6 && smallest > 1) {
      smallest /= 2;
      ++parameters.numresolution;
    }
    return parameters;
  }

  std::unique_ptr<opj_image_t, FreeImage> MakeImage(const Bytes& samples) {
    const WritePlan& plan = GetPlan();
    const auto channels = static_cast<std::size_t>(GetNumChannels());
    std::array<opj_image_cmptparm_t, 4> components{};
    for (auto& component : components) {
      component.dx = component.dy = 1;
      component.w = static_cast<OPJ_UINT32>(plan.size_x);
      component.h = static_cast<OPJ_UINT32>(plan.size_y);
      component.prec = static_cast<OPJ_UINT32>(GetSize(plan.type) * 8);
    }
    std::unique_ptr<opj_image_t, FreeImage> image(opj_image_create(static_cast<OPJ_UINT32>(channels), components.data(),
                                                                   channels >= 3 ? OPJ_CLRSPC_SRGB : OPJ_CLRSPC_GRAY));
    if (!image) return image;
    image->x1 = components[0].w;
    image->y1 = components[0].h;
    const std::size_t pixels = std::size_t{components[0].w} * components[0].h;
    for (std::size_t c = 0; c < channels; ++c) {
      if (static_cast<int>(c) == GetOpacityChannel()) image->comps[c].alpha = 1;
      for (std::size_t i = 0; i < pixels; ++i) image->comps[c].data[i] = GetSample(samples, i * channels + c);
    }
    return image;
  }

  [[nodiscard]] OPJ_INT32 GetSample(const Bytes& samples, std::size_t index) const {
    if (GetPlan().type == StoredType::kUint8) return samples[index];
    std::uint16_t sample = 0;
    std::memcpy(&sample, samples.data() + index * sizeof sample, sizeof sample);
    return sample;
  }

  void AddMetadata(Bytes& bytes) const {
    const ImageMetadata& metadata = GetPlan().metadata;
    SetProfile(bytes, metadata.icc);
    Bytes boxes;
    PutBox(boxes, kExifBox, MakeExifBlock(metadata, true));
    PutBox(boxes, kIptcBox, metadata.iptc);
    PutBox(boxes, kXmpBox, {metadata.xmp.begin(), metadata.xmp.end()});
    // Before the data, because readers that look for metadata stop there.
    const std::size_t data = FindBox(bytes, 0, bytes.size(), "jp2c");
    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(data), boxes.begin(), boxes.end());
  }
};

}  // namespace

Status CheckJpeg2000Compression(const std::string& compression) {
  if (compression.empty() || compression == "lossless") return {};
  return Status::Error("the compression \"" + compression + "\" is not the one for JPEG 2000, lossless");
}

std::unique_ptr<ImageEncoder> CreateJpeg2000(const std::filesystem::path& path, const WritePlan& plan,
                                             std::vector<std::string>& notes, Status& status) {
  status = CheckJpeg2000Compression(plan.compression);
  if (status.IsError()) return nullptr;
  return std::make_unique<Jpeg2000Encoder>(path, plan, notes);
}

}  // namespace ScEng
