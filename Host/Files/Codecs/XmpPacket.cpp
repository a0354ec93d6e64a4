// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/XmpPacket.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Host/Files/Codecs/XmlTags.h"

namespace ScEng {
namespace {

constexpr std::string_view kRdf = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
constexpr std::string_view kTiff = "http://ns.adobe.com/tiff/1.0/";
constexpr std::string_view kExif = "http://ns.adobe.com/exif/1.0/";
constexpr std::string_view kBasic = "http://ns.adobe.com/xap/1.0/";

constexpr XmlName kOfSamples[] = {
    {kTiff, "Orientation"},      {kTiff, "ImageWidth"},          {kTiff, "ImageLength"},
    {kTiff, "BitsPerSample"},    {kTiff, "Compression"},         {kTiff, "PhotometricInterpretation"},
    {kTiff, "SamplesPerPixel"},  {kTiff, "PlanarConfiguration"}, {kTiff, "YCbCrSubSampling"},
    {kTiff, "YCbCrPositioning"}, {kExif, "PixelXDimension"},     {kExif, "PixelYDimension"},
    {kBasic, "Thumbnails"}};

bool DescribesSamples(const XmlName& name) {
  return std::find(std::begin(kOfSamples), std::end(kOfSamples), name) != std::end(kOfSamples);
}

/// A tag by what it is of a packet.
enum class Role { kOther, kRoot, kDescription, kProperty };

/// The tags of a packet with their roles. What lies deeper describes other things: sources, versions, ingredients.
class PacketTags {
 public:
  explicit PacketTags(std::string_view packet) : tags_(packet) {}

  std::optional<XmlTag> Next(Role& role) {
    auto tag = tags_.Next();
    role = Role::kOther;
    if (!tag) return tag;
    if (!root_depth_ && tag->name == XmlName{kRdf, "RDF"}) root_depth_ = tag->depth;
    if (!root_depth_ || tag->depth < *root_depth_) return tag;
    const std::size_t below = tag->depth - *root_depth_;
    if (below <= 2) role = below == 0 ? Role::kRoot : below == 1 ? Role::kDescription : Role::kProperty;
    if (role == Role::kRoot && tag->kind != XmlTag::Kind::kStart) root_depth_.reset();
    return tag;
  }
  [[nodiscard]] bool IsComplete() const { return tags_.IsComplete(); }

 private:
  XmlTags tags_;
  std::optional<std::size_t> root_depth_;
};

}  // namespace

void RemoveSampleDescription(std::string& packet) {
  std::vector<std::pair<std::size_t, std::size_t>> removed;
  PacketTags tags(packet);
  Role role = Role::kOther;
  std::size_t begin = 0;
  while (const auto tag = tags.Next(role)) {
    if (role == Role::kDescription) {
      for (const XmlAttribute& attribute : tag->attributes) {
        if (DescribesSamples(attribute.name)) removed.emplace_back(attribute.begin, attribute.end);
      }
    }
    if (role != Role::kProperty || !DescribesSamples(tag->name)) continue;
    if (tag->kind != XmlTag::Kind::kEnd) begin = tag->begin;
    if (tag->kind != XmlTag::Kind::kStart) removed.emplace_back(begin, tag->end);
  }
  std::string rest;
  std::size_t at = 0;
  for (const auto& [first, last] : removed) {
    rest.append(packet, at, first - at);
    at = last;
  }
  if (at == 0) return;
  rest.append(packet, at);
  packet = std::move(rest);
}

}  // namespace ScEng
