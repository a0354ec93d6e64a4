// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QGraphicsItem>

#include "Apps/Editor/Canvas/CanvasColors.h"
#include "Apps/Editor/Canvas/ItemTypes.h"
#include "Host/Documents/DocumentParts.h"

/// A titled box behind nodes.
class FrameItem : public QGraphicsItem {
 public:
  FrameItem(const CanvasColors& colors, std::size_t index, const ScEng::DocumentFrame& frame);

  [[nodiscard]] int type() const override { return ItemType::kFrame; }
  [[nodiscard]] QRectF boundingRect() const override;
  void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

  /// The place among the frames of the document.
  [[nodiscard]] std::size_t GetIndex() const { return index_; }
  [[nodiscard]] const ScEng::DocumentFrame& GetFrame() const { return frame_; }
  void SetFrame(const ScEng::DocumentFrame& frame);
  /// While it is dragged: where it would be.
  void SetBox(const QRectF& box);

  /// In the units of the scene.
  [[nodiscard]] QRectF GetBox() const { return box_.translated(pos()); }
  [[nodiscard]] QRectF GetTitleBox() const;
  [[nodiscard]] QRectF GetGrip() const;
  [[nodiscard]] QColor GetColor() const;

 private:
  const CanvasColors& colors_;
  std::size_t index_;
  ScEng::DocumentFrame frame_;
  QRectF box_;
};
