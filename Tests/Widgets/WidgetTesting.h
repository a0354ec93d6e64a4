// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QSlider>
#include <QTest>
#include <QUndoStack>
#include <QWidget>
#include <memory>
#include <string>

#include "Host/Widgets/QNodeAttributesWidget.h"

/// What the tests of the panels share. They run on the offscreen platform, and once more in real windows.
namespace WidgetTest {

/// A widget in a panel by its object name; null where there is none.
template <class Widget>
Widget* Find(const QWidget& panel, const std::string& name) {
  return panel.findChild<Widget*>(QString::fromStdString(name));
}

/// Shows a window and waits until it has the keyboard, which nobody gives it where there is no window manager.
inline void ShowActive(QWidget& window) {
  window.show();
  window.activateWindow();
  EXPECT_TRUE(QTest::qWaitForWindowExposed(&window, 60000));
  EXPECT_TRUE(QTest::qWaitForWindowActive(&window, 60000));
}

/// Shows the panel in a window of its own and waits until it has the keyboard.
inline void ShowAndActivate(QWidget& panel) {
  panel.resize(420, panel.sizeHint().height());
  ShowActive(panel);
}

/// Types a text in place of the one that is there, without leaving the field.
inline void Type(QWidget* field, const char* text) {
  field->setFocus();
  QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
  QTest::keyClicks(field, QString::fromUtf8(text));
}

}  // namespace WidgetTest
