// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Host/Files/Decoding/Messages.h"

namespace ScEng {

/// Opens files for a process that decodes and may not open any itself.
///
/// What it may read: the file that it decodes, whatever lies in the folder of that file or below it, and public files
/// of the system that libraries of image formats look at. Of these only regular files and folders, and nothing can be
/// written. What a path means is decided by where the opened file really lies, so that neither links nor a file that is
/// exchanged at the same time lead elsewhere.
class FileBroker {
 public:
  /// From now on `file`, an absolute path, is the one that is decoded.
  void Allow(const std::filesystem::path& file);
  /// From now on none is.
  void Forbid();

  /// Answers one question; `descriptor` is the caller's to close, -1 where there is none.
  [[nodiscard]] FileAnswer Answer(const FileQuestion& question, int& descriptor) const;
  /// The answer to the question for a descriptor of a file: one that is the caller's to close, or -1.
  [[nodiscard]] int Open(const std::filesystem::path& file) const;

 private:
  [[nodiscard]] bool IsPathAllowed(const std::string& path) const;
  /// Whether a path is a folder on the way to an allowed one, whose status a library asks for to find where that lies.
  [[nodiscard]] bool IsAboveAllowed(const std::string& path) const;
  [[nodiscard]] bool IsDecodedFile(const struct stat& status) const;

  /// Where paths may begin, as written; what lies outside is not even looked for.
  std::vector<std::string> written_folders_;
  /// Where files may really lie.
  std::vector<std::string> real_folders_;
  std::string written_file_;
  bool has_file_ = false;
  dev_t device_ = 0;
  ino_t inode_ = 0;
};

}  // namespace ScEng
