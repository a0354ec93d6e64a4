// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMainWindow>

#include "Apps/Editor/Editor.h"

/// The window of `value edit`.
class EditorWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit EditorWindow(const EditorRequest& request);
  ~EditorWindow() override;
};
