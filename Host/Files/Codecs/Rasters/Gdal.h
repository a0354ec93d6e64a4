// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gdal_priv.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ScEng {

/// Registers the drivers once. Where this process has not used GDAL before, only those of `GetRasterDrivers` stay.
void RegisterDrivers();

/// The drivers that files are opened with, ended by null: formats of files on disk whose driver reads nothing but
/// files.
const char* const* GetRasterDrivers();

/// While it lives, GDAL works for this thread with the settings of this codec, and its messages are collected instead
/// of printed. Settings and messages of other users of GDAL in the same process are left alone.
class GdalScope {
 public:
  GdalScope();
  ~GdalScope();
  GdalScope(const GdalScope&) = delete;
  GdalScope& operator=(const GdalScope&) = delete;

  /// Whether an error was reported, or a warning by which a library tells that it made up samples.
  [[nodiscard]] bool HasFailed() const { return failure_.has_value(); }
  /// The first failure as GDAL words it; empty where there was none.
  [[nodiscard]] std::string GetMessage() const { return failure_.value_or(std::string()); }
  void Forget() { failure_.reset(); }

 private:
  static void CPL_STDCALL Collect(CPLErr kind, CPLErrorNum number, const char* message);

  std::vector<std::pair<const char*, std::optional<std::string>>> saved_;
  std::optional<std::string> failure_;
};

/// GDAL's words as a clause: without the file's path and name, without control characters, of bounded length.
std::string MakeClause(std::string message, const std::string& path);

struct DatasetCloser {
  void operator()(GDALDataset* dataset) const { GDALClose(GDALDataset::ToHandle(dataset)); }
};
using DatasetPtr = std::unique_ptr<GDALDataset, DatasetCloser>;

/// Opens a raster for reading with one of the drivers; null where none can.
DatasetPtr OpenRaster(const std::string& path, const char* const* drivers);

}  // namespace ScEng
