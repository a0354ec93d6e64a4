// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <QComboBox>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <cmath>

#include "Apps/Editor/Terrain/TerrainTesting.h"
#include "Apps/Editor/Terrain/TerrainView.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Widgets/MouseTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace {

using TerrainTest::MakeView;
using Testing::kNan;

/// On a display with OpenGL.
class TerrainPictures : public testing::Test {
 protected:
  TerrainPictures() {
    view_.resize(400, 320);
    view_.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&view_, 60000));
    // From straight above nearly, so that places are easily found.
    canvas_.Orbit(-canvas_.GetCamera().GetYaw(), 90.0);
  }

  /// The colour at a place of space on the surface of a flat image at height 0.5.
  [[nodiscard]] QColor At(const QImage& picture, float x, float y, double height = 0.5) const {
    TerrainFrame frame;
    frame.field = std::make_shared<const HeightField>(heights_);
    frame.camera = canvas_.GetCamera();
    frame.settings = canvas_.GetSettings();
    const TerrainEye eye = frame.GetEye(picture.size());
    const QVector3D place = eye.matrix.map(QVector3D(x, y, static_cast<float>(height * frame.GetRise())));
    return picture.pixelColor(static_cast<int>((place.x() + 1.0F) * 0.5F * static_cast<float>(picture.width())),
                              static_cast<int>((1.0F - place.y()) * 0.5F * static_cast<float>(picture.height())));
  }
  void SetHeights(const std::shared_ptr<const ScEng::ViewImage>& heights) {
    heights_ = heights;
    view_.SetHeights(heights);
  }
  template <class Formula>
  void SetFormula(int size, const Formula& formula) {
    std::vector<float> values;
    for (int y = 0; y < size; ++y) {
      for (int x = 0; x < size; ++x) values.push_back(static_cast<float>(formula(x, y)));
    }
    SetHeights(MakeView(size, size, values));
  }

  std::shared_ptr<const ScEng::ViewImage> heights_;
  TerrainView view_;
  TerrainCanvas& canvas_ = view_.GetCanvas();
};

TEST_F(TerrainPictures, OpenGlIsThere) { EXPECT_TRUE(view_.IsAvailable()) << view_.GetProblem().toStdString(); }

TEST_F(TerrainPictures, AreDrawnBesideTheInterface) {
  TerrainPainter painter;
  EXPECT_NE(painter.GetWorker().thread(), QThread::currentThread());
  EXPECT_EQ(painter.GetProblem(), "");
}

TEST_F(TerrainPictures, ShowClayOnAGround) {
  SetFormula(64, [](int, int) { return 0.5; });
  const QImage picture = view_.Grab();
  const QColor clay = At(picture, 0.0F, 0.0F);
  // Red before green before blue, and light.
  EXPECT_GE(clay.red(), clay.green());
  EXPECT_GE(clay.green(), clay.blue());
  EXPECT_GT(clay.lightness(), 120);
  for (const float x : {-0.9F, 0.9F}) {
    for (const float y : {-0.9F, 0.9F}) EXPECT_EQ(At(picture, x, y), clay) << x << " " << y;
  }
  EXPECT_NE(picture.pixelColor(2, 2), clay);
  EXPECT_TRUE(canvas_.GetNotice().isEmpty());
}

// The light comes from the top left: a roof whose ridge runs from top to bottom is lighter on its left side.
TEST_F(TerrainPictures, AreLitFromWhereTheLightStands) {
  SetFormula(65, [](int x, int) { return 1.0 - std::abs(x - 32) / 32.0; });
  TerrainSettings settings;
  settings.azimuth_degrees = 270.0;
  view_.SetSettings(settings);
  const QImage from_left = view_.Grab();
  EXPECT_GT(At(from_left, -0.5F, 0.0F).lightness(), At(from_left, 0.5F, 0.0F).lightness() + 20);
  settings.azimuth_degrees = 90.0;
  view_.SetSettings(settings);
  const QImage from_right = view_.Grab();
  EXPECT_GT(At(from_right, 0.5F, 0.0F).lightness(), At(from_right, -0.5F, 0.0F).lightness() + 20);
}

TEST_F(TerrainPictures, AreTheRightWayUp) {
  SetFormula(64, [](int, int) { return 0.5; });
  // Red at the top left, else blue.
  std::vector<float> samples;
  for (int i = 0; i < 4; ++i) samples.insert(samples.end(), {i == 0 ? 1.0F : 0.0F, 0.0F, i == 0 ? 0.0F : 1.0F, 1.0F});
  view_.SetColors(ScEng::ViewImage::Make(*Testing::MakeImage(2, 2, ColorMode::kColor, samples)), {});
  const QImage picture = view_.Grab();
  EXPECT_GT(At(picture, -0.5F, 0.5F).red(), 100);
  EXPECT_EQ(At(picture, -0.5F, 0.5F).blue(), 0);
  for (const auto& [x, y] : {std::pair(0.5F, 0.5F), {-0.5F, -0.5F}, {0.5F, -0.5F}}) {
    EXPECT_GT(At(picture, x, y).blue(), 100) << x << " " << y;
    EXPECT_EQ(At(picture, x, y).red(), 0) << x << " " << y;
  }
}

TEST_F(TerrainPictures, TakeColorAndTintFromASecondMap) {
  SetFormula(64, [](int, int) { return 0.5; });
  const QColor clay = At(view_.Grab(), 0.5F, 0.0F);
  view_.SetMaps({"one.image", "two.image"});
  QSignalSpy changed(&view_, &TerrainView::SecondMapChanged);
  auto* map = WidgetTest::Find<QComboBox>(view_, "second map");
  auto* use = WidgetTest::Find<QComboBox>(view_, "use of second map");
  EXPECT_FALSE(use->isEnabled());
  QTest::keyClick(map, Qt::Key_Down);
  QTest::keyClick(map, Qt::Key_Down);
  EXPECT_EQ(view_.GetSecondMap(), QStringLiteral("two.image"));
  EXPECT_EQ(changed.size(), 2);
  EXPECT_TRUE(use->isEnabled());
  view_.SetSecond(MakeView(2, 1, {0.0F, 1.0F}));
  const QImage colored = view_.Grab();
  EXPECT_EQ(At(colored, -0.5F, 0.0F).lightness(), 0);
  EXPECT_GT(At(colored, 0.5F, 0.0F).lightness(), clay.lightness());
  QTest::keyClick(use, Qt::Key_Down);
  const QImage masked = view_.Grab();
  EXPECT_EQ(At(masked, -0.5F, 0.0F), clay);
  EXPECT_GT(At(masked, 0.5F, 0.0F).saturation(), clay.saturation() + 60);
  QTest::keyClick(map, Qt::Key_Home);
  EXPECT_EQ(view_.GetSecondMap(), QString());
  EXPECT_EQ(At(view_.Grab(), 0.5F, 0.0F), clay);
}

TEST_F(TerrainPictures, HaveHolesWhereThereAreNoHeights) {
  SetFormula(64, [](int x, int) { return x > 16 && x < 48 ? kNan : 0.5F; });
  const QImage picture = view_.Grab();
  const QColor clay = At(picture, -0.8F, 0.0F);
  EXPECT_EQ(At(picture, 0.8F, 0.0F), clay);
  EXPECT_LT(At(picture, 0.0F, 0.0F).lightness(), clay.lightness() - 20);
}

TEST_F(TerrainPictures, HaveLinesWhenTheyAreAskedFor) {
  SetFormula(17, [](int, int) { return 0.5; });
  const QImage plain = view_.Grab();
  QTest::keyClick(&canvas_, Qt::Key_W);
  EXPECT_TRUE(view_.GetSettings().wireframe);
  const QImage lines = view_.Grab();
  const auto count_dark = [&](const QImage& picture) {
    int dark = 0;
    for (int x = picture.width() * 2 / 5; x < picture.width() * 3 / 5; ++x) {
      dark += picture.pixelColor(x, picture.height() / 2).lightness() < 110 ? 1 : 0;
    }
    return dark;
  };
  EXPECT_EQ(count_dark(plain), 0);
  EXPECT_GT(count_dark(lines), 3);
}

TEST_F(TerrainPictures, FollowExaggeration) {
  SetFormula(65, [](int x, int y) { return x == 32 && y == 32 ? 1.0 : 0.0; });
  canvas_.Orbit(0.0, -80.0);
  const QImage usual = view_.Grab();
  view_.SetSettings({5.0, 315.0, 45.0, false});
  EXPECT_NE(view_.Grab(), usual);
}

TEST_F(TerrainPictures, FollowMouseKeysAndSettings) {
  SetFormula(65, [](int x, int y) { return 0.5 + 0.3 * std::sin(x * 0.2) * std::cos(y * 0.3); });
  QImage before = view_.Grab();
  const auto expect_change = [&](const char* what) {
    QImage now = view_.Grab();
    EXPECT_NE(now, before) << what;
    before = std::move(now);
  };
  const QPointF middle = canvas_.rect().center();
  WidgetTest::Drag(canvas_, middle, middle + QPointF(40, -60));
  expect_change("orbit");
  const double target = canvas_.GetCamera().GetTargetX();
  WidgetTest::Drag(canvas_, middle, middle + QPointF(40, 0), Qt::RightButton);
  EXPECT_NE(canvas_.GetCamera().GetTargetX(), target);
  expect_change("pan");
  WidgetTest::Wheel(canvas_, middle, 3);
  expect_change("zoom");
  QTest::keyClick(&canvas_, Qt::Key_Minus);
  expect_change("zoom by key");
  QTest::mouseClick(WidgetTest::Find<QToolButton>(view_, "settings"), Qt::LeftButton);
  const auto type = [&](const char* name, const char* text) {
    auto* field = WidgetTest::Find<QDoubleSpinBox>(view_, name);
    ASSERT_TRUE(field->isVisible()) << name;
    WidgetTest::Type(field, text);
    QTest::keyClick(field, Qt::Key_Return);
    expect_change(name);
  };
  type("exaggeration", "3");
  type("azimuth", "90");
  type("altitude", "15");
  QTest::keyClick(WidgetTest::Find<QDoubleSpinBox>(view_, "altitude"), Qt::Key_Escape);
  QTest::keyClick(&canvas_, Qt::Key_Home);
  expect_change("reset");
}

TEST_F(TerrainPictures, ComeCoarseFirstAndFineOnceAllIsStill) {
  std::vector<bool> fine;
  QObject::connect(&canvas_, &TerrainCanvas::PictureDrawn, &view_,
                   [&] { fine.push_back(canvas_.GetPicture().is_fine); });
  SetFormula(600, [](int x, int y) { return ((x / 3 + y / 3) & 1) != 0 ? 0.6 : 0.4; });
  ASSERT_TRUE(QTest::qWaitFor([&] { return !fine.empty() && fine.back(); }, 60'000));
  EXPECT_GT(canvas_.GetPicture().triangles, 100'000);
  EXPECT_LE(canvas_.GetPicture().triangles, TerrainFrame::kFineTriangles);
  fine.clear();
  canvas_.Orbit(3.0, 0.0);
  ASSERT_TRUE(QTest::qWaitFor([&] { return !fine.empty(); }, 60'000));
  ASSERT_TRUE(QTest::qWaitFor([&] { return fine.back(); }, 60'000));
}

TEST_F(TerrainPictures, AreBoundedForLargeImages) {
  SetFormula(1500, [](int x, int y) { return 0.5 + 0.2 * std::sin(x * 0.05) * std::cos(y * 0.07); });
  for (const double zoom : {1.0, 4.0, 8.0}) {
    canvas_.Zoom(zoom);
    canvas_.Orbit(0.0, -10.0);
    static_cast<void>(view_.Grab());
    EXPECT_GT(canvas_.GetPicture().triangles, 50'000) << zoom;
    EXPECT_LE(canvas_.GetPicture().triangles, TerrainFrame::kFineTriangles) << zoom;
  }
}

TEST_F(TerrainPictures, GoWithTheirHeights) {
  SetFormula(64, [](int, int) { return 0.5; });
  const QImage terrain = view_.Grab();
  view_.SetHeights(nullptr);
  EXPECT_NE(view_.Grab(), terrain);
  EXPECT_EQ(canvas_.GetNotice(), "There is no height map to show.");
  view_.SetHeights(heights_);
  EXPECT_EQ(view_.Grab(), terrain);
}

TEST_F(TerrainPictures, MayEndWhileOneIsDrawn) {
  auto view = std::make_unique<TerrainView>();
  view->show();
  for (int i = 0; i < 20; ++i) {
    std::vector<float> values(500 * 500, 0.01F * static_cast<float>(i));
    values[0] = 1.0F;
    view->SetHeights(MakeView(500, 500, values));
    QApplication::processEvents();
  }
  view.reset();
  SetFormula(64, [](int, int) { return 0.5; });
  EXPECT_FALSE(view_.Grab().isNull());
}

}  // namespace
