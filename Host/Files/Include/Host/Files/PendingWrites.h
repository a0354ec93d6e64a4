// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Host/Files/Api.h"
#include "Host/Files/ImageFile.h"
#include "Host/Files/WrittenFile.h"
#include "Host/Image/Image.h"

namespace ScEng {

/// Images that a run may not write yet: their file is also read by the run, or it has several layers that are not all
/// there. While a `Scope` lives, what writes images on its thread asks here first, and tells here what it has written.
class HOST_FILES_API PendingWrites {
 public:
  struct Write {
    std::filesystem::path file;
    std::string layer;
    ImagePtr image;
    WriteOptions options;
    /// Who asked for it; the run knows what that is.
    const void* writer = nullptr;
  };

  /// `waits` says whether an image for a file and a layer has to wait; `compression` is that of all files of the run.
  PendingWrites(std::string compression,
                std::function<bool(const std::filesystem::path& file, const std::string& layer)> waits);
  ~PendingWrites();
  PendingWrites(const PendingWrites&) = delete;
  PendingWrites& operator=(const PendingWrites&) = delete;

  /// Makes this the one that `GetCurrent` answers on the calling thread.
  class HOST_FILES_API Scope {
   public:
    explicit Scope(PendingWrites& writes);
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    PendingWrites* before_;
  };
  /// Null outside of every run.
  static PendingWrites* GetCurrent();

  /// See `WriteOptions::compression`.
  [[nodiscard]] const std::string& GetCompression() const { return compression_; }
  /// Takes an image that has to wait; false where it is to be written at once.
  bool Take(Write write);
  /// What has been taken, in that order. The caller keeps it.
  std::vector<Write> Release();
  /// Hears of a file that has been written.
  void Tell(const WrittenFile& written);
  [[nodiscard]] const std::vector<WrittenFile>& GetWritten() const { return written_; }

 private:
  std::string compression_;
  std::function<bool(const std::filesystem::path&, const std::string&)> waits_;
  std::vector<Write> writes_;
  std::vector<WrittenFile> written_;
};

}  // namespace ScEng
