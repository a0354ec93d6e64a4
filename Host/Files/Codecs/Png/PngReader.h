// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <png.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "Host/Util/Status.h"

namespace ScEng::Png {

/// What the header of a file says of its pixels.
struct Header {
  std::uint32_t size_x = 0;
  std::uint32_t size_y = 0;
  int channels = 0;
  /// 8 or 16: fewer bits are widened on reading.
  int bits = 8;
  bool has_opacity = false;
  bool is_interlaced = false;

  bool operator==(const Header&) const = default;

  [[nodiscard]] std::size_t GetRowSize() const {
    return std::size_t{size_x} * static_cast<std::size_t>(channels) * static_cast<std::size_t>(bits / 8);
  }
};

/// Decodes the pixels of a file from the first row to the last.
///
/// The library reports errors by longjmp. Each call into it is made by `Guard`, between whose frame and the library's
/// nothing has a destructor; what happened is kept in members.
class PixelReader {
 public:
  explicit PixelReader(const std::filesystem::path& file);
  ~PixelReader();
  PixelReader(const PixelReader&) = delete;
  PixelReader& operator=(const PixelReader&) = delete;

  /// Reads up to the first pixels. To be called once, before all others.
  Status ReadHeader();
  [[nodiscard]] const Header& GetHeader() const { return header_; }
  /// Of the open file.
  [[nodiscard]] int GetDescriptor() const { return fileno(file_); }

  /// Decodes the next row into `GetRowSize` bytes. After the last one the rest of the file is checked as well.
  Status ReadRow(std::uint8_t* row);
  [[nodiscard]] std::uint32_t GetNextRow() const { return next_row_; }

  /// Decodes all passes of an interlaced file into rows without gaps.
  Status ReadPasses(std::uint8_t* rows);

 private:
  template <class Call>
  bool Guard(Call call);
  Status MakeError(const std::string& what_is_there) const;
  [[nodiscard]] std::string DescribeRows() const;
  Status Prepare();
  Status ReadEnd();

  static void OnError(png_structp png, png_const_charp message);
  static void OnWarning(png_structp png, png_const_charp message);
  static void OnRead(png_structp png, png_bytep bytes, std::size_t size);

  std::FILE* file_ = nullptr;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  Header header_;
  std::uint32_t next_row_ = 0;
  int passes_ = 1;
  bool is_prepared_ = false;
  bool is_at_end_ = false;
  bool has_wrong_sum_ = false;
  int read_error_ = 0;
  std::array<char, 128> message_{};
};

}  // namespace ScEng::Png
