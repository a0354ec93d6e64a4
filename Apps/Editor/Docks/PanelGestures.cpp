// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/PanelGestures.h"

#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QColorDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMetaObject>

PanelGestures::PanelGestures(ScEng::EditSession& session, QWidget* area)
    : QObject(area), session_(session), area_(area) {
  QApplication::instance()->installEventFilter(this);
}

PanelGestures::~PanelGestures() { End(); }

void PanelGestures::Begin() {
  End();
  session_.BeginGesture();
  is_open_ = true;
}

void PanelGestures::End() {
  is_ending_ = false;
  if (is_open_) session_.EndGesture();
  is_open_ = false;
}

void PanelGestures::EndSoon() {
  if (!is_open_ || is_ending_) return;
  is_ending_ = true;
  QMetaObject::invokeMethod(
      this,
      [this] {
        if (is_ending_) End();
      },
      Qt::QueuedConnection);
}

void PanelGestures::FollowDialog(QObject* watched, QEvent* event) {
  if (qobject_cast<QColorDialog*>(watched) == nullptr) return;
  has_dialog_ = event->type() == QEvent::Show;
  if (has_dialog_) {
    Begin();
  } else {
    EndSoon();
  }
}

bool PanelGestures::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::Show:
    case QEvent::Hide: FollowDialog(watched, event); return false;
    case QEvent::Wheel:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride:
    case QEvent::FocusOut: break;
    default: return false;
  }
  const auto* widget = qobject_cast<const QWidget*>(watched);
  if (widget == nullptr || area_ == nullptr) return false;
  if (has_dialog_) return false;
  // A widget outside the panel may get the release: the list of a combo box.
  if (event->type() == QEvent::MouseButtonRelease) EndSoon();
  if (!area_->isAncestorOf(widget)) return false;
  switch (event->type()) {
    case QEvent::MouseButtonRelease: return false;
    case QEvent::Wheel:
      if (!is_open_) Begin();
      return false;
    case QEvent::FocusOut: EndSoon(); return false;
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride: return FilterKey(*widget, event);
    default: Begin(); return false;
  }
}

bool PanelGestures::FilterKey(const QWidget& widget, QEvent* event) {
  const auto* key = static_cast<const QKeyEvent*>(event);
  const bool is_undo = key->matches(QKeySequence::Undo);
  if (is_undo || key->matches(QKeySequence::Redo)) {
    // Not accepted, so that an action of the window gets it; without one it comes here as a key.
    event->ignore();
    if (event->type() == QEvent::ShortcutOverride) return true;
    End();
    const ScEng::Status status = is_undo ? session_.Undo() : session_.Redo();
    event->setAccepted(!status.IsError());
    return true;
  }
  if (event->type() == QEvent::ShortcutOverride) return false;
  if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
    EndSoon();
    return false;
  }
  const bool is_field = qobject_cast<const QLineEdit*>(&widget) != nullptr ||
                        qobject_cast<const QAbstractSpinBox*>(&widget) != nullptr ||
                        qobject_cast<const QAbstractSlider*>(&widget) != nullptr;
  if (is_field && !is_open_) Begin();
  return false;
}
