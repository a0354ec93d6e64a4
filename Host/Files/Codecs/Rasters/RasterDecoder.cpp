// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Rasters/RasterDecoder.h"

#include <cpl_string.h>
#include <cpl_vsi.h>
#include <gdal_priv.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "Host/Files/Codecs/Rasters/AsciiGrid.h"
#include "Host/Files/Codecs/Rasters/Gdal.h"
#include "Host/Files/Codecs/Rasters/Numbers.h"
#include "Host/Files/Codecs/Rasters/RasterLayout.h"
#include "Host/Files/Codecs/Rasters/RasterMetadata.h"
#include "Host/Files/Codecs/Rasters/Subdatasets.h"
#include "Host/Files/Codecs/Rasters/TiffBlocks.h"
#include "Host/Files/Codecs/Rasters/VrtSources.h"

namespace ScEng {
namespace {

// Which format of the table a driver reads; the names of other formats are those of their drivers.
constexpr std::pair<const char*, const char*> kFormats[] = {
    {"geotiff", "GTiff"}, {"ascii-grid", "AAIGrid"},   {"ehdr", "EHdr"}, {"hgt", "SRTMHGT"},
    {"vrt", "VRT"},       {"jpeg2000", "JP2OpenJPEG"},
};

// Rows that are converted at a time, where the blocks of the file are not higher.
constexpr int kRowsAtOnce = 64;

std::string GetFormatName(const std::string& driver) {
  for (const auto& [format, name] : kFormats) {
    if (driver == name) return format;
  }
  std::string name = driver;
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return name;
}

/// How many rows from the first one are in the file that a driver for unpacked samples reads, all of them for other
/// drivers. Newer ones fill up what is missing with zeros.
int CountWholeRows(GDALDataset& dataset) {
  const int rows = dataset.GetRasterYSize();
  GDALDataset::RawBinaryLayout layout;
  VSIStatBufL status;
  if (!dataset.GetRawBinaryLayout(layout)) return rows;
  const std::string file = layout.osRawFilename.empty() ? dataset.GetDescription() : layout.osRawFilename;
  if (VSIStatL(file.c_str(), &status) != 0) return rows;
  const auto is_whole = [&](int row) {
    const std::int64_t sample_bytes = GDALGetDataTypeSizeBytes(layout.eDataType);
    const auto from_first = [](std::int64_t step, std::int64_t count) {
      return std::max<std::int64_t>(step, 0) * count;
    };
    std::int64_t end = 0;
    return !__builtin_mul_overflow(static_cast<std::int64_t>(layout.nLineOffset), std::int64_t{row}, &end) &&
           !__builtin_add_overflow(end, static_cast<std::int64_t>(layout.nImageOffset), &end) &&
           !__builtin_add_overflow(end, from_first(layout.nBandOffset, dataset.GetRasterCount() - 1), &end) &&
           !__builtin_add_overflow(end, from_first(layout.nPixelOffset, dataset.GetRasterXSize() - 1), &end) &&
           !__builtin_add_overflow(end, sample_bytes, &end) && end <= static_cast<std::int64_t>(status.st_size);
  };
  if (layout.nLineOffset <= 0) return rows > 0 && is_whole(0) ? rows : 0;
  int whole = 0;
  for (int rest = rows; rest > 0;) {
    const int half = (rest + 1) / 2;
    if (is_whole(whole + half - 1)) {
      whole += half;
      rest -= half;
    } else {
      rest = half - 1;
    }
  }
  return whole;
}

class RasterDecoder final : public ImageDecoder {
 public:
  RasterDecoder(std::string path, FileDescription description, std::vector<RasterLayout> layouts)
      : path_(std::move(path)), description_(std::move(description)), layouts_(std::move(layouts)) {}
  ~RasterDecoder() override {
    const GdalScope scope;
    dataset_.reset();
  }

  [[nodiscard]] const FileDescription& GetDescription() const override { return description_; }

  Status Read(const ReadRequest& request, const ReadTarget& target) override {
    const FilePart& part = description_.parts.at(request.part);
    if (!part.problem.empty()) return Status::Error(part.problem);
    Status status = CheckRequest(part, request);
    if (!status.IsError()) status = OpenPart(request.part);
    if (status.IsError()) return status;
    if (grid_ != nullptr) return ReadGrid(request, target);
    const int step = GetRowsAtOnce();
    for (int row = request.row_begin; row < request.row_end;) {
      const int end = static_cast<int>(std::min<std::int64_t>((std::int64_t{row} / step + 1) * step, request.row_end));
      status = ReadRows(request, target, row, end);
      if (status.IsError()) return status;
      row = end;
    }
    return {};
  }

 private:
  static Status CheckRequest(const FilePart& part, const ReadRequest& request) {
    const bool is_inside = request.column_begin >= 0 && request.column_begin <= request.column_end &&
                           request.column_end <= part.size_x && request.row_begin >= 0 &&
                           request.row_begin <= request.row_end && request.row_end <= part.size_y;
    const bool has_channels = std::all_of(request.channels.begin(), request.channels.end(),
                                          [&](std::size_t channel) { return channel < part.channels.size(); });
    return is_inside && has_channels ? Status() : Status::Error("more is asked for than the file has");
  }

  [[nodiscard]] const RasterLayout& GetLayout() const { return layouts_[*open_part_]; }

  Status OpenPart(std::size_t index) {
    if (open_part_ == index) return {};
    GdalScope scope;
    open_part_.reset();
    blocks_.reset();
    grid_.reset();
    dataset_.reset();
    const RasterLayout& layout = layouts_[index];
    const FilePart& part = description_.parts[index];
    const std::array<const char*, 2> driver{layout.driver.c_str(), nullptr};
    dataset_ = OpenRaster(layout.connection, driver.data());
    if (dataset_ == nullptr) return Status::Error(MakeClause(scope.GetMessage(), path_));
    // Between two openings a file may have become another one.
    if (dataset_->GetRasterXSize() != part.size_x || dataset_->GetRasterYSize() != part.size_y) {
      return Status::Error("the file changed while it was read");
    }
    if (layout.tiff_directory >= 0) {
      blocks_ = TiffBlocks::Open(path_, layout.tiff_directory, part.size_x, part.size_y);
    }
    whole_rows_ = blocks_ == nullptr ? CountWholeRows(*dataset_) : part.size_y;
    if (layout.driver == "AAIGrid") grid_ = std::make_unique<AsciiGridReader>(path_, part.size_x, part.size_y);
    open_part_ = index;
    return {};
  }

  /// Whole rows of blocks, so that each block is decoded once.
  [[nodiscard]] int GetRowsAtOnce() const {
    int block_x = 0;
    int block_y = 0;
    dataset_->GetRasterBand(1)->GetBlockSize(&block_x, &block_y);
    block_y = std::max(block_y, 1);
    return block_y >= kRowsAtOnce ? block_y : kRowsAtOnce / block_y * block_y;
  }

  Status ReadRows(const ReadRequest& request, const ReadTarget& target, int row_begin, int row_end) {
    if (row_end > whole_rows_) return MakeShortError(whole_rows_);
    const RasterLayout& layout = GetLayout();
    std::vector<int> bands;
    for (const std::size_t channel : request.channels) bands.push_back(layout.sources[channel].band);
    std::sort(bands.begin(), bands.end());
    bands.erase(std::unique(bands.begin(), bands.end()), bands.end());
    if (blocks_ != nullptr) {
      Status status = blocks_->Check(bands, request.column_begin, request.column_end, row_begin, row_end);
      if (status.IsError()) return status;
    }
    // Bands of one type are read together: in many files their samples lie together, too.
    std::map<GDALDataType, std::vector<int>> groups;
    for (const int band : bands) groups[GetBandType(band)].push_back(band);
    for (const auto& [type, group] : groups) {
      Status status = ReadGroup(request, target, type, group, row_begin, row_end);
      if (status.IsError()) return status;
    }
    return {};
  }

  [[nodiscard]] GDALDataType GetBandType(int band) const {
    return dataset_->GetRasterBand(band + 1)->GetRasterDataType();
  }

  Status ReadGroup(const ReadRequest& request, const ReadTarget& target, GDALDataType type,
                   const std::vector<int>& bands, int row_begin, int row_end) {
    const int columns = request.column_end - request.column_begin;
    const auto sample_bytes = static_cast<std::size_t>(GDALGetDataTypeSizeBytes(type));
    const auto rows = static_cast<std::size_t>(row_end - row_begin);
    const std::size_t row_bytes = static_cast<std::size_t>(columns) * sample_bytes;
    const std::size_t band_bytes = row_bytes * rows;
    if (band_bytes == 0) return {};
    buffer_.assign(band_bytes * bands.size(), 0);
    std::vector<int> numbers;
    for (const int band : bands) numbers.push_back(band + 1);
    GdalScope scope;
    const CPLErr result =
        dataset_->RasterIO(GF_Read, request.column_begin, row_begin, columns, row_end - row_begin, buffer_.data(),
                           columns, row_end - row_begin, type, static_cast<int>(numbers.size()), numbers.data(), 0, 0,
                           static_cast<GSpacing>(band_bytes), nullptr);
    if (result != CE_None || scope.HasFailed()) return MakeError(scope, row_begin, row_end);
    for (std::size_t i = 0; i < request.channels.size(); ++i) {
      const ChannelSource& source = GetLayout().sources[request.channels[i]];
      const auto found = std::find(bands.begin(), bands.end(), source.band);
      if (found == bands.end()) continue;
      const unsigned char* from = buffer_.data() + static_cast<std::size_t>(found - bands.begin()) * band_bytes;
      float* to = target.samples + static_cast<std::size_t>(row_begin - request.row_begin) * target.row_stride + i;
      for (std::size_t row = 0; row < rows; ++row, from += row_bytes, to += target.row_stride) {
        DecodeRow(request, i, type, from, to, target.pixel_stride);
      }
    }
    return {};
  }

  void DecodeRow(const ReadRequest& request, std::size_t i, GDALDataType type, const unsigned char* from, float* to,
                 std::size_t stride) const {
    const auto count = static_cast<std::size_t>(request.column_end - request.column_begin);
    const RasterLayout& layout = GetLayout();
    const std::size_t channel = request.channels[i];
    const int component = layout.sources[channel].palette_component;
    if (component < 0) {
      const auto& samples = description_.parts[request.part].channels[channel].samples;
      DecodeSamples(from, GetSize(samples.type), samples, request.scale, to, stride, count);
      return;
    }
    const float divisor = request.scale == SampleScale::kStored ? 1.0F : 255.0F;
    for (std::size_t x = 0; x < count; ++x) {
      const std::size_t index = type == GDT_Byte ? from[x] : from[2 * x] | std::size_t{from[2 * x + 1]} << 8;
      const bool has_value = index < layout.palette.size() && static_cast<int>(index) != layout.palette_nodata;
      to[x * stride] = has_value
                           ? static_cast<float>(layout.palette[index][static_cast<std::size_t>(component)]) / divisor
                           : std::numeric_limits<float>::quiet_NaN();
    }
  }

  [[nodiscard]] Status MakeShortError(int rows) const {
    return Status::Error("the file is shortened: " + std::to_string(rows) + " of " +
                         std::to_string(dataset_->GetRasterYSize()) + " rows are there");
  }

  [[nodiscard]] Status MakeError(const GdalScope& scope, int row_begin, int row_end) const {
    const std::string message = scope.GetMessage();
    const int size_y = dataset_->GetRasterYSize();
    // What a driver for unpacked samples says where the file ends early, with the row.
    constexpr std::string_view kShort = "Failed to read scanline ";
    if (const std::size_t at = message.find(kShort); at != std::string::npos) {
      std::string_view number = std::string_view(message).substr(at + kShort.size());
      number = number.substr(0, number.find_first_not_of("0123456789"));
      if (const auto row = Parse<int>(number); row && *row >= 0 && *row < size_y) {
        return MakeShortError(*row);
      }
    }
    std::string clause = MakeClause(message, path_);
    if (clause.empty()) clause = "the library for rasters gives no reason";
    return Status::Error("rows " + std::to_string(row_begin) + " to " + std::to_string(row_end - 1) +
                         " cannot be read: " + clause);
  }

  Status ReadGrid(const ReadRequest& request, const ReadTarget& target) {
    StoredSamples samples = description_.parts[request.part].channels.front().samples;
    samples.type = StoredType::kDouble;
    const auto count = static_cast<std::size_t>(request.column_end - request.column_begin);
    for (int row = request.row_begin; row < request.row_end; ++row) {
      Status status = grid_->ReadRow(row, numbers_);
      if (status.IsError()) return status;
      float* to = target.samples + static_cast<std::size_t>(row - request.row_begin) * target.row_stride;
      for (std::size_t i = 0; i < request.channels.size(); ++i) {
        DecodeSamples(numbers_.data() + request.column_begin, sizeof(double), samples, request.scale, to + i,
                      target.pixel_stride, count);
      }
    }
    return {};
  }

  std::string path_;
  FileDescription description_;
  std::vector<RasterLayout> layouts_;
  std::optional<std::size_t> open_part_;
  DatasetPtr dataset_;
  std::unique_ptr<TiffBlocks> blocks_;
  std::unique_ptr<AsciiGridReader> grid_;
  int whole_rows_ = 0;
  std::vector<unsigned char> buffer_;
  std::vector<double> numbers_;
};

/// Only files of the dataset's own folder, whatever it names.
Status CheckFiles(GDALDataset& dataset, const std::filesystem::path& file) {
  const CPLStringList list(dataset.GetFileList(), TRUE);
  for (int i = 0; i < list.size(); ++i) {
    if (IsBelow(list[i], file.parent_path())) continue;
    return Status::Error("the file names another that is not in its folder or below");
  }
  return {};
}

Status CheckPath(const std::filesystem::path& file, const std::string& format) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return Status::Error("it is no plain file");
  return format == "vrt" || (format.empty() && IsVrt(file)) ? CheckVrtSources(file) : Status();
}

std::string DescribeFailure(const GdalScope& scope, const std::string& path) {
  const std::string message = scope.GetMessage();
  const bool is_unknown = message.empty() || message.find("not recognized as") != std::string::npos;
  if (!is_unknown) return MakeClause(message, path);
  std::error_code error;
  const auto size = std::filesystem::file_size(path, error);
  if (!error && EQUAL(std::filesystem::path(path).extension().c_str(), ".hgt")) {
    return "it has " + std::to_string(size) +
           " bytes; an SRTM file is named like N46E007.hgt and has 1201 x 1201 or 3601 x 3601 samples of 2 bytes";
  }
  return "it is damaged or in no format that is read";
}

void AddPart(GDALDataset& dataset, RasterLayout layout, const std::string& name, FileDescription& description,
             std::vector<RasterLayout>& layouts) {
  FilePart part;
  part.name = name;
  layout.driver = dataset.GetDriver()->GetDescription();
  DescribeRaster(dataset, part, layout);
  ReadRasterMetadata(dataset, part, description.notes);
  // Its cells are read as decimal numbers, whatever GDAL makes of the first of them.
  if (layout.driver == "AAIGrid" && !part.channels.empty()) part.channels.front().samples.type = StoredType::kFloat;
  description.parts.push_back(std::move(part));
  layouts.push_back(std::move(layout));
}

void AddSubdatasets(const std::vector<Subdataset>& subdatasets, const std::string& path, const std::string& driver,
                    FileDescription& description, std::vector<RasterLayout>& layouts) {
  for (const Subdataset& subdataset : subdatasets) {
    GdalScope scope;
    // Some formats have a driver of their own for what lies in their files.
    const std::string image = driver + "Image";
    const std::array<const char*, 3> allowed{driver.c_str(), image.c_str(), nullptr};
    RasterLayout layout;
    layout.connection = subdataset.connection;
    layout.tiff_directory = subdataset.tiff_directory;
    if (const DatasetPtr dataset = OpenRaster(subdataset.connection, allowed.data())) {
      AddPart(*dataset, std::move(layout), subdataset.name, description, layouts);
    } else {
      description.notes.push_back("the part " + MakeClause(subdataset.name, "") +
                                  " is left out: " + MakeClause(scope.GetMessage(), path));
    }
  }
}

}  // namespace

std::unique_ptr<ImageDecoder> OpenRasterFile(const std::filesystem::path& file, const std::string& format,
                                             Status& status) {
  RegisterDrivers();
  const std::filesystem::path absolute = std::filesystem::absolute(file);
  status = CheckPath(absolute, format);
  if (status.IsError()) return nullptr;
  // A folder that is named like one of GDAL's own file systems is an ordinary one.
  std::string path = absolute.string();
  if (path.starts_with("/vsi")) path.insert(0, "/.");

  GdalScope scope;
  std::array<const char*, 2> one_driver{};
  for (const auto& [name, driver] : kFormats) {
    if (format == name) one_driver[0] = driver;
  }
  const DatasetPtr dataset = OpenRaster(path, one_driver[0] == nullptr ? GetRasterDrivers() : one_driver.data());
  if (dataset == nullptr) {
    status = Status::Error(DescribeFailure(scope, path));
    return nullptr;
  }
  const std::string driver = dataset->GetDriver()->GetDescription();
  if (driver == "VRT" && !IsVrt(absolute)) {
    status = Status::Error("it is a VRT that does not begin as one");
    return nullptr;
  }
  status = CheckFiles(*dataset, absolute);
  if (status.IsError()) return nullptr;

  FileDescription description;
  std::vector<RasterLayout> layouts;
  description.format = GetFormatName(driver);
  const auto subdatasets = ListSubdatasets(*dataset, path, description.notes);
  if (subdatasets.empty()) {
    RasterLayout layout;
    layout.connection = path;
    layout.tiff_directory = driver == "GTiff" ? 0 : -1;
    AddPart(*dataset, std::move(layout), "", description, layouts);
  } else {
    AddSubdatasets(subdatasets, path, driver, description, layouts);
  }
  if (description.parts.empty()) {
    status = Status::Error("none of its parts can be read");
    return nullptr;
  }
  return std::make_unique<RasterDecoder>(path, std::move(description), std::move(layouts));
}

}  // namespace ScEng
