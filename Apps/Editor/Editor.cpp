// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Editor.h"

#include <QApplication>
#include <QPixmap>

#include "Apps/Desktop/Screenshot.h"
#include "Apps/Desktop/Theme.h"
#include "Apps/Desktop/WindowProcess.h"
#include "Apps/Editor/Window/EditorWindow.h"

extern "C" __attribute__((visibility("default"))) void ValueShowEditor(const EditorRequest& request,
                                                                       EditorAnswer& answer) {
  const bool is_drawn = !request.screenshot.empty();
  const WindowProcess process({.offscreen = is_drawn, .scale = request.scale, .on_fatal = request.on_fatal});
  ApplyTheme(request.theme.empty() && is_drawn ? "light" : request.theme);
  EditorWindow window(request);
  window.show();
  if (!is_drawn) {
    QApplication::exec();
    return;
  }
  QApplication::processEvents();
  const QPixmap picture = window.grab();
  answer.width = picture.width();
  answer.height = picture.height();
  answer.status = WriteScreenshot(picture, request.screenshot);
}
