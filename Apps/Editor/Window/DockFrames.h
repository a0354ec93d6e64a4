// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDockWidget>
#include <QMainWindow>
#include <QString>
#include <string>
#include <vector>

/// The docks of the editor, by the names that the command line gives them.
class DockFrames {
 public:
  /// Adds all of them, empty, to a window.
  explicit DockFrames(QMainWindow& window);

  [[nodiscard]] static const std::vector<std::string>& GetNames();
  /// Null where there is no dock of that name.
  [[nodiscard]] QDockWidget* Find(const std::string& name) const;
  [[nodiscard]] const std::vector<QDockWidget*>& GetAll() const { return frames_; }

  /// Shows exactly these, and those that always are there where `names` is empty.
  void ShowOnly(const std::vector<std::string>& names);
  /// Puts each dock where it is at the first start.
  void Arrange();
  /// Gives the docks of the first start their sizes, once the window is shown and the docks are filled.
  void Resize();
  /// Opens a dock, and brings it before those that share its place.
  void Raise(const std::string& name);

 private:
  QMainWindow& window_;
  std::vector<QDockWidget*> frames_;
};
