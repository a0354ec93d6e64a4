// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAbstractTableModel>
#include <vector>

#include "Host/Documents/DocumentParts.h"

/// The outputs of a document, a row each.
class OutputsModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { kFrom, kPath, kType, kColumns };
  using QAbstractTableModel::QAbstractTableModel;

  void Update(const std::vector<ScEng::DocumentOutput>& outputs);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  std::vector<ScEng::DocumentOutput> outputs_;
};
