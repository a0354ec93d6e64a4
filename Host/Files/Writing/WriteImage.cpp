// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Writing/WriteImage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <string_view>

#include "Host/Files/ImageFormats.h"
#include "Host/Files/Writing/SampleWriter.h"
#include "Host/Image/ColorMode.h"
#include "Host/Image/ImageMetadata.h"
#include "Host/Util/ClosestName.h"

namespace ScEng {
namespace {

const ImageMetadata& MetadataOf(const Image& image) {
  static const ImageMetadata nothing;
  return image.GetMetadata() != nullptr ? *image.GetMetadata() : nothing;
}

/// The types that are asked for and written, by how many bits of a number they keep.
struct TypeRow {
  SampleType type;
  StoredType stored;
  int precision;
};

constexpr std::array<TypeRow, 5> kTypes{{{SampleType::kUint8, StoredType::kUint8, 8},
                                         {SampleType::kHalf, StoredType::kHalf, 11},
                                         {SampleType::kInt16, StoredType::kInt16, 15},
                                         {SampleType::kUint16, StoredType::kUint16, 16},
                                         {SampleType::kFloat, StoredType::kFloat, 24}}};

bool Has(const FormatRow& format, StoredType type) {
  return std::find(format.types.begin(), format.types.end(), type) != format.types.end();
}

/// The type that is asked for, or the nearest of higher precision that the format has, or the nearest.
StoredType ChooseType(const FormatRow& format, std::optional<SampleType> asked) {
  if (!asked) {
    for (const StoredType type : {StoredType::kFloat, StoredType::kHalf, StoredType::kUint16, StoredType::kUint8}) {
      if (Has(format, type)) return type;
    }
    return format.types.front();
  }
  const auto* wanted =
      std::find_if(kTypes.begin(), kTypes.end(), [&](const TypeRow& row) { return row.type == *asked; });
  if (Has(format, wanted->stored)) return wanted->stored;
  // Whole numbers of 16 bits with a sign hold no fractions of 1, and integers nothing beyond.
  if (*asked == SampleType::kHalf && Has(format, StoredType::kFloat)) return StoredType::kFloat;
  const auto suits = [&](const TypeRow& row) { return row.type != SampleType::kInt16 && Has(format, row.stored); };
  for (const auto* row = wanted; row != kTypes.end(); ++row) {
    if (suits(*row)) return row->stored;
  }
  for (const auto* row = wanted; row != kTypes.begin(); --row) {
    if (suits(*(row - 1))) return (row - 1)->stored;
  }
  return format.types.front();
}

/// What holds for the whole file of what its layers ask for.
WriteOptions CombineOptions(const std::vector<ImageLayer>& layers) {
  const auto precision = [](const std::optional<SampleType>& type) {
    const auto* row = std::find_if(kTypes.begin(), kTypes.end(), [&](const TypeRow& r) { return r.type == type; });
    return row == kTypes.end() ? std::numeric_limits<int>::max() : row->precision;
  };
  WriteOptions combined = layers.front().options;
  for (const ImageLayer& layer : layers) {
    if (precision(layer.options.type) > precision(combined.type)) combined.type = layer.options.type;
    if (combined.compression.empty()) combined.compression = layer.options.compression;
  }
  return combined;
}

bool HasOpacityBelowOne(const Image& image) {
  const float* samples = image.GetConstArray();
  for (std::size_t i = 3; i < image.GetNumSamples(); i += 4) {
    if (samples[i] != 1.0F) return true;
  }
  return false;
}

std::string CountOf(std::uint64_t count, const char* one, const char* many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

Box2I UnionOf(const std::vector<ImageLayer>& layers) {
  Box2I box = layers.front().image->GetBox();
  for (const ImageLayer& layer : layers) box = Union(box, layer.image->GetBox());
  return box;
}

bool FitsInt(std::int64_t number) {
  return number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
}

StoredHeader MakeStoredHeader(const Image& image) {
  const ImageHeader& header = image.GetImageHeader();
  StoredHeader stored;
  stored.mode = static_cast<int>(header.color_mode);
  stored.range = {header.value_low, header.value_high};
  stored.pin = {header.pin_x, header.pin_y};
  stored.pivot = {header.pivot_x, header.pivot_y};
  return stored;
}

/// Makes the plan of a file and where its channels come from.
class Planner {
 public:
  Planner(const std::vector<ImageLayer>& layers, const FormatRow& format, std::vector<std::string>& notes)
      : layers_(layers), format_(format), notes_(notes), options_(CombineOptions(layers)), box_(UnionOf(layers)) {}

  void Plan() {
    plan_.size_x = static_cast<int>(box_.Width());
    plan_.size_y = static_cast<int>(box_.Height());
    if (FitsInt(box_.left) && FitsInt(box_.top)) {
      plan_.corner_x = static_cast<int>(box_.left);
      plan_.corner_y = static_cast<int>(box_.top);
    }
    ChooseSampleType();
    for (const ImageLayer& layer : layers_) AddLayer(layer);
    TakeMetadata();
    plan_.compression = options_.compression;
    const bool is_exr = std::string_view(format_.name) == "openexr";
    if (is_exr && plan_.compression.empty()) plan_.compression = FindExrCompression();
  }

  [[nodiscard]] const WritePlan& GetPlan() const { return plan_; }
  [[nodiscard]] const std::vector<ChannelSource>& GetSources() const { return sources_; }
  [[nodiscard]] const SampleRule& GetRule() const { return rule_; }
  [[nodiscard]] const Box2I& GetBox() const { return box_; }

 private:
  void ChooseSampleType() {
    plan_.type = ChooseType(format_, options_.type);
    if (options_.type && std::string_view(GetName(plan_.type)) != GetName(*options_.type)) {
      notes_.push_back(std::string("the format stores no ") + GetName(*options_.type) + " samples; " +
                       GetName(plan_.type) + " is written");
    }
    rule_.type = plan_.type;
    rule_.stores_values = options_.stores_values || plan_.type == StoredType::kInt16;
    rule_.most = format_.most;
  }

  /// Whether the opacity of an image is written; a note says so where it matters and cannot be.
  bool KeepsOpacity(const Image& image, OpacityRule rule) {
    const bool is_wanted =
        rule == OpacityRule::kKeep || (rule == OpacityRule::kAuto && MetadataOf(image).had_opacity.value_or(true));
    if (!is_wanted || format_.opacity) return is_wanted;
    if (HasOpacityBelowOne(image)) notes_.emplace_back("the format stores no opacity, which is left out");
    return false;
  }

  void AddLayer(const ImageLayer& layer) {
    const Image& image = *layer.image;
    const unsigned mode = image.GetColorMode();
    const int first = static_cast<int>(plan_.channels.size());
    const auto add = [&](const char* name, int channel, bool multiplies) {
      plan_.channels.push_back(layer.name.empty() ? name : layer.name + "." + name);
      sources_.push_back({&image, channel, multiplies});
    };
    if (mode == ColorMode::kValue) {
      add("Y", 0, false);
    } else if (mode == ColorMode::kPair) {
      AddPair(add);
    } else {
      const bool keeps_opacity = KeepsOpacity(image, layer.options.opacity);
      const bool multiplies = keeps_opacity && mode == ColorMode::kColor && format_.multiplies;
      add("R", 0, multiplies);
      add("G", 1, multiplies);
      add("B", 2, multiplies);
      if (keeps_opacity) {
        add("A", 3, false);
        plan_.opacity_channel = first + 3;
      }
    }
    plan_.stored_headers.emplace_back(layer.name, MakeStoredHeader(image));
  }

  template <class Add>
  void AddPair(const Add& add) {
    add("R", 0, false);
    add("G", 1, false);
    if (format_.pairs == Pairs::kPlain) return;
    if (format_.pairs == Pairs::kOpacity) {
      plan_.opacity_channel = 1;
      notes_.emplace_back("the format has no pairs; the second number is stored as opacity");
      return;
    }
    add("B", -1, false);
    notes_.emplace_back("the format has no pairs; a third channel of zeros is added");
  }

  void TakeMetadata() {
    // Of several layers, the first that has any speaks for the file.
    for (const ImageLayer& layer : layers_) {
      if (layer.options.strips_metadata || MetadataOf(*layer.image).IsEmpty()) continue;
      plan_.metadata = MetadataOf(*layer.image);
      break;
    }
    const std::optional<double> nodata = plan_.metadata.nodata;
    if (IsInteger(plan_.type) || format_.metadata.nodata) rule_.nodata = nodata;
    if (nodata && IsInteger(plan_.type) && !HoldsNumber(plan_.type, *nodata)) {
      rule_.nodata.reset();
      plan_.metadata.nodata.reset();
    }
    // Files tell the ground from their first pixel.
    auto display_window = plan_.metadata.display_window;
    plan_.metadata = *MoveMetadata(std::make_shared<ImageMetadata>(plan_.metadata), -box_.left, -box_.top);
    plan_.metadata.display_window = display_window;
  }

  /// As the file packed that the first image came from.
  [[nodiscard]] std::string FindExrCompression() const { return MetadataOf(*layers_.front().image).exr_compression; }

  static bool HoldsNumber(StoredType type, double number) {
    if (number != std::floor(number)) return false;
    switch (type) {
      case StoredType::kUint8: return number >= 0 && number <= 255;
      case StoredType::kUint16: return number >= 0 && number <= 65535;
      case StoredType::kInt16: return number >= -32768 && number <= 32767;
      default: return true;
    }
  }

  const std::vector<ImageLayer>& layers_;
  const FormatRow& format_;
  std::vector<std::string>& notes_;
  WriteOptions options_;
  Box2I box_;
  WritePlan plan_;
  std::vector<ChannelSource> sources_;
  SampleRule rule_;
};

void TellChanges(const SampleChanges& changes, const SampleRule& rule, bool stores_nodata,
                 std::vector<std::string>& notes) {
  if (changes.cut > 0) {
    const std::string range = rule.most            ? "the numbers that the format holds"
                              : rule.stores_values ? std::string("the range of ") + GetName(rule.type)
                                                   : "0..1";
    notes.push_back(CountOf(changes.cut, "sample", "samples") + " outside " + range +
                    (changes.cut == 1 ? " was" : " were") + " cut");
  }
  if (changes.infinite > 0) {
    notes.push_back(CountOf(changes.infinite, "sample", "samples") + " beyond the largest half, 65504," +
                    (changes.infinite == 1 ? " was" : " were") + " written as infinity; the type float holds " +
                    (changes.infinite == 1 ? "it" : "them"));
  }
  if (changes.nan > 0 && (IsInteger(rule.type) || rule.most)) {
    const std::string what = rule.nodata ? "the nodata value" : "0";
    notes.push_back(CountOf(changes.nan, "sample", "samples") + " that " + (changes.nan == 1 ? "is" : "are") +
                    " not a number " + (changes.nan == 1 ? "was" : "were") + " written as " + what);
  }
  if (changes.taken_for_nan > 0 && stores_nodata) {
    notes.push_back(CountOf(changes.taken_for_nan, "sample", "samples") +
                    (changes.taken_for_nan == 1 ? " has" : " have") + " the nodata value and will be read as no value");
  }
}

bool LiesOnGround(const Image& image) {
  const ImageMetadata& metadata = MetadataOf(image);
  return metadata.georeference || metadata.nodata;
}

/// What an image is stored as is one of these five.
SampleType ToSampleType(StoredType type) {
  switch (type) {
    case StoredType::kUint8: return SampleType::kUint8;
    case StoredType::kUint16: return SampleType::kUint16;
    case StoredType::kInt16: return SampleType::kInt16;
    case StoredType::kHalf: return SampleType::kHalf;
    default: return SampleType::kFloat;
  }
}

}  // namespace

const FormatRow* ChooseFormat(const std::filesystem::path& file, const std::vector<ImageLayer>& layers,
                              std::string& problem) {
  const bool is_raster = std::any_of(layers.begin(), layers.end(), [](const ImageLayer& layer) {
    return !layer.options.strips_metadata && LiesOnGround(*layer.image);
  });
  const FormatRow* first = nullptr;
  for (const FormatRow& row : GetFormatRows()) {
    if (!row.writes || !HasEnding(row, file)) continue;
    if (first == nullptr || (is_raster && row.metadata.georeference && !first->metadata.georeference)) first = &row;
    if (!is_raster && first->metadata.georeference && !row.metadata.georeference) first = &row;
  }
  if (first == nullptr) {
    const std::string closest = SuggestClosestNames(file.extension().string(), ListWrittenEndings());
    problem = "its ending names no image format that can be written" +
              (closest.empty() ? "; .exr, .tif, .png and .hdr do" : closest);
  }
  return first;
}

Status EncodeImage(const std::vector<ImageLayer>& layers, const FormatRow& format, const std::filesystem::path& path,
                   std::vector<std::string>& notes, SampleType& type) {
  const bool has_layers = layers.size() > 1 || !layers.front().name.empty();
  if (has_layers && !format.layers) return Status::Error(std::string(format.title) + " has no layers; .exr does");
  std::string problem;
  const ImageCodec* codec = LoadCodec(*FindCodecRow(format.codec), problem);
  if (codec == nullptr) return Status::Error(problem);
  Planner planner(layers, format, notes);
  planner.Plan();
  const WritePlan& plan = planner.GetPlan();
  if (plan.size_x < 1 || plan.size_y < 1) return Status::Error("the image has no pixels");
  if (layers.size() > 1 &&
      (planner.GetBox().Width() > Image::GetMaxSizeX() || planner.GetBox().Height() > Image::GetMaxSizeY())) {
    return Status::Error("its layers together are " + std::to_string(planner.GetBox().Width()) + " x " +
                         std::to_string(planner.GetBox().Height()) + ", beyond the maximum image size of " +
                         std::to_string(Image::GetMaxSizeX()) + " x " + std::to_string(Image::GetMaxSizeY()) +
                         "; --max-size raises that");
  }
  if (format.channels == 1 && plan.channels.size() > 1) {
    return Status::Error(std::string(format.title) + " holds one channel; the image has " +
                         std::to_string(plan.channels.size()));
  }
  Status status;
  const auto encoder = codec->Create(path, format.name, plan, notes, status);
  if (encoder == nullptr) return status;
  SampleChanges changes;
  status = WriteSamples(*encoder, planner.GetBox(), planner.GetSources(), planner.GetRule(), changes);
  if (!status.IsError()) status = encoder->Finish();
  if (status.IsError()) return status;
  TellChanges(changes, planner.GetRule(), format.metadata.nodata, notes);
  type = ToSampleType(plan.type);
  return status;
}

}  // namespace ScEng
