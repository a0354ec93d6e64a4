// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/NodeShape.h"

#include <algorithm>

NodeShape::NodeShape(const NodeFace& face, bool has_thumbnail) {
  if (face.is_reroute) {
    body = QRectF(0, 0, 28, 20);
    header = body;
    inputs.assign(face.inputs.size(), QPointF(0, 10));
    outputs.assign(face.outputs.size(), QPointF(28, 10));
    return;
  }
  header = QRectF(0, 0, kWidth, kHeader);
  icon = QRectF(10, 8, 28, 28);
  if (face.has_image) eye = QRectF(kWidth - 32, 11, 22, 22);
  constexpr double kGap = 6.0;
  const auto place = [](std::size_t row) { return kHeader + kGap + (static_cast<double>(row) + 0.5) * kRow; };
  for (std::size_t i = 0; i < face.inputs.size(); ++i) inputs.emplace_back(0, place(i));
  for (std::size_t i = 0; i < face.outputs.size(); ++i) outputs.emplace_back(kWidth, place(i));
  const std::size_t rows = std::max(face.inputs.size(), face.outputs.size());
  double bottom = rows == 0 ? kHeader : kHeader + 2 * kGap + static_cast<double>(rows) * kRow;
  if (has_thumbnail && face.has_image) {
    thumbnail = QRectF(8, bottom, kWidth - 16, kThumbnail);
    bottom += kThumbnail + 8;
  }
  body = QRectF(0, 0, kWidth, std::max(bottom, kHeader));
}
