// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TerrainCamera.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double kFieldOfView = 32.0;
/// What of space the height of a picture shows at the distance from where a square terrain is seen whole.
constexpr double kShownExtent = 2.44;

double ToRadians(double degrees) { return degrees * std::numbers::pi / 180.0; }

}  // namespace

void TerrainCamera::Orbit(double right_degrees, double up_degrees) {
  yaw_ = std::remainder(yaw_ + right_degrees, 360.0);
  pitch_ = std::clamp(pitch_ + up_degrees, kLeastPitch, kMostPitch);
}

void TerrainCamera::Pan(double right, double up) {
  const double extent = distance_ * kShownExtent;
  // Near the horizon a small way up is a long way over the ground.
  const double forward = up * extent / std::max(std::sin(ToRadians(pitch_)), 0.25);
  const double sideways = right * extent;
  const double sine = std::sin(ToRadians(yaw_));
  const double cosine = std::cos(ToRadians(yaw_));
  target_x_ = std::clamp(target_x_ + sideways * cosine - forward * sine, -1.0, 1.0);
  target_y_ = std::clamp(target_y_ + sideways * sine + forward * cosine, -1.0, 1.0);
}

void TerrainCamera::Zoom(double factor) { distance_ = std::clamp(distance_ / factor, kLeastDistance, kMostDistance); }

TerrainEye TerrainCamera::GetEye(const QSize& pixels, double target_z, double radius) const {
  const double width = std::max(pixels.width(), 1);
  const double height = std::max(pixels.height(), 1);
  const double half_height = std::tan(ToRadians(kFieldOfView / 2.0));
  const double half_width = half_height * width / height;
  const double distance = distance_ * radius / std::sin(std::atan(std::min(half_height, half_width)));

  const double flat = std::cos(ToRadians(pitch_)) * distance;
  const QVector3D target(static_cast<float>(target_x_), static_cast<float>(target_y_), static_cast<float>(target_z));
  const QVector3D away(static_cast<float>(std::sin(ToRadians(yaw_)) * flat),
                       static_cast<float>(-std::cos(ToRadians(yaw_)) * flat),
                       static_cast<float>(std::sin(ToRadians(pitch_)) * distance));
  TerrainEye eye;
  eye.place = target + away;
  eye.pixels_per_unit = static_cast<float>(height / (2.0 * half_height));
  const auto near = static_cast<float>(std::max(distance * 0.02, 0.0005));
  // The near half takes more of the picture than the far one, which this evens out.
  eye.matrix.translate(0.0F, 0.1F, 0.0F);
  eye.matrix.perspective(static_cast<float>(kFieldOfView), static_cast<float>(width / height), near,
                         static_cast<float>(distance + 6.0));
  eye.matrix.lookAt(eye.place, target, QVector3D(0.0F, 0.0F, 1.0F));
  return eye;
}
