// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <tiffio.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "Host/Files/Codecs/CodedSize.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// The strips or tiles of one directory of a TIFF, looked at as bytes in the file: whether they are there, and whether
/// the checksums at the ends of deflated ones are right, which the library that decodes them does not always look at.
class TiffBlocks {
 public:
  /// Null where the file has no such directory, or one of another size.
  static std::unique_ptr<TiffBlocks> Open(const std::string& path, int directory, int size_x, int size_y);

  /// Checks all blocks that a rectangle of some bands (from 0) touches, each block once. The error is a clause.
  Status Check(const std::vector<int>& bands, int column_begin, int column_end, int row_begin, int row_end);
  /// How many rows from the first have all their blocks in the file; blocks that were never written count as there.
  [[nodiscard]] int CountRows();

 private:
  struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
  };
  enum class BlockState { kFine, kMissing, kDamaged };

  TiffBlocks() = default;
  void ReadLayout();
  [[nodiscard]] std::uint32_t GetIndex(int column, int row, int band) const;
  BlockState Look(std::uint32_t index);
  [[nodiscard]] Status MakeShortenedError(int missing_row);
  /// What is wrong with the size that a block at a pixel has of its own, as a clause.
  std::string FindSizeProblem(int band, std::int64_t column, std::int64_t row);
  bool Inflates(std::uint64_t offset, std::uint64_t size);

  std::unique_ptr<TIFF, TiffCloser> tiff_;
  std::ifstream file_;
  std::uint64_t file_size_ = 0;
  int size_x_ = 0;
  int size_y_ = 0;
  int block_x_ = 0;
  int block_y_ = 0;
  int planes_ = 1;
  std::uint32_t blocks_of_row_ = 0;
  std::uint32_t blocks_of_plane_ = 0;
  std::uint64_t block_bytes_ = 0;
  bool is_deflated_ = false;
  bool is_tiled_ = false;
  /// Of planes of colour beside one of brightness, which may have fewer pixels.
  BlockSize thinning_{1, 1};
  BlockCoding coding_ = BlockCoding::kOther;
  std::unordered_set<std::uint32_t> seen_;
};

}  // namespace ScEng
