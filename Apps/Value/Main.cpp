// SPDX-License-Identifier: Apache-2.0
//
// The command line: one program, one command each for the catalogue, for one node on files, for graph documents, for
// the figures of an image, for self-tests and for the validation of node libraries.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <exception>
#include <iostream>
#include <memory>
#include <vector>

#include "Apps/Value/Common.h"
#include "Apps/Value/Reporter.h"

namespace {

int Leave(ExitCode code) { return static_cast<int>(code); }

bool HasJsonFlag(int argc, char** argv) {
  return std::any_of(argv, argv + argc, [](const char* argument) { return std::strcmp(argument, "--json") == 0; });
}

int RunProgram(int argc, char** argv, Reporter& reporter) {
  CLI::App app{"Applies image nodes that read samples as values (height, intensity, mask strength) to files."};
  app.name("value");
  app.footer(
      "Example:\n"
      "  value apply \"Value Add\" -i terrain.exr --set constant=0.25 -o raised.exr\n"
      "\"value COMMAND --help\" explains a command, \"value nodes\" lists the nodes.\n\n"
      "Exit codes: 0 done, 1 a node reported an error or a check failed, 2 wrong usage, 3 the document is invalid,\n"
      "4 a file could not be read or written, 5 the node library could not be loaded.");
  app.set_version_flag("--version", std::string("value " VALUE_VERSION));

  CommonOptions common;
  common.Declare(app);
  std::vector<std::pair<CLI::App*, std::unique_ptr<Command>>> commands;
  for (const auto make : {MakeNodesCommand, MakeApplyCommand, MakeRunCommand, MakeCheckCommand, MakeStatsCommand,
                          MakeSelftestCommand, MakeDoctorCommand, MakeValidateCommand, MakePanelCommand}) {
    auto command = make(common, reporter);
    CLI::App* sub = command->Declare(app);
    common.Declare(*sub);
    commands.emplace_back(sub, std::move(command));
  }

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error, std::cout, std::cout);
    reporter.SetJson(HasJsonFlag(argc, argv));
    reporter.Error(std::string(error.what()) + " (see value --help)");
    reporter.Finish(nlohmann::ordered_json::object());
    return Leave(ExitCode::kUsage);
  }
  if (const ScEng::Status status = common.Apply(reporter); status.IsError()) {
    reporter.Error(status.GetMessage());
    reporter.Finish(nlohmann::ordered_json::object());
    return Leave(ExitCode::kUsage);
  }
  for (const auto& [sub, command] : commands) {
    if (sub->parsed()) return Leave(command->Run());
  }
  reporter.Error(
      "a command is missing: nodes, apply, run, check, stats, selftest, doctor, validate or panel (see value --help)");
  reporter.Finish(nlohmann::ordered_json::object());
  return Leave(ExitCode::kUsage);
}

}  // namespace

int main(int argc, char** argv) {
  Reporter reporter;
  try {
    return RunProgram(argc, argv, reporter);
  } catch (const std::exception& error) {
    reporter.SetJson(HasJsonFlag(argc, argv));
    reporter.Error(std::string("an unexpected error: ") + error.what());
    reporter.Finish(nlohmann::ordered_json::object());
    return Leave(ExitCode::kNodeError);
  }
}
