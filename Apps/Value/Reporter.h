// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// How the program ended; the numbers are its exit codes, and the largest outranks the others.
enum class ExitCode {
  kDone = 0,
  kNodeError = 1,
  kUsage = 2,
  kInvalidDocument = 3,
  kFile = 4,
  kPlugin = 5,
  /// From here on 128 and the number of the signal.
  kInterrupted = 130,
  kTerminated = 143,
};

/// What is counted while a command works.
enum class ProgressUnit { kNodes, kFiles, kChecks, kTests };

/// Everything that the program says: one line per error and note on standard error, a progress line where that is a
/// terminal, and one answer on standard output, as text or as JSON. May be used from several threads.
///
/// Names, paths and messages may come from a stranger's document or library, so a line on standard error is escaped and
/// cut (`EscapeLine`), in JSON as well, and text on standard output is escaped.
class Reporter {
 public:
  /// Takes standard error for this program alone: some image libraries print to it on their own.
  Reporter();
  ~Reporter();
  Reporter(const Reporter&) = delete;
  Reporter& operator=(const Reporter&) = delete;

  void SetJson(bool json) { json_ = json; }
  void SetQuiet(bool quiet) { quiet_ = quiet; }
  [[nodiscard]] bool IsJson() const { return json_; }

  void Error(const std::string& text);
  /// A remark that does not change the exit code.
  void Note(const std::string& text);
  void Notes(const std::vector<std::string>& texts);
  /// The same for one of many things that a command does: the note is printed, but not part of the answer.
  void NoteInPassing(const std::string& text);
  /// What is said on a terminal only, such as that a file has been written.
  void Info(const std::string& text);

  /// How far the command is; `what` was the last to be done. On a terminal that is a line which the next one replaces.
  /// Elsewhere there is a line every ten seconds, from the first call to `Finish`.
  void Progress(const std::string& what, std::size_t done, std::size_t total, ProgressUnit unit);

  /// Takes standard output for this program alone as well: what node libraries print must not get into images and
  /// answers.
  void TakeOutput();

  /// Prints text for a person, unless the answer is JSON.
  void Print(const std::string& text);
  /// Prints text that was asked for whatever the form of the answer, such as the help.
  void PrintAlways(const std::string& text);
  /// Prints bytes as they are, whatever the form of the answer.
  void WriteBytes(std::string_view bytes);
  /// Prints a part of the answer as one line, at once (with `--json`).
  void AnswerLine(const nlohmann::ordered_json& line);

  /// Prints the answer (with `--json`), with "error" added when there was one, and ends the progress.
  void Finish(nlohmann::ordered_json answer);
  /// The same as one line, after those of `AnswerLine`.
  void FinishLines(nlohmann::ordered_json answer);

  /// The exit code of a program that would end with `code`: the last thing to ask for. Reports, with the code of a file
  /// error, that standard output did not take everything. A pipe that its reader has closed is not an error.
  [[nodiscard]] ExitCode Close(ExitCode code);

 private:
  using Clock = std::chrono::steady_clock;

  /// How far the command is.
  struct State {
    std::string what;
    std::size_t done = 0;
    std::size_t total = 0;
    ProgressUnit unit = ProgressUnit::kNodes;
    Clock::time_point start;
    Clock::time_point shown;
  };

  void WriteLine(const std::string& line);
  void WriteOutput(std::string_view text);
  void WriteAnswer(nlohmann::ordered_json answer, int indent);
  void ClearProgress();
  void StartTicker();
  void StopTicker();
  /// "about 80 s left", or how long it has lasted where that cannot be told.
  [[nodiscard]] std::string DescribeTime() const;
  [[nodiscard]] std::string DescribeState() const;

  std::mutex mutex_;
  int descriptor_ = 2;
  int output_ = 1;
  /// Why standard output did not take something, as an errno; 0 where it took everything.
  int output_error_ = 0;
  bool is_terminal_ = false;
  bool json_ = false;
  bool quiet_ = false;
  bool shows_progress_ = false;
  State state_;
  bool has_state_ = false;
  std::condition_variable stopped_;
  bool is_stopped_ = false;
  std::thread ticker_;
  std::string first_error_;
  std::vector<std::string> notes_;
};
