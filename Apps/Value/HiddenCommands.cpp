// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/HiddenCommands.h"

#include <string>
#include <string_view>
#include <vector>

#include "Apps/Value/Complete.h"
#include "Apps/Value/Manual.h"

std::optional<ExitCode> RunHiddenCommand(const CLI::App& app, int argc, char** argv, Reporter& reporter) {
  if (argc < 2) return std::nullopt;
  const std::string_view command = argv[1];
  const std::vector<std::string> arguments(argv + 2, argv + argc);
  if (command == "complete") return Complete(app, arguments, reporter);
  if (command == "manual") return WriteManual(app, arguments, reporter);
  return std::nullopt;
}
