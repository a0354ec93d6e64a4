// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QMatrix4x4>
#include <QVector3D>
#include <vector>

#include "Apps/Editor/Terrain/TileTree.h"

/// From where a surface is seen.
struct TerrainEye {
  /// From space to the picture, whose visible part is -1 to 1 in each direction.
  QMatrix4x4 matrix;
  QVector3D place;
  /// How many pixels a thing of size 1 at distance 1 takes.
  float pixels_per_unit = 1.0F;
  /// From heights of the field to those of space, and the height in space of the ground that it stands on.
  float rise = 1.0F;
  float ground = 0.0F;
};

/// Whether any of a box may be in the picture. Boxes reach down to the ground.
bool MayBeVisible(const TileBox& box, const TerrainEye& eye);

/// The tiles that show what is visible of a surface with at most so many triangles, the more of them the nearer. They
/// cover every visible point once. A surface that needs fewer triangles for quads of `pixels_per_quad` has fewer. In
/// the order of their keys.
std::vector<TileKey> SelectTiles(const TileTree& tree, const TerrainEye& eye, int triangles, float pixels_per_quad);
