// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>

#include "Host/Util/Status.h"

namespace ScEng {

inline bool IsControlCharacter(char character) {
  const auto code = static_cast<unsigned char>(character);
  return code < 0x20 || code == 0x7f;
}

/// A library's message as one line.
inline std::string OneLine(std::string text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  std::replace_if(text.begin(), text.end(), IsControlCharacter, ' ');
  return text.empty() ? "unknown reason" : text;
}

/// A file's name for a message, with what a terminal would obey written as its number ("\\u001b").
inline std::string QuoteFile(const std::filesystem::path& file) {
  std::string quoted = "\"";
  for (const char character : file.string()) {
    if (!IsControlCharacter(character)) {
      quoted += character;
      continue;
    }
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(character));
    quoted += escape;
  }
  return quoted + "\"";
}

/// A text cut to so many bytes at the end, never within a character; dots stand for what is gone.
inline std::string CutEnd(std::string text, std::size_t most) {
  if (text.size() <= most) return text;
  std::size_t end = most - 3;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
  text.resize(end);
  return text + "...";
}

/// The file in a message: of a long path the end, which tells files of one folder apart.
inline std::string NameFile(const std::filesystem::path& file) {
  constexpr std::size_t kMost = 120;
  const std::string quoted = QuoteFile(file);
  if (quoted.size() <= kMost) return quoted;
  std::size_t begin = quoted.size() - (kMost - 4);
  while ((static_cast<unsigned char>(quoted[begin]) & 0xC0U) == 0x80U) ++begin;
  return "\"..." + quoted.substr(begin);
}

/// One line that leaves room for the name of a node before it in 300 characters.
inline Status MakeFileError(const char* what, const std::filesystem::path& file, const std::string& reason) {
  constexpr std::size_t kMost = 260;
  return Status::Error(CutEnd(what + NameFile(file) + ": " + OneLine(reason), kMost));
}

inline Status MakeReadError(const std::filesystem::path& file, const std::string& reason) {
  return MakeFileError("cannot read ", file, reason);
}

inline Status MakeWriteError(const std::filesystem::path& file, const std::string& reason) {
  return MakeFileError("cannot write ", file, reason);
}

}  // namespace ScEng
