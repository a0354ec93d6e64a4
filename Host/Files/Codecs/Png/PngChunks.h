// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Host/Files/Codecs/Png/PngTexts.h"

namespace ScEng::Png {

struct Chunk {
  std::string type;
  Bytes data;
};

/// What lies in a file around its pixels. It is read apart from them, so that a damaged or overlarge chunk costs its
/// own content only, and so that what stands after the pixels is known before them.
struct ChunkList {
  /// The chunks that hold metadata, in the order of the file.
  std::vector<Chunk> chunks;
  /// How many bytes of packed pixels there are.
  std::uint64_t packed_size = 0;
  bool is_animation = false;
  /// What was left out, and why.
  std::vector<std::string> notes;
};

/// Reads the chunks of an open file as far as they can be followed; what is wrong with the pixels shows when they are
/// read. The position of the descriptor is not changed.
ChunkList ReadChunks(int descriptor);

}  // namespace ScEng::Png
