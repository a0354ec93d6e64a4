// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "Host/Util/Status.h"

/// How the files of a batch are named: text with words in braces.
///
/// {stem} and {folder} are of the first reader's file, {output} is the output's file name without its ending, {ending}
/// that ending with its dot, {index} the number of the file from 1. {index:04} has at least four digits. "{{" and "}}"
/// stand for braces.
class OutputName {
 public:
  static constexpr const char* kDefault = "{stem}_{output}{ending}";

  /// Reads a template. An error for an unknown word, which names the nearest, for braces that do not close, and for a
  /// name that would leave the output folder.
  ScEng::Status Parse(const std::string& written);

  struct Source {
    std::filesystem::path file;
    std::filesystem::path folder;
    std::size_t index = 1;
  };
  /// The name of one output, relative to the output folder and without needless parts.
  [[nodiscard]] std::filesystem::path Make(const Source& source, const std::filesystem::path& output) const;

 private:
  struct Piece {
    enum class Kind { kText, kStem, kFolder, kOutput, kEnding, kIndex };
    Kind kind = Kind::kText;
    std::string text;
    std::size_t digits = 1;
  };

  ScEng::Status ParseWord(const std::string& word);

  std::vector<Piece> pieces_;
};
