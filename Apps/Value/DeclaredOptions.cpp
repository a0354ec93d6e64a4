// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/DeclaredOptions.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <sstream>
#include <string_view>

namespace {

bool IsShown(const CLI::Option& option) { return !option.get_group().empty(); }

/// What stands between two characters in the description of an option's checks: "float,half" of "TYPE:{float,half}".
std::string GetBetween(const CLI::Option& option, char first, char last) {
  const std::string type = option.get_type_name();
  const std::size_t start = type.find(first, std::min(type.find(':'), type.size()));
  const std::size_t end = type.find(last, std::min(start, type.size()));
  return end == std::string::npos ? "" : type.substr(start + 1, end - start - 1);
}

}  // namespace

std::vector<const CLI::App*> GetShownCommands(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

std::vector<const CLI::Option*> GetShownOptions(const CLI::App& command) {
  return command.get_options([](const CLI::Option* option) { return option->nonpositional() && IsShown(*option); });
}

std::vector<const CLI::Option*> GetPositionals(const CLI::App& command) {
  return command.get_options([](const CLI::Option* option) { return option->get_positional() && IsShown(*option); });
}

std::vector<std::string> GetNames(const CLI::Option& option) {
  std::vector<std::string> names;
  for (const std::string& name : option.get_snames()) names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

bool IsFlag(const CLI::Option& option) { return option.get_items_expected_max() == 0; }

bool MayRepeat(const CLI::Option& option) { return !IsFlag(option) && option.get_items_expected_max() > 1; }

std::string GetValueName(const CLI::Option& option) {
  const std::string name = option.get_type_name();
  return name.substr(0, name.find(':'));
}

std::vector<std::string> GetWords(const CLI::Option& option) {
  std::vector<std::string> words;
  std::istringstream list(GetBetween(option, '{', '}'));
  for (std::string word; std::getline(list, word, ',');) words.push_back(word);
  return words;
}

std::optional<std::pair<double, double>> GetBounds(const CLI::Option& option) {
  const std::string bounds = GetBetween(option, '[', ']');
  constexpr std::string_view kTo = " - ";
  const std::size_t to = bounds.find(kTo);
  if (to == std::string::npos) return std::nullopt;
  return std::pair(std::strtod(bounds.c_str(), nullptr), std::strtod(bounds.c_str() + to + kTo.size(), nullptr));
}
