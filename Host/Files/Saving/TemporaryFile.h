// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Host/Files/Saving/SystemCalls.h"
#include "Host/Files/Saving/TemporaryRegistry.h"

namespace ScEng {

/// A hidden file beside a target, gone at the end of its scope, or with a signal (see `CleanUpOnSignals`), unless it
/// takes the target's place or is kept.
///
/// Its name is random: what a killed process left behind, or another machine that shares the folder makes, is not in
/// the way.
class TemporaryFile {
 public:
  /// The folder stays open as long as the file.
  explicit TemporaryFile(int folder) : folder_(folder) {}
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  ErrorNumber Create(mode_t mode);
  [[nodiscard]] int GetDescriptor() const { return file_.Get(); }
  [[nodiscard]] const std::string& GetName() const { return name_; }
  ErrorNumber Close() { return file_.Close(); }
  ErrorNumber RenameTo(const std::string& name);
  /// Leaves the file where it is.
  void Keep();

 private:
  int folder_;
  Descriptor file_;
  std::string name_;
  RegisteredTemporary* registered_ = nullptr;
};

}  // namespace ScEng
