// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QPalette>
#include <QProxyStyle>

namespace ScEng {

/// The look of the panels: flat fields with one thin outline, an outline in the accent colour for what has the focus,
/// and everything else from the palette, so that it suits light and dark ones.
class PanelStyle : public QProxyStyle {
 public:
  PanelStyle();

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                          const QWidget* widget) const override;
  [[nodiscard]] int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
  [[nodiscard]] int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                              QStyleHintReturn* data) const override;

  [[nodiscard]] QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                       const QWidget* widget) const override;

  /// The one style of the application, which owns it.
  static PanelStyle* Get();
};

/// A colour between two: `share` of `over` on `under`.
[[nodiscard]] QColor Mix(const QColor& under, const QColor& over, double share);
/// The colour of outlines and grooves.
[[nodiscard]] QColor OutlineColor(const QPalette& palette);

/// The outline of a field of the panel, with its ground.
void DrawField(QPainter& painter, const QRectF& area, const QPalette& palette, bool enabled, bool has_focus,
               bool hovered);
/// An angle that points down, or up, around a point.
void DrawChevron(QPainter& painter, QPointF center, double size, bool down, const QColor& color);

}  // namespace ScEng
