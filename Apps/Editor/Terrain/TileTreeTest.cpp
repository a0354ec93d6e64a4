// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TileTree.h"

#include <gtest/gtest.h>

#include "Apps/Editor/Terrain/TerrainTesting.h"
#include "Tests/Support/HostTesting.h"

namespace {

using TerrainTest::MakeField;
using Testing::kNan;

TEST(TileTree, HasOneTileForAFewPoints) {
  const auto tree = TileTree::Make(*MakeField(33, 2, [](int, int) { return 0.5; }), {});
  EXPECT_EQ(tree->GetRoot(), (TileKey{0, 0, 0}));
  EXPECT_TRUE(tree->GetChildren(tree->GetRoot()).empty());
}

// 65 points are 64 quads: two tiles of 32; one point more begins a third.
TEST(TileTree, SplitsTheSurfaceIntoTilesOf32Quads) {
  const auto two = TileTree::Make(*MakeField(65, 33, [](int, int) { return 0.5; }), {});
  EXPECT_EQ(two->GetRoot(), (TileKey{1, 0, 0}));
  EXPECT_EQ(two->GetChildren(two->GetRoot()), (std::vector<TileKey>{{0, 0, 0}, {0, 1, 0}}));
  const auto three = TileTree::Make(*MakeField(66, 33, [](int, int) { return 0.5; }), {});
  EXPECT_EQ(three->GetRoot(), (TileKey{2, 0, 0}));
  EXPECT_EQ(three->GetChildren(three->GetRoot()), (std::vector<TileKey>{{1, 0, 0}, {1, 1, 0}}));
  EXPECT_EQ(three->GetChildren({1, 1, 0}), (std::vector<TileKey>{{0, 2, 0}}));
}

TEST(TileTree, KnowsTheBoxOfEachTile) {
  const auto field = MakeField(65, 33, [](int x, int y) { return x == 64 ? 1.0 : (y == 32 ? 0.25 : 0.5); });
  const auto tree = TileTree::Make(*field, {});
  const TileBox left = tree->GetBox({0, 0, 0});
  EXPECT_EQ(left.left, -1.0F);
  EXPECT_EQ(left.right, 0.0F);
  EXPECT_EQ(left.top, 0.5F);
  EXPECT_EQ(left.bottom, -0.5F);
  EXPECT_EQ(left.lowest, 0.25F);
  EXPECT_EQ(left.highest, 0.5F);
  EXPECT_EQ(tree->GetBox({0, 1, 0}).highest, 1.0F);
  EXPECT_EQ(tree->GetBox({1, 0, 0}).right, 1.0F);
  EXPECT_EQ(tree->GetQuadSize({0, 0, 0}), 1.0F / 32.0F);
  EXPECT_EQ(tree->GetQuadSize({1, 0, 0}), 1.0F / 16.0F);
}

// The points between two tiles belong to both.
TEST(TileTree, LeavesTilesOfHolesOut) {
  const auto field = MakeField(65, 33, [](int x, int) { return x < 32 ? kNan : 0.5F; });
  const auto tree = TileTree::Make(*field, {});
  EXPECT_FALSE(tree->IsEmpty({0, 0, 0}));
  const auto further = TileTree::Make(*MakeField(65, 33, [](int x, int) { return x < 33 ? kNan : 0.5F; }), {});
  EXPECT_TRUE(further->IsEmpty({0, 0, 0}));
  EXPECT_EQ(further->GetChildren(further->GetRoot()), (std::vector<TileKey>{{0, 1, 0}}));
}

TEST(TileTree, StopsWhenItIsToldTo) {
  EXPECT_EQ(TileTree::Make(*MakeField(65, 65, [](int, int) { return 0.5; }), [] { return true; }), nullptr);
}

}  // namespace
