// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "Host/Editing/Api.h"

namespace ScEng {

/// A journal: the state of a document that was being edited.
struct FoundJournal {
  std::filesystem::path file;
  /// The document that it belongs to; empty for one that had no file yet.
  std::filesystem::path document;
  /// When it was written.
  std::chrono::system_clock::time_point time;
  /// The process that wrote it is still there, so that the document is being edited.
  bool is_in_use = false;
  /// It was written on another machine, so that nobody here knows whether it is in use.
  bool is_from_elsewhere = false;
};

/// The user's folder for what programs keep between two runs: $XDG_STATE_HOME/value, or ~/.local/state/value.
HOST_EDITING_API std::filesystem::path GetStateFolder();

/// Every journal that can be read, of documents anywhere, newest first; also those in use. One that is damaged is left
/// where it is, with a note. Folders and files that are not there are no journals.
HOST_EDITING_API std::vector<FoundJournal> FindJournals(const std::filesystem::path& state_folder,
                                                        std::vector<std::string>& notes);
/// The same of the journals that lie beside one document.
HOST_EDITING_API std::vector<FoundJournal> FindJournalsOf(const std::filesystem::path& document,
                                                          std::vector<std::string>& notes);

/// Removes a journal that nobody wants back.
HOST_EDITING_API void DiscardJournal(const FoundJournal& journal);

}  // namespace ScEng
