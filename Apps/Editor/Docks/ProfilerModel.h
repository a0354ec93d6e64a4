// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAbstractTableModel>
#include <QSortFilterProxyModel>
#include <string>
#include <unordered_map>
#include <vector>

#include "Host/Editing/BackgroundEvaluator.h"

/// What the evaluation of each node took, a row each, and a last row for all of them.
class ProfilerModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { kNode, kTime, kMemory, kEvaluations, kColumns };
  /// The number behind the text of a cell.
  static constexpr int kNumber = Qt::UserRole;
  /// The share of the longest time that a node took, from 0 to 1; only of times.
  static constexpr int kShare = Qt::UserRole + 1;
  static constexpr int kIsTotal = Qt::UserRole + 2;

  struct Row {
    std::string id;
    double seconds = 0.0;
    std::size_t bytes = 0;
    std::size_t evaluations = 0;
  };

  using QAbstractTableModel::QAbstractTableModel;

  /// Takes the facts of one evaluation for every entry.
  void Add(const std::vector<ScEng::NodeFacts>& facts);
  /// Leaves out the nodes of which `has_id` does not know.
  void Keep(const std::function<bool(const std::string&)>& has_id);
  void Rename(const std::string& before, const std::string& now);
  /// The id of a node; empty for the last row.
  [[nodiscard]] std::string GetId(int row) const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  [[nodiscard]] Row MakeTotal() const;
  [[nodiscard]] bool HasTotal() const { return !rows_.empty(); }
  void CountRows();

  std::vector<Row> rows_;
  std::unordered_map<std::string, std::size_t> places_;
  double longest_ = 0.0;
};

/// Sorts by the numbers, and keeps the row for all nodes at the end.
class ProfilerOrder : public QSortFilterProxyModel {
 public:
  using QSortFilterProxyModel::QSortFilterProxyModel;

 protected:
  [[nodiscard]] bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
};
