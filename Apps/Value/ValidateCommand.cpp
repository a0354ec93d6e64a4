// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <chrono>
#include <cmath>
#include <set>
#include <sstream>

#include "Apps/Value/Common.h"
#include "Apps/Value/ExitGuard.h"
#include "Apps/Value/SafeReport.h"
#include "Host/Files/ImageFile.h"
#include "Host/Validation/Validation.h"

namespace {

using nlohmann::ordered_json;
using ScEng::CheckFinding;
using ScEng::CheckReport;
using ScEng::CheckResult;
using Outcome = ScEng::ValidationReport::Outcome;

std::string FormatFinding(const char* word, const CheckReport& report, const std::string& node,
                          const std::string& text) {
  return std::string(word) + " " + report.check.name + ": " + (node.empty() ? "" : node + ": ") + text + "\n";
}

/// One line for a check that passed, else one per finding. What was left out of several node types for one reason is
/// one line.
std::string FormatCheck(const CheckReport& report) {
  std::string text;
  for (const CheckFinding& failure : report.failures) text += FormatFinding("FAIL", report, failure.node, failure.text);
  std::set<std::string> reasons;
  for (const CheckFinding& skip : report.skips) {
    if (!reasons.insert(skip.text).second) continue;
    const auto count = std::count_if(report.skips.begin(), report.skips.end(),
                                     [&](const CheckFinding& other) { return other.text == skip.text; });
    text += FormatFinding("skip", report, count > 1 ? std::to_string(count) + " node types" : skip.node, skip.text);
  }
  if (!text.empty()) return text;
  text = "ok   " + report.check.name;
  if (report.check.of_nodes)
    text += " (" + std::to_string(report.nodes) + (report.nodes == 1 ? " node type)" : " node types)");
  return text + "\n";
}

ordered_json ToJson(const std::vector<CheckFinding>& findings) {
  ordered_json json = ordered_json::array();
  for (const CheckFinding& finding : findings) {
    ordered_json entry;
    if (!finding.node.empty()) entry["node"] = finding.node;
    entry["text"] = finding.text;
    json.push_back(entry);
  }
  return json;
}

ordered_json ToJson(const CheckReport& report) {
  ordered_json json;
  json["name"] = report.check.name;
  json["about"] = report.check.about;
  json["result"] = report.result == CheckResult::kPassed   ? "passed"
                   : report.result == CheckResult::kFailed ? "failed"
                                                           : "skipped";
  if (report.check.of_nodes) json["nodes"] = report.nodes;
  json["failures"] = ToJson(report.failures);
  json["skips"] = ToJson(report.skips);
  return json;
}

class ValidateCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("validate", "Checks a node library for everything that a host relies on");
    sub->add_option("LIBRARY", library_, "The node library")->required();
    sub->add_option("--timeout", timeout_s_, "Seconds that a check may take with one node type (default: 30)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.05, 86400.0));
    sub->add_option("--total-timeout", total_timeout_s_, "Seconds that all checks may take together (default: 1800)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.05, 864000.0));
    // What the program starts itself with: the library is never loaded in the process that judges it.
    sub->add_option("--child", channel_)->group("");
    sub->footer(
        "One line per check, \"ok\" or \"FAIL\" with what is wrong and what would be right. Exit codes: 0 all passed,\n"
        "1 some failed, 4 there is no such file, 5 it cannot be loaded or lacks an entry point.\n\n"
        "Examples:\n"
        "  value validate HelloNode.so\n"
        "  value validate HelloNode.so --timeout 120 --json");
    return sub;
  }

  ExitCode Run() override {
    const std::filesystem::path library = ScEng::MakePath(library_);
    if (!std::isfinite(timeout_s_)) return Fail(ExitCode::kUsage, "--timeout takes a number of seconds");
    if (!std::isfinite(total_timeout_s_)) return Fail(ExitCode::kUsage, "--total-timeout takes a number of seconds");
    if (!channel_.empty()) {
      ExitGuard::Disarm();
      ScEng::RunValidationChild(library, channel_);
      return Fail(ExitCode::kUsage, "--child is for the program's own use");
    }
    ScEng::ValidationOptions options;
    std::error_code error;
    options.library = std::filesystem::absolute(library, error);
    options.timeout = std::chrono::milliseconds(static_cast<std::int64_t>(timeout_s_ * 1000.0));
    options.total_timeout = std::chrono::milliseconds(static_cast<std::int64_t>(total_timeout_s_ * 1000.0));
    options.child_command = {GetProgramFile().string(), "validate", options.library.string(), "--child"};
    std::size_t done = 0;
    options.on_check = [&](const CheckReport& report) {
      if (report.result == CheckResult::kFailed || !common_.quiet) reporter_.Print(FormatCheck(MakeSafe(report)));
      reporter_.Progress(report.check.name, ++done, ScEng::GetChecks().size(), ProgressUnit::kChecks);
    };
    const ScEng::ValidationReport report = ScEng::ValidateLibrary(options);
    switch (report.outcome) {
      case Outcome::kNoSuchFile: return Fail(ExitCode::kFile, report.status.GetMessage());
      case Outcome::kNotALibrary: return Fail(ExitCode::kPlugin, report.status.GetMessage());
      case Outcome::kNoChild: return Fail(ExitCode::kNodeError, report.status.GetMessage());
      case Outcome::kNotANodeLibrary:
      case Outcome::kChecked: break;
    }
    const std::size_t passed = report.Count(CheckResult::kPassed);
    const std::size_t failed = report.Count(CheckResult::kFailed);
    const std::size_t skipped = report.Count(CheckResult::kSkipped);
    if (!common_.quiet) {
      reporter_.Print(std::to_string(report.checks.size()) + " checks: " + std::to_string(passed) + " passed, " +
                      std::to_string(failed) + " failed, " + std::to_string(skipped) + " skipped\n");
    }
    ordered_json answer;
    answer["file"] = library_;
    answer["library"] = MakeSafeName(report.library_name);
    answer["nodes"] = ordered_json::array();
    for (const std::string& node : report.nodes) answer["nodes"].push_back(MakeSafeName(node));
    answer["checks"] = ordered_json::array();
    for (const CheckReport& check : report.checks) answer["checks"].push_back(ToJson(MakeSafe(check)));
    answer["passed"] = passed;
    answer["failed"] = failed;
    answer["skipped"] = skipped;
    reporter_.Finish(answer);
    if (report.outcome == Outcome::kNotANodeLibrary) return ExitCode::kPlugin;
    return failed == 0 ? ExitCode::kDone : ExitCode::kNodeError;
  }

 private:
  std::string library_;
  std::string channel_;
  double timeout_s_ = 30.0;
  double total_timeout_s_ = 1800.0;
};

}  // namespace

std::unique_ptr<Command> MakeValidateCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<ValidateCommand>(common, reporter);
}
