// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TerrainFrame.h"

#include <algorithm>
#include <cmath>

double TerrainFrame::GetRadius() const {
  const double half_x = (field->GetSizeX() - 1) * field->GetSpacing() * 0.5;
  const double half_y = (field->GetSizeY() - 1) * field->GetSpacing() * 0.5;
  const double half_z = (static_cast<double>(field->GetHighest()) * GetRise() - GetGround()) * 0.5;
  // A ball around a flat block has much air above and below, which the picture need not show.
  return 0.83 * std::sqrt(half_x * half_x + half_y * half_y + 2.5 * half_z * half_z);
}

TerrainEye TerrainFrame::GetEye(const QSize& size) const {
  // A smooth copy of the surface, so that the camera does not tremble while it moves over it.
  constexpr double kSmoothPoints = 1.0 / 64.0;
  const double middle = 0.5 * (static_cast<double>(field->GetLowest()) + static_cast<double>(field->GetHighest()));
  const double points = std::max(field->GetSizeX(), field->GetSizeY()) * kSmoothPoints * camera.GetDistance();
  const double surface =
      static_cast<double>(field->GetHeight(points < 2.0 ? 0 : std::ilogb(points), field->GetPointX(camera.GetTargetX()),
                                           field->GetPointY(camera.GetTargetY())));
  const double nearness = std::clamp(1.3 - 1.5 * camera.GetDistance(), 0.0, 1.0);
  const double target = std::isfinite(surface) ? middle + (surface - middle) * nearness : middle;
  TerrainEye eye = camera.GetEye(size, target * GetRise(), GetRadius());
  eye.rise = static_cast<float>(GetRise());
  eye.ground = static_cast<float>(GetGround());
  return eye;
}
