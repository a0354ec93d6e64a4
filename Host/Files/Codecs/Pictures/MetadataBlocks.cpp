// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/MetadataBlocks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <exiv2/exiv2.hpp>
#include <mutex>
#include <utility>

#include "Host/Files/Codecs/Pictures/ExivLock.h"
#include "Host/Files/Codecs/Pictures/JpegComments.h"
#include "Host/Files/Codecs/XmpPacket.h"

namespace ScEng {
namespace {

constexpr std::array<const char*, 6> kTexts{"ImageDescription", "Artist",   "Copyright",
                                            "Software",         "DateTime", "DocumentName"};

bool DescribesSamples(const Exiv2::Exifdatum& datum) {
  const std::string group = datum.groupName();
  if (group == "Image") return IsStructuralTag(datum.tag());
  // Sizes in pixels of the picture as it was stored.
  if (group == "Photo") return datum.tag() == 0xA002 || datum.tag() == 0xA003;
  return group == "Thumbnail" || group.rfind("SubImage", 0) == 0 || group.rfind("SubThumb", 0) == 0 ||
         (group.rfind("Image", 0) == 0 && group.size() == 6);
}

void RemoveStructure(Exiv2::ExifData& exif) {
  for (auto datum = exif.begin(); datum != exif.end();) {
    datum = DescribesSamples(*datum) ? exif.erase(datum) : std::next(datum);
  }
}

// Exiv2 0.28 names whole numbers by their size, hides the bytes of its buffers, and always reads HEIF.
#if EXIV2_TEST_VERSION(0, 28, 0)
long ToNumber(const Exiv2::Exifdatum& datum) { return static_cast<long>(datum.toInt64()); }
std::vector<std::uint8_t> ToBytes(const Exiv2::DataBuf& buffer) {
  return {buffer.c_data(), buffer.c_data() + buffer.size()};
}
const Exiv2::DataBuf& ProfileOf(const Exiv2::Image& image) { return image.iccProfile(); }
void EnableHeif() {}
#else
long ToNumber(const Exiv2::Exifdatum& datum) { return datum.toLong(); }
std::vector<std::uint8_t> ToBytes(const Exiv2::DataBuf& buffer) {
  return {buffer.pData_, buffer.pData_ + buffer.size_};
}
const Exiv2::DataBuf& ProfileOf(Exiv2::Image& image) { return *image.iccProfile(); }
void EnableHeif() { Exiv2::enableBMFF(true); }
#endif

std::vector<std::uint8_t> Encode(Exiv2::ExifData& exif, Exiv2::ByteOrder order) {
  Exiv2::Blob block;
  Exiv2::ExifParser::encode(block, order, exif);
  return {block.begin(), block.end()};
}

void ReadTexts(const Exiv2::ExifData& exif, ImageMetadata& metadata) {
  for (const char* name : kTexts) {
    const auto found = exif.findKey(Exiv2::ExifKey(std::string("Exif.Image.") + name));
    if (found == exif.end() || metadata.Find(name) != nullptr) continue;
    std::string text = found->toString();
    while (!text.empty() && (text.back() == '\0' || text.back() == ' ')) text.pop_back();
    if (!text.empty()) metadata.entries.push_back({name, text});
  }
}

void ReadResolution(const Exiv2::ExifData& exif, ImageMetadata& metadata) {
  const auto x = exif.findKey(Exiv2::ExifKey("Exif.Image.XResolution"));
  const auto y = exif.findKey(Exiv2::ExifKey("Exif.Image.YResolution"));
  const auto unit = exif.findKey(Exiv2::ExifKey("Exif.Image.ResolutionUnit"));
  if (x == exif.end() || y == exif.end() || x->count() != 1 || y->count() != 1) return;
  const std::array<double, 2> numbers{x->toFloat(), y->toFloat()};
  if (!std::all_of(numbers.begin(), numbers.end(), [](double n) { return std::isfinite(n) && n > 0.0; })) return;
  metadata.resolution = numbers;
  const long code = unit == exif.end() ? 2 : ToNumber(*unit);
  metadata.resolution_unit = code == 2 ? "in" : code == 3 ? "cm" : "";
}

/// The orientation, which is set to upright because the rows are turned when they are read.
int TakeOrientation(Exiv2::ExifData& exif) {
  const auto found = exif.findKey(Exiv2::ExifKey("Exif.Image.Orientation"));
  if (found == exif.end() || found->count() != 1) return 1;
  const long orientation = ToNumber(*found);
  exif["Exif.Image.Orientation"] = std::uint16_t{1};
  return orientation >= 1 && orientation <= 8 ? static_cast<int>(orientation) : 1;
}

int ReadExif(Exiv2::Image& image, bool reads_all, ImageMetadata& metadata) {
  Exiv2::ExifData& exif = image.exifData();
  const int orientation = TakeOrientation(exif);
  RemoveStructure(exif);
  if (exif.empty()) return orientation;
  if (reads_all) {
    if (!metadata.resolution) ReadResolution(exif, metadata);
    ReadTexts(exif, metadata);
  }
  const Exiv2::ByteOrder order = image.byteOrder();
  metadata.exif = Encode(exif, order == Exiv2::invalidByteOrder ? Exiv2::littleEndian : order);
  return orientation;
}

void ReadOtherBlocks(const std::filesystem::path& file, Exiv2::Image& image, ImageMetadata& metadata) {
  if (!image.iptcData().empty()) {
    metadata.iptc = ToBytes(Exiv2::IptcParser::encode(image.iptcData()));
  }
  // The packet as it stands in the file rather than one made anew.
  image.writeXmpFromPacket(true);
  metadata.xmp = image.xmpPacket();
  RemoveSampleDescription(metadata.xmp);
  if (image.iccProfileDefined()) metadata.icc = ToBytes(ProfileOf(image));
  const bool is_jpeg = image.mimeType() == "image/jpeg";
  const std::vector<std::string> comments = is_jpeg ? ListJpegComments(file) : std::vector{image.comment()};
  for (const std::string& comment : comments) {
    if (!comment.empty()) metadata.entries.push_back({"Comment", comment});
  }
}

/// Numbers as EXIF keeps them; a resolution needs no more than three digits after the point.
Exiv2::URational ToRational(double number) {
  constexpr double kParts = 1000.0;
  const double most = 4294967295.0 / kParts;
  if (number == std::floor(number)) return {static_cast<std::uint32_t>(std::min(number, 4294967295.0)), 1};
  return {static_cast<std::uint32_t>(std::floor(std::min(number, most) * kParts + 0.5)), 1000};
}

void SetResolution(const ImageMetadata& metadata, Exiv2::ExifData& exif) {
  if (!metadata.resolution) return;
  exif["Exif.Image.XResolution"] = ToRational((*metadata.resolution)[0]);
  exif["Exif.Image.YResolution"] = ToRational((*metadata.resolution)[1]);
  const int unit = metadata.resolution_unit == "in" ? 2 : metadata.resolution_unit == "cm" ? 3 : 1;
  exif["Exif.Image.ResolutionUnit"] = static_cast<std::uint16_t>(unit);
}

}  // namespace

bool IsStructuralTag(std::uint16_t tag) {
  constexpr std::array<std::uint16_t, 52> kTags{254, 255, 256, 257, 258, 259, 262, 263, 264, 265, 266,   273,   277,
                                                278, 279, 280, 281, 284, 288, 289, 290, 291, 292, 293,   297,   301,
                                                317, 318, 319, 320, 321, 322, 323, 324, 325, 330, 332,   338,   339,
                                                340, 341, 347, 513, 514, 529, 530, 531, 532, 700, 33723, 34377, 34675};
  constexpr std::array<std::uint16_t, 6> kGroundTags{33550, 33922, 34264, 34735, 42112, 42113};
  return std::find(kTags.begin(), kTags.end(), tag) != kTags.end() || (tag >= 34736 && tag <= 34737) ||
         std::find(kGroundTags.begin(), kGroundTags.end(), tag) != kGroundTags.end();
}

std::mutex& GetExivMutex() {
  static std::mutex& mutex = *new std::mutex;
  static const bool is_prepared = [] {
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    Exiv2::XmpParser::initialize();
    EnableHeif();
    return true;
  }();
  static_cast<void>(is_prepared);
  return mutex;
}

int ReadBlocks(const std::filesystem::path& file, bool reads_all, ImageMetadata& metadata,
               std::vector<std::string>& notes) {
  const std::lock_guard lock(GetExivMutex());
  try {
    const auto image = Exiv2::ImageFactory::open(file.string());
    image->readMetadata();
    if (reads_all) ReadOtherBlocks(file, *image, metadata);
    return ReadExif(*image, reads_all, metadata);
  } catch (const std::exception&) {
    notes.emplace_back("its metadata are damaged and left out");
  }
  return 1;
}

std::vector<std::uint8_t> MakeExifBlock(const ImageMetadata& metadata, bool for_resolution) {
  const std::lock_guard lock(GetExivMutex());
  Exiv2::ExifData exif;
  Exiv2::ByteOrder order = Exiv2::littleEndian;
  if (!metadata.exif.empty()) {
    order = Exiv2::ExifParser::decode(exif, metadata.exif.data(), static_cast<std::uint32_t>(metadata.exif.size()));
    RemoveStructure(exif);
  }
  if (exif.empty() && !(for_resolution && metadata.resolution)) return {};
  SetResolution(metadata, exif);
  return Encode(exif, order == Exiv2::invalidByteOrder ? Exiv2::littleEndian : order);
}

std::vector<std::uint8_t> FrameIptc(const std::vector<std::uint8_t>& iptc) {
  constexpr std::string_view kFrame{
      "Photoshop 3.0\0"
      "8BIM\x04\x04\0\0",
      22};
  std::vector<std::uint8_t> framed(kFrame.begin(), kFrame.end());
  for (int shift = 24; shift >= 0; shift -= 8) framed.push_back(static_cast<std::uint8_t>(iptc.size() >> shift));
  framed.insert(framed.end(), iptc.begin(), iptc.end());
  if (iptc.size() % 2 != 0) framed.push_back(0);
  return framed;
}

}  // namespace ScEng
