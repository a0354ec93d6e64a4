// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <filesystem>
#include <string>

#include "Host/Documents/GraphDocument.h"
#include "Host/Util/Status.h"

namespace ScEng {

/// How the names of journals end.
inline constexpr const char* kJournalEnding = ".value-journal";
/// The folder, in that of the user's state, where journals of documents without a file lie, and links to all others.
std::filesystem::path GetJournalFolder(const std::filesystem::path& state_folder);
/// What the names of the journals beside a document start with.
std::string GetJournalLead(const std::filesystem::path& document);

/// Keeps the journal of one session.
///
/// A journal lies beside its document, under a name that no other session has, or in the user's state folder where that
/// is not possible. A symbolic link in the state folder leads to one that lies beside its document, so that all are
/// found without looking through the disk. Only the user can read a journal.
class JournalWriter {
 public:
  using Time = std::chrono::system_clock::time_point;

  explicit JournalWriter(std::filesystem::path state_folder);

  /// The document is not what the journal holds any more.
  void NoteChange() { is_changed_ = true; }
  /// Writes what has changed; removes the journal of a document that is saved. Not before a second has passed since the
  /// last time.
  Status Tick(Time now, const GraphDocument& document, const std::filesystem::path& file, bool is_modified);
  /// Goes on with a journal that another process left behind.
  void TakeOver(const std::filesystem::path& journal) { file_ = journal; }
  /// Removes the journal. The next one lies where the document is then.
  void Remove();

 private:
  Status Write(Time now, const GraphDocument& document, const std::filesystem::path& file);
  Status WriteTo(const std::filesystem::path& journal, const std::string& text);
  [[nodiscard]] std::filesystem::path MakeName(const std::string& lead) const;
  void Link();

  std::filesystem::path state_folder_;
  /// Of this session, in every name that it gives.
  std::string mark_;
  /// The journal, as soon as there is one.
  std::filesystem::path file_;
  std::filesystem::path link_;
  bool is_changed_ = false;
  Time last_{};
};

}  // namespace ScEng
