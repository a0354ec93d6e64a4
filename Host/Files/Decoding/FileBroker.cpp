// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Decoding/FileBroker.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

#include "Host/Files/Descriptor.h"

namespace ScEng {
namespace {

// Tables and settings that libraries look at: coordinate systems, time zones, the number of processors.
constexpr std::string_view kSystemFolders[] = {"/usr/share", "/usr/local/share", "/sys/devices/system/cpu"};
constexpr std::string_view kSystemFiles[] = {"/etc/localtime", "/proc/meminfo", "/proc/cpuinfo"};
// What lies there is not what a user keeps in folders.
constexpr std::string_view kNoFolders[] = {"/proc", "/sys"};

std::string LinkOf(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

/// Finds what a path leads to without opening it, which could change a device.
int Find(const std::string& path) { return open(path.c_str(), O_PATH | O_CLOEXEC); }

/// Where an open file lies; empty where that cannot be told.
std::string RealPathOf(int descriptor) {
  std::array<char, PATH_MAX> path{};
  const ssize_t length = readlink(LinkOf(descriptor).c_str(), path.data(), path.size());
  if (length <= 0 || static_cast<std::size_t>(length) >= path.size()) return {};
  return {path.data(), static_cast<std::size_t>(length)};
}

bool IsBelow(std::string_view path, std::string_view folder) {
  // Of the root only what lies directly in it: below it is everything there is.
  if (folder == "/") return path.size() > 1 && path.front() == '/' && path.find('/', 1) == std::string_view::npos;
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

template <class Folders>
bool IsBelowOneOf(std::string_view path, const Folders& folders) {
  return std::any_of(std::begin(folders), std::end(folders), [&](const auto& folder) { return IsBelow(path, folder); });
}

bool IsSystemPath(std::string_view path) {
  return IsBelowOneOf(path, kSystemFolders) ||
         std::find(std::begin(kSystemFiles), std::end(kSystemFiles), path) != std::end(kSystemFiles);
}

FileAnswer Refuse(int error) {
  FileAnswer answer;
  answer.error = error;
  return answer;
}

}  // namespace

void FileBroker::Allow(const std::filesystem::path& file) {
  Forbid();
  const std::filesystem::path written = file.lexically_normal();
  written_file_ = file.string();
  const auto allow = [this](const std::string& folder) {
    if (folder.empty() || folder.front() != '/' || IsBelowOneOf(folder, kNoFolders)) return;
    real_folders_.push_back(folder);
    written_folders_.push_back(folder);
  };
  const std::string written_folder = written.parent_path().string();
  if (const Descriptor folder(Find(written_folder)); folder.IsOpen()) {
    allow(RealPathOf(folder.Get()));
    if (!real_folders_.empty()) written_folders_.push_back(written_folder);
  }
  const Descriptor found(Find(written_file_));
  struct stat status {};
  if (!found.IsOpen() || fstat(found.Get(), &status) != 0) return;
  has_file_ = true;
  device_ = status.st_dev;
  inode_ = status.st_ino;
  // A file without a name, or one whose name was given away, has no folder.
  const std::string real = RealPathOf(found.Get());
  struct stat again {};
  if (!real.empty() && stat(real.c_str(), &again) == 0 && IsDecodedFile(again)) {
    allow(std::filesystem::path(real).parent_path().string());
  }
}

void FileBroker::Forbid() {
  written_folders_.clear();
  real_folders_.clear();
  written_file_.clear();
  has_file_ = false;
}

bool FileBroker::IsDecodedFile(const struct stat& status) const {
  return has_file_ && status.st_dev == device_ && status.st_ino == inode_;
}

bool FileBroker::IsPathAllowed(const std::string& path) const {
  if (has_file_ && path == written_file_) return true;
  const std::string normal = std::filesystem::path(path).lexically_normal().string();
  return IsBelowOneOf(normal, written_folders_) || IsSystemPath(normal);
}

bool FileBroker::IsAboveAllowed(const std::string& path) const {
  return std::any_of(written_folders_.begin(), written_folders_.end(),
                     [&](const std::string& folder) { return path == "/" || IsBelow(folder, path); });
}

int FileBroker::Open(const std::filesystem::path& file) const {
  FileQuestion question;
  const std::string path = file.string();
  if (path.size() >= sizeof question.path) return -1;
  path.copy(question.path, path.size());
  int descriptor = -1;
  static_cast<void>(Answer(question, descriptor));
  return descriptor;
}

FileAnswer FileBroker::Answer(const FileQuestion& question, int& descriptor) const {
  descriptor = -1;
  const std::string path(question.path, strnlen(question.path, sizeof question.path));
  if (path.empty() || path.front() != '/' || path.size() >= sizeof question.path) return Refuse(ENOENT);
  const bool asks_for_status = question.kind == FileQuestionKind::kStatus;
  const bool is_above = asks_for_status && IsAboveAllowed(path);
  // Libraries take a missing file for what it is, but not one whose status is denied.
  if (!is_above && !IsPathAllowed(path)) return Refuse(asks_for_status ? ENOENT : EACCES);
  const Descriptor found(Find(path));
  if (!found.IsOpen()) return Refuse(errno);
  FileAnswer answer;
  if (fstat(found.Get(), &answer.status) != 0) return Refuse(errno);
  const bool is_folder = S_ISDIR(answer.status.st_mode);
  if (is_above && is_folder) return answer;
  const std::string real = RealPathOf(found.Get());
  if (!IsDecodedFile(answer.status) && !IsBelowOneOf(real, real_folders_) && !IsSystemPath(real)) return Refuse(EACCES);
  if (!is_folder && !S_ISREG(answer.status.st_mode)) return Refuse(EACCES);
  if (asks_for_status) return answer;
  if (question.kind == FileQuestionKind::kOpenFolder && !is_folder) return Refuse(ENOTDIR);
  // The file that was found, not whatever the path leads to by now.
  descriptor = open(LinkOf(found.Get()).c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
  return descriptor < 0 ? Refuse(errno) : answer;
}

}  // namespace ScEng
