// SPDX-License-Identifier: Apache-2.0
#include "Host/Gpu/DriverCache.h"

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <system_error>
#include <vector>

#include "Host/Gpu/Device.h"

namespace Gpu {
namespace {

using ScEng::Status;

constexpr const char* kVariable = "POCL_CACHE_DIR";
/// What pocl calls its platform.
constexpr const char* kPoclPlatform = "Portable Computing Language";

/// Null for a variable that is not set or empty.
const char* GetVariable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr || *value == '\0' ? nullptr : value;
}

bool CanBeWritten(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  return std::filesystem::is_directory(folder, error) && access(folder.c_str(), W_OK | X_OK) == 0;
}

}  // namespace

void ForgetEmptyCacheFolder() {
  if (std::getenv(kVariable) != nullptr && GetVariable(kVariable) == nullptr) unsetenv(kVariable);
}

std::filesystem::path FindCacheFolder() {
  if (const char* named = GetVariable(kVariable)) return named;
  const std::filesystem::path own = std::filesystem::path("pocl") / "kcache";
  if (const char* cache = GetVariable("XDG_CACHE_HOME")) return cache / own;
  if (const char* home = GetVariable("HOME")) return std::filesystem::path(home) / ".cache" / own;
  std::error_code error;
  return std::filesystem::temp_directory_path(error) / own;
}

Status ExplainNoDevice(const OpenClApi& api) {
  const std::vector<std::string> platforms = ListPlatforms(api);
  if (platforms.empty()) {
    return Status::Error(std::string("there is no OpenCL device; ") + kInstallDriver);
  }
  for (const std::string& platform : platforms) {
    const std::filesystem::path folder = FindCacheFolder();
    if (platform != kPoclPlatform || CanBeWritten(folder)) continue;
    return Status::Error("there is no OpenCL device: the driver \"" + platform + "\" cannot write its folder \"" +
                         folder.string() + "\"; make it writable, or name another folder in " + kVariable);
  }
  return Status::Error("there is no OpenCL device: the driver \"" + platforms.front() + "\" offers none; " +
                       kInstallDriver);
}

}  // namespace Gpu
