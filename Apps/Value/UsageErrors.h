// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Apps/Value/LineAdvice.h"

/// The words with which a person asks for help in a way that the parser does not know ("help run", "run help"), as it
/// knows them; all others as they are.
std::vector<std::string> TranslateHelp(const CLI::App& app, std::vector<std::string> words);

/// What is wrong with a command line, the first thing in the order in which it was typed, and what would be right; one
/// line. Nothing where no error is found. Everything about options comes from what the commands declare, and what the
/// node or the document of the line has to say from `advice`, where there is any.
std::optional<std::string> FindUsageError(const CLI::App& app, const std::vector<std::string>& words,
                                          LineAdvice* advice = nullptr);

/// "a command is missing" with the commands there are.
std::string DescribeMissingCommand(const CLI::App& app);
