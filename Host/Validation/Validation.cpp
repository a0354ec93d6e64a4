// SPDX-License-Identifier: Apache-2.0
//
// The validating process's side: it asks a child for one check after the other, and sees to it that there is one.
#include "Host/Validation/Validation.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>
#include <system_error>

#include "Host/Validation/Checks.h"
#include "Host/Validation/ChildProcess.h"
#include "Host/Validation/Protocol.h"
#include "Host/Validation/Wording.h"

namespace ScEng {
namespace {

using nlohmann::json;

// A node type that keeps ending the process is left out of further checks: they would all say the same.
constexpr int kMostEnds = 3;

std::size_t ReadNumber(const std::string& text) {
  std::size_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

/// What came of one question to the child.
struct Answer {
  enum class Kind { kDone, kRefused, kEnded, kHung };
  Kind kind = Kind::kDone;
  std::vector<std::string> failures;
  std::vector<std::string> skips;
  /// Why the library cannot be loaded.
  std::string refusal;
};

/// Why nothing more is asked of a node type, or of the library as a whole.
struct LeftOut {
  int ends = 0;
  std::string reason;

  void Note(const Answer& answer, const std::string& check) {
    if (answer.kind == Answer::Kind::kHung) reason = "left out, because it hung in the check " + check;
    if (answer.kind == Answer::Kind::kEnded && ++ends >= kMostEnds && reason.empty()) {
      reason = "left out, because it ended the process " + std::to_string(kMostEnds) + " times";
    }
  }
};

class Validator {
 public:
  explicit Validator(const ValidationOptions& options)
      : options_(options), end_(ChildProcess::Clock::now() + options.total_timeout) {}

  ValidationReport Run() {
    std::error_code error;
    if (!std::filesystem::exists(options_.library, error)) {
      return End(ValidationReport::Outcome::kNoSuchFile, "there is no such file");
    }
    if (!std::filesystem::is_regular_file(options_.library, error)) {
      return End(ValidationReport::Outcome::kNotALibrary, "cannot be loaded: it is not a file");
    }
    for (const Check& check : kChecks) {
      CheckReport report;
      report.check = {check.name, check.about, check.of_nodes};
      if (check.run == nullptr) {
        const Answer answer = Start();
        if (answer.kind == Answer::Kind::kRefused) {
          return End(ValidationReport::Outcome::kNotALibrary, "cannot be loaded: " + answer.refusal);
        }
        Take(report, answer, {});
        if (!report.failures.empty()) Give("the library cannot be loaded");
      } else if (!obstacle_.empty()) {
        report.skips.push_back({{}, obstacle_});
      } else if (check.of_nodes) {
        // What the checks before have changed would hide a change.
        if (check.run == CheckFloatingPoint || check.run == CheckProcessState) child_.Stop();
        RunOfNodes(check, report);
      } else {
        RunOfLibrary(check, report);
      }
      if (!status_.empty()) return End(ValidationReport::Outcome::kNoChild, status_);
      if (check.run == CheckExports && !report.failures.empty()) Give("an entry point is missing");
      report.result = !report.failures.empty() ? CheckResult::kFailed
                      : !report.skips.empty()  ? CheckResult::kSkipped
                                               : CheckResult::kPassed;
      report_.checks.push_back(report);
      if (options_.on_check) options_.on_check(report_.checks.back());
    }
    for (std::size_t i = 0; i < labels_.size(); ++i) report_.nodes.push_back(GetLabel(i));
    child_.Stop(std::chrono::seconds(1));
    return std::move(report_);
  }

 private:
  ValidationReport End(ValidationReport::Outcome outcome, const std::string& text) {
    report_.outcome = outcome;
    const std::string separator = outcome == ValidationReport::Outcome::kNotALibrary ? " " : ": ";
    report_.status = Status::Error("node library \"" + options_.library.string() + "\"" + separator + text);
    return std::move(report_);
  }

  /// Nothing further can be checked.
  void Give(const std::string& obstacle) {
    obstacle_ = obstacle;
    report_.outcome = ValidationReport::Outcome::kNotANodeLibrary;
  }

  [[nodiscard]] std::string GetLabel(std::size_t index) const {
    return labels_[index].empty() ? "node type " + std::to_string(index) : labels_[index];
  }

  /// Starts a child and has it load the library.
  Answer Start() {
    const Status status = child_.Start(options_.child_command);
    if (status.IsError()) {
      status_ = status.GetMessage();
      return {};
    }
    return Ask(kChecks[0], 0);
  }

  /// Asks a child that is there. One that ends or hangs is gone afterwards.
  Answer Ask(const Check& check, std::size_t index) {
    const json request = {{Protocol::kCheck, check.name},
                          {Protocol::kIndex, index},
                          {Protocol::kCount, static_cast<int>(labels_.size())}};
    child_.Send(request.dump());
    const auto deadline = std::min(ChildProcess::Clock::now() + options_.timeout, end_);
    std::string at;
    std::string fault;
    std::string line;
    Answer answer;
    for (;;) {
      const ChildProcess::Event event = child_.ReadLine(line, deadline);
      if (event == ChildProcess::Event::kTimeout) {
        child_.Stop();
        answer.kind = Answer::Kind::kHung;
        if (IsOver()) {
          answer.failures = {DescribeOver(at)};
          return answer;
        }
        answer.failures = {"it did not come back within " + FormatSeconds(options_.timeout) + While(at) +
                           "; an operation has to end, whatever it is given"};
        return answer;
      }
      if (event == ChildProcess::Event::kEnded) {
        answer.kind = Answer::Kind::kEnded;
        const std::string words = child_.GetLastWords();
        answer.failures = {"the process " + child_.GetEnd() + While(at) +
                           (fault.empty() ? "" : ", when it touched memory " + fault) +
                           (words.empty() ? "" : ", and printed last: \"" + words + "\"") +
                           "; a library must never end its host, a node reports failure through SetState"};
        child_.Stop();
        return answer;
      }
      Message message;
      if (!Read(line, message)) continue;
      if (!message.at.empty()) at = message.at;
      if (!message.fault.empty()) fault = message.fault;
      Learn(message);
      if (message.is_refused) answer.kind = Answer::Kind::kRefused;
      answer.refusal = message.refusal;
      answer.failures = message.failures;
      answer.skips = message.skips;
      if (message.is_refused || message.is_done) return answer;
    }
  }

  /// One line of the child. What is no such line, and so not from the child, is ignored.
  struct Message {
    std::string at;
    std::string fault;
    std::string library;
    std::string count;
    std::string label;
    std::string refusal;
    std::vector<std::string> failures;
    std::vector<std::string> skips;
    bool is_refused = false;
    bool is_done = false;
  };
  static bool Read(const std::string& line, Message& message) {
    try {
      const json object = json::parse(line);
      message.at = object.value(Protocol::kAt, "");
      message.fault = object.value(Protocol::kFault, "");
      message.library = object.value(Protocol::kLibrary, "");
      message.count = object.value(Protocol::kCount, "");
      message.label = object.value(Protocol::kLabel, "");
      message.refusal = object.value(Protocol::kRefused, "");
      message.failures = object.value(Protocol::kFailures, message.failures);
      message.skips = object.value(Protocol::kSkips, message.skips);
      message.is_refused = object.contains(Protocol::kRefused);
      message.is_done = object.value(Protocol::kDone, false);
      return true;
    } catch (const json::exception&) {
      return false;
    }
  }

  /// Takes in what the child tells of the library.
  void Learn(const Message& message) {
    if (!message.library.empty()) report_.library_name = message.library;
    if (!message.count.empty()) {
      labels_.resize(ReadNumber(message.count));
      left_out_.resize(labels_.size());
      has_count_ = true;
    }
    // The index, a blank, the class name.
    if (const std::size_t index = ReadNumber(message.label); !message.label.empty() && index < labels_.size()) {
      labels_[index] = message.label.substr(message.label.find(' ') + 1);
    }
  }

  /// Whether there is no more time for any check.
  [[nodiscard]] bool IsOver() const { return ChildProcess::Clock::now() >= end_; }

  /// The one failure that says so; afterwards there is no more to check.
  std::string DescribeOver(const std::string& at) {
    const std::string time = FormatSeconds(options_.total_timeout);
    obstacle_ = "left out, because the time for all checks, " + time + ", is over";
    return "the time for all checks, " + time + ", is over" + While(at) + "; --total-timeout allows more";
  }

  /// Asks whether or not a child is there.
  Answer AskAnyChild(const Check& check, std::size_t index) {
    if (IsOver()) {
      child_.Stop();
      Answer answer;
      answer.kind = Answer::Kind::kHung;
      answer.failures = {DescribeOver({})};
      return answer;
    }
    if (!child_.IsRunning()) {
      Answer loaded = Start();
      if (!status_.empty()) return {};
      if (loaded.kind == Answer::Kind::kRefused) {
        loaded.kind = Answer::Kind::kEnded;
        loaded.failures = {"the library cannot be loaded a second time: " + loaded.refusal};
        child_.Stop();
      }
      if (!loaded.failures.empty()) return loaded;
    }
    return Ask(check, index);
  }

  static void Take(CheckReport& report, const Answer& answer, const std::string& node) {
    for (const std::string& text : answer.failures) report.failures.push_back({node, text});
    for (const std::string& text : answer.skips) report.skips.push_back({node, text});
  }

  void RunOfLibrary(const Check& check, CheckReport& report) {
    const bool needs_count = check.run != CheckExports && check.run != CheckLibraryObject && check.run != CheckCount;
    if (needs_count && !has_count_) {
      report.skips.push_back({{}, "the number of node types is not known"});
      return;
    }
    if (!library_left_out_.reason.empty()) {
      report.skips.push_back({{}, library_left_out_.reason});
      return;
    }
    const Answer answer = AskAnyChild(check, 0);
    library_left_out_.Note(answer, check.name);
    Take(report, answer, {});
  }

  void RunOfNodes(const Check& check, CheckReport& report) {
    if (labels_.empty()) {
      report.skips.push_back(
          {{}, has_count_ ? "there is no node type to look at" : "the number of node types is not known"});
    }
    for (std::size_t index = 0; index < labels_.size(); ++index) {
      const std::string node = GetLabel(index);
      if (!obstacle_.empty()) {
        report.skips.push_back({node, obstacle_});
        continue;
      }
      if (!left_out_[index].reason.empty()) {
        report.skips.push_back({node, left_out_[index].reason});
        continue;
      }
      const Answer answer = AskAnyChild(check, index);
      if (!status_.empty()) return;
      left_out_[index].Note(answer, check.name);
      Take(report, answer, node);
      if (answer.skips.empty()) ++report.nodes;
    }
  }

  const ValidationOptions& options_;
  const ChildProcess::Clock::time_point end_;
  ChildProcess child_;
  ValidationReport report_;
  std::vector<std::string> labels_;
  std::vector<LeftOut> left_out_;
  LeftOut library_left_out_;
  bool has_count_ = false;
  // Why nothing more can be checked.
  std::string obstacle_;
  // Why there is no child.
  std::string status_;
};

}  // namespace

const std::vector<CheckInfo>& GetChecks() {
  static const std::vector<CheckInfo> checks = [] {
    std::vector<CheckInfo> infos;
    for (const Check& check : kChecks) infos.push_back({check.name, check.about, check.of_nodes});
    return infos;
  }();
  return checks;
}

std::size_t ValidationReport::Count(CheckResult result) const {
  return static_cast<std::size_t>(
      std::count_if(checks.begin(), checks.end(), [&](const CheckReport& report) { return report.result == result; }));
}

ValidationReport ValidateLibrary(const ValidationOptions& options) { return Validator(options).Run(); }

}  // namespace ScEng
