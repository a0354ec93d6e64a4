// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPoint>
#include <QString>
#include <optional>

class Image;

namespace ScEng {

/// A number as people read it: the fewest digits that read back as the same float; "NaN", "∞" and "−∞".
[[nodiscard]] QString FormatValue(float value);
/// A number to so many significant digits.
[[nodiscard]] QString FormatShort(double value, int digits);

/// A pixel from the top left corner of the image: its value, or those of its channels with commas between.
[[nodiscard]] QString FormatPixel(const Image& image, const QPoint& pixel);
/// The same at a place of the document; empty outside of the image.
[[nodiscard]] QString FormatPixelAt(const Image& image, const QPoint& place);

/// Where the middle of a document's pixel lies on the ground, "x, y"; empty for an image that does not know.
[[nodiscard]] QString FormatGround(const Image& image, const QPointF& place);
[[nodiscard]] bool HasGround(const Image& image);

/// "100 %", "12.5 %".
[[nodiscard]] QString FormatZoom(double zoom);

}  // namespace ScEng
