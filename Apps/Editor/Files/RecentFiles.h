// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QSettings>
#include <QStringList>

class QMenu;

/// The documents that were opened or saved last, the newest first.
class RecentFiles : public QObject {
  Q_OBJECT

 public:
  static constexpr int kMost = 12;

  explicit RecentFiles(const QString& settings_file, QObject* parent = nullptr);

  void Add(const QString& file);
  void Clear();
  /// Those that are there.
  [[nodiscard]] QStringList GetFiles() const;
  /// An entry per file, and one that clears the list.
  void FillMenu(QMenu& menu);

 signals:
  void Chosen(const QString& file);

 private:
  mutable QSettings settings_;
};
