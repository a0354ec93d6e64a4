// SPDX-License-Identifier: Apache-2.0
// The viewer by mouse and keyboard alone, and its picture afterwards.
#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTableWidget>
#include <QTest>
#include <QToolButton>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

#include "Host/Image/ImageMetadata.h"
#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/ImageView.h"
#include "Host/Widgets/Probes.h"
#include "Host/Widgets/ViewerWidget.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Widgets/MenuTesting.h"
#include "Tests/Widgets/MouseTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace ScEng {
namespace {

using Testing::MakeImage;
using WidgetTest::Find;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

class ViewerByHand : public testing::Test {
 protected:
  ViewerByHand() {
    viewer_.resize(760, 640);
    WidgetTest::ShowActive(viewer_);
  }
  void Show(int size_x, int size_y, const std::vector<float>& samples, float low = 0.0F, float high = 1.0F,
            unsigned color_mode = ColorMode::kValue) {
    const auto image = MakeImage(size_x, size_y, color_mode, samples);
    image->SetValueLowHigh(low, high);
    content_.image = ViewImage::Make(*image);
    viewer_.SetContent(content_);
    QApplication::processEvents();
  }
  /// A square of values by a formula of column and row.
  template <class Formula>
  void ShowFormula(int size, const Formula& formula) {
    std::vector<float> samples;
    for (int y = 0; y < size; ++y) {
      for (int x = 0; x < size; ++x) samples.push_back(static_cast<float>(formula(x, y)));
    }
    Show(size, size, samples);
  }
  [[nodiscard]] ImageView& View() const { return *viewer_.GetView(); }
  [[nodiscard]] QToolButton* Tool(const char* name) const { return Find<QToolButton>(viewer_, name); }
  void ClickTool(const char* name) const { QTest::mouseClick(Tool(name), Qt::LeftButton); }
  void ChooseFromTool(const char* name, const QString& entry) const {
    WidgetTest::ChooseAfter([&] { ClickTool(name); }, {entry});
  }
  /// Near the corner of a pixel, where no number stands.
  [[nodiscard]] QPointF At(int x, int y) const { return View().ToView(QPointF(x + 0.08, y + 0.08)); }
  [[nodiscard]] QImage Grab() const { return View().grab().toImage(); }
  [[nodiscard]] QColor ColorOf(int x, int y) const { return Grab().pixelColor(At(x, y).toPoint()); }
  [[nodiscard]] int GrayOf(int x, int y) const {
    const QColor color = ColorOf(x, y);
    EXPECT_EQ(color.red(), color.blue());
    return color.red();
  }
  template <class Field>
  [[nodiscard]] Field* Setting(const char* name) const {
    return Find<Field>(viewer_, name);
  }
  void ChooseShading(const QString& text) const {
    auto* list = Setting<QComboBox>("viewer.shading_mode");
    QTest::keyClick(list, Qt::Key_Home);
    for (int i = 0; i < list->count() && list->currentText() != text; ++i) QTest::keyClick(list, Qt::Key_Down);
    EXPECT_EQ(list->currentText(), text);
  }
  void TypeNumber(const char* name, const char* text) const {
    auto* field = Setting<QDoubleSpinBox>(name);
    WidgetTest::Type(field, text);
    QTest::keyClick(field, Qt::Key_Return);
  }

  ViewerWidget viewer_;
  ViewerContent content_;
};

// ---- Ranges ----

TEST_F(ViewerByHand, TheMenuOfRangesSaysWhatIsBlackAndWhite) {
  Show(3, 1, {0.0F, 0.5F, 2.0F}, 0.0F, 4.0F);
  // 0.5 of 4, of 1 and of 2.
  EXPECT_NEAR(GrayOf(1, 0), 255 / 8.0, 1.0);
  ChooseFromTool("viewer.range", "Absolute");
  EXPECT_NEAR(GrayOf(1, 0), 255 / 2.0, 1.0);
  EXPECT_EQ(GrayOf(2, 0), 255);
  ChooseFromTool("viewer.range", "Lowest to highest");
  EXPECT_NEAR(GrayOf(1, 0), 255 / 4.0, 1.0);
  ChooseFromTool("viewer.range", "Declared");
  EXPECT_NEAR(GrayOf(1, 0), 255 / 8.0, 1.0);
}

TEST_F(ViewerByHand, ARangeIsChosenByKeysAlone) {
  Show(3, 1, {0.0F, 0.5F, 2.0F}, 0.0F, 4.0F);
  View().setFocus();
  for (int i = 0; i < 60 && QApplication::focusWidget() != Tool("viewer.range"); ++i) {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab, Qt::ShiftModifier);
  }
  ASSERT_TRUE(Tool("viewer.range")->hasFocus());
  bool is_done = false;
  QTimer look;
  QObject::connect(&look, &QTimer::timeout, [&] {
    QMenu* menu = WidgetTest::GetOpenMenu();
    if (menu == nullptr) return;
    look.stop();
    while (menu->activeAction() == nullptr || menu->activeAction()->text() != "Absolute") {
      QTest::keyClick(menu, Qt::Key_Down);
    }
    QTest::keyClick(menu, Qt::Key_Return);
    is_done = true;
  });
  look.start(5);
  QTest::keyClick(Tool("viewer.range"), Qt::Key_Space);
  ASSERT_TRUE(QTest::qWaitFor([&] { return is_done; }, 60000));
  EXPECT_EQ(viewer_.GetLook().range, RangeSource::kAbsolute);
  EXPECT_NEAR(GrayOf(1, 0), 255 / 2.0, 1.0);
}

TEST_F(ViewerByHand, AHandleOfTheHistogramStaysWhenTheImageChanges) {
  Show(3, 1, {0.0F, 0.5F, 2.0F}, 0.0F, 2.0F);
  const int before = GrayOf(1, 0);
  auto* handle = Find<QWidget>(viewer_, "histogram.high_handle");
  const QPointF grip(handle->width() / 2.0, handle->height() / 2.0);
  WidgetTest::Drag(*handle, grip, grip - QPointF(Find<QWidget>(viewer_, "histogram.plot")->width() / 8.0, 0.0));
  EXPECT_EQ(viewer_.GetLook().range, RangeSource::kCustom);
  const ValueRange custom = viewer_.GetLook().custom;
  EXPECT_LT(custom.high, 1.9F);
  const int now = GrayOf(1, 0);
  EXPECT_GT(now, before + 3);
  EXPECT_NEAR(now, 255.0 * 0.5 / static_cast<double>(custom.high), 1.5);
  Show(3, 1, {-8.0F, 0.5F, 30.0F}, -8.0F, 30.0F);
  EXPECT_EQ(viewer_.GetLook().custom, custom);
  EXPECT_EQ(GrayOf(1, 0), now);
  EXPECT_EQ(GrayOf(2, 0), 255);
}

// ---- Shading ----

TEST_F(ViewerByHand, ValuesAreColoredByARamp) {
  ShowFormula(16, [](int x, int) { return x / 15.0; });
  ASSERT_EQ(ColorOf(8, 8).saturation(), 0);
  ClickTool("viewer.shading");
  ASSERT_TRUE(Find<QWidget>(viewer_, "viewer.shading_popup")->isVisible());
  ChooseShading("Color ramp");
  const QColor colored = ColorOf(8, 8);
  EXPECT_GT(colored.saturation(), 60);
  auto* ramp = Setting<QComboBox>("viewer.ramp");
  const QString first = ramp->currentText();
  QTest::keyClick(ramp, Qt::Key_Down);
  EXPECT_NE(ramp->currentText(), first);
  EXPECT_NE(ColorOf(8, 8), colored);
  QTest::keyClick(ramp, Qt::Key_Escape);
  EXPECT_FALSE(Find<QWidget>(viewer_, "viewer.shading_popup")->isVisible());
  EXPECT_TRUE(Tool("viewer.shading")->isChecked());
}

TEST_F(ViewerByHand, AHillshadeHasALightOfItsOwn) {
  // A roof whose ridge runs from top to bottom.
  ShowFormula(32, [](int x, int) { return 0.3 - std::abs(x - 16) / 64.0; });
  ClickTool("viewer.shading");
  ChooseShading("Hillshade");
  TypeNumber("viewer.azimuth", "270");
  EXPECT_GT(GrayOf(4, 16), GrayOf(28, 16) + 40);
  TypeNumber("viewer.azimuth", "90");
  EXPECT_GT(GrayOf(28, 16), GrayOf(4, 16) + 40);
  const int lit = GrayOf(28, 16);
  TypeNumber("viewer.altitude", "10");
  EXPECT_NE(GrayOf(28, 16), lit);
  TypeNumber("viewer.altitude", "90");
  // From straight above both sides are alike, and the flatter the lighter.
  EXPECT_EQ(GrayOf(4, 16), GrayOf(28, 16));
  const int steep = GrayOf(4, 16);
  TypeNumber("viewer.exaggeration", "10");
  EXPECT_GT(GrayOf(4, 16), steep + 20);
}

TEST_F(ViewerByHand, TheSlopeIsThatOfTheGround) {
  // 45 degrees on the right half at 100 pixels per unit: half of the way from black to white.
  ShowFormula(32, [](int x, int) { return x < 16 ? 0.0 : (x - 16) / 100.0; });
  ClickTool("viewer.shading");
  ChooseShading("Slope");
  auto* ramp = Setting<QComboBox>("viewer.ramp");
  for (int i = 0; i < ramp->count() && ramp->currentText() != "Gray"; ++i) QTest::keyClick(ramp, Qt::Key_Down);
  ASSERT_EQ(ramp->currentText(), QStringLiteral("Gray"));
  EXPECT_EQ(GrayOf(6, 16), 0);
  EXPECT_NEAR(GrayOf(26, 16), 127.5, 3.0);
  ChooseShading("Plain");
  EXPECT_NEAR(GrayOf(26, 16), 25.5, 2.0);
}

TEST_F(ViewerByHand, ContourLinesHaveAStep) {
  ShowFormula(200, [](int x, int) { return x / 199.0; });
  const auto count_lines = [&] {
    const QImage picture = Grab();
    const int y = View().ToView({0.0, 100.0}).toPoint().y();
    const int from = View().ToView({2.0, 0.0}).toPoint().x();
    const int to = View().ToView({198.0, 0.0}).toPoint().x();
    int lines = 0;
    bool was_on = false;
    for (int x = from; x < to; ++x) {
      // The ramp grows by at most a step of gray or two from one pixel to the next; a line leaps.
      const bool is_on = std::abs(picture.pixelColor(x + 2, y).lightness() - picture.pixelColor(x, y).lightness()) > 12;
      lines += is_on && !was_on ? 1 : 0;
      was_on = is_on;
    }
    return lines;
  };
  EXPECT_EQ(count_lines(), 0);
  ClickTool("viewer.contours");
  auto* on = Setting<QCheckBox>("viewer.contours_on");
  ASSERT_TRUE(on->isVisible());
  on->setFocus();
  QTest::keyClick(on, Qt::Key_Space);
  EXPECT_TRUE(viewer_.GetLook().contours);
  const int tenths = count_lines();
  EXPECT_GE(tenths, 8);
  TypeNumber("viewer.contour_step", "0.25");
  EXPECT_LT(count_lines(), tenths);
  EXPECT_GE(count_lines(), 3);
}

TEST_F(ViewerByHand, MarksTellWhatIsNoValueOfTheRange) {
  Show(6, 1, {Testing::kNan, kInfinity, -kInfinity, -1.0F, 2.0F, 0.5F});
  ClickTool("viewer.marks");
  EXPECT_TRUE(viewer_.GetLook().marks);
  // Magenta, orange, violet, blue, red, gray.
  const auto is_between = [&](int x, int low, int high) {
    const QColor color = ColorOf(x, 0);
    EXPECT_GT(color.saturation(), 100) << x;
    EXPECT_GE(color.hue(), low) << x;
    EXPECT_LE(color.hue(), high) << x;
  };
  is_between(0, 290, 320);
  is_between(1, 20, 45);
  is_between(2, 255, 289);
  is_between(3, 200, 250);
  EXPECT_GT(ColorOf(4, 0).red(), 180);
  EXPECT_LT(ColorOf(4, 0).blue(), 90);
  EXPECT_EQ(ColorOf(5, 0).saturation(), 0);
  ClickTool("viewer.marks");
  EXPECT_EQ(GrayOf(3, 0), 0);
  EXPECT_EQ(GrayOf(4, 0), 255);
}

TEST_F(ViewerByHand, ChannelsAreSeenAlone) {
  Show(2, 1, {1.0F, 0.0F, 0.0F, 1.0F, 0.0F, 0.0F, 1.0F, 1.0F}, 0.0F, 1.0F, ColorMode::kColor);
  EXPECT_EQ(ColorOf(0, 0), QColor(255, 0, 0));
  ChooseFromTool("viewer.channels", "Red");
  EXPECT_EQ(GrayOf(0, 0), 255);
  EXPECT_EQ(GrayOf(1, 0), 0);
  ChooseFromTool("viewer.channels", "Blue");
  EXPECT_EQ(GrayOf(0, 0), 0);
  EXPECT_EQ(GrayOf(1, 0), 255);
  ChooseFromTool("viewer.channels", "All channels");
  EXPECT_EQ(ColorOf(0, 0), QColor(255, 0, 0));
}

// ---- Tiles, comparison, zoom ----

TEST_F(ViewerByHand, TilesRepeatTheImageOnAllSides) {
  ShowFormula(16, [](int x, int y) { return x == 15 && y == 15 ? 1.0 : 0.0; });
  ClickTool("viewer.tiles");
  ClickTool("viewer.fit");
  EXPECT_TRUE(View().rect().contains(At(-16, -16).toPoint()));
  for (const int x : {-1, 15, 31}) {
    for (const int y : {-1, 15, 31}) EXPECT_EQ(GrayOf(x, y), 255) << x << " " << y;
  }
  EXPECT_EQ(GrayOf(0, 0), 0);
}

TEST_F(ViewerByHand, TheLineOfTheComparisonIsDragged) {
  ShowFormula(20, [](int, int) { return 1.0; });
  const auto before = MakeImage(20, 20, ColorMode::kValue, std::vector<float>(400, 0.0F));
  content_.before = ViewImage::Make(*before);
  viewer_.SetContent(content_);
  ClickTool("viewer.wipe");
  ASSERT_TRUE(View().IsWiped());
  EXPECT_EQ(GrayOf(4, 10), 0);
  EXPECT_EQ(GrayOf(15, 10), 255);
  const double line = View().GetWipePlace() * View().width();
  WidgetTest::Drag(View(), {line, 30.0}, {At(2, 0).x(), 30.0});
  EXPECT_EQ(GrayOf(4, 10), 255);
  EXPECT_EQ(GrayOf(1, 10), 0);
  // The image itself has not moved.
  EXPECT_TRUE(View().IsFitted());
  ClickTool("viewer.wipe");
  EXPECT_EQ(GrayOf(1, 10), 255);
}

TEST_F(ViewerByHand, TheWheelLeadsToThePixelWithItsNumber) {
  ShowFormula(100, [](int, int) { return 0.0; });
  const auto count_ink = [&] {
    const QImage picture = Grab();
    const QRect pixel = QRectF(View().ToView({50.0, 50.0}), View().ToView({51.0, 51.0})).toRect();
    int ink = 0;
    for (int y = pixel.top() + 1; y < pixel.bottom(); ++y) {
      for (int x = pixel.left() + 1; x < pixel.right(); ++x) ink += picture.pixelColor(x, y).lightness() > 128 ? 1 : 0;
    }
    return ink;
  };
  EXPECT_EQ(count_ink(), 0);
  WidgetTest::Wheel(View(), View().ToView({50.5, 50.5}), 20);
  EXPECT_GE(View().GetZoom(), 32.0);
  EXPECT_GT(count_ink(), 5);
  ClickTool("viewer.life_size");
  EXPECT_EQ(View().GetZoom(), 1.0);
  ClickTool("viewer.fit");
  EXPECT_TRUE(View().IsFitted());
}

// ---- Probes and the cursor ----

TEST_F(ViewerByHand, ProbesStayAndReadTheNodeAndItsInputs) {
  ShowFormula(10, [](int x, int y) { return x + 10.0 * y; });
  const auto input = MakeImage(10, 10, ColorMode::kValue, std::vector<float>(100, 0.25F));
  content_.inputs = {{"height.image", ViewImage::Make(*input)}};
  viewer_.SetContent(content_);
  ClickTool("viewer.probe");
  WidgetTest::Click(View(), View().ToView({3.5, 2.5}));
  WidgetTest::Drag(View(), View().ToView({5.5, 5.5}), View().ToView({6.5, 6.5}));
  ASSERT_EQ(viewer_.GetProbes()->GetProbes(), (std::vector<Probe>{{1, 3, 2, 1, 1}, {2, 5, 5, 2, 2}}));
  auto* table = Find<QTableWidget>(viewer_, "probes");
  ASSERT_TRUE(QTest::qWaitFor([&] { return table->rowCount() == 2; }, 60000));
  const auto has = [&](int row, const QString& text) {
    for (int column = 0; column < table->columnCount(); ++column) {
      if (table->item(row, column)->text() == text) return true;
    }
    return false;
  };
  EXPECT_TRUE(has(0, "3, 2"));
  EXPECT_TRUE(has(0, "23"));
  EXPECT_TRUE(has(0, "0.25"));
  // 55, 56, 65, 66
  EXPECT_TRUE(has(1, "60.5"));
  EXPECT_TRUE(has(1, "mean 0.25"));
  // They stay with another image, and read it.
  ShowFormula(10, [](int x, int y) { return 2.0 * (x + 10.0 * y); });
  EXPECT_TRUE(QTest::qWaitFor([&] { return has(0, "46") && has(1, "121"); }, 60000));
  QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualItemRect(table->item(0, 0)).center());
  QTest::keyClick(table, Qt::Key_Delete);
  EXPECT_EQ(viewer_.GetProbes()->GetProbes(), (std::vector<Probe>{{2, 5, 5, 2, 2}}));
}

TEST_F(ViewerByHand, TheCursorTellsPlacesOfTheDocumentAndOfTheMap) {
  const auto image = MakeImage(2, 2, ColorMode::kValue, {1.0F, 2.0F, 3.0F, 4.0F});
  image->SetPin(10, 10);
  content_.image = ViewImage::Make(*image);
  viewer_.SetContent(content_);
  const auto cursor = [&] { return Find<QLabel>(viewer_, "viewer.cursor")->text(); };
  WidgetTest::Hover(View(), View().ToView({1.5, 0.5}));
  EXPECT_EQ(cursor(), QString::fromUtf8("x 11, y 10  ·  2"));
  auto metadata = std::make_shared<ImageMetadata>();
  metadata->georeference = Georeference{"", std::array<double, 6>{100.0, 10.0, 0.0, 0.0, 0.0, -10.0}};
  image->SetMetadata(metadata);
  content_.image = ViewImage::Make(*image);
  viewer_.SetContent(content_);
  // The middle of the pixel, 11.5 and 10.5 steps of 10 from the corner.
  EXPECT_EQ(cursor(), QString::fromUtf8("x 11, y 10  ·  map 215, -105  ·  2"));
  // The same by keys.
  View().setFocus();
  QTest::keyClick(&View(), Qt::Key_Down, Qt::ControlModifier);
  EXPECT_EQ(cursor(), QString::fromUtf8("x 11, y 11  ·  map 215, -115  ·  4"));
}

}  // namespace
}  // namespace ScEng
