// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Complete.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <optional>

#include "Apps/Value/BashLine.h"
#include "Apps/Value/Completer.h"
#include "Apps/Value/SafeText.h"
#include "Apps/Value/WriteAll.h"

namespace {

// A library that hangs while it is loaded must not hang the shell.
constexpr unsigned kLongestWait_s = 3;
constexpr std::size_t kLongestAbout = 100;

/// Keeps what libraries print off standard output while it exists.
class SilentOutput {
 public:
  SilentOutput() : own_(dup(STDOUT_FILENO)) { Redirect(open("/dev/null", O_WRONLY | O_CLOEXEC)); }
  ~SilentOutput() { Redirect(own_); }
  SilentOutput(const SilentOutput&) = delete;
  SilentOutput& operator=(const SilentOutput&) = delete;

 private:
  static void Redirect(int descriptor) {
    std::cout.flush();
    static_cast<void>(std::fflush(stdout));
    if (descriptor < 0) return;
    dup2(descriptor, STDOUT_FILENO);
    close(descriptor);
  }

  int own_;
};

/// The words of the question, and how the answer is written.
struct Question {
  std::vector<std::string> words;
  std::optional<BashLine> bash;
};

std::optional<Question> ReadQuestion(const std::vector<std::string>& arguments) {
  Question question;
  if (arguments.empty()) return std::nullopt;
  if (arguments[0] == "--") {
    question.words.assign(arguments.begin() + 1, arguments.end());
    return question;
  }
  if (arguments[0] != "--bash" || arguments.size() != 3) return std::nullopt;
  question.bash = ReadBashLine(arguments[1], arguments[2]);
  question.words.assign(question.bash->words.begin() + 1, question.bash->words.end());
  return question;
}

/// A name with characters that a terminal would take for its own, or that separate the fields, is not offered.
bool IsPlain(const std::string& text) { return text.find('\n') == std::string::npos && EscapeText(text) == text; }

class Answer {
 public:
  explicit Answer(const Question& question) : question_(question) {
    if (question.bash && question.bash->quote != 0) text_ = std::string("quote\t") + question.bash->quote + "\n";
  }

  void Add(const std::string& kind, const std::string& text, const std::string& about) {
    if (!IsPlain(text)) return;
    std::string shown = text;
    if (question_.bash) {
      shown = QuoteForBash(text.substr(std::min(question_.bash->num_kept, text.size())), question_.bash->quote);
    }
    text_ += kind + "\t" + shown;
    if (!about.empty()) text_ += "\t" + EscapeLine(about, kLongestAbout);
    text_ += "\n";
  }

  void AddFiles(const std::string& kind, const std::string& prefix, const std::string& ending,
                const std::string& start) {
    std::string kept = prefix;
    if (question_.bash) kept.erase(0, question_.bash->num_kept);
    if (!kept.empty()) text_ += "prefix\t" + kept + "\n";
    text_ += kind + "\t" + (ending.empty() ? "*" : ending);
    if (question_.bash && IsPlain(start)) text_ += "\t" + start;
    text_ += "\n";
  }

  [[nodiscard]] const std::string& GetText() const { return text_; }

 private:
  const Question& question_;
  std::string text_;
};

std::string FindAnswer(const CLI::App& app, const Question& question, Reporter& reporter) {
  Answer answer(question);
  const TypedLine line = ReadTypedLine(app, question.words);
  if (question.bash && question.bash->is_redirection) {
    answer.AddFiles("file", {}, {}, question.bash->words.back());
    return answer.GetText();
  }
  const CommonOptions common = Completer::ReadLibraries(line);
  Completer completer(line, common, reporter);
  const Candidates candidates = completer.Find();
  for (const Candidates::Word& word : candidates.words) {
    answer.Add(word.is_open ? "part" : "word", line.prefix + word.text, word.about);
  }
  if (candidates.files == Candidates::Files::kNone) return answer.GetText();
  answer.AddFiles(candidates.files == Candidates::Files::kFolders ? "folder" : "file",
                  line.prefix + candidates.files_prefix, candidates.ending,
                  line.word.substr(candidates.files_prefix.size()));
  return answer.GetText();
}

}  // namespace

ExitCode Complete(const CLI::App& app, const std::vector<std::string>& arguments, Reporter& reporter) {
  reporter.SetQuiet(true);
  static_cast<void>(std::signal(SIGALRM, [](int) { _exit(0); }));
  alarm(kLongestWait_s);
  std::string text;
  try {
    const std::optional<Question> question = ReadQuestion(arguments);
    const SilentOutput silence;
    if (question) text = FindAnswer(app, *question, reporter);
  } catch (...) {
    text.clear();
  }
  WriteAll(STDOUT_FILENO, text);
  return ExitCode::kDone;
}
