// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/UsageErrors.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <span>
#include <system_error>

#include "Apps/Value/Arguments.h"
#include "Apps/Value/DeclaredOptions.h"
#include "Apps/Value/MisplacedWords.h"
#include "Apps/Value/OptionErrors.h"
#include "Apps/Value/UsageText.h"
#include "Host/Util/ClosestName.h"

namespace {

using Error = std::optional<std::string>;

std::string ListCommands(const CLI::App& app, const std::string& last) {
  std::vector<std::string> names;
  for (const CLI::App* command : GetShownCommands(app)) names.push_back(command->get_name());
  return JoinWithLast(names, last);
}

/// The commands that speak of a word where they say what they do.
std::vector<std::string> FindInDescriptions(const CLI::App& app, std::string word) {
  std::vector<std::string> names;
  std::transform(word.begin(), word.end(), word.begin(), [](unsigned char c) { return std::tolower(c); });
  if (word.size() < 4) return names;
  for (const CLI::App* command : GetShownCommands(app)) {
    std::string text = " " + command->get_description();
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    if (text.find(" " + word) != std::string::npos) names.push_back("value " + command->get_name());
  }
  return names;
}

std::string DescribeUnknownCommand(const CLI::App& app, const std::string& word) {
  if (const auto kind = FindFileKind(word)) return ShowWord(word) + " is " + DescribeFile(*kind, word);
  std::vector<std::string> names;
  for (const CLI::App* command : GetShownCommands(app)) names.push_back(command->get_name());
  for (const CLI::Option* option : GetShownOptions(app)) {
    for (const std::string& name : GetNames(*option)) names.push_back(name);
  }
  std::string text = "there is no command " + ShowWord(word);
  std::vector<std::string> closest = ScEng::FindClosestNames(word, names);
  for (std::string& name : closest) name = "value " + name;
  if (closest.empty()) closest = FindInDescriptions(app, word);
  if (!closest.empty()) return text + "; the closest is " + JoinWithLast(QuoteEach(closest), " or ");
  return text + "; there are " + ListCommands(app, " and ") + "; \"value nodes " + QuoteForShell(word) +
         "\" looks for nodes";
}

/// What stands before the command can only be options of every command.
Error CheckBefore(const CLI::App& app, const Arguments& arguments) {
  for (const Argument& argument : arguments.before) {
    if (argument.kind == Argument::Kind::kWord) return DescribeUnknownCommand(app, argument.text);
    const bool belongs_to_command = arguments.command != nullptr && argument.kind == Argument::Kind::kUnknownOption &&
                                    FindOption(*arguments.command, argument.name) != nullptr;
    if (belongs_to_command) {
      return argument.name + " stands before the command; write it behind: value " + arguments.command->get_name() +
             " " + ShowOption(*FindOption(*arguments.command, argument.name));
    }
    Error error = CheckOption(app, app, argument, {}, nullptr);
    if (error) return error;
  }
  return std::nullopt;
}

/// An option that takes one value, given again.
Error CheckTwice(const Argument& argument, std::map<const CLI::Option*, const Argument*>& given) {
  if (argument.option == nullptr || IsFlag(*argument.option)) return std::nullopt;
  const auto [first, is_new] = given.emplace(argument.option, &argument);
  const bool takes_one = argument.option->get_items_expected_max() == 1 &&
                         argument.option->get_multi_option_policy() == CLI::MultiOptionPolicy::Throw;
  if (is_new || !takes_one || argument.values.empty()) return std::nullopt;
  return argument.name + " is given twice, with " + ShowWord(first->second->values.front()) + " and with " +
         ShowWord(argument.values.front()) + "; give it once";
}

std::string DescribeMissing(const CLI::App& command, const CLI::Option& option,
                            const std::vector<Argument>& arguments) {
  const std::string start = "value " + command.get_name();
  const std::string unmarked = option.check_lname("output") ? FindUnmarkedOutput(arguments) : "";
  if (!unmarked.empty()) {
    return ShowOption(option) + " is missing; for the result to go to " + ShowWord(unmarked) + ", write " +
           GetNames(option).front() + " " + QuoteForShell(unmarked);
  }
  if (!option.get_positional()) {
    std::string about = option.get_description();
    if (!about.empty()) about[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(about[0])));
    return ShowOption(option) + " is missing" + (about.empty() ? "" : ": " + about);
  }
  return GetTypeName(option) + " is missing; write " + start + " " + GetTypeName(option);
}

Error CheckMissing(const CLI::App& command, const std::vector<Argument>& arguments) {
  const bool has_word = std::any_of(arguments.begin(), arguments.end(),
                                    [](const Argument& argument) { return argument.kind == Argument::Kind::kWord; });
  for (const CLI::Option* option : command.get_options()) {
    if (!option->get_required()) continue;
    const bool is_given = option->get_positional() ? has_word
                                                   : std::any_of(arguments.begin(), arguments.end(),
                                                                 [&](const Argument& a) { return a.option == option; });
    if (!is_given) return DescribeMissing(command, *option, arguments);
  }
  return std::nullopt;
}

bool AsksForHelp(const std::vector<Argument>& arguments) {
  return std::any_of(arguments.begin(), arguments.end(), [](const Argument& argument) {
    return argument.option != nullptr && argument.option->check_lname("help");
  });
}

}  // namespace

std::vector<std::string> TranslateHelp(const CLI::App& app, std::vector<std::string> words) {
  const std::string help = "help";
  if (!words.empty() && words[0] == help && FindCommand(app, help) == nullptr) {
    words.erase(words.begin());
    words.emplace_back("--" + help);
    return words;
  }
  std::error_code error;
  if (words.size() != 2 || words[1] != help || std::filesystem::exists(help, error)) return words;
  const CLI::App* command = FindCommand(app, words[0]);
  // "value nodes help" looks for the word.
  if (command != nullptr && !TakesAnyWords(*command)) words[1] = "--" + help;
  return words;
}

std::optional<std::string> FindUsageError(const CLI::App& app, const std::vector<std::string>& words,
                                          LineAdvice* advice) {
  const Arguments arguments = ReadArguments(app, words);
  Error error = CheckBefore(app, arguments);
  // What is hidden from people is called by programs.
  if (error || arguments.command == nullptr || arguments.command->get_group().empty()) return error;
  const CLI::App& command = *arguments.command;
  std::map<const CLI::Option*, const Argument*> given;
  std::size_t taken = 0;
  for (std::size_t i = 0; i < arguments.behind.size(); ++i) {
    const Argument& argument = arguments.behind[i];
    if (argument.kind == Argument::Kind::kWord) {
      error = CheckWord(command, arguments.behind, i, taken++);
    } else {
      error = CheckOption(app, command, argument, std::span(arguments.behind).subspan(i + 1), advice);
    }
    if (!error) error = CheckTwice(argument, given);
    if (error) return error;
  }
  if (AsksForHelp(arguments.before) || AsksForHelp(arguments.behind)) return std::nullopt;
  return CheckMissing(command, arguments.behind);
}

std::string DescribeMissingCommand(const CLI::App& app) {
  return "a command is missing: " + ListCommands(app, " or ") + "; \"value --help\" says what they do";
}
