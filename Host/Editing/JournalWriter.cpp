// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/JournalWriter.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <system_error>
#include <utility>

#include "Host/Editing/JournalText.h"
#include "Host/Files/ImageFile.h"

namespace ScEng {
namespace {

/// So many of a document's name are in the name of its journal, which may have 255 bytes.
constexpr std::size_t kMostNameBytes = 120;

std::string MakeMark() {
  static std::atomic<unsigned> number{0};
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::to_string(getpid()) + "-" + std::to_string(std::chrono::nanoseconds(now).count()) + "-" +
         std::to_string(++number);
}

}  // namespace

std::filesystem::path GetJournalFolder(const std::filesystem::path& state_folder) { return state_folder / "journals"; }

std::string GetJournalLead(const std::filesystem::path& document) {
  return "." + document.filename().string().substr(0, kMostNameBytes) + ".";
}

JournalWriter::JournalWriter(std::filesystem::path state_folder)
    : state_folder_(std::move(state_folder)), mark_(MakeMark()) {}

Status JournalWriter::Tick(Time now, const GraphDocument& document, const std::filesystem::path& file,
                           bool is_modified) {
  constexpr auto kSpacing = std::chrono::seconds(1);
  // A clock that was set back must not keep the journal from being written.
  const bool is_early = now >= last_ && now - last_ < kSpacing;
  if (!is_changed_ || is_early) return {};
  last_ = now;
  if (!is_modified) {
    Remove();
    return {};
  }
  const Status status = Write(now, document, file);
  is_changed_ = status.IsError();
  return status;
}

Status JournalWriter::Write(Time now, const GraphDocument& document, const std::filesystem::path& file) {
  std::string saved;
  Status status = document.SaveText(saved);
  if (status.IsError()) return Status::Error("cannot write the journal: " + status.GetMessage());
  std::error_code error;
  const auto make_absolute = [&](const std::filesystem::path& path) {
    return path.empty() ? path : std::filesystem::absolute(path, error);
  };
  std::filesystem::path folder = document.GetFolder();
  if (folder.empty()) folder = std::filesystem::current_path(error);
  const JournalHead head{make_absolute(file), make_absolute(folder), GetOwnIdentity(), now};
  const std::string text = MakeJournalText(head, saved);
  if (!file_.empty()) return WriteTo(file_, text);
  if (!file.empty()) {
    status = WriteTo(MakeName((head.document.parent_path() / GetJournalLead(file)).string()), text);
    if (!status.IsError()) {
      Link();
      return status;
    }
  }
  std::filesystem::create_directories(GetJournalFolder(state_folder_), error);
  const std::string lead = file.empty() ? "untitled." : GetJournalLead(file).substr(1);
  return WriteTo(MakeName((GetJournalFolder(state_folder_) / lead).string()), text);
}

std::filesystem::path JournalWriter::MakeName(const std::string& lead) const { return lead + mark_ + kJournalEnding; }

Status JournalWriter::WriteTo(const std::filesystem::path& journal, const std::string& text) {
  // A file that is replaced keeps its mode, so that the document is never there for others to read.
  constexpr mode_t kPrivate = 0600;
  const int created = open(journal.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, kPrivate);
  if (created >= 0) close(created);
  const Status status = WriteWholeFile(journal, text);
  if (!status.IsError()) {
    file_ = journal;
  } else if (created >= 0) {
    unlink(journal.c_str());
  }
  return status;
}

void JournalWriter::Link() {
  // Without the link the journal is found from its document alone.
  std::error_code error;
  const std::filesystem::path folder = GetJournalFolder(state_folder_);
  std::filesystem::create_directories(folder, error);
  link_ = MakeName((folder / "document.").string());
  std::filesystem::create_symlink(file_, link_, error);
}

void JournalWriter::Remove() {
  std::error_code error;
  if (!file_.empty()) std::filesystem::remove(file_, error);
  if (!link_.empty()) std::filesystem::remove(link_, error);
  file_.clear();
  link_.clear();
  is_changed_ = false;
}

}  // namespace ScEng
