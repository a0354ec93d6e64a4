// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Png/PngReader.h"

#include <bit>
#include <cerrno>
#include <csetjmp>
#include <cstring>
#include <limits>
#include <new>
#include <system_error>
#include <type_traits>

namespace ScEng::Png {
namespace {

constexpr png_uint_32 kMostPixels = std::numeric_limits<std::int32_t>::max();
// Chunks of metadata are read elsewhere, so that the library needs room for little.
constexpr png_alloc_size_t kMostChunkBytes = png_alloc_size_t{1} << 20;

}  // namespace

PixelReader::PixelReader(const std::filesystem::path& file) : file_(std::fopen(file.c_str(), "rbe")) {
  if (file_ == nullptr) {
    read_error_ = errno;
    return;
  }
  png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
  if (png_ != nullptr) info_ = png_create_info_struct(png_);
}

PixelReader::~PixelReader() {
  png_destroy_read_struct(&png_, &info_, nullptr);
  if (file_ != nullptr) std::fclose(file_);
}

template <class Call>
[[gnu::noinline]] bool PixelReader::Guard(Call call) {
  static_assert(std::is_trivially_destructible_v<Call>);
  if (setjmp(png_jmpbuf(png_)) != 0) return false;
  call();
  return true;
}

void PixelReader::OnError(png_structp png, png_const_charp message) {
  auto& reader = *static_cast<PixelReader*>(png_get_error_ptr(png));
  std::strncpy(reader.message_.data(), message, reader.message_.size() - 1);
  png_longjmp(png, 1);
}

void PixelReader::OnWarning(png_structp png, png_const_charp message) {
  auto& reader = *static_cast<PixelReader*>(png_get_error_ptr(png));
  // The sum over all pixels stands behind them, where the library only warns.
  if (std::strstr(message, "incorrect data check") != nullptr) reader.has_wrong_sum_ = true;
}

void PixelReader::OnRead(png_structp png, png_bytep bytes, std::size_t size) {
  auto& reader = *static_cast<PixelReader*>(png_get_io_ptr(png));
  if (std::fread(bytes, 1, size, reader.file_) == size) return;
  if (std::ferror(reader.file_) != 0) {
    reader.read_error_ = errno;
  } else {
    reader.is_at_end_ = true;
  }
  png_error(png, "the end of the file");
}

Status PixelReader::MakeError(const std::string& what_is_there) const {
  if (read_error_ != 0) return Status::Error(std::generic_category().message(read_error_));
  if (is_at_end_) return Status::Error("the file is shortened: " + what_is_there);
  const std::string_view message = message_.data();
  if (has_wrong_sum_ || message.find("CRC") != std::string_view::npos ||
      message.find("data check") != std::string_view::npos) {
    return Status::Error("its checksum does not match: the file is damaged");
  }
  return Status::Error("the file is damaged: " + what_is_there + " (" + std::string(message) + ")");
}

std::string PixelReader::DescribeRows() const {
  return std::to_string(next_row_) + " of " + std::to_string(header_.size_y) + " rows are there";
}

Status PixelReader::ReadHeader() {
  if (file_ == nullptr) return MakeError("");
  if (info_ == nullptr) throw std::bad_alloc();
  const bool is_read = Guard([this] {
    png_set_read_fn(png_, this, OnRead);
    png_set_user_limits(png_, kMostPixels, kMostPixels);
    png_set_chunk_malloc_max(png_, kMostChunkBytes);
    // All chunks but those that the pixels need.
    png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_read_info(png_, info_);
  });
  if (!is_read) return MakeError("its header is not complete");
  const int color_type = png_get_color_type(png_, info_);
  header_.size_x = png_get_image_width(png_, info_);
  header_.size_y = png_get_image_height(png_, info_);
  header_.bits = png_get_bit_depth(png_, info_) == 16 ? 16 : 8;
  header_.has_opacity = (color_type & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
  header_.channels = ((color_type & PNG_COLOR_MASK_COLOR) != 0 ? 3 : 1) + (header_.has_opacity ? 1 : 0);
  header_.is_interlaced = png_get_interlace_type(png_, info_) != PNG_INTERLACE_NONE;
  return {};
}

Status PixelReader::Prepare() {
  if (is_prepared_) return {};
  const bool is_ready = Guard([this] {
    png_set_expand(png_);
    if constexpr (std::endian::native == std::endian::little) png_set_swap(png_);
    passes_ = png_set_interlace_handling(png_);
    png_read_update_info(png_, info_);
  });
  if (!is_ready) return MakeError(DescribeRows());
  if (png_get_rowbytes(png_, info_) != header_.GetRowSize()) {
    return Status::Error("the file is damaged: its header contradicts itself");
  }
  is_prepared_ = true;
  return {};
}

Status PixelReader::ReadRow(std::uint8_t* row) {
  if (const Status status = Prepare(); status.IsError()) return status;
  if (!Guard([this, row] { png_read_row(png_, row, nullptr); })) return MakeError(DescribeRows());
  ++next_row_;
  return next_row_ == header_.size_y ? ReadEnd() : Status();
}

Status PixelReader::ReadPasses(std::uint8_t* rows) {
  if (const Status status = Prepare(); status.IsError()) return status;
  const std::size_t row_size = header_.GetRowSize();
  for (int pass = 0; pass < passes_; ++pass) {
    const bool is_read = Guard([this, rows, row_size] {
      for (std::size_t y = 0; y < header_.size_y; ++y) png_read_row(png_, rows + y * row_size, nullptr);
    });
    if (!is_read) {
      return MakeError(std::to_string(pass) + " of " + std::to_string(passes_) + " passes are there");
    }
  }
  next_row_ = header_.size_y;
  return ReadEnd();
}

Status PixelReader::ReadEnd() {
  const bool is_read = Guard([this] { png_read_end(png_, nullptr); });
  if (!is_read) return MakeError("its pixels are there, its end is not");
  return has_wrong_sum_ ? MakeError("") : Status();
}

}  // namespace ScEng::Png
