// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCoreApplication>
#include <QString>

#include "Host/Editing/EditSession.h"

class QWidget;

/// What the window asks about documents and their files. Each waits for the answer.
class DocumentDialogs {
  Q_DECLARE_TR_FUNCTIONS(DocumentDialogs)

 public:
  enum class Answer { kSave, kDiscard, kCancel };

  explicit DocumentDialogs(QWidget* window) : window_(window) {}

  /// What people call a document: the name of its file, or "Untitled".
  static QString GetName(const ScEng::EditSession& session);

  /// The file of a document to open; empty when nobody chose one.
  [[nodiscard]] QString AskForFile(const QString& folder) const;
  /// The file to save to, with ".json" where it was given no ending; empty when nobody chose one.
  [[nodiscard]] QString AskForNewFile(const ScEng::EditSession& session) const;
  /// What is to become of changes that were not saved.
  [[nodiscard]] Answer AskAboutChanges(const ScEng::EditSession& session) const;
  /// Shows a line about what could not be done.
  void ShowError(const QString& title, const QString& message) const;

  /// Saves to the document's file, asking for one where it has none. False when it was not saved.
  bool Save(ScEng::EditSession& session) const;
  /// Asks for a file and saves there, so that relative paths mean the same files. False when it was not saved.
  bool SaveAs(ScEng::EditSession& session) const;
  /// Whether the document may go: it has no changes, they were saved, or nobody wants them.
  bool MayClose(ScEng::EditSession& session) const;

 private:
  QWidget* window_;
};
