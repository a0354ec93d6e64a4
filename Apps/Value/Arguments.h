// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// A piece of the command line as it was typed: an option with its values, or a word.
struct Argument {
  enum class Kind { kWord, kOption, kUnknownOption };

  Kind kind = Kind::kWord;
  /// What was typed: "--type=float", "-o", "terrain.exr".
  std::string text;
  /// Of an option, its name as it was typed: "--type", "-o".
  std::string name;
  const CLI::Option* option = nullptr;
  std::vector<std::string> values;
  /// Whether the first value stands in one word with the option.
  bool is_joined = false;
};

/// A command line in the order in which it was typed.
struct Arguments {
  /// The command; null where none is named.
  const CLI::App* command = nullptr;
  /// What stands before the command, all there is where no command is named.
  std::vector<Argument> before;
  /// What stands behind the command.
  std::vector<Argument> behind;
};

/// Reads a command line as the parser does, but goes on where the parser gives up.
Arguments ReadArguments(const CLI::App& app, const std::vector<std::string>& words);

/// The command of that name, hidden ones included; null where there is none.
const CLI::App* FindCommand(const CLI::App& app, const std::string& name);

/// The option of that name, dashes included; null where the command has none.
const CLI::Option* FindOption(const CLI::App& app, const std::string& name);

/// What an option or a word is called in the help: "FILE" of "-o FILE".
std::string GetTypeName(const CLI::Option& option);
