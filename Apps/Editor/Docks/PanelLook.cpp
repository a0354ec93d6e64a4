// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/PanelLook.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QWidget>

#include "Host/Widgets/QNodeAttributesWidget.h"

void UsePanelLook(QWidget& widget) {
  for (QWidget* child : widget.findChildren<QWidget*>()) {
    const bool is_control = qobject_cast<QAbstractButton*>(child) != nullptr ||
                            qobject_cast<QComboBox*>(child) != nullptr || qobject_cast<QLineEdit*>(child) != nullptr ||
                            qobject_cast<QPlainTextEdit*>(child) != nullptr;
    if (is_control) child->setStyle(QNodeAttributesWidget::GetPanelStyle());
  }
}
