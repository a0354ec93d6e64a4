// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/CodecTable.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <limits>
#include <map>
#include <mutex>

#include "Host/Util/HostModule.h"

namespace ScEng {
namespace {

constexpr CodecRow kCodecs[] = {
    {"png", "HostCodecPng", ""},
    {"exr", "HostCodecExr", ""},
    {"pictures", "HostCodecPictures", ""},
    {"rasters", "HostCodecRasters", "libgdal32 or libgdal36"},
};

using enum StoredType;
constexpr StoredType kBytes[] = {kUint8};
constexpr StoredType kUpTo16[] = {kUint16, kUint8};
constexpr StoredType kFloats[] = {kFloat};
constexpr StoredType kFloatAndHalf[] = {kFloat, kHalf};
constexpr StoredType kOfTiff[] = {kFloat, kHalf, kUint16, kInt16, kUint8};
constexpr StoredType kOfRasters[] = {kFloat, kUint16, kInt16, kUint8};

constexpr FormatMetadata kNothing{};
constexpr FormatMetadata kOfPng{
    .exif = true, .iptc = true, .xmp = true, .icc = true, .resolution = true, .texts = true};
constexpr FormatMetadata kOfExr{.xmp = true, .resolution = true, .texts = true, .attributes = true};
constexpr FormatMetadata kBlocks{
    .exif = true, .iptc = true, .xmp = true, .icc = true, .resolution = true, .texts = true};
constexpr FormatMetadata kOfWebp{.exif = true, .xmp = true, .icc = true, .resolution = true, .texts = true};
constexpr FormatMetadata kOfGeoTiff{
    .xmp = true, .icc = true, .resolution = true, .texts = true, .georeference = true, .nodata = true};
constexpr FormatMetadata kOfGrid{.georeference = true, .nodata = true};

// What is written comes first, what is only read has no types.
// Eight bits of a number and an exponent of at most 127.
constexpr float kMostShared = 0x1.FEp126F;

constexpr FormatRow kFormats[] = {
    {"png", "PNG", "png", ".png", true, kUpTo16, 4, true, kOfPng, Pairs::kOpacity},
    {"openexr", "OpenEXR", "exr", ".exr", true, kFloatAndHalf, 4, true, kOfExr, Pairs::kPlain, true, true},
    {"geotiff", "GeoTIFF and COG", "rasters", ".tif,.tiff", true, kOfRasters, 4, true, kOfGeoTiff, Pairs::kPlain},
    {"tiff", "TIFF", "pictures", ".tif,.tiff", true, kOfTiff, 4, true, kBlocks, Pairs::kPlain},
    {"jpeg", "JPEG", "pictures", ".jpg,.jpeg,.jpe", true, kBytes, 3, false, kBlocks},
    {"hdr", "Radiance HDR", "pictures", ".hdr,.rgbe", true, kFloats, 3, false, kNothing, Pairs::kNone, false, false,
     kMostShared},
    {"bmp", "BMP", "pictures", ".bmp", true, kBytes, 4, true, kNothing},
    {"targa", "Targa", "pictures", ".tga", true, kBytes, 4, true, kNothing},
    {"pnm", "PNM", "pictures", ".ppm,.pgm,.pnm", true, kUpTo16, 3, false, kNothing},
    {"webp", "WebP", "pictures", ".webp", true, kBytes, 4, true, kOfWebp},
    {"jpeg2000", "JPEG 2000", "pictures", ".jp2,.j2k", true, kUpTo16, 4, true, kBlocks},
    {"sgi", "SGI", "pictures", ".sgi,.rgb", true, kUpTo16, 4, true, kNothing},
    {"dpx", "DPX", "pictures", ".dpx", true, kUpTo16, 4, true, kNothing},
    {"fits", "FITS", "pictures", ".fits,.fit", false, {}, 0, false, kNothing},
    {"gif", "GIF", "pictures", ".gif", false, {}, 0, false, kNothing},
    {"psd", "PSD", "pictures", ".psd", false, {}, 0, false, kNothing},
    {"cineon", "Cineon", "pictures", ".cin", false, {}, 0, false, kNothing},
    {"ico", "ICO", "pictures", ".ico", false, {}, 0, false, kNothing},
    {"iff", "IFF", "pictures", ".iff", false, {}, 0, false, kNothing},
    {"rla", "RLA", "pictures", ".rla", false, {}, 0, false, kNothing},
    {"softimage", "Softimage PIC", "pictures", ".pic", false, {}, 0, false, kNothing},
    {"heif", "HEIF and AVIF", "pictures", ".heic,.heif,.avif", false, {}, 0, false, kNothing},
    {"ascii-grid", "Esri ASCII grid", "rasters", ".asc", true, kFloats, 1, false, kOfGrid},
    {"ehdr", "Esri BIL", "rasters", ".bil", false, {}, 0, false, kNothing},
    {"hgt", "SRTM HGT", "rasters", ".hgt", false, {}, 0, false, kNothing},
    {"vrt", "VRT", "rasters", ".vrt", false, {}, 0, false, kNothing},
};

// ---- Recognition ----

using Bytes = std::span<const unsigned char>;

bool StartsWith(Bytes bytes, std::string_view start, std::size_t at = 0) {
  return bytes.size() >= at + start.size() && std::memcmp(bytes.data() + at, start.data(), start.size()) == 0;
}

/// First bytes, and what they mean. A format that is not in the table of formats has a codec only.
struct Signature {
  std::string_view bytes;
  std::size_t at;
  const char* format;
};

using namespace std::string_view_literals;

constexpr Signature kSignatures[] = {
    {"\x89PNG\r\n\x1a\n"sv, 0, "png"},
    {"\x76\x2f\x31\x01"sv, 0, "openexr"},
    {"\xff\xd8\xff"sv, 0, "jpeg"},
    {"#?RADIANCE"sv, 0, "hdr"},
    {"#?RGBE"sv, 0, "hdr"},
    {"BM"sv, 0, "bmp"},
    {"GIF8"sv, 0, "gif"},
    {"WEBP"sv, 8, "webp"},
    {"8BPS"sv, 0, "psd"},
    {"SDPX"sv, 0, "dpx"},
    {"XPDS"sv, 0, "dpx"},
    {"\x80\x2a\x5f\xd7"sv, 0, "cineon"},
    {"\xd7\x5f\x2a\x80"sv, 0, "cineon"},
    {"\x01\xda"sv, 0, "sgi"},
    {"\x00\x00\x00\x0cjP  "sv, 0, "jpeg2000"},
    {"\xff\x4f\xff\x51"sv, 0, "jpeg2000"},
    {"SIMPLE  ="sv, 0, "fits"},
    {"\x53\x80\xf6\x34"sv, 0, "softimage"},
    {"\x00\x00\x01\x00"sv, 0, "ico"},
    {"FOR4"sv, 0, "iff"},
    {"ftyphei"sv, 4, "heif"},
    {"ftypmif1"sv, 4, "heif"},
    {"ftypavif"sv, 4, "heif"},
    {"<VRTDataset"sv, 0, "vrt"},
};

/// The bytes of an open file; what lies beyond its end is not there.
class FileBytes {
 public:
  explicit FileBytes(int descriptor) : descriptor_(descriptor) {}

  [[nodiscard]] std::vector<unsigned char> Get(std::uint64_t offset, std::size_t most) const {
    std::vector<unsigned char> bytes(most);
    if (offset > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max() - static_cast<off_t>(most))) return {};
    std::size_t got = 0;
    while (got < most) {
      const ssize_t piece = pread(descriptor_, bytes.data() + got, most - got, static_cast<off_t>(offset + got));
      if (piece < 0 && errno == EINTR) continue;
      if (piece <= 0) break;
      got += static_cast<std::size_t>(piece);
    }
    bytes.resize(got);
    return bytes;
  }

  [[nodiscard]] std::uint64_t GetSize() const {
    struct stat status {};
    return fstat(descriptor_, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
  }

 private:
  int descriptor_;
};

std::uint64_t ReadNumber(Bytes bytes, std::size_t at, std::size_t size, bool is_big_endian) {
  std::uint64_t number = 0;
  if (at + size > bytes.size()) return 0;
  for (std::size_t i = 0; i < size; ++i) number = (number << 8) | bytes[at + (is_big_endian ? i : size - 1 - i)];
  return number;
}

bool IsTiff(Bytes start) {
  return StartsWith(start, "II\x2a\0"sv) || StartsWith(start, "MM\0\x2a"sv) || StartsWith(start, "II\x2b\0"sv) ||
         StartsWith(start, "MM\0\x2b"sv);
}

/// Whether the first directory of a TIFF has one of the tags by which it belongs to a raster on the ground: scale, tie
/// points, transform or keys of a coordinate system, metadata or nodata as GDAL keeps them.
bool HasGroundTags(const FileBytes& file, Bytes start) {
  constexpr std::size_t kMostEntries = 4096;
  constexpr unsigned kGroundTags[] = {33550, 33922, 34264, 34735, 42112, 42113};
  const bool is_big_endian = start[0] == 'M';
  const bool is_large = start[2] == 43 || start[3] == 43;
  const std::size_t count_size = is_large ? 8 : 2;
  const std::size_t entry_size = is_large ? 20 : 12;
  const std::uint64_t offset =
      is_large ? ReadNumber(start, 8, 8, is_big_endian) : ReadNumber(start, 4, 4, is_big_endian);
  const auto directory = file.Get(offset, count_size + kMostEntries * entry_size);
  const std::uint64_t entries = ReadNumber(directory, 0, count_size, is_big_endian);
  for (std::size_t i = 0; i < std::min<std::uint64_t>(entries, kMostEntries); ++i) {
    const std::uint64_t tag = ReadNumber(directory, count_size + i * entry_size, 2, is_big_endian);
    if (std::find(std::begin(kGroundTags), std::end(kGroundTags), tag) != std::end(kGroundTags)) return true;
  }
  return false;
}

/// Whether the first picture of an icon is where its header says. Numbers of a plain raster can look like the mark.
bool IsIcon(Bytes start, std::uint64_t file_size) {
  constexpr std::uint64_t kHead = 6;
  constexpr std::uint64_t kEntry = 16;
  constexpr std::uint64_t kDepths[] = {0, 1, 4, 8, 16, 24, 32};
  const std::uint64_t count = ReadNumber(start, 4, 2, false);
  const std::uint64_t planes = ReadNumber(start, 10, 2, false);
  const std::uint64_t depth = ReadNumber(start, 12, 2, false);
  const std::uint64_t size = ReadNumber(start, 14, 4, false);
  const std::uint64_t offset = ReadNumber(start, 18, 4, false);
  return count > 0 && planes <= 1 && std::find(std::begin(kDepths), std::end(kDepths), depth) != std::end(kDepths) &&
         offset >= kHead + count * kEntry && offset < file_size && size > 0;
}

/// Whether a JPEG 2000 says where on the ground it lies and is read as a raster. That codec divides by the largest
/// number of a whole type, so that other widths than 8 and 16 bits are not for it.
bool IsRasterJp2(const FileBytes& file) {
  constexpr auto kPlaceBox = "\xb1\x4b\xf8\xbd\x08\x3d\x4b\x43\xa5\xae\x8c\xd7\xd5\xa6\xce\x03"sv;
  constexpr int kMostBoxes = 100;
  // A byte of the header: the bits of a number less one and, as the highest bit, whether it may be negative.
  constexpr std::size_t kDepthAt = 26;
  constexpr std::uint64_t kDepths[] = {7, 15, 0x80 | 15};
  bool has_place = false;
  bool has_depth = false;
  std::uint64_t at = 0;
  for (int i = 0; i < kMostBoxes; ++i) {
    const auto box = file.Get(at, 32);
    const std::uint64_t short_length = ReadNumber(box, 0, 4, true);
    const std::uint64_t length = short_length == 1 ? ReadNumber(box, 8, 8, true) : short_length;
    if (StartsWith(box, "uuid"sv, 4) && StartsWith(box, kPlaceBox, 8)) has_place = true;
    if (StartsWith(box, "jp2h"sv, 4) && StartsWith(box, "ihdr"sv, 12)) {
      has_depth =
          std::find(std::begin(kDepths), std::end(kDepths), ReadNumber(box, kDepthAt, 1, true)) != std::end(kDepths);
    }
    if (length < 8 || at + length < at) break;
    at += length;
  }
  return has_place && has_depth;
}

bool IsNetpbm(Bytes bytes) {
  return bytes.size() > 2 && bytes[0] == 'P' && std::strchr("1234567fF", bytes[1]) != nullptr && bytes[1] != 0 &&
         std::isspace(bytes[2]) != 0;
}

/// "ncols 4" and the like, in any case of letters.
bool IsAsciiGrid(Bytes bytes) {
  const std::string_view start = "ncols";
  return bytes.size() > start.size() &&
         std::equal(start.begin(), start.end(), bytes.begin(),
                    [](char a, unsigned char b) { return a == static_cast<char>(std::tolower(b)); });
}

}  // namespace

std::span<const CodecRow> GetCodecRows() { return kCodecs; }
std::span<const FormatRow> GetFormatRows() { return kFormats; }

const CodecRow* FindCodecRow(std::string_view name) {
  const auto* found =
      std::find_if(std::begin(kCodecs), std::end(kCodecs), [&](const auto& row) { return row.name == name; });
  return found == std::end(kCodecs) ? nullptr : found;
}

const FormatRow* FindFormatRow(std::string_view name) {
  const auto* found =
      std::find_if(std::begin(kFormats), std::end(kFormats), [&](const auto& row) { return row.name == name; });
  return found == std::end(kFormats) ? nullptr : found;
}

bool HasEnding(const FormatRow& row, const std::filesystem::path& file) {
  std::string ending = file.extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
  std::string_view rest = row.endings;
  while (!rest.empty()) {
    const std::size_t comma = std::min(rest.find(','), rest.size());
    if (rest.substr(0, comma) == ending) return true;
    rest.remove_prefix(std::min(comma + 1, rest.size()));
  }
  return false;
}

std::vector<Recognition> Recognize(const std::filesystem::path& file, int descriptor) {
  const auto as = [](const FormatRow& row) { return Recognition{FindCodecRow(row.codec), row.name}; };
  const FileBytes bytes(descriptor);
  constexpr std::size_t kStart = 64;
  const auto start = bytes.Get(0, kStart);
  if (start.size() >= 16 && IsTiff(start)) {
    return {as(*FindFormatRow(HasGroundTags(bytes, start) ? "geotiff" : "tiff"))};
  }
  const FormatRow& jpeg2000 = *FindFormatRow("jpeg2000");
  if (StartsWith(start, "jP  "sv, 4) && IsRasterJp2(bytes)) {
    return {{FindCodecRow("rasters"), jpeg2000.name}, as(jpeg2000)};
  }
  for (const Signature& signature : kSignatures) {
    if (!StartsWith(start, signature.bytes, signature.at)) continue;
    if (signature.format == "ico"sv && !IsIcon(start, bytes.GetSize())) continue;
    return {as(*FindFormatRow(signature.format))};
  }
  if (IsNetpbm(start)) return {as(*FindFormatRow("pnm"))};
  if (IsAsciiGrid(start)) return {as(*FindFormatRow("ascii-grid"))};

  const Recognition pictures{FindCodecRow("pictures"), ""};
  // A database; a header of numbers beside it would have it taken for a raster without any.
  if (StartsWith(start, "SQLite format 3\0"sv)) return {pictures};

  // Nothing at the beginning tells: formats without a mark there, and those that only the libraries know.
  const Recognition rasters{FindCodecRow("rasters"), ""};
  for (const FormatRow& row : kFormats) {
    const bool has_mark = std::any_of(std::begin(kSignatures), std::end(kSignatures), [&](const Signature& signature) {
      return std::string_view(row.name) == signature.format;
    });
    if (has_mark || !HasEnding(row, file)) continue;
    if (std::string_view(row.codec) == "rasters") return {rasters, pictures};
    // By its own name, so that what is wrong with it is told.
    if (std::string_view(row.name) == "targa") return {as(row), pictures, rasters};
  }
  return {pictures, rasters};
}

const ImageCodec* LoadCodec(const CodecRow& row, std::string& problem) {
  struct Loaded {
    const ImageCodec* codec = nullptr;
    std::string problem;
  };
  static std::mutex mutex;
  static std::map<std::string, Loaded>& codecs = *new std::map<std::string, Loaded>;
  const std::lock_guard lock(mutex);
  const auto [entry, is_new] = codecs.try_emplace(row.name);
  Loaded& loaded = entry->second;
  if (is_new) {
    HostModule module(row.module, std::string("the module of the codec \"") + row.name + "\"");
    const auto get_codec = module.Load<decltype(&GetImageCodec)>("GetImageCodec");
    if (get_codec != nullptr) loaded.codec = get_codec();
    loaded.problem = module.GetProblem();
    if (loaded.codec == nullptr && *row.package != '\0') {
      loaded.problem += std::string("; it needs the package ") + row.package;
    }
  }
  problem = loaded.problem;
  return loaded.codec;
}

}  // namespace ScEng
