// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <png.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "Host/Files/Codecs/Codec.h"
#include "Host/Files/Codecs/Png/PngChunks.h"

namespace ScEng::Png {

/// See `ImageCodec::CheckCompression`.
Status CheckCompression(const std::string& compression);

/// Writes a PNG file row by row. As in `PixelReader`, nothing with a destructor lives between `Guard` and the library.
class PngEncoder final : public ImageEncoder {
 public:
  explicit PngEncoder(const std::filesystem::path& path);
  ~PngEncoder() override;
  PngEncoder(const PngEncoder&) = delete;
  PngEncoder& operator=(const PngEncoder&) = delete;

  /// Writes all that stands before the pixels. To be called once, before all others.
  Status Begin(const WritePlan& plan, const std::vector<Chunk>& chunks);

  Status WriteRows(int row_begin, int row_end, const void* samples) override;
  Status Finish() override;

 private:
  template <class Call>
  bool Guard(Call call);
  Status MakeError() const;

  static void OnError(png_structp png, png_const_charp message);
  static void OnWarning(png_structp, png_const_charp) {}
  static void OnWrite(png_structp png, png_bytep bytes, std::size_t size);
  static void OnFlush(png_structp) {}

  std::FILE* file_ = nullptr;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  std::size_t row_size_ = 0;
  int write_error_ = 0;
  std::array<char, 128> message_{};
};

}  // namespace ScEng::Png
