// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/InlineEditors.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <algorithm>
#include <utility>

namespace {

constexpr char kFieldName[] = "canvas.field";
constexpr char kEndName[] = "canvas.field.end";

/// Ends an editor once, whichever way.
class EndOfEditing : public QObject {
 public:
  EndOfEditing(QWidget* editor, bool has_lines, std::function<void()> take)
      : QObject(editor), editor_(editor), has_lines_(has_lines), take_(std::move(take)) {
    setObjectName(QLatin1String(kEndName));
    editor->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::FocusOut) {
      const bool is_menu = static_cast<QFocusEvent*>(event)->reason() == Qt::PopupFocusReason;
      if (!is_menu) End(true);
    }
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Tab) {
      // It leaves the field, and opens no search.
      event->accept();
      return true;
    }
    if (event->type() != QEvent::KeyPress) return QObject::eventFilter(watched, event);
    const auto* press = static_cast<QKeyEvent*>(event);
    const bool is_enter = press->key() == Qt::Key_Return || press->key() == Qt::Key_Enter;
    const bool ends = is_enter && (!has_lines_ || press->modifiers().testFlag(Qt::ControlModifier));
    if (!ends && press->key() != Qt::Key_Escape) return QObject::eventFilter(watched, event);
    End(ends);
    return true;
  }

 private:
  void End(bool takes) {
    if (is_ended_) return;
    is_ended_ = true;
    QWidget* canvas = editor_->parentWidget();
    if (takes) take_();
    editor_->hide();
    editor_->deleteLater();
    if (canvas != nullptr) canvas->setFocus();
  }

  QWidget* editor_;
  bool has_lines_;
  bool is_ended_ = false;
  std::function<void()> take_;
};

void OpenAt(QWidget* editor, const QRect& place, int least_height, const QString& name) {
  editor->setObjectName(QLatin1String(kFieldName));
  editor->setAccessibleName(name);
  const int line = editor->fontMetrics().height();
  QRect box = place;
  box.setWidth(std::max(box.width(), line * 11));
  box.setHeight(std::max(box.height(), least_height));
  editor->setGeometry(box);
  editor->show();
  editor->setFocus();
}

}  // namespace

void EditLineInPlace(QWidget* parent, const QRect& place, const QString& name, const QString& text,
                     std::function<void(const QString&)> take) {
  auto* field = new QLineEdit(text, parent);
  new EndOfEditing(field, false, [field, take = std::move(take)] { take(field->text()); });
  OpenAt(field, place, field->sizeHint().height(), name);
  field->selectAll();
}

void EditTextInPlace(QWidget* parent, const QRect& place, const QString& name, const QString& text,
                     std::function<void(const QString&)> take) {
  auto* field = new QPlainTextEdit(text, parent);
  field->setTabChangesFocus(true);
  new EndOfEditing(field, true, [field, take = std::move(take)] { take(field->toPlainText()); });
  OpenAt(field, place, field->fontMetrics().height() * 4, name);
  field->selectAll();
}

void CloseEditorsInPlace(QWidget* parent) {
  for (QWidget* field : parent->findChildren<QWidget*>(QLatin1String(kFieldName))) {
    // Without it, the field loses the keyboard and nothing comes of that.
    delete field->findChild<QObject*>(QLatin1String(kEndName));
    delete field;
  }
}
