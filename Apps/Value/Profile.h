// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "Apps/Value/ProfileSums.h"
#include "Apps/Value/ProfileTrace.h"
#include "Apps/Value/Reporter.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Util/Status.h"

/// The options of a command that say where its time goes: a table, and a trace for a viewer. Without them runs are as
/// they were. Runs may be made on several threads.
class Profile {
 public:
  /// The time from here to the first run counts as time before it.
  Profile() : begin_(ProfileSpan::Clock::now()) {}

  void Declare(CLI::App& app);

  /// Makes ready for runs of a command on `subject`, a document or a node. Where the trace could not be written at the
  /// end, or would take the place of something else, answers another code than `kDone` and the `problem`.
  ExitCode Begin(const std::string& command, const std::string& subject, std::string& problem);
  /// Whether a table goes to standard output, unless that takes the answer as JSON.
  [[nodiscard]] bool Prints() const { return prints_; }
  /// Runs a document as `GraphDocument::Run` does. `name` tells it from other runs of the command.
  ScEng::RunReport Run(ScEng::GraphDocument& document, const std::string& name,
                       const ScEng::GraphDocument::Progress& progress, const Engine::Options& options = {});
  /// Prints the table, or adds "profile" to the answer, and writes the trace. Answers `code`, or that of a file error
  /// where the trace cannot be written.
  ExitCode Finish(Reporter& reporter, nlohmann::ordered_json& answer, ExitCode code);

 private:
  [[nodiscard]] bool IsOn() const { return prints_ || trace_file_; }
  void Add(const RunRecord& record);
  [[nodiscard]] ScEng::Status WriteTrace(Reporter& reporter) const;

  ProfileSpan::Clock::time_point begin_;
  bool prints_ = false;
  std::optional<std::string> trace_file_;

  std::mutex mutex_;
  ProfileSums sums_;
  std::optional<ProfileTrace> trace_;
  std::optional<ProfileSpan::Clock::time_point> first_run_;
  /// The row of each thread in the trace.
  std::map<std::thread::id, unsigned> rows_;
};
