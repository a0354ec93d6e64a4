// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/OutputsModel.h"

void OutputsModel::Update(const std::vector<ScEng::DocumentOutput>& outputs) {
  if (outputs == outputs_) return;
  const int before = rowCount();
  const int now = static_cast<int>(outputs.size());
  // Rows are told by their places; those behind one that was removed are changed.
  if (now < before) {
    beginRemoveRows({}, now, before - 1);
    outputs_ = outputs;
    endRemoveRows();
  } else if (now > before) {
    beginInsertRows({}, before, now - 1);
    outputs_ = outputs;
    endInsertRows();
  } else {
    outputs_ = outputs;
  }
  if (now > 0) emit dataChanged(index(0, 0), index(now - 1, kColumns - 1));
}

int OutputsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(outputs_.size());
}

int OutputsModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : kColumns; }

QVariant OutputsModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::ToolTipRole)) return {};
  const ScEng::DocumentOutput& output = outputs_[static_cast<std::size_t>(index.row())];
  switch (index.column()) {
    case kFrom: return QString::fromStdString(output.from);
    case kPath:
      return QString::fromStdString(output.layer.empty() ? output.path : output.path + " (" + output.layer + ")");
    default:
      return output.type.empty() || output.type == "auto" ? tr("Automatic") : QString::fromStdString(output.type);
  }
}

QVariant OutputsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  switch (section) {
    case kFrom: return tr("Image");
    case kPath: return tr("File");
    default: return tr("Samples");
  }
}
