// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <OpenImageIO/filesystem.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace ScEng {

/// A file as the library of formats sees it, which remembers whether the library asked for bytes beyond its end. Some
/// formats hide that and hand out what their buffers held.
class WatchedFile final : public OIIO::Filesystem::IOProxy {
 public:
  explicit WatchedFile(const std::filesystem::path& file);
  ~WatchedFile() override;
  WatchedFile(const WatchedFile&) = delete;
  WatchedFile& operator=(const WatchedFile&) = delete;

  [[nodiscard]] const char* proxytype() const override { return "watched"; }
  void close() override;
  size_t read(void* to, size_t size) override;
  size_t pread(void* to, size_t size, int64_t offset) override;
  [[nodiscard]] size_t size() const override { return size_; }

  [[nodiscard]] bool WasReadPastEnd() const { return past_end_; }

 private:
  int descriptor_ = -1;
  std::size_t size_ = 0;
  std::atomic<bool> past_end_{false};
};

/// A new file that the library of formats writes, which remembers whether any write failed. Some formats do not ask.
class CheckedFile final : public OIIO::Filesystem::IOProxy {
 public:
  explicit CheckedFile(const std::filesystem::path& file);
  ~CheckedFile() override;
  CheckedFile(const CheckedFile&) = delete;
  CheckedFile& operator=(const CheckedFile&) = delete;

  [[nodiscard]] const char* proxytype() const override { return "checked"; }
  /// The library closes what it was lent; the file itself is closed by `Finish`.
  void close() override {}
  size_t write(const void* from, size_t size) override;
  size_t pwrite(const void* from, size_t size, int64_t offset) override;
  [[nodiscard]] size_t size() const override { return size_; }

  /// Closes the file; the answer is whether all that was written is in it.
  bool Finish();

 private:
  int descriptor_ = -1;
  std::size_t size_ = 0;
  bool failed_ = false;
};

}  // namespace ScEng
