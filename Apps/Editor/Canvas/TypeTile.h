// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFont>
#include <QIcon>
#include <QPainter>
#include <QString>

#include "Apps/Editor/Canvas/CanvasColors.h"
#include "Apps/Editor/Canvas/NodeTypes.h"

/// At most two letters that stand for a node type: "IR" for "Image Reader".
QString MakeInitials(const QString& type_name);

/// The color of a tile for a type whose first output is of a kind.
QColor GetTileColor(const CanvasColors& colors, unsigned kind);

/// Draws what stands in place of an icon: letters on a tile. Without letters it is the tile alone.
void PaintTypeTile(QPainter& painter, const QRectF& tile, const QColor& color, const QString& letters,
                   const QFont& font, const CanvasColors& colors);

/// The icon of a type, or its tile.
QIcon MakeTypeIcon(const TypeInfo& type, const CanvasColors& colors, const QFont& font, int size, double ratio);
