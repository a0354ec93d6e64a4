// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/BashLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

// What bash has in COMP_WORDBREAKS unless somebody changes it.
constexpr std::string_view kBreaks = " \t\n\"'><=;|&(:";

TEST(BashLine, SplitsAtBlanks) {
  EXPECT_EQ(ReadBashLine("value  run\tg", kBreaks).words, (Words{"value", "run", "g"}));
  EXPECT_EQ(ReadBashLine("value run ", kBreaks).words, (Words{"value", "run", ""}));
  EXPECT_EQ(ReadBashLine("", kBreaks).words, Words{""});
}

TEST(BashLine, TakesQuotesAway) {
  EXPECT_EQ(ReadBashLine("v 'a b' \"c d\" e\\ f g", kBreaks).words, (Words{"v", "a b", "c d", "e f", "g"}));
  EXPECT_EQ(ReadBashLine("v \"a \\\" \\x\" 'it\\' ''", kBreaks).words, (Words{"v", "a \" \\x", "it\\", ""}));
  EXPECT_EQ(ReadBashLine("v '' ", kBreaks).words, (Words{"v", "", ""}));
}

TEST(BashLine, FindsTheOpenQuotationMark) {
  const BashLine line = ReadBashLine("v apply \"Value Cl", kBreaks);
  EXPECT_EQ(line.words.back(), "Value Cl");
  EXPECT_EQ(line.quote, '"');
  EXPECT_EQ(line.num_kept, 0U);
  EXPECT_EQ(ReadBashLine("v 'a", kBreaks).quote, '\'');
  EXPECT_EQ(ReadBashLine("v 'a' b", kBreaks).quote, 0);
}

TEST(BashLine, KeepsWhatStandsBeforeTheLastBreak) {
  EXPECT_EQ(ReadBashLine("v --set constant=0.2", kBreaks).num_kept, 9U);
  EXPECT_EQ(ReadBashLine("v --set=name=x", kBreaks).num_kept, 11U);
  EXPECT_EQ(ReadBashLine("v C:file", kBreaks).num_kept, 2U);
  EXPECT_EQ(ReadBashLine("v a=b c", kBreaks).num_kept, 0U);
  EXPECT_EQ(ReadBashLine("v --set constant=0.2", " \t\n").num_kept, 0U);
}

TEST(BashLine, BreaksNeitherInQuotesNorBehindABackslash) {
  EXPECT_EQ(ReadBashLine("v \"a=b", kBreaks).num_kept, 0U);
  EXPECT_EQ(ReadBashLine("v a=\"b=c", kBreaks).num_kept, 2U);
  EXPECT_EQ(ReadBashLine("v a\\=b", kBreaks).num_kept, 0U);
  EXPECT_EQ(ReadBashLine("v a=\"b\"", kBreaks).num_kept, 2U);
}

TEST(BashLine, LeavesRedirectionsOut) {
  const BashLine behind = ReadBashLine("v run 2>errors.txt >out g", kBreaks);
  EXPECT_EQ(behind.words, (Words{"v", "run", "g"}));
  EXPECT_FALSE(behind.is_redirection);
  const BashLine within = ReadBashLine("v run > o", kBreaks);
  EXPECT_EQ(within.words, (Words{"v", "run", "o"}));
  EXPECT_TRUE(within.is_redirection);
}

TEST(BashLine, QuotesForWhereTheCursorIs) {
  EXPECT_EQ(QuoteForBash("Value Add", 0), "Value\\ Add");
  EXPECT_EQ(QuoteForBash("constant=0.5", 0), "constant=0.5");
  EXPECT_EQ(QuoteForBash("a\"b$c d", '"'), "a\\\"b\\$c d");
  EXPECT_EQ(QuoteForBash("it's $5", '\''), "it'\\''s $5");
}

TEST(BashLine, ReadsBackWhatItQuotes) {
  const std::string text = "a b\\c\"d'e`f$g&h|i;j<k>l(m)n[o]p{q}r*s?t!u#v~w=x:y";
  EXPECT_EQ(ReadBashLine("v " + QuoteForBash(text, 0), "").words.back(), text);
  EXPECT_EQ(ReadBashLine("v \"" + QuoteForBash(text, '"') + "\"", "").words.back(), text);
  EXPECT_EQ(ReadBashLine("v '" + QuoteForBash(text, '\'') + "'", "").words.back(), text);
}

}  // namespace
