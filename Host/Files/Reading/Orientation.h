// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>

namespace ScEng {

/// How the rows and columns of a file lie in the upright picture, as EXIF numbers it from 1 to 8.
class Orientation {
 public:
  /// Numbers that EXIF does not have count as 1, upright.
  explicit Orientation(int number) : number_(number >= 1 && number <= 8 ? number : 1) {}

  [[nodiscard]] bool IsUpright() const { return number_ == 1; }
  /// Whether rows of the file are columns of the picture.
  [[nodiscard]] bool Transposes() const { return number_ >= 5; }

  /// The column and row of the file that pixel (x, y) of the upright picture comes from; the size is the file's.
  [[nodiscard]] std::array<int, 2> FindSource(int x, int y, int file_columns, int file_rows) const {
    const int column = Transposes() ? y : x;
    const int row = Transposes() ? x : y;
    // 2 and 3 count columns from the right, 3 and 4 rows from below; 6 is the picture of a camera turned to the right.
    const bool flips_columns = number_ == 2 || number_ == 3 || number_ == 7 || number_ == 8;
    const bool flips_rows = number_ == 3 || number_ == 4 || number_ == 6 || number_ == 7;
    return {flips_columns ? file_columns - 1 - column : column, flips_rows ? file_rows - 1 - row : row};
  }

 private:
  int number_;
};

}  // namespace ScEng
