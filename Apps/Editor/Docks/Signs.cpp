// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/Signs.h"

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QtMath>

QColor GetSignColor(Sign sign, const QPalette& palette) {
  const bool is_dark = palette.color(QPalette::Base).lightnessF() < 0.5F;
  switch (sign) {
    case Sign::kError: return is_dark ? QColor(0xFF, 0x7B, 0x72) : QColor(0xC6, 0x28, 0x28);
    case Sign::kDone: return is_dark ? QColor(0x6C, 0xC6, 0x7E) : QColor(0x1F, 0x7A, 0x3A);
    case Sign::kNote: break;
  }
  return is_dark ? QColor(0x6A, 0xA5, 0xFF) : QColor(0x2F, 0x6F, 0xDE);
}

QIcon MakeSignIcon(Sign sign) {
  const int size = QFontMetrics(QApplication::font()).height();
  // The largest scale that displays have, so that the sign is sharp at each.
  constexpr int kScale = 3;
  QPixmap picture(size * kScale, size * kScale);
  picture.setDevicePixelRatio(kScale);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const double middle = size / 2.0;
  const double radius = size * 0.42;
  painter.setPen(Qt::NoPen);
  painter.setBrush(GetSignColor(sign, QApplication::palette()));
  painter.drawEllipse(QPointF(middle, middle), radius, radius);
  painter.setPen(QPen(QApplication::palette().color(QPalette::Base), size * 0.12, Qt::SolidLine, Qt::RoundCap));
  const double arm = radius * 0.42;
  switch (sign) {
    case Sign::kError:
      painter.drawLine(QPointF(middle - arm, middle - arm), QPointF(middle + arm, middle + arm));
      painter.drawLine(QPointF(middle - arm, middle + arm), QPointF(middle + arm, middle - arm));
      break;
    case Sign::kNote:
      painter.drawLine(QPointF(middle, middle - arm * 0.1), QPointF(middle, middle + arm * 1.3));
      painter.drawPoint(QPointF(middle, middle - arm * 1.3));
      break;
    case Sign::kDone:
      painter.drawLine(QPointF(middle - arm * 1.1, middle), QPointF(middle - arm * 0.2, middle + arm));
      painter.drawLine(QPointF(middle - arm * 0.2, middle + arm), QPointF(middle + arm * 1.2, middle - arm * 0.9));
      break;
  }
  return picture;
}
