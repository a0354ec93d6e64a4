// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Reading/Orientation.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

/// The upright picture of the file with the rows "ab" and "cd" and "ef", row by row.
std::string Turn(int number) {
  const std::string file = "abcdef";
  const ScEng::Orientation orientation(number);
  const int width = orientation.Transposes() ? 3 : 2;
  const int height = orientation.Transposes() ? 2 : 3;
  std::string upright;
  for (int y = 0; y < height; ++y) {
    if (y > 0) upright += '/';
    for (int x = 0; x < width; ++x) {
      const auto [column, row] = orientation.FindSource(x, y, 2, 3);
      upright += file[static_cast<std::size_t>(row * 2 + column)];
    }
  }
  return upright;
}

TEST(Orientation, TurnsAsTheEightNumbersSay) {
  const std::pair<int, const char*> cases[] = {{1, "ab/cd/ef"}, {2, "ba/dc/fe"}, {3, "fe/dc/ba"}, {4, "ef/cd/ab"},
                                               {5, "ace/bdf"},  {6, "eca/fdb"},  {7, "fdb/eca"},  {8, "bdf/ace"}};
  for (const auto& [number, upright] : cases) EXPECT_EQ(Turn(number), upright) << number;
}

TEST(Orientation, OtherNumbersAreUpright) {
  for (const int number : {0, -1, 9, 1000}) EXPECT_EQ(Turn(number), "ab/cd/ef");
}

}  // namespace
