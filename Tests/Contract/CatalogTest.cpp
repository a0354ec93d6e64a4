// SPDX-License-Identifier: Apache-2.0
//
// Holds the table of node types, the folder of their sources, the icons and the list of icons against each other, so
// that a type that was added in one place only is found.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeRecord.h"
#include "Host/Util/RefCounter.h"
#include "Tests/Support/FirstTwenty.h"
#include "Tests/Support/LibraryNodes.h"
#include "Value/NodeTable.h"

namespace {

using std::filesystem::path;
using Names = std::set<std::string>;
using Testing::GetLibraryDescriptors;

const path kValueFolder = path(VALUE_SOURCE_DIR) / "Value";
const path kIconFolder = kValueFolder / "Resources" / "Icons";
const std::string kIconPrefix = ":/Value/Resources/Icons/";

Names GetTypeNames() {
  Names names;
  for (const auto& descriptor : GetLibraryDescriptors()) names.insert(descriptor->GetNodeFactory()->GetTypeName());
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

/// All sources of the nodes with this ending.
std::vector<path> FindSources(const std::string& ending) {
  std::vector<path> sources;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kValueFolder / "Nodes")) {
    if (entry.path().extension() == ending) sources.push_back(entry.path());
  }
  return sources;
}

/// The types whose record is defined in this text: X in "NodeRecord X::kRecord".
std::vector<std::string> FindRecords(const std::string& text) {
  const std::string start = "NodeRecord ";
  const std::string end = "::kRecord";
  std::vector<std::string> types;
  for (std::size_t at = text.find(start); at != std::string::npos; at = text.find(start, at)) {
    at += start.size();
    const auto is_in_name = [](char c) { return c == '_' || std::isalnum(static_cast<unsigned char>(c)) != 0; };
    const auto first = text.begin() + static_cast<std::ptrdiff_t>(at);
    const std::string type(first, std::find_if_not(first, text.end(), is_in_name));
    if (!type.empty() && text.compare(at + type.size(), end.size(), end) == 0) types.push_back(type);
  }
  return types;
}

/// A node has one folder, with its header, the text of its page and the graph of its pictures.
void FindFolderOfNode(const std::string& type, const path& folder) {
  EXPECT_TRUE(std::filesystem::exists(folder / (type + ".md"))) << type;
  EXPECT_TRUE(std::filesystem::exists(folder / (type + ".json"))) << type;
  std::string headers;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".h") headers += ReadText(entry.path());
  }
  EXPECT_NE(headers.find("class " + type + " "), std::string::npos) << type;
  EXPECT_NE(headers.find("NODEKIT_DESCRIPTOR(" + type + ")"), std::string::npos) << type;
}

/// Starts with a capital and ends with a full stop.
bool IsSentence(const std::string& text) {
  return !text.empty() && std::isupper(static_cast<unsigned char>(text.front())) != 0 && text.back() == '.';
}

/// The icon files that the descriptors name, without folder and ending.
Names GetIconNames() {
  Names names;
  for (const auto& descriptor : GetLibraryDescriptors()) {
    for (const std::string& icon : {descriptor->GetIconPath(), descriptor->GetSmallIconPath()}) {
      EXPECT_TRUE(icon.starts_with(kIconPrefix)) << icon;
      EXPECT_TRUE(names.insert(path(icon).stem().string()).second) << icon << " is used twice";
    }
  }
  return names;
}

TEST(Catalog, StartsWithTheFirstTwentyTypes) {
  const auto descriptors = GetLibraryDescriptors();
  ASSERT_GE(descriptors.size(), Testing::kFirstTwenty.size());
  for (std::size_t index = 0; index < Testing::kFirstTwenty.size(); ++index) {
    EXPECT_EQ(descriptors[index]->GetNodeType(), Testing::kFirstTwenty[index].type) << index;
  }
}

TEST(Catalog, HasNothingBeyondItsEnd) {
  const auto end = static_cast<std::uint64_t>(NodeTable::GetSize());
  for (const std::uint64_t index : {end, end + 1, std::uint64_t{1} << 32, ~std::uint64_t{0}}) {
    EXPECT_EQ(NodeTable::CreateDescriptor(index), nullptr);
  }
}

TEST(Catalog, GivesNoNumbersAndNoDisplayNameTwice) {
  std::set<NodeType> types;
  Names display_names;
  for (const auto& descriptor : GetLibraryDescriptors()) {
    EXPECT_TRUE(types.insert(descriptor->GetNodeType()).second) << descriptor->GetName();
    EXPECT_TRUE(display_names.insert(descriptor->GetName()).second) << descriptor->GetName();
  }
}

TEST(Catalog, HasANodeForEachRecordAndARecordForEachNode) {
  std::set<std::string> recorded;
  for (const path& source : FindSources(".cpp")) {
    for (const std::string& name : FindRecords(ReadText(source))) {
      EXPECT_TRUE(recorded.insert(name).second) << name;
      FindFolderOfNode(name, source.parent_path());
    }
  }
  EXPECT_EQ(recorded, GetTypeNames());
}

TEST(Catalog, NamesEachSourceInTheBuild) {
  const std::string build = ReadText(kValueFolder / "CMakeLists.txt");
  for (const path& source : FindSources(".cpp")) {
    if (source.filename().string().ends_with("Test.cpp")) continue;
    const std::string name = std::filesystem::relative(source, kValueFolder).string();
    EXPECT_NE(build.find(name), std::string::npos) << name;
  }
}

TEST(Catalog, SaysOfEachTypeWhatItDoesAndHowToFindIt) {
  for (const auto& descriptor : GetLibraryDescriptors()) {
    const ScEng::RefPtr<Node> node(descriptor->GetNodeFactory()->CreateNode());
    const NodeRecord* record = node->GetRecord();
    ASSERT_NE(record, nullptr) << descriptor->GetName();
    EXPECT_EQ(record->type_name, descriptor->GetNodeFactory()->GetTypeName());
    EXPECT_STREQ(record->library->name, "Value");
    EXPECT_TRUE(IsSentence(record->sentence)) << record->sentence;
    EXPECT_FALSE(std::string(record->keywords).empty()) << record->type_name;
    EXPECT_FALSE(std::string(record->group).empty()) << record->type_name;
    EXPECT_NE(record->reach, nullptr) << record->type_name;
    for (const AttributeRow& row : record->attributes) {
      EXPECT_TRUE(IsSentence(row.text)) << record->type_name << "." << row.name << ": " << row.text;
    }
  }
}

TEST(Catalog, NamesTheSmallIconAfterTheLargeOne) {
  for (const auto& descriptor : GetLibraryDescriptors()) {
    const std::string large = descriptor->GetIconPath();
    ASSERT_EQ(path(large).extension(), ".png");
    EXPECT_EQ(descriptor->GetSmallIconPath(), large.substr(0, large.size() - 4) + "12.png");
  }
}

TEST(Catalog, UsesEveryIconAndHasEveryIcon) {
  const Names icons = GetIconNames();
  EXPECT_EQ(icons.size(), 2 * GetTypeNames().size());
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
