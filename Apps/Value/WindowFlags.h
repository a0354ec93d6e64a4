// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>

/// What the commands that open a window share: where it is drawn, its theme and its scale.
class WindowFlags {
 public:
  void Declare(CLI::App& sub, int largest_scale);

  /// What is wrong with the flags; empty for nothing.
  [[nodiscard]] std::string FindProblem() const;
  /// Why no window can be opened; empty where one can, or where it is drawn to a file.
  [[nodiscard]] std::string FindMissingDisplay() const;

  /// The file that the window is drawn to; empty for the display.
  [[nodiscard]] std::string GetScreenshot() const;
  [[nodiscard]] const std::string& GetTheme() const { return theme_; }
  [[nodiscard]] int GetScale() const { return scale_; }

 private:
  std::optional<std::string> screenshot_;
  std::string theme_;
  int scale_ = 1;
};
