// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QGraphicsItem>
#include <QPainterPath>

#include "Apps/Editor/Canvas/CanvasColors.h"
#include "Apps/Editor/Canvas/ItemTypes.h"
#include "Host/Documents/DocumentParts.h"

/// The curve of a wire from an output to an input.
QPainterPath MakeWirePath(const QPointF& from, const QPointF& to);

/// A connection on the canvas.
class WireItem : public QGraphicsItem {
 public:
  WireItem(const CanvasColors& colors, ScEng::DocumentConnection connection, unsigned kind);

  [[nodiscard]] int type() const override { return ItemType::kWire; }
  [[nodiscard]] QRectF boundingRect() const override { return bounds_; }
  void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

  [[nodiscard]] const ScEng::DocumentConnection& GetConnection() const { return connection_; }
  [[nodiscard]] unsigned GetKind() const { return kind_; }
  /// A node at one of its ends has another id.
  void Rename(const std::string& before, const std::string& now);
  void SetEnds(const QPointF& from, const QPointF& to);
  [[nodiscard]] QPointF GetStart() const { return from_; }
  [[nodiscard]] QPointF GetEnd() const { return to_; }
  void SetDimmed(bool is_dimmed);
  [[nodiscard]] bool IsDimmed() const { return is_dimmed_; }
  /// Something that is dragged would be put into it, or it would be cut.
  void SetHighlighted(bool is_highlighted);

  /// How far away a place of the scene is from the curve.
  [[nodiscard]] double GetDistance(const QPointF& place) const;
  [[nodiscard]] bool Crosses(const QLineF& line) const;

 private:
  [[nodiscard]] QPolygonF MakePolyline() const;

  const CanvasColors& colors_;
  ScEng::DocumentConnection connection_;
  unsigned kind_;
  QPointF from_;
  QPointF to_;
  QPainterPath path_;
  QRectF bounds_;
  bool is_dimmed_ = false;
  bool is_highlighted_ = false;
};
