// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Saving/TargetFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <system_error>

#include "Host/Files/PathProblem.h"

namespace ScEng {
namespace {

/// Why a file of this kind cannot be replaced, or nothing.
std::string FindKindProblem(mode_t mode) {
  switch (mode & S_IFMT) {
    case S_IFREG: return {};
    case S_IFDIR: return "it is a folder";
    case S_IFIFO: return "it is a pipe and not a regular file";
    case S_IFSOCK: return "it is a socket and not a regular file";
    case S_IFCHR:
    case S_IFBLK: return "it is a device and not a regular file";
    default: return "it is not a regular file";
  }
}

}  // namespace

std::string TargetFile::Find(const std::filesystem::path& path) {
  std::string problem = FindPathProblem(path);
  if (problem.empty()) problem = FollowLinks(path);
  if (problem.empty()) problem = OpenFolder();
  if (problem.empty()) problem = LookAtOldFile();
  return problem;
}

std::string TargetFile::FollowLinks(const std::filesystem::path& path) {
  place_ = path;
  constexpr int kMostLinks = 40;
  for (int links = 0;; ++links) {
    std::error_code error;
    const std::filesystem::path next = std::filesystem::read_symlink(place_, error);
    // Whatever else is wrong shows when the place is used.
    if (error) break;
    if (links == kMostLinks) return DescribeErrno(ELOOP);
    // A relative link starts from its own folder, an absolute one replaces the whole path.
    place_ = place_.parent_path() / next;
  }
  struct stat found {};
  if (stat(place_.c_str(), &found) == 0) return FindKindProblem(found.st_mode);
  return {};
}

std::filesystem::path TargetFile::GetFolderPath() const {
  return place_.has_parent_path() ? place_.parent_path() : std::filesystem::path(".");
}

std::string TargetFile::OpenFolder() {
  const std::filesystem::path folder = GetFolderPath();
  // A folder that may be searched and written but not listed is enough.
  folder_.Reset(Retry([&] { return open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
  if (folder_.IsOpen()) return {};
  const ErrorNumber failure = errno;
  const std::string quoted = "the folder \"" + folder.string() + "\"";
  if (failure == ENOENT) return quoted + " does not exist";
  if (failure == ENOTDIR) return "\"" + folder.string() + "\" is not a folder";
  return quoted + " cannot be opened: " + DescribeErrno(failure);
}

std::string TargetFile::LookAtOldFile() {
  name_ = place_.filename().string();
  if (name_.empty()) return "it has no file name";
  struct stat found {};
  if (fstatat(folder_.Get(), name_.c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0) {
    return errno == ENOENT ? std::string{} : DescribeErrno(errno);
  }
  if (std::string problem = FindKindProblem(found.st_mode); !problem.empty()) return problem;
  if ((found.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) return "it is read-only";
  if (faccessat(folder_.Get(), name_.c_str(), W_OK, AT_EACCESS) != 0) return DescribeErrno(errno);
  old_ = found;
  return {};
}

}  // namespace ScEng
