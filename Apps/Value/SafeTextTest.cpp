// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/SafeText.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <chrono>
#include <cstddef>
#include <string>

namespace {

/// Characters of a valid text.
std::size_t CountCharacters(const std::string& text) {
  std::size_t count = 0;
  for (const char byte : text) count += (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U ? 1 : 0;
  return count;
}

TEST(SafeText, OrdinaryTextStaysAsItIs) {
  for (const std::string text : {"", "node \"a\": its path \"C:\\maps\\a.exr\" is empty", "H\xC3\xB6he \xE2\x82\xAC",
                                 "\xF0\x9F\x8F\x94 \xEF\xBF\xBD"}) {
    EXPECT_EQ(EscapeLine(text), text);
    EXPECT_EQ(EscapeText(text), text);
  }
}

TEST(SafeText, ControlCharactersAreEscaped) {
  EXPECT_EQ(EscapeLine("a\x1b[31mb"), "a\\u001b[31mb");
  EXPECT_EQ(EscapeLine(std::string("a\0b", 3)), "a\\u0000b");
  EXPECT_EQ(EscapeLine("\a\b\x7f"), "\\u0007\\u0008\\u007f");
  EXPECT_EQ(EscapeLine("a\nb\rc\td"), "a\\nb\\u000dc\\td");
  // From 80 to 9F as characters: a terminal may take the second for the start of a command.
  EXPECT_EQ(EscapeLine("\xC2\x80\xC2\x9B\xC2\x9F\xC2\xA0"), "\\u0080\\u009b\\u009f\xC2\xA0");
}

TEST(SafeText, TheEndOfALastLineIsDroppedAndNoOtherLineFeedStaysInALine) {
  EXPECT_EQ(EscapeLine("a\r\n\n"), "a");
  EXPECT_EQ(EscapeLine("\n"), "");
  EXPECT_EQ(EscapeText("a\nb\x1b\n"), "a\nb\\u001b\n");
}

TEST(SafeText, CharactersThatTurnTheDirectionAreEscaped) {
  EXPECT_EQ(EscapeLine("a\xE2\x80\xAE"
                       "b"),
            "a\\u202eb");
  EXPECT_EQ(EscapeLine("\xE2\x81\xA6\xE2\x81\xA9"), "\\u2066\\u2069");
  EXPECT_EQ(EscapeLine("\xD8\x9C\xE2\x80\x8E\xE2\x80\x8F"), "\\u061c\\u200e\\u200f");
  // Line and paragraph separators.
  EXPECT_EQ(EscapeLine("\xE2\x80\xA8\xE2\x80\xA9"), "\\u2028\\u2029");
  // Neighbours of these ranges: U+2027, U+202F, U+2065, U+206A.
  const std::string beside = "\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xA5\xE2\x81\xAA";
  EXPECT_EQ(EscapeLine(beside), beside);
}

TEST(SafeText, BytesThatAreNotUtf8AreEscaped) {
  EXPECT_EQ(EscapeLine("a\xFF"), "a\\xff");
  EXPECT_EQ(EscapeLine("\x80"), "\\x80");
  // Cut off in the middle, and continued by something else.
  EXPECT_EQ(EscapeLine("\xE2\x82"), "\\xe2\\x82");
  EXPECT_EQ(EscapeLine("\xE2\x82z"), "\\xe2\\x82z");
  // Longer forms of "/" and of U+20AC, half a surrogate pair, and what lies beyond U+10FFFF.
  EXPECT_EQ(EscapeLine("\xC0\xAF"), "\\xc0\\xaf");
  EXPECT_EQ(EscapeLine("\xE0\x80\xAF"), "\\xe0\\x80\\xaf");
  EXPECT_EQ(EscapeLine("\xF0\x82\x82\xAC"), "\\xf0\\x82\\x82\\xac");
  EXPECT_EQ(EscapeLine("\xED\xA0\x80"), "\\xed\\xa0\\x80");
  EXPECT_EQ(EscapeLine("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
  EXPECT_EQ(EscapeLine("\xF5\x80\x80\x80"), "\\xf5\\x80\\x80\\x80");
}

TEST(SafeText, ALineOfTheMostCharactersStaysAndALongerOneIsCut) {
  EXPECT_EQ(EscapeLine(std::string(300, 'a')), std::string(300, 'a'));
  // 297 characters beside the dots: two thirds before, one third behind.
  EXPECT_EQ(EscapeLine(std::string(301, 'a')), std::string(198, 'a') + "..." + std::string(99, 'a'));
  EXPECT_EQ(EscapeLine(std::string(101, 'a'), 100), std::string(65, 'a') + "..." + std::string(32, 'a'));
}

TEST(SafeText, TheLongestWordIsCutSoThatTheRestStays) {
  const std::string start = "there is no node type \"A";
  const std::string end = "Z\"; the closest is ImageValueAddNode";
  const std::string line = EscapeLine(start + std::string(500, 'm') + end);
  EXPECT_EQ(CountCharacters(line), kLongestLine);
  EXPECT_TRUE(line.starts_with(start + "m")) << line;
  EXPECT_TRUE(line.ends_with("m" + end)) << line;
  EXPECT_NE(line.find("m...m"), std::string::npos) << line;
}

TEST(SafeText, SeveralLongWordsAreCutEach) {
  const std::string line = EscapeLine(std::string(200, 'a') + " and " + std::string(400, 'b') + " are alike");
  EXPECT_EQ(CountCharacters(line), kLongestLine);
  EXPECT_TRUE(line.starts_with(std::string(30, 'a')) && line.ends_with("bbb are alike")) << line;
  EXPECT_NE(line.find("a and b"), std::string::npos) << line;
}

TEST(SafeText, TheNameOfAPathsFileStays) {
  const std::string end = "(exit code 99), and printed last: " + std::string(190, 'p');
  const std::string line = EscapeLine("\"/home/" + std::string(300, 'd') + "/ALibraryWithAName.so\": " + end);
  EXPECT_EQ(CountCharacters(line), kLongestLine);
  EXPECT_NE(line.find("d/ALibraryWithAName.so\": (exit"), std::string::npos) << line;
  EXPECT_TRUE(line.starts_with("\"/home/dd")) << line;
  // A name that has no room is cut as any other word: 45 characters stay of each word, 15 of them the end.
  const std::string name(60, 'n');
  const std::string short_line = EscapeLine("/home/" + name + " and more", 57);
  EXPECT_EQ(short_line, "/home/" + std::string(24, 'n') + "..." + std::string(15, 'n') + " and more");
}

TEST(SafeText, WhatStandsBetweenWordsOfManyMegabytesStays) {
  const std::string name(10'000'000, 'n');
  const std::string line = EscapeLine("--set a=" + name + ": it takes a number, not \"" + name + "\"");
  EXPECT_EQ(CountCharacters(line), kLongestLine);
  EXPECT_NE(line.find("n: it takes a number, not \"n"), std::string::npos) << line;
  EXPECT_TRUE(line.starts_with("--set a=nnn") && line.ends_with("nnn\"")) << line;
}

TEST(SafeText, ManyShortWordsLoseTheMiddleOfTheLine) {
  std::string text = "known are";
  for (int i = 0; i < 200; ++i) text += " word";
  const std::string line = EscapeLine(text + " only");
  EXPECT_EQ(CountCharacters(line), kLongestLine);
  EXPECT_TRUE(line.starts_with("known are word word")) << line;
  EXPECT_TRUE(line.ends_with("word word only")) << line;
}

TEST(SafeText, NeitherACharacterNorAnEscapeIsTornApart) {
  std::string text;
  for (int i = 0; i < 400; ++i) text += "\xE2\x82\xAC";
  EXPECT_EQ(CountCharacters(EscapeLine(text)), kLongestLine);
  std::string bells;
  for (int i = 0; i < 400; ++i) bells += '\a';
  std::string wanted;
  for (int i = 0; i < 33; ++i) wanted += "\\u0007";
  wanted += "...";
  for (int i = 0; i < 16; ++i) wanted += "\\u0007";
  EXPECT_EQ(EscapeLine(bells), wanted);
}

TEST(SafeText, ATextOfManyMegabytesTakesNoTime) {
  const std::string text = "type \"" + std::string(100'000'000, '\x01') + "\" is unknown";
  const auto start = std::chrono::steady_clock::now();
  const std::string line = EscapeLine(text);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
  EXPECT_TRUE(line.starts_with("type \"\\u0001") && line.ends_with("\\u0001\" is unknown")) << line;
}

RC_GTEST_PROP(SafeText, ALineIsSafeAndNoLongerThanAsked, ()) {
  auto text = *rc::gen::arbitrary<std::string>();
  const auto repeats = *rc::gen::inRange<std::size_t>(1, 40);
  const std::string once = text;
  for (std::size_t i = 1; i < repeats; ++i) text += " " + once;
  const auto most = *rc::gen::inRange<std::size_t>(16, 400);
  const std::string line = EscapeLine(text, most);
  RC_ASSERT(CountCharacters(line) <= most);
  for (const char byte : line) RC_ASSERT(static_cast<unsigned char>(byte) >= 0x20 && byte != 0x7F);
  // What was made safe once stays as it is.
  RC_ASSERT(EscapeLine(line, most) == line);
}

}  // namespace
