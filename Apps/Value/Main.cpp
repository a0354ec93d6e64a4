// SPDX-License-Identifier: Apache-2.0
//
// The command line: one program, one command each for the catalogue, for one node on files, for graph documents, for
// the figures of an image, for self-tests and for the validation of node libraries.

#include <fcntl.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstring>
#include <exception>
#include <memory>
#include <sstream>
#include <vector>

#include "Apps/Value/Common.h"
#include "Apps/Value/ExitGuard.h"
#include "Apps/Value/HelpFormatter.h"
#include "Apps/Value/HiddenCommands.h"
#include "Apps/Value/Interrupt.h"
#include "Apps/Value/LineSubject.h"
#include "Apps/Value/Reporter.h"
#include "Apps/Value/UsageErrors.h"
#include "Host/Files/FileSizeLimit.h"
#include "Host/Tools/Guard.h"

namespace {

/// Makes what would end the program by a signal, or mix up its files, an error of the operation that meets it.
void PrepareProcess() {
  // Writing to a pipe that nobody reads, and beyond the largest file that the process may write.
  std::signal(SIGPIPE, SIG_IGN);
  ScEng::CatchFileSizeSignal();
  Interrupt::Install();
  // The next file that is opened would take the place of a standard stream that is closed, and what the program prints
  // would go into it. Opened for reading, the stream still refuses what is written to it.
  for (int stream = 0; stream <= 2; ++stream) {
    if (fcntl(stream, F_GETFD) < 0) static_cast<void>(open("/dev/null", O_RDONLY));
  }
}

bool HasJsonFlag(int argc, char** argv) {
  return std::any_of(argv, argv + argc, [](const char* argument) { return std::strcmp(argument, "--json") == 0; });
}

ExitCode RunProgram(int argc, char** argv, Reporter& reporter) {
  CLI::App app{"Applies image nodes that read samples as values (height, intensity, mask strength) to files."};
  app.name("value");
  app.formatter(std::make_shared<HelpFormatter>());
  app.footer(
      "Example:\n"
      "  value apply \"Value Add\" -i terrain.exr --set constant=0.25 -o raised.exr\n"
      "\"value COMMAND --help\" explains a command, \"value nodes\" lists the nodes.\n\n"
      "Exit codes: 0 done, 1 a node reported an error or a check failed, 2 wrong usage, 3 the document is invalid,\n"
      "4 a file could not be read or written, 5 the node library could not be loaded.");
  // Behind a command, the name of another is a word like any.
  app.require_subcommand(0, 1);
  app.set_version_flag("--version", std::string("value " VALUE_VERSION));

  CommonOptions common;
  common.Declare(app);
  std::vector<std::pair<CLI::App*, std::unique_ptr<Command>>> commands;
  for (const auto make :
       {MakeNodesCommand, MakeApplyCommand, MakeRunCommand, MakeCheckCommand, MakeStatsCommand, MakeSelftestCommand,
        MakeDoctorCommand, MakeValidateCommand, MakePanelCommand, MakeEditCommand}) {
    auto command = make(common, reporter);
    CLI::App* sub = command->Declare(app);
    common.Declare(*sub);
    commands.emplace_back(sub, std::move(command));
  }

  if (const auto code = RunHiddenCommand(app, argc, argv, reporter)) return *code;

  const std::vector<std::string> words = TranslateHelp(app, {argv + 1, argv + std::max(argc, 1)});
  const auto refuse = [&](const std::string& text) {
    reporter.SetJson(HasJsonFlag(argc, argv));
    reporter.Error(text);
    reporter.Finish(nlohmann::ordered_json::object());
    return ExitCode::kUsage;
  };
  LineSubject subject(app, words);
  if (const auto error = FindUsageError(app, words, &subject)) return refuse(*error);
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) return refuse(error.what());
    std::ostringstream text;
    app.exit(error, text, text);
    reporter.PrintAlways(text.str());
    return ExitCode::kDone;
  }
  if (const ScEng::Status status = common.Apply(reporter); status.IsError()) {
    reporter.Error(status.GetMessage());
    reporter.Finish(nlohmann::ordered_json::object());
    return ExitCode::kUsage;
  }
  for (const auto& [sub, command] : commands) {
    if (sub->parsed()) return command->Execute();
  }
  return refuse(DescribeMissingCommand(app));
}

}  // namespace

int main(int argc, char** argv) {
  PrepareProcess();
  const ExitGuard guard(HasJsonFlag(argc, argv));
  Reporter reporter;
  ExitCode code = ExitCode::kNodeError;
  try {
    code = RunProgram(argc, argv, reporter);
  } catch (...) {
    reporter.SetJson(HasJsonFlag(argc, argv));
    reporter.Error("an unexpected error: " + ScEng::DescribeHandledException());
    reporter.Finish(nlohmann::ordered_json::object());
  }
  return static_cast<int>(reporter.Close(code));
}
