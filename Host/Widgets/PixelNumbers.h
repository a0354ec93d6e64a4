// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QRectF>

#include "Host/Viewing/Look.h"

class QImage;
class QPainter;

namespace ScEng {

class ViewImage;
class ViewPlacement;

/// The zoom from which on a pixel has room for its numbers.
inline constexpr double kNumbersZoom = 32.0;

/// Writes the samples of the pixels that are seen into them, in black or white, whichever is told better from the
/// picture below, which `canvas` holds.
void DrawPixelNumbers(QPainter& painter, const QImage& canvas, const ViewImage& image, const Look& look,
                      const ViewPlacement& placement);

}  // namespace ScEng
