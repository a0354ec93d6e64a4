// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Window/DockFrames.h"

#include <QCoreApplication>
#include <algorithm>

namespace {

struct Place {
  const char* name;
  const char* title;
  bool is_open;
};

constexpr Place kPlaces[] = {
    {"viewer", QT_TRANSLATE_NOOP("DockFrames", "Viewer"), true},
    {"terrain", QT_TRANSLATE_NOOP("DockFrames", "3D View"), false},
    {"panel", QT_TRANSLATE_NOOP("DockFrames", "Attributes"), true},
    {"help", QT_TRANSLATE_NOOP("DockFrames", "Help"), false},
    {"outputs", QT_TRANSLATE_NOOP("DockFrames", "Outputs"), false},
    {"problems", QT_TRANSLATE_NOOP("DockFrames", "Problems"), true},
    {"profiler", QT_TRANSLATE_NOOP("DockFrames", "Profiler"), false},
    {"history", QT_TRANSLATE_NOOP("DockFrames", "History"), false},
    {"missing", QT_TRANSLATE_NOOP("DockFrames", "Missing Files"), false},
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
  for (QDockWidget* frame : frames_) {
    frame->setFloating(false);
    window_.removeDockWidget(frame);
  }
  window_.setCorner(Qt::BottomRightCorner, Qt::RightDockWidgetArea);
  // What shares its place with another dock cannot be split from it any more, so the splits come first.
  window_.addDockWidget(Qt::RightDockWidgetArea, Find("viewer"));
  window_.splitDockWidget(Find("viewer"), Find("panel"), Qt::Vertical);
  window_.tabifyDockWidget(Find("viewer"), Find("terrain"));
  window_.tabifyDockWidget(Find("panel"), Find("help"));
  window_.addDockWidget(Qt::BottomDockWidgetArea, Find("problems"));
  for (const char* name : {"outputs", "profiler", "history", "missing"}) {
    window_.tabifyDockWidget(Find("problems"), Find(name));
  }
  ShowOnly({});
}

void DockFrames::Resize() {
  const int width = window_.width();
  const int height = window_.height();
  window_.resizeDocks({Find("viewer"), Find("terrain"), Find("panel"), Find("help")},
                      {width * 2 / 5, width * 2 / 5, width * 2 / 5, width * 2 / 5}, Qt::Horizontal);
  window_.resizeDocks({Find("viewer"), Find("terrain"), Find("panel"), Find("help")},
                      {height * 3 / 5, height * 3 / 5, height * 2 / 5, height * 2 / 5}, Qt::Vertical);
  // A list of problems is short; an output has fields.
  const int bottom = Find("outputs")->isVisible() ? height / 4 : height / 8;
  window_.resizeDocks({Find("problems"), Find("outputs"), Find("profiler"), Find("history"), Find("missing")},
                      {bottom, bottom, bottom, bottom, bottom}, Qt::Vertical);
}

void DockFrames::Raise(const std::string& name) {
  QDockWidget* frame = Find(name);
  if (frame == nullptr) return;
  frame->show();
  frame->raise();
  if (QWidget* content = frame->widget()) content->setFocus(Qt::OtherFocusReason);
}
