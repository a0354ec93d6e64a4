// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/WatchMenu.h"

#include <QActionGroup>

#include "Apps/Editor/Files/FilesChangedBar.h"

WatchMenu::WatchMenu(const QString& settings_file, QWidget* parent)
    : QMenu(tr("&Changed Image Files"), parent), settings_file_(settings_file), modes_(new QActionGroup(this)) {
  setObjectName(QStringLiteral("file.changed"));
  Add(tr("&Ask"), "file.changed.ask", FileWatcher::Mode::kAsk);
  Add(tr("&Read Again at Once"), "file.changed.always", FileWatcher::Mode::kAutomatic);
  Add(tr("&Leave Alone"), "file.changed.never", FileWatcher::Mode::kNever);
}

void WatchMenu::Add(const QString& text, const char* name, FileWatcher::Mode mode) {
  QAction* action = addAction(text);
  action->setObjectName(QLatin1String(name));
  action->setCheckable(true);
  action->setData(static_cast<int>(mode));
  modes_->addAction(action);
  connect(action, &QAction::triggered, this, [this, mode] { Choose(mode); });
}

void WatchMenu::Follow(FileWatcher& watcher) {
  watcher_ = &watcher;
  connect(&watcher, &FileWatcher::ModeChanged, this, &WatchMenu::ShowMode);
  ShowMode();
}

void WatchMenu::Choose(FileWatcher::Mode mode) {
  StoreWatchMode(settings_file_, mode);
  if (watcher_ != nullptr) watcher_->SetMode(mode);
}

void WatchMenu::ShowMode() {
  if (watcher_ == nullptr) return;
  for (QAction* action : modes_->actions()) {
    action->setChecked(action->data().toInt() == static_cast<int>(watcher_->GetMode()));
  }
}
