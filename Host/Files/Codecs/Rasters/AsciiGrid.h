// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Host/Files/Codecs/Codec.h"

namespace ScEng {

/// The samples of an Esri ASCII grid. GDAL reads words that are no numbers as 0 and infinity as the largest float, so
/// that it is only asked for what stands around the samples.
class AsciiGridReader {
 public:
  AsciiGridReader(const std::string& path, int size_x, int size_y);

  /// One row as numbers, in any order of rows; going back costs what was read before. The error is a clause.
  Status ReadRow(int row, std::vector<double>& numbers);

 private:
  /// Where a row begins.
  struct Place {
    int row;
    std::streamoff offset;
  };

  void SkipHeader();
  /// Whether the file ends behind its last row.
  Status CheckEnd();
  void GoTo(std::streamoff offset);
  bool Refill();
  /// The next word, cut to a length that no number has; empty at the end of the file.
  std::string_view NextWord();
  [[nodiscard]] std::streamoff GetOffset() const { return buffer_offset_ + static_cast<std::streamoff>(at_); }

  std::ifstream file_;
  int size_x_;
  int size_y_;
  std::vector<char> buffer_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;
  std::streamoff buffer_offset_ = 0;
  std::string word_;
  int next_row_ = 0;
  /// Some of the rows that were begun, the first among them.
  std::vector<Place> places_;
};

/// Makes the writer of an Esri ASCII grid.
std::unique_ptr<ImageEncoder> CreateAsciiGrid(const std::string& path, const WritePlan& plan,
                                              std::vector<std::string>& notes, Status& status);

}  // namespace ScEng
