// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

/// A command line that is still being typed, taken apart as the program's parser would take it.
struct TypedLine {
  /// The command that was typed; the program itself as long as there is none.
  const CLI::App* command = nullptr;
  /// The options before the word that is being typed, each with its value; flags with an empty one.
  std::vector<std::pair<const CLI::Option*, std::string>> options;
  std::vector<std::string> positionals;

  /// What is being typed, without `prefix`.
  std::string word;
  /// What stands before a value in the same word, "--type=" or "-o" for example.
  std::string prefix;
  /// The option that takes the word as its value; null for a positional, a command or the name of an option.
  const CLI::Option* option = nullptr;
  /// The positional that is being typed where no option is; null where the command takes no more of them.
  const CLI::Option* positional = nullptr;
  /// Whether an option may start here.
  bool takes_option = true;

  [[nodiscard]] bool IsGiven(const CLI::Option* given) const;
};

/// Takes the words behind the program's name apart. The last one is being typed and may be empty.
TypedLine ReadTypedLine(const CLI::App& app, const std::vector<std::string>& words);
