// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "Host/Files/Codecs/Exr/ExrHeader.h"

namespace ScEng::Exr {

/// The chunks of packed pixels of one part: which are there, and whether they hold as much as they have to.
///
/// The library takes what a chunk unpacks to without looking at how much it is, and would go on with whatever lies in
/// its memory behind it.
class ChunkTable {
 public:
  /// The file must stay open; its position is not changed.
  ChunkTable(std::FILE* file, const FileHeader& header, std::size_t part);

  /// Checks what rows are made of, counted from the first one: an error says how many rows there are, or which cannot
  /// be unpacked.
  Status CheckRows(int row_begin, int row_end) const;

  /// The error for a range of rows that cannot be unpacked.
  [[nodiscard]] static Status MakeDamageError(std::int64_t row_begin, std::int64_t row_end);

 private:
  struct Chunk {
    std::uint64_t position = 0;
    std::size_t size = 0;
  };

  bool ReadAt(std::uint64_t position, void* to, std::size_t size) const;
  void ReadTable();
  void FindChunks();
  [[nodiscard]] std::optional<Chunk> FindChunk(std::size_t index) const;
  [[nodiscard]] std::size_t GetFullSize(std::size_t index) const;
  [[nodiscard]] bool IsWhole(std::size_t index) const;
  [[nodiscard]] std::int64_t CountRows() const;

  std::FILE* const file_;
  const FileHeader& header_;
  const PartHeader& part_;
  std::size_t part_index_;
  /// Chunks side by side in the first level.
  std::size_t columns_ = 1;
  /// Rows of chunks in the first level.
  std::size_t rows_ = 1;
  std::vector<std::uint64_t> offsets_;
};

}  // namespace ScEng::Exr
