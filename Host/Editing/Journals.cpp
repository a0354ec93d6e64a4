// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/Journals.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <system_error>

#include "Host/Documents/Findings.h"
#include "Host/Editing/JournalText.h"
#include "Host/Editing/JournalWriter.h"

namespace ScEng {
namespace {

/// Reads the head of a journal into a list. What is no journal yet, or not any more, is left out in silence.
void AddJournal(const std::filesystem::path& file, std::vector<FoundJournal>& journals,
                std::vector<std::string>& notes) {
  std::error_code error;
  if (!std::filesystem::exists(file, error) || std::filesystem::file_size(file, error) == 0) return;
  std::string text;
  JournalHead head;
  std::string_view document;
  Status status = ReadJournalFile(file, text);
  if (!status.IsError()) status = ParseJournalText(text, head, document);
  if (status.IsError()) {
    notes.push_back(MakeLine("the journal \"" + file.string() + "\" is left aside: " + status.GetMessage()));
    return;
  }
  FoundJournal found;
  found.file = file;
  found.document = head.document;
  found.time = head.time;
  found.is_in_use = IsRunning(head.writer);
  found.is_from_elsewhere = head.writer.machine != GetOwnIdentity().machine;
  journals.push_back(std::move(found));
}

/// Adds the journals of a folder whose names start like `lead`.
void AddJournals(const std::filesystem::path& folder, const std::string& lead, std::vector<FoundJournal>& journals,
                 std::vector<std::string>& notes) {
  std::error_code error;
  std::set<std::filesystem::path> files;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (!name.starts_with(lead) || !name.ends_with(kJournalEnding)) continue;
    std::error_code link_error;
    if (!std::filesystem::is_symlink(entry->symlink_status(link_error))) {
      files.insert(entry->path());
      continue;
    }
    const std::filesystem::path target = std::filesystem::read_symlink(entry->path(), link_error);
    if (!std::filesystem::exists(target, link_error) && !link_error) {
      // The journal has gone with its document, to another disk for example.
      std::filesystem::remove(entry->path(), link_error);
    } else if (!link_error) {
      files.insert(target);
    }
  }
  for (const std::filesystem::path& file : files) AddJournal(file, journals, notes);
}

void Sort(std::vector<FoundJournal>& journals) {
  std::stable_sort(journals.begin(), journals.end(),
                   [](const FoundJournal& one, const FoundJournal& other) { return one.time > other.time; });
}

}  // namespace

std::filesystem::path GetStateFolder() {
  const char* state = std::getenv("XDG_STATE_HOME");
  // A relative path is to be taken as none at all.
  if (state != nullptr && state[0] == '/') return std::filesystem::path(state) / "value";
  const char* home = std::getenv("HOME");
  return std::filesystem::path(home != nullptr ? home : "/") / ".local" / "state" / "value";
}

std::vector<FoundJournal> FindJournals(const std::filesystem::path& state_folder, std::vector<std::string>& notes) {
  std::vector<FoundJournal> journals;
  AddJournals(GetJournalFolder(state_folder), "", journals, notes);
  Sort(journals);
  return journals;
}

std::vector<FoundJournal> FindJournalsOf(const std::filesystem::path& document, std::vector<std::string>& notes) {
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(document, error);
  std::vector<FoundJournal> journals;
  AddJournals(absolute.parent_path(), GetJournalLead(document), journals, notes);
  // Another document's name may start like this one's.
  std::erase_if(journals,
                [&](const FoundJournal& journal) { return journal.document.filename() != absolute.filename(); });
  Sort(journals);
  return journals;
}

void DiscardJournal(const FoundJournal& journal) {
  std::error_code error;
  std::filesystem::remove(journal.file, error);
}

}  // namespace ScEng
