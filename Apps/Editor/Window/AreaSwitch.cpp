// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Window/AreaSwitch.h"

#include <QApplication>
#include <algorithm>

namespace {

bool TakesKeyboard(const QWidget& widget) {
  return widget.isVisible() && widget.isEnabled() && (widget.focusPolicy() & Qt::TabFocus) != 0;
}

bool IsIn(const QWidget& area, const QWidget* widget) {
  return widget != nullptr && (widget == &area || area.isAncestorOf(widget));
}

}  // namespace

AreaSwitch::AreaSwitch(QMainWindow& window, const DockFrames& docks) : window_(window), docks_(docks) {
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { Remember(now); });
}

std::vector<QWidget*> AreaSwitch::ListAreas() const {
  std::vector<QWidget*> areas;
  if (QWidget* middle = window_.centralWidget()) areas.push_back(middle);
  for (QDockWidget* frame : docks_.GetAll()) {
    // Of those that share a place, one is seen.
    if (frame->isVisible() && !frame->visibleRegion().isEmpty()) areas.push_back(frame);
  }
  std::erase_if(areas, [this](QWidget* area) { return FindTarget(*area) == nullptr; });
  return areas;
}

QWidget* AreaSwitch::FindTarget(QWidget& area) const {
  const auto last = last_.find(&area);
  if (last != last_.end() && IsIn(area, last->second) && TakesKeyboard(*last->second)) return last->second;
  // The chain goes round through every widget of the window.
  for (QWidget* widget = area.nextInFocusChain(); widget != &area; widget = widget->nextInFocusChain()) {
    if (!IsIn(area, widget)) continue;
    QWidget* target = widget->focusProxy() == nullptr ? widget : widget->focusProxy();
    if (IsIn(area, target) && TakesKeyboard(*target)) return target;
  }
  return nullptr;
}

void AreaSwitch::Go(int steps) {
  const std::vector<QWidget*> areas = ListAreas();
  if (areas.empty()) return;
  const QWidget* focus = QApplication::focusWidget();
  const auto here = std::find_if(areas.begin(), areas.end(), [&](const QWidget* area) { return IsIn(*area, focus); });
  const auto count = static_cast<std::ptrdiff_t>(areas.size());
  // From nowhere, the next area is the first one.
  const std::ptrdiff_t from = here == areas.end() ? (steps > 0 ? -1 : 0) : here - areas.begin();
  QWidget* area = areas[static_cast<std::size_t>((from + steps + count) % count)];
  QWidget* target = FindTarget(*area);
  target->window()->activateWindow();
  target->setFocus(steps > 0 ? Qt::TabFocusReason : Qt::BacktabFocusReason);
}

void AreaSwitch::Remember(QWidget* now) {
  if (now == nullptr) return;
  QWidget* middle = window_.centralWidget();
  if (middle != nullptr && IsIn(*middle, now)) last_[middle] = now;
  for (QDockWidget* frame : docks_.GetAll()) {
    if (IsIn(*frame, now)) last_[frame] = now;
  }
}
