// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Window/DockFrames.h"

#include <QCoreApplication>
#include <algorithm>

namespace {

struct Place {
  const char* name;
  const char* title;
  Qt::DockWidgetArea area;
  bool is_open;
};

constexpr Place kPlaces[] = {
    {"viewer", QT_TRANSLATE_NOOP("DockFrames", "Viewer"), Qt::RightDockWidgetArea, true},
    {"terrain", QT_TRANSLATE_NOOP("DockFrames", "3D view"), Qt::RightDockWidgetArea, false},
    {"panel", QT_TRANSLATE_NOOP("DockFrames", "Attributes"), Qt::RightDockWidgetArea, true},
    {"help", QT_TRANSLATE_NOOP("DockFrames", "Help"), Qt::RightDockWidgetArea, false},
    {"outputs", QT_TRANSLATE_NOOP("DockFrames", "Outputs"), Qt::BottomDockWidgetArea, false},
    {"problems", QT_TRANSLATE_NOOP("DockFrames", "Problems"), Qt::BottomDockWidgetArea, true},
    {"profiler", QT_TRANSLATE_NOOP("DockFrames", "Profiler"), Qt::BottomDockWidgetArea, false},
    {"history", QT_TRANSLATE_NOOP("DockFrames", "History"), Qt::BottomDockWidgetArea, false},
};

}  // namespace

DockFrames::DockFrames(QMainWindow& window) : window_(window) {
  window.setDockNestingEnabled(true);
  window.setTabPosition(Qt::AllDockWidgetAreas, QTabWidget::North);
  for (const Place& place : kPlaces) {
    auto* frame = new QDockWidget(QCoreApplication::translate("DockFrames", place.title), &window);
    frame->setObjectName(QStringLiteral("dock.") + QLatin1String(place.name));
    frames_.push_back(frame);
  }
  Arrange();
}

const std::vector<std::string>& DockFrames::GetNames() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> all;
    for (const Place& place : kPlaces) all.emplace_back(place.name);
    return all;
  }();
  return names;
}

QDockWidget* DockFrames::Find(const std::string& name) const {
  const auto& names = GetNames();
  const auto found = std::find(names.begin(), names.end(), name);
  return found == names.end() ? nullptr : frames_[static_cast<std::size_t>(found - names.begin())];
}

void DockFrames::ShowOnly(const std::vector<std::string>& names) {
  for (std::size_t i = 0; i < frames_.size(); ++i) {
    const bool is_named = std::find(names.begin(), names.end(), kPlaces[i].name) != names.end();
    frames_[i]->setVisible(names.empty() ? kPlaces[i].is_open : is_named);
  }
  for (const std::string& name : names) {
    if (QDockWidget* frame = Find(name)) frame->raise();
  }
}

void DockFrames::Arrange() {
  for (std::size_t i = 0; i < frames_.size(); ++i) {
    frames_[i]->setFloating(false);
    window_.addDockWidget(kPlaces[i].area, frames_[i]);
  }
  window_.setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
  window_.tabifyDockWidget(Find("viewer"), Find("terrain"));
  window_.splitDockWidget(Find("viewer"), Find("panel"), Qt::Vertical);
  window_.tabifyDockWidget(Find("panel"), Find("help"));
  for (const char* name : {"problems", "profiler", "history"}) window_.tabifyDockWidget(Find("outputs"), Find(name));
  ShowOnly({});
  const int height = window_.height();
  window_.resizeDocks({Find("viewer"), Find("panel")}, {height * 55 / 100, height * 45 / 100}, Qt::Vertical);
  window_.resizeDocks({Find("viewer")}, {window_.width() * 42 / 100}, Qt::Horizontal);
  window_.resizeDocks({Find("problems")}, {height * 16 / 100}, Qt::Vertical);
}

void DockFrames::Raise(const std::string& name) {
  QDockWidget* frame = Find(name);
  if (frame == nullptr) return;
  frame->show();
  frame->raise();
  if (QWidget* content = frame->widget()) content->setFocus(Qt::OtherFocusReason);
}
