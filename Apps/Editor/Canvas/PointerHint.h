// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPainter>
#include <QPointF>
#include <QString>

class GraphView;

/// Draws a line of text in a box beside a place of the scene, where the pointer does not cover it. The text has the
/// size of the desktop's font at every zoom.
void PaintHint(QPainter& painter, const GraphView& view, const QPointF& place, const QString& text);

/// Shows the same line for a moment, when what was dragged is gone.
void ShowHint(GraphView& view, const QPointF& place, const QString& text);
