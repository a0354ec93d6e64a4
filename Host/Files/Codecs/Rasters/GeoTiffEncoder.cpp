// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Rasters/GeoTiffEncoder.h"

#include <cpl_string.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <limits>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "Host/Files/Codecs/Rasters/Gdal.h"
#include "Host/Files/Codecs/Rasters/RasterMetadata.h"
#include "Host/Files/Codecs/Rasters/TiffBlocks.h"
#include "Host/Util/ParallelRows.h"

namespace ScEng {
namespace {

struct TypeRow {
  StoredType stored;
  GDALDataType type;
  const char* predictor;
};
// The predictor of floats sorts their bytes, the one of integers takes differences.
constexpr TypeRow kTypes[] = {
    {StoredType::kFloat, GDT_Float32, "3"},
    {StoredType::kUint16, GDT_UInt16, "2"},
    {StoredType::kInt16, GDT_Int16, "2"},
    {StoredType::kUint8, GDT_Byte, "2"},
};

struct CompressionRow {
  std::string_view asked;
  const char* name;
  bool predicts;
};
constexpr CompressionRow kCompressions[] = {
    {"", "DEFLATE", true},  {"deflate", "DEFLATE", true},    {"zip", "DEFLATE", true}, {"lzw", "LZW", true},
    {"zstd", "ZSTD", true}, {"packbits", "PACKBITS", false}, {"none", "NONE", false},
};

/// Null for a word that there is not, and for what this build of the library cannot.
const CompressionRow* FindCompression(const std::string& asked) {
  const auto* found = std::find_if(std::begin(kCompressions), std::end(kCompressions),
                                   [&](const CompressionRow& row) { return row.asked == asked; });
  const char* known = GetGDALDriverManager()->GetDriverByName("GTiff")->GetMetadataItem(GDAL_DMD_CREATIONOPTIONLIST);
  const bool is_known =
      found != std::end(kCompressions) && known != nullptr && std::strstr(known, found->name) != nullptr;
  return is_known ? found : nullptr;
}

// Strips of about this size are read in part without much waste.
constexpr std::size_t kStripBytes = 1 << 18;

/// Whether a number is one that a sample of the type can have.
bool Holds(StoredType type, double number) {
  switch (type) {
    case StoredType::kUint8: return number >= 0 && number <= 255 && number == std::floor(number);
    case StoredType::kUint16: return number >= 0 && number <= 65535 && number == std::floor(number);
    case StoredType::kInt16: return number >= -32768 && number <= 32767 && number == std::floor(number);
    default: return !(std::abs(number) > std::numeric_limits<float>::max());
  }
}

class GeoTiffEncoder final : public ImageEncoder {
 public:
  GeoTiffEncoder(std::string path, const WritePlan& plan, GDALDataType type)
      : path_(std::move(path)), plan_(plan), type_(type), sample_bytes_(GetSize(plan.type)) {
    row_bytes_ = static_cast<std::size_t>(plan.size_x) * plan.channels.size() * sample_bytes_;
    strip_rows_ =
        static_cast<int>(std::clamp<std::size_t>(kStripBytes / row_bytes_, 1, static_cast<std::size_t>(plan.size_y)));
  }
  ~GeoTiffEncoder() override {
    const GdalScope scope;
    dataset_.reset();
  }

  Status Begin(const CompressionRow& compression, const char* predictor, std::vector<std::string>& notes) {
    GdalScope scope;
    const auto channels = static_cast<int>(plan_.channels.size());
    const bool has_opacity = plan_.opacity_channel == channels - 1 && channels > 1;
    const int colors = channels - (has_opacity ? 1 : 0);
    CPLStringList options;
    options.SetNameValue("BIGTIFF", "IF_SAFER");
    options.SetNameValue("INTERLEAVE", "PIXEL");
    options.SetNameValue("BLOCKYSIZE", std::to_string(strip_rows_).c_str());
    options.SetNameValue("COMPRESS", compression.name);
    // Strips are compressed at once and written in their order, so that the bytes do not depend on the number of
    // threads.
    options.SetNameValue("NUM_THREADS", std::to_string(std::clamp<std::size_t>(GetNumThreads(), 1, 64)).c_str());
    if (compression.predicts) options.SetNameValue("PREDICTOR", predictor);
    options.SetNameValue("PHOTOMETRIC", colors == 3 ? "RGB" : "MINISBLACK");
    options.SetNameValue("ALPHA", has_opacity ? "NON-PREMULTIPLIED" : "NO");
    if (!plan_.metadata.icc.empty()) {
      options.SetNameValue("SOURCE_ICC_PROFILE", EncodeProfile(plan_.metadata.icc).c_str());
    }
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
    dataset_.reset(driver->Create(path_.c_str(), plan_.size_x, plan_.size_y, channels, type_, options.List()));
    if (dataset_ == nullptr) return MakeError(scope);
    // A message about what is merely metadata is a note; whether samples arrive is checked with each of them.
    WriteNodata(notes);
    WriteNames();
    WriteRasterMetadata(*dataset_, plan_, notes);
    return {};
  }

  Status WriteRows(int row_begin, int row_end, const void* samples) override {
    const auto* bytes = static_cast<const unsigned char*>(samples);
    if (plan_.metadata.nodata && plan_.type == StoredType::kFloat) {
      bytes = MarkMissing(bytes, static_cast<std::size_t>(row_end - row_begin));
    }
    for (int row = row_begin; row < row_end; ++row, bytes += row_bytes_) {
      strip_.insert(strip_.end(), bytes, bytes + row_bytes_);
      ++next_row_;
      if (next_row_ % strip_rows_ != 0 && next_row_ != plan_.size_y) continue;
      Status status = WriteStrip();
      if (status.IsError()) return status;
    }
    return {};
  }

  Status Finish() override {
    if (next_row_ != plan_.size_y) return Status::Error("not all rows were written");
    GdalScope scope;
    dataset_.reset();
    if (scope.HasFailed()) return MakeError(scope);
    // A full disk may show no sooner than in what is not there.
    const auto blocks = TiffBlocks::Open(path_, 0, plan_.size_x, plan_.size_y);
    if (blocks == nullptr || blocks->CountRows() != plan_.size_y) {
      return Status::Error("the samples could not be written; is there enough space?");
    }
    return {};
  }

 private:
  void WriteNodata(std::vector<std::string>& notes) {
    if (!plan_.metadata.nodata) return;
    if (Holds(plan_.type, *plan_.metadata.nodata)) {
      dataset_->GetRasterBand(1)->SetNoDataValue(*plan_.metadata.nodata);
      return;
    }
    plan_.metadata.nodata.reset();
    notes.push_back(std::string("the nodata value is left out: it is no number that a sample of the type ") +
                    GetName(plan_.type) + " has");
  }

  void WriteNames() {
    static const std::set<std::string_view> plain{"", "R", "G", "B", "A", "Y"};
    for (std::size_t i = 0; i < plan_.channels.size(); ++i) {
      if (plain.count(plan_.channels[i]) != 0) continue;
      dataset_->GetRasterBand(static_cast<int>(i) + 1)->SetDescription(plan_.channels[i].c_str());
    }
  }

  /// The rows with the nodata value in the place of NaN.
  const unsigned char* MarkMissing(const unsigned char* bytes, std::size_t rows) {
    marked_.resize(rows * row_bytes_ / sizeof(float));
    std::memcpy(marked_.data(), bytes, rows * row_bytes_);
    const auto nodata = static_cast<float>(*plan_.metadata.nodata);
    std::replace_if(
        marked_.begin(), marked_.end(), [](float sample) { return std::isnan(sample); }, nodata);
    return reinterpret_cast<const unsigned char*>(marked_.data());
  }

  Status WriteStrip() {
    GdalScope scope;
    const int row_begin = (next_row_ - 1) / strip_rows_ * strip_rows_;
    const auto pixel = static_cast<GSpacing>(plan_.channels.size() * sample_bytes_);
    const CPLErr result =
        dataset_->RasterIO(GF_Write, 0, row_begin, plan_.size_x, next_row_ - row_begin, strip_.data(), plan_.size_x,
                           next_row_ - row_begin, type_, static_cast<int>(plan_.channels.size()), nullptr, pixel,
                           static_cast<GSpacing>(row_bytes_), static_cast<GSpacing>(sample_bytes_), nullptr);
    strip_.clear();
    // Written now, and not when the cache is full, so that the order in the file depends on nothing else. What fails is
    // reported; newer versions of the library also answer so where they have written past the cache.
    for (int band = 1; band <= dataset_->GetRasterCount(); ++band) {
      static_cast<void>(dataset_->GetRasterBand(band)->FlushBlock(0, row_begin / strip_rows_));
    }
    return result != CE_None || scope.HasFailed() ? MakeError(scope) : Status();
  }

  Status MakeError(const GdalScope& scope) const {
    const std::string clause = MakeClause(scope.GetMessage(), path_);
    return Status::Error("it cannot be written" + (clause.empty() ? clause : ": " + clause));
  }

  std::string path_;
  WritePlan plan_;
  GDALDataType type_;
  std::size_t sample_bytes_;
  std::size_t row_bytes_;
  int strip_rows_;
  DatasetPtr dataset_;
  int next_row_ = 0;
  std::vector<unsigned char> strip_;
  std::vector<float> marked_;
};

}  // namespace

Status CheckGeoTiffCompression(const std::string& compression) {
  if (FindCompression(compression) != nullptr) return {};
  return Status::Error("a GeoTIFF is not compressed by \"" + compression.substr(0, 40) +
                       "\"; there are deflate, lzw, zstd, packbits and none");
}

std::unique_ptr<ImageEncoder> CreateGeoTiff(const std::string& path, const WritePlan& plan,
                                            std::vector<std::string>& notes, Status& status) {
  const auto* type =
      std::find_if(std::begin(kTypes), std::end(kTypes), [&](const TypeRow& row) { return row.stored == plan.type; });
  if (type == std::end(kTypes) || plan.channels.empty() || plan.size_x < 1 || plan.size_y < 1) {
    status = Status::Error("a GeoTIFF is written with samples of the types float, uint16, int16 and uint8");
    return nullptr;
  }
  status = CheckGeoTiffCompression(plan.compression);
  if (status.IsError()) return nullptr;
  auto encoder = std::make_unique<GeoTiffEncoder>(path, plan, type->type);
  status = encoder->Begin(*FindCompression(plan.compression), type->predictor, notes);
  if (status.IsError()) return nullptr;
  return encoder;
}

}  // namespace ScEng
