// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QPalette>

/// The colors of the canvas, made from the palette, so that both themes and desktops of high contrast are followed.
struct CanvasColors {
  CanvasColors() = default;
  explicit CanvasColors(const QPalette& palette);

  /// What the wires and plugs of a kind (`PlugType`) are drawn in.
  [[nodiscard]] QColor GetKind(unsigned type) const;

  bool is_dark = false;
  QColor ground;
  QColor grid;
  QColor body;
  QColor header;
  QColor edge;
  QColor text;
  QColor faint;
  QColor accent;
  QColor on_accent;
  QColor error;
  QColor warning;
  QColor shadow;
};

/// A color between two others; `share` 0 is the first one.
QColor MixColors(const QColor& a, const QColor& b, double share);
