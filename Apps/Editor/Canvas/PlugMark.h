// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPainter>
#include <QPen>

#include "Apps/Editor/Canvas/CanvasColors.h"

/// Draws the mark of a plug. Kinds differ by color and by shape, so that nobody needs to tell the colors apart. A plug
/// that is not connected is hollow.
void DrawPlugMark(QPainter& painter, const QPointF& middle, double radius, unsigned type, bool is_filled,
                  const CanvasColors& colors);

/// The pen for wires of a kind; kinds differ by their dashes as well.
QPen MakeWirePen(unsigned type, const QColor& color, double width);
