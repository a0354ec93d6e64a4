// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// What the commands of the program declare, for messages, manual and completion. What the help does not show is left
// out.

/// The commands that the help shows.
std::vector<const CLI::App*> GetShownCommands(const CLI::App& app);
/// The options of a command that its help shows, without its words.
std::vector<const CLI::Option*> GetShownOptions(const CLI::App& command);
std::vector<const CLI::Option*> GetPositionals(const CLI::App& command);

/// The names of an option with their dashes, short ones first.
std::vector<std::string> GetNames(const CLI::Option& option);
/// Whether an option is a flag, which takes no value.
bool IsFlag(const CLI::Option& option);
/// Whether an option may be given again.
bool MayRepeat(const CLI::Option& option);
/// What a value is called in the help, "FILE" of "-o FILE" for example, without what its checks say.
std::string GetValueName(const CLI::Option& option);
/// The words of which a value must be one; none where anything may be given.
std::vector<std::string> GetWords(const CLI::Option& option);
/// The lowest and the highest number that an option takes; nothing where it takes no number or any.
std::optional<std::pair<double, double>> GetBounds(const CLI::Option& option);
