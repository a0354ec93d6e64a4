// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <map>
#include <set>

#include "Apps/Value/Batch.h"
#include "Apps/Value/Common.h"
#include "Apps/Value/Profile.h"
#include "Apps/Value/StandardInput.h"
#include "Apps/Value/StandardOutput.h"
#include "Apps/Value/UsageText.h"
#include "Apps/Value/WriteFlags.h"
#include "Host/Files/ImageFormats.h"

namespace {

using ScEng::GraphDocument;
using ScEng::Status;

class RunCommand : public Command, private BatchTask {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("run", "Evaluates a graph document and writes its outputs");
    sub->add_option("GRAPH", file_, "The document; - reads it from standard input")->required();
    AddRepeatable(*sub, "--set", settings_, "NODE.ATTRIBUTE=VALUE",
                  "Sets an attribute; of two settings of one the last wins");
    AddRepeatable(*sub, "--input", inputs_, "NODE=FILE", "Sets the file of a reader; - is standard input");
    AddRepeatable(*sub, "--output", outputs_, "NODE.PLUG=FILE",
                  "Writes an output, in place of what the document says of this plug; - is standard output");
    standard_output_.Declare(*sub);
    write_flags_.Declare(*sub);
    batch_.Declare(*sub, "NODE=GLOB",
                   "Runs the document once per matching file, read by this reader; given again for another reader,\n"
                   "the files of both go together");
    profile_.Declare(*sub);
    sub->footer(
        "Examples:\n"
        "  value run Examples/raise_terrain.json\n"
        "  value run graph.json --set raised.constant=0.5 --output raised.image=raised.png\n"
        "  value run graph.json --each height=\"tiles/*.exr\" --output-dir results --skip-existing\n"
        "  value run graph.json --each height=\"tiles/*.exr\" --each mask=\"masks/*.png\" --pair stem --output-dir d");
    return sub;
  }

  ExitCode Run() override {
    catalog_ = LoadCatalog();
    if (!catalog_) return ExitCode::kPlugin;
    std::vector<std::string> notes;
    const Status status = batch_.Check(notes);
    if (status.IsError()) return Fail(ExitCode::kUsage, status.GetMessage());
    reporter_.Notes(notes);
    std::string problem;
    const ExitCode begun = profile_.Begin("run", file_, problem);
    if (begun != ExitCode::kDone) return Fail(begun, problem);
    return batch_.IsBatch() ? RunBatch() : RunOnce();
  }

 private:
  [[nodiscard]] std::string GetName() const override { return StandardInput::GetDocumentName(file_); }
  [[nodiscard]] std::filesystem::path GetDocumentFile() const override {
    return file_ == kStandardStream ? std::filesystem::path() : ScEng::MakeReadPath(file_);
  }

  Refusal MakeDocument(GraphDocument& document, std::vector<std::string>& notes) override {
    ScEng::Findings findings;
    if (!StandardInput::LoadDocument(document, file_, findings, &text_))
      return {ExitCode::kFile, findings.errors.front()};
    if (!findings.errors.empty()) {
      CheckComplete(document, GetName(), findings);
      return RefuseDocument(findings);
    }
    notes.insert(notes.end(), findings.notes.begin(), findings.notes.end());
    const Status status = ApplyOptions(document, notes);
    const ExitCode code = std::max(StandardInput::GetErrorCode(), standard_output_.GetErrorCode());
    return status.IsError() ? Refusal{code, status.GetMessage()} : Refusal{};
  }

  Status ApplyOptions(GraphDocument& document, std::vector<std::string>& notes) {
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
      std::filesystem::path file;
      Status status = FindInput(input, assignment->second, file);
      if (!status.IsError()) status = document.SetInput(assignment->first, file);
      if (status.IsError()) return Status::Error("--input " + input + ": " + status.GetMessage());
    }
    return AddOutputs(document);
  }

  /// Standard input is taken with the first document of a batch, and stands for all. `option` is what names it.
  Status FindInput(const std::string& option, const std::string& written, std::filesystem::path& file) {
    const bool was_taken = written == kStandardStream && option == standard_input_option_;
    const Status status = was_taken ? Status() : StandardInput::FindImage(written, file);
    if (written != kStandardStream || status.IsError()) return status;
    if (!was_taken) standard_input_ = file;
    standard_input_option_ = option;
    file = standard_input_;
    return {};
  }

  /// Whether an attribute of the document, "node.attribute", gets its value from a connection.
  static bool IsFed(GraphDocument& document, const std::string& attribute) {
    const std::size_t dot = attribute.rfind('.');
    const Node* node = document.FindNode(attribute.substr(0, dot));
    const Attribute* found = node != nullptr ? node->GetAttribute(attribute.substr(dot + 1)) : nullptr;
    return found != nullptr && document.GetEngine().IsConnected(node, found->GetName());
  }

  Status AddOutputs(GraphDocument& document) {
    // An output keeps what the document asks for, unless it goes to a file of another format.
    std::map<std::string, ScEng::DocumentOutput> replaced;
    for (const std::string& output : outputs_) {
      const auto assignment = SplitAssignment(output);
      if (!assignment || assignment->second.empty()) {
        return Status::Error("--output " + output + " is not of the form NODE.PLUG=FILE");
      }
      std::filesystem::path file;
      const Status found = standard_output_.FindImage(assignment->second, reporter_, file);
      if (found.IsError()) return Status::Error("--output " + output + ": " + found.GetMessage());
      if (document.HasId(assignment->first)) return OfferPlugs(document, output, *assignment);
      // The results of a batch are named otherwise.
      const std::string problem = batch_.IsBatch() ? "" : ScEng::FindEndingProblem(file);
      if (!problem.empty()) return Status::Error("--output " + output + ": " + problem);
      const auto [asked, is_new] = replaced.try_emplace(assignment->first);
      if (is_new) asked->second = document.RemoveOutputs(assignment->first, file).value_or(ScEng::DocumentOutput());
      asked->second.from = assignment->first;
      asked->second.path = std::filesystem::absolute(file).string();
      const Status status = document.AddOutput(asked->second);
      if (status.IsError()) return Status::Error("--output " + output + ": " + status.GetMessage());
    }
    const Status format = standard_output_.CheckFormat();
    return format.IsError() ? format : write_flags_.ApplyTo(document);
  }

  /// A node in place of one of its outputs.
  static Status OfferPlugs(const GraphDocument& document, const std::string& output,
                           const std::pair<std::string, std::string>& assignment) {
    const Node* const node = document.FindNode(assignment.first);
    std::vector<std::string> lines;
    for (std::size_t i = 0; node != nullptr && i < node->GetOutplugs().size(); ++i) {
      const PlugRecord& plug = node->GetOutplugs()[i];
      if (plug.type != PlugType::kImage) continue;
      lines.push_back("--output " + QuoteForShell(assignment.first + "." + plug.name + "=" + assignment.second));
    }
    return Status::Error("--output " + output + ": " + ShowWord(assignment.first) + " is a node" +
                         (lines.empty() ? " without an image" : "; write " + JoinWithLast(lines, " or ")));
  }

  /// The paths of writers that were given on the command line, as they are in the end.
  [[nodiscard]] Status CheckWrittenPaths(const GraphDocument& document) const {
    std::set<std::string> seen;
    for (auto setting = settings_.rbegin(); setting != settings_.rend(); ++setting) {
      const auto assignment = SplitAssignment(*setting);
      if (!assignment || !seen.insert(assignment->first).second) continue;
      const std::size_t dot = assignment->first.rfind('.');
      const Node* const node = document.FindNode(assignment->first.substr(0, dot));
      const Attribute* const path = node != nullptr ? node->GetAttribute(assignment->first.substr(dot + 1)) : nullptr;
      const bool is_written = path != nullptr && node->IsEnabled() && path->GetKind() == Attribute::Kind::kString &&
                              path->GetStringUse() == Attribute::StringUse::kWritePath && !assignment->second.empty();
      const std::string problem = is_written ? ScEng::FindEndingProblem(assignment->second) : "";
      if (!problem.empty()) return Status::Error("--set " + *setting + ": " + problem);
    }
    return {};
  }

  ExitCode RunOnce() {
    GraphDocument document(catalog_);
    std::vector<std::string> notes;
    Refusal refusal = MakeDocument(document, notes);
    ScEng::Findings findings;
    if (!refusal.IsRefused()) refusal = RefuseUsage(CheckWrittenPaths(document));
    if (!refusal.IsRefused()) CheckComplete(document, GetName(), findings);
    if (!findings.errors.empty()) refusal = RefuseDocument(findings);
    if (!refusal.IsRefused()) refusal = RefuseUsage(CheckFiles(document));
    if (!refusal.IsRefused()) Advise(document, notes);
    reporter_.Notes(notes);
    if (refusal.IsRefused()) return Fail(refusal.code, refusal.text);

    return RunToEnd(document, GetName(), {{"document", file_}}, profile_, standard_output_);
  }

  [[nodiscard]] Status CheckFiles(const GraphDocument& document) const override { return write_flags_.Check(document); }

  ScEng::RunReport RunOne(GraphDocument& document, const std::string& name, const Engine::Options& options) override {
    return profile_.Run(document, name, nullptr, options);
  }

  ExitCode FinishBatch(nlohmann::ordered_json& sum, ExitCode code) override {
    return profile_.Finish(reporter_, sum, code);
  }

  ExitCode RunBatch() {
    std::vector<BatchReader> readers;
    for (const std::string& each : batch_.GetEach()) {
      const auto assignment = SplitAssignment(each);
      if (!assignment || assignment->second.empty()) {
        return Fail(ExitCode::kUsage, "--each " + each + " is not of the form NODE=GLOB");
      }
      readers.push_back({each, assignment->first, assignment->second});
    }
    for (const std::string& input : inputs_) {
      const auto assignment = SplitAssignment(input);
      const bool is_given = assignment && std::any_of(readers.begin(), readers.end(), [&](const BatchReader& reader) {
                              return reader.id == assignment->first;
                            });
      if (is_given) reporter_.Note("--input " + input + " has no effect, because --each gives this reader its files");
    }
    for (const std::string& output : outputs_) {
      const auto assignment = SplitAssignment(output);
      if (!assignment || assignment->second != kStandardStream) continue;
      return Fail(ExitCode::kUsage, "--output " + output + ": standard output takes one image, and --each makes many");
    }
    return Batch(batch_, readers, *this, catalog_, common_.threads, reporter_).Run();
  }

  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  std::string file_;
  /// The document as it was when the command began.
  std::string text_;
  std::vector<std::string> settings_;
  std::vector<std::string> inputs_;
  std::vector<std::string> outputs_;
  BatchOptions batch_;
  StandardOutput standard_output_;
  std::filesystem::path standard_input_;
  std::string standard_input_option_;
  WriteFlags write_flags_;
  Profile profile_;
};

}  // namespace

std::unique_ptr<Command> MakeRunCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<RunCommand>(common, reporter);
}
