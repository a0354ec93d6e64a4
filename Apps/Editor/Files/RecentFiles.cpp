// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/RecentFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QMenu>

namespace {

const QString kKey = QStringLiteral("recent_files");

}  // namespace

RecentFiles::RecentFiles(const QString& settings_file, QObject* parent)
    : QObject(parent), settings_(settings_file, QSettings::IniFormat) {}

void RecentFiles::Add(const QString& file) {
  if (file.isEmpty()) return;
  const QString path = QDir::cleanPath(QFileInfo(file).absoluteFilePath());
  // Another window may have added its own since.
  settings_.sync();
  QStringList files = settings_.value(kKey).toStringList();
  files.removeAll(path);
  files.prepend(path);
  while (files.size() > kMost) files.removeLast();
  settings_.setValue(kKey, files);
  settings_.sync();
}

void RecentFiles::Clear() {
  settings_.remove(kKey);
  settings_.sync();
}

QStringList RecentFiles::GetFiles() const {
  settings_.sync();
  QStringList files;
  for (const QString& file : settings_.value(kKey).toStringList()) {
    if (QFileInfo(file).isFile() && files.size() < kMost) files += file;
  }
  return files;
}

void RecentFiles::FillMenu(QMenu& menu) {
  menu.clear();
  const QStringList files = GetFiles();
  int number = 0;
  for (const QString& file : files) {
    const QFileInfo info(file);
    ++number;
    // The first nine are chosen by their figures.
    const QString lead = number <= 9 ? QStringLiteral("&%1  ").arg(number) : QStringLiteral("%1  ").arg(number);
    QString name = info.fileName() + QStringLiteral("  —  ") + QDir::toNativeSeparators(info.absolutePath());
    QAction* action = menu.addAction(lead + name.replace(u'&', QStringLiteral("&&")));
    action->setToolTip(file);
    connect(action, &QAction::triggered, this, [this, file] { emit Chosen(file); });
  }
  if (files.isEmpty()) menu.addAction(tr("No recent documents"))->setEnabled(false);
  menu.addSeparator();
  QAction* clear = menu.addAction(tr("Clear List"), this, &RecentFiles::Clear);
  clear->setEnabled(!files.isEmpty());
}
