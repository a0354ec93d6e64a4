// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QRect>
#include <QString>
#include <functional>

class QWidget;

/// Opens a field over the canvas in which a text is typed. Enter (of several lines, Ctrl+Enter) and leaving the field
/// take the text, Escape leaves everything as it was. The field goes by itself.
void EditLineInPlace(QWidget* parent, const QRect& place, const QString& name, const QString& text,
                     std::function<void(const QString&)> take);
void EditTextInPlace(QWidget* parent, const QRect& place, const QString& name, const QString& text,
                     std::function<void(const QString&)> take);
/// Closes what is open and takes no text, before the parent goes.
void CloseEditorsInPlace(QWidget* parent);
