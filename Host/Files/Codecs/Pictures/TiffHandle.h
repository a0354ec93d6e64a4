// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace ScEng {

struct CloseTiff {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, CloseTiff>;

/// Whether a warning says that rows of a fax were made up.
inline bool TellsOfDamage(std::string_view warning) {
  return warning.find("Premature EO") != std::string_view::npos ||
         warning.find("Line length mismatch") != std::string_view::npos;
}

/// Opens a TIFF whose errors go into `problem`, which lives as long as the handle, as do warnings that tell of damage.
/// Other warnings go nowhere, and the handlers of the process are left as they are.
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
      options.get(),
      [](TIFF*, void* user, const char*, const char* format, va_list values) {
        char text[256];
        std::vsnprintf(text, sizeof text, format, values);
        if (TellsOfDamage(text)) *static_cast<std::string*>(user) = text;
        return kHandled;
      },
      &problem);
  return TiffHandle(TIFFOpenExt(file.c_str(), mode, options.get()));
}

}  // namespace ScEng
