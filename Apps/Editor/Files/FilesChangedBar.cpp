// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/FilesChangedBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSettings>

#include "Apps/Editor/Docks/PanelLook.h"
#include "Apps/Editor/Docks/Signs.h"

namespace {

const QString kKey = QStringLiteral("files/read_again");
const QString kAlways = QStringLiteral("always");
const QString kNever = QStringLiteral("never");
const QString kAsk = QStringLiteral("ask");

}  // namespace

FileWatcher::Mode ReadWatchMode(const QString& settings_file) {
  const QString word = QSettings(settings_file, QSettings::IniFormat).value(kKey).toString();
  if (word == kAlways) return FileWatcher::Mode::kAutomatic;
  return word == kNever ? FileWatcher::Mode::kNever : FileWatcher::Mode::kAsk;
}

void StoreWatchMode(const QString& settings_file, FileWatcher::Mode mode) {
  const QString& word = mode == FileWatcher::Mode::kAutomatic ? kAlways
                        : mode == FileWatcher::Mode::kNever   ? kNever
                                                              : kAsk;
  QSettings(settings_file, QSettings::IniFormat).setValue(kKey, word);
}

FilesChangedBar::FilesChangedBar(FileWatcher& watcher, const QString& settings_file, QWidget* parent)
    : QFrame(parent), watcher_(watcher) {
  setObjectName(QStringLiteral("files_changed"));
  setAccessibleName(tr("Changed files"));
  setAutoFillBackground(true);
  setBackgroundRole(QPalette::Base);
  auto* layout = new QHBoxLayout(this);
  const int gap = fontMetrics().height() / 2;
  layout->setContentsMargins(gap, gap / 2, gap, gap / 2);
  auto* sign = new QLabel(this);
  sign->setPixmap(MakeSignIcon(Sign::kNote).pixmap(fontMetrics().height()));
  layout->addWidget(sign);
  text_ = new QLabel(this);
  text_->setObjectName(QStringLiteral("files_changed.text"));
  text_->setTextFormat(Qt::PlainText);
  layout->addWidget(text_, 1);
  const auto add = [&](const QString& name, const QString& text, const QString& tip) {
    auto* button = new QPushButton(text, this);
    button->setObjectName(name);
    button->setAccessibleName(tip);
    button->setToolTip(tip);
    layout->addWidget(button);
    return button;
  };
  auto* read = add(QStringLiteral("files_changed.read"), tr("Read Again"), tr("Read the changed files again"));
  auto* always =
      add(QStringLiteral("files_changed.always"), tr("Always"), tr("Read changed files again without asking"));
  auto* dismiss = add(QStringLiteral("files_changed.dismiss"), tr("Ignore"), tr("Go on with what was read before"));
  connect(read, &QPushButton::clicked, this, [this] { watcher_.Accept(); });
  connect(always, &QPushButton::clicked, this, [this, settings_file] {
    StoreWatchMode(settings_file, FileWatcher::Mode::kAutomatic);
    watcher_.SetMode(FileWatcher::Mode::kAutomatic);
  });
  connect(dismiss, &QPushButton::clicked, this, [this] { watcher_.Dismiss(); });
  connect(&watcher_, &FileWatcher::Offered, this, &FilesChangedBar::Ask);
  connect(&watcher_, &FileWatcher::FilesChanged, this, &QWidget::hide);
  connect(&watcher_, &FileWatcher::Dismissed, this, &QWidget::hide);
  watcher_.SetMode(ReadWatchMode(settings_file));
  UsePanelLook(*this);
  hide();
}

void FilesChangedBar::Ask(const QStringList& ids) {
  text_->setText(ids.size() == 1 ? tr("The file of %1 has changed.").arg(ids.front())
                                 : tr("The files of %1 readers have changed.").arg(ids.size()));
  show();
}
