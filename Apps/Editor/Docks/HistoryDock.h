// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

#include "Apps/Editor/Docks/HistoryModel.h"
#include "Apps/Editor/Docks/SessionWatch.h"
#include "Host/Editing/EditSession.h"

class QListView;

/// What was done to the document. A click, or Enter, goes to that place of the history.
class HistoryDock : public QWidget {
  Q_OBJECT

 public:
  explicit HistoryDock(ScEng::EditSession& session, QWidget* parent = nullptr);
  ~HistoryDock() override;

 signals:
  /// A line about what could not be done.
  void Failed(const QString& message);

 private:
  void Refresh();
  void GoTo(const QModelIndex& index);

  ScEng::EditSession& session_;
  SessionWatch watch_;
  HistoryModel model_;
  QListView* list_ = nullptr;
};
