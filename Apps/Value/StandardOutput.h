// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <string>

#include "Apps/Value/Reporter.h"
#include "Host/Util/Status.h"

/// Standard output in the place of an image file, written as "-": the file is made in a temporary folder and copied to
/// standard output once it is whole.
class StandardOutput {
 public:
  StandardOutput() = default;
  ~StandardOutput();
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;

  /// Declares --format.
  void Declare(CLI::App& app);

  /// The path to write an image to that was written as `written`. An error where "-" cannot be followed: without a
  /// format, with one that is not written, a second time, with --json, or where standard output is a terminal.
  ScEng::Status FindImage(const std::string& written, const Reporter& reporter, std::filesystem::path& path);
  /// Whether an image goes there.
  [[nodiscard]] bool IsUsed() const { return !file_.empty(); }
  /// An error where a format was given although nothing goes to standard output.
  [[nodiscard]] ScEng::Status CheckFormat() const;

  /// What an error of `FindImage` means: that the file cannot be made, or was asked for in a wrong way.
  [[nodiscard]] ExitCode GetErrorCode() const { return has_failed_ ? ExitCode::kFile : ExitCode::kUsage; }
  /// Text in which the file is called what it stands for.
  [[nodiscard]] std::string NameIn(std::string text) const;

  /// Copies the file, if there is one.
  ScEng::Status Deliver(Reporter& reporter) const;
  /// Removes what there is of it, where the program is about to be ended.
  void RemoveFolder() const;

 private:
  std::string format_;
  bool has_failed_ = false;
  std::filesystem::path folder_;
  std::filesystem::path file_;
};
