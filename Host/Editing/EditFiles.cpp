// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "Host/Editing/JournalText.h"
#include "Host/Editing/SessionState.h"

namespace ScEng {

std::unique_ptr<EditSession> EditSession::Open(const std::shared_ptr<const NodeCatalog>& catalog,
                                               const std::filesystem::path& file,
                                               const std::filesystem::path& state_folder, Findings& findings) {
  auto session = std::make_unique<EditSession>(catalog, state_folder);
  Implementation& state = *session->implementation_;
  const std::size_t errors = findings.GetNumErrors();
  state.document->Load(file, findings, {UnknownTypes::kKeep});
  if (findings.GetNumErrors() != errors) return nullptr;
  state.file = file;
  return session;
}

std::unique_ptr<EditSession> EditSession::Recover(const std::shared_ptr<const NodeCatalog>& catalog,
                                                  const FoundJournal& journal,
                                                  const std::filesystem::path& state_folder, Findings& findings) {
  std::string text;
  JournalHead head;
  std::string_view document;
  Status status = ReadJournalFile(journal.file, text);
  if (!status.IsError()) status = ParseJournalText(text, head, document);
  if (!status.IsError() && IsRunning(head.writer)) {
    status = Status::Error("the program that wrote it is still running");
  }
  if (status.IsError()) {
    findings.AddError("cannot recover from \"" + journal.file.string() + "\": " + status.GetMessage());
    return nullptr;
  }
  auto session = std::make_unique<EditSession>(catalog, state_folder);
  Implementation& state = *session->implementation_;
  const std::size_t errors = findings.GetNumErrors();
  state.document->LoadText(document, head.folder, journal.file.string(), findings, {UnknownTypes::kKeep});
  if (findings.GetNumErrors() != errors) return nullptr;
  state.file = head.document;
  state.history.ForgetSaved();
  state.journal.TakeOver(journal.file);
  state.journal.NoteChange();
  return session;
}

Status EditSession::Save() {
  const std::filesystem::path& file = implementation_->file;
  return file.empty() ? Status::Error("the document has no file yet") : SaveAs(file);
}

Status EditSession::SaveAs(const std::filesystem::path& file) {
  const Status status = implementation_->document->Save(file);
  if (status.IsError()) return status;
  implementation_->file = file;
  DocumentEdits(*implementation_->document).SetFolder(file.parent_path());
  implementation_->history.MarkSaved();
  implementation_->journal.Remove();
  implementation_->TellHistoryChanged();
  return {};
}

Status EditSession::Tick(Time now) {
  Implementation& state = *implementation_;
  return state.journal.Tick(now, *state.document, state.file, state.history.IsModified());
}

void EditSession::Close() { implementation_->journal.Remove(); }

}  // namespace ScEng
