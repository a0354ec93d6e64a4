// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/LastLine.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <string>

namespace {

/// What a line writes into a pipe.
template <class Write>
std::string Written(const Write& write_line) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  write_line(ends[1]);
  close(ends[1]);
  char text[2000];
  const ssize_t got = read(ends[0], text, sizeof(text));
  close(ends[0]);
  return {text, static_cast<std::size_t>(got > 0 ? got : 0)};
}

std::string TextOf(const char* text) { return LastLine().Add(text).GetText(); }

TEST(LastLine, PutsTextAndNumbersTogether) {
  LastLine line;
  line.Add("signal ").Add(11).Add(", code ").Add(-1).Add(", ").Add(0);
  EXPECT_STREQ(line.GetText(), "signal 11, code -1, 0");
  EXPECT_STREQ(LastLine().Add(INT_MIN).GetText(), "-2147483648");
}

TEST(LastLine, LetsNothingThroughThatATerminalObeys) {
  EXPECT_EQ(TextOf("a\nb\x1b[31m\x7f"), "a?b?[31m?");
  // The next line of C1, an override of direction, an isolate, a separator of lines.
  EXPECT_EQ(TextOf("a\xC2\x85z"), "a?z");
  EXPECT_EQ(TextOf("a\xE2\x80\xAEz"), "a?z");
  EXPECT_EQ(TextOf("a\xE2\x81\xA6z"), "a?z");
  EXPECT_EQ(TextOf("a\xE2\x80\xA8z"), "a?z");
  // An accent, a dash and a sign of three bytes, and a sequence that ends too early stay.
  EXPECT_EQ(TextOf("\xC3\xA9 \xE2\x80\x93 \xE5\xB1\xB1"), "\xC3\xA9 \xE2\x80\x93 \xE5\xB1\xB1");
  EXPECT_EQ(TextOf("\xE2"), "\xE2");
}

TEST(LastLine, KeepsTheEndOfALongName) {
  EXPECT_STREQ(LastLine().AddName("/long/folder/Foo.so", 6).GetText(), "...Foo.so");
  EXPECT_STREQ(LastLine().AddName("Foo.so", 6).GetText(), "Foo.so");
  // Not half of an accented letter.
  EXPECT_STREQ(LastLine().AddName("/\xC3\xA9.so", 4).GetText(), "....so");
}

TEST(LastLine, CutsWhatIsTooLong) {
  LastLine line;
  line.Add(std::string(5000, 'a').c_str());
  EXPECT_EQ(line.GetLength(), 599U);
  EXPECT_EQ(line.GetText(), std::string(599, 'a'));
}

TEST(LastLine, WritesOneLineOrOneObject) {
  LastLine line;
  line.Add("node \"a\\b\" crashed");
  EXPECT_EQ(Written([&](int to) { line.WriteTo(to); }), "value: node \"a\\b\" crashed\n");
  EXPECT_EQ(Written([&](int to) { line.WriteAsJsonTo(to); }), "{\"error\": \"node \\\"a\\\\b\\\" crashed\"}\n");
}

}  // namespace
