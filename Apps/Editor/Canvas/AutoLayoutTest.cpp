// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/AutoLayout.h"

#include <gtest/gtest.h>

#include <QRectF>
#include <string>

namespace {

const QSizeF kSize(100, 60);

bool AnyOverlap(const std::vector<QPointF>& places) {
  for (std::size_t i = 0; i < places.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (QRectF(places[i], kSize).intersects(QRectF(places[j], kSize))) return true;
    }
  }
  return false;
}

TEST(AutoLayout, PutsWhatIsFedToTheRight) {
  const auto places = LayOutGraph(std::vector<QSizeF>(4, kSize), {{0, 1}, {1, 3}, {0, 2}, {2, 3}});
  EXPECT_LT(places[0].x() + 100, places[1].x());
  EXPECT_EQ(places[1].x(), places[2].x());
  EXPECT_LT(places[1].x() + 100, places[3].x());
  // A diamond is symmetric: its ends stand in the middle.
  EXPECT_NEAR(places[0].y(), (places[1].y() + places[2].y()) / 2, 1.0);
  EXPECT_NEAR(places[3].y(), places[0].y(), 1.0);
}

TEST(AutoLayout, PutsSourcesBesideWhatTheyFeed) {
  // 0 - 1 - 2, and 3 feeds 2 alone.
  const auto places = LayOutGraph(std::vector<QSizeF>(4, kSize), {{0, 1}, {1, 2}, {3, 2}});
  EXPECT_EQ(places[3].x(), places[1].x());
}

TEST(AutoLayout, KeepsRowsFromCrossing) {
  // Two chains whose nodes are listed crosswise, held together at both ends.
  const auto places = LayOutGraph(std::vector<QSizeF>(6, kSize), {{0, 1}, {0, 2}, {1, 4}, {2, 3}, {3, 5}, {4, 5}});
  EXPECT_EQ(places[1].y() < places[2].y(), places[4].y() < places[3].y());
}

TEST(AutoLayout, LongWiresPassBesideNodes) {
  // 0 feeds 3 directly and through 1 and 2.
  const auto places = LayOutGraph(std::vector<QSizeF>(4, kSize), {{0, 1}, {1, 2}, {2, 3}, {0, 3}});
  const QPointF start = places[0] + QPointF(100, 30);
  const QPointF end = places[3] + QPointF(0, 30);
  for (const std::size_t passed : {1U, 2U}) {
    const double middle = places[passed].x() + 50;
    const double y = start.y() + (end.y() - start.y()) * (middle - start.x()) / (end.x() - start.x());
    EXPECT_TRUE(y < places[passed].y() || y > places[passed].y() + 60) << passed;
  }
}

TEST(AutoLayout, NothingOverlaps) {
  std::vector<std::pair<std::size_t, std::size_t>> edges;
  for (std::size_t i = 1; i < 60; ++i) edges.emplace_back((i * 7) % i, i);
  const auto places = LayOutGraph(std::vector<QSizeF>(70, kSize), edges);
  EXPECT_FALSE(AnyOverlap(places));
  EXPECT_EQ(LayOutGraph(std::vector<QSizeF>(70, kSize), edges), places);
}

TEST(AutoLayout, TakesNothingAndCycles) {
  EXPECT_TRUE(LayOutGraph({}, {}).empty());
  EXPECT_EQ(LayOutGraph(std::vector<QSizeF>(2, kSize), {{0, 1}, {1, 0}}).size(), 2U);
}

}  // namespace
