// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QGraphicsItem>

/// What `QGraphicsItem::type` answers for the items of the canvas.
namespace ItemType {
inline constexpr int kNode = QGraphicsItem::UserType + 1;
inline constexpr int kWire = QGraphicsItem::UserType + 2;
inline constexpr int kFrame = QGraphicsItem::UserType + 3;
}  // namespace ItemType

/// Positions in documents may be any numbers; nothing is drawn farther from the origin than this.
inline constexpr double kFarthest = 400000.0;

/// Zooms, as drawn pixels per unit, below which details are left out.
namespace Detail {
/// Below this, everything is drawn as plain rectangles and lines.
inline constexpr double kNear = 0.30;
/// From here on text can be read.
inline constexpr double kText = 0.48;
/// From here on there is room for messages as text.
inline constexpr double kMessages = 0.85;
}  // namespace Detail
