// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Window/EditorWindow.h"

EditorWindow::EditorWindow(const EditorRequest& request) {
  setWindowTitle(tr("Value"));
  resize(request.width > 0 ? request.width : 1440, request.height > 0 ? request.height : 900);
}

EditorWindow::~EditorWindow() = default;
