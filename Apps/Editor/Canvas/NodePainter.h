// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCoreApplication>
#include <QPainter>

#include "Apps/Editor/Canvas/NodeItem.h"

/// Draws a node, with as much detail as the zoom has room for.
class NodePainter {
  Q_DECLARE_TR_FUNCTIONS(NodePainter)

 public:
  NodePainter(const NodeItem& item, QPainter& painter, const CanvasColors& colors);
  void Paint();

 private:
  void PaintReroute();
  /// Below a node that is dimmed, so that nothing shows through it.
  void PaintGround();
  void PaintBody();
  void PaintSelection();
  void PaintHeader();
  /// In place of an icon: the initials of the type.
  void PaintTile();
  void PaintTitle();
  /// From farther away: the name alone.
  void PaintLargeTitle();
  void PaintEye();
  void PaintPlugs();
  void PaintPlug(const PlugFace& plug, const QPointF& place, bool is_input, bool is_offered);
  void PaintThumbnail();
  /// Shows through a picture that is not opaque.
  void PaintCheckerboard(const QRectF& area);
  void PaintProgress();
  void PaintBadge();
  void PaintBelow();
  [[nodiscard]] QFont MakeFont(double size, bool is_bold = false) const;

  const NodeItem& item_;
  QPainter& painter_;
  const CanvasColors& colors_;
  double zoom_;
};

/// How long an evaluation took, for people: "3 ms", "1.2 s".
QString FormatSeconds(double seconds);
