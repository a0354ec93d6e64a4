// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/ProblemsModel.h"

#include <algorithm>
#include <utility>

#include "Apps/Editor/Docks/PlainTip.h"
#include "Apps/Editor/Docks/Signs.h"

void ProblemsModel::Update(std::vector<Problem> problems) {
  std::stable_partition(problems.begin(), problems.end(), [](const Problem& problem) { return problem.is_error; });
  // What is the same at the start and at the end stays.
  std::size_t lead = 0;
  const std::size_t shorter = std::min(problems.size(), problems_.size());
  while (lead < shorter && problems[lead] == problems_[lead]) ++lead;
  std::size_t tail = 0;
  while (tail < shorter - lead && problems[problems.size() - 1 - tail] == problems_[problems_.size() - 1 - tail]) {
    ++tail;
  }
  const auto at = [](std::size_t place) { return static_cast<std::ptrdiff_t>(place); };
  const std::size_t removed_end = problems_.size() - tail;
  if (lead < removed_end) {
    beginRemoveRows({}, static_cast<int>(lead), static_cast<int>(removed_end) - 1);
    problems_.erase(problems_.begin() + at(lead), problems_.begin() + at(removed_end));
    endRemoveRows();
  }
  const std::size_t added_end = problems.size() - tail;
  if (lead < added_end) {
    beginInsertRows({}, static_cast<int>(lead), static_cast<int>(added_end) - 1);
    problems_.insert(problems_.begin() + at(lead), problems.begin() + at(lead), problems.begin() + at(added_end));
    endInsertRows();
  }
}

int ProblemsModel::CountErrors() const {
  return static_cast<int>(
      std::count_if(problems_.begin(), problems_.end(), [](const Problem& p) { return p.is_error; }));
}

int ProblemsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(problems_.size());
}

int ProblemsModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : kColumns; }

QVariant ProblemsModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const Problem& problem = problems_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case Qt::DisplayRole:
      if (index.column() == kText) return QString::fromStdString(problem.text);
      return problem.id.empty() ? tr("Document") : QString::fromStdString(problem.id);
    case Qt::ToolTipRole: return MakePlainTip(QString::fromStdString(problem.text));
    case Qt::DecorationRole:
      if (index.column() != kNode) return {};
      return problem.is_error ? MakeSignIcon(Sign::kError) : MakeSignIcon(Sign::kNote);
    case Qt::AccessibleTextRole:
      if (index.column() != kNode) return {};
      return (problem.is_error ? tr("Error at %1") : tr("Note on %1")).arg(data(index, Qt::DisplayRole).toString());
    default: return {};
  }
}

QVariant ProblemsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return section == kNode ? tr("Node") : tr("Message");
}
