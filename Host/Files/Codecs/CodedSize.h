// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <istream>
#include <string>

#include "Host/Files/Api.h"

namespace ScEng {

/// The size of a strip or tile in pixels.
struct BlockSize {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// How the pixels of a strip or tile are coded, where the code has a size of its own.
enum class BlockCoding { kOther, kJpeg, kWebp };
/// By the number that a TIFF has for it.
HOST_FILES_API BlockCoding GetBlockCoding(std::uint16_t compression);

/// Compares the size that is coded in the bytes of a file from `offset` with what is needed; libraries make up what is
/// missing. The answer is "holds 48 x 40 pixels and should hold 48 x 400", empty where it is large enough.
HOST_FILES_API std::string FindCodedSizeProblem(std::istream& file, std::uint64_t offset, std::uint64_t size,
                                                BlockCoding coding, BlockSize needed);

}  // namespace ScEng
