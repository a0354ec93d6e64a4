// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

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

 private:
  int descriptor_ = -1;
};

/// Puts the bytes of an open file in place of `target`: a temporary file beside it is written, flushed to disk and
/// renamed. On an error, which names the target and the cause, nothing is left behind and an old target stays. It is an
/// error, too, when a write of this thread into its last memory file went beyond the largest file that the process may
/// write (see `CatchFileSizeSignal`).
Status ReplaceFile(const std::filesystem::path& target, int source_descriptor);

}  // namespace ScEng
