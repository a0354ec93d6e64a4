// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QWidget>

/// Mouse events to a widget, at places of its own. They go to the widget itself, so that no test depends on where the
/// system's cursor is.
namespace WidgetTest {

inline void SendMouse(QWidget& widget, QEvent::Type type, const QPointF& at, Qt::MouseButton button,
                      Qt::MouseButtons buttons) {
  QMouseEvent event(type, at, widget.mapToGlobal(at), button, buttons, Qt::NoModifier);
  QApplication::sendEvent(&widget, &event);
}

inline void Hover(QWidget& widget, const QPointF& at) {
  SendMouse(widget, QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton);
}

/// Presses at one place, moves to the other in two steps and releases there.
inline void Drag(QWidget& widget, const QPointF& from, const QPointF& to, Qt::MouseButton button = Qt::LeftButton) {
  SendMouse(widget, QEvent::MouseButtonPress, from, button, button);
  SendMouse(widget, QEvent::MouseMove, (from + to) / 2.0, Qt::NoButton, button);
  SendMouse(widget, QEvent::MouseMove, to, Qt::NoButton, button);
  SendMouse(widget, QEvent::MouseButtonRelease, to, button, Qt::NoButton);
}

inline void Click(QWidget& widget, const QPointF& at) {
  SendMouse(widget, QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton);
  SendMouse(widget, QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton);
}

/// Turns the wheel by so many notches.
inline void Wheel(QWidget& widget, const QPointF& at, int notches) {
  QWheelEvent event(at, widget.mapToGlobal(at), QPoint(), QPoint(0, 120 * notches), Qt::NoButton, Qt::NoModifier,
                    Qt::NoScrollPhase, false);
  QApplication::sendEvent(&widget, &event);
}

}  // namespace WidgetTest
