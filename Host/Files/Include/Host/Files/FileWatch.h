// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>

#include "Host/Files/Api.h"

namespace ScEng {

/// The stages of reading and writing an image file.
enum class FileWork {
  /// Finding the format, starting what decodes it, reading the header.
  kOpen,
  /// Reading the samples and making the image.
  kDecode,
  /// Making the bytes of the file, in memory.
  kEncode,
  /// Putting them in the place of the file.
  kSave,
};

/// "open", "decode", "encode" or "save".
HOST_FILES_API const char* GetName(FileWork work);

/// While one lives, `listener` is told of every stage of image files that is completed on its thread. Watches nest: all
/// of them are told, the innermost first. Without one, files are not timed.
class HOST_FILES_API FileWatch {
 public:
  using Clock = std::chrono::steady_clock;

  struct Event {
    FileWork work = FileWork::kOpen;
    std::filesystem::path file;
    Clock::time_point begin;
    Clock::time_point end;
    /// Of the file on disk; 0 while it is encoded, and where the system does not tell.
    std::uintmax_t file_bytes = 0;
    /// Of the samples in memory; 0 for `kOpen` and `kSave`.
    std::size_t sample_bytes = 0;
  };
  using Listener = std::function<void(const Event& event)>;

  explicit FileWatch(Listener listener);
  ~FileWatch();
  FileWatch(const FileWatch&) = delete;
  FileWatch& operator=(const FileWatch&) = delete;

  /// The one of the calling thread; null where nobody listens.
  static const FileWatch* GetCurrent();
  /// Tells this one and those around it.
  void Tell(const Event& event) const;

 private:
  Listener listener_;
  const FileWatch* outer_;
};

}  // namespace ScEng
