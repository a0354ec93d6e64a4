// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "Apps/Value/Common.h"
#include "Apps/Value/StandardInput.h"
#include "Host/Documents/GraphPicture.h"
#include "Host/Tools/Guard.h"

namespace {

class CheckCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("check", "Validates graph documents without evaluating them");
    sub->add_option("GRAPH", files_, "The documents; - is standard input")->required();
    sub->add_option("--svg", svg_, "Draws the document to this file, with its problems; needs Graphviz.")
        ->type_name("FILE");
    sub->footer(
        "Examples:\n"
        "  value check Examples/raise_terrain.json\n"
        "  value check Examples/*.json\n"
        "  value check Examples/raise_terrain.json --svg raise_terrain.svg\n"
        "Input files are not looked for.");
    return sub;
  }

  ExitCode Run() override {
    catalog_ = LoadCatalog();
    if (!catalog_) return ExitCode::kPlugin;
    if (std::count(files_.begin(), files_.end(), kStandardStream) > 1) {
      return Fail(ExitCode::kUsage, "standard input: can be read once only, and \"-\" is given twice");
    }
    if (!svg_.empty() && files_.size() > 1) {
      return Fail(ExitCode::kUsage, "--svg: draws one document, and " + std::to_string(files_.size()) + " are given");
    }
    ExitCode code = ExitCode::kDone;
    nlohmann::ordered_json answers = nlohmann::ordered_json::array();
    for (const std::string& file : files_) {
      reporter_.Progress(file, answers.size(), files_.size(), ProgressUnit::kFiles);
      answers.emplace_back();
      code = std::max(code, CheckFile(file, answers.back()));
    }
    if (files_.size() == 1) {
      reporter_.Finish(answers.front());
    } else {
      reporter_.Finish({{"documents", answers}});
    }
    return code;
  }

 private:
  ExitCode CheckFile(const std::string& written, nlohmann::ordered_json& answer) {
    const std::string file = StandardInput::GetDocumentName(written);
    ScEng::Findings findings;
    ExitCode code = ExitCode::kDone;
    try {
      code = FindProblems(written, file, findings);
    } catch (...) {
      findings.AddError(file + ": an unexpected error: " + ScEng::DescribeHandledException());
      code = ExitCode::kNodeError;
    }
    reporter_.Notes(findings.notes);
    for (const std::string& error : findings.errors) reporter_.Error(error);
    if (findings.further_errors > 0) {
      reporter_.Error(file + ": there are " + std::to_string(findings.further_errors) + " further errors");
    }
    const bool is_valid = findings.errors.empty();
    answer["document"] = file;
    answer["valid"] = is_valid;
    answer["problems"] = findings.errors;
    if (is_drawn_) answer["svg"] = svg_;
    // The notes of a single document stand at the end of its answer, as with every command.
    if (files_.size() > 1 && !findings.notes.empty()) answer["notes"] = findings.notes;
    if (is_valid && !common_.quiet) reporter_.Print(file + " is valid\n");
    return code;
  }

  ExitCode FindProblems(const std::string& written, const std::string& file, ScEng::Findings& findings) {
    ScEng::GraphDocument document(catalog_);
    if (!StandardInput::LoadDocument(document, written, findings)) return ExitCode::kFile;
    ScEng::Findings further;
    document.CheckComplete(further);
    document.CheckOutputs(further);
    // Advice is for what can be run.
    if (findings.errors.empty() && further.errors.empty()) document.Advise(further);
    for (const std::string& error : further.errors) findings.AddError(file + ": " + error);
    for (const std::string& note : further.notes) findings.AddNote(file + ": " + note);
    findings.further_errors += further.further_errors;
    findings.further_notes += further.further_notes;
    const ExitCode code = findings.errors.empty() ? ExitCode::kDone : ExitCode::kInvalidDocument;
    return svg_.empty() ? code : std::max(code, Draw(document, file, findings));
  }

  ExitCode Draw(const ScEng::GraphDocument& document, const std::string& file, ScEng::Findings& findings) {
    std::vector<std::string> problems;
    const std::string lead = file + ": ";
    for (const std::string& error : findings.errors) {
      problems.push_back(error.starts_with(lead) ? error.substr(lead.size()) : error);
    }
    std::string svg;
    ScEng::Status status = ScEng::DrawSvg(document, problems, svg);
    if (!status.IsError()) status = ScEng::WriteWholeFile(svg_, svg);
    is_drawn_ = !status.IsError();
    if (is_drawn_) return ExitCode::kDone;
    findings.AddError("--svg: " + status.GetMessage());
    return ExitCode::kFile;
  }

  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  std::vector<std::string> files_;
  std::string svg_;
  bool is_drawn_ = false;
};

}  // namespace

std::unique_ptr<Command> MakeCheckCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<CheckCommand>(common, reporter);
}
