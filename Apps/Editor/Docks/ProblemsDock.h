// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QSortFilterProxyModel>
#include <QWidget>
#include <string>
#include <unordered_map>
#include <vector>

#include "Apps/Editor/Docks/ProblemsModel.h"
#include "Apps/Editor/Docks/SessionWatch.h"
#include "Host/Documents/Findings.h"
#include "Host/Editing/BackgroundEvaluator.h"
#include "Host/Editing/EditSession.h"

class QLabel;
class QTreeView;

/// Every error and note of the last evaluation, and what the document lacks. Its title has their number.
class ProblemsDock : public QWidget {
  Q_OBJECT

 public:
  explicit ProblemsDock(ScEng::EditSession& session, QWidget* parent = nullptr);
  ~ProblemsDock() override;

  /// Takes the facts of nodes that were evaluated; what was said of other nodes stays.
  void SetFacts(const std::vector<ScEng::NodeFacts>& facts);
  [[nodiscard]] int CountErrors() const { return model_.CountErrors(); }

 signals:
  void NodeActivated(const QString& id);
  void CountChanged(int errors, int notes);

 private:
  /// Asks the document anew.
  void Refresh();
  /// Shows what nodes and document have said.
  void ShowProblems();
  void Rename(const std::string& before, const std::string& now);
  [[nodiscard]] std::vector<Problem> CollectProblems() const;
  void Activate(const QModelIndex& index);

  ScEng::EditSession& session_;
  SessionWatch watch_;
  ProblemsModel model_;
  QSortFilterProxyModel order_;
  std::unordered_map<std::string, std::vector<Problem>> said_;
  ScEng::Findings findings_;
  QTreeView* view_ = nullptr;
  QLabel* empty_ = nullptr;
};
