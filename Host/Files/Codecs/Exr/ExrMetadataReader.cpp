// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "Host/Files/Codecs/Exr/ExrMetadata.h"
#include "Host/Files/Codecs/XmpPacket.h"

namespace ScEng::Exr {
namespace {

constexpr std::string_view kStructural[] = {"channels",      "compression",    "dataWindow",
                                            "displayWindow", "lineOrder",      "tiles",
                                            "type",          "name",           "version",
                                            "chunkCount",    "preview",        "maxSamplesPerPixel",
                                            "multiView",     "deepImageState", "dwaCompressionLevel"};

constexpr std::string_view kHeaderMark = "value:";

std::string ToText(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

/// Numbers as programs may have stored them: one or several, whole or not. Empty for any other type.
std::vector<double> ToNumbers(const HeaderAttribute& attribute) {
  struct Row {
    std::string_view type;
    std::size_t size;
    bool is_whole;
    std::size_t most;
  };
  constexpr Row kRows[] = {{"int", 4, true, 1},         {"v2i", 4, true, 2},     {"float", 4, false, 1},
                           {"v2f", 4, false, 2},        {"double", 8, false, 1}, {"v2d", 8, false, 2},
                           {"floatvector", 4, false, 2}};
  const auto* row =
      std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& entry) { return attribute.type == entry.type; });
  std::vector<double> numbers;
  if (row == std::end(kRows)) return numbers;
  for (std::size_t at = 0; at + row->size <= attribute.bytes.size() && numbers.size() < row->most; at += row->size) {
    const std::uint8_t* bytes = attribute.bytes.data() + at;
    if (row->is_whole) {
      numbers.push_back(GetInt(bytes));
    } else if (row->size == 8) {
      numbers.push_back(std::bit_cast<double>(GetNumber(bytes, 8)));
    } else {
      numbers.push_back(static_cast<double>(GetFloat(bytes)));
    }
  }
  return numbers;
}

bool IsInt(double number) {
  return number == std::floor(number) && number >= std::numeric_limits<int>::min() &&
         number <= std::numeric_limits<int>::max();
}

/// The parts of one stored header as they come up among the attributes.
struct HeaderParts {
  std::string layer;
  StoredHeader header;
  std::optional<float> low;
  std::optional<float> high;
};

class MetadataReader {
 public:
  explicit MetadataReader(FilePart& part) : part_(part), metadata_(part.metadata) {}

  void Read(const PartHeader& header) {
    const Box& window = header.display_window;
    metadata_.display_window =
        Box2I{window.left, window.top, std::int64_t{window.right} + 1, std::int64_t{window.bottom} + 1};
    if (const HeaderAttribute* aspect = header.Find(kAspectName)) {
      const std::vector<double> numbers = ToNumbers(*aspect);
      if (!numbers.empty() && numbers[0] > 0.0) aspect_ = numbers[0];
    }
    for (const HeaderAttribute& attribute : header.attributes) {
      if (!IsStructural(attribute.name) && !IsDefault(attribute) && !TakeStored(attribute)) Take(attribute);
    }
    for (HeaderParts& parts : stored_) {
      if (parts.low && parts.high) parts.header.range = {*parts.low, *parts.high};
      if (parts.header != StoredHeader()) part_.stored_headers.emplace_back(parts.layer, parts.header);
    }
  }

 private:
  /// Attributes that every file has, where they say nothing.
  static bool IsDefault(const HeaderAttribute& attribute) {
    const std::vector<double> numbers = ToNumbers(attribute);
    if (attribute.name == kAspectName || attribute.name == "screenWindowWidth") return numbers == std::vector{1.0};
    return attribute.name == "screenWindowCenter" && numbers == std::vector{0.0, 0.0};
  }

  HeaderParts& GetParts(std::string_view layer) {
    const auto found =
        std::find_if(stored_.begin(), stored_.end(), [&](const HeaderParts& parts) { return parts.layer == layer; });
    return found != stored_.end() ? *found : stored_.emplace_back(HeaderParts{std::string(layer), {}, {}, {}});
  }

  /// "value:mode" and the like, or with a layer "layer/value:mode". False for other attributes and other values.
  bool TakeStored(const HeaderAttribute& attribute) {
    const std::string_view name = attribute.name;
    const std::size_t slash = name.rfind('/');
    const std::string_view layer = slash == std::string_view::npos ? "" : name.substr(0, slash);
    const std::string_view key = slash == std::string_view::npos ? name : name.substr(slash + 1);
    if (!key.starts_with(kHeaderMark)) return false;
    const std::vector<double> numbers = ToNumbers(attribute);
    const bool is_two = numbers.size() == 2;
    const bool is_whole = !numbers.empty() && std::all_of(numbers.begin(), numbers.end(), IsInt);
    const auto number = [&](std::size_t i) { return static_cast<float>(numbers[i]); };
    if (key == "value:mode" && numbers.size() == 1 && is_whole) {
      GetParts(layer).header.mode = static_cast<int>(numbers[0]);
    } else if (key == "value:low" && numbers.size() == 1) {
      GetParts(layer).low = number(0);
    } else if (key == "value:high" && numbers.size() == 1) {
      GetParts(layer).high = number(0);
    } else if (key == "value:pin" && is_two && is_whole) {
      GetParts(layer).header.pin = {static_cast<int>(numbers[0]), static_cast<int>(numbers[1])};
    } else if (key == "value:pivot" && is_two) {
      GetParts(layer).header.pivot = {number(0), number(1)};
    } else {
      return false;
    }
    return true;
  }

  void Take(const HeaderAttribute& attribute) {
    if (attribute.type == "string") return TakeText(attribute.name, ToText(attribute.bytes));
    if (attribute.type == "float" && attribute.bytes.size() == 4) {
      const float number = GetFloat(attribute.bytes.data());
      if (attribute.name == kDensityName && number > 0.0F) return TakeDensity(static_cast<double>(number));
      return Add(attribute.name, std::vector{static_cast<double>(number)});
    }
    if (attribute.type == "int" && attribute.bytes.size() == 4) {
      return Add(attribute.name, std::vector{std::int64_t{GetInt(attribute.bytes.data())}});
    }
    Add(attribute.name, OpaqueValue{kOpaquePrefix + attribute.type, attribute.bytes});
  }

  void TakeText(const std::string& attribute, std::string text) {
    if (attribute == kXmpName) {
      metadata_.xmp = std::move(text);
      RemoveSampleDescription(metadata_.xmp);
      return;
    }
    const auto* row = std::find_if(std::begin(kNames), std::end(kNames),
                                   [&](const NameRow& entry) { return attribute == entry.attribute; });
    Add(row == std::end(kNames) ? attribute : row->name, std::move(text));
  }

  /// Pixels per inch along x; those along y follow from the shape of the pixels.
  void TakeDensity(double density) {
    metadata_.resolution = {density, density * aspect_};
    metadata_.resolution_unit = "in";
  }

  void Add(const std::string& name, MetadataValue value) { metadata_.entries.push_back({name, std::move(value)}); }

  FilePart& part_;
  ImageMetadata& metadata_;
  std::vector<HeaderParts> stored_;
  double aspect_ = 1.0;
};

}  // namespace

bool IsStructural(std::string_view attribute) {
  return std::find(std::begin(kStructural), std::end(kStructural), attribute) != std::end(kStructural);
}

void ReadMetadata(const PartHeader& header, FilePart& part) { MetadataReader(part).Read(header); }

}  // namespace ScEng::Exr
