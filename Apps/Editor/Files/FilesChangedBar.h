// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFrame>
#include <QString>

#include "Apps/Editor/Files/FileWatcher.h"

class QLabel;

/// A line above the canvas that asks whether files that other programs have changed are read again. Hidden while there
/// is nothing to ask.
class FilesChangedBar : public QFrame {
  Q_OBJECT

 public:
  /// The watcher outlives this, and gets the mode of the user's settings.
  FilesChangedBar(FileWatcher& watcher, const QString& settings_file, QWidget* parent = nullptr);

 private:
  void Ask(const QStringList& ids);

  FileWatcher& watcher_;
  QLabel* text_ = nullptr;
};

/// What the user's settings say about files that have changed: to ask, unless they say otherwise.
FileWatcher::Mode ReadWatchMode(const QString& settings_file);
void StoreWatchMode(const QString& settings_file, FileWatcher::Mode mode);
