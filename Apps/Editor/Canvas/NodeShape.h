// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QPointF>
#include <QRectF>
#include <vector>

#include "Apps/Editor/Canvas/NodeFace.h"

/// Where the parts of a node are, from its top left corner, in the units of node positions.
struct NodeShape {
  static constexpr double kWidth = 200.0;
  static constexpr double kHeader = 44.0;
  static constexpr double kRow = 20.0;
  static constexpr double kThumbnail = 96.0;
  static constexpr double kRadius = 9.0;
  static constexpr double kPlugRadius = 5.0;

  NodeShape() = default;
  NodeShape(const NodeFace& face, bool has_thumbnail);

  QRectF body;
  QRectF header;
  QRectF icon;
  QRectF eye;
  /// Empty for a node without.
  QRectF thumbnail;
  /// In the order of the face.
  std::vector<QPointF> inputs;
  std::vector<QPointF> outputs;
};
