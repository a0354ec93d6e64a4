// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Host/Files/Decoding/FileOpening.h"

namespace ScEng {

/// Small files that will be read soon, opened ahead by processes that would wait otherwise. What a process has made of
/// a file counts only for as long as the file is the same. From any thread.
class HOST_FILES_API ReadAhead {
 public:
  /// The one queue. It is never destroyed.
  static ReadAhead& Get();

  /// These files are read next, about in this order, and no more than `most` of them are opened ahead. What was
  /// expected before no longer is.
  void Expect(std::vector<std::filesystem::path> files, std::size_t most);
  /// Lets a process of the codec, which is done with a file and has not been told to close it, open the next one. Null
  /// afterwards where it does.
  void Continue(const CodecRow& codec, std::unique_ptr<HelperProcess>& process) noexcept;
  /// Takes what was begun for a file, an absolute path; null where nothing was, or the file is another one by now.
  [[nodiscard]] std::unique_ptr<FileOpening> Take(const CodecRow& codec, const std::filesystem::path& file,
                                                  const std::string& format);

 private:
  /// By what an unchanged file is known.
  struct FileState {
    dev_t device = 0;
    ino_t inode = 0;
    std::int64_t bytes = 0;
    std::int64_t modified = 0;
    std::int64_t changed = 0;
    bool operator==(const FileState&) const = default;
  };
  using Files = std::list<std::filesystem::path>;
  struct Begun {
    const CodecRow* codec = nullptr;
    std::filesystem::path file;
    std::string format;
    FileState state;
    std::unique_ptr<FileOpening> opening;
    /// When it was begun, in files taken.
    std::uint64_t taken = 0;
  };

  /// How a file is known now; false where it is not worth the trouble, or so new that a further change may not show.
  static bool Examine(int descriptor, FileState& state);
  static FileState ToState(const struct stat& status);
  /// The next expected file, which is about to be begun; false where there is none or enough have been.
  bool TakeNext(Files::iterator& file);
  /// Takes the process for a file that is worth it and of its codec.
  static void Begin(const CodecRow& codec, std::unique_ptr<HelperProcess>& process, Begun& begun);

  std::mutex mutex_;
  /// Files that were being begun have been.
  std::condition_variable changed_;
  Files expected_;
  std::size_t most_ = 0;
  std::list<Begun> begun_;
  Files being_begun_;
  std::uint64_t taken_ = 0;
};

}  // namespace ScEng
