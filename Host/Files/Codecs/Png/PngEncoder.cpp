// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/Png/PngEncoder.h"

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

// Three times as fast as the usual level 6, for files that are 0.1 % larger.
constexpr int kLevel = 4;

int GetColorType(const WritePlan& plan) {
  const bool has_opacity = plan.opacity_channel >= 0;
  if (plan.channels.size() <= 2) return has_opacity ? PNG_COLOR_TYPE_GRAY_ALPHA : PNG_COLOR_TYPE_GRAY;
  return plan.channels.size() == 4 ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB;
}

Status CheckPlan(const WritePlan& plan) {
  const std::size_t channels = plan.channels.size();
  if (channels < 1 || channels > 4) return Status::Error("PNG holds one to four channels");
  if ((channels == 2 || channels == 4) != (plan.opacity_channel == static_cast<int>(channels) - 1)) {
    return Status::Error("PNG holds gray or RGB, each with opacity as the last channel or without");
  }
  if (plan.type != StoredType::kUint8 && plan.type != StoredType::kUint16) {
    return Status::Error("PNG holds samples of the types uint8 and uint16");
  }
  if (plan.size_x < 1 || plan.size_y < 1) return Status::Error("PNG holds no image without pixels");
  return CheckCompression(plan.compression);
}

}  // namespace

Status CheckCompression(const std::string& compression) {
  if (compression.empty() || compression == "zip" || compression == "none") return {};
  return Status::Error("PNG has the compressions zip and none, not \"" + compression + "\"");
}

PngEncoder::PngEncoder(const std::filesystem::path& path) : file_(std::fopen(path.c_str(), "wbe")) {
  if (file_ == nullptr) {
    write_error_ = errno;
    return;
  }
  png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
  if (png_ != nullptr) info_ = png_create_info_struct(png_);
}

PngEncoder::~PngEncoder() {
  png_destroy_write_struct(&png_, &info_);
  if (file_ != nullptr) std::fclose(file_);
}

template <class Call>
[[gnu::noinline]] bool PngEncoder::Guard(Call call) {
  static_assert(std::is_trivially_destructible_v<Call>);
  if (setjmp(png_jmpbuf(png_)) != 0) return false;
  call();
  return true;
}

void PngEncoder::OnError(png_structp png, png_const_charp message) {
  auto& encoder = *static_cast<PngEncoder*>(png_get_error_ptr(png));
  std::strncpy(encoder.message_.data(), message, encoder.message_.size() - 1);
  png_longjmp(png, 1);
}

void PngEncoder::OnWrite(png_structp png, png_bytep bytes, std::size_t size) {
  auto& encoder = *static_cast<PngEncoder*>(png_get_io_ptr(png));
  if (std::fwrite(bytes, 1, size, encoder.file_) == size) return;
  encoder.write_error_ = errno;
  png_error(png, "a write failed");
}

Status PngEncoder::MakeError() const {
  return Status::Error(write_error_ != 0 ? std::generic_category().message(write_error_) : message_.data());
}

Status PngEncoder::Begin(const WritePlan& plan, const std::vector<Chunk>& chunks) {
  if (Status status = CheckPlan(plan); status.IsError()) return status;
  if (file_ == nullptr) return MakeError();
  if (info_ == nullptr) throw std::bad_alloc();
  const bool is_wide = plan.type == StoredType::kUint16;
  row_size_ = static_cast<std::size_t>(plan.size_x) * plan.channels.size() * (is_wide ? 2 : 1);
  const bool is_written = Guard([&] {
    constexpr png_uint_32 kMostPixels = std::numeric_limits<std::int32_t>::max();
    png_set_write_fn(png_, this, OnWrite, OnFlush);
    png_set_user_limits(png_, kMostPixels, kMostPixels);
    png_set_IHDR(png_, info_, static_cast<png_uint_32>(plan.size_x), static_cast<png_uint_32>(plan.size_y),
                 is_wide ? 16 : 8, GetColorType(plan), PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png_, plan.compression == "none" ? 0 : kLevel);
    png_write_info(png_, info_);
    for (const Chunk& chunk : chunks) {
      png_write_chunk(png_, reinterpret_cast<png_const_bytep>(chunk.type.c_str()), chunk.data.data(),
                      chunk.data.size());
    }
    if (is_wide && std::endian::native == std::endian::little) png_set_swap(png_);
  });
  return is_written ? Status() : MakeError();
}

Status PngEncoder::WriteRows(int row_begin, int row_end, const void* samples) {
  const auto* row = static_cast<const std::uint8_t*>(samples);
  const bool is_written = Guard([&] {
    for (int y = row_begin; y < row_end; ++y, row += row_size_) png_write_row(png_, row);
  });
  return is_written ? Status() : MakeError();
}

Status PngEncoder::Finish() {
  if (!Guard([this] { png_write_end(png_, nullptr); })) return MakeError();
  std::FILE* file = file_;
  file_ = nullptr;
  // What is still in the buffer is written here.
  if (std::fclose(file) != 0) {
    write_error_ = errno;
    return MakeError();
  }
  return {};
}

}  // namespace ScEng::Png
