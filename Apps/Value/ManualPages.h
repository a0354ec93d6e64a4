// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "Apps/Value/ManualText.h"

/// A node type in the manual's list.
struct ManualNode {
  std::string name;
  std::string class_name;
  std::string sentence;
};

/// The page of the program itself, in roff.
std::string MakeProgramPage(const CLI::App& app, const std::string& date);

/// The page of a command. `nodes` are listed where the command is about one of them.
std::string MakeCommandPage(const CLI::App& app, const CLI::App& command, const std::string& date,
                            const std::vector<ManualNode>& nodes);
