// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Arguments.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Apps/Value/DeclaredOptions.h"

namespace {

using Words = std::vector<std::string>;

class ArgumentsTest : public testing::Test {
 protected:
  ArgumentsTest() {
    app_.add_flag("--json", json_);
    CLI::App* run = app_.add_subcommand("run");
    run->add_option("GRAPH", file_)->required();
    run->add_option("-i,--input", inputs_)->type_name("FILE")->expected(1, -1);
    run->add_option("--type", type_)->type_name("TYPE")->check(CLI::IsMember({"float", "half"}));
    run->add_option("--jobs", jobs_)->type_name("N")->check(CLI::Range(1, 8));
    run->add_option("--name", type_)->type_name("{stem}{ending}");
    run->add_option("--trace", type_)->expected(0, 1);
    run->add_flag("--quiet", json_);
    app_.add_subcommand("hidden")->group("");
  }

  [[nodiscard]] Arguments Read(const Words& words) const { return ReadArguments(app_, words); }
  [[nodiscard]] const CLI::Option& Get(const std::string& name) const {
    return *FindOption(*FindCommand(app_, "run"), name);
  }

  CLI::App app_;
  bool json_ = false;
  std::string file_;
  std::vector<std::string> inputs_;
  std::string type_;
  int jobs_ = 1;
};

TEST_F(ArgumentsTest, SplitsAtTheCommand) {
  const Arguments arguments = Read({"--json", "run", "a.json", "--quiet"});
  ASSERT_NE(arguments.command, nullptr);
  EXPECT_EQ(arguments.command->get_name(), "run");
  ASSERT_EQ(arguments.before.size(), 1U);
  ASSERT_EQ(arguments.behind.size(), 2U);
  EXPECT_EQ(arguments.behind[0].kind, Argument::Kind::kWord);
  EXPECT_EQ(arguments.behind[1].kind, Argument::Kind::kOption);
  EXPECT_EQ(Read({"zebra"}).command, nullptr);
}

TEST_F(ArgumentsTest, GivesOptionsTheirValues) {
  const auto behind = Read({"run", "-i", "a", "b", "--type", "half", "c", "--type=float", "-id"}).behind;
  ASSERT_EQ(behind.size(), 5U);
  EXPECT_EQ(behind[0].values, (Words{"a", "b"}));
  EXPECT_EQ(behind[1].values, Words{"half"});
  EXPECT_EQ(behind[2].text, "c");
  EXPECT_EQ(behind[3].values, Words{"float"});
  EXPECT_TRUE(behind[3].is_joined);
  EXPECT_EQ(behind[4].name, "-i");
  EXPECT_EQ(behind[4].values, Words{"d"});
}

TEST_F(ArgumentsTest, LeavesOutAnOptionalValue) {
  const auto behind = Read({"run", "--trace", "--quiet", "--trace", "a"}).behind;
  ASSERT_EQ(behind.size(), 3U);
  EXPECT_EQ(behind[0].values, Words{});
  EXPECT_EQ(behind[2].values, Words{"a"});
}

TEST_F(ArgumentsTest, TakesNumbersAndEverythingBehindTheMarkForWords) {
  const auto behind = Read({"run", "-1", "-", "--", "--quiet"}).behind;
  ASSERT_EQ(behind.size(), 3U);
  for (const Argument& argument : behind) EXPECT_EQ(argument.kind, Argument::Kind::kWord);
  EXPECT_EQ(behind[2].text, "--quiet");
}

TEST_F(ArgumentsTest, KnowsWhatOptionsDeclare) {
  EXPECT_EQ(GetWords(Get("--type")), (Words{"float", "half"}));
  EXPECT_EQ(GetWords(Get("--jobs")), Words{});
  EXPECT_EQ(GetWords(Get("--name")), Words{});
  EXPECT_EQ(GetBounds(Get("--jobs")), std::pair(1.0, 8.0));
  EXPECT_FALSE(GetBounds(Get("--type")));
  EXPECT_EQ(GetTypeName(Get("--jobs")), "N");
  EXPECT_EQ(GetNames(Get("-i")), (Words{"-i", "--input"}));
  EXPECT_TRUE(IsFlag(Get("--quiet")));
  EXPECT_FALSE(IsFlag(Get("--trace")));
}

TEST_F(ArgumentsTest, HidesHiddenCommands) {
  ASSERT_EQ(GetShownCommands(app_).size(), 1U);
  EXPECT_NE(FindCommand(app_, "hidden"), nullptr);
}

}  // namespace
