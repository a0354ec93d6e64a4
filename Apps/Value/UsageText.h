// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

/// A word of the command line in quotes, cut where it is long.
std::string ShowWord(const std::string& word);

/// A word as it is typed into a shell: in quotes where it needs them.
std::string QuoteForShell(const std::string& word);

/// A message without the name that it starts with, for where that has been told.
std::string RemoveName(const std::string& message, const std::string& name);

/// "-o FILE": an option as it is given, by its short name where it has one.
std::string ShowOption(const CLI::Option& option);

std::vector<std::string> QuoteEach(std::vector<std::string> words);

/// "one, two or three".
std::string JoinWithLast(const std::vector<std::string>& words, const std::string& last);
