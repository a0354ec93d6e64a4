// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

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

}  // namespace ScEng
