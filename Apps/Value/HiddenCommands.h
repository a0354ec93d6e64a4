// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <optional>

#include "Apps/Value/Reporter.h"

/// Runs the commands that scripts and builds use and no help shows: "complete", which the completion scripts of the
/// shells ask, and "manual", which writes the pages of the manual. Nothing for any other line. They look at `app` as it
/// is declared and not at what was parsed, since a line that is being typed need not be a valid one.
std::optional<ExitCode> RunHiddenCommand(const CLI::App& app, int argc, char** argv, Reporter& reporter);
