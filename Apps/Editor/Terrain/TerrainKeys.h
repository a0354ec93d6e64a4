// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QKeyEvent>
#include <optional>

/// What a key does to the view of a terrain.
struct TerrainMove {
  enum Kind { kOrbit, kPan, kZoom, kReset, kWireframe };
  Kind kind = kReset;
  /// Degrees, parts of the picture's height, or the factor in `x`.
  double x = 0.0;
  double y = 0.0;
};

/// The arrows turn, with Shift they move; plus, minus and the keys for pages zoom; Home resets; W is for the wireframe.
std::optional<TerrainMove> FindTerrainKey(const QKeyEvent& event);
