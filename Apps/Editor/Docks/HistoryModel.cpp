// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/HistoryModel.h"

#include <QApplication>
#include <QFont>
#include <QPalette>
#include <algorithm>

#include "Apps/Editor/Docks/HistoryNames.h"

void HistoryModel::Update(const QString& start, const std::vector<std::string>& names, std::size_t place) {
  const auto [here, there] = std::mismatch(names_.begin(), names_.end(), names.begin(), names.end());
  const int kept = static_cast<int>(here - names_.begin());
  const int count = static_cast<int>(names_.size());
  // Row 0 is the start.
  if (kept < count) {
    beginRemoveRows({}, kept + 1, count);
    names_.erase(here, names_.end());
    endRemoveRows();
  }
  if (there != names.end()) {
    beginInsertRows({}, kept + 1, static_cast<int>(names.size()));
    names_.insert(names_.end(), there, names.end());
    endInsertRows();
  }
  start_ = start;
  place_ = static_cast<int>(place);
  emit dataChanged(index(0), index(rowCount() - 1));
}

int HistoryModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(names_.size()) + 1;
}

QVariant HistoryModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const int row = index.row();
  switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole: return row == 0 ? start_ : TranslateStep(names_[static_cast<std::size_t>(row) - 1]);
    case Qt::FontRole: {
      QFont font = QApplication::font();
      font.setBold(row == place_);
      return font;
    }
    case Qt::ForegroundRole:
      // What was undone.
      return row > place_ ? QVariant(QApplication::palette().brush(QPalette::Disabled, QPalette::Text)) : QVariant();
    case Qt::AccessibleDescriptionRole:
      return row == place_ ? tr("Where the document is") : row > place_ ? tr("Undone") : QString();
    case kIsCurrent: return row == place_;
    default: return {};
  }
}
