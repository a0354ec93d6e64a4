// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/Refusal.h"

Refusal RefuseUsage(const ScEng::Status& status) {
  return status.IsError() ? Refusal{ExitCode::kUsage, status.GetMessage()} : Refusal{};
}

Refusal RefuseDocument(const ScEng::Findings& findings) {
  const std::size_t others = findings.GetNumErrors() - 1;
  std::string text = findings.errors.front();
  if (others > 0) {
    // Leaves room for the rest of the line.
    constexpr std::size_t kLongest = 230;
    text = ScEng::MakeLine(text, kLongest);
    text += " (and " + std::to_string(others) + (others == 1 ? " other error" : " other errors") +
            "; \"value check\" lists all)";
  }
  return {ExitCode::kInvalidDocument, text};
}
