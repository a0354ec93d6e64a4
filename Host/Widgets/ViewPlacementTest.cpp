// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ViewPlacement.h"

#include <gtest/gtest.h>

#include <cmath>

namespace ScEng {
namespace {

ViewPlacement MakePlacement() {
  ViewPlacement placement;
  placement.SetRoom({420.0, 320.0});
  placement.SetExtent({0.0, 0.0, 100.0, 100.0});
  return placement;
}

TEST(ViewPlacement, FitsTheImageIntoTheRoomWithAMargin) {
  ViewPlacement placement = MakePlacement();
  // 320 less 10 on either side, for 100 pixels.
  EXPECT_EQ(placement.GetZoom(), 3.0);
  EXPECT_EQ(placement.ToView(QPointF(50.0, 50.0)), QPointF(210.0, 160.0));
  placement.SetRoom({120.0, 220.0});
  EXPECT_EQ(placement.GetZoom(), 1.0);
  EXPECT_TRUE(placement.IsFitted());
}

TEST(ViewPlacement, ZoomKeepsThePointUnderTheCursor) {
  ViewPlacement placement = MakePlacement();
  const QPointF at(150.0, 100.0);
  const QPointF point = placement.ToImage(at);
  placement.SetZoom(8.0, at);
  EXPECT_NEAR(placement.ToImage(at).x(), point.x(), 1e-9);
  EXPECT_NEAR(placement.ToImage(at).y(), point.y(), 1e-9);
  EXPECT_FALSE(placement.IsFitted());
}

TEST(ViewPlacement, ZoomStaysWithinItsLimits) {
  ViewPlacement placement = MakePlacement();
  placement.SetZoom(1000.0, placement.GetMiddle());
  EXPECT_EQ(placement.GetZoom(), 64.0);
  placement.SetZoom(0.0, placement.GetMiddle());
  EXPECT_EQ(placement.GetZoom(), 1.0 / 64.0);
}

TEST(ViewPlacement, StepsGoToTheNextPowerOfTheRootOfTwo) {
  ViewPlacement placement = MakePlacement();
  placement.StepZoom(1, placement.GetMiddle());
  EXPECT_DOUBLE_EQ(placement.GetZoom(), 4.0);
  placement.StepZoom(-1, placement.GetMiddle());
  EXPECT_DOUBLE_EQ(placement.GetZoom(), std::sqrt(8.0));
  placement.StepZoom(-1, placement.GetMiddle());
  EXPECT_DOUBLE_EQ(placement.GetZoom(), 2.0);
}

TEST(ViewPlacement, AnotherRoomKeepsThePointInTheMiddle) {
  ViewPlacement placement = MakePlacement();
  placement.SetZoom(8.0, QPointF(210.0, 160.0));
  placement.Pan({-80.0, 40.0});
  EXPECT_EQ(placement.ToImage(placement.GetMiddle()), QPointF(60.0, 45.0));
  placement.SetRoom({200.0, 100.0});
  EXPECT_EQ(placement.ToImage(placement.GetMiddle()), QPointF(60.0, 45.0));
  EXPECT_EQ(placement.GetZoom(), 8.0);
}

TEST(ViewPlacement, TheImageCannotBeLost) {
  ViewPlacement placement = MakePlacement();
  placement.Pan({1e6, -1e6});
  EXPECT_EQ(placement.ToImage(placement.GetMiddle()), QPointF(0.0, 100.0));
}

TEST(ViewPlacement, AnotherExtentIsFittedAndTheSameOneIsNot) {
  ViewPlacement placement = MakePlacement();
  placement.SetZoom(8.0, placement.GetMiddle());
  placement.SetExtent({0.0, 0.0, 100.0, 100.0});
  EXPECT_EQ(placement.GetZoom(), 8.0);
  placement.SetExtent({0.0, 0.0, 50.0, 50.0});
  EXPECT_EQ(placement.GetZoom(), 6.0);
}

TEST(ViewPlacement, RevealsAPixelOutsideOfTheView) {
  ViewPlacement placement = MakePlacement();
  placement.SetZoom(64.0, placement.GetMiddle());
  placement.Reveal({90.5, 50.5});
  const QPointF place = placement.ToView(QPointF(90.5, 50.5));
  EXPECT_NEAR(place.x(), 420.0 - 24.0, 1e-6);
  EXPECT_GT(place.y(), 0.0);
  EXPECT_LT(place.y(), 320.0);
}

}  // namespace
}  // namespace ScEng
