// SPDX-License-Identifier: Apache-2.0
//
// Holds the table of node types, the folder of their sources, the icons and the list of icons against each other, so
// that a type that was added in one place only is found.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "Host/Tools/NodeInterface.h"
#include "Host/Util/RefCounter.h"
#include "Value/NodeTable.h"

namespace {

using std::filesystem::path;
using Names = std::set<std::string>;

const path kValueFolder = path(VALUE_SOURCE_DIR) / "Value";
const path kIconFolder = kValueFolder / "Resources" / "Icons";
const std::string kIconPrefix = ":/Value/Resources/Icons/";

std::vector<ScEng::RefPtr<NodeInterface>> GetDescriptors() {
  std::vector<ScEng::RefPtr<NodeInterface>> descriptors;
  for (std::int32_t index = 0; index < NodeTable::GetSize(); ++index) {
    descriptors.emplace_back(NodeTable::CreateDescriptor(static_cast<std::uint64_t>(index)));
  }
  return descriptors;
}

Names GetTypeNames() {
  Names names;
  for (const auto& descriptor : GetDescriptors()) names.insert(descriptor->GetNodeFactory()->GetTypeName());
  return names;
}

std::string ReadText(const path& file) {
  std::ifstream stream(file);
  EXPECT_TRUE(stream) << file;
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

/// The stems of the files in a folder whose names begin and end like this.
Names FindFiles(const path& folder, const std::string& beginning, const std::string& ending) {
  Names stems;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with(beginning) && name.ends_with(ending)) stems.insert(entry.path().stem().string());
  }
  return stems;
}

/// The icon files that the descriptors name, without folder and ending.
Names GetIconNames() {
  Names names;
  for (const auto& descriptor : GetDescriptors()) {
    for (const std::string& icon : {descriptor->GetIconPath(), descriptor->GetSmallIconPath()}) {
      EXPECT_TRUE(icon.starts_with(kIconPrefix)) << icon;
      EXPECT_TRUE(names.insert(path(icon).stem().string()).second) << icon << " is used twice";
    }
  }
  return names;
}

TEST(Catalog, HasTwentyTypes) {
  EXPECT_EQ(NodeTable::GetSize(), 20);
  EXPECT_EQ(GetTypeNames().size(), 20U);
}

TEST(Catalog, HasNothingBeyondItsEnd) {
  for (const std::uint64_t index : {std::uint64_t{20}, std::uint64_t{21}, std::uint64_t{1} << 32, ~std::uint64_t{0}}) {
    EXPECT_EQ(NodeTable::CreateDescriptor(index), nullptr);
  }
}

TEST(Catalog, GivesNoNumbersAndNoDisplayNameTwice) {
  std::set<NodeType> types;
  Names display_names;
  for (const auto& descriptor : GetDescriptors()) {
    EXPECT_TRUE(types.insert(descriptor->GetNodeType()).second) << descriptor->GetName();
    EXPECT_TRUE(display_names.insert(descriptor->GetName()).second) << descriptor->GetName();
  }
}

TEST(Catalog, HasASourcePairForEachTypeAndATypeForEachPair) {
  const Names types = GetTypeNames();
  EXPECT_EQ(FindFiles(kValueFolder / "Nodes", "Image", "Node.h"), types);
  EXPECT_EQ(FindFiles(kValueFolder / "Nodes", "Image", "Node.cpp"), types);
}

TEST(Catalog, NamesEachSourceInTheBuild) {
  const std::string build = ReadText(kValueFolder / "CMakeLists.txt");
  for (const std::string& type : GetTypeNames()) {
    EXPECT_NE(build.find("Nodes/" + type + ".cpp"), std::string::npos) << type;
  }
}

TEST(Catalog, NamesDescriptorAndFactoryAfterTheNodeClass) {
  for (const std::string& type : GetTypeNames()) {
    const std::string header = ReadText(kValueFolder / "Nodes" / (type + ".h"));
    for (const std::string& name : {type, type + "Interface", type + "Factory"}) {
      EXPECT_NE(header.find("class " + name + " "), std::string::npos) << name;
    }
  }
}

TEST(Catalog, NamesTheSmallIconAfterTheLargeOne) {
  for (const auto& descriptor : GetDescriptors()) {
    const std::string large = descriptor->GetIconPath();
    ASSERT_EQ(path(large).extension(), ".png");
    EXPECT_EQ(descriptor->GetSmallIconPath(), large.substr(0, large.size() - 4) + "12.png");
  }
}

TEST(Catalog, UsesEveryIconAndHasEveryIcon) {
  const Names icons = GetIconNames();
  EXPECT_EQ(icons.size(), 40U);
  EXPECT_EQ(FindFiles(kIconFolder, "", ".png"), icons);
}

TEST(Catalog, HasAVectorSourceForEachIcon) {
  EXPECT_EQ(FindFiles(kIconFolder / "Sources", "", ".svg"), GetIconNames());
}

TEST(Catalog, ListsEachIconOnceForTheResourceCompiler) {
  const std::string list = ReadText(kIconFolder / "Icons.qrc");
  EXPECT_NE(list.find("prefix=\"/Value/Resources/Icons\""), std::string::npos);
  const std::string opening = "<file>";
  Names listed;
  for (std::size_t at = list.find(opening); at != std::string::npos; at = list.find(opening, at + 1)) {
    const std::size_t from = at + opening.size();
    const path file = list.substr(from, list.find("</file>", from) - from);
    EXPECT_EQ(file.extension(), ".png") << file;
    EXPECT_TRUE(listed.insert(file.stem().string()).second) << file << " is listed twice";
  }
  EXPECT_EQ(listed, GetIconNames());
}

}  // namespace
