// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Rasters/RasterMetadata.h"

#include <cpl_conv.h>
#include <cpl_string.h>
#include <ogr_spatialref.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Host/Files/Codecs/Rasters/Numbers.h"
#include "Host/Files/Codecs/XmpPacket.h"

namespace ScEng {
namespace {

// GDAL splits a name at a colon, so that what comes before it is kept as a domain.
constexpr const char* kHeaderDomain = "value";
constexpr const char* kProfileDomain = "COLOR_PROFILE";
constexpr const char* kProfileItem = "SOURCE_ICC_PROFILE";
constexpr const char* kXmpDomain = "xml:XMP";

constexpr std::pair<const char*, const char*> kTags[] = {
    {"TIFFTAG_IMAGEDESCRIPTION", "ImageDescription"},
    {"TIFFTAG_ARTIST", "Artist"},
    {"TIFFTAG_COPYRIGHT", "Copyright"},
    {"TIFFTAG_SOFTWARE", "Software"},
    {"TIFFTAG_DATETIME", "DateTime"},
    {"TIFFTAG_DOCUMENTNAME", "DocumentName"},
    {"TIFFTAG_HOSTCOMPUTER", "HostComputer"},
};

// What describes the stored samples or is read otherwise.
constexpr std::string_view kOtherItems[] = {"TIFFTAG_MINSAMPLEVALUE", "TIFFTAG_MAXSAMPLEVALUE", "TIFFTAG_XRESOLUTION",
                                            "TIFFTAG_YRESOLUTION", "TIFFTAG_RESOLUTIONUNIT"};
constexpr std::string_view kOtherDomains[] = {
    "",     "IMAGE_STRUCTURE", "SUBDATASETS", "DERIVED_SUBDATASETS", "RPC", "GEOLOCATION", "TIFF",
    "EXIF", kProfileDomain,    kXmpDomain,    kHeaderDomain};

bool Contains(const auto& list, std::string_view word) {
  return std::find(std::begin(list), std::end(list), word) != std::end(list);
}

/// The texts of a list of GDAL's, which may be null.
std::vector<const char*> ListItems(const char* const* list) {
  std::vector<const char*> items;
  for (; list != nullptr && *list != nullptr; ++list) items.push_back(*list);
  return items;
}

std::pair<std::string, std::string> SplitItem(const char* item) {
  const char* equals = std::strchr(item, '=');
  if (equals == nullptr) return {item, ""};
  return {std::string(item, equals), equals + 1};
}

// ---- Reading ----

void ReadGeoreference(GDALDataset& dataset, FilePart& part, std::vector<std::string>& notes) {
  Georeference georeference;
  georeference.coordinate_system = GetCoordinateSystem(dataset);
  std::array<double, 6> transform{};
  const bool is_placed = dataset.GetGeoTransform(transform.data()) == CE_None &&
                         std::all_of(transform.begin(), transform.end(), [](double t) { return std::isfinite(t); });
  if (is_placed) georeference.transform = transform;
  if (is_placed || !georeference.coordinate_system.empty()) part.metadata.georeference = std::move(georeference);
  if (!is_placed && dataset.GetGCPCount() > 0) {
    notes.push_back("the raster is placed by ground control points, which are left out");
  }
  if (!is_placed && dataset.GetMetadata("RPC") != nullptr) {
    notes.push_back("the raster is placed by polynomials (RPC), which are left out");
  }
}

void ReadResolution(GDALDataset& dataset, ImageMetadata& metadata) {
  const char* x = dataset.GetMetadataItem("TIFFTAG_XRESOLUTION");
  const char* y = dataset.GetMetadataItem("TIFFTAG_YRESOLUTION");
  if (x == nullptr || y == nullptr) return;
  const auto number_x = Parse<double>(x);
  const auto number_y = Parse<double>(y);
  if (!number_x || !number_y || !(*number_x > 0) || !(*number_y > 0)) return;
  metadata.resolution = {*number_x, *number_y};
  const char* unit = dataset.GetMetadataItem("TIFFTAG_RESOLUTIONUNIT");
  // "2 (pixels/inch)", which is also what a TIFF without the tag means.
  const char digit = unit == nullptr ? '2' : *unit;
  metadata.resolution_unit = digit == '2' ? "in" : digit == '3' ? "cm" : "";
}

void ReadEntries(GDALDataset& dataset, ImageMetadata& metadata) {
  for (const char* item : ListItems(dataset.GetMetadata())) {
    auto [name, value] = SplitItem(item);
    if (Contains(kOtherItems, name) || name.starts_with("STATISTICS_") || name.starts_with("value:")) continue;
    const auto* tag =
        std::find_if(std::begin(kTags), std::end(kTags), [&key = name](const auto& row) { return key == row.first; });
    metadata.entries.push_back({tag != std::end(kTags) ? tag->second : std::move(name), std::move(value)});
  }
  CPLStringList domains(dataset.GetMetadataDomainList(), TRUE);
  for (const char* domain : ListItems(domains.List())) {
    const std::string_view name = domain;
    if (Contains(kOtherDomains, name) || name.starts_with("xml:") || name.starts_with("json:")) continue;
    for (const char* item : ListItems(dataset.GetMetadata(domain))) {
      auto [key, value] = SplitItem(item);
      metadata.entries.push_back({std::string(domain) + ':' + key, std::move(value)});
    }
  }
}

void ReadProfile(GDALDataset& dataset, ImageMetadata& metadata) {
  const char* text = dataset.GetMetadataItem(kProfileItem, kProfileDomain);
  if (text == nullptr) return;
  std::vector<GByte> bytes(text, text + std::strlen(text) + 1);
  const int size = CPLBase64DecodeInPlace(bytes.data());
  if (size > 0) metadata.icc.assign(bytes.begin(), bytes.begin() + size);
}

void ReadStoredHeader(GDALDataset& dataset, FilePart& part) {
  const auto get = [&](const char* key) -> std::string {
    // In the domain as this system writes it, or under the whole name as others may have.
    const char* value = dataset.GetMetadataItem(key, kHeaderDomain);
    if (value == nullptr) value = dataset.GetMetadataItem((std::string("value:") + key).c_str());
    return value == nullptr ? "" : value;
  };
  StoredHeader header;
  header.mode = Parse<int>(get("mode"));
  const auto low = Parse<float>(get("low"));
  const auto high = Parse<float>(get("high"));
  if (low && high) header.range = {*low, *high};
  header.pin = ParsePair<int>(get("pin"));
  header.pivot = ParsePair<float>(get("pivot"));
  if (header != StoredHeader()) part.stored_headers.emplace_back("", header);
}

// ---- Writing ----

bool IsKeptWhole(const OGRSpatialReference& system) {
  // What of a coordinate system the keys of a GeoTIFF hold shows when one is written and read again.
  const std::string path = "/vsimem/value_coordinate_system_" + std::to_string(CPLGetPID()) + '_' +
                           std::to_string(reinterpret_cast<std::uintptr_t>(&system)) + ".tif";
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
  GDALDataset* written = driver->Create(path.c_str(), 1, 1, 1, GDT_Byte, nullptr);
  if (written == nullptr) return false;
  const bool is_set = written->SetSpatialRef(&system) == CE_None;
  GDALClose(GDALDataset::ToHandle(written));
  bool is_same = false;
  if (auto* read = GDALDataset::Open(path.c_str(), GDAL_OF_RASTER); is_set && read != nullptr) {
    const OGRSpatialReference* found = read->GetSpatialRef();
    const char* const options[] = {"IGNORE_DATA_AXIS_TO_SRS_AXIS_MAPPING=YES", "CRITERION=EQUIVALENT", nullptr};
    is_same = found != nullptr && found->IsSame(&system, options) != FALSE;
    GDALClose(GDALDataset::ToHandle(read));
  }
  VSIUnlink(path.c_str());
  return is_same;
}

void WriteGeoreference(GDALDataset& dataset, const Georeference& georeference, std::vector<std::string>& notes) {
  if (georeference.transform) {
    std::array<double, 6> transform = *georeference.transform;
    if (dataset.SetGeoTransform(transform.data()) != CE_None) {
      notes.push_back("the place of the image on the ground is left out, for it cannot be inverted");
    }
  }
  if (georeference.coordinate_system.empty()) return;
  OGRSpatialReference system;
  system.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  if (system.importFromWkt(georeference.coordinate_system.c_str()) != OGRERR_NONE ||
      dataset.SetSpatialRef(&system) != CE_None) {
    notes.push_back("the coordinate system is left out, for it is no WKT that is understood");
  } else if (!IsKeptWhole(system)) {
    notes.push_back("the coordinate system is written as far as the keys of a GeoTIFF hold it");
  }
}

void WriteResolution(GDALDataset& dataset, const ImageMetadata& metadata) {
  if (!metadata.resolution) return;
  dataset.SetMetadataItem("TIFFTAG_XRESOLUTION", FormatNumber((*metadata.resolution)[0]).c_str());
  dataset.SetMetadataItem("TIFFTAG_YRESOLUTION", FormatNumber((*metadata.resolution)[1]).c_str());
  const char* unit = metadata.resolution_unit == "in" ? "2" : metadata.resolution_unit == "cm" ? "3" : "1";
  dataset.SetMetadataItem("TIFFTAG_RESOLUTIONUNIT", unit);
}

/// A value as a text; empty for what only another format understands.
std::string ToText(const MetadataValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  std::string joined;
  const auto join = [&](const auto& numbers) {
    for (const auto number : numbers) {
      if (!joined.empty()) joined += ", ";
      if constexpr (std::is_floating_point_v<std::remove_cv_t<decltype(number)>>) {
        joined += FormatNumber(number);
      } else {
        joined += std::to_string(number);
      }
    }
  };
  if (const auto* whole = std::get_if<std::vector<std::int64_t>>(&value)) join(*whole);
  if (const auto* numbers = std::get_if<std::vector<double>>(&value)) join(*numbers);
  return joined;
}

void WriteEntries(GDALDataset& dataset, const ImageMetadata& metadata) {
  for (const MetadataEntry& entry : metadata.entries) {
    const std::string text = ToText(entry.value);
    const auto* tag =
        std::find_if(std::begin(kTags), std::end(kTags), [&](const auto& row) { return entry.name == row.second; });
    const std::string name = tag != std::end(kTags) ? tag->first : entry.name;
    const std::size_t colon = name.find(':');
    const std::string domain = colon == std::string::npos ? "" : name.substr(0, colon);
    const std::string key = colon == std::string::npos ? name : name.substr(colon + 1);
    const bool is_free = colon == std::string::npos || (!Contains(kOtherDomains, domain) && domain != "xml");
    if (text.empty() || key.empty() || key.find_first_of(":=") != std::string::npos || !is_free) continue;
    dataset.SetMetadataItem(key.c_str(), text.c_str(), domain.c_str());
  }
}

void WriteStoredHeader(GDALDataset& dataset, const WritePlan& plan) {
  const auto set = [&](const char* key, const std::string& value) {
    dataset.SetMetadataItem(key, value.c_str(), kHeaderDomain);
  };
  for (const auto& [layer, header] : plan.stored_headers) {
    if (!layer.empty()) continue;
    if (header.mode) set("mode", std::to_string(*header.mode));
    if (header.range) {
      set("low", FormatNumber(header.range->first));
      set("high", FormatNumber(header.range->second));
    }
    if (header.pin) set("pin", std::to_string(header.pin->first) + ", " + std::to_string(header.pin->second));
    if (header.pivot) set("pivot", FormatNumber(header.pivot->first) + ", " + FormatNumber(header.pivot->second));
  }
}

}  // namespace

std::string GetCoordinateSystem(const GDALDataset& dataset) {
  const OGRSpatialReference* system = dataset.GetSpatialRef();
  if (system == nullptr) return {};
  const char* const options[] = {"FORMAT=WKT2_2019", "MULTILINE=NO", nullptr};
  char* text = nullptr;
  const bool is_fine = system->exportToWkt(&text, options) == OGRERR_NONE && text != nullptr;
  std::string wkt = is_fine ? text : "";
  CPLFree(text);
  return wkt;
}

void ReadRasterMetadata(GDALDataset& dataset, FilePart& part, std::vector<std::string>& notes) {
  ReadGeoreference(dataset, part, notes);
  ReadResolution(dataset, part.metadata);
  ReadEntries(dataset, part.metadata);
  ReadProfile(dataset, part.metadata);
  ReadStoredHeader(dataset, part);
  if (char** xmp = dataset.GetMetadata(kXmpDomain); xmp != nullptr && *xmp != nullptr) {
    part.metadata.xmp = *xmp;
    RemoveSampleDescription(part.metadata.xmp);
  }
  if (const char* unit = dataset.GetRasterCount() > 0 ? dataset.GetRasterBand(1)->GetUnitType() : nullptr) {
    part.metadata.value_unit = unit;
  }
}

std::string EncodeProfile(const std::vector<std::uint8_t>& icc) {
  char* text = CPLBase64Encode(static_cast<int>(icc.size()), icc.data());
  std::string encoded = text;
  CPLFree(text);
  return encoded;
}

void WriteRasterMetadata(GDALDataset& dataset, const WritePlan& plan, std::vector<std::string>& notes) {
  const ImageMetadata& metadata = plan.metadata;
  // The entry that tells where in a pixel its sample lies comes first: the transform is written accordingly.
  WriteEntries(dataset, metadata);
  if (metadata.georeference) WriteGeoreference(dataset, *metadata.georeference, notes);
  WriteResolution(dataset, metadata);
  WriteStoredHeader(dataset, plan);
  if (!metadata.xmp.empty()) {
    std::string xmp = metadata.xmp;
    char* list[] = {xmp.data(), nullptr};
    dataset.SetMetadata(list, kXmpDomain);
  }
  if (!metadata.value_unit.empty()) dataset.GetRasterBand(1)->SetUnitType(metadata.value_unit.c_str());
}

}  // namespace ScEng
