// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/Probes.h"

#include <algorithm>

namespace ScEng {

ProbeList::ProbeList(QObject* parent) : QObject(parent) {}

void ProbeList::SetProbes(const std::vector<Probe>& probes) {
  probes_.clear();
  for (Probe probe : probes) {
    if (probe.number < 1 || Find(probe.number) != nullptr) probe.number = FindFreeNumber();
    probe.width = std::max(1, probe.width);
    probe.height = std::max(1, probe.height);
    probes_.push_back(probe);
  }
  if (Find(selected_) == nullptr) Select(0);
  Q_EMIT Changed();
}

const Probe* ProbeList::Find(int number) const {
  const auto found = std::find_if(probes_.begin(), probes_.end(), [&](const Probe& p) { return p.number == number; });
  return found == probes_.end() ? nullptr : &*found;
}

int ProbeList::Add(int x, int y, int width, int height) {
  const int number = FindFreeNumber();
  const auto place = std::find_if(probes_.begin(), probes_.end(), [&](const Probe& p) { return p.number > number; });
  probes_.insert(place, Probe{number, x, y, std::max(1, width), std::max(1, height)});
  Q_EMIT Changed();
  Select(number);
  return number;
}

void ProbeList::Place(const Probe& probe) {
  for (Probe& own : probes_) {
    if (own.number != probe.number || own == probe) continue;
    own = probe;
    own.width = std::max(1, own.width);
    own.height = std::max(1, own.height);
    Q_EMIT Changed();
    return;
  }
}

void ProbeList::Remove(int number) {
  const auto removed =
      std::remove_if(probes_.begin(), probes_.end(), [&](const Probe& p) { return p.number == number; });
  if (removed == probes_.end()) return;
  probes_.erase(removed, probes_.end());
  Q_EMIT Changed();
  if (selected_ == number) Select(0);
}

void ProbeList::Select(int number) {
  if (selected_ == number) return;
  selected_ = number;
  Q_EMIT SelectionChanged();
}

void ProbeList::SelectNext(int direction) {
  if (probes_.empty()) return;
  const auto count = static_cast<int>(probes_.size());
  int place = direction > 0 ? -1 : count;
  for (int i = 0; i < count; ++i) {
    if (probes_[static_cast<std::size_t>(i)].number == selected_) place = i;
  }
  place = (place + (direction > 0 ? 1 : -1) + count) % count;
  Select(probes_[static_cast<std::size_t>(place)].number);
}

int ProbeList::FindFreeNumber() const {
  int number = 1;
  while (Find(number) != nullptr) ++number;
  return number;
}

}  // namespace ScEng
