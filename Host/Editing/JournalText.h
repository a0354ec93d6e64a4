// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>

#include "Host/Util/Status.h"

namespace ScEng {

/// A process, so that another one that later has the same number is not taken for it.
struct ProcessIdentity {
  /// The name of the machine.
  std::string machine;
  /// Which start of the machine it was.
  std::string boot;
  int process = 0;
  /// When the process started, in ticks of the system since then.
  std::string start;

  friend bool operator==(const ProcessIdentity&, const ProcessIdentity&) = default;
};

/// This process.
ProcessIdentity GetOwnIdentity();
/// Whether the process is there on this machine.
bool IsRunning(const ProcessIdentity& identity);

/// What is known of a journal beside the document in it.
struct JournalHead {
  /// Empty for a document that has no file yet.
  std::filesystem::path document;
  /// Where relative paths of the document start.
  std::filesystem::path folder;
  ProcessIdentity writer;
  std::chrono::system_clock::time_point time;
};

/// A journal is one line of JSON, the head, and behind it the document as it would be saved. The head holds the length
/// and a checksum of the document, so that a damaged journal is noticed.
std::string MakeJournalText(const JournalHead& head, std::string_view document);

/// Takes a journal apart; `document` is a piece of `text`. An error, which does not name the file, for a damaged one.
Status ParseJournalText(std::string_view text, JournalHead& head, std::string_view& document);

/// The bytes of a journal; an error, which does not name the file, where they cannot be read or are too many.
Status ReadJournalFile(const std::filesystem::path& file, std::string& text);

}  // namespace ScEng
