// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMainWindow>
#include <QObject>
#include <QPointer>
#include <map>
#include <vector>

#include "Apps/Editor/Window/DockFrames.h"

/// Takes the keyboard from one area of the window to the next: the middle, then every dock that is seen. An area gets
/// the keyboard back where it had it last.
class AreaSwitch : public QObject {
  Q_OBJECT

 public:
  /// Window and docks outlive the switch.
  AreaSwitch(QMainWindow& window, const DockFrames& docks);

  /// `steps` is 1 for the next area, -1 for the one before.
  void Go(int steps);

 private:
  [[nodiscard]] std::vector<QWidget*> ListAreas() const;
  /// What gets the keyboard in an area; null where nothing there takes it.
  [[nodiscard]] QWidget* FindTarget(QWidget& area) const;
  void Remember(QWidget* now);

  QMainWindow& window_;
  const DockFrames& docks_;
  std::map<QWidget*, QPointer<QWidget>> last_;
};
