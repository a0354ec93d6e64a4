// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAction>
#include <QDialog>
#include <QList>

class QLabel;
class QLineEdit;
class QTreeWidget;

/// The property of an action that holds its name, where its text says more than that.
inline constexpr char kActionName[] = "action_name";

/// Every action that has a shortcut, with a field to search by name or by keys.
class ShortcutsDialog : public QDialog {
  Q_OBJECT

 public:
  explicit ShortcutsDialog(const QList<QAction*>& actions, QWidget* parent = nullptr);

 private:
  void Filter(const QString& text);

  QLineEdit* search_ = nullptr;
  QTreeWidget* list_ = nullptr;
  QLabel* empty_ = nullptr;
};
