// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/TextPlaces.h"

#include <algorithm>
#include <array>
#include <exception>
#include <exiv2/exiv2.hpp>
#include <mutex>
#include <utility>

#include "Host/Files/Codecs/MetadataText.h"
#include "Host/Files/Codecs/Pictures/ExivLock.h"
#include "Host/Files/Codecs/Utf8.h"
#include "Host/Files/Codecs/XmpPacket.h"

namespace ScEng {
namespace {

constexpr std::array<const char*, 6> kImageTexts{"ImageDescription", "Artist",   "Copyright",
                                                 "Software",         "DateTime", "DocumentName"};
constexpr const char* kCommentKey = "Exif.Photo.UserComment";

struct TextRule {
  bool has_comments;
  std::size_t most_exif;
  std::size_t most_xmp;
};

TextRule GetRule(std::string_view format) {
  constexpr std::size_t kMost = std::size_t{1} << 30;
  return format == "jpeg" ? TextRule{true, kMostJpegExif, kMostJpegXmp} : TextRule{false, kMost, kMost};
}

std::string Trim(std::string text) {
  while (!text.empty() && (text.back() == '\0' || text.back() == ' ')) text.pop_back();
  return text;
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Whether every character has a number of 16 bits.
bool IsShortUnicode(std::string_view text) {
  return IsUtf8(text) &&
         std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0xF0; });
}

class TextPlacer {
 public:
  TextPlacer(const TextRule& rule, ImageMetadata& metadata) : rule_(rule), metadata_(metadata) {}

  void Run(std::vector<std::string>& notes) {
    DecodeExif(notes);
    packet_size_ = metadata_.xmp.size() + kEmptyPacketSize;
    for (const MetadataEntry& entry : metadata_.entries) Place(entry);
    if (is_exif_changed_) EncodeExif();
    if (!AddTexts(xmp_texts_, metadata_.xmp)) {
      for (const auto& text : xmp_texts_) LeaveOut(text.first);
    }
    metadata_.entries = std::move(comments_);
    if (!left_out_.empty()) {
      notes.push_back("the format cannot hold these entries of the metadata, which are left out: " + left_out_);
    }
  }

 private:
  void LeaveOut(const std::string& name) { left_out_ += (left_out_.empty() ? "" : ", ") + name; }

  void DecodeExif(std::vector<std::string>& notes) {
    if (metadata_.exif.empty()) return;
    try {
      order_ =
          Exiv2::ExifParser::decode(exif_, metadata_.exif.data(), static_cast<std::uint32_t>(metadata_.exif.size()));
    } catch (const std::exception&) {
      notes.emplace_back("the EXIF block is damaged and left out");
      exif_.clear();
      metadata_.exif.clear();
    }
  }

  void EncodeExif() {
    Exiv2::Blob block;
    Exiv2::ExifParser::encode(block, order_ == Exiv2::invalidByteOrder ? Exiv2::littleEndian : order_, exif_);
    metadata_.exif.assign(block.begin(), block.end());
  }

  void Place(const MetadataEntry& entry) {
    auto text = ToText(entry.value);
    if (!text) return LeaveOut(entry.name);
    if (text->empty()) return;
    const bool is_comment = entry.name == "Comment";
    if (is_comment && rule_.has_comments) {
      comments_.push_back({entry.name, std::move(*text)});
    } else if (!PutIntoExif(entry.name, *text)) {
      PutIntoXmp(entry.name, *text);
    }
  }

  /// False where the block has no tag for it, or another text there.
  bool PutIntoExif(const std::string& name, const std::string& text) {
    const bool is_comment = name == "Comment";
    if (!is_comment && std::find(kImageTexts.begin(), kImageTexts.end(), name) == kImageTexts.end()) return false;
    const std::string key = is_comment ? kCommentKey : "Exif.Image." + name;
    const auto found = exif_.findKey(Exiv2::ExifKey(key));
    if (found != exif_.end()) return !is_comment && Trim(found->toString()) == Trim(text);
    // A character takes up to two bytes, and the first entry of a directory makes that directory.
    constexpr std::size_t kDirectory = 64;
    const std::size_t size = 2 * text.size() + kDirectory;
    if (size > rule_.most_exif || metadata_.exif.size() + added_exif_ > rule_.most_exif - size) return false;
    if (is_comment) {
      if (!IsShortUnicode(text)) return false;
      exif_[key] = (IsAscii(text) ? "charset=Ascii " : "charset=Unicode ") + text;
    } else {
      exif_[key] = text;
    }
    added_exif_ += size;
    is_exif_changed_ = true;
    return true;
  }

  void PutIntoXmp(const std::string& name, const std::string& text) {
    std::pair<std::string, std::string> named(name, IsUtf8(text) ? text : FromLatin1(text));
    const std::size_t size = BoundSize(named);
    if (size > rule_.most_xmp || packet_size_ > rule_.most_xmp - size) return LeaveOut(name);
    packet_size_ += size;
    xmp_texts_.push_back(std::move(named));
  }

  TextRule rule_;
  ImageMetadata& metadata_;
  Exiv2::ExifData exif_;
  Exiv2::ByteOrder order_ = Exiv2::littleEndian;
  bool is_exif_changed_ = false;
  std::size_t added_exif_ = 0;
  std::size_t packet_size_ = 0;
  std::vector<MetadataEntry> comments_;
  NamedTexts xmp_texts_;
  std::string left_out_;
};

}  // namespace

void PlaceTexts(std::string_view format, ImageMetadata& metadata, std::vector<std::string>& notes) {
  if (metadata.entries.empty() && metadata.exif.empty()) return;
  const std::lock_guard lock(GetExivMutex());
  TextPlacer(GetRule(format), metadata).Run(notes);
}

}  // namespace ScEng
