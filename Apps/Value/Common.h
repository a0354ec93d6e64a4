// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Apps/Value/PluginSearch.h"
#include "Apps/Value/Reporter.h"
#include "Host/Documents/GraphDocument.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Tools/PlugValue.h"

class Profile;
class StandardOutput;

/// The options that every command takes.
struct CommonOptions {
  PluginOptions plugins;
  std::optional<unsigned> threads;
  std::optional<int> max_size;
  bool decodes_in_process = false;
  std::string device;
  bool any_device = false;
  bool quiet = false;
  bool json = false;

  void Declare(CLI::App& app);
  /// Hands them to the host and to the reporter; an error when there is no such device.
  ScEng::Status Apply(Reporter& reporter) const;
};

/// A command of the program: declares its options, then runs.
class Command {
 public:
  Command(const CommonOptions& common, Reporter& reporter) : common_(common), reporter_(reporter) {}
  virtual ~Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;

  virtual CLI::App* Declare(CLI::App& app) = 0;
  /// Runs the command. An exception, of a node library for example, is reported as an unexpected error. The libraries
  /// that the command has loaded stay as long as it does, since an exception may be of a type of theirs.
  ExitCode Execute();

 protected:
  virtual ExitCode Run() = 0;
  /// The host's own node types and those of the node libraries; null after an error was reported.
  std::shared_ptr<const ScEng::NodeCatalog> LoadCatalog();
  /// The same with a search of the caller's, and with the error in `status` instead of a report.
  std::shared_ptr<const ScEng::NodeCatalog> LoadCatalog(PluginSearch& search, ScEng::Status& status);
  /// Reports an error, ends the answer with it and passes the code on.
  ExitCode Fail(ExitCode code, const std::string& text,
                nlohmann::ordered_json answer = nlohmann::ordered_json::object());
  /// The node type that was written by its class, name or numbers; null after wrong usage was reported, which a missing
  /// name is as well.
  const NodeInterface* FindNode(const ScEng::NodeCatalog& catalog, const std::string& name);
  /// What an evaluation has to say; the exit code that follows from it.
  ExitCode ReportRun(const ScEng::RunReport& report);
  /// Evaluates a document and reports what there is to say, which `answer` is completed with; the exit code that
  /// follows from it. A signal stops it. `name` is what the profile calls it.
  ExitCode RunToEnd(ScEng::GraphDocument& document, const std::string& name, nlohmann::ordered_json answer,
                    Profile& profile, const StandardOutput& standard_output);

  const CommonOptions& common_;
  Reporter& reporter_;

 private:
  std::vector<std::shared_ptr<const ScEng::NodeCatalog>> catalogs_;
};

/// Adds what stands in the way of a run although the document could be read, each error with the document's name.
void CheckComplete(const ScEng::GraphDocument& document, const std::string& file, ScEng::Findings& findings);

/// Adds notes on what a document sets to no purpose.
void Advise(const ScEng::GraphDocument& document, std::vector<std::string>& notes);

/// What NODE and the like on a command line may be.
constexpr const char* kNodeWords = "Class name, display name or the three numbers of a node";

/// An option of one value that may be given again; `values` are all of them.
CLI::Option* AddRepeatable(CLI::App& app, const std::string& name, std::vector<std::string>& values,
                           const std::string& type_name, const std::string& help);

/// The file of the running program; empty where the system does not tell.
std::filesystem::path GetProgramFile();

/// Text in a column of at least `width` characters, with two spaces behind longer text.
std::string Pad(std::string text, std::size_t width);

/// The words of a name that was written without quotes, in one.
std::string JoinWords(const std::vector<std::string>& words);

/// "left=right", split at the first "="; nothing where it has no "=" or the left side is empty.
std::optional<std::pair<std::string, std::string>> SplitAssignment(const std::string& text);

/// The exit code that follows from how a run failed.
ExitCode GetExitCode(ScEng::RunFailure failure);
/// What is said on a terminal of a file that was written: its name, size, samples and how long it took.
std::string DescribeWritten(const ScEng::WrittenFile& written, double seconds);
/// "0.21 s"
std::string FormatSeconds(double seconds);

nlohmann::ordered_json ToJson(const ScEng::OutputReport& output);
/// A number for JSON, which knows no NaN and no infinities: those become null.
nlohmann::ordered_json ToJson(double number);
/// What an attribute holds, in the form that a document takes.
nlohmann::ordered_json ToJson(const PlugValue& value);
/// The shortest text that reads back as the same float.
std::string FormatFloat(float number);

std::unique_ptr<Command> MakeNodesCommand(const CommonOptions& common, Reporter& reporter);
std::unique_ptr<Command> MakeApplyCommand(const CommonOptions& common, Reporter& reporter);
std::unique_ptr<Command> MakeRunCommand(const CommonOptions& common, Reporter& reporter);
std::unique_ptr<Command> MakeCheckCommand(const CommonOptions& common, Reporter& reporter);
std::unique_ptr<Command> MakeStatsCommand(const CommonOptions& common, Reporter& reporter);
std::unique_ptr<Command> MakeDoctorCommand(const CommonOptions& common, Reporter& reporter);
std::unique_ptr<Command> MakeSelftestCommand(const CommonOptions& common, Reporter& reporter);
std::unique_ptr<Command> MakeValidateCommand(const CommonOptions& common, Reporter& reporter);
std::unique_ptr<Command> MakeEditCommand(const CommonOptions& common, Reporter& reporter);
std::unique_ptr<Command> MakePanelCommand(const CommonOptions& common, Reporter& reporter);
