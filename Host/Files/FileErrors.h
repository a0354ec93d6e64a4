// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <filesystem>
#include <string>

#include "Host/Util/Status.h"

namespace ScEng {

/// A library's message as one line.
inline std::string OneLine(std::string text) {
  while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text.empty() ? "unknown reason" : text;
}

inline Status MakeReadError(const std::filesystem::path& file, const std::string& reason) {
  return Status::Error("cannot read \"" + file.string() + "\": " + OneLine(reason));
}

inline Status MakeWriteError(const std::filesystem::path& file, const std::string& reason) {
  return Status::Error("cannot write \"" + file.string() + "\": " + OneLine(reason));
}

}  // namespace ScEng
