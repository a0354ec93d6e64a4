// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>

#include "Host/Files/Saving/SystemCalls.h"

namespace ScEng {

/// The place where a file is to be saved: what a path names once symbolic links are followed.
class TargetFile {
 public:
  /// Why nothing can be saved there, or nothing: a missing folder, something that is no regular file, or a file that
  /// the process may not write. A file without any write permission is refused for everybody, the administrator
  /// included, for it says that its content is to stay.
  std::string Find(const std::filesystem::path& path);

  [[nodiscard]] const std::filesystem::path& GetPath() const { return place_; }
  [[nodiscard]] int GetFolder() const { return folder_.Get(); }
  [[nodiscard]] std::filesystem::path GetFolderPath() const;
  [[nodiscard]] const std::string& GetName() const { return name_; }
  /// The file of today, if there is one.
  [[nodiscard]] const std::optional<struct stat>& GetOld() const { return old_; }

 private:
  std::string FollowLinks(const std::filesystem::path& path);
  std::string OpenFolder();
  std::string LookAtOldFile();

  std::filesystem::path place_;
  std::string name_;
  Descriptor folder_;
  std::optional<struct stat> old_;
};

}  // namespace ScEng
