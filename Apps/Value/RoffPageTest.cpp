// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/RoffPage.h"

#include <gtest/gtest.h>

#include <string>

namespace {

/// What a page has behind its title and settings.
std::string BodyOf(const RoffPage& page) {
  const std::string start = ".ad l\n";
  return page.GetText().substr(page.GetText().find(start) + start.size());
}

RoffPage MakePage() { return {"value-run", "2026-01-02", "1.2.3"}; }

TEST(RoffPage, StartsWithItsTitle) {
  EXPECT_NE(MakePage().GetText().find(".TH \"VALUE\\-RUN\" \"1\" \"2026-01-02\" \"value 1.2.3\" \"Value Manual\"\n"),
            std::string::npos);
}

TEST(RoffPage, EscapesWhatTheFormatterWouldTakeForItsOwn) {
  EXPECT_EQ(RoffPage::Escape("a-b\\c~d^e`f'g\"h"), "a\\-b\\ec\\(tid\\(hae\\(gaf\\(aqg\\(dqh");
  EXPECT_EQ(RoffPage::Escape("two\nlines"), "two lines");
  EXPECT_EQ(RoffPage::Escape("\xC3\xA9\xE2\x80\x93\xF0\x9F\x99\x82"), "\\[u00E9]\\[u2013]\\[u1F642]");
}

TEST(RoffPage, SetsWhatStandsBetweenBackquotesInBold) {
  RoffPage page = MakePage();
  page.AddParagraph("With `--json` the answer is JSON.");
  EXPECT_EQ(BodyOf(page), ".PP\nWith \\fB\\-\\-json\\fR the answer is JSON.\n");
}

TEST(RoffPage, TakesNoTextForAMacro) {
  RoffPage page = MakePage();
  page.AddSection("X");
  page.AddParagraph(".exr is a format");
  EXPECT_EQ(BodyOf(page), ".SH X\n\\&.exr is a format\n");
  EXPECT_EQ(RoffPage::Escape("'quoted"), "\\(aqquoted");
}

TEST(RoffPage, SeparatesParagraphsButNotFromTheirHeading) {
  RoffPage page = MakePage();
  page.AddSection("DESCRIPTION");
  page.AddParagraph("One.");
  page.AddParagraph("Two.");
  page.AddSubsection("More");
  page.AddParagraph("Three.");
  EXPECT_EQ(BodyOf(page), ".SH DESCRIPTION\nOne.\n.PP\nTwo.\n.SS More\nThree.\n");
}

TEST(RoffPage, BreaksLongCommandsBeforeAnOption) {
  RoffPage page = MakePage();
  page.AddSection("EXAMPLES");
  page.AddExample(
      {"value nodes", "value apply node " + std::string(30, 'x') + " -i " + std::string(30, 'y') + " -o z"});
  EXPECT_EQ(BodyOf(page), ".SH EXAMPLES\n.EX\nvalue nodes\nvalue apply node " + std::string(30, 'x') +
                              " \\e\n    \\-i " + std::string(30, 'y') + " \\-o z\n.EE\n");
}

TEST(RoffPage, LeavesACommandWholeThatHasNoOptionToBreakBefore) {
  RoffPage page = MakePage();
  page.AddSection("EXAMPLES");
  page.AddExample({std::string(90, 'x')});
  EXPECT_EQ(BodyOf(page), ".SH EXAMPLES\n.EX\n" + std::string(90, 'x') + "\n.EE\n");
}

}  // namespace
