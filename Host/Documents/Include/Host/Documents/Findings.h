// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Host/Documents/Api.h"

namespace ScEng {

/// What reading, checking or running a document has to say, one line each, in the order of the document.
///
/// Add by `AddError` and `AddNote`: they make every text one line that is fit for a terminal. The lists are bounded in
/// memory; what goes beyond is counted.
struct HOST_DOCUMENTS_API Findings {
  /// How many errors, and how many notes, are kept.
  static constexpr std::size_t kMostKept = 1'000'000;

  std::vector<std::string> errors;
  /// Remarks that do not stand in the way.
  std::vector<std::string> notes;
  /// How many more there were than are kept.
  std::size_t further_errors = 0;
  std::size_t further_notes = 0;

  void AddError(const std::string& text);
  void AddNote(const std::string& text);
  [[nodiscard]] std::size_t GetNumErrors() const { return errors.size() + further_errors; }
  [[nodiscard]] std::size_t GetNumNotes() const { return notes.size() + further_notes; }
};

/// The most characters of a finding. Together with what a program puts before it, it stays below 300.
inline constexpr std::size_t kLongestFinding = 280;

/// A text as one line for a terminal: control characters, marks that change the direction of writing and bytes that are
/// no UTF-8 are escaped, and at most `most` characters (Unicode code points, at least 3) remain, the last three of them
/// dots where something was cut.
HOST_DOCUMENTS_API std::string MakeLine(const std::string& text, std::size_t most = kLongestFinding);

}  // namespace ScEng
