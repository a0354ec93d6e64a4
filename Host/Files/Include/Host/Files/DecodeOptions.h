// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "Host/Files/Api.h"

namespace ScEng {

/// Where image files are decoded.
enum class DecodePlace : std::uint8_t {
  /// In a process of its own, which can read nothing but the file and its folder and is bounded in time and memory: a
  /// file that crashes, hangs or floods it is an error of that file.
  kHelper,
  /// In this process, without limits: for files that are trusted and larger than the limits, and for debugging.
  kInProcess,
};

/// From now on, for every file. From any thread; `kHelper` without a call.
HOST_FILES_API void SetDecodePlace(DecodePlace place);
HOST_FILES_API DecodePlace GetDecodePlace();

/// Tells which image files are read next, about in this order, so that processes that decode and have nothing to do can
/// open up to `most` small ones ahead; a file that is not read after all, or changes, does no harm. Takes the place of
/// what was told before; no files end it. Without effect in `kInProcess`. From any thread.
HOST_FILES_API void ExpectImageFiles(std::vector<std::filesystem::path> files, std::size_t most);

}  // namespace ScEng
