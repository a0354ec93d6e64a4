// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <system_error>

#include "Apps/Value/Common.h"
#include "Host/Files/ImageFile.h"
#include "Host/Testing/TestSession.h"
#include "Host/Tools/Engine.h"
#include "Host/Tools/NodeInterface.h"

namespace {

using nlohmann::ordered_json;
using ScEng::TestCaseReport;
using ScEng::TestReport;
using ScEng::TestSession;

/// Takes what is written to standard output while it lives, so that the answer there stays JSON.
class CapturedOutput {
 public:
  CapturedOutput() : file_(std::tmpfile(), &std::fclose) {
    if (!file_) return;
    Flush();
    saved_ = dup(STDOUT_FILENO);
    if (saved_ >= 0) dup2(fileno(file_.get()), STDOUT_FILENO);
  }
  ~CapturedOutput() { Stop(); }
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  /// Ends the taking and answers the lines.
  std::vector<std::string> Stop() {
    std::vector<std::string> lines;
    if (saved_ < 0) return lines;
    Flush();
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
    saved_ = -1;
    std::rewind(file_.get());
    std::string text;
    std::array<char, 4096> piece{};
    while (const std::size_t taken = std::fread(piece.data(), 1, piece.size(), file_.get())) {
      text.append(piece.data(), taken);
    }
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
  }

 private:
  static void Flush() {
    std::cout << std::flush;
    static_cast<void>(std::fflush(stdout));
  }

  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
  int saved_ = -1;
};

/// A self-test that cannot pass.
struct KnownFailure {
  const char* library;
  const char* type_name;
  const char* reason;
};

constexpr std::array<KnownFailure, 1> kKnownFailures = {
    {{"Value", "ImageValueStepsNode", "its test asks for a node type that no library has any more"}}};

/// Null where the self-test of this type should pass.
const KnownFailure* FindKnownFailure(const NodeInterface& descriptor) {
  const auto* found = std::find_if(kKnownFailures.begin(), kKnownFailures.end(), [&](const KnownFailure& known) {
    return known.library == descriptor.GetLibraryName() &&
           known.type_name == descriptor.GetNodeFactory()->GetTypeName();
  });
  return found == kKnownFailures.end() ? nullptr : found;
}

/// What came of the self-test of one node type.
struct Outcome {
  /// Whether anything was tested: a type without a test answers, too.
  bool has_test = false;
  bool passed = false;
  /// What the test said, where that was taken.
  std::vector<std::string> output;
  std::vector<TestReport> reports;
  std::string exception;

  [[nodiscard]] std::vector<TestCaseReport> GetCases() const {
    std::vector<TestCaseReport> cases;
    for (const TestReport& report : reports) cases.insert(cases.end(), report.cases.begin(), report.cases.end());
    return cases;
  }
};

std::string DescribeFailure(const std::string& name, const Outcome& outcome) {
  const std::string start = "the self-test of " + name + " failed: ";
  if (!outcome.exception.empty()) return start + outcome.exception;
  const std::vector<TestCaseReport> cases = outcome.GetCases();
  const auto failed = [](const TestCaseReport& report) { return !report.passed; };
  const auto count = std::count_if(cases.begin(), cases.end(), failed);
  if (count == 0) return start + (cases.empty() ? "it could not create its nodes" : "by its own verdict");
  const TestCaseReport& first = *std::find_if(cases.begin(), cases.end(), failed);
  return start + std::to_string(count) + " of " + std::to_string(cases.size()) + " cases, the first being " +
         first.name + ": " + first.problem;
}

ordered_json ToJson(const TestCaseReport& report) {
  ordered_json json;
  json["name"] = report.name;
  json["file"] = report.file.string();
  json["seconds"] = report.seconds;
  json["passed"] = report.passed;
  if (!report.problem.empty()) json["problem"] = report.problem;
  if (report.difference && report.difference->same_shape) {
    json["mean_difference"] = ::ToJson(report.difference->mean);
    json["largest_difference"] = ::ToJson(report.difference->largest);
  }
  return json;
}

ordered_json ToJson(const NodeInterface& descriptor, const Outcome& outcome) {
  ordered_json json;
  json["node"] = descriptor.GetNodeFactory()->GetTypeName();
  json["result"] = !outcome.has_test ? "none" : outcome.passed ? "passed" : "failed";
  if (!outcome.output.empty()) json["output"] = outcome.output;
  json["tests"] = ordered_json::array();
  for (const TestReport& report : outcome.reports) {
    ordered_json test;
    test["title"] = report.title;
    test["directory"] = report.directory;
    test["cases"] = ordered_json::array();
    for (const TestCaseReport& each : report.cases) test["cases"].push_back(ToJson(each));
    json["tests"].push_back(test);
  }
  return json;
}

/// The folder of the inputs that come with the program; empty where it has none.
std::filesystem::path FindShippedInputs() {
  std::error_code error;
  std::filesystem::path folder = (GetProgramFile().parent_path() / VALUE_SELFTEST_FOLDER).lexically_normal();
  return std::filesystem::is_directory(folder, error) ? folder : std::filesystem::path();
}

class SelftestCommand : public Command {
 public:
  using Command::Command;

  CLI::App* Declare(CLI::App& app) override {
    CLI::App* sub = app.add_subcommand("selftest", "Runs the self-tests of the node types");
    sub->add_option("NAME", words_, std::string(kNodeWords) + " (default: all)")->expected(0, 3);
    sub->add_option("--reference", reference_,
                    "A folder of reference images to compare with: what an earlier run wrote, or a lower folder of it")
        ->type_name("DIR");
    sub->add_flag("--expected", expected_, "Accepts the failures that are by design, and nothing but them");
    sub->footer(
        "Examples:\n"
        "  value selftest --expected\n"
        "  value selftest Relief --reference ../last-version/output\n"
        "Images go to output/ in the working directory, an EXR file and a PNG picture per case. Inputs that input/ in\n"
        "the working directory does not have are the program's own. Exit code 1 when a test failed; with --expected\n"
        "0 when those and only those failed that fail by design. --quiet leaves only the errors.");
    return sub;
  }

  ExitCode Run() override {
    const auto catalog = LoadCatalog();
    if (!catalog) return ExitCode::kPlugin;
    std::vector<NodeInterface*> descriptors = catalog->GetDescriptors();
    const std::string name = JoinWords(words_);
    if (!words_.empty()) {
      const NodeInterface* found = FindNode(*catalog, name);
      if (found == nullptr) return ExitCode::kUsage;
      std::erase_if(descriptors, [&](const NodeInterface* other) { return other != found; });
    }
    const std::filesystem::path reference = ScEng::MakePath(reference_.value_or(""));
    std::error_code error;
    if (reference_ && !std::filesystem::is_directory(reference, error)) {
      return Fail(ExitCode::kFile, "--reference " + *reference_ + ": there is no such folder");
    }

    TestSession::Get().Start({.reference = reference, .inputs = FindShippedInputs()});
    ordered_json answer;
    answer["nodes"] = ordered_json::array();
    for (NodeInterface* descriptor : descriptors) {
      const Outcome outcome = RunTest(*descriptor, catalog);
      if (!outcome.has_test && words_.empty()) continue;
      Report(*descriptor, outcome);
      answer["nodes"].push_back(ToJson(*descriptor, outcome));
    }
    // The nodes go before the library that their code is in.
    Engine::Get()->SetCatalog(nullptr);
    if (!common_.quiet) {
      std::string text;
      if (words_.empty()) text = std::to_string(passed_) + " passed, " + std::to_string(failed_) + " failed\n";
      for (const NodeInterface* failed : by_design_) {
        text += failed->GetName() + " fails by design: " + FindKnownFailure(*failed)->reason + "\n";
      }
      reporter_.Print(text);
    }
    answer["passed"] = passed_;
    answer["failed"] = failed_;
    answer["by_design"] = ordered_json::array();
    for (const NodeInterface* failed : by_design_) {
      answer["by_design"].push_back(failed->GetNodeFactory()->GetTypeName());
    }
    reporter_.Finish(answer);
    return code_;
  }

 private:
  Outcome RunTest(NodeInterface& descriptor, const std::shared_ptr<const ScEng::NodeCatalog>& catalog) const {
    const std::size_t before = TestSession::Get().GetReports().size();
    Engine::Get()->SetCatalog(catalog);
    Outcome outcome;
    {
      std::unique_ptr<CapturedOutput> captured;
      if (reporter_.IsJson() || common_.quiet) captured = std::make_unique<CapturedOutput>();
      try {
        outcome.passed = descriptor.RunTest();
      } catch (const std::exception& exception) {
        outcome.exception = exception.what();
      }
      if (captured) outcome.output = captured->Stop();
    }
    const std::vector<TestReport>& reports = TestSession::Get().GetReports();
    outcome.reports.assign(reports.begin() + static_cast<std::ptrdiff_t>(before), reports.end());
    outcome.has_test = !outcome.reports.empty() || !outcome.exception.empty();
    return outcome;
  }

  /// Says how it went, and counts it.
  void Report(const NodeInterface& descriptor, const Outcome& outcome) {
    const std::string name = descriptor.GetName();
    if (!outcome.has_test) {
      if (outcome.passed) {
        reporter_.Note(name + " has no self-test; it answers that all is well");
      } else {
        reporter_.Error(name + " has no self-test");
        Worsen(ExitCode::kNodeError);
      }
      return;
    }
    const std::size_t cases = outcome.GetCases().size();
    for (const TestCaseReport& report : outcome.GetCases()) {
      if (report.is_file_problem) Worsen(ExitCode::kFile);
    }
    const KnownFailure* known = FindKnownFailure(descriptor);
    if (outcome.passed) {
      ++passed_;
      if (known != nullptr && expected_) {
        reporter_.Error("the self-test of " + name + " passed, although it fails by design: " + known->reason);
        Worsen(ExitCode::kNodeError);
      }
      if (!common_.quiet) reporter_.Print(name + ": passed, " + std::to_string(cases) + " cases\n\n");
      return;
    }
    ++failed_;
    if (!common_.quiet) reporter_.Print(name + ": failed\n\n");
    // One that renders a case, or ends in an exception, fails for another reason than the known one.
    if (known == nullptr || cases > 0 || !outcome.exception.empty()) {
      reporter_.Error(DescribeFailure(name, outcome));
      Worsen(ExitCode::kNodeError);
      return;
    }
    by_design_.push_back(&descriptor);
    if (expected_) return;
    reporter_.Error(DescribeFailure(name, outcome) + "; this is by design, and --expected accepts it");
    Worsen(ExitCode::kNodeError);
  }

  /// A file that could not be read or written weighs more than a test that failed.
  void Worsen(ExitCode code) { code_ = std::max(code_, code); }

  std::vector<std::string> words_;
  std::optional<std::string> reference_;
  bool expected_ = false;
  ExitCode code_ = ExitCode::kDone;
  std::size_t passed_ = 0;
  std::size_t failed_ = 0;
  std::vector<const NodeInterface*> by_design_;
};

}  // namespace

std::unique_ptr<Command> MakeSelftestCommand(const CommonOptions& common, Reporter& reporter) {
  return std::make_unique<SelftestCommand>(common, reporter);
}
