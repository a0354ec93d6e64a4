// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Reading/ChannelSelection.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "Host/Image/ColorMode.h"

namespace {

using ScEng::FileDescription;
using ScEng::FilePart;
using ScEng::kConstantOne;
using ScEng::kConstantZero;
using ScEng::ReadMode;
using ScEng::ReadOptions;

using Indices = std::vector<std::size_t>;
using Sources = std::array<int, 4>;

FilePart MakePart(const std::vector<std::string>& channels, const std::string& name = {}) {
  FilePart part;
  part.name = name;
  part.size_x = 4;
  part.size_y = 3;
  for (const std::string& channel : channels) {
    part.channels.emplace_back();
    part.channels.back().name = channel;
  }
  return part;
}

FileDescription MakeFile(const std::vector<std::string>& channels) {
  FileDescription file;
  file.parts.push_back(MakePart(channels));
  return file;
}

class Selected {
 public:
  Selected(const FileDescription& file, const ReadOptions& options) {
    auto found = ScEng::SelectChannels(file, options, problem);
    if (found) selection = *found;
  }
  std::string problem;
  ScEng::ChannelSelection selection;
};

bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST(ChannelSelection, ReadsOneNamelessChannelAsAValue) {
  const Selected selected(MakeFile({""}), {});
  EXPECT_EQ(selected.selection.channels, Indices{0});
  EXPECT_EQ(selected.selection.color_mode, static_cast<unsigned>(ColorMode::kValue));
  EXPECT_FALSE(selected.selection.has_opacity);
}

TEST(ChannelSelection, ReadsTwoNamelessChannelsAsGrayAndOpacity) {
  const Selected selected(MakeFile({"", ""}), {});
  EXPECT_EQ(selected.selection.color_mode, static_cast<unsigned>(ColorMode::kColor));
  EXPECT_EQ(selected.selection.sources, (Sources{0, 0, 0, 1}));
  EXPECT_TRUE(selected.selection.has_opacity);
}

TEST(ChannelSelection, ReadsThreeChannelsAsOpaqueColor) {
  const Selected selected(MakeFile({"", "", ""}), {});
  EXPECT_EQ(selected.selection.color_mode, static_cast<unsigned>(ColorMode::kColor));
  EXPECT_EQ(selected.selection.sources, (Sources{0, 1, 2, kConstantOne}));
  EXPECT_FALSE(selected.selection.has_opacity);
}

TEST(ChannelSelection, TakesColorAndOpacityOutOfSevenChannels) {
  // As an EXR has them: by the alphabet.
  const Selected selected(MakeFile({"A", "B", "G", "R", "Z", "depth.Z", "mask"}), {});
  EXPECT_EQ(selected.selection.channels, (Indices{3, 2, 1, 0}));
  EXPECT_EQ(selected.selection.sources, (Sources{0, 1, 2, 3}));
  EXPECT_TRUE(selected.selection.has_opacity);
  ASSERT_EQ(selected.selection.notes.size(), 1U);
  EXPECT_TRUE(Contains(selected.selection.notes[0], "3 other channels"));
}

TEST(ChannelSelection, AMissingColorIsZero) {
  const Selected selected(MakeFile({"B", "R"}), {});
  EXPECT_EQ(selected.selection.channels, (Indices{1, 0}));
  EXPECT_EQ(selected.selection.sources, (Sources{0, kConstantZero, 1, kConstantOne}));
  EXPECT_EQ(selected.selection.color_mode, static_cast<unsigned>(ColorMode::kColor));
}

TEST(ChannelSelection, RedAndOpacityAreColor) {
  const Selected selected(MakeFile({"A", "R"}), {});
  EXPECT_EQ(selected.selection.channels, (Indices{1, 0}));
  EXPECT_EQ(selected.selection.sources, (Sources{0, kConstantZero, kConstantZero, 1}));
  EXPECT_TRUE(selected.selection.has_opacity);
}

TEST(ChannelSelection, ChoosesVectorsThenLuminanceThenDepthThenTheOnlyOne) {
  EXPECT_EQ(Selected(MakeFile({"X", "Y", "Z"}), {}).selection.color_mode, static_cast<unsigned>(ColorMode::kSigned));
  EXPECT_EQ(Selected(MakeFile({"Y", "Z"}), {}).selection.channels, Indices{0});
  EXPECT_EQ(Selected(MakeFile({"A", "L"}), {}).selection.sources, (Sources{0, 0, 0, 1}));
  EXPECT_EQ(Selected(MakeFile({"Z", "id"}), {}).selection.channels, Indices{0});
  EXPECT_EQ(Selected(MakeFile({"crown"}), {}).selection.color_mode, static_cast<unsigned>(ColorMode::kValue));
}

TEST(ChannelSelection, ALayerOfOpacityAloneIsThatChannel) {
  ReadOptions options;
  options.layer = "matte";
  const Selected selected(MakeFile({"B", "G", "R", "matte.A"}), options);
  EXPECT_EQ(selected.selection.channels, Indices{3});
  EXPECT_EQ(selected.selection.color_mode, static_cast<unsigned>(ColorMode::kValue));
  EXPECT_FALSE(selected.selection.has_opacity);
}

TEST(ChannelSelection, RefusesWhatDoesNotTellAndListsTheChannels) {
  const Selected selected(MakeFile({"crown", "id"}), {});
  EXPECT_TRUE(Contains(selected.problem, "\"channels\""));
  EXPECT_TRUE(Contains(selected.problem, "\"crown\", \"id\""));
}

TEST(ChannelSelection, RefusesAFileOfLayersAloneAndNamesThem) {
  const Selected selected(MakeFile({"diffuse.B", "diffuse.G", "diffuse.R", "spec.R"}), {});
  EXPECT_TRUE(Contains(selected.problem, "\"diffuse\", \"spec\""));
}

TEST(ChannelSelection, ChoosesALayerWithDotsInItsName) {
  ReadOptions options;
  options.layer = "light.key";
  const Selected selected(MakeFile({"light.key.B", "light.key.G", "light.key.R", "light.Z"}), options);
  EXPECT_EQ(selected.selection.channels, (Indices{2, 1, 0}));
}

TEST(ChannelSelection, NamesTheLayersThereAreForOneThatIsNot) {
  ReadOptions options;
  options.layer = "difuse";
  const Selected selected(MakeFile({"R", "diffuse.R"}), options);
  EXPECT_TRUE(Contains(selected.problem, "no layer \"difuse\""));
  EXPECT_TRUE(Contains(selected.problem, "\"diffuse\""));
}

TEST(ChannelSelection, ReadsNamedChannelsInTheirOrder) {
  ReadOptions options;
  options.channels = "spec.G, Z";
  const Selected selected(MakeFile({"R", "Z", "spec.G"}), options);
  EXPECT_EQ(selected.selection.channels, (Indices{2, 1}));
  EXPECT_EQ(selected.selection.color_mode, static_cast<unsigned>(ColorMode::kPair));
}

TEST(ChannelSelection, NamedGrayAndOpacityAreColor) {
  ReadOptions options;
  options.channels = "a.Y,a.A";
  const Selected selected(MakeFile({"a.A", "a.Y"}), options);
  EXPECT_EQ(selected.selection.channels, (Indices{1, 0}));
  EXPECT_EQ(selected.selection.sources, (Sources{0, 0, 0, 1}));
  EXPECT_TRUE(selected.selection.has_opacity);
}

TEST(ChannelSelection, NumbersTheChannelsOfFormatsWithoutNames) {
  ReadOptions options;
  options.channels = "5";
  EXPECT_EQ(Selected(MakeFile({"", "", "", "", "", "", ""}), options).selection.channels, Indices{5});
  const Selected all(MakeFile({"", "", "", "", "", "", ""}), {});
  EXPECT_TRUE(Contains(all.problem, "7 channels"));
}

TEST(ChannelSelection, RefusesFiveChannelsAndOneThatIsNot) {
  ReadOptions options;
  options.channels = "a,b,c,d,e";
  EXPECT_TRUE(Contains(Selected(MakeFile({"a", "b", "c", "d", "e"}), options).problem, "one to four"));
  options.channels = "q";
  EXPECT_TRUE(Contains(Selected(MakeFile({"R", "Z"}), options).problem, "its channels are \"R\", \"Z\""));
}

TEST(ChannelSelection, FindsPartsByNameByIndexAndByLayer) {
  FileDescription file;
  file.parts = {MakePart({"B", "G", "R"}, "beauty"), MakePart({"Z"}, "depth"), MakePart({"id.Z"}, "objects")};
  ReadOptions options;
  options.part = "depth";
  EXPECT_EQ(Selected(file, options).selection.part, 1U);
  options.part = "2";
  options.layer = "id";
  EXPECT_EQ(Selected(file, options).selection.part, 2U);
  options = {};
  options.layer = "depth";
  EXPECT_EQ(Selected(file, options).selection.part, 1U);
  options.layer = "id";
  EXPECT_EQ(Selected(file, options).selection.part, 2U);
  options = {};
  options.part = "3";
  EXPECT_TRUE(Contains(Selected(file, options).problem, "\"beauty\", \"depth\", \"objects\""));
}

TEST(ChannelSelection, SaysWhyAPartCannotBeReadAndWhichOthersThereAre) {
  FileDescription file;
  file.parts = {MakePart({"R"}, "deep"), MakePart({"Z"}, "flat")};
  file.parts[0].problem = "it holds deep samples";
  const Selected selected(file, {});
  EXPECT_TRUE(Contains(selected.problem, "it holds deep samples"));
  EXPECT_TRUE(Contains(selected.problem, "\"flat\""));
}

TEST(ChannelSelection, SignedTakesTheChannelsPlain) {
  ReadOptions options;
  options.mode = ReadMode::kSigned;
  EXPECT_EQ(Selected(MakeFile({""}), options).selection.sources,
            (Sources{kConstantZero, kConstantZero, 0, kConstantOne}));
  EXPECT_EQ(Selected(MakeFile({"", ""}), options).selection.sources, (Sources{0, 1, kConstantZero, kConstantOne}));
  EXPECT_EQ(Selected(MakeFile({"", "", ""}), options).selection.sources, (Sources{0, 1, 2, kConstantOne}));
}

TEST(ChannelSelection, ColorMakesGrayOfOneChannelAndTwoColorsOfAPair) {
  ReadOptions options;
  options.mode = ReadMode::kColor;
  EXPECT_EQ(Selected(MakeFile({"Z"}), options).selection.sources, (Sources{0, 0, 0, kConstantOne}));
  options.channels = "u,v";
  EXPECT_EQ(Selected(MakeFile({"u", "v"}), options).selection.sources, (Sources{0, 1, kConstantZero, kConstantOne}));
}

TEST(ChannelSelection, TheStoredModeOfALayerIsItsOwn) {
  FileDescription file = MakeFile({"B", "G", "R", "n.B", "n.G", "n.R"});
  ScEng::StoredHeader color;
  color.mode = 0;
  ScEng::StoredHeader normal;
  normal.mode = 1;
  file.parts[0].stored_headers = {{"", color}, {"n", normal}};
  EXPECT_EQ(Selected(file, {}).selection.color_mode, static_cast<unsigned>(ColorMode::kColor));
  ReadOptions options;
  options.layer = "n";
  EXPECT_EQ(Selected(file, options).selection.color_mode, static_cast<unsigned>(ColorMode::kSigned));
}

TEST(ChannelSelection, AStoredModeThatDoesNotSuitTheChannelsGetsANote) {
  FileDescription file = MakeFile({"Y"});
  ScEng::StoredHeader stored;
  stored.mode = 1;
  file.parts[0].stored_headers = {{"", stored}};
  const Selected selected(file, {});
  EXPECT_EQ(selected.selection.color_mode, static_cast<unsigned>(ColorMode::kValue));
  ASSERT_EQ(selected.selection.notes.size(), 1U);
  EXPECT_TRUE(Contains(selected.selection.notes[0], "stored colour mode 1"));
}

TEST(ChannelSelection, TellsOfPartsThatAreLeftOut) {
  FileDescription file = MakeFile({"Y"});
  EXPECT_TRUE(Selected(file, {}).selection.notes.empty());
  file.parts.push_back(MakePart({"Y"}, "depth"));
  const std::vector<std::string> one = {"1 other part is left out; \"part\" chooses another"};
  EXPECT_EQ(Selected(file, {}).selection.notes, one);
  file.parts.push_back(MakePart({"Y"}, "masks"));
  const std::vector<std::string> two = {"2 other parts are left out; \"part\" chooses another"};
  EXPECT_EQ(Selected(file, {}).selection.notes, two);
  EXPECT_TRUE(Selected(file, {.part = "depth"}).selection.notes.empty());
}

TEST(ChannelSelection, ListsLayersAndChannelsWhereALayerIsNeeded) {
  const Selected selected(MakeFile({"a.Y", "b.Y"}), {});
  EXPECT_EQ(selected.problem,
            "all its channels belong to layers, name one: \"a\", \"b\"; its channels are \"a.Y\", \"b.Y\"");
}

TEST(ChannelSelection, SaysWhyAChannelIsLeftOut) {
  FileDescription file = MakeFile({"Y"});
  file.notes = {"channels that are stored at a lower resolution are left out: RY, BY"};
  EXPECT_EQ(Selected(file, {.channels = "RY"}).problem,
            "there is no channel \"RY\"; its only channel is \"Y\"; " + file.notes.front());
  EXPECT_EQ(Selected(file, {.channels = "Q"}).problem, "there is no channel \"Q\"; its only channel is \"Y\"");
}

}  // namespace
