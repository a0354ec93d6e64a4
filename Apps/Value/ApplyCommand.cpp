// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "Apps/Value/Batch.h"
#include "Apps/Value/Common.h"
#include "Apps/Value/OneNodeGraph.h"
#include "Apps/Value/Profile.h"
#include "Apps/Value/StandardInput.h"
#include "Apps/Value/StandardOutput.h"
#include "Apps/Value/WriteFlags.h"
#include "Host/Files/ImageFormats.h"
#include "Host/Tools/Node.h"

namespace {

using ScEng::GraphDocument;
using ScEng::Status;

class ApplyCommand : public Command, private BatchTask {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("apply", "Applies one node to files");
    graph_.DeclareNode(*sub);
    AddRepeatable(*sub, "-o,--output", outputs_, "FILE",
                  "The file for the node's (first) output, or PLUG=FILE; - is standard output")
        ->required();
    standard_output_.Declare(*sub);
    graph_.DeclareRange(*sub);
    write_flags_.Declare(*sub);
    batch_.Declare(
        *sub, "GLOB",
        "Applies the node once per matching file, or PLUG=GLOB; given again for another input, the files of\n"
        "both go together. Comes before what -i names. -o then says how the results end");
    profile_.Declare(*sub);
    sub->footer(
        "Examples:\n"
        "  value apply \"Value Add\" -i terrain.exr --set constant=0.25 -o raised.exr\n"
        "  value apply ImageValueMultiplyNode -i terrain.exr -i mask.png -o masked.exr\n"
        "  value apply 10,320,37 -i image_a=old.exr -i image_b=new.exr -o image_a_df_b=changed.png\n"
        "  value apply \"Value Add\" --each \"tiles/*.exr\" --set constant=0.25 -o raised.tif --output-dir out\n"
        "  cat terrain.exr | value apply \"To Value\" -i - -o - --format png | display");
    return sub;
  }

  ExitCode Run() override {
    catalog_ = LoadCatalog();
    if (!catalog_) return ExitCode::kPlugin;
    descriptor_ = FindNode(*catalog_, graph_.FindNodeName(*catalog_));
    if (descriptor_ == nullptr) return ExitCode::kUsage;
    std::vector<std::string> notes;
    Status status = batch_.Check(notes);
    if (status.IsError()) return Fail(ExitCode::kUsage, status.GetMessage());
    status = graph_.TakeStandardInput();
    if (status.IsError()) return Fail(StandardInput::GetErrorCode(), status.GetMessage());
    reporter_.Notes(notes);
    std::string problem;
    const ExitCode begun = profile_.Begin("apply", descriptor_->GetName(), problem);
    if (begun != ExitCode::kDone) return Fail(begun, problem);
    return batch_.IsBatch() ? RunBatch() : RunOnce();
  }

 private:
  [[nodiscard]] std::string GetName() const override { return descriptor_->GetName(); }

  Refusal MakeDocument(GraphDocument& document, std::vector<std::string>& notes) override {
    // A graph of its own for each, since the node belongs to the document.
    OneNodeGraph graph = graph_;
    Status status = graph.AddNode(document, *descriptor_, notes);
    if (!graph.HasNode()) return {ExitCode::kNodeError, status.GetMessage()};
    if (!status.IsError()) status = graph.ConnectInputs(document, notes);
    if (!status.IsError()) status = AddOutputs(graph, document);
    return status.IsError() ? Refusal{standard_output_.GetErrorCode(), status.GetMessage()} : Refusal{};
  }

  Status AddOutputs(const OneNodeGraph& graph, GraphDocument& document) {
    const std::vector<PlugRecord>& outplugs = graph.GetNode().GetOutplugs();
    const std::vector<PlugRecord> plugs = OneNodeGraph::GetImagePlugs(outplugs, outplugs.size());
    if (plugs.empty()) return Status::Error("the node has no image output to write");
    for (const std::string& text : outputs_) {
      PlugFile output;
      Status status = OneNodeGraph::SplitPlug(text, plugs, false, output);
      if (!status.IsError() && output.file.empty()) status = Status::Error("output " + text + " names no file");
      std::filesystem::path file;
      if (!status.IsError()) status = FindOutput(output.file, file);
      if (!status.IsError()) status = CheckEnding(text, file);
      if (!status.IsError()) {
        const std::string plug = output.plug.empty() ? plugs.front().name : output.plug;
        status = document.AddOutput(graph.GetId() + "." + plug, file);
      }
      if (status.IsError()) return status;
    }
    const Status format = standard_output_.CheckFormat();
    return format.IsError() ? format : write_flags_.ApplyTo(document);
  }

  Status FindOutput(const std::string& written, std::filesystem::path& file) {
    if (written == kStandardStream && batch_.IsBatch()) {
      return Status::Error("output -: standard output takes one image, and --each makes many");
    }
    return standard_output_.FindImage(written, reporter_, file);
  }

  /// The results of a batch are named otherwise.
  [[nodiscard]] Status CheckEnding(const std::string& text, const std::filesystem::path& file) const {
    const std::string problem = batch_.IsBatch() ? "" : ScEng::FindEndingProblem(file);
    return problem.empty() ? Status() : Status::Error("-o " + text + ": " + problem);
  }

  ExitCode RunOnce() {
    GraphDocument document(catalog_);
    std::vector<std::string> notes;
    Refusal refusal = MakeDocument(document, notes);
    ScEng::Findings findings;
    if (!refusal.IsRefused()) document.CheckComplete(findings);
    if (!findings.errors.empty()) refusal = {ExitCode::kUsage, findings.errors.front()};
    if (!refusal.IsRefused()) refusal = RefuseUsage(CheckFiles(document));
    if (refusal.IsRefused()) return Fail(refusal.code, refusal.text);
    Advise(document, notes);
    reporter_.Notes(notes);

    return RunToEnd(document, GetName(), {{"node", descriptor_->GetNodeFactory()->GetTypeName()}}, profile_,
                    standard_output_);
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
      const std::string id = graph_.AddEach(each);
      std::string pattern;
      const Status status = graph_.FindPattern(*descriptor_, each, pattern);
      if (status.IsError()) return Fail(ExitCode::kUsage, "--each " + each + ": " + status.GetMessage());
      readers.push_back({each, id, pattern});
    }
    return Batch(batch_, readers, *this, catalog_, common_.threads, reporter_).Run();
  }

  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  const NodeInterface* descriptor_ = nullptr;
  OneNodeGraph graph_;
  std::vector<std::string> outputs_;
  StandardOutput standard_output_;
  BatchOptions batch_;
  WriteFlags write_flags_;
  Profile profile_;
};

}  // namespace

std::unique_ptr<Command> MakeApplyCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<ApplyCommand>(common, reporter);
}
