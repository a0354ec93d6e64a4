// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/NodeUsage.h"

#include <algorithm>

namespace {

constexpr std::size_t kMostTypes = 16;
constexpr int kMostUses = 1000000;

}  // namespace

void NodeUsage::Count(const std::string& type_name) {
  const auto known =
      std::find_if(types_.begin(), types_.end(), [&](const auto& entry) { return entry.first == type_name; });
  const int uses = known == types_.end() ? 0 : known->second;
  if (known != types_.end()) types_.erase(known);
  types_.insert(types_.begin(), {type_name, std::min(uses + 1, kMostUses)});
  if (types_.size() > kMostTypes) types_.pop_back();
}

std::vector<std::string> NodeUsage::Rank() const {
  std::vector<std::pair<int, std::string>> ranked;
  // A place nearer to the front counts as one more use.
  int bonus = static_cast<int>(kMostTypes);
  for (const auto& [type_name, uses] : types_) ranked.emplace_back(uses + bonus--, type_name);
  std::stable_sort(ranked.begin(), ranked.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
  std::vector<std::string> names;
  for (auto& [rank, type_name] : ranked) names.push_back(std::move(type_name));
  return names;
}

QStringList NodeUsage::Save() const {
  QStringList lines;
  for (const auto& [type_name, uses] : types_)
    lines << QStringLiteral("%1=%2").arg(QString::fromStdString(type_name)).arg(uses);
  return lines;
}

void NodeUsage::Load(const QStringList& lines) {
  types_.clear();
  for (const QString& line : lines) {
    const qsizetype sign = line.lastIndexOf(QLatin1Char('='));
    bool is_number = false;
    const int uses = line.mid(sign + 1).toInt(&is_number);
    if (sign <= 0 || !is_number || uses <= 0 || types_.size() >= kMostTypes) continue;
    types_.emplace_back(line.left(sign).toStdString(), std::min(uses, kMostUses));
  }
}
