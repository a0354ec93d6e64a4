// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

namespace ScEng {

struct CloseTiff {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, CloseTiff>;

/// Opens a TIFF whose errors go into `problem`, which lives as long as the handle, and whose warnings go nowhere. The
/// handlers of the process are left as they are.
inline TiffHandle OpenTiff(const std::filesystem::path& file, const char* mode, std::string& problem) {
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(TIFFOpenOptionsAlloc(),
                                                                                 &TIFFOpenOptionsFree);
  constexpr int kHandled = 1;
  TIFFOpenOptionsSetErrorHandlerExtR(
      options.get(),
      [](TIFF*, void* user, const char*, const char* format, va_list values) {
        char text[256];
        std::vsnprintf(text, sizeof text, format, values);
        *static_cast<std::string*>(user) = text;
        return kHandled;
      },
      &problem);
  TIFFOpenOptionsSetWarningHandlerExtR(
      options.get(), [](TIFF*, void*, const char*, const char*, va_list) { return kHandled; }, nullptr);
  return TiffHandle(TIFFOpenExt(file.c_str(), mode, options.get()));
}

}  // namespace ScEng
