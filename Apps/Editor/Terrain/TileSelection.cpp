// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TileSelection.h"

#include <QVector4D>
#include <algorithm>
#include <array>
#include <queue>

namespace {

struct Candidate {
  float need;
  TileKey tile;
  bool operator<(const Candidate& other) const { return need != other.need ? need < other.need : other.tile < tile; }
};

float DistanceOutside(float value, float low, float high) { return std::max({low - value, value - high, 0.0F}); }

/// How many pixels wide the nearest quads of a tile appear; less where the surface is flat, for it needs fewer.
float FindNeed(const TileTree& tree, const TerrainEye& eye, const TileKey& tile) {
  const TileBox box = tree.GetBox(tile);
  const QVector3D away(DistanceOutside(eye.place.x(), box.left, box.right),
                       DistanceOutside(eye.place.y(), box.bottom, box.top),
                       DistanceOutside(eye.place.z(), box.lowest * eye.rise, box.highest * eye.rise));
  const float quad = tree.GetQuadSize(tile);
  const float distance = std::max(away.length(), quad);
  const float relief = (box.highest - box.lowest) * eye.rise / (quad * TileKey::kQuads);
  return quad * eye.pixels_per_unit / distance * std::clamp(0.4F + 2.0F * relief, 0.4F, 1.0F);
}

std::vector<TileKey> FindVisible(const TileTree& tree, const TerrainEye& eye, std::vector<TileKey> tiles) {
  std::erase_if(tiles, [&](const TileKey& tile) { return !MayBeVisible(tree.GetBox(tile), eye); });
  return tiles;
}

}  // namespace

bool MayBeVisible(const TileBox& box, const TerrainEye& eye) {
  const std::array<float, 2> x{box.left, box.right};
  const std::array<float, 2> y{box.bottom, box.top};
  const std::array<float, 2> z{std::min(eye.ground, box.lowest * eye.rise), box.highest * eye.rise};
  std::array<int, 6> outside{};
  for (const float px : x) {
    for (const float py : y) {
      for (const float pz : z) {
        const QVector4D p = eye.matrix * QVector4D(px, py, pz, 1.0F);
        const std::array<bool, 6> beyond{p.x() < -p.w(), p.x() > p.w(),  p.y() < -p.w(),
                                         p.y() > p.w(),  p.z() < -p.w(), p.z() > p.w()};
        for (std::size_t i = 0; i < beyond.size(); ++i) outside[i] += beyond[i] ? 1 : 0;
      }
    }
  }
  // All corners beyond one side of the picture.
  return std::find(outside.begin(), outside.end(), 8) == outside.end();
}

std::vector<TileKey> SelectTiles(const TileTree& tree, const TerrainEye& eye, int triangles, float pixels_per_quad) {
  const auto most = static_cast<std::size_t>(std::max(1, triangles / tree.GetTrianglesPerTile()));
  std::priority_queue<Candidate> open;
  std::vector<TileKey> chosen;
  if (!tree.IsEmpty(tree.GetRoot())) {
    for (const TileKey& tile : FindVisible(tree, eye, {tree.GetRoot()})) open.push({FindNeed(tree, eye, tile), tile});
  }
  while (!open.empty()) {
    const Candidate next = open.top();
    open.pop();
    const std::vector<TileKey> children = FindVisible(tree, eye, tree.GetChildren(next.tile));
    const bool is_fine = next.tile.level == 0 || next.need <= pixels_per_quad;
    if (is_fine || chosen.size() + open.size() + children.size() > most) {
      chosen.push_back(next.tile);
      continue;
    }
    for (const TileKey& tile : children) open.push({FindNeed(tree, eye, tile), tile});
  }
  std::sort(chosen.begin(), chosen.end());
  return chosen;
}
