// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/PluginSearch.h"

#include <sys/stat.h>

#include <QCryptographicHash>
#include <QFile>
#include <QString>
#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <system_error>

#include "Apps/Value/Common.h"
#include "Host/Files/ImageFile.h"
#include "Host/Validation/Examination.h"
#include "Host/Validation/ExaminedLibrary.h"

namespace {

namespace fs = std::filesystem;
using ScEng::NodeLibrary;
using ScEng::Status;

/// The node library that comes with the program: beside it, or where an installation puts it.
fs::path FindOwnLibrary() {
  std::error_code error;
  const fs::path folder = GetProgramFile().parent_path();
  fs::path beside = folder / "Value.so";
  if (fs::exists(beside, error)) return beside;
  fs::path installed = (folder / VALUE_INSTALLED_LIBRARY).lexically_normal();
  return fs::exists(installed, error) ? installed : beside;
}

/// The SHA-256 of a file's content in hexadecimal digits; empty where it cannot be read.
std::string HashOf(const fs::path& file) {
  QFile content(QString::fromStdString(file.string()));
  QCryptographicHash hash(QCryptographicHash::Sha256);
  if (!content.open(QIODevice::ReadOnly) || !hash.addData(&content)) return {};
  return hash.result().toHex().toStdString();
}

/// Examines a library in a child process, unless one with the same content has passed before.
Status Examine(const fs::path& file, FoundPlugin::Examination& examination) {
  std::error_code error;
  // Loading says better what is wrong with what is no file.
  if (!fs::is_regular_file(file, error)) return {};
  const ScEng::ExaminedLibrary examined(HashOf(file));
  if (examined.HasPassed()) {
    examination = FoundPlugin::Examination::kRemembered;
    return {};
  }
  ScEng::ExaminationOptions options;
  options.library = file;
  options.child_command = {GetProgramFile().string(), "validate", fs::absolute(file, error).string(), "--child"};
  Status status = ScEng::ExamineLibrary(options);
  examination = status.IsError() ? FoundPlugin::Examination::kFailed : FoundPlugin::Examination::kPassed;
  if (!status.IsError()) examined.NotePassed();
  return status;
}

}  // namespace

PluginSearch::PluginSearch(const PluginOptions& options) : trusts_(options.trusts) {
  if (!options.no_defaults) {
    Add(FindOwnLibrary(), FoundPlugin::Source::kOwn);
    if (const char* const folders = std::getenv("VALUE_PLUGIN_PATH")) FindInFolders(folders);
  }
  for (const std::string& file : options.files) Add(ScEng::MakePath(file), FoundPlugin::Source::kOption);
}

void PluginSearch::FindInFolders(const std::string& folders) {
  std::istringstream stream(folders);
  for (std::string name; std::getline(stream, name, ':');) {
    if (name.empty()) continue;
    PluginFolder folder;
    folder.folder = name;
    FindIn(folder);
    if (!folder.problem.empty()) notes_.push_back("VALUE_PLUGIN_PATH: " + folder.problem);
    folders_.push_back(std::move(folder));
  }
}

void PluginSearch::FindIn(PluginFolder& folder) {
  std::error_code error;
  std::vector<fs::path> files;
  fs::directory_iterator entry(folder.folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    std::error_code unknown;
    if (entry->path().extension() == ".so" && !entry->is_directory(unknown)) files.push_back(entry->path());
  }
  if (error) folder.problem = "the folder \"" + folder.folder.string() + "\" cannot be read: " + error.message();
  std::sort(files.begin(), files.end());
  folder.num_libraries = files.size();
  for (const fs::path& file : files) Add(file, FoundPlugin::Source::kFolder);
}

void PluginSearch::Add(const fs::path& file, FoundPlugin::Source source) {
  struct stat facts {};
  if (stat(file.c_str(), &facts) == 0) {
    const auto [known, is_new] = known_.try_emplace({facts.st_dev, facts.st_ino}, plugins_.size());
    // What the command line names must not be left out, wherever else it was found.
    if (!is_new && plugins_[known->second].source == FoundPlugin::Source::kFolder)
      plugins_[known->second].source = source;
    if (!is_new) return;
  }
  FoundPlugin plugin;
  plugin.file = file;
  plugin.source = source;
  std::error_code error;
  // The same library may be named although the defaults are left out.
  if (source == FoundPlugin::Source::kOwn || fs::equivalent(file, FindOwnLibrary(), error)) {
    plugin.examination = FoundPlugin::Examination::kOwn;
  } else if (trusts_) {
    plugin.examination = FoundPlugin::Examination::kTrusted;
  }
  plugins_.push_back(std::move(plugin));
}

Status PluginSearch::Load(FoundPlugin& plugin, ScEng::NodeCatalog& catalog) const {
  Status status;
  if (plugin.examination == FoundPlugin::Examination::kNone) status = Examine(plugin.file, plugin.examination);
  if (status.IsError()) return status;
  plugin.library = NodeLibrary::Load(plugin.file, status);
  if (plugin.library) status = catalog.AddLibrary(plugin.library, &plugin.is_clash);
  return status;
}

Status PluginSearch::LoadInto(ScEng::NodeCatalog& catalog) {
  Status first;
  for (FoundPlugin& plugin : plugins_) {
    const Status status = Load(plugin, catalog);
    if (!status.IsError()) continue;
    plugin.problem = status.GetMessage() + (plugin.is_clash ? "; leave one of the two out" : "");
    plugin.library.reset();
    // Of two libraries that offer one type, nobody knows which is meant.
    if (plugin.source == FoundPlugin::Source::kFolder && !plugin.is_clash) {
      notes_.push_back(plugin.problem + "; it is left out");
    } else if (!first.IsError()) {
      first = Status::Error(plugin.problem);
    }
  }
  return first;
}

bool PluginSearch::IsNamed(const NodeInterface& descriptor) const {
  return std::any_of(plugins_.begin(), plugins_.end(), [&](const FoundPlugin& plugin) {
    if (plugin.source == FoundPlugin::Source::kFolder || !plugin.library) return false;
    const auto& own = plugin.library->GetDescriptors();
    return std::any_of(own.begin(), own.end(), [&](const auto& candidate) { return candidate.Get() == &descriptor; });
  });
}
