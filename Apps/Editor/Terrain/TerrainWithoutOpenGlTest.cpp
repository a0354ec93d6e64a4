// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <QSignalSpy>

#include "Apps/Editor/Terrain/TerrainTesting.h"
#include "Apps/Editor/Terrain/TerrainView.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace {

/// On a platform that has no OpenGL.
class TerrainWithoutOpenGl : public testing::Test {
 protected:
  TerrainWithoutOpenGl() {
    view_.resize(500, 300);
    view_.SetHeights(TerrainTest::MakeView(2, 2, {0.0F, 0.5F, 0.5F, 1.0F}));
  }
  TerrainView view_;
};

TEST_F(TerrainWithoutOpenGl, SaysWhy) {
  EXPECT_FALSE(view_.IsAvailable());
  EXPECT_EQ(view_.GetProblem(), "this display offers no OpenGL context");
  EXPECT_FALSE(WidgetTest::Find<QToolButton>(view_, "reset")->isEnabled());
}

TEST_F(TerrainWithoutOpenGl, ShowsASentenceInPlaceOfThePicture) {
  QSignalSpy problems(&view_.GetCanvas(), &TerrainCanvas::ProblemFound);
  view_.show();
  ASSERT_TRUE(QTest::qWaitFor([&] { return problems.count() > 0; }, 120'000));
  EXPECT_EQ(view_.GetCanvas().GetNotice(),
            "The 3D view needs OpenGL, which cannot be used here: this display offers no OpenGL context.");
  EXPECT_FALSE(WidgetTest::Find<QToolButton>(view_, "reset")->isEnabled());
  const QImage picture = view_.Grab();
  EXPECT_EQ(picture.size(), view_.GetCanvas().size() * view_.devicePixelRatioF());
  // There is text on the background.
  QSet<QRgb> colors;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) colors.insert(picture.pixel(x, y) | 0x0F0F0FU);
  }
  EXPECT_GT(colors.size(), 3);
}

TEST_F(TerrainWithoutOpenGl, DoesNothingWithWhatItIsGiven) {
  EXPECT_FALSE(view_.IsAvailable());
  view_.show();
  view_.SetColors(TerrainTest::MakeView(1, 1, {1.0F}), {});
  view_.SetSecond(TerrainTest::MakeView(1, 1, {1.0F}));
  view_.SetSettings({2.0, 10.0, 20.0, true});
  view_.GetCanvas().Zoom(2.0);
  view_.SetHeights(nullptr);
  QApplication::processEvents();
  EXPECT_TRUE(view_.GetCanvas().GetPicture().image.isNull());
}

}  // namespace
