// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Rasters/RasterLayout.h"

#include <cpl_string.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

namespace ScEng {
namespace {

constexpr int kMostBands = 65536;
constexpr std::int64_t kMostBlockBytes = std::int64_t{1} << 30;

constexpr std::pair<GDALDataType, StoredType> kTypes[] = {
    {GDT_Byte, StoredType::kUint8},    {GDT_UInt16, StoredType::kUint16}, {GDT_Int16, StoredType::kInt16},
    {GDT_UInt32, StoredType::kUint32}, {GDT_Int32, StoredType::kInt32},   {GDT_UInt64, StoredType::kUint64},
    {GDT_Int64, StoredType::kInt64},   {GDT_Float32, StoredType::kFloat}, {GDT_Float64, StoredType::kDouble},
#if GDAL_VERSION_NUM >= GDAL_COMPUTE_VERSION(3, 7, 0)
    {GDT_Int8, StoredType::kInt8},
#endif
};

std::optional<StoredType> GetStoredType(GDALRasterBand& band) {
  const auto* row = std::find_if(std::begin(kTypes), std::end(kTypes),
                                 [&](const auto& pair) { return pair.first == band.GetRasterDataType(); });
  if (row == std::end(kTypes)) return std::nullopt;
  // Before there was a type for signed bytes, bands were marked.
  const char* mark = band.GetMetadataItem("PIXELTYPE", "IMAGE_STRUCTURE");
  if (row->first == GDT_Byte && mark != nullptr && EQUAL(mark, "SIGNEDBYTE")) return StoredType::kInt8;
  return row->second;
}

std::optional<double> GetNodata(GDALRasterBand& band) {
  int has_value = 0;
  double value = 0;
  if (band.GetRasterDataType() == GDT_Int64) {
    value = static_cast<double>(band.GetNoDataValueAsInt64(&has_value));
  } else if (band.GetRasterDataType() == GDT_UInt64) {
    value = static_cast<double>(band.GetNoDataValueAsUInt64(&has_value));
  } else {
    value = band.GetNoDataValue(&has_value);
  }
  // NaN is NaN without being told so.
  if (has_value == 0 || std::isnan(value)) return std::nullopt;
  return value;
}

StoredSamples DescribeSamples(GDALRasterBand& band, StoredType type) {
  StoredSamples samples;
  samples.type = type;
  samples.nodata = GetNodata(band);
  // Some drivers report 1 and 0 for files that say nothing.
  int is_given = 0;
  const double scale = band.GetScale(&is_given);
  if (is_given != 0 && scale != 1.0) samples.scale = scale;
  const double offset = band.GetOffset(&is_given);
  if (is_given != 0 && offset != 0.0) samples.offset = offset;
  return samples;
}

/// Takes over the palette of the first band, where that is one of colours.
bool ReadPalette(GDALDataset& dataset, RasterLayout& layout) {
  GDALRasterBand& band = *dataset.GetRasterBand(1);
  const GDALColorTable* table = band.GetColorTable();
  const bool is_index = band.GetRasterDataType() == GDT_Byte || band.GetRasterDataType() == GDT_UInt16;
  if (table == nullptr || !is_index || band.GetColorInterpretation() != GCI_PaletteIndex ||
      table->GetPaletteInterpretation() != GPI_RGB || table->GetColorEntryCount() < 1) {
    return false;
  }
  const auto component = [](short value) { return static_cast<std::uint8_t>(std::clamp<short>(value, 0, 255)); };
  for (int i = 0; i < table->GetColorEntryCount(); ++i) {
    const GDALColorEntry& entry = *table->GetColorEntry(i);
    layout.palette.push_back({component(entry.c1), component(entry.c2), component(entry.c3), component(entry.c4)});
  }
  const auto nodata = GetNodata(band);
  if (nodata && *nodata >= 0 && *nodata <= 65535 && *nodata == std::floor(*nodata)) {
    layout.palette_nodata = static_cast<int>(*nodata);
  }
  return true;
}

void AddPaletteChannels(FilePart& part, RasterLayout& layout) {
  // An index without a value has no opacity of its own.
  bool has_opacity = false;
  for (std::size_t i = 0; i < layout.palette.size(); ++i) {
    has_opacity |= layout.palette[i][3] != 255 && static_cast<int>(i) != layout.palette_nodata;
  }
  StoredSamples samples;
  samples.type = StoredType::kUint8;
  for (int component = 0; component < (has_opacity ? 4 : 3); ++component) {
    part.channels.push_back({std::string(1, "RGBA"[component]), samples});
    layout.sources.push_back({0, component});
  }
  if (has_opacity) part.opacity_channel = 3;
}

/// Names by what the colours of the bands are, where a raster has each of red, green and blue once.
std::vector<std::string> NameBands(GDALDataset& dataset) {
  const int bands = dataset.GetRasterCount();
  std::vector<std::string> names;
  std::array<int, 3> colors{};
  for (int i = 1; i <= bands; ++i) {
    GDALRasterBand& band = *dataset.GetRasterBand(i);
    names.emplace_back(band.GetDescription());
    const int color = band.GetColorInterpretation() - GCI_RedBand;
    if (color >= 0 && color < 3) ++colors[static_cast<std::size_t>(color)];
  }
  const bool is_named = std::any_of(names.begin(), names.end(), [](const auto& name) { return !name.empty(); });
  if (colors != std::array<int, 3>{1, 1, 1} || (bands <= 4 && !is_named)) return names;
  for (int i = 1; i <= bands; ++i) {
    const int color = dataset.GetRasterBand(i)->GetColorInterpretation() - GCI_RedBand;
    if (color >= 0 && color <= GCI_AlphaBand - GCI_RedBand) names[static_cast<std::size_t>(i) - 1] = "RGBA"[color];
  }
  return names;
}

void AddBandChannels(GDALDataset& dataset, FilePart& part, RasterLayout& layout, int first_band) {
  const auto names = NameBands(dataset);
  for (int i = first_band; i < dataset.GetRasterCount(); ++i) {
    GDALRasterBand& band = *dataset.GetRasterBand(i + 1);
    const auto type = GetStoredType(band);
    if (!type) {
      const bool is_complex = GDALDataTypeIsComplex(band.GetRasterDataType()) != 0;
      part.problem = is_complex ? "its samples are complex numbers, which have no single value per pixel"
                                : std::string("its samples have the type ") +
                                      GDALGetDataTypeName(band.GetRasterDataType()) + ", which is not read";
    }
    if (band.GetColorInterpretation() == GCI_AlphaBand && part.opacity_channel < 0) {
      const char* mark = band.GetMetadataItem("ALPHA", "IMAGE_STRUCTURE");
      part.opacity_channel = static_cast<int>(part.channels.size());
      part.is_multiplied = mark != nullptr && EQUAL(mark, "PREMULTIPLIED");
    }
    StoredSamples samples = DescribeSamples(band, type.value_or(StoredType::kFloat));
    if (part.opacity_channel == static_cast<int>(part.channels.size())) samples.nodata.reset();
    part.channels.push_back({names[static_cast<std::size_t>(i)], samples});
    layout.sources.push_back({i, -1});
  }
}

/// Whether rows can be had without decoding all: not where the whole is one block, or the driver reads from the start.
bool ReadsRegions(GDALRasterBand& band, const std::string& driver, int size_y) {
  constexpr std::string_view kFromStart[] = {"PNG", "JPEG", "GIF", "BIGGIF", "WEBP", "HEIF", "JPEGXL", "XYZ"};
  int block_x = 0;
  int block_y = 0;
  band.GetBlockSize(&block_x, &block_y);
  const bool is_one_block = block_y >= size_y && size_y > 1024;
  return !is_one_block && std::find(std::begin(kFromStart), std::end(kFromStart), driver) == std::end(kFromStart);
}

}  // namespace

void DescribeRaster(GDALDataset& dataset, FilePart& part, RasterLayout& layout) {
  part.size_x = dataset.GetRasterXSize();
  part.size_y = dataset.GetRasterYSize();
  const int bands = dataset.GetRasterCount();
  if (bands < 1) {
    part.problem = "it has no bands";
    return;
  }
  if (bands > kMostBands) {
    part.problem = "it has " + std::to_string(bands) + " bands; 65536 are the most that are read";
    return;
  }
  const bool has_palette = ReadPalette(dataset, layout);
  if (has_palette) AddPaletteChannels(part, layout);
  // Bands after one with a palette are further channels.
  AddBandChannels(dataset, part, layout, has_palette ? 1 : 0);
  if (!has_palette && !part.channels.empty()) part.metadata.nodata = part.channels.front().samples.nodata;

  GDALRasterBand& first = *dataset.GetRasterBand(1);
  int block_x = 0;
  int block_y = 0;
  first.GetBlockSize(&block_x, &block_y);
  const std::int64_t block_samples = std::int64_t{block_x} * block_y;
  if (block_samples > kMostBlockBytes / GDALGetDataTypeSizeBytes(first.GetRasterDataType())) {
    part.problem = "its blocks have " + std::to_string(block_x) + " x " + std::to_string(block_y) +
                   " samples; blocks of more than 1 GiB are not read";
  }
  part.reads_regions = ReadsRegions(first, layout.driver, part.size_y);
  const char* compression = dataset.GetMetadataItem("COMPRESSION", "IMAGE_STRUCTURE");
  part.compression = compression == nullptr ? "" : compression;
  std::transform(part.compression.begin(), part.compression.end(), part.compression.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
}

}  // namespace ScEng
