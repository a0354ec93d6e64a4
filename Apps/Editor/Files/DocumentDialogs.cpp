// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/DocumentDialogs.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>

#include "Apps/Editor/Files/SaveAsTo.h"

namespace {

QString RunFileDialog(QFileDialog& dialog, const QString& name, const QString& folder) {
  dialog.setObjectName(name);
  dialog.setNameFilters({DocumentDialogs::tr("Value graphs (*.json)"), DocumentDialogs::tr("All files (*)")});
  if (!folder.isEmpty()) dialog.setDirectory(folder);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
  return dialog.selectedFiles().front();
}

}  // namespace

QString DocumentDialogs::GetName(const ScEng::EditSession& session) {
  const std::filesystem::path& file = session.GetFile();
  return file.empty() ? tr("Untitled") : QString::fromStdString(file.filename().string());
}

QString DocumentDialogs::AskForFile(const QString& folder) const {
  QFileDialog dialog(window_, tr("Open"));
  dialog.setFileMode(QFileDialog::ExistingFile);
  return RunFileDialog(dialog, QStringLiteral("open_document"), folder);
}

QString DocumentDialogs::AskForNewFile(const ScEng::EditSession& session) const {
  QFileDialog dialog(window_, tr("Save As"));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setDefaultSuffix(QStringLiteral("json"));
  const std::filesystem::path& file = session.GetFile();
  dialog.selectFile(file.empty() ? tr("untitled.json") : QString::fromStdString(file.filename().string()));
  return RunFileDialog(dialog, QStringLiteral("save_document"), QString::fromStdString(file.parent_path().string()));
}

DocumentDialogs::Answer DocumentDialogs::AskAboutChanges(const ScEng::EditSession& session) const {
  QMessageBox question(QMessageBox::Warning, tr("Unsaved Changes"), tr("Save the changes to %1?").arg(GetName(session)),
                       QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, window_);
  question.setObjectName(QStringLiteral("unsaved_changes"));
  question.setTextFormat(Qt::PlainText);
  question.setInformativeText(tr("What is not saved is lost."));
  question.setDefaultButton(QMessageBox::Save);
  question.setEscapeButton(QMessageBox::Cancel);
  switch (question.exec()) {
    case QMessageBox::Save: return Answer::kSave;
    case QMessageBox::Discard: return Answer::kDiscard;
    default: return Answer::kCancel;
  }
}

void DocumentDialogs::ShowError(const QString& title, const QString& message) const {
  QMessageBox box(QMessageBox::Critical, title, message, QMessageBox::Ok, window_);
  box.setTextFormat(Qt::PlainText);
  box.setObjectName(QStringLiteral("document_error"));
  box.exec();
}

bool DocumentDialogs::Save(ScEng::EditSession& session) const {
  if (session.GetFile().empty()) return SaveAs(session);
  const ScEng::Status status = session.Save();
  if (status.IsError()) ShowError(tr("Cannot Save"), QString::fromStdString(status.GetMessage()));
  return !status.IsError();
}

bool DocumentDialogs::SaveAs(ScEng::EditSession& session) const {
  const QString file = AskForNewFile(session);
  if (file.isEmpty()) return false;
  const ScEng::Status status = SaveAsTo(session, file.toStdString());
  if (status.IsError()) ShowError(tr("Cannot Save"), QString::fromStdString(status.GetMessage()));
  return !status.IsError();
}

bool DocumentDialogs::MayClose(ScEng::EditSession& session) const {
  if (!session.IsModified()) return true;
  switch (AskAboutChanges(session)) {
    case Answer::kSave: return Save(session);
    case Answer::kDiscard: return true;
    default: return false;
  }
}
