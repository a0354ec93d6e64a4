// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QTimer>

/// Menus as a person uses them: opened, read and clicked.
namespace WidgetTest {

/// The entry with this text, written without the sign of its letter; null where there is none.
inline QAction* FindEntry(const QWidget& menu, const QString& text) {
  for (QAction* action : menu.actions()) {
    QString shown = action->text();
    if (shown.remove(u'&') == text) return action;
  }
  return nullptr;
}

/// Clicks an open menu's entry; a path leads through menus within it.
inline void Choose(QMenu& menu, const QStringList& path) {
  QMenu* open = &menu;
  for (const QString& text : path) {
    QAction* entry = FindEntry(*open, text);
    ASSERT_NE(entry, nullptr) << text.toStdString();
    ASSERT_TRUE(entry->isEnabled()) << text.toStdString();
    QMenu* inner = entry->menu();
    QTest::mouseClick(open, Qt::LeftButton, {}, open->actionGeometry(entry).center());
    if (inner == nullptr) return;
    ASSERT_TRUE(QTest::qWaitFor([&] { return inner->isVisible(); }, 60000)) << text.toStdString();
    open = inner;
  }
}

/// Opens a menu of a window's menu bar by a click and chooses from it.
inline void ChooseFromBar(QMenuBar& bar, const QString& title, const QStringList& path) {
  QAction* entry = FindEntry(bar, title);
  ASSERT_NE(entry, nullptr) << title.toStdString();
  QTest::mouseClick(&bar, Qt::LeftButton, {}, bar.actionGeometry(entry).center());
  ASSERT_TRUE(QTest::qWaitFor([&] { return entry->menu()->isVisible(); }, 60000)) << title.toStdString();
  Choose(*entry->menu(), path);
}

/// Does what opens a menu, also one that waits for an answer, and chooses from it.
template <class Function>
void ChooseAfter(const Function& open, const QStringList& path) {
  bool is_done = false;
  QTimer look;
  QObject::connect(&look, &QTimer::timeout, [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (menu == nullptr) return;
    look.stop();
    Choose(*menu, path);
    menu->close();
    is_done = true;
  });
  look.start(5);
  open();
  ASSERT_TRUE(QTest::qWaitFor([&] { return is_done; }, 60000));
}

/// Presses the right button, or the menu key, as the desktop tells it.
inline void AskForMenu(QWidget& widget, const QPoint& at, QContextMenuEvent::Reason reason) {
  QContextMenuEvent event(reason, at, widget.mapToGlobal(at));
  QApplication::sendEvent(&widget, &event);
}

/// The menu that is open on top of everything; null where there is none.
inline QMenu* GetOpenMenu() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }

}  // namespace WidgetTest
