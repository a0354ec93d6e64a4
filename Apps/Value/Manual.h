// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "Apps/Value/Reporter.h"

/// Writes the pages of the manual, value.1 and one for each command, from what the program declares: `arguments`, those
/// behind "manual", are "--output-dir DIR". The build runs it; the pages of one version are always the same.
ExitCode WriteManual(const CLI::App& app, const std::vector<std::string>& arguments, Reporter& reporter);
