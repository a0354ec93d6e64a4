// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPoint>
#include <QString>
#include <optional>

class Image;

namespace ScEng {

class ViewImage;

/// A number as people read it: the fewest digits that read back as the same float; "NaN", "∞" and "−∞".
[[nodiscard]] QString FormatValue(float value);
/// A number to so many significant digits.
[[nodiscard]] QString FormatShort(double value, int digits);

/// A pixel from the top left corner of the image: its value, or those of its channels with commas between; with a sign
/// that it is about so where the image is a preview. Empty outside of the image.
[[nodiscard]] QString FormatPixel(const ViewImage& image, const QPoint& pixel);
/// The same at a place of the document.
[[nodiscard]] QString FormatPixelAt(const ViewImage& image, const QPoint& place);
/// The same sign before any text of a preview.
[[nodiscard]] QString MarkPreview(const ViewImage& image, const QString& text);

/// Where the middle of a document's pixel lies on the ground, "x, y"; empty for an image that does not know.
[[nodiscard]] QString FormatGround(const Image& image, const QPointF& place);
[[nodiscard]] bool HasGround(const Image& image);

/// "100 %", "12.5 %".
[[nodiscard]] QString FormatZoom(double zoom);

}  // namespace ScEng
