// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QGraphicsItem>
#include <QImage>
#include <QStringList>
#include <memory>
#include <optional>
#include <vector>

#include "Apps/Editor/Canvas/CanvasColors.h"
#include "Apps/Editor/Canvas/ItemTypes.h"
#include "Apps/Editor/Canvas/NodeShape.h"
#include "Apps/Editor/Canvas/PlugRef.h"
#include "Host/Viewing/ViewImage.h"

/// What is known of a node beyond the document.
struct NodeCondition {
  /// Of its last evaluation; below 0 where there was none.
  double seconds = -1.0;
  bool is_in_error = false;
  bool is_blocked = false;
  QStringList messages;
  std::shared_ptr<const ScEng::ViewImage> thumbnail;
  /// The share of its work that is done while it is evaluated; below 0 while it is not.
  double progress = -1.0;
};

/// A node on the canvas. It knows the node by its id.
class NodeItem : public QGraphicsItem {
 public:
  /// `colors` outlive the item.
  explicit NodeItem(const CanvasColors& colors);

  [[nodiscard]] int type() const override { return ItemType::kNode; }
  [[nodiscard]] QRectF boundingRect() const override { return bounds_; }
  void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

  [[nodiscard]] const NodeFace& GetFace() const { return face_; }
  [[nodiscard]] const NodeShape& GetShape() const { return shape_; }
  [[nodiscard]] const NodeCondition& GetCondition() const { return condition_; }
  void SetFace(NodeFace face);
  void SetCondition(NodeCondition condition);
  void SetProgress(double progress);
  void SetHasThumbnail(bool has_thumbnail);
  /// The name of the output that is shown; empty for none.
  void SetShown(const std::string& output);
  void SetDimmed(bool is_dimmed);
  [[nodiscard]] bool IsDimmed() const { return is_dimmed_ && !isSelected(); }
  [[nodiscard]] bool IsShown() const { return !shown_.empty(); }
  /// Rows that are there while a wire is dragged over the node, for attributes that it could feed.
  void Offer(std::vector<PlugFace> attributes);
  /// The plug that the pointer is at.
  void SetHovered(const PlugRef& plug);

  /// The body, in the units of the scene.
  [[nodiscard]] QRectF GetBody() const { return shape_.body.translated(pos()); }
  /// The place of a plug in the scene; the middle of the side where there is no such plug.
  [[nodiscard]] QPointF GetPlugPlace(const std::string& name, unsigned index, bool is_input) const;
  /// The plug at a place in the scene, not farther than `reach` away.
  [[nodiscard]] std::optional<PlugRef> FindPlug(const QPointF& place, double reach) const;
  [[nodiscard]] bool IsAtEye(const QPointF& place) const;
  /// What is told at a place in the scene, as a tooltip.
  [[nodiscard]] QString GetToolTip(const QPointF& place) const;
  /// The thumbnail as a picture, made when it is first asked for.
  [[nodiscard]] const QImage& GetThumbnail() const;

 private:
  friend class NodePainter;
  void Measure();

  const CanvasColors& colors_;
  NodeFace face_;
  NodeShape shape_;
  NodeCondition condition_;
  QRectF bounds_;
  std::size_t offered_ = 0;
  PlugRef hovered_;
  bool has_thumbnail_ = true;
  std::string shown_;
  bool is_dimmed_ = false;
  mutable QImage thumbnail_;
};
