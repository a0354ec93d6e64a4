// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/DiscRings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

using ReliefBevel::DiscRings;

constexpr std::ptrdiff_t kStride = 4096;

/// The column and row of a step through a plane.
std::pair<int, int> Split(std::ptrdiff_t step) {
  const auto y = static_cast<int>(std::floor(static_cast<double>(step + kStride / 2) / static_cast<double>(kStride)));
  return {static_cast<int>(step - y * kStride), y};
}

int GetSquare(int x, int y) { return x * x + y * y; }

/// Calls `check(ring, wedge, sector, x, y)` for all offsets of one kind, with the sector's index in its belt.
template <class Check>
void ForEachOffset(const DiscRings& discs, const DiscRings::Offsets& kind, int radius, const Check& check) {
  for (int ring = 1; ring <= radius; ++ring) {
    const DiscRings::Belt& belt = discs.belts[static_cast<std::size_t>(DiscRings::GetBelt(ring))];
    const std::size_t first = discs.rings[static_cast<std::size_t>(ring)];
    for (std::size_t sector = 0; sector < belt.sectors * DiscRings::kWedges; ++sector) {
      for (auto i = kind.begins[first + sector]; i < kind.begins[first + sector + 1]; ++i) {
        const auto [x, y] = Split(kind.offsets[i]);
        check(ring, sector / belt.sectors, belt.first + sector, x, y);
      }
    }
  }
}

class DiscRingsOfRadius : public testing::TestWithParam<int> {};

TEST_P(DiscRingsOfRadius, HoldEachOffsetOnceInTheRingOfItsDistance) {
  const int radius = GetParam();
  const DiscRings discs(radius, kStride);
  std::vector<std::pair<int, int>> found;
  for (const DiscRings::Offsets* kind : {&discs.apart, &discs.shared}) {
    ForEachOffset(discs, *kind, radius, [&](int ring, std::size_t, std::size_t, int x, int y) {
      EXPECT_GT(GetSquare(x, y), (ring - 1) * (ring - 1));
      EXPECT_LE(GetSquare(x, y), ring * ring);
      found.emplace_back(x, y);
    });
  }
  std::vector<std::pair<int, int>> disc;
  for (int x = -radius; x <= radius; ++x) {
    for (int y = -radius; y <= radius; ++y) {
      if ((x != 0 || y != 0) && GetSquare(x, y) <= radius * radius) disc.emplace_back(x, y);
    }
  }
  std::sort(found.begin(), found.end());
  EXPECT_EQ(found, disc);
}

TEST_P(DiscRingsOfRadius, ShareWhatTheNeighborOfTheWedgeHasSeen) {
  // Right, down, left and up.
  constexpr std::array<std::pair<int, int>, DiscRings::kWedges> kNeighbors = {{{1, 0}, {0, 1}, {-1, 0}, {0, -1}}};
  const int radius = GetParam();
  const DiscRings discs(radius, kStride);
  const auto is_seen = [&](int ring, std::size_t wedge, int x, int y) {
    return GetSquare(x - kNeighbors[wedge].first, y - kNeighbors[wedge].second) <= (ring - 1) * (ring - 1);
  };
  ForEachOffset(discs, discs.shared, radius, [&](int ring, std::size_t wedge, std::size_t, int x, int y) {
    EXPECT_TRUE(is_seen(ring, wedge, x, y)) << ring << ": " << x << ", " << y;
  });
  ForEachOffset(discs, discs.apart, radius, [&](int ring, std::size_t, std::size_t, int x, int y) {
    for (std::size_t wedge = 0; wedge < DiscRings::kWedges; ++wedge) {
      EXPECT_FALSE(is_seen(ring, wedge, x, y)) << ring << ": " << x << ", " << y;
    }
  });
}

TEST_P(DiscRingsOfRadius, FitIntoTheirWindows) {
  const int radius = GetParam();
  const DiscRings discs(radius, kStride);
  for (const DiscRings::Offsets* kind : {&discs.apart, &discs.shared}) {
    ForEachOffset(discs, *kind, radius, [&](int, std::size_t, std::size_t sector, int x, int y) {
      const auto [left, top] = Split(discs.windows[sector]);
      EXPECT_TRUE(x >= left && x < left + DiscRings::kWindow && y >= top && y < top + DiscRings::kWindow);
      // A window that begins in a cell is found by that cell.
      const auto cells = kStride / DiscRings::kCell;
      const auto row = static_cast<int>(std::floor(static_cast<double>(top) / DiscRings::kCell));
      const auto column = static_cast<int>(std::floor(static_cast<double>(left) / DiscRings::kCell));
      EXPECT_EQ(discs.cells[sector], row * cells + column);
      // No window reaches further than the disc, but for its own size.
      EXPECT_LE(std::max(std::abs(left), std::abs(top)), std::max(radius, DiscRings::kWindow - 1));
    });
  }
}

INSTANTIATE_TEST_SUITE_P(Relief, DiscRingsOfRadius, testing::Values(1, 2, 3, 5, 7, 8, 9, 16, 17, 25, 40, 131),
                         [](const auto& radius) { return "Of" + std::to_string(radius.param); });

TEST(DiscRings, OfNoRadiusAreEmpty) {
  const DiscRings discs(0, kStride);
  EXPECT_TRUE(discs.belts.empty());
  EXPECT_TRUE(discs.apart.offsets.empty());
  EXPECT_TRUE(discs.shared.offsets.empty());
}

}  // namespace
