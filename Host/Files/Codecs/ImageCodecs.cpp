// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/ImageCodecs.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <exception>
#include <mutex>
#include <system_error>
#include <utility>

#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

constexpr const char* kModeKey = "value:mode";
constexpr const char* kLowKey = "value:low";
constexpr const char* kHighKey = "value:high";
constexpr const char* kPinKey = "value:pin";
constexpr const char* kPivotKey = "value:pivot";
constexpr const char* kStraightKey = "oiio:UnassociatedAlpha";

// Rows that are converted at a time, so that no second image of a file's own samples is needed.
constexpr int kRowsAtOnce = 64;

/// Lets OpenImageIO use as many threads as the host.
void ShareThreads() {
  static std::mutex mutex;
  static std::size_t shared = 0;
  const std::lock_guard lock(mutex);
  const std::size_t wanted = GetNumThreads();
  if (shared == wanted) return;
  OIIO::attribute("threads", static_cast<int>(wanted));
  OIIO::attribute("exr_threads", static_cast<int>(wanted));
  shared = wanted;
}

// ---- Reading ----

/// What a file says of itself beyond its samples.
struct StoredHeader {
  /// As stored; -1 and the like are not modes.
  std::optional<int> mode;
  std::optional<std::pair<float, float>> range;
  std::optional<std::pair<int, int>> pin;
  std::optional<std::pair<float, float>> pivot;
};

/// The two numbers of an attribute, stored as a list of two or as a vector, of whole or fractional numbers; nothing for
/// any other attribute.
template <class Number>
std::optional<std::pair<Number, Number>> ReadTwo(const OIIO::ParamValue* value) {
  if (value == nullptr || value->type().basevalues() * static_cast<std::size_t>(value->nvalues()) != 2) {
    return std::nullopt;
  }
  if (value->type().basetype == OIIO::TypeDesc::INT32) {
    const auto* numbers = static_cast<const std::int32_t*>(value->data());
    return std::pair(static_cast<Number>(numbers[0]), static_cast<Number>(numbers[1]));
  }
  if (value->type().basetype == OIIO::TypeDesc::FLOAT) {
    const auto* numbers = static_cast<const float*>(value->data());
    return std::pair(static_cast<Number>(numbers[0]), static_cast<Number>(numbers[1]));
  }
  return std::nullopt;
}

StoredHeader ReadStoredHeader(const OIIO::ImageSpec& spec) {
  StoredHeader stored;
  if (const auto* mode = spec.find_attribute(kModeKey)) stored.mode = mode->get_int(-1);
  const auto* low = spec.find_attribute(kLowKey);
  const auto* high = spec.find_attribute(kHighKey);
  if (low != nullptr && high != nullptr) stored.range = {low->get_float(0.0F), high->get_float(1.0F)};
  stored.pin = ReadTwo<int>(spec.find_attribute(kPinKey));
  stored.pivot = ReadTwo<float>(spec.find_attribute(kPivotKey));
  return stored;
}

bool SuitsChannels(int mode, int channels) {
  switch (mode) {
    case ColorMode::kColor:
    case ColorMode::kSigned: return channels == 3 || channels == 4;
    case ColorMode::kValue: return channels == 1;
    case ColorMode::kPair: return channels == 2;
    default: return false;
  }
}

/// Reads a file's samples as floats into `to`, `stride` floats from pixel to pixel. The quotient of an integer sample
/// and the largest integer is rounded once, which a product with the reciprocal is not.
class SampleReader {
 public:
  SampleReader(OIIO::ImageInput& input, float* to, int stride)
      : input_(input), spec_(input.spec()), to_(to), stride_(static_cast<std::size_t>(stride)) {}

  bool Read() {
    if (spec_.format == OIIO::TypeDesc::UINT8) return ReadIntegers<std::uint8_t>(OIIO::TypeDesc::UINT8);
    if (spec_.format == OIIO::TypeDesc::UINT16) return ReadIntegers<std::uint16_t>(OIIO::TypeDesc::UINT16);
    const auto pixel_bytes = static_cast<OIIO::stride_t>(stride_ * sizeof(float));
    return input_.read_image(0, 0, 0, spec_.nchannels, OIIO::TypeDesc::FLOAT, to_, pixel_bytes,
                             pixel_bytes * spec_.width);
  }

 private:
  template <class Integer>
  bool ReadIntegers(OIIO::TypeDesc type) {
    const auto row_samples = static_cast<std::size_t>(spec_.width) * static_cast<std::size_t>(spec_.nchannels);
    const int rows_at_once = spec_.tile_width > 0 ? spec_.height : std::min(kRowsAtOnce, spec_.height);
    std::vector<Integer> rows(row_samples * static_cast<std::size_t>(rows_at_once));
    if (spec_.tile_width > 0) {
      if (!input_.read_image(0, 0, 0, spec_.nchannels, type, rows.data())) return false;
      Convert(rows, 0, spec_.height);
      return true;
    }
    for (int y = 0; y < spec_.height; y += rows_at_once) {
      const int end = std::min(y + rows_at_once, spec_.height);
      if (!input_.read_scanlines(0, 0, spec_.y + y, spec_.y + end, 0, 0, spec_.nchannels, type, rows.data())) {
        return false;
      }
      Convert(rows, y, end);
    }
    return true;
  }

  template <class Integer>
  void Convert(const std::vector<Integer>& rows, int from, int to) {
    constexpr auto kLargest = static_cast<float>(std::numeric_limits<Integer>::max());
    const auto channels = static_cast<std::size_t>(spec_.nchannels);
    const auto width = static_cast<std::size_t>(spec_.width);
    const std::size_t pixels = width * static_cast<std::size_t>(to - from);
    float* pixel = to_ + width * static_cast<std::size_t>(from) * stride_;
    for (std::size_t i = 0; i < pixels; ++i, pixel += stride_) {
      for (std::size_t c = 0; c < channels; ++c) pixel[c] = static_cast<float>(rows[i * channels + c]) / kLargest;
    }
  }

  OIIO::ImageInput& input_;
  const OIIO::ImageSpec& spec_;
  float* to_;
  std::size_t stride_;
};

/// Spreads the channels that a file has over the four of a colour or signed pixel.
void SpreadChannels(Image& image, int file_channels) {
  if (file_channels == 4) return;
  float* samples = image.GetArray();
  ParallelRows(image.GetNumSamples() / 4, 65536, [&](std::size_t from, std::size_t to) {
    for (float* pixel = samples + from * 4; pixel != samples + to * 4; pixel += 4) {
      if (file_channels == 2) pixel[3] = pixel[1];
      if (file_channels != 2) pixel[3] = 1.0F;
      if (file_channels < 3) pixel[1] = pixel[2] = pixel[0];
    }
  });
}

void DivideByOpacity(Image& image) {
  float* samples = image.GetArray();
  ParallelRows(image.GetNumSamples() / 4, 65536, [&](std::size_t from, std::size_t to) {
    for (float* pixel = samples + from * 4; pixel != samples + to * 4; pixel += 4) {
      if (pixel[3] == 0.0F || pixel[3] == 1.0F) continue;
      for (int c = 0; c < 3; ++c) pixel[c] /= pixel[3];
    }
  });
}

/// Whether the colour of the file that is open is multiplied by its opacity.
bool StoresMultipliedColor(const OIIO::ImageInput& input) {
  const OIIO::ImageSpec& spec = input.spec();
  if (spec.nchannels != 2 && spec.nchannels != 4) return false;
  if (std::string_view(input.format_name()) == "openexr") return true;
  return spec.alpha_channel == spec.nchannels - 1 && spec.get_int_attribute(kStraightKey, 0) == 0;
}

std::string CheckSpec(const OIIO::ImageSpec& spec) {
  if (spec.deep) return "it holds deep samples, which have no single value per pixel";
  if (spec.depth > 1) return "it is a volume, not an image";
  if (spec.nchannels < 1 || spec.nchannels > 4) {
    return "it has " + std::to_string(spec.nchannels) + " channels; an image has one to four";
  }
  if (spec.width < 1 || spec.height < 1) return "it has no pixels";
  if (spec.width > Image::GetMaxSizeX() || spec.height > Image::GetMaxSizeY()) {
    return "its size " + std::to_string(spec.width) + " x " + std::to_string(spec.height) +
           " is beyond the maximum image size of " + std::to_string(Image::GetMaxSizeX()) + " x " +
           std::to_string(Image::GetMaxSizeY());
  }
  return {};
}

/// The mode of the image that holds the file's own channels.
unsigned ChooseFileMode(const StoredHeader& stored, int channels, ReadMode mode, std::vector<std::string>& notes,
                        const std::filesystem::path& file) {
  if (mode == ReadMode::kSigned) return ColorMode::kSigned;
  if (stored.mode && SuitsChannels(*stored.mode, channels)) {
    const auto stored_mode = static_cast<unsigned>(*stored.mode);
    const bool as_color = mode == ReadMode::kColor && stored_mode != ColorMode::kSigned;
    return as_color ? ColorMode::kColor : stored_mode;
  }
  if (stored.mode) {
    notes.push_back("\"" + file.string() + "\": the stored colour mode " + std::to_string(*stored.mode) +
                    " does not suit " + std::to_string(channels) + " channels and is ignored");
  }
  return channels == 1 && mode != ReadMode::kColor ? ColorMode::kValue : ColorMode::kColor;
}

ImagePtr ReadOpenFile(OIIO::ImageInput& input, const std::filesystem::path& file, ReadMode mode, Status& status,
                      std::vector<std::string>& notes) {
  const OIIO::ImageSpec spec = input.spec();
  if (const std::string problem = CheckSpec(spec); !problem.empty()) {
    status = MakeReadError(file, problem);
    return nullptr;
  }
  const StoredHeader stored = ReadStoredHeader(spec);
  const unsigned file_mode = ChooseFileMode(stored, spec.nchannels, mode, notes, file);
  auto image = ScEng::MakeRef<Image>(spec.width, spec.height, file_mode, nullptr);
  if (!SampleReader(input, image->GetArray(), image->GetNumChannels()).Read() || input.has_error()) {
    status = MakeReadError(file, input.geterror());
    return nullptr;
  }
  if (image->GetNumChannels() == 4) SpreadChannels(*image, spec.nchannels);
  // A file of ours that holds two plain numbers stays plain when it is read as colour.
  const bool plain = stored.mode == static_cast<int>(ColorMode::kPair) && spec.nchannels == 2;
  if (file_mode == ColorMode::kColor && !plain && StoresMultipliedColor(input)) DivideByOpacity(*image);

  const unsigned wanted = mode == ReadMode::kColor   ? ColorMode::kColor
                          : mode == ReadMode::kValue ? ColorMode::kValue
                                                     : file_mode;
  if (wanted != file_mode) {
    const bool signed_as_color = wanted == ColorMode::kColor && file_mode == ColorMode::kSigned;
    image = ScEng::MakeRef<Image>(*image, wanted);
    if (signed_as_color) image->SetValueLowHigh(0.0F, 1.0F);
  }
  if (stored.range) image->SetValueLowHigh(stored.range->first, stored.range->second);
  if (stored.pin) image->SetPin(stored.pin->first, stored.pin->second);
  if (stored.pivot) image->SetPivot(stored.pivot->first, stored.pivot->second);
  return image;
}

// ---- Writing ----

OIIO::TypeDesc GetTypeDesc(SampleType type) {
  switch (type) {
    case SampleType::kFloat: return OIIO::TypeDesc::FLOAT;
    case SampleType::kHalf: return OIIO::TypeDesc::HALF;
    case SampleType::kUint16: return OIIO::TypeDesc::UINT16;
    case SampleType::kUint8: break;
  }
  return OIIO::TypeDesc::UINT8;
}

bool IsFormat(const OIIO::ImageOutput& output, std::string_view name) { return output.format_name() == name; }

/// How the pixels of an image become the pixels of a file.
struct FileLayout {
  int channels = 1;
  bool multiply = false;
  bool drops_opacity = false;
};

FileLayout ChooseLayout(const Image& image, const OIIO::ImageOutput& output) {
  FileLayout layout;
  layout.channels = image.GetNumChannels();
  if (layout.channels == 4 && output.supports("alpha") == 0) {
    layout.channels = 3;
    layout.drops_opacity = true;
  }
  // This format knows three channels only.
  if (IsFormat(output, "hdr")) layout.channels = 3;
  layout.multiply = image.GetColorMode() == ColorMode::kColor && IsFormat(output, "openexr");
  return layout;
}

OIIO::ImageSpec MakeSpec(const Image& image, const FileLayout& layout, const OIIO::ImageOutput& output,
                         SampleType type) {
  OIIO::ImageSpec spec(image.GetSizeX(), image.GetSizeY(), layout.channels, GetTypeDesc(type));
  spec.alpha_channel = -1;
  if (layout.channels == 1) spec.channelnames = {"Y"};
  if (layout.channels == 2) spec.channelnames = {"R", "G"};
  if (layout.channels >= 3) spec.channelnames = {"R", "G", "B"};
  if (layout.channels == 4) {
    spec.channelnames.emplace_back("A");
    spec.alpha_channel = 3;
  }
  if (!layout.multiply) spec.attribute(kStraightKey, 1);
  if (IsFormat(output, "jpeg")) spec.attribute("Compression", "jpeg:95");
  if (output.supports("arbitrary_metadata") != 0) {
    const ImageHeader& header = image.GetImageHeader();
    const int pin[2] = {header.pin_x, header.pin_y};
    const float pivot[2] = {header.pivot_x, header.pivot_y};
    spec.attribute(kModeKey, static_cast<int>(header.color_mode));
    spec.attribute(kLowKey, header.value_low);
    spec.attribute(kHighKey, header.value_high);
    spec.attribute(kPinKey, OIIO::TypeDesc(OIIO::TypeDesc::INT, OIIO::TypeDesc::VEC2), pin);
    spec.attribute(kPivotKey, OIIO::TypeDesc(OIIO::TypeDesc::FLOAT, OIIO::TypeDesc::VEC2), pivot);
  }
  return spec;
}

/// Writes rows of an image in the sample format that the opened output really has.
class SampleWriter {
 public:
  SampleWriter(OIIO::ImageOutput& output, const Image& image, const FileLayout& layout)
      : output_(output), image_(image), layout_(layout), format_(output.spec().format) {}

  bool Write() {
    if (format_ == OIIO::TypeDesc::UINT8) return WriteAs<std::uint8_t>(OIIO::TypeDesc::UINT8);
    if (format_ == OIIO::TypeDesc::UINT16) return WriteAs<std::uint16_t>(OIIO::TypeDesc::UINT16);
    return WriteAs<float>(OIIO::TypeDesc::FLOAT);
  }

  [[nodiscard]] std::uint64_t GetNumCut() const { return cut_; }

 private:
  template <class Sample>
  bool WriteAs(const OIIO::TypeDesc& type) {
    const auto channels = static_cast<std::size_t>(layout_.channels);
    const auto width = static_cast<std::size_t>(image_.GetSizeX());
    std::vector<Sample> rows(width * channels * kRowsAtOnce);
    for (int y = 0; y < image_.GetSizeY(); y += kRowsAtOnce) {
      const int end = std::min(y + kRowsAtOnce, image_.GetSizeY());
      ParallelRows(static_cast<std::size_t>(end - y), 4, [&](std::size_t from, std::size_t to) {
        std::uint64_t cut = 0;
        for (std::size_t row = from; row < to; ++row) {
          cut += ConvertRow(static_cast<std::size_t>(y) + row, rows.data() + row * width * channels);
        }
        cut_ += cut;
      });
      if (!output_.write_scanlines(y, end, 0, type, rows.data())) return false;
    }
    return true;
  }

  template <class Sample>
  std::uint64_t ConvertRow(std::size_t y, Sample* to) const {
    const auto width = static_cast<std::size_t>(image_.GetSizeX());
    const auto image_channels = static_cast<std::size_t>(image_.GetNumChannels());
    const auto channels = static_cast<std::size_t>(layout_.channels);
    const float* pixel = image_.GetConstArray() + y * width * image_channels;
    std::uint64_t cut = 0;
    for (std::size_t x = 0; x < width; ++x, pixel += image_channels) {
      for (std::size_t c = 0; c < channels; ++c) {
        float sample = pixel[std::min(c, image_channels - 1)];
        if (layout_.multiply && c < 3) sample *= pixel[3];
        to[x * channels + c] = ConvertSample<Sample>(sample, cut);
      }
    }
    return cut;
  }

  template <class Sample>
  static Sample ConvertSample(float sample, std::uint64_t& cut) {
    if constexpr (std::is_floating_point_v<Sample>) {
      return sample;
    } else {
      constexpr double kLargest = std::numeric_limits<Sample>::max();
      if (!(sample >= 0.0F && sample <= 1.0F)) ++cut;
      const double inside = sample > 0.0F ? std::min(static_cast<double>(sample), 1.0) : 0.0;
      return static_cast<Sample>(std::floor(inside * kLargest + 0.5));
    }
  }

  OIIO::ImageOutput& output_;
  const Image& image_;
  const FileLayout& layout_;
  OIIO::TypeDesc format_;
  std::atomic<std::uint64_t> cut_{0};
};

bool HasOpacityBelowOne(const Image& image) {
  const float* samples = image.GetConstArray();
  for (std::size_t i = 3; i < image.GetNumSamples(); i += 4) {
    if (samples[i] != 1.0F) return true;
  }
  return false;
}

Status EncodeTo(const Image& image, OIIO::ImageOutput& output, const std::string& path,
                const std::filesystem::path& file, SampleType type, std::vector<std::string>& notes) {
  const FileLayout layout = ChooseLayout(image, output);
  if (!output.open(path, MakeSpec(image, layout, output, type))) return MakeWriteError(file, output.geterror());
  const OIIO::TypeDesc stored = output.spec().format;
  if (stored != GetTypeDesc(type)) {
    notes.push_back("\"" + file.string() + "\": the format stores no " + GetName(type) + " samples; " + stored.c_str() +
                    " is written");
  }
  SampleWriter writer(output, image, layout);
  if (!writer.Write() || !output.close()) return MakeWriteError(file, output.geterror());
  if (const std::uint64_t cut = writer.GetNumCut(); cut > 0) {
    notes.push_back("\"" + file.string() + "\": " + std::to_string(cut) + (cut == 1 ? " sample" : " samples") +
                    " outside 0..1 " + (cut == 1 ? "was" : "were") + " cut");
  }
  if (layout.drops_opacity && image.GetColorMode() == ColorMode::kColor && HasOpacityBelowOne(image)) {
    notes.push_back("\"" + file.string() + "\": the format stores no opacity, which is left out");
  }
  return {};
}

ImagePtr DecodeImage(const std::filesystem::path& file, ReadMode mode, Status& status,
                     std::vector<std::string>& notes) {
  ShareThreads();
  try {
    OIIO::ImageSpec config;
    config.attribute(kStraightKey, 1);
    const auto input = OIIO::ImageInput::open(file.string(), &config);
    if (!input) {
      status = MakeReadError(file, OIIO::geterror());
      return nullptr;
    }
    return ReadOpenFile(*input, file, mode, status, notes);
  } catch (const std::bad_alloc&) {
    status = MakeReadError(file, "there is not enough memory for it");
  } catch (const std::exception& thrown) {
    status = MakeReadError(file, thrown.what());
  }
  return nullptr;
}

Status EncodeImage(const Image& image, const std::filesystem::path& file, const std::string& path, SampleType type,
                   std::vector<std::string>& notes) {
  ShareThreads();
  try {
    const auto output = OIIO::ImageOutput::create(file.string());
    if (!output) {
      static_cast<void>(OIIO::geterror());
      return MakeWriteError(file, "its ending names no image format that can be written; .exr, .tif, .png and .hdr do");
    }
    return EncodeTo(image, *output, path, file, type, notes);
  } catch (const std::exception& thrown) {
    return MakeWriteError(file, thrown.what());
  }
}

}  // namespace
}  // namespace ScEng

extern "C" __attribute__((visibility("default"))) const ScEng::ImageCodecs* GetImageCodecs() {
  static constexpr ScEng::ImageCodecs kCodecs{ScEng::DecodeImage, ScEng::EncodeImage};
  return &kCodecs;
}
