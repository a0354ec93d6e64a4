// SPDX-License-Identifier: Apache-2.0
#include <OpenImageIO/imageio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "Host/Files/Codecs/Pictures/Encoders.h"
#include "Host/Files/Codecs/Pictures/ExifDirectory.h"
#include "Host/Files/Codecs/Pictures/PictureEncoder.h"
#include "Host/Files/Codecs/Pictures/TiffHandle.h"

namespace ScEng {
namespace {

struct Compression {
  const char* name;
  std::uint16_t code;
};
constexpr std::array kCompressions{Compression{"zip", COMPRESSION_ADOBE_DEFLATE}, Compression{"none", COMPRESSION_NONE},
                                   Compression{"lzw", COMPRESSION_LZW}, Compression{"packbits", COMPRESSION_PACKBITS},
                                   Compression{"zstd", COMPRESSION_ZSTD}};
constexpr std::size_t kStripBytes = 65536;
// Offsets of 32 bits end at 4 GiB; the rest is for directories and for strips that grow when they are packed.
constexpr std::uint64_t kMostInSmallTiff = 3900000000;

const Compression* FindCompression(std::string_view name) {
  if (name.empty() || name == "deflate") name = "zip";
  const auto* found =
      std::find_if(kCompressions.begin(), kCompressions.end(), [&](const auto& row) { return name == row.name; });
  return found != kCompressions.end() && TIFFIsCODECConfigured(found->code) != 0 ? found : nullptr;
}

std::string ListCompressions() {
  std::string list;
  for (const Compression& row : kCompressions) {
    if (TIFFIsCODECConfigured(row.code) != 0) list += (list.empty() ? "" : ", ") + std::string(row.name);
  }
  return list;
}

std::uint16_t GetSampleFormat(StoredType type) {
  switch (type) {
    case StoredType::kHalf:
    case StoredType::kFloat: return SAMPLEFORMAT_IEEEFP;
    case StoredType::kInt16: return SAMPLEFORMAT_INT;
    default: return SAMPLEFORMAT_UINT;
  }
}

class TiffEncoder final : public PictureEncoder {
 public:
  TiffEncoder(const WritePlan& plan, const Compression& compression, std::vector<std::string>& notes)
      : PictureEncoder(plan, {1, 2, 3, 4}, notes), compression_(compression) {}

  Status Open(const std::filesystem::path& path) {
    const WritePlan& plan = GetPlan();
    stored_row_ =
        static_cast<std::size_t>(plan.size_x) * static_cast<std::size_t>(GetNumChannels()) * GetSize(plan.type);
    is_big_ = stored_row_ * static_cast<std::uint64_t>(plan.size_y) > kMostInSmallTiff;
    tiff_ = OpenTiff(path, is_big_ ? "w8" : "w", problem_);
    if (!tiff_) return Fail();
    SetLayout();
    exif_ = TakeExifApart(plan.metadata.exif);
    SetMetadata();
    return problem_.empty() ? Status() : Fail();
  }

 private:
  template <class... Values>
  void Set(std::uint32_t tag, Values... values) {
    if (TIFFSetField(tiff_.get(), tag, values...) != 1 && problem_.empty()) problem_ = "a tag cannot be set";
  }

  void SetLayout() {
    const WritePlan& plan = GetPlan();
    const bool is_colored = GetNumChannels() >= 3;
    Set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(plan.size_x));
    Set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(plan.size_y));
    Set(TIFFTAG_BITSPERSAMPLE, static_cast<int>(GetSize(plan.type) * 8));
    Set(TIFFTAG_SAMPLESPERPIXEL, GetNumChannels());
    Set(TIFFTAG_SAMPLEFORMAT, static_cast<int>(GetSampleFormat(plan.type)));
    Set(TIFFTAG_PHOTOMETRIC, is_colored ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    Set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    Set(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (GetNumChannels() == 2 || GetNumChannels() == 4) {
      const bool is_opacity = GetOpacityChannel() == GetNumChannels() - 1;
      const std::uint16_t extra = is_opacity ? EXTRASAMPLE_UNASSALPHA : EXTRASAMPLE_UNSPECIFIED;
      Set(TIFFTAG_EXTRASAMPLES, 1, &extra);
    }
    Set(TIFFTAG_COMPRESSION, static_cast<int>(compression_.code));
    if (compression_.code == COMPRESSION_ADOBE_DEFLATE) Set(TIFFTAG_ZIPQUALITY, 6);
    const bool has_predictor = compression_.code == COMPRESSION_ADOBE_DEFLATE || compression_.code == COMPRESSION_LZW ||
                               compression_.code == COMPRESSION_ZSTD;
    // Differences of halves taken as integers help little, and not every reader undoes them.
    if (has_predictor && plan.type != StoredType::kHalf) {
      Set(TIFFTAG_PREDICTOR, plan.type == StoredType::kFloat ? PREDICTOR_FLOATINGPOINT : PREDICTOR_HORIZONTAL);
    }
    rows_per_strip_ =
        static_cast<int>(std::clamp<std::size_t>(kStripBytes / stored_row_, 1, static_cast<std::size_t>(plan.size_y)));
    Set(TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rows_per_strip_));
  }

  void SetMetadata() {
    const ImageMetadata& metadata = GetPlan().metadata;
    if (!metadata.icc.empty()) {
      Set(TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(metadata.icc.size()), metadata.icc.data());
    }
    if (!metadata.xmp.empty()) {
      Set(TIFFTAG_XMLPACKET, static_cast<std::uint32_t>(metadata.xmp.size()), metadata.xmp.data());
    }
    SetIptc(metadata.iptc);
    if (metadata.resolution) {
      Set(TIFFTAG_XRESOLUTION, (*metadata.resolution)[0]);
      Set(TIFFTAG_YRESOLUTION, (*metadata.resolution)[1]);
      Set(TIFFTAG_RESOLUTIONUNIT, metadata.resolution_unit == "in"   ? RESUNIT_INCH
                                  : metadata.resolution_unit == "cm" ? RESUNIT_CENTIMETER
                                                                     : RESUNIT_NONE);
    }
    for (const ExifParts::Field& field : exif_.image) SetField(field);
  }

  void SetIptc(const std::vector<std::uint8_t>& iptc) {
    if (iptc.empty()) return;
    const TIFFField* field = TIFFFieldWithTag(tiff_.get(), TIFFTAG_RICHTIFFIPTC);
    std::vector<std::uint8_t> block = iptc;
    // Where the library takes the tag for numbers of 32 bits, the block is filled up to whole ones.
    const bool is_long = field != nullptr && TIFFFieldDataType(field) == TIFF_LONG;
    if (is_long) block.resize((block.size() + 3) / 4 * 4);
    Set(TIFFTAG_RICHTIFFIPTC, static_cast<std::uint32_t>(is_long ? block.size() / 4 : block.size()), block.data());
  }

  void SetField(const ExifParts::Field& field) {
    const TIFFField* known = TIFFFindField(tiff_.get(), field.tag, TIFF_ANY);
    const bool is_text = field.type == TIFF_ASCII;
    if (known != nullptr) {
      // What else the library knows describes samples, or it would take in another form.
      if (is_text && TIFFFieldDataType(known) == TIFF_ASCII && TIFFFieldPassCount(known) == 0) {
        Set(field.tag, GetText(field).c_str());
      }
      return;
    }
    constexpr std::array kPlainTypes{TIFF_BYTE,      TIFF_ASCII,  TIFF_SHORT, TIFF_LONG,  TIFF_SBYTE,
                                     TIFF_UNDEFINED, TIFF_SSHORT, TIFF_SLONG, TIFF_FLOAT, TIFF_DOUBLE};
    const auto* type = std::find(kPlainTypes.begin(), kPlainTypes.end(), static_cast<TIFFDataType>(field.type));
    if (type == kPlainTypes.end()) return;
    // The library keeps the name as it is handed over.
    static char name[] = "Exif";
    const TIFFFieldInfo info{field.tag, TIFF_VARIABLE2, TIFF_VARIABLE2, *type, FIELD_CUSTOM, 1, 1, name};
    if (TIFFMergeFieldInfo(tiff_.get(), &info, 1) == 0) Set(field.tag, field.count, field.bytes.data());
  }

  static std::string GetText(const ExifParts::Field& field) {
    return {field.bytes.begin(), std::find(field.bytes.begin(), field.bytes.end(), std::uint8_t{0})};
  }

  /// Puts a directory at the end of the file, and its offset into the main one.
  bool AppendDirectory(const std::vector<ExifParts::Field>& fields, std::uint32_t tag) {
    if (fields.empty()) return true;
    const int file = TIFFFileno(tiff_.get());
    const off_t end = lseek(file, 0, SEEK_END);
    if (end < 0) return false;
    // Directories begin at even offsets.
    const off_t begin = end + end % 2;
    const auto bytes = MakeDirectory(fields, static_cast<std::uint64_t>(begin), is_big_);
    if (pwrite(file, bytes.data(), bytes.size(), begin) != static_cast<ssize_t>(bytes.size())) return false;
    Set(tag, static_cast<std::uint64_t>(begin));
    return true;
  }

  /// The samples of rows that arrived, in the type of the file.
  const unsigned char* Convert(const void* samples, std::size_t count) {
    const StoredType type = GetPlan().type;
    converted_.resize(count * GetSize(type));
    if (type == StoredType::kHalf) {
      OIIO::convert_pixel_values(OIIO::TypeDesc::FLOAT, samples, OIIO::TypeDesc::HALF, converted_.data(),
                                 static_cast<int>(count));
    } else {
      std::memcpy(converted_.data(), samples, converted_.size());
    }
    return converted_.data();
  }

  /// Rows gather until a strip is whole; the library may change the bytes that it is handed.
  Status PutRows(int begin, int end, const void* samples) override {
    const std::size_t row_samples = stored_row_ / GetSize(GetPlan().type);
    const auto* row = static_cast<const unsigned char*>(samples);
    for (int y = begin; y < end; ++y, row += GetRowBytes()) {
      const unsigned char* bytes = Convert(row, row_samples);
      strip_.insert(strip_.end(), bytes, bytes + stored_row_);
      const bool is_full = strip_.size() == static_cast<std::size_t>(rows_per_strip_) * stored_row_;
      if (!is_full && y + 1 != GetPlan().size_y) continue;
      const auto size = static_cast<tmsize_t>(strip_.size());
      if (TIFFWriteEncodedStrip(tiff_.get(), next_strip_++, strip_.data(), size) != size) return Fail();
      strip_.clear();
    }
    return {};
  }

  Status Close() override {
    bool ok = TIFFFlushData(tiff_.get()) == 1;
    ok = ok && AppendDirectory(exif_.photo, TIFFTAG_EXIFIFD) && AppendDirectory(exif_.gps, TIFFTAG_GPSIFD);
    ok = ok && TIFFWriteDirectory(tiff_.get()) == 1;
    tiff_.reset();
    return ok && problem_.empty() ? Status() : Fail();
  }

  Status Fail() const {
    return Status::Error("it cannot be written" + (problem_.empty() ? std::string() : ": " + problem_));
  }

  Compression compression_;
  // The handle writes into the text until it is closed.
  std::string problem_;
  TiffHandle tiff_;
  ExifParts exif_;
  std::size_t stored_row_ = 0;
  int rows_per_strip_ = 1;
  std::uint32_t next_strip_ = 0;
  bool is_big_ = false;
  std::vector<unsigned char> strip_;
  std::vector<unsigned char> converted_;
};

}  // namespace

Status CheckTiffCompression(const std::string& compression) {
  if (FindCompression(compression) != nullptr) return {};
  return Status::Error("the compression \"" + compression + "\" is not one of TIFF's: " + ListCompressions());
}

std::unique_ptr<ImageEncoder> CreateTiff(const std::filesystem::path& path, const WritePlan& plan,
                                         std::vector<std::string>& notes, Status& status) {
  status = CheckTiffCompression(plan.compression);
  if (status.IsError()) return nullptr;
  auto encoder = std::make_unique<TiffEncoder>(plan, *FindCompression(plan.compression), notes);
  status = encoder->Open(path);
  if (status.IsError()) return nullptr;
  return encoder;
}

}  // namespace ScEng
