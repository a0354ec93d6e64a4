// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/ExaminedPlugins.h"

#include <QCryptographicHash>
#include <QFile>
#include <QString>
#include <cstdlib>
#include <system_error>

#include "Host/Files/ImageFile.h"

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

/// The SHA-256 of a file's content in hexadecimal digits; empty where it cannot be read.
std::string HashOf(const fs::path& file) {
  QFile content(QString::fromStdString(file.string()));
  QCryptographicHash hash(QCryptographicHash::Sha256);
  if (!content.open(QIODevice::ReadOnly) || !hash.addData(&content)) return {};
  return hash.result().toHex().toStdString();
}

}  // namespace

ExaminedPlugins::ExaminedPlugins(const fs::path& library) {
  const fs::path folder = FindCacheFolder();
  const std::string hash = folder.empty() ? std::string() : HashOf(library);
  if (!hash.empty()) record_ = folder / (hash + "-" VALUE_VERSION);
}

bool ExaminedPlugins::HasPassed() const {
  std::error_code error;
  return !record_.empty() && fs::is_regular_file(record_, error);
}

void ExaminedPlugins::NotePassed() const {
  if (record_.empty()) return;
  std::error_code error;
  fs::create_directories(record_.parent_path(), error);
  if (error) return;
  static_cast<void>(ScEng::WriteWholeFile(record_, "passed\n"));
}
