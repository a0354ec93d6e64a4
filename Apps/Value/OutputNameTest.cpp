// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/OutputName.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const OutputName::Source kSource{"tiles/east/a.b.exr", "east", 7};

std::string Make(const std::string& text, const OutputName::Source& source = kSource) {
  OutputName name;
  const ScEng::Status status = name.Parse(text);
  EXPECT_FALSE(status.IsError()) << status.GetMessage();
  return name.Make(source, "results/raised.map.tif").string();
}

std::string ErrorOf(const std::string& text) { return OutputName().Parse(text).GetMessage(); }

TEST(OutputName, ReplacesWords) {
  EXPECT_EQ(Make(OutputName::kDefault), "a.b_raised.map.tif");
  EXPECT_EQ(Make("{folder}/{stem}{ending}"), "east/a.b.tif");
  EXPECT_EQ(Make("{output}/{index}.png"), "raised.map/7.png");
  EXPECT_EQ(Make("{index:04}{ending}"), "0007.tif");
  EXPECT_EQ(Make("{index:1}"), "7");
  EXPECT_EQ(Make("plain.exr"), "plain.exr");
}

TEST(OutputName, BackslashesAreSeparatorsOnlyWhereTheyAreWritten) {
  EXPECT_EQ(Make("sub\\{stem}.png"), "sub/a.b.png");
  EXPECT_EQ(Make("{folder}/{stem}.png", {"in/c\\d/a\\b.png", "c\\d", 1}), "c_d/a_b.png");
  EXPECT_NE(ErrorOf("..\\{stem}.png"), "");
}

TEST(OutputName, DoubledBracesAreBraces) { EXPECT_EQ(Make("{{{stem}}}.exr"), "{a.b}.exr"); }

TEST(OutputName, AFolderWithoutANameIsLeftOut) {
  EXPECT_EQ(Make("{folder}/{stem}.exr", {"in/a.exr", "", 1}), "a.exr");
  EXPECT_EQ(Make("x/{folder}/{stem}.exr", {"in/a.exr", "", 1}), "x/a.exr");
}

TEST(OutputName, RefusesWhatIsNoTemplate) {
  EXPECT_EQ(ErrorOf("{sten}.exr"), "there is no {sten}; the closest is {stem}");
  EXPECT_EQ(ErrorOf("{zebra}"), "there is no {zebra}; there are {stem}, {folder}, {output}, {ending} and {index}");
  EXPECT_NE(ErrorOf("{stem"), "");
  EXPECT_NE(ErrorOf("stem}"), "");
  EXPECT_NE(ErrorOf("{stem:04}"), "");
  EXPECT_NE(ErrorOf("{index:}"), "");
  EXPECT_NE(ErrorOf("{index:99}"), "");
  EXPECT_NE(ErrorOf(""), "");
}

TEST(OutputName, RefusesWhatLeavesTheOutputFolder) {
  EXPECT_NE(ErrorOf("/tmp/{stem}.exr"), "");
  EXPECT_NE(ErrorOf("../{stem}.exr"), "");
  EXPECT_NE(ErrorOf("a/../../{stem}.exr"), "");
  EXPECT_NE(ErrorOf("{stem}/"), "");
  EXPECT_EQ(ErrorOf("a/../{stem}.exr"), "");
}

}  // namespace
