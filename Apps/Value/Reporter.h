// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// How the program ended; the numbers are its exit codes.
enum class ExitCode { kDone = 0, kNodeError = 1, kUsage = 2, kInvalidDocument = 3, kFile = 4, kPlugin = 5 };

/// Everything that the program says: one line per error and note on standard error, a progress line where that is a
/// terminal, and one answer on standard output, as text or as JSON. May be used from several threads.
///
/// Names, paths and messages may come from a stranger's document or library, so a line on standard error is escaped and
/// cut (`EscapeLine`), in JSON as well, and text on standard output is escaped.
class Reporter {
 public:
  /// Takes standard error for this program alone: some image libraries print to it on their own.
  Reporter();

  void SetJson(bool json) { json_ = json; }
  void SetQuiet(bool quiet) { quiet_ = quiet; }
  [[nodiscard]] bool IsJson() const { return json_; }

  void Error(const std::string& text);
  /// A remark that does not change the exit code.
  void Note(const std::string& text);
  void Notes(const std::vector<std::string>& texts);
  /// The line that shows how far a command is; replaced by the next one.
  void Progress(const std::string& what, std::size_t done, std::size_t total);

  /// Prints text for a person, unless the answer is JSON.
  void Print(const std::string& text);
  /// Prints text that was asked for whatever the form of the answer, such as the help.
  void PrintAlways(const std::string& text);
  /// Prints the answer (with `--json`), with "error" added when there was one, and ends the progress line.
  void Finish(nlohmann::ordered_json answer);

  /// The exit code of a program that would end with `code`: the last thing to ask for. Reports, with the code of a file
  /// error, that standard output did not take everything. A pipe that its reader has closed is not an error.
  [[nodiscard]] ExitCode Close(ExitCode code);

 private:
  void WriteLine(const std::string& line);
  void WriteOutput(const std::string& text);
  void ClearProgress();

  std::mutex mutex_;
  int descriptor_ = 2;
  /// Why standard output did not take something, as an errno; 0 where it took everything.
  int output_error_ = 0;
  bool is_terminal_ = false;
  bool json_ = false;
  bool quiet_ = false;
  bool shows_progress_ = false;
  std::string first_error_;
  std::vector<std::string> notes_;
};
