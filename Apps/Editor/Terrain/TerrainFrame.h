// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>
#include <QSize>
#include <memory>

#include "Apps/Editor/Terrain/HeightField.h"
#include "Apps/Editor/Terrain/SurfaceColors.h"
#include "Apps/Editor/Terrain/TerrainCamera.h"

/// How a terrain is shown.
struct TerrainSettings {
  double exaggeration = 1.0;
  /// Where the light comes from, clockwise from the top of the image, and how high it stands over the horizon.
  double azimuth_degrees = 315.0;
  double altitude_degrees = 45.0;
  bool wireframe = false;

  friend bool operator==(const TerrainSettings&, const TerrainSettings&) = default;
};

/// The colors around a terrain.
struct TerrainBackground {
  QColor top;
  QColor bottom;
};

/// What it takes to draw one picture of a terrain.
struct TerrainFrame {
  /// The height in space of the height 1 of a field, without exaggeration.
  static constexpr double kRise = 0.42;
  /// How deep the block below the lowest height is, in space.
  static constexpr double kBase = 0.07;
  /// How many triangles are drawn at most, in motion and when all is still.
  static constexpr int kCoarseTriangles = 60'000;
  static constexpr int kFineTriangles = 200'000;

  std::shared_ptr<const HeightField> field;
  std::shared_ptr<const SurfaceColors> colors;
  TerrainSettings settings;
  TerrainCamera camera;
  TerrainBackground background;
  QSize pixels;
  /// Drawn once the view is still: with more triangles and smooth edges.
  bool is_fine = false;

  [[nodiscard]] double GetRise() const { return kRise * settings.exaggeration; }
  [[nodiscard]] double GetGround() const { return static_cast<double>(field->GetLowest()) * GetRise() - kBase; }
  /// Of a ball that shows the whole block when it fits into the picture.
  [[nodiscard]] double GetRadius() const;
  /// The camera looks at the middle of all heights from afar, and at the surface when it is near.
  [[nodiscard]] TerrainEye GetEye(const QSize& size) const;
};
