// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ImageView.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>
#include <memory>
#include <optional>
#include <vector>

#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/Probes.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Widgets/MouseTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace ScEng {
namespace {

using Testing::MakeImage;

std::shared_ptr<const ViewImage> MakeView(int size_x, int size_y, const std::vector<float>& samples) {
  return ViewImage::Make(*MakeImage(size_x, size_y, ColorMode::kValue, samples));
}

std::shared_ptr<const ViewImage> MakeFlat(int size, float value) {
  return MakeView(size, size,
                  std::vector<float>(static_cast<std::size_t>(size) * static_cast<std::size_t>(size), value));
}

class Viewed : public testing::Test {
 protected:
  Viewed() {
    view_.resize(420, 320);
    view_.SetProbes(&probes_);
  }
  void Open(std::shared_ptr<const ViewImage> image) {
    view_.SetImage(std::move(image));
    view_.show();
    view_.activateWindow();
    view_.setFocus();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view_, 60000));
  }
  /// The middle of a pixel, in the view.
  [[nodiscard]] QPointF At(int x, int y) const { return view_.ToView(QPointF(x + 0.5, y + 0.5)); }
  [[nodiscard]] QColor ColorAt(const QPointF& place) { return view_.grab().toImage().pixelColor(place.toPoint()); }

  ProbeList probes_;
  ImageView view_;
};

TEST_F(Viewed, ShowsValuesByTheLook) {
  Open(MakeView(2, 1, {0.0F, 0.5F}));
  view_.SetZoom(16.0);
  EXPECT_EQ(ColorAt(At(0, 0)), QColor(0, 0, 0));
  const int gray = ColorAt(At(1, 0)).red();
  EXPECT_TRUE(gray == 127 || gray == 128) << gray;
  Look look;
  look.range = RangeSource::kCustom;
  look.custom = {0.0F, 0.5F};
  view_.SetLook(look);
  EXPECT_EQ(ColorAt(At(1, 0)), QColor(255, 255, 255));
}

TEST_F(Viewed, DrawsOnlyWhatHasChanged) {
  Open(MakeFlat(64, 0.5F));
  view_.grab();
  const int drawings = view_.GetDrawings();
  view_.grab();
  view_.SetMessage("Wait");
  view_.SetBusy(true, 0.5);
  probes_.Add(3, 3);
  view_.grab();
  EXPECT_EQ(view_.GetDrawings(), drawings);
  view_.SetZoom(2.0);
  view_.grab();
  EXPECT_EQ(view_.GetDrawings(), drawings + 1);
}

TEST_F(Viewed, WheelZoomsAtTheCursor) {
  Open(MakeFlat(100, 0.5F));
  const QPointF at(150.0, 120.0);
  const QPointF point = view_.ToImage(at);
  WidgetTest::Wheel(view_, at, 2);
  EXPECT_DOUBLE_EQ(view_.GetZoom(), 6.0);
  EXPECT_NEAR(view_.ToImage(at).x(), point.x(), 1e-9);
  WidgetTest::Wheel(view_, at, 100);
  EXPECT_EQ(view_.GetZoom(), 64.0);
  WidgetTest::Wheel(view_, at, -100);
  EXPECT_EQ(view_.GetZoom(), 1.0 / 64.0);
}

TEST_F(Viewed, KeysZoomAndFit) {
  Open(MakeFlat(100, 0.5F));
  EXPECT_EQ(view_.GetZoom(), 3.0);
  QTest::keyClick(&view_, Qt::Key_1);
  EXPECT_EQ(view_.GetZoom(), 1.0);
  QTest::keyClick(&view_, Qt::Key_Plus);
  EXPECT_DOUBLE_EQ(view_.GetZoom(), std::sqrt(2.0));
  QTest::keyClick(&view_, Qt::Key_Minus);
  EXPECT_DOUBLE_EQ(view_.GetZoom(), 1.0);
  QTest::keyClick(&view_, Qt::Key_F);
  EXPECT_EQ(view_.GetZoom(), 3.0);
  EXPECT_TRUE(view_.IsFitted());
}

TEST_F(Viewed, DragsAndArrowKeysMoveTheImageAndADoubleClickFitsIt) {
  Open(MakeFlat(100, 0.5F));
  view_.SetZoom(8.0);
  QPointF corner = view_.ToView({0.0, 0.0});
  WidgetTest::Drag(view_, {100.0, 100.0}, {140.0, 80.0});
  EXPECT_EQ(view_.ToView({0.0, 0.0}), corner + QPointF(40.0, -20.0));
  corner = view_.ToView({0.0, 0.0});
  WidgetTest::Drag(view_, {100.0, 100.0}, {90.0, 100.0}, Qt::MiddleButton);
  EXPECT_EQ(view_.ToView({0.0, 0.0}), corner + QPointF(-10.0, 0.0));
  corner = view_.ToView({0.0, 0.0});
  QTest::keyClick(&view_, Qt::Key_Right);
  EXPECT_LT(view_.ToView({0.0, 0.0}).x(), corner.x());
  WidgetTest::SendMouse(view_, QEvent::MouseButtonDblClick, {50.0, 50.0}, Qt::LeftButton, Qt::LeftButton);
  EXPECT_TRUE(view_.IsFitted());
}

TEST_F(Viewed, ZoomAndPlaceStayWhileTheSizeDoes) {
  Open(MakeFlat(100, 0.5F));
  view_.SetZoom(8.0);
  WidgetTest::Drag(view_, {100.0, 100.0}, {140.0, 80.0});
  const QPointF corner = view_.ToView({0.0, 0.0});
  view_.SetImage(MakeFlat(100, 0.25F));
  EXPECT_EQ(view_.ToView({0.0, 0.0}), corner);
  // Not even an image that cannot be had for a while takes it away.
  view_.SetImage(nullptr);
  view_.SetImage(MakeFlat(100, 0.75F));
  EXPECT_EQ(view_.ToView({0.0, 0.0}), corner);
  view_.SetImage(MakeFlat(50, 0.5F));
  EXPECT_TRUE(view_.IsFitted());
}

TEST_F(Viewed, TellsThePixelUnderTheMouse) {
  Open(MakeFlat(10, 0.5F));
  std::vector<std::optional<QPoint>> told;
  QObject::connect(&view_, &ImageView::CursorMoved, &view_,
                   [&](std::optional<QPoint> pixel) { told.push_back(pixel); });
  WidgetTest::Hover(view_, At(3, 4));
  ASSERT_EQ(told.size(), 1U);
  EXPECT_EQ(told.back(), QPoint(3, 4));
  WidgetTest::Hover(view_, {1.0, 1.0});
  ASSERT_EQ(told.size(), 2U);
  EXPECT_EQ(told.back(), std::nullopt);
}

TEST_F(Viewed, TilesCountAsTheImage) {
  Open(MakeFlat(10, 0.5F));
  Look look;
  look.tiled = true;
  view_.SetLook(look);
  WidgetTest::Hover(view_, At(-1, 12));
  EXPECT_EQ(view_.GetCursor(), QPoint(9, 2));
}

TEST_F(Viewed, ACursorIsMovedByKeysAndFollowed) {
  Open(MakeFlat(100, 0.5F));
  view_.SetZoom(64.0);
  QTest::keyClick(&view_, Qt::Key_Right, Qt::ControlModifier);
  EXPECT_EQ(view_.GetCursor(), QPoint(50, 50));
  QTest::keyClick(&view_, Qt::Key_Right, Qt::ControlModifier);
  QTest::keyClick(&view_, Qt::Key_Up, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(view_.GetCursor(), QPoint(51, 40));
  EXPECT_TRUE(QRectF(view_.rect()).contains(At(51, 40)));
  QTest::keyClick(&view_, Qt::Key_Return);
  ASSERT_EQ(probes_.GetProbes().size(), 1U);
  EXPECT_EQ(probes_.GetProbes()[0], (Probe{1, 51, 40, 1, 1}));
  for (int i = 0; i < 20; ++i) QTest::keyClick(&view_, Qt::Key_Up, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(view_.GetCursor(), QPoint(51, 0));
}

TEST_F(Viewed, TheProbeToolSetsPointsAndRegions) {
  const auto image = MakeImage(10, 10, ColorMode::kValue, std::vector<float>(100, 0.5F));
  image->SetPin(100, 200);
  Open(ViewImage::Make(*image));
  view_.SetProbeTool(true);
  WidgetTest::Click(view_, At(2, 3));
  WidgetTest::Drag(view_, At(8, 7), At(5, 4));
  EXPECT_EQ(probes_.GetProbes(), (std::vector<Probe>{{1, 102, 203, 1, 1}, {2, 105, 204, 4, 4}}));
  // Beside the image there is nothing to watch.
  WidgetTest::Click(view_, {2.0, 2.0});
  EXPECT_EQ(probes_.GetProbes().size(), 2U);
}

TEST_F(Viewed, ProbesAreMovedAndRemoved) {
  Open(MakeFlat(10, 0.5F));
  probes_.SetProbes({{1, 2, 3, 1, 1}, {2, 5, 4, 4, 4}});
  WidgetTest::Drag(view_, At(2, 3), At(4, 2));
  EXPECT_EQ(probes_.GetProbes()[0], (Probe{1, 4, 2, 1, 1}));
  EXPECT_EQ(probes_.GetSelected(), 1);
  QTest::keyClick(&view_, Qt::Key_PageDown);
  EXPECT_EQ(probes_.GetSelected(), 2);
  QTest::keyClick(&view_, Qt::Key_Left, Qt::ShiftModifier);
  QTest::keyClick(&view_, Qt::Key_Down, Qt::AltModifier);
  EXPECT_EQ(probes_.GetProbes()[1], (Probe{2, 4, 4, 4, 5}));
  QTest::keyClick(&view_, Qt::Key_Delete);
  EXPECT_EQ(probes_.GetProbes(), (std::vector<Probe>{{1, 4, 2, 1, 1}}));
}

TEST_F(Viewed, TheWipeShowsTheImageBeforeToTheLeftOfItsLine) {
  Open(MakeFlat(100, 1.0F));
  view_.SetBefore(MakeFlat(100, 0.0F));
  EXPECT_EQ(ColorAt(At(20, 90)), QColor(255, 255, 255));
  view_.SetWipe(true);
  EXPECT_EQ(ColorAt(At(20, 90)), QColor(0, 0, 0));
  EXPECT_EQ(ColorAt(At(80, 90)), QColor(255, 255, 255));
  WidgetTest::Drag(view_, {210.0, 100.0}, {315.0, 100.0});
  EXPECT_EQ(view_.GetWipePlace(), 0.75);
  EXPECT_EQ(ColorAt(At(80, 90)), QColor(0, 0, 0));
  QTest::keyClick(&view_, Qt::Key_Comma);
  EXPECT_NEAR(view_.GetWipePlace(), 0.73, 1e-12);
  QTest::keyClick(&view_, Qt::Key_Period);
  EXPECT_NEAR(view_.GetWipePlace(), 0.75, 1e-12);
}

TEST_F(Viewed, TheImageBeforeLiesWhereItLiesInTheDocument) {
  Open(MakeFlat(20, 1.0F));
  const auto before = MakeImage(10, 10, ColorMode::kValue, std::vector<float>(100, 0.0F));
  before->SetPin(5, 5);
  view_.SetBefore(ViewImage::Make(*before));
  view_.SetWipe(true);
  view_.SetWipePlace(1.0);
  EXPECT_EQ(ColorAt(At(6, 6)), QColor(0, 0, 0));
  EXPECT_EQ(ColorAt(At(14, 14)), QColor(0, 0, 0));
  EXPECT_EQ(ColorAt(At(16, 16)), ColorAt({2.0, 2.0}));
}

TEST_F(Viewed, NumbersAreReadOnAnyGround) {
  Open(MakeView(2, 1, {0.0F, 1.0F}));
  for (const double zoom : {31.0, 32.0, 64.0}) {
    view_.SetZoom(zoom);
    const QImage picture = view_.grab().toImage();
    for (const int x : {0, 1}) {
      const QRect pixel = QRectF(view_.ToView({double(x), 0.0}), QSizeF(zoom, zoom)).toRect().adjusted(1, 1, -1, -1);
      int unlike = 0;
      for (int py = pixel.top(); py <= pixel.bottom(); ++py) {
        for (int px = pixel.left(); px <= pixel.right(); ++px) {
          // Ink of the other color on black and white.
          const int gray = picture.pixelColor(px, py).lightness();
          unlike += x == 0 ? static_cast<int>(gray > 128) : static_cast<int>(gray < 128);
        }
      }
      EXPECT_EQ(unlike > 5, zoom >= 32.0) << zoom << " " << x << " " << unlike;
    }
  }
}

TEST_F(Viewed, ACheckerboardShowsThroughOpacity) {
  const auto image = MakeImage(4, 4, ColorMode::kColor, std::vector<float>(64, 0.0F));
  Open(ViewImage::Make(*image));
  view_.SetZoom(16.0);
  const QImage picture = view_.grab().toImage();
  const QPoint corner = view_.ToView({0.0, 0.0}).toPoint();
  EXPECT_NE(picture.pixelColor(corner + QPoint(4, 4)), picture.pixelColor(corner + QPoint(12, 4)));
  EXPECT_EQ(picture.pixelColor(corner + QPoint(4, 4)), picture.pixelColor(corner + QPoint(12, 12)));
}

TEST_F(Viewed, APreviewTakesThePlaceOfItsImageAndIsMarked) {
  Open(MakeFlat(64, 0.5F));
  view_.SetZoom(3.0);
  const QPointF corner = view_.ToView({0.0, 0.0});
  WidgetTest::Hover(view_, At(40, 9));
  const QImage before = view_.grab().toImage();
  // 8 by 8 pixels for each of its samples.
  view_.SetImage(ViewImage::MakePreview(*MakeImage(8, 8, ColorMode::kValue, std::vector<float>(64, 0.5F)), 3,
                                        ImageHeader::Fresh(64, 64, ColorMode::kValue)));
  EXPECT_EQ(view_.GetZoom(), 3.0);
  EXPECT_EQ(view_.ToView({0.0, 0.0}), corner);
  EXPECT_EQ(view_.GetCursor(), QPoint(40, 9));
  const QImage preview = view_.grab().toImage();
  // The same, but for the mark in the lower right corner.
  const auto is_marked = [&](const QRect& part) { return before.copy(part) != preview.copy(part); };
  EXPECT_TRUE(is_marked(QRect(QPoint(view_.width() / 2, view_.height() - 60), QPoint(view_.width(), view_.height()))));
  EXPECT_FALSE(is_marked(QRect(0, 0, view_.width(), view_.height() - 60)));
  view_.SetImage(MakeFlat(64, 0.5F));
  EXPECT_EQ(view_.grab().toImage(), before);
}

TEST_F(Viewed, TakesImagesWithoutPixels) {
  Open(MakeView(0, 0, {}));
  view_.grab();
  WidgetTest::Hover(view_, {20.0, 20.0});
  QTest::keyClick(&view_, Qt::Key_Right, Qt::ControlModifier);
  QTest::keyClick(&view_, Qt::Key_F);
  EXPECT_EQ(view_.GetCursor(), std::nullopt);
}

}  // namespace
}  // namespace ScEng
