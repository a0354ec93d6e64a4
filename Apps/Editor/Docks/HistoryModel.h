// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAbstractListModel>
#include <string>
#include <vector>

/// The history of a document as a list: the state that it was opened in, then a row per command.
class HistoryModel : public QAbstractListModel {
  Q_OBJECT

 public:
  /// Whether the row is the place where the document is.
  static constexpr int kIsCurrent = Qt::UserRole;

  using QAbstractListModel::QAbstractListModel;

  /// Takes over what has changed, and leaves the other rows alone.
  void Update(const QString& start, const std::vector<std::string>& names, std::size_t place);
  [[nodiscard]] int GetPlace() const { return place_; }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

 private:
  QString start_;
  std::vector<std::string> names_;
  int place_ = 0;
};
