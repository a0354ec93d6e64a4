// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Files/ShortcutsDialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStringList>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <QVariant>

#include "Apps/Editor/Docks/PanelLook.h"
#include "Apps/Editor/Docks/RoomyRows.h"

namespace {

/// The text without what marks its letter, and without the dots of dialogs.
QString MakePlain(QString text) {
  text.replace(QStringLiteral("&&"), QString(QChar(1)));
  text.remove(u'&');
  text.replace(QChar(1), u'&');
  text.remove(u'…');
  // Some languages have a space before the dots.
  return (text.endsWith(QStringLiteral("...")) ? text.chopped(3) : text).trimmed();
}

/// What keyboards have: the usual keys of some actions come with keys that few of them do.
QStringList NameKeys(const QList<QKeySequence>& sequences) {
  QStringList keys;
  for (const QKeySequence& sequence : sequences) {
    const Qt::Key last = sequence.isEmpty() ? Qt::Key_unknown : sequence[static_cast<uint>(sequence.count() - 1)].key();
    const bool is_rare = last >= Qt::Key_F13 && last <= Qt::Key_F35;
    if (!is_rare || sequences.size() == 1) keys += sequence.toString(QKeySequence::NativeText);
  }
  return keys;
}

}  // namespace

ShortcutsDialog::ShortcutsDialog(const QList<QAction*>& actions, QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("shortcuts"));
  setWindowTitle(tr("Keyboard Shortcuts"));
  auto* layout = new QVBoxLayout(this);
  search_ = new QLineEdit(this);
  search_->setObjectName(QStringLiteral("shortcuts.search"));
  search_->setAccessibleName(tr("Search"));
  search_->setPlaceholderText(tr("Search by name or keys"));
  search_->setClearButtonEnabled(true);
  layout->addWidget(search_);
  list_ = new QTreeWidget(this);
  list_->setObjectName(QStringLiteral("shortcuts.list"));
  list_->setAccessibleName(tr("Shortcuts"));
  list_->setRootIsDecorated(false);
  list_->setUniformRowHeights(true);
  list_->setAllColumnsShowFocus(true);
  list_->setItemDelegate(new RoomyRows(list_));
  list_->setHeaderLabels({tr("Action"), tr("Keys")});
  // Names are read whole; keys have what is left.
  list_->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
  list_->header()->setStretchLastSection(true);
  for (const QAction* action : actions) {
    if (action == nullptr || action->shortcuts().isEmpty()) continue;
    const QStringList keys = NameKeys(action->shortcuts());
    auto* item = new QTreeWidgetItem(list_);
    const QVariant name = action->property(kActionName);
    item->setText(0, MakePlain(name.isValid() ? name.toString() : action->text()));
    item->setText(1, keys.join(tr(" or ")));
    item->setToolTip(1, item->text(1));
    if (!action->toolTip().isEmpty()) item->setToolTip(0, action->toolTip());
  }
  layout->addWidget(list_, 1);
  empty_ = new QLabel(tr("No shortcut has these words."), this);
  empty_->setObjectName(QStringLiteral("shortcuts.empty"));
  empty_->setAlignment(Qt::AlignCenter);
  empty_->setEnabled(false);
  empty_->hide();
  layout->addWidget(empty_, 1);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout->addWidget(buttons);
  connect(search_, &QLineEdit::textChanged, this, &ShortcutsDialog::Filter);
  // Enter in the field is part of searching.
  buttons->button(QDialogButtonBox::Close)->setAutoDefault(false);
  const int character = fontMetrics().averageCharWidth();
  resize(character * 70, character * 80);
  UsePanelLook(*this);
  search_->setFocus();
}

void ShortcutsDialog::Filter(const QString& text) {
  const QStringList words = text.split(u' ', Qt::SkipEmptyParts);
  int shown = 0;
  for (int row = 0; row < list_->topLevelItemCount(); ++row) {
    QTreeWidgetItem* item = list_->topLevelItem(row);
    const QString line = item->text(0) + u' ' + item->text(1);
    bool has_all = true;
    for (const QString& word : words) has_all = has_all && line.contains(word, Qt::CaseInsensitive);
    item->setHidden(!has_all);
    shown += has_all ? 1 : 0;
  }
  list_->setVisible(shown > 0);
  empty_->setVisible(shown == 0);
}
