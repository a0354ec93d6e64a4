// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMatrix4x4>
#include <QSize>
#include <QVector3D>

#include "Apps/Editor/Terrain/TileSelection.h"

/// From where a terrain is looked at: from around a place on it, always from above.
class TerrainCamera {
 public:
  static constexpr double kLeastPitch = 4.0;
  static constexpr double kMostPitch = 89.0;
  static constexpr double kLeastDistance = 0.01;
  static constexpr double kMostDistance = 4.0;

  /// Back to where the whole of it is seen.
  void Reset() { *this = {}; }
  /// Goes around the place that is looked at, to the right and up.
  void Orbit(double right_degrees, double up_degrees);
  /// Moves the place that is looked at, in parts of the picture's height, as it is seen.
  void Pan(double right, double up);
  /// Goes so many times as near.
  void Zoom(double factor);

  /// Counterclockwise from the bottom of the image, from where one looks at its top.
  [[nodiscard]] double GetYaw() const { return yaw_; }
  [[nodiscard]] double GetPitch() const { return pitch_; }
  /// In parts of the distance from where the whole is seen.
  [[nodiscard]] double GetDistance() const { return distance_; }
  [[nodiscard]] double GetTargetX() const { return target_x_; }
  [[nodiscard]] double GetTargetY() const { return target_y_; }

  /// The view in a picture of so many pixels of something that fits into a ball; `target_z` is the height in space of
  /// the place that is looked at.
  [[nodiscard]] TerrainEye GetEye(const QSize& pixels, double target_z, double radius) const;

 private:
  double yaw_ = -32.0;
  double pitch_ = 34.0;
  double distance_ = 1.0;
  double target_x_ = 0.0;
  double target_y_ = 0.0;
};
