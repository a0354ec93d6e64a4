// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "Host/Files/Codecs/ColorProfile.h"
#include "Host/Files/Codecs/MetadataText.h"
#include "Host/Files/Codecs/Png/PngMetadata.h"
#include "Host/Files/Codecs/Utf8.h"

namespace ScEng::Png {
namespace {

constexpr std::size_t kMostChunkBytes = std::numeric_limits<std::int32_t>::max();

void AppendNumber(Bytes& bytes, std::uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<std::uint8_t>(number >> static_cast<unsigned>(shift)));
  }
}

void Append(Bytes& bytes, std::string_view text) { bytes.insert(bytes.end(), text.begin(), text.end()); }

/// Keywords are 1 to 79 printable characters of Latin-1 without spaces at the ends or side by side.
bool IsKeyword(std::string_view word) {
  const bool is_printable = std::all_of(word.begin(), word.end(), [](char c) {
    const auto code = static_cast<unsigned char>(c);
    return (code >= 0x20 && code < 0x7F) || code >= 0xA1;
  });
  return is_printable && !word.empty() && word.size() <= 79 && word.front() != ' ' && word.back() != ' ' &&
         word.find("  ") == std::string_view::npos;
}

class ChunkMaker {
 public:
  ChunkMaker(const WritePlan& plan, std::vector<std::string>& notes)
      : plan_(plan), metadata_(plan.metadata), notes_(notes) {}

  std::vector<Chunk> Make() {
    AddProfile();
    AddResolution();
    if (!metadata_.exif.empty()) Add("eXIf", metadata_.exif);
    if (!metadata_.xmp.empty()) AddInternationalText(kXmpKeyword, metadata_.xmp);
    if (!metadata_.iptc.empty()) {
      AddPackedText("Raw profile type iptc", EncodeRawProfile("iptc", WrapIptc(metadata_.iptc)));
    }
    for (const MetadataEntry& entry : metadata_.entries) AddEntry(entry);
    if (metadata_.georeference) LeaveOut("coordinate system");
    if (metadata_.nodata) LeaveOut("nodata value");
    if (!metadata_.value_unit.empty()) LeaveOut("unit of values");
    if (!left_out_.empty())
      notes_.push_back("PNG cannot hold these entries of the metadata, which are left out: " + left_out_);
    return std::move(chunks_);
  }

 private:
  void LeaveOut(const std::string& what) { notes_.push_back("PNG holds no " + what + ", which is left out"); }

  void Add(const char* type, Bytes data) {
    if (data.size() > kMostChunkBytes) {
      left_out_ += (left_out_.empty() ? "" : ", ") + std::string(type);
      return;
    }
    chunks_.push_back({type, std::move(data)});
  }

  void AddProfile() {
    const Bytes profile = SuitProfile(metadata_.icc, static_cast<int>(plan_.channels.size()), notes_);
    if (profile.empty()) return;
    Bytes data;
    Append(data, std::string_view("ICC profile\0\0", 13));
    const Bytes packed = Deflate(profile);
    data.insert(data.end(), packed.begin(), packed.end());
    Add("iCCP", std::move(data));
  }

  void AddResolution() {
    if (!metadata_.resolution) return;
    constexpr double kCentimetersInMeter = 100.0;
    constexpr double kMetersInInch = 0.0254;
    constexpr double kRatioSteps = 10000.0;
    const bool is_ratio = metadata_.resolution_unit.empty();
    double factor = metadata_.resolution_unit == "cm" ? kCentimetersInMeter : 1.0 / kMetersInInch;
    if (is_ratio) {
      const bool is_whole = std::all_of(metadata_.resolution->begin(), metadata_.resolution->end(),
                                        [](double number) { return number == std::floor(number); });
      factor = is_whole ? 1.0 : kRatioSteps;
    }
    Bytes data;
    for (const double number : *metadata_.resolution) {
      const double stored = std::round(number * factor);
      if (!(stored >= 1.0 && stored <= std::numeric_limits<std::int32_t>::max())) return LeaveOut("such resolution");
      AppendNumber(data, static_cast<std::uint32_t>(stored));
    }
    data.push_back(is_ratio ? 0 : 1);
    Add("pHYs", std::move(data));
  }

  void AddEntry(const MetadataEntry& entry) {
    const auto* opaque = std::get_if<OpaqueValue>(&entry.value);
    const bool is_written = opaque != nullptr ? AddOpaque(*opaque) : AddText(entry);
    if (!is_written) left_out_ += (left_out_.empty() ? "" : ", ") + entry.name;
  }

  bool AddOpaque(const OpaqueValue& value) {
    const std::string_view prefix = kOpaquePrefix;
    if (!std::string_view(value.type).starts_with(prefix)) return false;
    const auto* row = std::find_if(std::begin(kOpaqueChunks), std::end(kOpaqueChunks), [&](const OpaqueRow& known) {
      return value.type.substr(prefix.size()) == known.type;
    });
    if (row == std::end(kOpaqueChunks) || (row->size != 0 && value.bytes.size() != row->size)) return false;
    const bool is_there =
        std::any_of(chunks_.begin(), chunks_.end(), [&](const Chunk& chunk) { return chunk.type == row->type; });
    if (!is_there) Add(row->type, value.bytes);
    return !is_there;
  }

  bool AddText(const MetadataEntry& entry) {
    const auto* row = std::find_if(std::begin(kKeywords), std::end(kKeywords),
                                   [&](const KeywordRow& known) { return entry.name == known.name; });
    const auto keyword = ToLatin1(row == std::end(kKeywords) ? entry.name : row->keyword);
    if (!keyword || !IsKeyword(*keyword)) return false;
    std::string text = ToText(entry.value).value_or("");
    text.resize(std::min(text.find('\0'), text.size()));
    if (const auto latin1 = ToLatin1(text)) {
      AddLatin1Text(*keyword, *latin1);
    } else if (IsUtf8(text)) {
      AddInternationalText(*keyword, text);
    } else {
      // Bytes in an unknown encoding stay as they are.
      AddLatin1Text(*keyword, text);
    }
    return true;
  }

  void AddLatin1Text(std::string_view keyword, std::string_view text) {
    Bytes data;
    Append(data, keyword);
    data.push_back(0);
    Append(data, text);
    Add("tEXt", std::move(data));
  }

  void AddPackedText(std::string_view keyword, std::string_view text) {
    Bytes data;
    Append(data, keyword);
    data.insert(data.end(), {0, 0});
    const Bytes packed = Deflate({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    data.insert(data.end(), packed.begin(), packed.end());
    Add("zTXt", std::move(data));
  }

  void AddInternationalText(std::string_view keyword, std::string_view text) {
    Bytes data;
    Append(data, keyword);
    // Not packed, of no language, and without a translated keyword.
    data.insert(data.end(), {0, 0, 0, 0, 0});
    Append(data, text);
    Add("iTXt", std::move(data));
  }

  const WritePlan& plan_;
  const ImageMetadata& metadata_;
  std::vector<std::string>& notes_;
  std::vector<Chunk> chunks_;
  std::string left_out_;
};

}  // namespace

std::vector<Chunk> MakeChunks(const WritePlan& plan, std::vector<std::string>& notes) {
  return ChunkMaker(plan, notes).Make();
}

}  // namespace ScEng::Png
