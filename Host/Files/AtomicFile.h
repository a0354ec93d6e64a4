// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "Host/Util/Status.h"

namespace ScEng {

/// A file that exists in memory only, with a path under which any encoder can open it.
///
/// Encoders write here first, because some of them report success on a full disk and one ends the process: here they
/// cannot meet one. The largest file that the process may write binds memory files as well.
class MemoryFile {
 public:
  MemoryFile();
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  [[nodiscard]] bool IsOpen() const { return descriptor_ >= 0; }
  [[nodiscard]] std::string GetPath() const;
  [[nodiscard]] int GetDescriptor() const { return descriptor_; }
  /// Makes these bytes the file's content. Returns why it could not, or nothing.
  [[nodiscard]] std::string Write(std::string_view bytes) const;

 private:
  int descriptor_ = -1;
  /// The errno of the call that made no file.
  int failure_ = 0;
};

/// Puts the bytes of an open file in place of `target`: a temporary file beside it is written, flushed to disk and
/// renamed, so that whatever ends the process, the target is wholly old or wholly new. On an error, which names the
/// target and the cause, nothing is left behind and an old target stays. It is an error, too, when a write of this
/// thread into its last memory file went beyond the largest file that the process may write (see
/// `CatchFileSizeSignal`).
///
/// Symbolic links are followed. A file that was there before keeps its permissions, owner, group and extended
/// attributes, as far as the process may set them. If it has several names (hard links), it keeps these by being
/// rewritten in place, with a copy of the old content beside it until that is done: replaced under one name, it would
/// be out of date under the others, and nobody would notice.
Status ReplaceFile(const std::filesystem::path& target, int source_descriptor);

/// Why `ReplaceFile` would fail now, a full disk aside, or nothing: an empty file is made beside the target and taken
/// away again.
std::string TryToReplaceFile(const std::filesystem::path& target);

}  // namespace ScEng
