// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Editor.h"

#include <QApplication>
#include <QPixmap>
#include <QSettings>

#include "Apps/Desktop/Screenshot.h"
#include "Apps/Desktop/Theme.h"
#include "Apps/Desktop/WindowProcess.h"
#include "Apps/Editor/Window/EditorWindow.h"

namespace {

std::string FindTheme(const EditorRequest& request) {
  if (!request.theme.empty()) return request.theme;
  if (!request.screenshot.empty()) return "light";
  return QSettings().value(QStringLiteral("window/theme")).toString().toStdString();
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void ValueShowEditor(const EditorRequest& request,
                                                                       EditorAnswer& answer) {
  const bool is_drawn = !request.screenshot.empty();
  const WindowProcess process({.offscreen = is_drawn, .scale = request.scale, .on_fatal = request.on_fatal});
  QApplication::setOrganizationName(QStringLiteral("value"));
  QApplication::setApplicationName(QStringLiteral("editor"));
  QApplication::setDesktopFileName(QStringLiteral("value-editor"));
  ApplyTheme(FindTheme(request));
  EditorWindow window(request);
  window.show();
  window.Start(answer);
  if (!answer.problems.empty()) return;
  if (!is_drawn) {
    QApplication::exec();
    return;
  }
  window.WaitUntilDone();
  const QPixmap picture = window.grab();
  answer.width = picture.width();
  answer.height = picture.height();
  answer.status = WriteScreenshot(picture, request.screenshot);
}
