// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ViewerWidget.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QToolButton>
#include <memory>
#include <vector>

#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/ImageView.h"
#include "Host/Widgets/Probes.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Widgets/MouseTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace ScEng {
namespace {

using Testing::MakeImage;
using WidgetTest::Find;

class Viewer : public testing::Test {
 protected:
  Viewer() {
    QObject::connect(&viewer_, &ViewerWidget::LookChanged, &viewer_,
                     [this](const Look& look) { told_.push_back(look); });
    viewer_.resize(640, 520);
    viewer_.show();
    viewer_.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&viewer_, 60000));
  }
  void Show(unsigned color_mode, const std::vector<float>& samples, float low = 0.0F, float high = 1.0F) {
    const int size_x = static_cast<int>(samples.size()) / ColorMode::GetNumChannels(color_mode);
    const auto image = MakeImage(size_x, 1, color_mode, samples);
    image->SetValueLowHigh(low, high);
    content_.image = ViewImage::Make(*image);
    viewer_.SetContent(content_);
  }
  [[nodiscard]] QAction* Tool(const char* name) const { return Find<QAction>(viewer_, name); }
  [[nodiscard]] QString Facts() const { return Find<QLabel>(viewer_, "viewer.facts")->text(); }
  [[nodiscard]] QString Cursor() const { return Find<QLabel>(viewer_, "viewer.cursor")->text(); }
  void ChooseRange(const QString& text) {
    for (QAction* action : Tool("viewer.range")->menu()->actions()) {
      if (action->text() == text) action->trigger();
    }
  }

  ViewerWidget viewer_;
  ViewerContent content_;
  std::vector<Look> told_;
};

TEST_F(Viewer, TellsTheFactsOfTheImage) {
  content_.title = "Add";
  Show(ColorMode::kValue, {0.25F, 0.75F, Testing::kNan}, 0.0F, 2.0F);
  viewer_.GetView()->SetZoom(1.0);
  EXPECT_EQ(Facts(), QString::fromUtf8("Add  ·  3 × 1  ·  value  ·  100 %  ·  declared 0 to 2  ·  "
                                       "measured 0.25 to 0.75  ·  1 NaN"));
  viewer_.SetContent({});
  EXPECT_EQ(Facts(), "");
}

TEST_F(Viewer, TellsTheValueUnderTheCursor) {
  Show(ColorMode::kColor, {0.5F, 0.25F, 0.0F, 1.0F, 1.0F, 1.0F, 1.0F, 1.0F});
  WidgetTest::Hover(*viewer_.GetView(), viewer_.GetView()->ToView({0.5, 0.5}));
  EXPECT_EQ(Cursor(), QString::fromUtf8("x 0, y 0  ·  0.5, 0.25, 0, 1"));
  // What is under the cursor changes with the image.
  Show(ColorMode::kValue, {0.125F, 0.5F});
  EXPECT_EQ(Cursor(), QString::fromUtf8("x 0, y 0  ·  0.125"));
}

TEST_F(Viewer, MarksWhatAPreviewSays) {
  content_.image = ViewImage::MakePreview(*MakeImage(2, 1, ColorMode::kValue, {0.25F, 0.75F}), 2,
                                          ImageHeader::Fresh(8, 4, ColorMode::kValue));
  viewer_.SetContent(content_);
  viewer_.GetView()->SetZoom(1.0);
  EXPECT_EQ(Facts(), QString::fromUtf8("8 × 4  ·  value  ·  100 %  ·  declared 0 to 1  ·  preview 1:4"));
  viewer_.GetView()->SetZoom(16.0);
  WidgetTest::Hover(*viewer_.GetView(), viewer_.GetView()->ToView({5.5, 1.5}));
  EXPECT_EQ(Cursor(), QString::fromUtf8("x 5, y 1  ·  ≈ 0.75"));
}

TEST_F(Viewer, RangeStaysWhenTheImageChanges) {
  Show(ColorMode::kValue, {0.0F, 1.0F}, 0.0F, 4.0F);
  ChooseRange("Custom");
  ASSERT_EQ(told_.size(), 1U);
  EXPECT_EQ(told_[0].range, RangeSource::kCustom);
  EXPECT_EQ(told_[0].custom, (ValueRange{0.0F, 4.0F}));
  EXPECT_EQ(Tool("viewer.range")->text(), "Custom");
  Show(ColorMode::kValue, {10.0F, 20.0F}, 10.0F, 20.0F);
  EXPECT_EQ(viewer_.GetLook().custom, (ValueRange{0.0F, 4.0F}));
  EXPECT_EQ(Find<QLineEdit>(viewer_, "histogram.high")->text(), "4");
  EXPECT_EQ(viewer_.GetView()->GetLook(), viewer_.GetLook());
}

TEST_F(Viewer, ASetLookIsNotTold) {
  Look look;
  look.shading = Shading::kHillshade;
  look.marks = true;
  viewer_.SetLook(look);
  EXPECT_TRUE(told_.empty());
  EXPECT_TRUE(Tool("viewer.marks")->isChecked());
  EXPECT_TRUE(Tool("viewer.shading")->isChecked());
  EXPECT_EQ(viewer_.GetView()->GetLook(), look);
}

TEST_F(Viewer, ShadingAndContoursAreSetInPopups) {
  Show(ColorMode::kValue, {0.0F, 1.0F});
  Tool("viewer.shading")->trigger();
  auto* popup = Find<QWidget>(viewer_, "viewer.shading_popup");
  ASSERT_TRUE(popup->isVisible());
  Find<QComboBox>(viewer_, "viewer.shading_mode")->setCurrentText("Color ramp");
  EXPECT_EQ(viewer_.GetLook().shading, Shading::kRamp);
  auto* ramp = Find<QComboBox>(viewer_, "viewer.ramp");
  ramp->setCurrentIndex(1);
  EXPECT_EQ(viewer_.GetLook().ramp, GetRampNames()[1]);
  EXPECT_TRUE(Tool("viewer.shading")->isChecked());
  popup->close();

  Tool("viewer.contours")->trigger();
  EXPECT_FALSE(viewer_.GetLook().contours);
  Find<QCheckBox>(viewer_, "viewer.contours_on")->click();
  EXPECT_TRUE(viewer_.GetLook().contours);
  Find<QDoubleSpinBox>(viewer_, "viewer.contour_step")->setValue(0.25);
  EXPECT_EQ(viewer_.GetLook().contour_step, 0.25);
  EXPECT_EQ(told_.size(), 4U);
  Find<QWidget>(viewer_, "viewer.contour_popup")->close();
}

TEST_F(Viewer, ChannelsAreThoseOfTheMode) {
  const auto names = [&] {
    QStringList texts;
    for (const QAction* action : Tool("viewer.channels")->menu()->actions()) texts.append(action->text());
    return texts;
  };
  Show(ColorMode::kColor, {0.0F, 0.0F, 0.0F, 1.0F});
  EXPECT_EQ(names(), (QStringList{"All channels", "Red", "Green", "Blue", "Opacity", "Value"}));
  Tool("viewer.channels")->menu()->actions()[2]->trigger();
  EXPECT_EQ(viewer_.GetLook().channels, ShownChannels::kSecond);
  Show(ColorMode::kPair, {0.0F, 0.0F});
  EXPECT_EQ(names(), (QStringList{"All channels", "First", "Second", "Value"}));
  Show(ColorMode::kValue, {0.0F});
  EXPECT_FALSE(Tool("viewer.channels")->isEnabled());
}

TEST_F(Viewer, ToolsThatFindNoRoomAreInAMenu) {
  auto* more = Find<QToolButton>(viewer_, "viewer.more");
  EXPECT_FALSE(more->isVisible());
  viewer_.resize(190, 520);
  QApplication::processEvents();
  ASSERT_TRUE(more->isVisible());
  EXPECT_FALSE(Find<QToolButton>(viewer_, "viewer.fit")->isVisible());
  auto* menu = Find<QMenu>(viewer_, "viewer.more_menu");
  more->click();
  ASSERT_TRUE(menu->isVisible());
  EXPECT_TRUE(menu->actions().contains(Tool("viewer.fit")));
  menu->close();
  Tool("viewer.tiles")->trigger();
  EXPECT_TRUE(viewer_.GetLook().tiled);
}

TEST_F(Viewer, TheTableOfProbesIsThereWhileThereAreAny) {
  Show(ColorMode::kValue, {0.25F, 0.75F});
  auto* table = Find<QWidget>(viewer_, "probes");
  EXPECT_FALSE(table->isVisible());
  Tool("viewer.probe")->trigger();
  WidgetTest::Click(*viewer_.GetView(), viewer_.GetView()->ToView({1.5, 0.5}));
  EXPECT_TRUE(table->isVisible());
  EXPECT_EQ(viewer_.GetProbes()->GetProbes(), (std::vector<Probe>{{1, 1, 0, 1, 1}}));
  viewer_.GetProbes()->SetProbes({});
  EXPECT_FALSE(table->isVisible());
}

TEST_F(Viewer, ComparesWhereThereIsAnImageBefore) {
  Show(ColorMode::kValue, {0.25F, 0.75F});
  EXPECT_FALSE(Tool("viewer.wipe")->isEnabled());
  content_.before = content_.image;
  viewer_.SetContent(content_);
  EXPECT_TRUE(Tool("viewer.wipe")->isEnabled());
  Tool("viewer.wipe")->trigger();
  EXPECT_TRUE(viewer_.GetView()->IsWiped());
}

TEST_F(Viewer, TheHistogramCanBeHidden) {
  EXPECT_TRUE(viewer_.IsHistogramShown());
  EXPECT_TRUE(Find<QWidget>(viewer_, "histogram.plot")->isVisible());
  Tool("viewer.histogram")->trigger();
  EXPECT_FALSE(Find<QWidget>(viewer_, "histogram.plot")->isVisible());
}

TEST_F(Viewer, EveryControlHasANameAndIsReachedByTab) {
  Show(ColorMode::kColor, {0.0F, 0.0F, 0.0F, 1.0F});
  QStringList reached;
  viewer_.GetView()->setFocus();
  for (int i = 0; i < 40; ++i) {
    QWidget* focused = QApplication::focusWidget();
    ASSERT_NE(focused, nullptr);
    EXPECT_FALSE(focused->accessibleName().isEmpty()) << focused->objectName().toStdString();
    reached.append(focused->objectName());
    QTest::keyClick(focused, Qt::Key_Tab);
  }
  for (const char* name :
       {"viewer.range", "viewer.shading", "viewer.channels", "viewer.contours", "viewer.marks", "viewer.tiles",
        "viewer.probe", "viewer.fit", "viewer.life_size", "viewer.histogram", "viewer.view", "histogram.low",
        "histogram.low_handle", "histogram.high_handle", "histogram.high", "histogram.log"}) {
    EXPECT_TRUE(reached.contains(QString::fromLatin1(name))) << name;
  }
}

}  // namespace
}  // namespace ScEng
