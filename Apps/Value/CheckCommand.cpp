// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Common.h"

namespace {

class CheckCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("check", "Validates a graph document without evaluating it");
    sub->add_option("GRAPH", file_, "The document")->required();
    sub->footer("Example:\n  value check Examples/raise_terrain.json");
    return sub;
  }

  ExitCode Run() override {
    const auto catalog = LoadCatalog();
    if (!catalog) return ExitCode::kPlugin;
    ScEng::GraphDocument document(catalog);
    ScEng::Findings findings;
    const bool could_read = document.Load(ScEng::MakePath(file_), findings);
    if (could_read) CheckComplete(document, file_, findings);
    reporter_.Notes(findings.notes);
    for (const std::string& error : findings.errors) reporter_.Error(error);
    if (findings.further_errors > 0) {
      reporter_.Error(file_ + ": there are " + std::to_string(findings.further_errors) + " further errors");
    }

    nlohmann::ordered_json answer;
    answer["document"] = file_;
    answer["valid"] = findings.errors.empty();
    answer["problems"] = findings.errors;
    if (findings.errors.empty() && !common_.quiet) reporter_.Print(file_ + " is valid\n");
    reporter_.Finish(answer);
    if (!could_read) return ExitCode::kFile;
    return findings.errors.empty() ? ExitCode::kDone : ExitCode::kInvalidDocument;
  }

 private:
  std::string file_;
};

}  // namespace

std::unique_ptr<Command> MakeCheckCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<CheckCommand>(common, reporter);
}
