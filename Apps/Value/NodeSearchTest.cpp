// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/NodeSearch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Host/Nodes/HostNodes.h"

namespace {

using Places = std::vector<std::size_t>;
using Words = std::vector<std::string>;

const std::vector<SearchTexts> kTexts{
    {"Relief ImageReliefNode", "bevel,emboss", "Turns a mask into a relief whose edges rise.",
     "soften Blurs the mask."},
    {"Component Edges ImageComponentEdgesNode", "outline,border", "Draws borders between regions.", "invert threshold"},
    {"Value Gradient ImageComputeGradientNode", "slope,edge", "Gives the slope along x.", "seamless"},
    {"Value Threshold ImageThresholdNode", "binary", "Makes a mask.", "color_mode How the colour is read."}};

TEST(NodeSearch, PutsNamesBeforeKeywordsBeforeSentencesBeforeAttributes) {
  EXPECT_EQ(Search(kTexts, {"edge"}), (Places{1, 2, 0}));
  EXPECT_EQ(Search(kTexts, {"mask"}), (Places{0, 3}));
  EXPECT_EQ(Search(kTexts, {"threshold"}), (Places{3, 1}));
}

TEST(NodeSearch, PutsEarlierKeywordsBeforeLaterOnes) {
  std::vector<SearchTexts> texts = kTexts;
  texts[0].keywords = "bevel,emboss,glow";
  texts[1].keywords = "outline,border,glow line";
  texts[2].keywords = "glow,slope";
  EXPECT_EQ(Search(texts, {"glow"}), (Places{2, 0, 1}));
  EXPECT_EQ(Search(texts, {"glo", "line"}), Places{1});
  // A whole word comes before the beginning of one, wherever it stands.
  texts[3].keywords = "a,b,c,d,glo";
  EXPECT_EQ(Search(texts, {"glo"}), (Places{3, 2, 0, 1}));
}

TEST(NodeSearch, HoldsAllWordsInAnyCase) {
  EXPECT_EQ(Search(kTexts, {"MASK", "Blurs"}), Places{0});
  EXPECT_EQ(Search(kTexts, {"mask binary"}), Places{3});
  EXPECT_EQ(Search(kTexts, {"mask", "slope"}), Places{});
}

TEST(NodeSearch, FindsBeginningsAndPlurals) {
  EXPECT_EQ(Search(kTexts, {"embo"}), Places{0});
  EXPECT_EQ(Search(kTexts, {"slopes"}), Places{2});
  EXPECT_EQ(Search(kTexts, {"gradient"}), Places{2});
}

TEST(NodeSearch, LooksWithinWordsOnlyWhereNothingElseIsFound) {
  // "order" is within "border" and "borders".
  EXPECT_EQ(Search(kTexts, {"order"}), Places{1});
  // "old" is within "threshold", which must not come with a word that starts so.
  std::vector<SearchTexts> texts = kTexts;
  texts[0].keywords += ",old";
  EXPECT_EQ(Search(texts, {"old"}), Places{0});
  EXPECT_EQ(Search(kTexts, {"embossing"}), Places{0});
}

TEST(NodeSearch, SeesOneWordInTwoSpellings) {
  EXPECT_EQ(Search(kTexts, {"colour"}), Places{3});
  EXPECT_EQ(Search(kTexts, {"color"}), Places{3});
}

TEST(NodeSearch, FindsNothingWithoutWords) {
  EXPECT_EQ(Search(kTexts, {}), Places{});
  EXPECT_EQ(Search(kTexts, {"", " ", "-"}), Places{});
  EXPECT_EQ(Search({}, {"edge"}), Places{});
  EXPECT_EQ(Search(kTexts, {"zebra"}), Places{});
}

TEST(NodeSearch, TakesTheTextsOfNodes) {
  const auto catalog = ScEng::CreateHostCatalog();
  const std::vector<SearchTexts> texts = MakeSearchTexts(*catalog);
  ASSERT_EQ(texts.size(), catalog->GetDescriptors().size());
  const Places found = Search(texts, {"checkerboard"});
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(catalog->GetDescriptors()[found[0]]->GetName(), "Image Checker");
  // A choice word and the sentence of an attribute.
  EXPECT_FALSE(Search(texts, {"uint16"}).empty());
  EXPECT_FALSE(Search(texts, {"octaves", "detail"}).empty());
}

TEST(NodeSearch, HintsSpeakOfTheirTopicAlone) {
  ASSERT_EQ(FindHints({"blurring"}).size(), 1U);
  EXPECT_NE(FindHints({"blurring"})[0].find("soften"), std::string::npos);
  ASSERT_EQ(FindHints({"Invert"}).size(), 1U);
  EXPECT_EQ(FindHints({"soft"}), Words{});
  EXPECT_EQ(FindHints({"zebra"}), Words{});
  EXPECT_EQ(FindHints({"crop"}), Words{"No node crops, resizes or turns an image."});
}

TEST(NodeSearch, SaysWhatNoNodeDoes) {
  EXPECT_EQ(DescribeMissing({"zebra"}), "");
  EXPECT_EQ(DescribeMissing({"Resize", "it"}), "no node crops, resizes or turns an image");
  EXPECT_NE(DescribeMissing({"histogram"}).find("value stats"), std::string::npos);
  EXPECT_EQ(DescribeMissing({"blur"}), "");
}

}  // namespace
