// SPDX-License-Identifier: Apache-2.0
#include "Apps/Panel/Panel.h"

#include <QApplication>
#include <QPixmap>

#include "Apps/Desktop/Screenshot.h"
#include "Apps/Desktop/Theme.h"
#include "Apps/Desktop/WindowProcess.h"
#include "Apps/Panel/PanelWindow.h"

extern "C" __attribute__((visibility("default"))) void ValueShowPanel(const PanelRequest& request,
                                                                      PanelAnswer& answer) {
  const bool is_drawn = !request.screenshot.empty();
  const WindowProcess process({.offscreen = is_drawn, .scale = request.scale, .on_fatal = request.on_fatal});
  ApplyTheme(request.theme.empty() && is_drawn ? "light" : request.theme);
  PanelWindow window(request);
  window.show();
  if (!is_drawn) {
    QApplication::exec();
    return;
  }
  QApplication::processEvents();
  if (QWidget* focused = QApplication::focusWidget()) focused->clearFocus();
  const QPixmap picture = window.grab();
  answer.width = picture.width();
  answer.height = picture.height();
  answer.status = WriteScreenshot(picture, request.screenshot);
}
