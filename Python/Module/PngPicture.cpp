// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/PngPicture.h"

#include <png.h>

#include <array>
#include <csetjmp>
#include <cstring>
#include <exception>
#include <limits>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "Host/Util/Cancellation.h"

namespace ValuePython {
namespace {

/// Writes a picture row by row. Libpng reports errors by longjmp, which must not pass a destructor.
class PngPicture {
 public:
  PngPicture() : png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning)) {
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
    if (info_ != nullptr) return;
    png_destroy_write_struct(&png_, nullptr);
    throw std::bad_alloc();
  }
  ~PngPicture() { png_destroy_write_struct(&png_, &info_); }
  PngPicture(const PngPicture&) = delete;
  PngPicture& operator=(const PngPicture&) = delete;

  void Begin(std::size_t width, std::size_t height) {
    Guard([=, this] {
      constexpr png_uint_32 kMostPixels = std::numeric_limits<std::int32_t>::max();
      png_set_write_fn(png_, this, OnWrite, nullptr);
      png_set_user_limits(png_, kMostPixels, kMostPixels);
      png_set_IHDR(png_, info_, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                   PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
      png_set_sRGB(png_, info_, PNG_sRGB_INTENT_PERCEPTUAL);
      png_write_info(png_, info_);
    });
  }

  void WriteRow(const std::uint8_t* row) {
    Guard([=, this] { png_write_row(png_, row); });
  }

  std::string Finish() {
    Guard([this] { png_write_end(png_, nullptr); });
    return std::move(bytes_);
  }

 private:
  template <class Call>
  void Guard(Call call) {
    if (IsDone(call)) return;
    if (failure_) std::rethrow_exception(failure_);
    throw std::runtime_error(std::string("a picture could not be made: ") + message_.data());
  }

  template <class Call>
  [[gnu::noinline]] bool IsDone(Call call) {
    static_assert(std::is_trivially_destructible_v<Call>);
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    call();
    return true;
  }

  /// False where there is no memory for more.
  bool Append(const std::uint8_t* bytes, std::size_t size) noexcept {
    try {
      bytes_.append(reinterpret_cast<const char*>(bytes), size);
    } catch (...) {
      failure_ = std::current_exception();
      return false;
    }
    return true;
  }

  [[noreturn]] static void OnError(png_structp png, png_const_charp message) {
    auto& picture = *static_cast<PngPicture*>(png_get_error_ptr(png));
    std::strncpy(picture.message_.data(), message, picture.message_.size() - 1);
    png_longjmp(png, 1);
  }
  static void OnWarning(png_structp, png_const_charp) {}
  static void OnWrite(png_structp png, png_bytep bytes, std::size_t size) {
    if (!static_cast<PngPicture*>(png_get_io_ptr(png))->Append(bytes, size)) png_error(png, "there is no memory");
  }

  png_structp png_;
  png_infop info_ = nullptr;
  std::string bytes_;
  std::exception_ptr failure_;
  std::array<char, 128> message_{};
};

}  // namespace

std::string EncodePng(std::size_t width, std::size_t height, const std::uint8_t* pixels) {
  PngPicture picture;
  picture.Begin(width, height);
  for (std::size_t row = 0; row < height; ++row) {
    ScEng::PollCancellation();
    picture.WriteRow(pixels + row * width * 4);
  }
  return picture.Finish();
}

}  // namespace ValuePython
