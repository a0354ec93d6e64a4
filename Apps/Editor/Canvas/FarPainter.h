// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPainter>
#include <QRectF>

class GraphScene;

/// Draws a scene that is seen from so far away that nodes are rectangles and wires lines. Each kind of thing is drawn
/// in one go, which takes a fraction of the time of drawing item by item.
void PaintFromAfar(QPainter& painter, const GraphScene& scene, const QRectF& exposed);
