// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/ClosestName.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;
using ScEng::FindClosestNames;
using ScEng::SuggestClosestNames;

const Names kAttributes{"constant", "clamp", "color_mode", "low"};
const Names kNodes{"Value Add",   "ImageValueAddNode",    "Value Clamp",     "ImageValueClampNode",
                   "Value Range", "Connected Components", "Component Edges", "Value Multiply"};

TEST(ClosestName, ToleratesWrongLetters) {
  EXPECT_EQ(FindClosestNames("constatn", kAttributes), Names{"constant"});
  EXPECT_EQ(FindClosestNames("clmap", kAttributes), Names{"clamp"});
  EXPECT_EQ(FindClosestNames("lw", kAttributes), Names{"low"});
  EXPECT_EQ(FindClosestNames("xyzzy", kAttributes), Names{});
}

TEST(ClosestName, CountsSwappedLettersAsOneError) {
  // Three letters allow one error.
  EXPECT_EQ(FindClosestNames("wol", {"owl", "low"}), Names{"owl"});
  EXPECT_EQ(FindClosestNames("aply", {"apply", "play"}), Names{"apply"});
}

TEST(ClosestName, IgnoresCaseAndSeparators) {
  EXPECT_EQ(FindClosestNames("Color-Mode", kAttributes), Names{"color_mode"});
  EXPECT_EQ(FindClosestNames("colormode", kAttributes), Names{"color_mode"});
  EXPECT_EQ(FindClosestNames("value_add", kNodes), Names{"Value Add"});
}

TEST(ClosestName, FindsWordsInAnotherOrder) {
  EXPECT_EQ(FindClosestNames("Add Value", kNodes), Names{"Value Add"});
  EXPECT_EQ(FindClosestNames("edges component", kNodes), Names{"Component Edges"});
  EXPECT_EQ(FindClosestNames("ImageAddValueNode", kNodes), Names{"ImageValueAddNode"});
}

TEST(ClosestName, FindsWordsThatAreLeftOut) {
  EXPECT_EQ(FindClosestNames("add", kNodes), Names{"Value Add"});
  EXPECT_EQ(FindClosestNames("Clmap", kNodes), Names{"Value Clamp"});
}

TEST(ClosestName, FindsBeginnings) {
  EXPECT_EQ(FindClosestNames("mult", kNodes), Names{"Value Multiply"});
  EXPECT_EQ(FindClosestNames("thresh", {"seamless", "threshold"}), Names{"threshold"});
  EXPECT_EQ(FindClosestNames("--out", {"--quiet", "--output", "--output-dir"}), (Names{"--output", "--output-dir"}));
}

TEST(ClosestName, FindsAbbreviationsAndLongerForms) {
  EXPECT_EQ(FindClosestNames("chk", {"apply", "check"}), Names{"check"});
  EXPECT_EQ(FindClosestNames("clr", {"low", "color"}), Names{"color"});
  EXPECT_EQ(FindClosestNames("addition", kNodes), Names{"Value Add"});
}

TEST(ClosestName, TellsAllThatAreAsClose) {
  EXPECT_EQ(FindClosestNames("image_c", {"image_a", "image_b", "mask"}), (Names{"image_a", "image_b"}));
  EXPECT_EQ(FindClosestNames("image_c", {"image_a", "image_b", "image_d"}, 2), (Names{"image_a", "image_b"}));
  EXPECT_EQ(FindClosestNames("low", {"low", "low"}), Names{"low"});
}

TEST(ClosestName, SaysNothingOfWordsThatMeanNothing) {
  EXPECT_EQ(FindClosestNames("", kAttributes), Names{});
  EXPECT_EQ(FindClosestNames("z", kAttributes), Names{});
  EXPECT_EQ(FindClosestNames("-", kAttributes), Names{});
  EXPECT_EQ(FindClosestNames("constant", {}), Names{});
}

TEST(ClosestName, TakesNoTimeForLongWords) {
  // Comparing them letter by letter would take a million million steps.
  const std::string longest(1'000'000, 'a');
  EXPECT_EQ(FindClosestNames(longest, {longest + "b", "constant"}), Names{});
  EXPECT_EQ(FindClosestNames("constant", {longest, "constant"}), Names{"constant"});
}

TEST(ClosestName, MakesThePartOfAMessage) {
  EXPECT_EQ(SuggestClosestNames("clmap", kAttributes), "; the closest is \"clamp\"");
  EXPECT_EQ(SuggestClosestNames("image_c", {"image_a", "image_b"}), "; the closest are \"image_a\" and \"image_b\"");
  EXPECT_EQ(SuggestClosestNames("image_c", {"image_a", "image_b", "image_d"}),
            "; the closest are \"image_a\", \"image_b\" and \"image_d\"");
  EXPECT_EQ(SuggestClosestNames("xyzzy", kAttributes), "");
}

}  // namespace
