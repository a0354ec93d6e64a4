// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ElidedLabel.h"

#include <QPainter>

namespace ScEng {

ElidedLabel::ElidedLabel(Qt::TextElideMode mode, QWidget* parent) : QLabel(parent), mode_(mode) {
  setTextFormat(Qt::PlainText);
}

QSize ElidedLabel::minimumSizeHint() const {
  constexpr int kLeast = 4;
  return {fontMetrics().averageCharWidth() * kLeast, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const QString shown = fontMetrics().elidedText(text(), mode_, width());
  painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
  painter.drawText(rect(), static_cast<int>(alignment()) | Qt::TextSingleLine, shown);
  if (shown != text() && toolTip() != text()) setToolTip(text());
  if (shown == text() && !toolTip().isEmpty()) setToolTip(QString());
}

}  // namespace ScEng
