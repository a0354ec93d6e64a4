// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <span>
#include <string>

#include "Apps/Value/Arguments.h"
#include "Apps/Value/LineAdvice.h"

/// What is wrong with an option of a command, and what would be right; nothing where no error is found. `following` is
/// what was typed behind it, `advice` may be null. For what stands before the command, `command` is the program.
std::optional<std::string> CheckOption(const CLI::App& app, const CLI::App& command, const Argument& argument,
                                       std::span<const Argument> following, LineAdvice* advice);
