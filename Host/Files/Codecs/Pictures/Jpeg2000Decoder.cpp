// SPDX-License-Identifier: Apache-2.0
#include <openjpeg.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <utility>

#include "Host/Files/Codecs/Pictures/Jp2Boxes.h"
#include "Host/Files/Codecs/Pictures/MetadataBlocks.h"
#include "Host/Files/Codecs/Pictures/WholeDecoder.h"
#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

using Bytes = std::vector<unsigned char>;

/// A stream of the library over a file.
struct FileStream {
  std::ifstream stream;

  static OPJ_SIZE_T Read(void* to, OPJ_SIZE_T size, void* user) {
    std::ifstream& stream = static_cast<FileStream*>(user)->stream;
    stream.read(static_cast<char*>(to), static_cast<std::streamsize>(size));
    const auto got = static_cast<OPJ_SIZE_T>(std::max<std::streamsize>(stream.gcount(), 0));
    return got > 0 ? got : static_cast<OPJ_SIZE_T>(-1);
  }
  static OPJ_OFF_T Skip(OPJ_OFF_T size, void* user) {
    std::ifstream& stream = static_cast<FileStream*>(user)->stream;
    stream.clear();
    stream.seekg(size, std::ios::cur);
    return stream ? size : -1;
  }
  static OPJ_BOOL Seek(OPJ_OFF_T at, void* user) {
    std::ifstream& stream = static_cast<FileStream*>(user)->stream;
    stream.clear();
    stream.seekg(at);
    return stream ? OPJ_TRUE : OPJ_FALSE;
  }
};

struct FreeImage {
  void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
struct FreeCodec {
  void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
struct FreeStream {
  void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};

/// A file that is open in the library.
class Jpeg2000File {
 public:
  Jpeg2000File(const std::filesystem::path& file, bool has_boxes)
      : codec_(opj_create_decompress(has_boxes ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K)),
        stream_(opj_stream_create(OPJ_J2K_STREAM_CHUNK_SIZE, OPJ_TRUE)) {
    source_.stream.open(file, std::ios::binary);
    if (stream_ == nullptr) return;
    opj_stream_set_user_data(stream_.get(), &source_, nullptr);
    opj_stream_set_user_data_length(stream_.get(), std::filesystem::file_size(file));
    opj_stream_set_read_function(stream_.get(), FileStream::Read);
    opj_stream_set_skip_function(stream_.get(), FileStream::Skip);
    opj_stream_set_seek_function(stream_.get(), FileStream::Seek);
  }

  /// The picture without its samples; null where the header is not understood.
  const opj_image_t* ReadHeader() {
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    if (!codec_ || !stream_ || opj_setup_decoder(codec_.get(), &parameters) == OPJ_FALSE) return nullptr;
    opj_codec_set_threads(codec_.get(), static_cast<int>(GetNumThreads()));
    opj_image_t* image = nullptr;
    const bool ok = opj_read_header(stream_.get(), codec_.get(), &image) != OPJ_FALSE;
    image_.reset(image);
    return ok ? image : nullptr;
  }

  /// The picture with its samples; null where they are damaged.
  const opj_image_t* Decode() {
    const bool ok = ReadHeader() != nullptr && opj_decode(codec_.get(), stream_.get(), image_.get()) != OPJ_FALSE &&
                    opj_end_decompress(codec_.get(), stream_.get()) != OPJ_FALSE;
    return ok ? image_.get() : nullptr;
  }

 private:
  FileStream source_;
  std::unique_ptr<opj_codec_t, FreeCodec> codec_;
  std::unique_ptr<opj_stream_t, FreeStream> stream_;
  std::unique_ptr<opj_image_t, FreeImage> image_;
};

/// What the channels of a picture hold.
struct Layout {
  int size_x = 0;
  int size_y = 0;
  StoredType type = StoredType::kUint8;
  std::vector<unsigned> bits;
  std::vector<bool> is_signed;

  bool operator==(const Layout&) const = default;
};

StoredType FindType(const Layout& layout) {
  const unsigned most = *std::max_element(layout.bits.begin(), layout.bits.end());
  const auto is_signed = std::count(layout.is_signed.begin(), layout.is_signed.end(), true);
  const bool is_mixed = is_signed != 0 && std::cmp_less(is_signed, layout.is_signed.size());
  if (is_mixed || most > 16) return is_signed != 0 ? StoredType::kInt32 : StoredType::kUint32;
  if (most <= 8) return is_signed != 0 ? StoredType::kInt8 : StoredType::kUint8;
  return is_signed != 0 ? StoredType::kInt16 : StoredType::kUint16;
}

/// Nothing for a picture whose components are of several sizes.
std::optional<Layout> FindLayout(const opj_image_t& image) {
  constexpr OPJ_UINT32 kMostChannels = 1024;
  if (image.numcomps == 0 || image.numcomps > kMostChannels || image.comps == nullptr) return std::nullopt;
  Layout layout;
  const opj_image_comp_t& first = image.comps[0];
  constexpr OPJ_UINT32 kMost = OPJ_UINT32{1} << 30;
  if (first.w == 0 || first.h == 0 || first.w > kMost || first.h > kMost) return std::nullopt;
  layout.size_x = static_cast<int>(first.w);
  layout.size_y = static_cast<int>(first.h);
  for (OPJ_UINT32 i = 0; i < image.numcomps; ++i) {
    const opj_image_comp_t& component = image.comps[i];
    const bool is_alike = component.w == first.w && component.h == first.h && component.dx == 1 && component.dy == 1;
    if (!is_alike || component.prec == 0 || component.prec > 32) return std::nullopt;
    layout.bits.push_back(component.prec);
    layout.is_signed.push_back(component.sgnd != 0);
  }
  layout.type = FindType(layout);
  return layout;
}

/// Whether the library of formats keeps the numbers of a picture: those that are not negative and fill their type.
bool IsKept(const Layout& layout) {
  return std::count(layout.is_signed.begin(), layout.is_signed.end(), true) == 0 &&
         std::all_of(layout.bits.begin(), layout.bits.end(),
                     [&](unsigned bits) { return bits == layout.bits.front() && (bits == 8 || bits == 16); });
}

bool IsPlainColor(OPJ_COLOR_SPACE space) {
  return space != OPJ_CLRSPC_SYCC && space != OPJ_CLRSPC_EYCC && space != OPJ_CLRSPC_CMYK;
}

template <class Number>
void CopySamples(const opj_image_t& image, Bytes& samples) {
  const std::size_t pixels = std::size_t{image.comps[0].w} * image.comps[0].h;
  samples.resize(pixels * image.numcomps * sizeof(Number));
  for (std::size_t c = 0; c < image.numcomps; ++c) {
    for (std::size_t i = 0; i < pixels; ++i) {
      const auto number = static_cast<Number>(image.comps[c].data[i]);
      std::memcpy(samples.data() + (i * image.numcomps + c) * sizeof number, &number, sizeof number);
    }
  }
}

Status Decode(const std::filesystem::path& file, bool has_boxes, const Layout& layout, Bytes& samples) {
  Jpeg2000File opened(file, has_boxes);
  const opj_image_t* image = opened.Decode();
  if (image == nullptr || FindLayout(*image) != layout) return Status::Error("its data are damaged");
  for (OPJ_UINT32 i = 0; i < image->numcomps; ++i) {
    if (image->comps[i].data == nullptr) return Status::Error("its data are damaged");
  }
  switch (GetSize(layout.type)) {
    case 1: CopySamples<std::uint8_t>(*image, samples); break;
    case 2: CopySamples<std::uint16_t>(*image, samples); break;
    default: CopySamples<std::uint32_t>(*image, samples); break;
  }
  return {};
}

int FindOpacity(const Jp2Boxes& boxes, const Layout& layout) {
  const auto channels = static_cast<int>(layout.bits.size());
  if (boxes.defines_channels) return boxes.opacity_channel < channels ? boxes.opacity_channel : -1;
  // Numbers that may be negative are no colours.
  return (channels == 2 || channels == 4) && !layout.is_signed.back() ? channels - 1 : -1;
}

FilePart MakePart(const Jp2Boxes& boxes, const Layout& layout) {
  FilePart part;
  part.size_x = layout.size_x;
  part.size_y = layout.size_y;
  part.reads_regions = false;
  FileChannel channel;
  channel.samples.type = layout.type;
  part.channels.assign(layout.bits.size(), channel);
  part.opacity_channel = FindOpacity(boxes, layout);
  part.is_multiplied = part.opacity_channel >= 0 && boxes.is_multiplied;
  return part;
}

}  // namespace

std::unique_ptr<ImageDecoder> OpenJpeg2000(const std::filesystem::path& file, Status& status) {
  const Jp2Boxes boxes = ReadJp2Boxes(file);
  if (boxes.has_palette) return nullptr;
  Jpeg2000File opened(file, boxes.has_boxes);
  const opj_image_t* image = opened.ReadHeader();
  if (image == nullptr) {
    status = Status::Error(boxes.problem.empty() ? "its header is damaged" : boxes.problem);
    return nullptr;
  }
  const auto layout = IsPlainColor(image->color_space) ? FindLayout(*image) : std::nullopt;
  if (!layout || IsKept(*layout)) return nullptr;
  if (!boxes.problem.empty()) {
    status = Status::Error(boxes.problem);
    return nullptr;
  }
  FileDescription description{"jpeg2000", {MakePart(boxes, *layout)}, {}};
  ReadBlocks(file, true, description.parts.front().metadata, description.notes);
  if (boxes.has_place) description.notes.emplace_back("its place on the ground is not read");
  std::vector<SampleNumbers> numbers;
  for (std::size_t c = 0; c < layout->bits.size(); ++c) {
    numbers.push_back(
        {.largest = GetLargestOf(layout->bits[c] - (layout->is_signed[c] ? 1 : 0)), .is_inverted = false});
  }
  const auto decode = [file, has_boxes = boxes.has_boxes, layout = *layout](Bytes& samples) {
    return Decode(file, has_boxes, layout, samples);
  };
  return std::make_unique<WholeDecoder>(std::move(description), decode, std::move(numbers));
}

}  // namespace ScEng
