// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPalette>
#include <QRectF>
#include <QString>

class QPainter;

namespace ScEng {

// What is drawn over a picture. Each line has a dark edge, so that it is told from any ground.

/// A probe: the pixel or the region it watches, in the view, and its number.
void DrawProbe(QPainter& painter, const QRectF& area, bool is_point, int number, bool is_selected,
               const QPalette& palette);
/// Whether a place in the view is on that mark.
[[nodiscard]] bool IsOnProbe(const QRectF& area, bool is_point, const QPointF& place);

/// A region that is being drawn.
void DrawRubberBand(QPainter& painter, const QRectF& area, const QPalette& palette);
/// The pixel that the cursor of the keyboard is on.
void DrawPixelCursor(QPainter& painter, const QRectF& pixel);
/// The line between two images, with a handle to take it by.
void DrawWipe(QPainter& painter, double x, double height, bool has_focus, const QPalette& palette);
/// A text in a box in the middle, or at the top where there is a picture to be seen below it.
void DrawMessage(QPainter& painter, const QRect& room, const QString& text, bool over_picture, const QPalette& palette);
/// A text in the corner, with the share that is done; one below 0 is unknown.
void DrawBusy(QPainter& painter, const QRect& room, const QString& text, double fraction, const QPalette& palette);

}  // namespace ScEng
