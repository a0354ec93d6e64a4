// SPDX-License-Identifier: Apache-2.0
#include <ogr_spatialref.h>

#include "Host/Files/Codecs/Rasters/AsciiGrid.h"
#include "Host/Files/Codecs/Rasters/Gdal.h"
#include "Host/Files/Codecs/Rasters/GeoTiffEncoder.h"
#include "Host/Files/Codecs/Rasters/RasterDecoder.h"

// The codec for rasters on the ground, over GDAL.

namespace ScEng {
namespace {

class RastersCodec final : public ImageCodec {
 public:
  [[nodiscard]] std::unique_ptr<ImageDecoder> Open(const std::filesystem::path& file, const std::string& format,
                                                   Status& status) const override {
    return OpenRasterFile(file, format, status);
  }

  [[nodiscard]] std::unique_ptr<ImageEncoder> Create(const std::filesystem::path& path, const std::string& format,
                                                     const WritePlan& plan, std::vector<std::string>& notes,
                                                     Status& status) const override {
    RegisterDrivers();
    const GdalScope scope;
    if (format == "geotiff") return CreateGeoTiff(std::filesystem::absolute(path).string(), plan, notes, status);
    if (format == "ascii-grid") {
      status = CheckCompression(format, plan.compression);
      return status.IsError() ? nullptr : CreateAsciiGrid(path.string(), plan, notes, status);
    }
    status = Status::Error("the format " + format + " is only read");
    return nullptr;
  }

  [[nodiscard]] Status CheckCompression(const std::string& format, const std::string& compression) const override {
    RegisterDrivers();
    const GdalScope scope;
    if (format == "geotiff") return CheckGeoTiffCompression(compression);
    if (compression.empty() || compression == "none") return {};
    return Status::Error("an ASCII grid has the compression none alone, not \"" + compression + "\"");
  }

  void Prepare() const override {
    RegisterDrivers();
    const GdalScope scope;
    // A geographic and a projected system, with their names and axes: the database is open from then on.
    for (const int code : {4326, 32632}) {
      OGRSpatialReference system;
      char* text = nullptr;
      if (system.importFromEPSG(code) == OGRERR_NONE) system.exportToWkt(&text);
      CPLFree(text);
    }
  }
};

}  // namespace
}  // namespace ScEng

extern "C" __attribute__((visibility("default"))) const ScEng::ImageCodec* GetImageCodec() {
  static const ScEng::RastersCodec codec;
  return &codec;
}
