// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>

#include "Apps/Panel/Panel.h"
#include "Apps/Value/Common.h"
#include "Apps/Value/OneNodeGraph.h"
#include "Apps/Value/PanelStart.h"
#include "Apps/Value/WindowFlags.h"
#include "Host/Util/HostModule.h"

namespace {

using ScEng::Status;

class PanelCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("panel", "Opens the attribute panel of a node, with a live preview");
    graph_.DeclareNode(*sub);
    graph_.DeclareRange(*sub);
    window_.Declare(*sub, 2);
    sub->footer(
        "Without -i the node gets an image that shows what it does.\n\n"
        "Examples:\n"
        "  value panel \"Value Clamp\" -i terrain.exr\n"
        "  value panel Relief --set radius=12 --screenshot relief.png --theme dark --scale 2");
    return sub;
  }

  ExitCode Run() override {
    if (graph_.HasRange() && !graph_.HasInputs()) {
      return Fail(ExitCode::kUsage, "--range declares the range of image files; give one with -i FILE");
    }
    if (const std::string problem = window_.FindProblem(); !problem.empty()) return Fail(ExitCode::kUsage, problem);
    const auto catalog = LoadCatalog();
    if (!catalog) return ExitCode::kPlugin;
    const NodeInterface* found = FindNode(*catalog, graph_.FindNodeName(*catalog));
    if (found == nullptr) return ExitCode::kUsage;
    // The same object as a descriptor that may be asked for a panel.
    PanelRequest request;
    request.descriptor = catalog->Find(found->GetNodeType());

    ScEng::GraphDocument document(catalog);
    std::vector<std::string> notes;
    const PanelStart& start = FindPanelStart(found->GetNodeFactory()->GetTypeName());
    std::vector<std::string> settings = start.settings;
    if (!graph_.HasInputs()) {
      settings.insert(settings.end(), start.settings_with_inputs.begin(), start.settings_with_inputs.end());
    }
    graph_.SetDefaults(settings);
    Status status = graph_.TakeStandardInput();
    if (!status.IsError()) {
      status = graph_.AddNode(document, *found, notes);
      if (!graph_.HasNode()) return Fail(ExitCode::kNodeError, status.GetMessage());
    }
    if (!status.IsError() && graph_.HasInputs()) status = graph_.ConnectInputs(document, notes);
    if (!status.IsError() && !graph_.HasInputs()) status = AddInputs(document, *catalog, start);
    if (status.IsError()) return Fail(ExitCode::kUsage, status.GetMessage());
    reporter_.Notes(notes);
    const std::string missing = window_.FindMissingDisplay();
    if (!missing.empty()) return Fail(ExitCode::kNodeError, missing);

    request.document = &document;
    request.node = &graph_.GetNode();
    const std::vector<PlugRecord>& outplugs = request.node->GetOutplugs();
    for (unsigned i = 0; i < outplugs.size(); ++i) {
      if (outplugs[i].type == PlugType::kImage) request.outplugs.push_back(i);
    }
    request.inputs = graph_.NameInputs();
    request.range = graph_.GetRange();

    // A file that cannot be read is an error of the command. What the node itself reports is shown in the window too,
    // since another value may put it right.
    ExitCode code = ExitCode::kDone;
    if (!request.outplugs.empty()) {
      code = ReportRun(document.Evaluate(*request.node, request.outplugs.front()));
      if (code == ExitCode::kFile) return Finish(request, PanelAnswer(), code);
    }
    return Show(request, code);
  }

 private:
  Status AddInputs(ScEng::GraphDocument& document, const ScEng::NodeCatalog& catalog, const PanelStart& start) const {
    const Node& node = graph_.GetNode();
    return AddStartInputs(document, catalog, graph_.GetId(),
                          OneNodeGraph::GetImagePlugs(node.GetInplugs(), node.GetNumRegularInputs()), start);
  }

  ExitCode Show(PanelRequest& request, ExitCode code) {
    ScEng::HostModule module("ValuePanel", "the module of the window");
    const auto show = module.Load<decltype(&ValueShowPanel)>("ValueShowPanel");
    if (show == nullptr) return Fail(ExitCode::kPlugin, module.GetProblem());
    request.theme = window_.GetTheme();
    request.scale = window_.GetScale();
    request.screenshot = window_.GetScreenshot();
    request.on_fatal = [this](const std::string& text) {
      Fail(ExitCode::kNodeError, text);
      // Qt would abort the process next.
      std::_Exit(static_cast<int>(ExitCode::kNodeError));
    };
    PanelAnswer answer;
    show(request, answer);
    if (answer.status.IsError()) {
      reporter_.Error(answer.status.GetMessage());
      code = ExitCode::kFile;
    }
    return Finish(request, answer, code);
  }

  ExitCode Finish(const PanelRequest& request, const PanelAnswer& shown, ExitCode code) {
    nlohmann::ordered_json answer;
    answer["node"] = request.descriptor->GetNodeFactory()->GetTypeName();
    if (!request.screenshot.empty()) {
      answer["screenshot"]["path"] = request.screenshot;
      answer["screenshot"]["written"] = !shown.status.IsError();
      answer["screenshot"]["width"] = shown.width;
      answer["screenshot"]["height"] = shown.height;
    }
    // What the attributes hold in the end, in the form that --set takes.
    answer["attributes"] = nlohmann::ordered_json::object();
    for (std::size_t i = 0; i < request.node->GetNumAttributes(); ++i) {
      const Attribute& attribute = *request.node->GetAttribute(i);
      answer["attributes"][attribute.GetName()] = ToJson(attribute.GetValue());
    }
    reporter_.Finish(answer);
    return code;
  }

  OneNodeGraph graph_;
  WindowFlags window_;
};

}  // namespace

std::unique_ptr<Command> MakePanelCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<PanelCommand>(common, reporter);
}
