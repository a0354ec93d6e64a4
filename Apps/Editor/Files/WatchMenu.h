// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMenu>
#include <QPointer>
#include <QString>

#include "Apps/Editor/Files/FileWatcher.h"

class QActionGroup;

/// Chooses what happens when files that a document reads have changed, for this document and all others.
class WatchMenu : public QMenu {
  Q_OBJECT

 public:
  WatchMenu(const QString& settings_file, QWidget* parent);

  /// Shows and sets the mode of another document's watcher.
  void Follow(FileWatcher& watcher);

 private:
  void Add(const QString& text, const char* name, FileWatcher::Mode mode);
  void Choose(FileWatcher::Mode mode);
  void ShowMode();

  QString settings_file_;
  QActionGroup* modes_;
  QPointer<FileWatcher> watcher_;
};
