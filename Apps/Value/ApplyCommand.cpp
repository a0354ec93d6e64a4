// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Common.h"
#include "Apps/Value/OneNodeGraph.h"
#include "Apps/Value/WriteFlags.h"
#include "Host/Tools/Node.h"

namespace {

using ScEng::Status;

class ApplyCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("apply", "Applies one node to files");
    graph_.DeclareNode(*sub);
    AddRepeatable(*sub, "-o,--output", outputs_, "FILE", "The file for the node's (first) output, or PLUG=FILE")
        ->required();
    graph_.DeclareRange(*sub);
    write_flags_.Declare(*sub);
    sub->footer(
        "Examples:\n"
        "  value apply \"Value Add\" -i terrain.exr --set constant=0.25 -o raised.exr\n"
        "  value apply ImageValueMultiplyNode -i terrain.exr -i mask.png -o masked.exr\n"
        "  value apply 10,320,37 -i image_a=old.exr -i image_b=new.exr -o image_a_df_b=changed.png");
    return sub;
  }

  ExitCode Run() override {
    const auto catalog = LoadCatalog();
    if (!catalog) return ExitCode::kPlugin;
    const NodeInterface* descriptor = FindNode(*catalog, graph_.FindNodeName(*catalog));
    if (descriptor == nullptr) return ExitCode::kUsage;
    ScEng::GraphDocument document(catalog);
    std::vector<std::string> notes;
    Status status = graph_.AddNode(document, *descriptor, notes);
    if (!status.IsError()) status = graph_.ConnectInputs(document, notes);
    if (!status.IsError()) status = AddOutputs(document);
    if (status.IsError()) return Fail(ExitCode::kUsage, status.GetMessage());
    ScEng::Findings advice;
    document.Advise(advice);
    notes.insert(notes.end(), advice.notes.begin(), advice.notes.end());
    reporter_.Notes(notes);

    const ScEng::RunReport report = document.Run(
        [&](const std::string& id, std::size_t done, std::size_t total) { reporter_.Progress(id, done, total); });
    const ExitCode code = ReportRun(report, "");
    nlohmann::ordered_json answer;
    answer["node"] = descriptor->GetNodeFactory()->GetTypeName();
    answer["outputs"] = nlohmann::ordered_json::array();
    for (const auto& output : report.outputs) answer["outputs"].push_back(ToJson(output));
    reporter_.Finish(answer);
    return code;
  }

 private:
  Status AddOutputs(ScEng::GraphDocument& document) const {
    const std::vector<PlugRecord>& outplugs = graph_.GetNode().GetOutplugs();
    const std::vector<PlugRecord> plugs = OneNodeGraph::GetImagePlugs(outplugs, outplugs.size());
    if (plugs.empty()) return Status::Error("the node has no image output to write");
    for (const std::string& text : outputs_) {
      PlugFile output;
      Status status = OneNodeGraph::SplitPlug(text, plugs, false, output);
      if (!status.IsError() && output.file.empty()) status = Status::Error("output " + text + " names no file");
      if (!status.IsError()) {
        const std::string plug = output.plug.empty() ? plugs.front().name : output.plug;
        status = document.AddOutput(graph_.GetId() + "." + plug, ScEng::MakePath(output.file));
      }
      if (status.IsError()) return status;
    }
    const Status followed = write_flags_.ApplyTo(document);
    if (followed.IsError()) return followed;
    ScEng::Findings findings;
    document.CheckComplete(findings);
    return findings.errors.empty() ? Status() : Status::Error(findings.errors.front());
  }

  OneNodeGraph graph_;
  std::vector<std::string> outputs_;
  WriteFlags write_flags_;
};

}  // namespace

std::unique_ptr<Command> MakeApplyCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<ApplyCommand>(common, reporter);
}
