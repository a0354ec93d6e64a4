// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/UsageErrors.h"

#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

/// A program with options that no real command has: what is told comes from the declarations alone.
class UsageErrorsTest : public testing::Test {
 protected:
  UsageErrorsTest() {
    app_.name("value");
    app_.add_flag("--json", flag_);
    app_.require_subcommand(0, 1);
    CLI::App* grind = app_.add_subcommand("grind", "Mills grain");
    grind->add_option("GRAIN", grain_)->required();
    grind->add_option("--coarseness", coarseness_)->type_name("N")->check(CLI::Range(1, 9));
    grind->add_option("--sieve", sieve_)->type_name("SIEVE")->check(CLI::IsMember({"fine", "wide"}));
    grind->add_option("--rate", rates_)->type_name("WHEEL=SPEED")->allow_extra_args(false);
    grind->add_flag("--slow", flag_);
    app_.add_subcommand("internal")->group("")->add_option("ANYTHING", rates_);
    CLI::App* bake = app_.add_subcommand("bake", "Makes bread");
    bake->add_option("--oven", sieve_, "The oven to use")->type_name("OVEN")->required();
  }

  /// What is wrong; empty where nothing is.
  [[nodiscard]] std::string Find(const Words& words) const { return FindUsageError(app_, words).value_or(""); }

  CLI::App app_;
  bool flag_ = false;
  std::string grain_;
  int coarseness_ = 1;
  std::string sieve_;
  std::vector<std::string> rates_;
};

/// What a node with the attribute "coarse" and a document with the wheel "big" would say.
class Millstone : public LineAdvice {
 public:
  std::vector<Setting> FindSettings(const Argument& option, std::span<const Argument> following) override {
    if (option.name != "--coarse" && option.name != "--oven") return {};
    const std::string value = following.empty() ? "true" : following.front().text;
    return {{option.name.substr(2) + "=" + value, option.name == "--coarse"}};
  }
  std::vector<std::string> FindLeftSides(const CLI::Option&, const std::string&) override { return {"big", "small"}; }
};

TEST_F(UsageErrorsTest, OffersWhatTheNodeOrTheDocumentHas) {
  Millstone advice;
  const auto find = [&](const Words& words) { return FindUsageError(app_, words, &advice).value_or(""); };
  EXPECT_EQ(find({"grind", "rye", "--coarse"}),
            "\"value grind\" has no option \"--coarse\"; an attribute is set with --set coarse=true");
  EXPECT_EQ(find({"grind", "rye", "--coarse", "very much"}),
            "\"value grind\" has no option \"--coarse\"; an attribute is set with --set 'coarse=very much'");
  // A value that the attribute does not take may as well belong to an option of another command.
  EXPECT_EQ(find({"grind", "rye", "--oven", "x"}), "--oven belongs to \"value bake\"");
  EXPECT_EQ(find({"grind", "rye", "--rate", "x.exr"}),
            "--rate takes WHEEL=SPEED; write --rate big=x.exr or --rate small=x.exr");
}

TEST_F(UsageErrorsTest, SaysNothingOfWhatIsRight) {
  for (const Words& words : {Words{},
                             {"--json", "grind", "rye"},
                             {"grind", "--coarseness", "3", "rye", "--slow"},
                             {"bake", "--help"},
                             {"internal", "--", "graph.json", "--zebra"},
                             {"grind", "rye", "--rate=a=1", "--rate", "b=2", "--sieve=wide"},
                             {"bake", "--oven", "old"},
                             {"--help"}}) {
    EXPECT_EQ(Find(words), "") << testing::PrintToString(words);
  }
}

TEST_F(UsageErrorsTest, OffersCommandsAndOptions) {
  EXPECT_EQ(Find({"grnid", "rye"}), "there is no command \"grnid\"; the closest is \"value grind\"");
  EXPECT_EQ(Find({"bread"}), "there is no command \"bread\"; the closest is \"value bake\"");
  EXPECT_EQ(Find({"grind", "rye", "--solw"}), "\"value grind\" has no option \"--solw\"; the closest is --slow");
  EXPECT_EQ(Find({"grind", "rye", "-slow"}), "-slow lacks a dash; write --slow");
  EXPECT_EQ(Find({"grind", "rye", "--oven", "x"}), "--oven belongs to \"value bake\"");
  EXPECT_EQ(Find({"--oven", "x", "bake"}), "--oven stands before the command; write it behind: value bake --oven OVEN");
}

TEST_F(UsageErrorsTest, ChecksValues) {
  EXPECT_EQ(Find({"grind", "rye", "--coarseness", "12"}), "--coarseness takes a whole number from 1 to 9, not \"12\"");
  EXPECT_EQ(Find({"grind", "rye", "--sieve", "fnie"}),
            "--sieve takes fine or wide, not \"fnie\"; the closest is \"fine\"");
  EXPECT_EQ(Find({"grind", "rye", "--sieve"}), "--sieve has no value; write --sieve SIEVE");
  EXPECT_EQ(Find({"grind", "rye", "--sieve", "--slow"}),
            "--sieve has no value, since the option --slow follows; write --sieve SIEVE");
  EXPECT_EQ(Find({"grind", "--sieve", "fine", "rye", "--sieve", "wide"}),
            "--sieve is given twice, with \"fine\" and with \"wide\"; give it once");
  EXPECT_EQ(Find({"grind", "rye", "--slow=very"}), "--slow takes no value; write --slow alone");
}

TEST_F(UsageErrorsTest, JoinsTornAssignments) {
  EXPECT_EQ(Find({"grind", "rye", "--rate", "wheel:3"}), "--rate takes WHEEL=SPEED; write --rate wheel=3");
  EXPECT_EQ(Find({"grind", "rye", "--rate", "wheel=", "3"}),
            "--rate takes WHEEL=SPEED in one word; write --rate wheel=3");
  EXPECT_EQ(Find({"grind", "rye", "--rate", "wheel"}), "--rate takes WHEEL=SPEED; \"wheel\" has no \"=\"");
}

TEST_F(UsageErrorsTest, TellsOfMissingAndOfExtraWords) {
  EXPECT_EQ(Find({"grind"}), "GRAIN is missing; write value grind GRAIN");
  EXPECT_EQ(Find({"bake"}), "--oven OVEN is missing: the oven to use");
  EXPECT_EQ(Find({"grind", "rye", "oats"}), "\"oats\" is one word too many; \"value grind\" takes one GRAIN");
  EXPECT_EQ(Find({"grind", "rye", "slow"}), "\"slow\" lacks its dashes; write --slow");
  EXPECT_EQ(Find({"grind", "rye", "--slow", "yes"}), "--slow takes no value; \"yes\" is one word too many");
  EXPECT_EQ(DescribeMissingCommand(app_), "a command is missing: grind or bake; \"value --help\" says what they do");
}

TEST_F(UsageErrorsTest, TranslatesHelp) {
  EXPECT_EQ(TranslateHelp(app_, {"help", "grind"}), (Words{"grind", "--help"}));
  EXPECT_EQ(TranslateHelp(app_, {"help"}), Words{"--help"});
  EXPECT_EQ(TranslateHelp(app_, {"grind", "help"}), (Words{"grind", "--help"}));
  EXPECT_EQ(TranslateHelp(app_, {"grind", "help", "rye"}), (Words{"grind", "help", "rye"}));
}

}  // namespace
