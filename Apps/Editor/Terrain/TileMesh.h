// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "Apps/Editor/Terrain/HeightField.h"
#include "Apps/Editor/Terrain/SurfaceColors.h"
#include "Apps/Editor/Terrain/TileTree.h"

/// A corner of triangles, as the graphics processor reads it.
struct TerrainVertex {
  float x = 0.0F;
  float y = 0.0F;
  float height = 0.0F;
  /// How height changes along x and y; of a wall the direction in which it looks.
  float slope_x = 0.0F;
  float slope_y = 0.0F;
  /// How far the surface stands out of its surroundings: above 0 on ridges, below 0 in hollows.
  float relief = 0.0F;
  SurfaceColor color{};
  /// 255 for a wall, 255 for what stands on the ground whatever its height, and two bytes that fill up.
  std::array<std::uint8_t, 4> kind{};
};
static_assert(sizeof(TerrainVertex) == 32, "attributes are read at fixed places");

struct TileMesh {
  std::vector<TerrainVertex> vertices;
  /// Three for each triangle.
  std::vector<std::uint16_t> triangles;
  /// Two for each line of the wireframe.
  std::vector<std::uint16_t> lines;
};

/// The triangles of a tile. A quad has two unless a corner is a hole. Where the surface ends, at the sides of the image
/// and around holes, a wall goes down to the ground; at the other sides of the tile a skirt goes a little down, which
/// hides the gap to a neighbor of another level.
TileMesh BuildTile(const HeightField& field, const SurfaceColors& colors, const TileKey& tile, const TileBox& box);
