// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/ProfilerModel.h"

#include <QApplication>
#include <QFont>
#include <QLocale>
#include <algorithm>

namespace {

QString ShowTime(double seconds) {
  constexpr double kMilli = 1e3;
  const double milliseconds = seconds * kMilli;
  if (milliseconds < 10.0) return ProfilerModel::tr("%1 ms").arg(milliseconds, 0, 'f', 2);
  if (milliseconds < kMilli) return ProfilerModel::tr("%1 ms").arg(milliseconds, 0, 'f', 0);
  return ProfilerModel::tr("%1 s").arg(seconds, 0, 'f', 2);
}

}  // namespace

void ProfilerModel::Add(const std::vector<ScEng::NodeFacts>& facts) {
  if (facts.empty()) return;
  const bool had_total = HasTotal();
  std::vector<Row> added;
  for (const ScEng::NodeFacts& fact : facts) {
    const auto [place, is_new] = places_.try_emplace(fact.id, rows_.size() + added.size());
    if (is_new) added.push_back({fact.id});
    Row& row = place->second < rows_.size() ? rows_[place->second] : added[place->second - rows_.size()];
    row.bytes = fact.bytes_held;
    // A node that another one keeps from working was not evaluated.
    if (fact.is_blocked) continue;
    row.seconds = fact.seconds;
    ++row.evaluations;
  }
  if (!added.empty()) {
    const auto first = static_cast<int>(rows_.size());
    const auto last = first + static_cast<int>(added.size()) - 1;
    beginInsertRows({}, first, had_total ? last : last + 1);
    rows_.insert(rows_.end(), added.begin(), added.end());
    endInsertRows();
  }
  CountRows();
}

void ProfilerModel::CountRows() {
  longest_ = 0.0;
  places_.clear();
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    places_[rows_[i].id] = i;
    longest_ = std::max(longest_, rows_[i].seconds);
  }
  if (rowCount() > 0) emit dataChanged(index(0, 0), index(rowCount() - 1, kColumns - 1));
}

void ProfilerModel::Keep(const std::function<bool(const std::string&)>& has_id) {
  bool is_changed = false;
  for (std::size_t i = rows_.size(); i-- > 0;) {
    if (has_id(rows_[i].id)) continue;
    const auto first = static_cast<int>(i);
    beginRemoveRows({}, first, rows_.size() == 1 ? first + 1 : first);
    rows_.erase(rows_.begin() + first);
    endRemoveRows();
    is_changed = true;
  }
  if (is_changed) CountRows();
}

void ProfilerModel::Rename(const std::string& before, const std::string& now) {
  const auto found = places_.find(before);
  if (found == places_.end()) return;
  rows_[found->second].id = now;
  CountRows();
}

std::string ProfilerModel::GetId(int row) const {
  return row >= 0 && row < static_cast<int>(rows_.size()) ? rows_[static_cast<std::size_t>(row)].id : std::string();
}

ProfilerModel::Row ProfilerModel::MakeTotal() const {
  Row total;
  for (const Row& row : rows_) {
    total.seconds += row.seconds;
    total.bytes += row.bytes;
    total.evaluations += row.evaluations;
  }
  return total;
}

int ProfilerModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() || !HasTotal() ? 0 : static_cast<int>(rows_.size()) + 1;
}

int ProfilerModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : kColumns; }

QVariant ProfilerModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const bool is_total = index.row() == static_cast<int>(rows_.size());
  if (role == kIsTotal) return is_total;
  if (role == Qt::FontRole) {
    QFont font = QApplication::font();
    font.setBold(is_total);
    return font;
  }
  if (role == Qt::TextAlignmentRole) {
    return QVariant((index.column() == kNode ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole && role != kNumber && role != kShare) return {};
  const Row row = is_total ? MakeTotal() : rows_[static_cast<std::size_t>(index.row())];
  if (role == kShare) {
    return index.column() == kTime && !is_total && longest_ > 0.0 ? QVariant(row.seconds / longest_) : QVariant();
  }
  const bool is_text = role == Qt::DisplayRole;
  switch (index.column()) {
    case kNode: return is_total ? tr("Total") : QString::fromStdString(row.id);
    case kTime: return is_text ? QVariant(ShowTime(row.seconds)) : QVariant(row.seconds);
    case kMemory: {
      const auto bytes = static_cast<qint64>(row.bytes);
      return is_text ? QVariant(QLocale::c().formattedDataSize(bytes, 1)) : QVariant(bytes);
    }
    default: {
      const auto count = static_cast<qulonglong>(row.evaluations);
      return is_text ? QVariant(QString::number(count)) : QVariant(count);
    }
  }
}

QVariant ProfilerModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole)
    return QVariant((section == kNode ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
  if (role == Qt::ToolTipRole) {
    switch (section) {
      case kTime: return tr("How long the last evaluation took");
      case kMemory: return tr("What the samples of the results take in memory");
      case kEvaluations: return tr("How often the node was evaluated since the document was opened");
      default: return {};
    }
  }
  if (role != Qt::DisplayRole) return {};
  switch (section) {
    case kNode: return tr("Node");
    case kTime: return tr("Time");
    case kMemory: return tr("Memory");
    default: return tr("Evaluations");
  }
}

bool ProfilerOrder::lessThan(const QModelIndex& left, const QModelIndex& right) const {
  // The order is turned around as a whole when it is a descending one.
  const bool is_turned = sortOrder() == Qt::DescendingOrder;
  if (left.data(ProfilerModel::kIsTotal).toBool()) return is_turned;
  if (right.data(ProfilerModel::kIsTotal).toBool()) return !is_turned;
  if (left.column() == ProfilerModel::kNode) {
    return QString::compare(left.data().toString(), right.data().toString(), Qt::CaseInsensitive) < 0;
  }
  return left.data(ProfilerModel::kNumber).toDouble() < right.data(ProfilerModel::kNumber).toDouble();
}
