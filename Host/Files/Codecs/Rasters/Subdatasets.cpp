// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Rasters/Subdatasets.h"

#include <cpl_string.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "Host/Files/Codecs/Rasters/Numbers.h"

namespace ScEng {
namespace {

constexpr std::size_t kMostParts = 1000;

// Drivers of files with several rasters, and how they begin the name of one.
constexpr std::pair<std::string_view, std::string_view> kPrefixes[] = {
    {"netCDF", "NETCDF:"}, {"HDF5", "HDF5:"}, {"BAG", "BAG:"}, {"GTiff", "GTIFF_DIR:"}};

std::optional<Subdataset> TakeTiffDirectory(std::string_view rest, const std::string& path) {
  const std::size_t colon = rest.find(':');
  if (colon == std::string_view::npos || rest.substr(colon + 1) != path) return std::nullopt;
  const auto number = Parse<int>(rest.substr(0, colon));
  if (!number || *number < 1) return std::nullopt;
  return Subdataset{"", "GTIFF_DIR:" + std::to_string(*number) + ':' + path, *number - 1};
}

std::optional<Subdataset> TakeVariable(std::string_view prefix, std::string_view rest, const std::string& path) {
  const std::string quoted = '"' + path + "\":";
  if (!rest.starts_with(quoted)) return std::nullopt;
  std::string_view name = rest.substr(quoted.size());
  while (name.starts_with('/')) name.remove_prefix(1);
  return Subdataset{std::string(name), std::string(prefix) + std::string(rest), -1};
}

}  // namespace

std::vector<Subdataset> ListSubdatasets(GDALDataset& dataset, const std::string& path,
                                        std::vector<std::string>& notes) {
  std::vector<Subdataset> found;
  const std::string_view driver = dataset.GetDriver()->GetDescription();
  const auto* row =
      std::find_if(std::begin(kPrefixes), std::end(kPrefixes), [&](const auto& pair) { return pair.first == driver; });
  if (row == std::end(kPrefixes)) return found;
  for (char** item = dataset.GetMetadata("SUBDATASETS"); item != nullptr && *item != nullptr; ++item) {
    const std::string_view text = *item;
    const std::size_t equals = text.find("_NAME=");
    if (equals == std::string_view::npos) continue;
    std::string_view rest = text.substr(equals + std::string_view("_NAME=").size());
    if (!rest.starts_with(row->second)) continue;
    rest.remove_prefix(row->second.size());
    auto subdataset = driver == "GTiff" ? TakeTiffDirectory(rest, path) : TakeVariable(row->second, rest, path);
    if (!subdataset) continue;
    if (found.size() == kMostParts) {
      notes.push_back("the file has more than 1000 parts; the others are left out");
      break;
    }
    found.push_back(std::move(*subdataset));
  }
  return found;
}

}  // namespace ScEng
