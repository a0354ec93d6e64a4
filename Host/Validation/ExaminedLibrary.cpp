// SPDX-License-Identifier: Apache-2.0
#include "Host/Validation/ExaminedLibrary.h"

#include <cstdlib>
#include <system_error>

#include "Host/Files/ImageFile.h"

namespace ScEng {
namespace {

namespace fs = std::filesystem;

/// Empty where the system names no folder.
fs::path FindCacheFolder() {
  const char* const named = std::getenv("XDG_CACHE_HOME");
  // A relative folder would be another one in each working directory, so the convention has it ignored.
  if (named != nullptr && fs::path(named).is_absolute()) return fs::path(named) / "value" / "plugins";
  const char* const home = std::getenv("HOME");
  if (home == nullptr || !fs::path(home).is_absolute()) return {};
  return fs::path(home) / ".cache" / "value" / "plugins";
}

}  // namespace

ExaminedLibrary::ExaminedLibrary(const std::string& hash) {
  const fs::path folder = FindCacheFolder();
  if (!folder.empty() && !hash.empty()) record_ = folder / (hash + "-" VALUE_VERSION);
}

bool ExaminedLibrary::HasPassed() const {
  std::error_code error;
  return !record_.empty() && fs::is_regular_file(record_, error);
}

void ExaminedLibrary::NotePassed() const {
  if (record_.empty()) return;
  std::error_code error;
  fs::create_directories(record_.parent_path(), error);
  if (error) return;
  static_cast<void>(WriteWholeFile(record_, "passed\n"));
}

}  // namespace ScEng
