// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/TiffPages.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <string>
#include <utility>

#include "Host/Files/Codecs/CodedSize.h"
#include "Host/Files/Codecs/Pictures/TiffHandle.h"
#include "Host/Files/Codecs/XmpPacket.h"

namespace ScEng {
namespace {

std::vector<std::uint8_t> GetBytes(TIFF* tiff, std::uint32_t tag) {
  std::uint32_t size = 0;
  const void* data = nullptr;
  if (TIFFGetField(tiff, tag, &size, &data) != 1 || data == nullptr) return {};
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  return {bytes, bytes + size};
}

/// IPTC records, which are often declared as numbers of 32 bits and then counted and turned as such.
std::vector<std::uint8_t> GetIptc(TIFF* tiff) {
  std::uint32_t count = 0;
  void* data = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_RICHTIFFIPTC, &count, &data) != 1 || data == nullptr) return {};
  const TIFFField* field = TIFFFieldWithTag(tiff, TIFFTAG_RICHTIFFIPTC);
  const bool is_long = field != nullptr && TIFFFieldDataType(field) == TIFF_LONG;
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  std::vector<std::uint8_t> block(bytes, bytes + std::size_t{count} * (is_long ? 4 : 1));
  if (is_long && TIFFIsByteSwapped(tiff) != 0) {
    for (std::size_t i = 0; i + 4 <= block.size(); i += 4) std::reverse(&block[i], &block[i] + 4);
  }
  return block;
}

void ReadTexts(TIFF* tiff, ImageMetadata& metadata) {
  constexpr std::array<std::pair<std::uint32_t, const char*>, 6> kTexts{{{TIFFTAG_IMAGEDESCRIPTION, "ImageDescription"},
                                                                         {TIFFTAG_ARTIST, "Artist"},
                                                                         {TIFFTAG_COPYRIGHT, "Copyright"},
                                                                         {TIFFTAG_SOFTWARE, "Software"},
                                                                         {TIFFTAG_DATETIME, "DateTime"},
                                                                         {TIFFTAG_DOCUMENTNAME, "DocumentName"}}};
  for (const auto& [tag, name] : kTexts) {
    const char* text = nullptr;
    if (TIFFGetField(tiff, tag, &text) == 1 && text != nullptr && *text != '\0') {
      metadata.entries.push_back({name, std::string(text)});
    }
  }
}

void ReadResolution(TIFF* tiff, ImageMetadata& metadata) {
  float x = 0.0F;
  float y = 0.0F;
  if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) != 1 || TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y) != 1) return;
  if (!std::isfinite(x) || !std::isfinite(y) || x <= 0.0F || y <= 0.0F) return;
  std::uint16_t unit = RESUNIT_INCH;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
  metadata.resolution = {x, y};
  if (unit == RESUNIT_INCH) metadata.resolution_unit = "in";
  if (unit == RESUNIT_CENTIMETER) metadata.resolution_unit = "cm";
}

void ReadOpacity(TIFF* tiff, TiffPage& page) {
  std::uint16_t extras = 0;
  const std::uint16_t* kinds = nullptr;
  std::uint16_t samples = 1;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &samples);
  if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &extras, &kinds) != 1 || kinds == nullptr || extras > samples) return;
  for (std::uint16_t i = 0; i < extras; ++i) {
    if (kinds[i] == EXTRASAMPLE_UNSPECIFIED) continue;
    page.opacity_channel = samples - extras + i;
    page.is_multiplied = kinds[i] == EXTRASAMPLE_ASSOCALPHA;
    return;
  }
}

TiffPage DescribePage(TIFF* tiff) {
  TiffPage page;
  std::uint32_t kind = 0;
  page.is_reduced =
      TIFFGetField(tiff, TIFFTAG_SUBFILETYPE, &kind) == 1 && (kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) != 0;
  std::uint16_t orientation = 1;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &orientation);
  page.orientation = orientation >= 1 && orientation <= 8 ? orientation : 1;
  ReadOpacity(tiff, page);
  page.metadata.icc = GetBytes(tiff, TIFFTAG_ICCPROFILE);
  const auto xmp = GetBytes(tiff, TIFFTAG_XMLPACKET);
  page.metadata.xmp.assign(xmp.begin(), xmp.end());
  RemoveSampleDescription(page.metadata.xmp);
  page.metadata.iptc = GetIptc(tiff);
  ReadResolution(tiff, page.metadata);
  ReadTexts(tiff, page.metadata);
  page.samples = FindTiffSamples(tiff);
  return page;
}

/// Checks the strips or tiles of the current page, which are numbered alike.
class StripCheck {
 public:
  StripCheck(TIFF* tiff, const std::filesystem::path& file)
      : tiff_(tiff), file_(file, std::ios::binary), file_size_(std::filesystem::file_size(file)) {
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &compression_);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &rows_);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_FILLORDER, &fill_order_);
    is_tiled_ = TIFFIsTiled(tiff) != 0;
  }

  Status Run() {
    const std::uint32_t count = is_tiled_ ? TIFFNumberOfTiles(tiff_) : TIFFNumberOfStrips(tiff_);
    const BlockCoding coding = GetBlockCoding(compression_);
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::uint64_t offset = TIFFGetStrileOffset(tiff_, i);
      const std::uint64_t size = TIFFGetStrileByteCount(tiff_, i);
      if (offset == 0 || size == 0) return Fail("a piece of it is missing", i);
      if (offset > file_size_ || size > file_size_ - offset) return Fail("the file is shortened", i);
      const std::string problem = FindCodedSizeProblem(file_, offset, size, coding, GetPixels(i));
      if (!problem.empty()) return Status::Error(GetName(i) + ' ' + problem);
      if (const Status status = CheckData(i, size); status.IsError()) return status;
    }
    return {};
  }

 private:
  Status CheckData(std::uint32_t index, std::uint64_t size) {
    switch (compression_) {
      case COMPRESSION_NONE: return size < GetFullSize(index) ? Fail("a piece of it is too short", index) : Status();
      case COMPRESSION_ADOBE_DEFLATE:
      case COMPRESSION_DEFLATE: return Unpack(index, size) ? Status() : Fail("its data are damaged", index);
      case COMPRESSION_JPEG: return EndsAsJpeg(index, size) ? Status() : Fail("its data are damaged", index);
      default: return {};
    }
  }

  [[nodiscard]] std::string GetName(std::uint32_t index) const {
    return (is_tiled_ ? "its tile " : "its strip ") + std::to_string(index);
  }

  /// The pixels of the image that a strip or tile has to hold.
  [[nodiscard]] BlockSize GetPixels(std::uint32_t index) const {
    std::uint32_t width = 0;
    TIFFGetField(tiff_, TIFFTAG_IMAGEWIDTH, &width);
    if (!is_tiled_) return GetPlanePixels(index, {width, RowsOfStrip(index)});
    BlockSize tile;
    TIFFGetField(tiff_, TIFFTAG_TILEWIDTH, &tile.width);
    TIFFGetField(tiff_, TIFFTAG_TILELENGTH, &tile.height);
    if (tile.width == 0 || tile.height == 0) return {};
    const std::uint32_t column = index % ((width - 1) / tile.width + 1) * tile.width;
    const std::uint32_t row = GetFirstRow(index);
    return GetPlanePixels(index, {std::min(tile.width, width - column), std::min(tile.height, rows_ - row)});
  }

  /// Colour that is stored by itself may be stored with fewer pixels than brightness.
  [[nodiscard]] BlockSize GetPlanePixels(std::uint32_t index, BlockSize size) const {
    std::uint16_t planes = PLANARCONFIG_CONTIG;
    std::uint16_t meaning = 0;
    TIFFGetFieldDefaulted(tiff_, TIFFTAG_PLANARCONFIG, &planes);
    TIFFGetField(tiff_, TIFFTAG_PHOTOMETRIC, &meaning);
    std::uint16_t samples = 1;
    TIFFGetFieldDefaulted(tiff_, TIFFTAG_SAMPLESPERPIXEL, &samples);
    const std::uint32_t count = is_tiled_ ? TIFFNumberOfTiles(tiff_) : TIFFNumberOfStrips(tiff_);
    const bool is_first_plane = index < count / std::max<std::uint16_t>(samples, 1);
    if (planes != PLANARCONFIG_SEPARATE || meaning != PHOTOMETRIC_YCBCR || is_first_plane) return size;
    std::uint16_t across = 1;
    std::uint16_t down = 1;
    TIFFGetFieldDefaulted(tiff_, TIFFTAG_YCBCRSUBSAMPLING, &across, &down);
    const auto divide = [](std::uint32_t number, std::uint16_t by) { return by < 2 ? number : (number - 1) / by + 1; };
    return {divide(size.width, across), divide(size.height, down)};
  }

  [[nodiscard]] std::uint64_t GetFullSize(std::uint32_t index) const {
    if (is_tiled_) return TIFFTileSize64(tiff_);
    return TIFFVStripSize64(tiff_, RowsOfStrip(index));
  }

  [[nodiscard]] std::uint32_t RowsOfStrip(std::uint32_t index) const {
    const std::uint32_t begin = GetFirstRow(index);
    std::uint32_t height = rows_;
    TIFFGetFieldDefaulted(tiff_, TIFFTAG_ROWSPERSTRIP, &height);
    return std::min(height, rows_ - std::min(begin, rows_));
  }

  [[nodiscard]] std::uint32_t GetFirstRow(std::uint32_t index) const {
    std::uint32_t height = rows_;
    std::uint32_t across = 1;
    if (is_tiled_) {
      std::uint32_t width = 1;
      std::uint32_t tile_width = 1;
      TIFFGetField(tiff_, TIFFTAG_IMAGEWIDTH, &width);
      TIFFGetField(tiff_, TIFFTAG_TILEWIDTH, &tile_width);
      TIFFGetField(tiff_, TIFFTAG_TILELENGTH, &height);
      across = tile_width == 0 ? 1 : static_cast<std::uint32_t>((std::uint64_t{width} + tile_width - 1) / tile_width);
    } else {
      TIFFGetFieldDefaulted(tiff_, TIFFTAG_ROWSPERSTRIP, &height);
    }
    height = std::clamp<std::uint32_t>(height, 1, std::max(rows_, 1U));
    const std::uint32_t down = (std::max(rows_, 1U) - 1) / height + 1;
    return index / std::max(across, 1U) % down * height;
  }

  bool ReadRaw(std::uint32_t index, std::uint64_t size) {
    raw_.resize(size);
    const auto wanted = static_cast<tmsize_t>(size);
    const tmsize_t got = is_tiled_ ? TIFFReadRawTile(tiff_, index, raw_.data(), wanted)
                                   : TIFFReadRawStrip(tiff_, index, raw_.data(), wanted);
    return got == wanted;
  }

  bool Unpack(std::uint32_t index, std::uint64_t size) {
    if (!ReadRaw(index, size)) return false;
    if (fill_order_ == FILLORDER_LSB2MSB) TIFFReverseBits(raw_.data(), static_cast<tmsize_t>(raw_.size()));
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK) return false;
    std::array<unsigned char, 65536> scratch{};
    std::uint64_t unpacked = 0;
    std::size_t used = 0;
    int state = Z_OK;
    while (state == Z_OK) {
      if (stream.avail_in == 0) {
        const std::size_t piece = std::min<std::size_t>(raw_.size() - used, std::size_t{1} << 30);
        if (piece == 0) break;
        stream.next_in = raw_.data() + used;
        stream.avail_in = static_cast<uInt>(piece);
        used += piece;
      }
      stream.next_out = scratch.data();
      stream.avail_out = static_cast<uInt>(scratch.size());
      state = inflate(&stream, Z_NO_FLUSH);
      unpacked += scratch.size() - stream.avail_out;
    }
    inflateEnd(&stream);
    return state == Z_STREAM_END && unpacked >= GetFullSize(index);
  }

  /// The JPEG library fills what a stream lacks with grey and only warns.
  bool EndsAsJpeg(std::uint32_t index, std::uint64_t size) {
    constexpr std::size_t kPadding = 16;
    if (!ReadRaw(index, size)) return false;
    const std::size_t begin = raw_.size() > kPadding ? raw_.size() - kPadding : 0;
    for (std::size_t i = raw_.size(); i >= begin + 2; --i) {
      if (raw_[i - 2] == 0xFF && raw_[i - 1] == 0xD9) return true;
    }
    return false;
  }

  [[nodiscard]] Status Fail(const char* what, std::uint32_t index) const {
    return Status::Error(std::string(what) + ": " + std::to_string(GetFirstRow(index)) + " of " +
                         std::to_string(rows_) + " rows are there");
  }

  TIFF* tiff_;
  std::ifstream file_;
  std::uint64_t file_size_;
  std::uint16_t compression_ = COMPRESSION_NONE;
  std::uint16_t fill_order_ = FILLORDER_MSB2LSB;
  std::uint32_t rows_ = 0;
  bool is_tiled_ = false;
  std::vector<unsigned char> raw_;
};

/// Decodes a fax whose colours the library of formats makes, which says nothing of damaged rows.
Status CheckFax(TIFF* tiff, const std::filesystem::path& file, std::uint32_t page) {
  TiffSamples samples;
  samples.bits = 1;
  std::uint16_t channels = 1;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &channels);
  samples.channels = channels;
  std::uint32_t height = 0;
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
  const auto rows = TiffRows::Open(file, page, samples);
  if (!rows) return Status::Error("its directory is damaged");
  std::vector<unsigned char> row;
  Status status;
  for (int y = 0; std::cmp_less(y, height) && !status.IsError(); ++y) status = rows->Read(y, y + 1, row);
  return status;
}

}  // namespace

std::vector<TiffPage> ListTiffPages(const std::filesystem::path& file, std::size_t most) {
  std::vector<TiffPage> pages;
  std::string problem;
  const TiffHandle tiff = OpenTiff(file, "r", problem);
  if (!tiff) return pages;
  do {
    pages.push_back(DescribePage(tiff.get()));
  } while (pages.size() < most && TIFFReadDirectory(tiff.get()) == 1);
  return pages;
}

void ApplyTiffPage(const TiffPage& page, FilePart& part) {
  // A page that is stored in other channels (ink, a palette) has its extra channels where the library puts them.
  const bool has_channel = page.opacity_channel < static_cast<int>(part.channels.size());
  if (page.opacity_channel >= 0 && has_channel) part.opacity_channel = page.opacity_channel;
  if (page.opacity_channel < 0) part.opacity_channel = -1;
  part.is_multiplied = part.opacity_channel >= 0 && page.is_multiplied;
  part.orientation = page.orientation;
  part.metadata = page.metadata;
  if (page.samples) {
    for (FileChannel& channel : part.channels) channel.samples.type = page.samples->type;
  }
}

std::string FindTiffTypeProblem(const std::filesystem::path& file) {
  std::string problem;
  const TiffHandle tiff = OpenTiff(file, "r", problem);
  return tiff ? FindTypeProblem(tiff.get()) : std::string();
}

Status CheckTiffPage(const std::filesystem::path& file, std::uint32_t page) {
  std::string problem;
  const TiffHandle tiff = OpenTiff(file, "r", problem);
  if (!tiff || TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(page)) != 1) {
    return Status::Error("its directory is damaged");
  }
  const Status status = StripCheck(tiff.get(), file).Run();
  if (status.IsError() || !IsFax(tiff.get()) || FindTiffSamples(tiff.get())) return status;
  return CheckFax(tiff.get(), file, page);
}

}  // namespace ScEng
