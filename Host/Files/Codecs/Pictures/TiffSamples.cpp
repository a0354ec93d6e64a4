// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Pictures/TiffSamples.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace ScEng {
namespace {

constexpr unsigned kDoubleBits = 64;
constexpr std::array<unsigned char, 2> kFillings{0x55, 0xAA};
constexpr unsigned kMostIntegerBits = 32;

StoredType GetIntegerType(unsigned bits, bool is_signed) {
  if (bits <= 8) return is_signed ? StoredType::kInt8 : StoredType::kUint8;
  if (bits <= 16) return is_signed ? StoredType::kInt16 : StoredType::kUint16;
  return is_signed ? StoredType::kInt32 : StoredType::kUint32;
}

bool IsUsual(unsigned bits) { return bits == 8 || bits == 16 || bits == kMostIntegerBits; }

std::uint16_t GetShort(TIFF* tiff, std::uint32_t tag, std::uint16_t otherwise) {
  std::uint16_t number = otherwise;
  return TIFFGetFieldDefaulted(tiff, tag, &number) == 1 ? number : otherwise;
}

/// Numbers of any width, the highest bit first; those of whole bytes are in the order of the processor.
class NumberReader {
 public:
  NumberReader(const unsigned char* from, unsigned bits) : from_(from), bits_(bits) {}

  std::uint32_t Next() {
    if (bits_ == 24) {
      const unsigned char* at = from_ + 3 * index_++;
      constexpr bool kLittle = std::endian::native == std::endian::little;
      return std::uint32_t{at[kLittle ? 0 : 2]} | std::uint32_t{at[1]} << 8 | std::uint32_t{at[kLittle ? 2 : 0]} << 16;
    }
    while (held_bits_ < bits_) {
      held_ = held_ << 8 | from_[index_++];
      held_bits_ += 8;
    }
    held_bits_ -= bits_;
    return static_cast<std::uint32_t>(held_ >> held_bits_ & GetLargestOf(bits_));
  }

 private:
  const unsigned char* from_;
  unsigned bits_;
  std::size_t index_ = 0;
  std::uint64_t held_ = 0;
  unsigned held_bits_ = 0;
};

bool HasSameBits(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b, std::size_t bits) {
  const std::size_t bytes = bits / 8;
  const auto rest = static_cast<unsigned>(bits % 8);
  if (!std::equal(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(bytes), b.begin())) return false;
  return rest == 0 || ((a[bytes] ^ b[bytes]) & 0xFF00U >> rest) % 256 == 0;
}

}  // namespace

bool IsFax(TIFF* tiff) {
  switch (GetShort(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE)) {
    case COMPRESSION_CCITTRLE:
    case COMPRESSION_CCITTRLEW:
    case COMPRESSION_CCITTFAX3:
    case COMPRESSION_CCITTFAX4: return true;
    default: return false;
  }
}

SampleNumbers TiffSamples::GetNumbers(std::size_t channel) const {
  if (!IsInteger(type)) return {};
  const bool is_color = channel + extra_channels < channels;
  return {.largest = GetLargestOf(is_signed ? bits - 1 : bits), .is_inverted = is_inverted && is_color};
}

std::optional<TiffSamples> FindTiffSamples(TIFF* tiff) {
  std::uint16_t meaning = 0;
  if (TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &meaning) != 1) return std::nullopt;
  if (meaning > PHOTOMETRIC_RGB && meaning != PHOTOMETRIC_MASK) return std::nullopt;
  const unsigned bits = GetShort(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  const std::uint16_t format = GetShort(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  const std::uint16_t compression = GetShort(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  // JPEG brings widths of its own.
  if (compression == COMPRESSION_OJPEG || (compression == COMPRESSION_JPEG && bits != 8)) return std::nullopt;

  TiffSamples samples;
  samples.bits = bits;
  samples.channels = GetShort(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  std::uint16_t extras = 0;
  const std::uint16_t* kinds = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &extras, &kinds) == 1) samples.extra_channels = extras;
  if (format == SAMPLEFORMAT_IEEEFP) {
    samples.type = StoredType::kDouble;
    return bits == kDoubleBits ? std::optional(samples) : std::nullopt;
  }
  if (format != SAMPLEFORMAT_UINT && format != SAMPLEFORMAT_VOID && format != SAMPLEFORMAT_INT) return std::nullopt;
  samples.is_signed = format == SAMPLEFORMAT_INT;
  samples.is_inverted = meaning == PHOTOMETRIC_MINISWHITE && !samples.is_signed;
  if (bits == 0 || bits > kMostIntegerBits || (bits == 1 && samples.is_signed)) return std::nullopt;
  if (IsUsual(bits) && !samples.is_inverted) return std::nullopt;
  samples.type = GetIntegerType(bits, samples.is_signed);
  return samples;
}

std::string FindTypeProblem(TIFF* tiff) {
  const unsigned bits = GetShort(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  // Those that the library of formats opens.
  constexpr std::array kIntegers{1U, 2U, 4U, 6U, 8U, 10U, 12U, 14U, 16U, 24U, 32U};
  constexpr std::array kFloats{16U, 24U, 32U, 64U};
  const auto say = [bits](const auto& widths, const char* kind) {
    if (std::find(widths.begin(), widths.end(), bits) != widths.end()) return std::string();
    return "samples of " + std::to_string(bits) + "-bit " + kind + " are not supported";
  };
  switch (GetShort(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT)) {
    case SAMPLEFORMAT_UINT:
    case SAMPLEFORMAT_VOID:
    case SAMPLEFORMAT_INT: return say(kIntegers, "integers");
    case SAMPLEFORMAT_IEEEFP: return say(kFloats, "floats");
    default: return "complex samples are not supported";
  }
}

std::unique_ptr<TiffRows> TiffRows::Open(const std::filesystem::path& file, std::uint32_t page,
                                         const TiffSamples& samples) {
  constexpr std::size_t kMostHandles = 16;
  std::unique_ptr<TiffRows> rows(new TiffRows(samples));
  const auto open = [&](std::vector<TiffHandle>& handles) {
    TiffHandle tiff = OpenTiff(file, "r", rows->problem_);
    if (!tiff || TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(page)) != 1) return false;
    handles.push_back(std::move(tiff));
    return true;
  };
  do {
    if (!open(rows->handles_)) return nullptr;
    rows->is_fax_ = IsFax(rows->GetHandle(0));
    if (rows->is_fax_ && !open(rows->twins_)) return nullptr;
    rows->is_separate_ =
        GetShort(rows->GetHandle(0), TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
  } while (rows->handles_.size() < std::min(rows->GetNumPlanes(), kMostHandles));
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  TIFFGetField(rows->GetHandle(0), TIFFTAG_IMAGEWIDTH, &width);
  TIFFGetField(rows->GetHandle(0), TIFFTAG_IMAGELENGTH, &height);
  rows->width_ = width;
  rows->height_ = static_cast<int>(height);
  return rows;
}

Status TiffRows::Read(int begin, int end, std::vector<unsigned char>& to) {
  to.assign(static_cast<std::size_t>(end - begin) * width_ * GetPixelBytes(), 0);
  problem_.clear();
  row_ = begin;
  bool ok = true;
  for (std::size_t plane = 0; ok && plane < GetNumPlanes(); ++plane) {
    ok = TIFFIsTiled(GetHandle(plane)) != 0 ? ReadTileRows(plane, begin, end, to.data())
                                            : ReadStripRows(plane, begin, end, to.data());
  }
  if (ok) return {};
  return Status::Error("its data are damaged: " + std::to_string(row_) + " of " + std::to_string(height_) +
                       " rows can be read");
}

bool TiffRows::ReadStripRows(std::size_t plane, int begin, int end, unsigned char* to) {
  TIFF* tiff = GetHandle(plane);
  const std::size_t row_numbers = width_ * (is_separate_ ? 1 : samples_.channels);
  const auto row_bytes = static_cast<std::uint64_t>(TIFFScanlineSize64(tiff));
  if (row_bytes < (std::uint64_t{row_numbers} * samples_.bits + 7) / 8) return false;
  packed_.assign(row_bytes, 0);
  for (int row = begin; row < end; ++row) {
    row_ = row;
    if (!ReadScanline(plane, row, row_numbers * samples_.bits)) return false;
    Unpack(packed_.data(), plane, width_, to);
    to += width_ * GetPixelBytes();
  }
  return true;
}

bool TiffRows::ReadScanline(std::size_t plane, int row, std::size_t used_bits) {
  const auto read = [&](TIFF* tiff, std::vector<unsigned char>& to) {
    return TIFFReadScanline(tiff, to.data(), static_cast<std::uint32_t>(row), static_cast<std::uint16_t>(plane)) == 1;
  };
  if (!is_fax_) return read(GetHandle(plane), packed_);
  // Rows that the library calls good and leaves as they were differ when they were different before.
  std::fill(packed_.begin(), packed_.end(), kFillings[0]);
  twin_packed_.assign(packed_.size(), kFillings[1]);
  return read(GetHandle(plane), packed_) && read(twins_[plane % twins_.size()].get(), twin_packed_) &&
         problem_.empty() && HasSameBits(packed_, twin_packed_, used_bits);
}

bool TiffRows::ReadTile(TIFF* tiff, std::uint32_t x, std::uint32_t y, std::size_t plane) {
  const auto read = [&](std::vector<unsigned char>& to) {
    return TIFFReadTile(tiff, to.data(), x, y, 0, static_cast<std::uint16_t>(plane)) >= 0;
  };
  if (!is_fax_) return read(packed_);
  std::fill(packed_.begin(), packed_.end(), kFillings[0]);
  twin_packed_.assign(packed_.size(), kFillings[1]);
  // The widths of tiles are multiples of 16, so that all bits count.
  return read(packed_) && read(twin_packed_) && problem_.empty() && packed_ == twin_packed_;
}

bool TiffRows::ReadTileRows(std::size_t plane, int begin, int end, unsigned char* to) {
  constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 30;
  TIFF* tiff = GetHandle(plane);
  std::uint32_t tile_width = 0;
  std::uint32_t tile_height = 0;
  TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &tile_width);
  TIFFGetField(tiff, TIFFTAG_TILELENGTH, &tile_height);
  const std::uint64_t bytes = TIFFTileSize64(tiff);
  const std::uint64_t row_bytes = TIFFTileRowSize64(tiff);
  const std::uint64_t row_numbers = std::uint64_t{tile_width} * (is_separate_ ? 1 : samples_.channels);
  if (tile_width == 0 || tile_height == 0 || bytes > kMostBytes || row_bytes * tile_height > bytes ||
      row_bytes < (row_numbers * samples_.bits + 7) / 8) {
    return false;
  }
  const auto first = static_cast<std::uint32_t>(begin);
  const auto last = static_cast<std::uint32_t>(end);
  for (std::uint32_t y = first / tile_height * tile_height; y < last; y += tile_height) {
    for (std::size_t x = 0; x < width_; x += tile_width) {
      packed_.assign(bytes, 0);
      if (!ReadTile(tiff, static_cast<std::uint32_t>(x), y, plane)) return false;
      for (std::uint32_t row = std::max(y, first); row < std::min<std::uint64_t>(std::uint64_t{y} + tile_height, last);
           ++row) {
        Unpack(packed_.data() + (row - y) * row_bytes, plane, std::min<std::size_t>(tile_width, width_ - x),
               to + (std::size_t{row - first} * width_ + x) * GetPixelBytes());
      }
    }
  }
  return true;
}

void TiffRows::Unpack(const unsigned char* from, std::size_t plane, std::size_t pixels, unsigned char* to) const {
  const std::size_t size = GetSize(samples_.type);
  const std::size_t count = pixels * (is_separate_ ? 1 : samples_.channels);
  const std::size_t stride = is_separate_ ? GetPixelBytes() : size;
  if (is_separate_) to += plane * size;
  if (samples_.bits == size * 8) {
    for (std::size_t i = 0; i < count; ++i) std::memcpy(to + i * stride, from + i * size, size);
    return;
  }
  NumberReader reader(from, samples_.bits);
  const std::uint32_t sign = samples_.is_signed ? std::uint32_t{1} << (samples_.bits - 1) : 0;
  for (std::size_t i = 0; i < count; ++i) {
    // The sign bit, where there is one, goes on to the left.
    const std::uint32_t number = (reader.Next() ^ sign) - sign;
    const auto narrow = static_cast<std::uint16_t>(number);
    const auto byte = static_cast<std::uint8_t>(number);
    const void* bytes = size == 1   ? static_cast<const void*>(&byte)
                        : size == 2 ? &narrow
                                    : static_cast<const void*>(&number);
    std::memcpy(to + i * stride, bytes, size);
  }
}

}  // namespace ScEng
