// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/XmpPacket.h"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <set>
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

// Texts that no common namespace has a name for.
constexpr std::string_view kTextSpace = "urn:value:text/1.0/";

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// A property's name from any: "Creation Time" becomes "CreationTime".
std::string MakePropertyName(std::string_view name) {
  std::string made;
  bool is_start = true;
  for (char c : name) {
    const bool is_digit = c >= '0' && c <= '9';
    if (IsLetter(c) && is_start && c >= 'a' && !made.empty()) c = static_cast<char>(c - 'a' + 'A');
    is_start = !IsLetter(c) && !is_digit && c != '_';
    if (is_start) continue;
    if (made.empty() && is_digit) made = "_";
    made += c;
  }
  return made.empty() ? "Text" : made;
}

std::string Escape(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&': escaped += "&amp;"; break;
      case '<': escaped += "&lt;"; break;
      case '>': escaped += "&gt;"; break;
      case '\r': escaped += "&#xD;"; break;
      case '\t':
      case '\n': escaped += c; break;
      // XML has no other control characters.
      default: escaped += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
    }
  }
  return escaped;
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

/// What has to be known of a packet that something is added to.
struct Outline {
  /// Where new descriptions go; nothing where the packet is no proper one.
  std::optional<std::size_t> end_of_root;
  /// Whom the packet describes, as it is written with its quotes. All descriptions have to agree.
  std::string about = "''";
  /// Names that properties of texts have already.
  std::set<std::string, std::less<>> names;
};

Outline ReadOutline(std::string_view packet) {
  Outline outline;
  PacketTags tags(packet);
  Role role = Role::kOther;
  std::optional<std::size_t> end;
  while (const auto tag = tags.Next(role)) {
    if (role == Role::kRoot && tag->kind == XmlTag::Kind::kEnd) end = tag->begin;
    if (role == Role::kProperty && tag->name.space == kTextSpace) outline.names.emplace(tag->name.local);
    if (role != Role::kDescription) continue;
    for (const XmlAttribute& attribute : tag->attributes) {
      if (attribute.name == XmlName{kRdf, "about"}) {
        const char quote = packet[attribute.end - 1];
        outline.about = quote + std::string(attribute.value) + quote;
      }
      if (attribute.name.space == kTextSpace) outline.names.emplace(attribute.name.local);
    }
  }
  if (tags.IsComplete()) outline.end_of_root = end;
  return outline;
}

/// Texts by the names of their properties, in the order of the first of each.
std::vector<std::pair<std::string, std::vector<std::string>>> GroupTexts(const NamedTexts& texts) {
  std::vector<std::pair<std::string, std::vector<std::string>>> groups;
  std::map<std::string, std::size_t> places;
  for (const auto& [name, text] : texts) {
    const auto [place, is_new] = places.try_emplace(MakePropertyName(name), groups.size());
    if (is_new) groups.push_back({place->first, {}});
    groups[place->second].second.push_back(Escape(text));
  }
  return groups;
}

std::string MakeProperty(const std::string& name, const std::vector<std::string>& texts) {
  const std::string start = "<text:" + name + ">";
  const std::string end = "</text:" + name + ">";
  if (texts.size() == 1) return start + texts.front() + end;
  std::string list;
  for (const std::string& text : texts) list += "<rdf:li>" + text + "</rdf:li>";
  return start + "<rdf:Seq>" + list + "</rdf:Seq>" + end;
}

std::string MakeEmptyPacket() {
  return "<?xpacket begin='\xEF\xBB\xBF' id='W5M0MpCehiHzreSzNTczkc9d'?>\n<x:xmpmeta xmlns:x='adobe:ns:meta/'>"
         "<rdf:RDF xmlns:rdf='" +
         std::string(kRdf) + "'></rdf:RDF></x:xmpmeta>\n<?xpacket end='w'?>";
}

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

bool AddTexts(const NamedTexts& texts, std::string& packet) {
  if (texts.empty()) return true;
  std::string whole = packet.empty() ? MakeEmptyPacket() : packet;
  Outline outline = ReadOutline(whole);
  if (!outline.end_of_root) return false;
  std::string description = "<rdf:Description xmlns:rdf='" + std::string(kRdf) + "' rdf:about=" + outline.about +
                            " xmlns:text='" + std::string(kTextSpace) + "'>";
  for (const auto& [name, values] : GroupTexts(texts)) {
    std::string free_name = name;
    for (int number = 2; !outline.names.insert(free_name).second; ++number) free_name = name + std::to_string(number);
    description += MakeProperty(free_name, values);
  }
  whole.insert(*outline.end_of_root, description + "</rdf:Description>");
  packet = std::move(whole);
  return true;
}

std::size_t BoundSize(const std::pair<std::string, std::string>& text) {
  constexpr std::size_t kTags = 80;
  return kTags + 2 * text.first.size() + Escape(text.second).size();
}

}  // namespace ScEng
