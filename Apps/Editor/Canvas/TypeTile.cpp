// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/TypeTile.h"

#include <QPixmap>
#include <algorithm>
#include <cmath>

QString MakeInitials(const QString& type_name) {
  QString initials;
  for (const QString& word : type_name.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
    if (initials.size() < 2) initials += word.front().toUpper();
  }
  return initials;
}

QColor GetTileColor(const CanvasColors& colors, unsigned kind) {
  return MixColors(colors.header, colors.GetKind(kind), 0.75);
}

void PaintTypeTile(QPainter& painter, const QRectF& tile, const QColor& color, const QString& letters,
                   const QFont& font, const CanvasColors& colors) {
  painter.setPen(Qt::NoPen);
  painter.setBrush(color);
  painter.drawRoundedRect(tile, tile.width() * 0.2, tile.width() * 0.2);
  if (letters.isEmpty()) return;
  QFont sized = font;
  sized.setPixelSize(std::max(1, static_cast<int>(tile.height() * (letters.size() > 1 ? 0.46 : 0.58))));
  sized.setWeight(QFont::DemiBold);
  painter.setFont(sized);
  painter.setPen(colors.is_dark ? QColor(Qt::black) : QColor(Qt::white));
  painter.drawText(tile, Qt::AlignCenter, letters);
}

QIcon MakeTypeIcon(const TypeInfo& type, const CanvasColors& colors, const QFont& font, int size, double ratio) {
  if (!type.icon.isNull()) return type.icon;
  QPixmap picture(static_cast<int>(std::ceil(size * ratio)), static_cast<int>(std::ceil(size * ratio)));
  picture.setDevicePixelRatio(ratio);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const unsigned kind = type.outputs.empty() ? PlugType::kNone : type.outputs.front().type;
  const double inset = size / 12.0;
  PaintTypeTile(painter, QRectF(0, 0, size, size).adjusted(inset, inset, -inset, -inset), GetTileColor(colors, kind),
                MakeInitials(type.name), font, colors);
  painter.end();
  return picture;
}
