// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Rasters/Gdal.h"

#include <cpl_conv.h>
#include <cpl_error.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iterator>
#include <mutex>
#include <set>
#include <string_view>

namespace ScEng {
namespace {

// Neither what asks a server, nor what runs code, nor lists of other datasets except VRT, whose sources are checked,
// nor Targa, whose colors beyond the palette that driver takes for holes.
constexpr const char* kDrivers[] = {
    "GTiff",    "VRT",       "AAIGrid",   "GRASSASCIIGrid",
    "ISG",      "EHdr",      "ENVI",      "GenBin",
    "ISCE",     "SRTMHGT",   "DTED",      "USGSDEM",
    "AIG",      "HFA",       "NITF",      "ELAS",
    "PNG",      "JPEG",      "JPEGXL",    "GIF",
    "BIGGIF",   "BMP",       "WEBP",      "HEIF",
    "SGI",      "PNM",       "FITS",      "BSB",
    "PCIDSK",   "PCRaster",  "ILWIS",     "Leveller",
    "Terragen", "netCDF",    "HDF4",      "HDF5",
    "BAG",      "GRIB",      "ISIS2",     "ISIS3",
    "PDS",      "VICAR",     "ERS",       "RMF",
    "RST",      "GSAG",      "GSBG",      "GS7BG",
    "BT",       "LAN",       "NDF",       "EIR",
    "LCP",      "GTX",       "NTv2",      "CTable2",
    "ACE2",     "SNODAS",    "ROI_PAC",   "RRASTER",
    "BYN",      "ARG",       "GXF",       "SAGA",
    "HF2",      "ZMap",      "NGSGEOID",  "SIGDEM",
    "KRO",      "HDF4Image", "HDF5Image", "SDTS",
    "JDEM",     "BLX",       "DOQ1",      "DOQ2",
    "MSGN",     "NWT_GRD",   "NWT_GRC",   "JP2OpenJPEG",
    "XYZ",      nullptr,
};

// No side files are written, folders are not listed, nothing is asked of the network, no code of a file is run and no
// drivers are loaded that the system has for the GDAL of others.
// Work stays on the calling thread, where its messages are collected.
constexpr std::pair<const char*, const char*> kSettings[] = {
    {"CPL_DEBUG", "OFF"},
    {"CPL_VSIL_CURL_ALLOWED_EXTENSIONS", ".none"},
    {"GDAL_DISABLE_READDIR_ON_OPEN", "TRUE"},
    {"GDAL_DRIVER_PATH", "disable"},
    {"GDAL_ERROR_ON_LIBJPEG_WARNING", "TRUE"},
    {"GDAL_NUM_THREADS", "1"},
    {"GDAL_PAM_ENABLED", "NO"},
    {"GDAL_VRT_ENABLE_PYTHON", "NO"},
    {"OSR_DEFAULT_AXIS_MAPPING_STRATEGY", "TRADITIONAL_GIS_ORDER"},
    {"PROJ_NETWORK", "OFF"},
    {"VRT_NUM_THREADS", "1"},
};

constexpr GIntBig kCacheBytes = GIntBig{64} << 20;
constexpr std::size_t kMostClause = 200;

void KeepOnlyRasterDrivers() {
  std::set<std::string_view> kept;
  for (const char* const* name = kDrivers; *name != nullptr; ++name) kept.insert(*name);
  GDALDriverManager& manager = *GetGDALDriverManager();
  for (int i = manager.GetDriverCount() - 1; i >= 0; --i) {
    GDALDriver* driver = manager.GetDriver(i);
    if (kept.count(driver->GetDescription()) != 0) continue;
    manager.DeregisterDriver(driver);
    GDALDestroyDriver(driver);
  }
}

/// Some libraries go on with invented samples after no more than a warning.
bool TellsOfDamage(std::string message) {
  std::transform(message.begin(), message.end(), message.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  constexpr std::string_view kSigns[] = {"premature", "corrupt", "truncat", "not enough data", "line length mismatch"};
  return std::any_of(std::begin(kSigns), std::end(kSigns),
                     [&](std::string_view sign) { return message.find(sign) != std::string::npos; });
}

void EraseAll(std::string& text, const std::string& part) {
  if (part.empty()) return;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at)) text.erase(at, part.size());
}

}  // namespace

const char* const* GetRasterDrivers() { return kDrivers; }

void RegisterDrivers() {
  static std::once_flag once;
  std::call_once(once, [] {
    const GdalScope scope;
    // Another user of GDAL in this process keeps its drivers and its cache.
    const bool is_first = GetGDALDriverManager()->GetDriverCount() == 0;
    GDALAllRegister();
    if (!is_first) return;
    KeepOnlyRasterDrivers();
    GDALSetCacheMax64(kCacheBytes);
  });
}

GdalScope::GdalScope() {
  for (const auto& [name, value] : kSettings) {
    const char* old = CPLGetThreadLocalConfigOption(name, nullptr);
    saved_.emplace_back(name, old == nullptr ? std::nullopt : std::optional<std::string>(old));
    CPLSetThreadLocalConfigOption(name, value);
  }
  CPLPushErrorHandlerEx(&GdalScope::Collect, this);
  CPLErrorReset();
}

GdalScope::~GdalScope() {
  CPLErrorReset();
  CPLPopErrorHandler();
  for (const auto& [name, value] : saved_) CPLSetThreadLocalConfigOption(name, value ? value->c_str() : nullptr);
}

void CPL_STDCALL GdalScope::Collect(CPLErr kind, CPLErrorNum, const char* message) {
  auto& scope = *static_cast<GdalScope*>(CPLGetErrorHandlerUserData());
  if (scope.failure_ || kind == CE_None || kind == CE_Debug) return;
  if (kind != CE_Warning || TellsOfDamage(message)) scope.failure_ = message;
}

std::string MakeClause(std::string message, const std::string& path) {
  EraseAll(message, path);
  EraseAll(message, std::filesystem::path(path).filename().string());
  for (char& c : message) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  for (const char* part : {"`'", "''", "\"\"", "  "}) EraseAll(message, part);
  const auto is_edge = [](char c) { return std::string_view(" :,;.-").find(c) != std::string_view::npos; };
  while (!message.empty() && is_edge(message.front())) message.erase(message.begin());
  if (message.size() > kMostClause) message.resize(kMostClause);
  while (!message.empty() && is_edge(message.back())) message.pop_back();
  // A capital stays where the word has others, as in "TIFFReadDirectory".
  if (message.size() > 1 && std::islower(static_cast<unsigned char>(message[1])) != 0) {
    message[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(message[0])));
  }
  return message;
}

DatasetPtr OpenRaster(const std::string& path, const char* const* drivers) {
  return DatasetPtr(GDALDataset::Open(path.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY | GDAL_OF_VERBOSE_ERROR, drivers,
                                      nullptr, nullptr));
}

}  // namespace ScEng
