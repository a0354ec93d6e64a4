// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>
#include <string_view>

#include "Host/Files/Codecs/ExifBlock.h"
#include "Host/Files/Codecs/Png/PngMetadata.h"
#include "Host/Files/Codecs/Utf8.h"
#include "Host/Files/Codecs/XmpPacket.h"

namespace ScEng::Png {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kExifMark = "Exif\0\0"sv;
constexpr std::string_view kXmpMark = "http://ns.adobe.com/xap/1.0/\0"sv;
constexpr std::string_view kRawProfile = "Raw profile type ";
constexpr std::size_t kMostUnpacked = std::size_t{64} << 20;

std::string_view AsText(const Bytes& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }
std::span<const std::uint8_t> AsBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
Bytes ToBytes(std::string_view text) { return {text.begin(), text.end()}; }

class MetadataReader {
 public:
  MetadataReader(FilePart& part, std::vector<std::string>& notes)
      : part_(part), metadata_(part.metadata), notes_(notes) {}

  void Read(const Chunk& chunk) {
    if (!Take(chunk)) AddDamage(chunk.type);
  }

 private:
  void AddDamage(const std::string& type) {
    const std::string note = "its chunk \"" + type + "\" is damaged or too large, and is ignored";
    if (std::find(notes_.begin(), notes_.end(), note) == notes_.end()) notes_.push_back(note);
  }

  /// False where the content makes no sense.
  bool Take(const Chunk& chunk) {
    if (chunk.type == "tEXt") return TakeText(AsText(chunk.data));
    if (chunk.type == "zTXt") return TakePackedText(AsText(chunk.data));
    if (chunk.type == "iTXt") return TakeInternationalText(AsText(chunk.data));
    if (chunk.type == "eXIf") return TakeExif(AsText(chunk.data));
    if (chunk.type == "iCCP") return TakeProfile(AsText(chunk.data));
    if (chunk.type == "pHYs") return TakeResolution(chunk.data);
    return TakeOpaque(chunk);
  }

  /// What stands before the first NUL, which is taken off too; nothing where there is none.
  static std::optional<std::string_view> TakeWord(std::string_view& rest) {
    const std::size_t end = rest.find('\0');
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view word = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    return word;
  }

  std::optional<Bytes> Unpack(std::string_view packed) {
    auto bytes = Inflate(AsBytes(packed), kMostUnpacked - unpacked_);
    if (bytes) unpacked_ += bytes->size();
    return bytes;
  }

  bool TakeText(std::string_view rest) {
    const auto keyword = TakeWord(rest);
    return keyword && AddText(FromLatin1(*keyword), rest, false);
  }

  bool TakePackedText(std::string_view rest) {
    const auto keyword = TakeWord(rest);
    if (!keyword || rest.empty() || rest[0] != 0) return false;
    const auto text = Unpack(rest.substr(1));
    return text && AddText(FromLatin1(*keyword), AsText(*text), false);
  }

  bool TakeInternationalText(std::string_view rest) {
    const auto keyword = TakeWord(rest);
    if (!keyword || rest.size() < 2) return false;
    const bool is_packed = rest[0] == 1;
    rest.remove_prefix(2);
    if (!TakeWord(rest) || !TakeWord(rest)) return false;
    if (!is_packed) return AddText(FromLatin1(*keyword), rest, true);
    const auto text = Unpack(rest);
    return text && AddText(FromLatin1(*keyword), AsText(*text), true);
  }

  bool AddText(const std::string& keyword, std::string_view text, bool is_utf8) {
    if (keyword.empty()) return false;
    if (keyword == kXmpKeyword) {
      metadata_.xmp = text;
      return true;
    }
    if (keyword.starts_with(kRawProfile)) return TakeRawProfile(keyword.substr(kRawProfile.size()), text);
    const auto* row = std::find_if(std::begin(kKeywords), std::end(kKeywords),
                                   [&](const KeywordRow& entry) { return keyword == entry.keyword; });
    // Some programs write UTF-8 where it does not belong and the other way round.
    const std::string value = is_utf8 && IsUtf8(text) ? std::string(text) : FromLatin1(text);
    metadata_.entries.push_back({row == std::end(kKeywords) ? keyword : row->name, value});
    return true;
  }

  /// A profile as programs wrote it before there were chunks for it. Where the file has the chunk too, the chunk
  /// counts.
  bool TakeRawProfile(std::string_view name, std::string_view text) {
    const auto profile = DecodeRawProfile(text);
    if (!profile) return false;
    const std::string_view content = AsText(*profile);
    if (name == "exif" || (name == "APP1" && content.starts_with(kExifMark))) {
      return !metadata_.exif.empty() || TakeExif(content);
    }
    if (name == "APP1" && content.starts_with(kXmpMark)) return TakeXmp(content.substr(kXmpMark.size()));
    if (name == "xmp") return TakeXmp(content);
    if (name == "iptc" || name == "8bim") {
      if (metadata_.iptc.empty()) metadata_.iptc = FindIptc(*profile);
      return true;
    }
    if ((name == "icc" || name == "icm") && metadata_.icc.empty()) metadata_.icc = *profile;
    return true;
  }

  bool TakeXmp(std::string_view xmp) {
    if (metadata_.xmp.empty()) metadata_.xmp = xmp;
    return true;
  }

  bool TakeExif(std::string_view block) {
    if (block.starts_with(kExifMark)) block.remove_prefix(kExifMark.size());
    Bytes exif = ToBytes(block);
    if (!ExifBlock(exif).IsValid()) return false;
    part_.orientation = TakeOrientation(exif);
    RemoveSampleDescription(exif);
    metadata_.exif = std::move(exif);
    return true;
  }

  bool TakeProfile(std::string_view rest) {
    if (!TakeWord(rest) || rest.empty() || rest[0] != 0) return false;
    auto profile = Unpack(rest.substr(1));
    if (!profile || profile->empty()) return false;
    metadata_.icc = std::move(*profile);
    return true;
  }

  bool TakeResolution(const Bytes& data) {
    if (data.size() != 9 || data[8] > 1) return false;
    const auto number = [&](std::size_t at) {
      return static_cast<double>(data[at]) * 16777216.0 + data[at + 1] * 65536.0 + data[at + 2] * 256.0 + data[at + 3];
    };
    if (number(0) == 0.0 || number(4) == 0.0) return false;
    constexpr double kCentimetersInMeter = 100.0;
    const double unit = data[8] == 1 ? kCentimetersInMeter : 1.0;
    metadata_.resolution = {number(0) / unit, number(4) / unit};
    metadata_.resolution_unit = data[8] == 1 ? "cm" : "";
    return true;
  }

  bool TakeOpaque(const Chunk& chunk) {
    const auto* row = std::find_if(std::begin(kOpaqueChunks), std::end(kOpaqueChunks),
                                   [&](const OpaqueRow& entry) { return chunk.type == entry.type; });
    if (row == std::end(kOpaqueChunks) || (row->size != 0 && chunk.data.size() != row->size)) return false;
    if (metadata_.Find(chunk.type) != nullptr) return false;
    metadata_.entries.push_back({chunk.type, OpaqueValue{kOpaquePrefix + chunk.type, chunk.data}});
    return true;
  }

  FilePart& part_;
  ImageMetadata& metadata_;
  std::vector<std::string>& notes_;
  std::size_t unpacked_ = 0;
};

/// The resolution of a file whose EXIF block alone tells it.
void TakeExifResolution(ImageMetadata& metadata) {
  constexpr unsigned kResolutionX = 282;
  constexpr unsigned kResolutionY = 283;
  constexpr unsigned kUnit = 296;
  const ExifBlock exif(metadata.exif);
  const auto get = [&](unsigned tag) { return exif.GetNumbers(ExifBlock::Directory::kImage, tag); };
  const std::vector<double> x = get(kResolutionX);
  const std::vector<double> y = get(kResolutionY);
  const std::vector<double> unit = get(kUnit);
  if (x.size() != 1 || y.size() != 1 || !(x[0] > 0.0 && y[0] > 0.0)) return;
  metadata.resolution = {x[0], y[0]};
  // Inches where the block does not say.
  const double code = unit.size() == 1 ? unit[0] : 2.0;
  metadata.resolution_unit = code == 2.0 ? "in" : code == 3.0 ? "cm" : "";
}

}  // namespace

void ReadMetadata(const std::vector<Chunk>& chunks, FilePart& part, std::vector<std::string>& notes) {
  MetadataReader reader(part, notes);
  for (const Chunk& chunk : chunks) reader.Read(chunk);
  if (!part.metadata.resolution) TakeExifResolution(part.metadata);
  RemoveSampleDescription(part.metadata.xmp);
}

}  // namespace ScEng::Png
