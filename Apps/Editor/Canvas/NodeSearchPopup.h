// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFrame>
#include <functional>

#include "Apps/Editor/Canvas/NodeTypes.h"
#include "Apps/Editor/Canvas/NodeUsage.h"

class QLabel;
class QLineEdit;
class QListWidget;

/// A search for a node type, used by the keyboard alone: typing finds, arrows choose, Enter takes, Escape closes.
class NodeSearchPopup : public QFrame {
  Q_OBJECT

 public:
  using Filter = std::function<bool(const TypeInfo&)>;

  /// Types and usage outlive the popup.
  NodeSearchPopup(const NodeTypes& types, const NodeUsage& usage, QWidget* parent);

  /// Opens at a place of the screen with the types that the filter takes.
  void Open(const QPoint& global, Filter filter);

 signals:
  void Chosen(const TypeInfo* type);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void List(const QString& words);
  [[nodiscard]] std::vector<const TypeInfo*> Find(const QString& words) const;
  void ShowSentence();
  void Take();
  void MoveMark(int rows);

  const NodeTypes& types_;
  const NodeUsage& usage_;
  Filter filter_;
  QLineEdit* words_;
  QListWidget* list_;
  QLabel* sentence_;
};
