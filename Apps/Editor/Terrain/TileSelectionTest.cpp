// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TileSelection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "Apps/Editor/Terrain/TerrainTesting.h"

namespace {

using TerrainTest::MakeField;

/// A surface of 8 by 8 tiles of the finest level with hills everywhere.
std::shared_ptr<const TileTree> MakeTree() {
  return TileTree::Make(*MakeField(257, 257, [](int x, int y) { return ((x ^ y) & 1) != 0 ? 1.0 : 0.0; }), {});
}

/// Looks down from a place; the picture shows so much of space to each side at the height 0.
TerrainEye LookDown(float x, float y, float height, float half_extent) {
  TerrainEye eye;
  eye.place = QVector3D(x, y, height);
  eye.pixels_per_unit = 1000.0F;
  eye.rise = 0.1F;
  eye.ground = -0.1F;
  eye.matrix.frustum(-half_extent * 0.01F / height, half_extent * 0.01F / height, -half_extent * 0.01F / height,
                     half_extent * 0.01F / height, 0.01F, 100.0F);
  eye.matrix.lookAt(eye.place, QVector3D(x, y, 0.0F), QVector3D(0.0F, 1.0F, 0.0F));
  return eye;
}

/// How often each tile of the finest level is covered.
std::vector<int> CountCover(const std::vector<TileKey>& tiles) {
  std::vector<int> counts(64, 0);
  for (const TileKey& tile : tiles) {
    for (int y = tile.y << tile.level; y < (tile.y + 1) << tile.level; ++y) {
      for (int x = tile.x << tile.level; x < (tile.x + 1) << tile.level; ++x) {
        ++counts[static_cast<std::size_t>(y * 8 + x)];
      }
    }
  }
  return counts;
}

TEST(TileSelection, SeesBoxesInThePicture) {
  const TerrainEye eye = LookDown(0.0F, 0.0F, 1.0F, 0.5F);
  EXPECT_TRUE(MayBeVisible({-0.1F, 0.1F, -0.1F, 0.1F, 0.0F, 1.0F}, eye));
  EXPECT_TRUE(MayBeVisible({-5.0F, 5.0F, -5.0F, 5.0F, 0.0F, 1.0F}, eye));
  // The ground, a tenth lower, is seen to 0.55.
  EXPECT_TRUE(MayBeVisible({0.54F, 0.9F, -0.1F, 0.1F, 0.0F, 1.0F}, eye));
  EXPECT_FALSE(MayBeVisible({0.56F, 0.9F, -0.1F, 0.1F, 0.0F, 1.0F}, eye));
  EXPECT_FALSE(MayBeVisible({-0.1F, 0.1F, -0.9F, -0.56F, 0.0F, 1.0F}, eye));
}

TEST(TileSelection, KeepsToTheTrianglesItMayUse) {
  const auto tree = MakeTree();
  const TerrainEye eye = LookDown(0.0F, 0.0F, 1.0F, 5.0F);
  for (const int most : {1, 4, 5, 20, 63, 64}) {
    const std::vector<TileKey> tiles = SelectTiles(*tree, eye, most * tree->GetTrianglesPerTile(), 0.0F);
    EXPECT_LE(tiles.size(), static_cast<std::size_t>(most));
    EXPECT_EQ(CountCover(tiles), std::vector<int>(64, 1)) << most;
  }
  EXPECT_EQ(SelectTiles(*tree, eye, 0, 0.0F), (std::vector<TileKey>{{3, 0, 0}}));
  EXPECT_EQ(SelectTiles(*tree, eye, 64 * tree->GetTrianglesPerTile(), 0.0F).size(), 64U);
}

TEST(TileSelection, GivesNearPlacesTheFinerTiles) {
  const auto tree = MakeTree();
  // Above the top left corner, with seven tiles: each split makes three more.
  const std::vector<TileKey> tiles =
      SelectTiles(*tree, LookDown(-1.0F, 1.0F, 0.3F, 5.0F), 7 * tree->GetTrianglesPerTile(), 0.0F);
  EXPECT_EQ(tiles, (std::vector<TileKey>{{1, 0, 0}, {1, 0, 1}, {1, 1, 0}, {1, 1, 1}, {2, 0, 1}, {2, 1, 0}, {2, 1, 1}}));
}

TEST(TileSelection, LeavesOutWhatIsNotInThePicture) {
  const auto tree = MakeTree();
  // The tile in the top left corner is 0.25 wide; the picture shows 0.1 around its middle.
  const std::vector<TileKey> tiles = SelectTiles(*tree, LookDown(-0.875F, 0.875F, 1.0F, 0.1F), 1'000'000, 0.0F);
  EXPECT_EQ(tiles, (std::vector<TileKey>{{0, 0, 0}}));
  EXPECT_TRUE(SelectTiles(*tree, LookDown(-5.0F, 5.0F, 1.0F, 0.1F), 1'000'000, 0.0F).empty());
}

// From 10 away quads take 0.78 pixels, those of the next levels 1.56, 3.1 and 6.2: 1000 per unit at a distance of 1.
TEST(TileSelection, StopsAtQuadsOfTheSizeThatIsAskedFor) {
  const auto tree = MakeTree();
  TerrainEye eye = LookDown(0.0F, 0.0F, 11.0F, 50.0F);
  // As high as half of the surface is wide: too steep for fewer quads.
  eye.rise = 1.0F;
  const auto finest = [&](float pixels) {
    const std::vector<TileKey> tiles = SelectTiles(*tree, eye, 1'000'000, pixels);
    return std::min_element(tiles.begin(), tiles.end())->level;
  };
  EXPECT_EQ(finest(1.5F), 0);
  EXPECT_EQ(finest(1.6F), 1);
  EXPECT_EQ(finest(3.2F), 2);
  EXPECT_EQ(finest(6.3F), 3);
}

}  // namespace
