// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Glob.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Tests/Support/SavingTesting.h"

namespace {

using Testing::TemporaryFolder;

class GlobTest : public ::testing::Test {
 protected:
  GlobTest() {
    for (const char* file : {"a.exr", "b.exr", "c.png", ".hidden.exr", "in/a.exr", "in/deep/a.exr", "in/deep/er/d.exr",
                             "in/.git/x.exr", "odd/[1].exr", "odd/1.exr", "odd/a*b.exr", "odd/acb.exr"}) {
      std::filesystem::create_directories((folder_ / file).parent_path());
      Testing::WriteText(folder_ / file, "x");
    }
    std::filesystem::create_directory_symlink(folder_ / "in", folder_ / "in/deep/loop");
  }

  /// Names below the folder, each with what {folder} is for it.
  std::vector<std::pair<std::string, std::string>> Find(const std::string& pattern) {
    std::vector<std::pair<std::string, std::string>> found;
    const std::filesystem::path root = folder_ / "";
    for (const GlobFile& file : FindFiles((root / pattern).string())) {
      found.emplace_back(file.file.lexically_relative(root).string(), file.folder.string());
    }
    return found;
  }
  std::vector<std::string> Names(const std::string& pattern) {
    std::vector<std::string> names;
    for (const auto& [name, folder] : Find(pattern)) names.push_back(name);
    return names;
  }

  TemporaryFolder folder_;
};

using Strings = std::vector<std::string>;

TEST_F(GlobTest, StarsAndQuestionMarksStayWithinAName) {
  EXPECT_EQ(Names("*.exr"), (Strings{"a.exr", "b.exr"}));
  EXPECT_EQ(Names("?.exr"), (Strings{"a.exr", "b.exr"}));
  EXPECT_EQ(Names("*/a.exr"), (Strings{"in/a.exr"}));
  EXPECT_EQ(Names("*"), (Strings{"a.exr", "b.exr", "c.png"}));
  EXPECT_EQ(Names("in"), Strings{});
  EXPECT_EQ(Names("none*"), Strings{});
}

TEST_F(GlobTest, ClassesMatchOneCharacter) {
  EXPECT_EQ(Names("[ac].*"), (Strings{"a.exr", "c.png"}));
  EXPECT_EQ(Names("[!a].exr"), (Strings{"b.exr"}));
  EXPECT_EQ(Names("odd/[1].exr"), (Strings{"odd/[1].exr"})) << "the file that has exactly that name";
  EXPECT_EQ(Names("odd/[12].exr"), (Strings{"odd/1.exr"}));
}

TEST_F(GlobTest, ABackslashTakesTheNextCharacterAsItIs) {
  EXPECT_EQ(Names("odd/a\\*b.*"), (Strings{"odd/a*b.exr"}));
  EXPECT_EQ(Names("odd/a*b.*"), (Strings{"odd/a*b.exr", "odd/acb.exr"}));
  EXPECT_EQ(Names("odd/\\[1\\].*"), (Strings{"odd/[1].exr"}));
}

TEST_F(GlobTest, TwoStarsGoThroughFoldersButNotThroughLinksAndHiddenOnes) {
  EXPECT_EQ(Names("**/a.exr"), (Strings{"a.exr", "in/a.exr", "in/deep/a.exr"}));
  EXPECT_EQ(Names("in/**/*.exr"), (Strings{"in/a.exr", "in/deep/a.exr", "in/deep/er/d.exr"}));
  EXPECT_EQ(Names("in/**"), (Strings{"in/a.exr", "in/deep/a.exr", "in/deep/er/d.exr"}));
  EXPECT_EQ(Names("**/**/d.exr"), (Strings{"in/deep/er/d.exr"}));
}

TEST_F(GlobTest, TellsTheFolderBelowTheFixedPart) {
  using Found = std::vector<std::pair<std::string, std::string>>;
  EXPECT_EQ(Find("in/**/a.exr"), (Found{{"in/a.exr", ""}, {"in/deep/a.exr", "deep"}}));
  EXPECT_EQ(Find("**/d.exr"), (Found{{"in/deep/er/d.exr", "in/deep/er"}}));
  EXPECT_EQ(Find("in/*/a.exr"), (Found{{"in/deep/a.exr", "deep"}}));
  EXPECT_EQ(Find("in/deep/*.exr"), (Found{{"in/deep/a.exr", "deep"}})) << "no folder of it has a wildcard";
  EXPECT_EQ(Find("in/deep/a.exr"), (Found{{"in/deep/a.exr", "deep"}}));
}

TEST_F(GlobTest, SortsByTheBytesOfTheNames) {
  Testing::WriteText(folder_ / "B.exr", "x");
  Testing::WriteText(folder_ / "\xc3\xa4.exr", "x");
  EXPECT_EQ(Names("*.exr"), (Strings{"B.exr", "a.exr", "b.exr", "\xc3\xa4.exr"}));
}

}  // namespace
