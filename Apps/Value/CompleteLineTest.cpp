// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/CompleteLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Apps/Value/DeclaredOptions.h"

namespace {

/// A program with every form of option that the command line has.
class CompleteLine : public testing::Test {
 protected:
  CompleteLine() {
    app_.add_option("--plugin", texts_)->type_name("FILE")->allow_extra_args(false);
    apply_ = app_.add_subcommand("apply", "Applies");
    apply_->add_option("NODE", texts_)->expected(0, 3);
    apply_->add_option("-i,--input", texts_)->type_name("FILE")->expected(1, -1);
    apply_->add_option("--set", texts_)->type_name("NAME=VALUE")->allow_extra_args(false);
    apply_->add_option("--type", text_)->type_name("TYPE")->check(CLI::IsMember({"float", "half"}));
    apply_->add_option("-n", number_)->type_name("N")->check(CLI::Range(1, 9));
    apply_->add_flag("--strip", flag_);
    apply_->add_option("--child", text_)->group("");
    app_.add_subcommand("secret", "Hidden")->group("");
  }

  TypedLine Read(const std::vector<std::string>& words) const { return ReadTypedLine(app_, words); }

  static std::string NameOf(const CLI::Option* option) { return option == nullptr ? "" : option->get_single_name(); }

  /// The options before the last word, as "name=value" with blanks between them.
  static std::string OptionsOf(const TypedLine& line) {
    std::string text;
    for (const auto& [option, value] : line.options) text += option->get_single_name() + "=" + value + " ";
    return text;
  }

  CLI::App app_{"Program"};
  CLI::App* apply_ = nullptr;
  std::vector<std::string> texts_;
  std::string text_;
  int number_ = 0;
  bool flag_ = false;
};

TEST_F(CompleteLine, StartsWithTheProgram) {
  for (const TypedLine& line : {Read({}), Read({""}), Read({"app"})}) {
    EXPECT_EQ(line.command, &app_);
    EXPECT_EQ(line.option, nullptr);
    EXPECT_TRUE(line.takes_option);
  }
  EXPECT_EQ(Read({"app"}).word, "app");
}

TEST_F(CompleteLine, FindsTheCommandBehindOptionsOfTheProgram) {
  const TypedLine line = Read({"--plugin", "apply", "apply", ""});
  EXPECT_EQ(line.command, apply_);
  EXPECT_EQ(OptionsOf(line), "plugin=apply ");
  EXPECT_EQ(NameOf(line.positional), "NODE");
}

TEST_F(CompleteLine, TakesOneValueWhereAnOptionTakesOne) {
  EXPECT_EQ(NameOf(Read({"apply", "--set", ""}).option), "set");
  const TypedLine line = Read({"apply", "--set", "a=1", ""});
  EXPECT_EQ(line.option, nullptr);
  EXPECT_EQ(OptionsOf(line), "set=a=1 ");
}

TEST_F(CompleteLine, TakesFurtherValuesWhereAnOptionTakesSeveral) {
  const TypedLine first = Read({"apply", "-i", ""});
  EXPECT_EQ(NameOf(first.option), "input");
  EXPECT_FALSE(first.takes_option);
  const TypedLine second = Read({"apply", "-i", "a.exr", "b.exr", ""});
  EXPECT_EQ(NameOf(second.option), "input");
  EXPECT_TRUE(second.takes_option);
  EXPECT_EQ(OptionsOf(second), "input=a.exr input=b.exr ");
  EXPECT_EQ(Read({"apply", "-i", "a.exr", "--strip", ""}).option, nullptr);
}

TEST_F(CompleteLine, SplitsAValueInTheWordOfItsOption) {
  const TypedLine is_long = Read({"apply", "--type=fl"});
  EXPECT_EQ(NameOf(is_long.option), "type");
  EXPECT_EQ(is_long.prefix, "--type=");
  EXPECT_EQ(is_long.word, "fl");
  const TypedLine is_short = Read({"apply", "-iter"});
  EXPECT_EQ(NameOf(is_short.option), "input");
  EXPECT_EQ(is_short.prefix, "-i");
  EXPECT_EQ(is_short.word, "ter");
  EXPECT_EQ(OptionsOf(Read({"apply", "--type=half", "-n3", ""})), "type=half n=3 ");
}

TEST_F(CompleteLine, TakesAWordWithADashAsTheFirstValueOfAnOption) {
  const TypedLine line = Read({"apply", "-i", "--strip", "--set", ""});
  EXPECT_EQ(OptionsOf(line), "input=--strip set= ");
  EXPECT_EQ(NameOf(line.option), "set");
}

TEST_F(CompleteLine, KnowsNoOptionsBehindTwoDashes) {
  const TypedLine line = Read({"apply", "--", "--type"});
  EXPECT_FALSE(line.takes_option);
  EXPECT_EQ(line.option, nullptr);
  EXPECT_EQ(line.word, "--type");
  EXPECT_EQ(Read({"apply", "--", "--strip", ""}).positionals, std::vector<std::string>{"--strip"});
}

TEST_F(CompleteLine, CountsPositionals) {
  EXPECT_EQ(NameOf(Read({"apply", "Value", "Add", ""}).positional), "NODE");
  const TypedLine full = Read({"apply", "a", "b", "c", ""});
  EXPECT_EQ(full.positional, nullptr);
  EXPECT_EQ(full.positionals.size(), 3U);
}

TEST_F(CompleteLine, LeavesUnknownOptionsOut) {
  const TypedLine line = Read({"apply", "--none", "-i", "a", "--wrong=3", ""});
  EXPECT_EQ(OptionsOf(line), "input=a ");
  EXPECT_EQ(line.option, nullptr);
}

TEST_F(CompleteLine, TellsWhichOptionsMayBeGivenAgain) {
  EXPECT_TRUE(MayRepeat(*apply_->get_option("--set")));
  EXPECT_TRUE(MayRepeat(*apply_->get_option("--input")));
  EXPECT_FALSE(MayRepeat(*apply_->get_option("--type")));
  EXPECT_FALSE(MayRepeat(*apply_->get_option("--strip")));
  EXPECT_TRUE(IsFlag(*apply_->get_option("--strip")));
  EXPECT_FALSE(IsFlag(*apply_->get_option("--type")));
}

TEST_F(CompleteLine, ReadsNamesAndWordsOfValues) {
  EXPECT_EQ(GetValueName(*apply_->get_option("--type")), "TYPE");
  EXPECT_EQ(GetWords(*apply_->get_option("--type")), (std::vector<std::string>{"float", "half"}));
  EXPECT_EQ(GetValueName(*apply_->get_option("-n")), "N");
  EXPECT_TRUE(GetWords(*apply_->get_option("-n")).empty());
  EXPECT_EQ(GetNames(*apply_->get_option("--input")), (std::vector<std::string>{"-i", "--input"}));
}

TEST_F(CompleteLine, LeavesOutWhatIsHidden) {
  for (const CLI::Option* option : GetShownOptions(*apply_)) EXPECT_NE(NameOf(option), "child");
  ASSERT_EQ(GetShownCommands(app_).size(), 1U);
  EXPECT_EQ(GetShownCommands(app_).front(), apply_);
  EXPECT_EQ(Read({"secret", ""}).command, &app_);
}

}  // namespace
