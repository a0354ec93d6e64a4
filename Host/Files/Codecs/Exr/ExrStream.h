// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <OpenEXR/ImfIO.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "Host/Files/Codecs/Exr/ExrHeader.h"
#include "Host/Util/Status.h"

// Where the library reads from and writes to.

namespace ScEng::Exr {

/// An open file, which must stay open, from its begin.
class InputStream final : public Imf::IStream {
 public:
  explicit InputStream(std::FILE* file) : IStream(""), file_(file) { std::rewind(file); }

  bool read(char bytes[], int count) override;
  std::uint64_t tellg() override;
  void seekg(std::uint64_t position) override;
  void clear() override;

 private:
  std::FILE* const file_;
};

/// Remembers the first write that fails: the library's objects close in destructors, which say nothing.
class OutputStream final : public Imf::OStream {
 public:
  explicit OutputStream(const std::filesystem::path& file);

  void write(const char bytes[], int count) override;
  std::uint64_t tellp() override;
  void seekp(std::uint64_t position) override;

  [[nodiscard]] Status GetStatus() const;
  /// Writes what is in the buffer and closes the file.
  Status Close();

 private:
  void Check(bool is_fine);

  FilePointer file_;
  std::uint64_t position_ = 0;
  int error_ = 0;
};

/// Bytes in memory, for values of attributes.
class MemoryInput final : public Imf::IStream {
 public:
  explicit MemoryInput(const Bytes& bytes) : IStream("a value"), bytes_(bytes) {}

  bool read(char to[], int count) override;
  std::uint64_t tellg() override { return position_; }
  void seekg(std::uint64_t position) override { position_ = position; }

 private:
  const Bytes& bytes_;
  std::uint64_t position_ = 0;
};

}  // namespace ScEng::Exr
