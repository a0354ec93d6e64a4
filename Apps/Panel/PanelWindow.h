// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QTimer>
#include <QWidget>
#include <string>
#include <vector>

#include "Apps/Panel/Panel.h"
#include "Apps/Panel/Preview.h"

class QComboBox;
class QLabel;
class QPushButton;
class QUndoStack;

/// The window of `value panel`: the node's own panel beside a preview of what the node makes of the image, which is
/// evaluated again after every change.
class PanelWindow : public QWidget, private NodeObserver {
 public:
  explicit PanelWindow(const PanelRequest& request);
  ~PanelWindow() override;
  PanelWindow(const PanelWindow&) = delete;
  PanelWindow& operator=(const PanelWindow&) = delete;

  /// Evaluates what is shown, now.
  void Evaluate();

 private:
  void OnNodeChanged(Node& node) override;

  QWidget* MakeView();
  QWidget* MakePanel();
  [[nodiscard]] unsigned GetOutplug() const;

  PanelRequest request_;
  QTimer timer_;
  QUndoStack* stack_ = nullptr;
  Preview* preview_ = nullptr;
  QComboBox* outputs_ = nullptr;
  QPushButton* before_ = nullptr;
  QLabel* facts_ = nullptr;
};
