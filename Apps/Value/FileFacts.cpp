// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/FileFacts.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <vector>

#include "Apps/Value/Common.h"
#include "Host/Files/Layers.h"

namespace {

using nlohmann::ordered_json;
using ScEng::FileChannel;
using ScEng::FileDescription;
using ScEng::FilePart;
using ScEng::ImageMetadata;
using ScEng::MetadataEntry;

/// Channels of one type stand together: "R, G, B half; Z float", "3 of uint8". One without a name among others that
/// have one is shown with the number by which it is chosen.
std::string DescribeChannels(const FilePart& part) {
  const bool has_names = std::any_of(part.channels.begin(), part.channels.end(),
                                     [](const FileChannel& channel) { return !channel.name.empty(); });
  std::string text;
  for (std::size_t i = 0; i < part.channels.size();) {
    std::size_t end = i;
    std::string names;
    while (end < part.channels.size() && part.channels[end].samples.type == part.channels[i].samples.type) {
      const std::string& name = part.channels[end].name;
      names += (end == i ? "" : ", ") + (name.empty() ? std::to_string(end) : name);
      ++end;
    }
    if (!has_names) names = std::to_string(end - i) + " of";
    text += (i == 0 ? "" : "; ") + names + " " + GetName(part.channels[i].samples.type);
    i = end;
  }
  return text;
}

/// The longest value that is shown on a line; `--json` has them whole.
constexpr std::size_t kMostLetters = 100;

std::string Shorten(std::string text) {
  if (text.size() > kMostLetters) text = text.substr(0, kMostLetters) + "...";
  std::replace_if(
      text.begin(), text.end(), [](unsigned char letter) { return letter < ' ' || letter == 127; }, ' ');
  return text;
}

template <class Number>
std::string JoinNumbers(const std::vector<Number>& numbers) {
  std::ostringstream text;
  for (std::size_t i = 0; i < numbers.size(); ++i) text << (i == 0 ? "" : ", ") << numbers[i];
  return text.str();
}

struct ValueText {
  std::string operator()(const std::string& text) const { return text; }
  std::string operator()(const std::vector<std::int64_t>& numbers) const { return JoinNumbers(numbers); }
  std::string operator()(const std::vector<double>& numbers) const { return JoinNumbers(numbers); }
  std::string operator()(const ScEng::OpaqueValue& value) const {
    return value.type + ", " + std::to_string(value.bytes.size()) + (value.bytes.size() == 1 ? " byte" : " bytes");
  }
};

struct ValueJson {
  ordered_json operator()(const std::string& text) const { return text; }
  ordered_json operator()(const std::vector<std::int64_t>& numbers) const { return Unwrap(numbers); }
  ordered_json operator()(const std::vector<double>& numbers) const { return Unwrap(numbers); }
  ordered_json operator()(const ScEng::OpaqueValue& value) const {
    return {{"type", value.type}, {"bytes", value.bytes.size()}};
  }

 private:
  template <class Number>
  static ordered_json Unwrap(const std::vector<Number>& numbers) {
    return numbers.size() == 1 ? ordered_json(numbers.front()) : ordered_json(numbers);
  }
};

class PartLines {
 public:
  PartLines(std::ostringstream& text, const FilePart& part) : text_(text), part_(part) {}

  void Write() {
    Line("channels", DescribeChannels(part_));
    const auto layers = ListLayers(part_);
    std::string names;
    for (const std::string& layer : layers) names += (names.empty() ? "" : ", ") + layer;
    if (!layers.empty()) Line("layers", names);
    if (!part_.problem.empty()) Line("cannot be read", part_.problem);
    if (part_.corner_x != 0 || part_.corner_y != 0 || part_.metadata.display_window) WriteWindows();
    if (!part_.compression.empty()) Line("compression", part_.compression);
    if (part_.orientation != 1) Line("orientation", std::to_string(part_.orientation));
    WriteScale();
    WriteMetadata(part_.metadata);
  }

 private:
  void Line(std::string name, const std::string& value) {
    name.resize(std::max<std::size_t>(name.size() + 1, 12), ' ');
    text_ << "  " << name << Shorten(value) << "\n";
  }

  void WriteWindows() {
    Line("data window", std::to_string(part_.corner_x) + ", " + std::to_string(part_.corner_y) + "   " +
                            std::to_string(part_.size_x) + " x " + std::to_string(part_.size_y));
    if (const auto& box = part_.metadata.display_window) {
      Line("display", std::to_string(box->left) + ", " + std::to_string(box->top) + "   " +
                          std::to_string(box->Width()) + " x " + std::to_string(box->Height()));
    }
  }

  void WriteScale() {
    if (part_.channels.empty()) return;
    const ScEng::StoredSamples& samples = part_.channels.front().samples;
    std::ostringstream text;
    text.precision(17);
    if (samples.scale || samples.offset) {
      text << samples.scale.value_or(1.0) << " x + " << samples.offset.value_or(0.0);
      Line("scale", text.str());
    }
    const auto nodata = samples.nodata ? samples.nodata : part_.metadata.nodata;
    if (!nodata) return;
    text.str("");
    text << *nodata;
    Line("nodata", text.str());
  }

  void WriteMetadata(const ImageMetadata& metadata) {
    if (metadata.georeference) WriteGround(*metadata.georeference);
    if (!metadata.value_unit.empty()) Line("unit", metadata.value_unit);
    if (metadata.resolution) {
      const auto& [x, y] = *metadata.resolution;
      const std::string unit = metadata.resolution_unit.empty() ? "" : " per " + metadata.resolution_unit;
      Line("resolution", FormatFloat(static_cast<float>(x)) + ", " + FormatFloat(static_cast<float>(y)) + unit);
    }
    const auto block = [&](const char* name, std::size_t bytes) {
      if (bytes > 0) Line(name, std::to_string(bytes) + " bytes");
    };
    block("EXIF", metadata.exif.size());
    block("IPTC", metadata.iptc.size());
    block("XMP", metadata.xmp.size());
    block("profile", metadata.icc.size());
    for (const MetadataEntry& entry : metadata.entries) Line(Shorten(entry.name), std::visit(ValueText(), entry.value));
  }

  void WriteGround(const ScEng::Georeference& ground) {
    if (!ground.coordinate_system.empty()) Line("coordinates", ground.coordinate_system);
    if (!ground.transform) return;
    std::ostringstream text;
    text.precision(12);
    const auto& t = *ground.transform;
    text << "corner " << t[0] << ", " << t[3] << "   pixel " << t[1] << ", " << t[5];
    if (t[2] != 0.0 || t[4] != 0.0) text << "   turned " << t[2] << ", " << t[4];
    Line("ground", text.str());
  }

  std::ostringstream& text_;
  const FilePart& part_;
};

ordered_json BoxToJson(const ScEng::Box2I& box) { return {box.left, box.top, box.Width(), box.Height()}; }

ordered_json MetadataToJson(const ImageMetadata& metadata) {
  ordered_json answer = ordered_json::object();
  if (!metadata.exif.empty()) answer["exif_bytes"] = metadata.exif.size();
  if (!metadata.iptc.empty()) answer["iptc_bytes"] = metadata.iptc.size();
  if (!metadata.xmp.empty()) answer["xmp"] = metadata.xmp;
  if (!metadata.icc.empty()) answer["icc_bytes"] = metadata.icc.size();
  if (metadata.resolution) {
    answer["resolution"] = *metadata.resolution;
    answer["resolution_unit"] = metadata.resolution_unit;
  }
  if (!metadata.value_unit.empty()) answer["value_unit"] = metadata.value_unit;
  for (const MetadataEntry& entry : metadata.entries) {
    answer["entries"][entry.name] = std::visit(ValueJson(), entry.value);
  }
  return answer;
}

ordered_json PartToJson(const FilePart& part) {
  ordered_json answer;
  if (!part.name.empty()) answer["name"] = part.name;
  answer["width"] = part.size_x;
  answer["height"] = part.size_y;
  answer["channels"] = ordered_json::array();
  for (const FileChannel& channel : part.channels) {
    ordered_json json;
    json["name"] = channel.name;
    json["type"] = GetName(channel.samples.type);
    if (channel.samples.nodata) json["nodata"] = ToJson(*channel.samples.nodata);
    if (channel.samples.scale) json["scale"] = *channel.samples.scale;
    if (channel.samples.offset) json["offset"] = *channel.samples.offset;
    answer["channels"].push_back(std::move(json));
  }
  answer["layers"] = ListLayers(part);
  answer["data_window"] = {part.corner_x, part.corner_y, part.size_x, part.size_y};
  if (part.metadata.display_window) answer["display_window"] = BoxToJson(*part.metadata.display_window);
  if (!part.compression.empty()) answer["compression"] = part.compression;
  answer["orientation"] = part.orientation;
  if (!part.problem.empty()) answer["problem"] = part.problem;
  if (part.metadata.nodata) answer["nodata"] = ToJson(*part.metadata.nodata);
  if (const auto& ground = part.metadata.georeference) {
    answer["georeference"]["coordinate_system"] = ground->coordinate_system;
    if (ground->transform) answer["georeference"]["transform"] = *ground->transform;
  }
  answer["metadata"] = MetadataToJson(part.metadata);
  return answer;
}

}  // namespace

std::string DescribeFile(const FileDescription& file) {
  std::ostringstream text;
  text << "  format      " << file.format << "\n";
  if (file.parts.size() > 1) text << "  parts       " << file.parts.size() << "\n";
  constexpr std::size_t kMostParts = 20;
  for (std::size_t i = 0; i < std::min(file.parts.size(), kMostParts); ++i) {
    const FilePart& part = file.parts[i];
    if (file.parts.size() > 1) {
      text << "  part " << i << (part.name.empty() ? "" : " \"" + Shorten(part.name) + "\"") << "   " << part.size_x
           << " x " << part.size_y << "\n";
    }
    PartLines(text, part).Write();
  }
  if (file.parts.size() > kMostParts) text << "  and " << file.parts.size() - kMostParts << " more parts\n";
  return text.str();
}

ordered_json FileToJson(const FileDescription& file) {
  ordered_json answer;
  answer["format"] = file.format;
  answer["parts"] = ordered_json::array();
  for (const FilePart& part : file.parts) answer["parts"].push_back(PartToJson(part));
  return answer;
}
