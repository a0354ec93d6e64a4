// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <vector>

#include "Apps/Editor/Docks/ProfilerModel.h"
#include "Apps/Editor/Docks/SessionWatch.h"
#include "Host/Editing/BackgroundEvaluator.h"
#include "Host/Editing/EditSession.h"

class QLabel;
class QTreeView;

/// What each node costs: time, memory, and how often it was evaluated.
class ProfilerDock : public QWidget {
  Q_OBJECT

 public:
  explicit ProfilerDock(ScEng::EditSession& session, QWidget* parent = nullptr);
  ~ProfilerDock() override;

  /// Takes the facts of nodes that were evaluated.
  void SetFacts(const std::vector<ScEng::NodeFacts>& facts);

 signals:
  void NodeActivated(const QString& id);

 private:
  void Refresh();
  void Activate(const QModelIndex& index);

  ScEng::EditSession& session_;
  SessionWatch watch_;
  ProfilerModel model_;
  ProfilerOrder order_;
  QTreeView* view_ = nullptr;
  QLabel* empty_ = nullptr;
};
