// SPDX-License-Identifier: Apache-2.0
#include <glob.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <set>
#include <system_error>

#include "Apps/Value/Common.h"
#include "Apps/Value/Jobs.h"
#include "Apps/Value/UsageText.h"
#include "Apps/Value/WriteFlags.h"
#include "Host/Files/ImageFormats.h"
#include "Host/Tools/Guard.h"

namespace {

using ScEng::GraphDocument;
using ScEng::Status;

/// The files that a pattern matches, in alphabetical order.
std::vector<std::filesystem::path> FindFiles(const std::string& pattern) {
  std::vector<std::filesystem::path> files;
  glob_t found{};
  if (glob(ScEng::MakePath(pattern).c_str(), 0, nullptr, &found) == 0) {
    for (std::size_t i = 0; i < found.gl_pathc; ++i) {
      std::error_code error;
      if (!std::filesystem::is_directory(found.gl_pathv[i], error)) files.emplace_back(found.gl_pathv[i]);
    }
  }
  globfree(&found);
  return files;
}

/// "<stem of the file>-<file name of the output>" in a folder.
std::filesystem::path NameInBatch(const std::filesystem::path& folder, const std::filesystem::path& input,
                                  const std::filesystem::path& output) {
  return folder / (input.stem().string() + "-" + output.filename().string());
}

class RunCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("run", "Evaluates a graph document and writes its outputs");
    sub->add_option("GRAPH", file_, "The document")->required();
    AddRepeatable(*sub, "--set", settings_, "NODE.ATTRIBUTE=VALUE",
                  "Sets an attribute; of two settings of one the last wins");
    AddRepeatable(*sub, "--input", inputs_, "NODE=FILE", "Sets the file of a reader");
    AddRepeatable(*sub, "--output", outputs_, "NODE.PLUG=FILE",
                  "Writes an output, in place of what the document says of this plug");
    sub->add_option("--each", each_, "Runs the document once per matching file, read by this reader")
        ->type_name("NODE=GLOB");
    sub->add_option("--output-dir", output_dir_, "The folder for the results of --each; created where it is missing")
        ->type_name("DIR");
    write_flags_.Declare(*sub);
    sub->add_option("--jobs", jobs_, "How many runs of --each go on at a time")
        ->type_name("N")
        ->check(CLI::Range(1, 1024));
    sub->footer(
        "Examples:\n"
        "  value run Examples/raise_terrain.json\n"
        "  value run graph.json --set raised.constant=0.5 --output raised.image=raised.png\n"
        "  value run graph.json --each height=\"tiles/*.exr\" --output-dir results --jobs 2");
    return sub;
  }

  ExitCode Run() override {
    catalog_ = LoadCatalog();
    if (!catalog_) return ExitCode::kPlugin;
    if (each_.empty() != output_dir_.empty()) {
      return Fail(ExitCode::kUsage, "--each and --output-dir go together: one names the files, the other the folder");
    }
    return each_.empty() ? RunOnce() : RunBatch();
  }

 private:
  /// Why a document is not ready to run.
  struct Refusal {
    ExitCode code = ExitCode::kDone;
    std::string text;
  };

  /// Loads the document and applies the options; its notes go to `notes`. `input` is the file of the batch, if any.
  Refusal Prepare(GraphDocument& document, std::vector<std::string>& notes,
                  const std::optional<std::filesystem::path>& input) const {
    ScEng::Findings findings;
    if (!document.Load(ScEng::MakePath(file_), findings)) return {ExitCode::kFile, findings.errors.front()};
    if (!findings.errors.empty()) {
      CheckComplete(document, file_, findings);
      return RefuseDocument(findings);
    }
    notes = findings.notes;
    Status status = ApplyOptions(document, notes);
    if (!status.IsError() && input) {
      status = document.SetInput(SplitAssignment(each_)->first, *input);
      if (status.IsError()) status = Status::Error("--each " + each_ + ": " + status.GetMessage());
    }
    if (!status.IsError() && input) {
      status = document.RenameOutputs([&](const std::filesystem::path& output) {
        return NameInBatch(ScEng::MakePath(output_dir_), *input, output);
      });
    }
    if (status.IsError()) return {ExitCode::kUsage, status.GetMessage()};
    CheckComplete(document, file_, findings);
    if (findings.errors.empty()) return {};
    // In a batch, outputs of one file name in different folders meet in one folder; else the document is at fault.
    if (input && HasDuplicate(document.GetOutputFiles())) return {ExitCode::kUsage, findings.errors.front()};
    return RefuseDocument(findings);
  }

  static bool HasDuplicate(const std::vector<std::filesystem::path>& files) {
    return std::set<std::filesystem::path>(files.begin(), files.end()).size() != files.size();
  }

  static Refusal RefuseDocument(const ScEng::Findings& findings) {
    const std::size_t others = findings.GetNumErrors() - 1;
    std::string text = findings.errors.front();
    if (others > 0) {
      // Leaves room for the rest of the line.
      constexpr std::size_t kLongest = 230;
      text = ScEng::MakeLine(text, kLongest);
      text += " (and " + std::to_string(others) + (others == 1 ? " other error" : " other errors") +
              "; \"value check\" lists all)";
    }
    return {ExitCode::kInvalidDocument, text};
  }

  Status ApplyOptions(GraphDocument& document, std::vector<std::string>& notes) const {
    for (const std::string& setting : settings_) {
      const auto assignment = SplitAssignment(setting);
      if (!assignment) return Status::Error("--set " + setting + " is not of the form NODE.ATTRIBUTE=VALUE");
      const Status status = document.SetAttribute(assignment->first, assignment->second, notes);
      if (status.IsError()) {
        return Status::Error("--set " + setting + ": " + RemoveName(status.GetMessage(), assignment->first));
      }
      if (IsFed(document, assignment->first)) {
        notes.push_back("--set " + setting + " has no effect, because a connection feeds this attribute");
      }
    }
    for (const std::string& input : inputs_) {
      const auto assignment = SplitAssignment(input);
      if (!assignment || assignment->second.empty()) {
        return Status::Error("--input " + input + " is not of the form NODE=FILE");
      }
      const Status status = document.SetInput(assignment->first, ScEng::MakePath(assignment->second));
      if (status.IsError()) return Status::Error("--input " + input + ": " + status.GetMessage());
    }
    return AddOutputs(document);
  }

  /// Whether an attribute of the document, "node.attribute", gets its value from a connection.
  static bool IsFed(GraphDocument& document, const std::string& attribute) {
    const std::size_t dot = attribute.rfind('.');
    const Node* node = document.FindNode(attribute.substr(0, dot));
    const Attribute* found = node != nullptr ? node->GetAttribute(attribute.substr(dot + 1)) : nullptr;
    return found != nullptr && document.GetEngine().IsConnected(node, found->GetName());
  }

  Status AddOutputs(GraphDocument& document) const {
    // An output keeps what the document asks for, unless it goes to a file of another format.
    std::map<std::string, ScEng::DocumentOutput> replaced;
    for (const std::string& output : outputs_) {
      const auto assignment = SplitAssignment(output);
      if (!assignment || assignment->second.empty()) {
        return Status::Error("--output " + output + " is not of the form NODE.PLUG=FILE");
      }
      const std::filesystem::path file = ScEng::MakePath(assignment->second);
      const auto [asked, is_new] = replaced.try_emplace(assignment->first);
      if (is_new) asked->second = document.RemoveOutputs(assignment->first, file).value_or(ScEng::DocumentOutput());
      asked->second.from = assignment->first;
      asked->second.path = std::filesystem::absolute(file).string();
      const Status status = document.AddOutput(asked->second);
      if (status.IsError()) return Status::Error("--output " + output + ": " + status.GetMessage());
    }
    return write_flags_.ApplyTo(document);
  }

  ExitCode RunOnce() {
    GraphDocument document(catalog_);
    std::vector<std::string> notes;
    const Refusal refusal = Prepare(document, notes, std::nullopt);
    reporter_.Notes(notes);
    if (refusal.code != ExitCode::kDone) return Fail(refusal.code, refusal.text);
    const ScEng::RunReport report = document.Run(
        [&](const std::string& id, std::size_t done, std::size_t total) { reporter_.Progress(id, done, total); });
    const ExitCode code = ReportRun(report, "");
    nlohmann::ordered_json answer;
    answer["document"] = file_;
    answer["outputs"] = nlohmann::ordered_json::array();
    for (const auto& output : report.outputs) answer["outputs"].push_back(ToJson(output));
    reporter_.Finish(answer);
    return code;
  }

  ExitCode RunBatch() {
    const auto assignment = SplitAssignment(each_);
    if (!assignment || assignment->second.empty()) {
      return Fail(ExitCode::kUsage, "--each " + each_ + " is not of the form NODE=GLOB");
    }
    const std::vector<std::filesystem::path> files = FindFiles(assignment->second);
    const std::filesystem::path probe = files.empty() ? std::filesystem::path("none") : files.front();
    {
      // The document and the options are the same for every file, so what is wrong with them is said once.
      GraphDocument document(catalog_);
      std::vector<std::string> notes;
      const Refusal refusal = Prepare(document, notes, probe);
      reporter_.Notes(notes);
      if (refusal.code != ExitCode::kDone) return Fail(refusal.code, refusal.text);
      if (files.empty()) return Fail(ExitCode::kFile, "--each " + each_ + ": no file matches");
      output_files_ = document.GetOutputFiles();
      const std::string clash = FindClash(files, document);
      if (!clash.empty()) return Fail(ExitCode::kUsage, clash);
    }
    std::error_code error;
    std::filesystem::create_directories(ScEng::MakePath(output_dir_), error);
    if (error || !std::filesystem::is_directory(ScEng::MakePath(output_dir_))) {
      return Fail(ExitCode::kFile, "the folder \"" + output_dir_ + "\" cannot be created" +
                                       (error ? ": " + error.message() : std::string()));
    }
    return RunFiles(files);
  }

  /// What two files would write under one name; empty when nothing.
  std::string FindClash(const std::vector<std::filesystem::path>& files, const GraphDocument& probed) const {
    const std::string probed_stem = files.front().stem().string() + "-";
    std::map<std::string, std::filesystem::path> writers;
    for (const std::filesystem::path& file : files) {
      for (const std::filesystem::path& output : probed.GetOutputFiles()) {
        const std::string output_name = output.filename().string().substr(probed_stem.size());
        const std::string name = file.stem().string() + "-" + output_name;
        const auto [other, is_new] = writers.emplace(name, file);
        if (is_new) continue;
        return "\"" + other->second.string() + "\" and \"" + file.string() + "\" would both write \"" + name + "\"";
      }
    }
    return {};
  }

  ExitCode RunFiles(const std::vector<std::filesystem::path>& files) {
    std::vector<ExitCode> codes(files.size(), ExitCode::kDone);
    std::vector<nlohmann::ordered_json> answers(files.size());
    std::atomic<std::size_t> next{0};
    std::atomic<std::size_t> done{0};
    const auto work = [&] {
      for (std::size_t i = next++; i < files.size(); i = next++) {
        codes[i] = RunFile(files[i], answers[i]);
        reporter_.Progress(files[i].string(), ++done, files.size());
      }
    };
    ScEng::LoadFormatsToWrite(output_files_);
    const std::size_t wanted = std::min(jobs_, files.size());
    const std::size_t used = RunJobs(wanted, work);
    if (used < wanted) {
      reporter_.Note("--jobs " + std::to_string(jobs_) + ": the system had no more than " + std::to_string(used) +
                     (used == 1 ? " thread" : " threads") + " for it");
    }

    nlohmann::ordered_json answer;
    answer["document"] = file_;
    answer["runs"] = answers;
    reporter_.Finish(answer);
    // A file error outranks a node error.
    return *std::max_element(codes.begin(), codes.end());
  }

  ExitCode RunFile(const std::filesystem::path& file, nlohmann::ordered_json& answer) {
    answer["input"] = file.string();
    answer["outputs"] = nlohmann::ordered_json::array();
    const std::string prefix = file.string() + ": ";
    try {
      GraphDocument document(catalog_);
      std::vector<std::string> notes;
      const Refusal refusal = Prepare(document, notes, file);
      if (refusal.code != ExitCode::kDone) {
        reporter_.Error(prefix + refusal.text);
        return refusal.code;
      }
      const ScEng::RunReport report = document.Run(nullptr);
      for (const auto& output : report.outputs) answer["outputs"].push_back(ToJson(output));
      return ReportRun(report, prefix);
    } catch (...) {
      reporter_.Error(prefix + "an unexpected error: " + ScEng::DescribeHandledException());
      return ExitCode::kNodeError;
    }
  }

  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  std::string file_;
  std::vector<std::string> settings_;
  std::vector<std::string> inputs_;
  std::vector<std::string> outputs_;
  std::string each_;
  std::string output_dir_;
  std::size_t jobs_ = 1;
  /// Of the first run of a batch.
  std::vector<std::filesystem::path> output_files_;
  WriteFlags write_flags_;
};

}  // namespace

std::unique_ptr<Command> MakeRunCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<RunCommand>(common, reporter);
}
