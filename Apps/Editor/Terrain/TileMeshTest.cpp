// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TileMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "Apps/Editor/Terrain/TerrainTesting.h"
#include "Tests/Support/HostTesting.h"

namespace {

using TerrainTest::MakeField;
using Testing::kNan;

TileMesh Build(const HeightField& field, const TileKey& tile) {
  return BuildTile(field, SurfaceColors(), tile, TileTree::Make(field, {})->GetBox(tile));
}

bool IsWall(const TerrainVertex& vertex) { return vertex.kind[0] == 255; }

std::vector<TerrainVertex> FindSurface(const TileMesh& mesh) {
  std::vector<TerrainVertex> surface;
  std::copy_if(mesh.vertices.begin(), mesh.vertices.end(), std::back_inserter(surface),
               [](const TerrainVertex& vertex) { return !IsWall(vertex); });
  return surface;
}

int CountWalls(const TileMesh& mesh, float look_x, float look_y) {
  const auto corners = std::count_if(mesh.vertices.begin(), mesh.vertices.end(), [&](const TerrainVertex& vertex) {
    return IsWall(vertex) && vertex.slope_x == look_x && vertex.slope_y == look_y;
  });
  return static_cast<int>(corners / 4);
}

TEST(TileMesh, IsABlockForOneQuad) {
  const TileMesh mesh = Build(*MakeField(2, 2, {0.0F, 0.25F, 0.5F, 1.0F}), {0, 0, 0});
  // Two triangles on top, and two for each of four walls.
  EXPECT_EQ(mesh.triangles.size(), 10U * 3U);
  EXPECT_EQ(mesh.vertices.size(), 4U + 4U * 4U);
  EXPECT_EQ(mesh.lines.size(), 5U * 2U);
  const std::vector<TerrainVertex> surface = FindSurface(mesh);
  ASSERT_EQ(surface.size(), 4U);
  const std::array<std::array<float, 3>, 4> expected{{{-1, 1, 0}, {1, 1, 0.25F}, {-1, -1, 0.5F}, {1, -1, 1}}};
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ((std::array<float, 3>{surface[i].x, surface[i].y, surface[i].height}), expected[i]) << i;
    EXPECT_EQ(surface[i].color, SurfaceColors::kClay);
  }
  for (const auto& [x, y] : {std::pair(1.0F, 0.0F), {-1.0F, 0.0F}, {0.0F, 1.0F}, {0.0F, -1.0F}}) {
    EXPECT_EQ(CountWalls(mesh, x, y), 1) << x << " " << y;
  }
}

TEST(TileMesh, PutsTheFeetOfWallsOnTheGround) {
  const TileMesh mesh = Build(*MakeField(2, 2, {0.0F, 0.0F, 0.0F, 0.0F}), {0, 0, 0});
  int on_ground = 0;
  for (const TerrainVertex& vertex : mesh.vertices) on_ground += vertex.kind[1] == 255 ? 1 : 0;
  EXPECT_EQ(on_ground, 8);
}

// Of a diagonal, the flatter one: from 0 to 0 here, from 1 to 1 in its mirror image.
TEST(TileMesh, SplitsQuadsAlongTheFlatterDiagonal) {
  const auto top = [](const std::vector<float>& heights) {
    const TileMesh mesh = Build(*MakeField(2, 2, heights), {0, 0, 0});
    return std::vector<std::uint16_t>(mesh.triangles.begin(), mesh.triangles.begin() + 6);
  };
  EXPECT_EQ(top({0.0F, 1.0F, 0.5F, 0.0F}), (std::vector<std::uint16_t>{0, 2, 3, 0, 3, 1}));
  EXPECT_EQ(top({1.0F, 0.0F, 0.0F, 0.5F}), (std::vector<std::uint16_t>{0, 2, 1, 2, 3, 1}));
}

TEST(TileMesh, KnowsTheSlopes) {
  // A spacing of 1: up by 0.25 and then by 0.5 to the right, and by 0.125 downward.
  const TileMesh mesh = Build(*MakeField(3, 2, {0.0F, 0.25F, 0.75F, 0.125F, 0.375F, 0.875F}), {0, 0, 0});
  const std::vector<TerrainVertex> surface = FindSurface(mesh);
  const auto at = [&](float x, float y) {
    return *std::find_if(surface.begin(), surface.end(), [&](const auto& v) { return v.x == x && v.y == y; });
  };
  EXPECT_EQ(at(-1.0F, 0.5F).slope_x, 0.25F);
  EXPECT_EQ(at(0.0F, 0.5F).slope_x, 0.375F);
  EXPECT_EQ(at(1.0F, 0.5F).slope_x, 0.5F);
  // The top of the image is where y grows.
  EXPECT_EQ(at(0.0F, 0.5F).slope_y, -0.125F);
  EXPECT_EQ(at(0.0F, -0.5F).slope_y, -0.125F);
}

TEST(TileMesh, LeavesQuadsWithAHoleAtACornerOut) {
  EXPECT_TRUE(Build(*MakeField(3, 3, {0, 0, 0, 0, kNan, 0, 0, 0, 0}), {0, 0, 0}).triangles.empty());
  // Four by two points; without the last column of points two quads are left, whose wall looks to the right.
  const TileMesh mesh = Build(*MakeField(4, 2, {0, 0, 0, 0, 0, 0, 0, kNan}), {0, 0, 0});
  EXPECT_EQ(mesh.triangles.size(), (2U * 2U + 6U * 2U) * 3U);
  EXPECT_EQ(CountWalls(mesh, 1.0F, 0.0F), 1);
  EXPECT_EQ(CountWalls(mesh, 0.0F, 1.0F), 2);
  for (const std::uint16_t index : mesh.triangles) ASSERT_LT(index, mesh.vertices.size());
  for (const TerrainVertex& vertex : mesh.vertices) EXPECT_EQ(vertex.height, 0.0F);
}

TEST(TileMesh, HasSkirtsTowardOtherTiles) {
  const auto field = MakeField(65, 33, [](int, int y) { return y == 0 ? 1.0 : 0.5; });
  const TileMesh mesh = Build(*field, {0, 0, 0});
  // Quads, walls at three sides, a skirt at the fourth.
  EXPECT_EQ(mesh.triangles.size(), (2U * 1024U + 3U * 64U + 64U) * 3U);
  EXPECT_EQ(CountWalls(mesh, 1.0F, 0.0F), 0);
  EXPECT_EQ(CountWalls(mesh, -1.0F, 0.0F), 32);
  // Half of the heights of the tile lower, and a little.
  const std::vector<TerrainVertex> surface = FindSurface(mesh);
  const auto lowest = std::min_element(surface.begin(), surface.end(),
                                       [](const auto& a, const auto& b) { return a.height < b.height; });
  EXPECT_EQ(lowest->x, 0.0F);
  EXPECT_FLOAT_EQ(lowest->height, 0.5F - 0.25F - 0.002F);
  EXPECT_EQ(mesh.lines.size(), (3U * 1024U + 32U) * 2U);
}

// A hole beyond the last column begins in the next tile; the wall belongs to this one.
TEST(TileMesh, HasWallsTowardHolesOfOtherTiles) {
  const auto field = MakeField(65, 33, [](int x, int) { return x == 33 ? kNan : 0.5F; });
  EXPECT_EQ(CountWalls(Build(*field, {0, 0, 0}), 1.0F, 0.0F), 32);
  EXPECT_EQ(CountWalls(Build(*field, {0, 1, 0}), -1.0F, 0.0F), 32);
}

// 50 points are 49 spaces: 24 quads of two and one of one.
TEST(TileMesh, EndsWhereTheImageDoesWhateverTheLevel) {
  const auto field = MakeField(50, 50, [](int x, int) { return x / 49.0; });
  const TileMesh mesh = Build(*field, {1, 0, 0});
  EXPECT_EQ(mesh.triangles.size(), (2U * 25U * 25U + 4U * 25U * 2U) * 3U);
  float right = -1.0F;
  float bottom = 1.0F;
  for (const TerrainVertex& vertex : mesh.vertices) {
    right = std::max(right, vertex.x);
    bottom = std::min(bottom, vertex.y);
  }
  EXPECT_EQ(right, 1.0F);
  EXPECT_EQ(bottom, -1.0F);
}

TEST(TileMesh, NeverHasMoreTrianglesThanItsTreeSays) {
  const std::vector<std::shared_ptr<const HeightField>> fields{
      MakeField(65, 65, [](int, int) { return 0.5F; }),
      MakeField(65, 65, [](int x, int) { return x % 3 == 2 ? kNan : 0.5F; }),
      MakeField(65, 65, [](int x, int y) { return x % 3 == 2 && y % 3 == 2 ? kNan : 0.5F; }),
      MakeField(65, 65, [](int x, int y) { return x % 3 == 2 || y % 3 == 2 ? kNan : 0.5F; }),
      MakeField(65, 65, [](int x, int y) { return x * 7 % 5 == y * 3 % 7 ? kNan : 0.5F; })};
  for (const auto& field : fields) {
    const auto most = static_cast<std::size_t>(TileTree::Make(*field, {})->GetTrianglesPerTile());
    for (const TileKey& tile : {TileKey{0, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 1, 1}}) {
      EXPECT_LE(Build(*field, tile).triangles.size() / 3, most);
    }
  }
}

}  // namespace
