// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <system_error>

#include "Host/Files/FileWatch.h"

namespace ScEng {

/// Times the stages of one file, one after the other, for whoever watches; does nothing where nobody does.
class FileStages {
 public:
  explicit FileStages(const std::filesystem::path& file) : file_(file), watch_(FileWatch::GetCurrent()) {
    if (watch_ != nullptr) begun_ = FileWatch::Clock::now();
  }

  /// Ends a stage; the next one begins.
  void End(FileWork work, std::size_t sample_bytes = 0) {
    if (watch_ == nullptr) return;
    FileWatch::Event event{work, file_, begun_, FileWatch::Clock::now(), 0, sample_bytes};
    std::error_code error;
    const std::uintmax_t bytes = work == FileWork::kEncode ? 0 : std::filesystem::file_size(file_, error);
    if (!error) event.file_bytes = bytes;
    watch_->Tell(event);
    begun_ = FileWatch::Clock::now();
  }

 private:
  const std::filesystem::path& file_;
  const FileWatch* watch_;
  FileWatch::Clock::time_point begun_;
};

}  // namespace ScEng
