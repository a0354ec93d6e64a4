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

inline Status MakeReadError(const std::filesystem::path& file, const std::string& reason) {
  return Status::Error("cannot read " + QuoteFile(file) + ": " + OneLine(reason));
}

inline Status MakeWriteError(const std::filesystem::path& file, const std::string& reason) {
  return Status::Error("cannot write " + QuoteFile(file) + ": " + OneLine(reason));
}

}  // namespace ScEng
