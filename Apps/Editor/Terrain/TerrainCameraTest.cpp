// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TerrainCamera.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr QSize kPixels(400, 300);

TEST(TerrainCamera, StaysAboveTheGround) {
  TerrainCamera camera;
  camera.Orbit(0.0, 500.0);
  EXPECT_EQ(camera.GetPitch(), 89.0);
  camera.Orbit(0.0, -500.0);
  EXPECT_EQ(camera.GetPitch(), 4.0);
  EXPECT_GT(camera.GetEye(kPixels, 0.0, 1.0).place.z(), 0.0F);
}

TEST(TerrainCamera, GoesAroundAsOftenAsOneLikes) {
  TerrainCamera camera;
  const double yaw = camera.GetYaw();
  for (int i = 0; i < 8; ++i) camera.Orbit(90.0, 0.0);
  EXPECT_NEAR(camera.GetYaw(), yaw, 1e-9);
}

TEST(TerrainCamera, LooksFromTheBottomOfTheImageAtYawZero) {
  TerrainCamera camera;
  camera.Orbit(-camera.GetYaw(), 0.0);
  const QVector3D front = camera.GetEye(kPixels, 0.0, 1.0).place;
  EXPECT_NEAR(front.x(), 0.0F, 1e-6F);
  EXPECT_LT(front.y(), -1.0F);
  // To the right of that is where x grows.
  camera.Orbit(90.0, 0.0);
  const QVector3D right = camera.GetEye(kPixels, 0.0, 1.0).place;
  EXPECT_GT(right.x(), 1.0F);
  EXPECT_NEAR(right.y(), 0.0F, 1e-6F);
}

TEST(TerrainCamera, ComesNearerWithinBounds) {
  TerrainCamera camera;
  const float far_away = camera.GetEye(kPixels, 0.0, 1.0).place.length();
  camera.Zoom(2.0);
  EXPECT_EQ(camera.GetDistance(), 0.5);
  EXPECT_NEAR(camera.GetEye(kPixels, 0.0, 1.0).place.length(), far_away / 2.0F, 1e-5F);
  camera.Zoom(1e9);
  EXPECT_EQ(camera.GetDistance(), TerrainCamera::kLeastDistance);
  camera.Zoom(1e-9);
  EXPECT_EQ(camera.GetDistance(), TerrainCamera::kMostDistance);
}

TEST(TerrainCamera, MovesAsThePictureIsSeen) {
  TerrainCamera camera;
  camera.Orbit(-camera.GetYaw(), 0.0);
  camera.Pan(0.1, 0.0);
  EXPECT_NEAR(camera.GetTargetX(), 0.244, 1e-9);
  EXPECT_NEAR(camera.GetTargetY(), 0.0, 1e-9);
  camera.Reset();
  camera.Orbit(90.0 - camera.GetYaw(), 0.0);
  // Seen from the right, the right of the picture is where y grows, and up is to the left.
  camera.Pan(0.1, 0.0);
  EXPECT_NEAR(camera.GetTargetX(), 0.0, 1e-9);
  EXPECT_NEAR(camera.GetTargetY(), 0.244, 1e-9);
  camera.Pan(0.0, 0.1);
  EXPECT_LT(camera.GetTargetX(), -0.2);
  camera.Pan(100.0, 100.0);
  EXPECT_EQ(camera.GetTargetX(), -1.0);
  EXPECT_EQ(camera.GetTargetY(), 1.0);
}

TEST(TerrainCamera, ShowsThePlaceThatItLooksAtInTheMiddle) {
  TerrainCamera camera;
  camera.Pan(0.1, -0.05);
  const TerrainEye eye = camera.GetEye(kPixels, 0.3, 1.0);
  const QVector3D seen =
      eye.matrix.map(QVector3D(static_cast<float>(camera.GetTargetX()), static_cast<float>(camera.GetTargetY()), 0.3F));
  EXPECT_NEAR(seen.x(), 0.0F, 1e-5F);
  EXPECT_NEAR(seen.y(), 0.1F, 1e-5F);
  EXPECT_GT(seen.z(), -1.0F);
  EXPECT_LT(seen.z(), 1.0F);
}

// A ball of the radius that is given touches the rim of the shorter side.
TEST(TerrainCamera, FitsTheShorterSideOfThePicture) {
  const TerrainCamera camera;
  const float wide = camera.GetEye(QSize(800, 300), 0.0, 1.0).place.length();
  EXPECT_NEAR(wide, 1.0 / std::sin(16.0 * 3.14159265358979 / 180.0), 1e-4);
  EXPECT_GT(camera.GetEye(QSize(150, 300), 0.0, 1.0).place.length(), 1.5F * wide);
  EXPECT_GT(camera.GetEye(QSize(0, 0), 0.0, 1.0).place.length(), 0.0F);
}

TEST(TerrainCamera, ResetsToWhereItBegan) {
  TerrainCamera camera;
  const TerrainCamera fresh;
  camera.Orbit(33.0, 10.0);
  camera.Pan(0.2, 0.2);
  camera.Zoom(3.0);
  camera.Reset();
  EXPECT_EQ(camera.GetYaw(), fresh.GetYaw());
  EXPECT_EQ(camera.GetPitch(), fresh.GetPitch());
  EXPECT_EQ(camera.GetDistance(), 1.0);
  EXPECT_EQ(camera.GetTargetX(), 0.0);
  EXPECT_EQ(camera.GetTargetY(), 0.0);
}

}  // namespace
