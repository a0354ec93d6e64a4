// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/WrapText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(WrapText, BreaksAtBlanks) {
  const std::string left(40, 'a');
  const std::string right(41, 'b');
  EXPECT_EQ(Wrap(left + " " + right, 4), left + "\n    " + right);
  EXPECT_EQ(Wrap(left + " " + left, 4), left + "\n    " + left);
}

TEST(WrapText, UsesTheWholeWidth) {
  const std::string left(39, 'a');
  const std::string right(40, 'b');
  EXPECT_EQ(Wrap(left + " " + right, 0), left + " " + right);
  EXPECT_EQ(Wrap(left + " " + right, 1), left + "\n " + right);
}

TEST(WrapText, KeepsBlanksWithinALine) { EXPECT_EQ(Wrap("number    default 1", 18), "number    default 1"); }

TEST(WrapText, GivesLongWordsALineOfTheirOwn) {
  const std::string word(100, 'w');
  EXPECT_EQ(Wrap("a " + word + " b", 2), "a\n  " + word + "\n  b");
  EXPECT_EQ(Wrap("", 2), "");
}

}  // namespace
