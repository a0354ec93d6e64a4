// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/HistogramBar.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <memory>
#include <vector>

#include "Host/Viewing/ViewImage.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Widgets/MouseTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace ScEng {
namespace {

using Testing::MakeImage;
using WidgetTest::Find;

class Histogram : public testing::Test {
 protected:
  Histogram() {
    const auto image = MakeImage(4, 1, ColorMode::kValue, {-1.0F, 0.0F, 1.0F, 3.0F});
    image->SetValueLowHigh(0.0F, 2.0F);
    bar_.SetImage(ViewImage::Make(*image));
    QObject::connect(&bar_, &HistogramBar::LookChanged, &bar_, [this](const Look& look) { told_.push_back(look); });
    bar_.resize(640, 80);
    bar_.show();
    bar_.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&bar_, 60000));
  }
  [[nodiscard]] QString Low() const { return Find<QLineEdit>(bar_, "histogram.low")->text(); }
  [[nodiscard]] QString High() const { return Find<QLineEdit>(bar_, "histogram.high")->text(); }

  HistogramBar bar_;
  std::vector<Look> told_;
};

TEST_F(Histogram, ModesShowTheirRange) {
  auto* mode = Find<QComboBox>(bar_, "histogram.mode");
  ASSERT_EQ(mode->count(), 4);
  EXPECT_EQ(mode->currentText(), "Declared");
  EXPECT_EQ(Low() + " " + High(), "0 2");
  mode->setCurrentText("Absolute");
  EXPECT_EQ(Low() + " " + High(), "0 1");
  mode->setCurrentText("Lowest to highest");
  EXPECT_EQ(Low() + " " + High(), "-1 3");
  ASSERT_EQ(told_.size(), 2U);
  EXPECT_EQ(told_[1].range, RangeSource::kMeasured);
  // A range of one's own begins where the range was.
  mode->setCurrentText("Custom");
  EXPECT_EQ(told_.back().custom, (ValueRange{-1.0F, 3.0F}));
}

TEST_F(Histogram, FieldsSetARangeOfOnesOwn) {
  auto* low = Find<QLineEdit>(bar_, "histogram.low");
  low->setFocus();
  low->selectAll();
  QTest::keyClicks(low, "0,5");
  QTest::keyClick(low, Qt::Key_Return);
  ASSERT_EQ(told_.size(), 1U);
  EXPECT_EQ(told_[0].range, RangeSource::kCustom);
  EXPECT_EQ(told_[0].custom, (ValueRange{0.5F, 2.0F}));
  EXPECT_EQ(Find<QComboBox>(bar_, "histogram.mode")->currentText(), "Custom");
}

TEST_F(Histogram, WhatIsNoRangeGoesBack) {
  auto* high = Find<QLineEdit>(bar_, "histogram.high");
  for (const char* text : {"white", "nan", "inf", "-5", ""}) {
    high->setFocus();
    high->selectAll();
    QTest::keyClick(high, Qt::Key_Delete);
    QTest::keyClicks(high, QString::fromLatin1(text));
    QTest::keyClick(high, Qt::Key_Return);
    EXPECT_EQ(High(), "2") << text;
  }
  EXPECT_TRUE(told_.empty());
}

TEST_F(Histogram, HandlesAreDraggedAndStopAtEachOther) {
  auto* plot = Find<QWidget>(bar_, "histogram.plot");
  auto* handle = Find<QWidget>(bar_, "histogram.low_handle");
  const QPointF grip(handle->width() / 2.0, handle->height() / 2.0);
  const auto drag = [&](double by) {
    WidgetTest::SendMouse(*handle, QEvent::MouseButtonPress, grip, Qt::LeftButton, Qt::LeftButton);
    WidgetTest::SendMouse(*handle, QEvent::MouseMove, grip + QPointF(by, 0.0), Qt::NoButton, Qt::LeftButton);
    WidgetTest::SendMouse(*handle, QEvent::MouseButtonRelease, grip, Qt::LeftButton, Qt::NoButton);
  };
  drag(plot->width() / 8.0);
  ASSERT_FALSE(told_.empty());
  const ValueRange moved = told_.back().custom;
  // The axis holds 4 and 0.16 on either side, on all but the edges of the widget.
  EXPECT_NEAR(moved.low, 4.32 / 8.0, 0.05);
  EXPECT_EQ(moved.high, 2.0F);
  drag(plot->width());
  EXPECT_EQ(told_.back().custom, (ValueRange{2.0F, 2.0F}));
}

TEST_F(Histogram, HandlesAreMovedByKeys) {
  auto* handle = Find<QWidget>(bar_, "histogram.high_handle");
  handle->setFocus();
  QTest::keyClick(handle, Qt::Key_Left);
  // One of 200 steps of the axis, from -1.16 to 3.16.
  EXPECT_NEAR(told_.back().custom.high, 2.0 - 4.32 / 200.0, 1e-5);
  QTest::keyClick(handle, Qt::Key_Right, Qt::ShiftModifier);
  EXPECT_NEAR(told_.back().custom.high, 2.0 + 9.0 * 4.32 / 200.0, 1e-5);
  QTest::keyClick(handle, Qt::Key_End);
  EXPECT_EQ(told_.back().custom.high, 3.0F);
}

TEST_F(Histogram, ADragBetweenTheHandlesMovesBoth) {
  auto* plot = Find<QWidget>(bar_, "histogram.plot");
  const QPointF middle(plot->width() / 2.0, 10.0);
  WidgetTest::Drag(*plot, middle, middle + QPointF(plot->width() / 4.0, 0.0));
  const ValueRange moved = told_.back().custom;
  EXPECT_NEAR(moved.high - moved.low, 2.0, 1e-5);
  EXPECT_GT(moved.low, 0.9F);
}

TEST_F(Histogram, RareValuesAreTallerInTheLogarithm) {
  std::vector<float> samples(1000, 0.0F);
  for (std::size_t i = 0; i < 20; ++i) samples[i] = 1.0F;
  bar_.SetImage(ViewImage::Make(*MakeImage(1000, 1, ColorMode::kValue, samples)));
  const auto count_ink = [&] {
    const QImage picture = Find<QWidget>(bar_, "histogram.plot")->grab().toImage();
    int ink = 0;
    // The right half, where the rare value is, without its handle and the marks at the top.
    for (int y = 8; y < picture.height() / 2; ++y) {
      for (int x = picture.width() / 2; x < picture.width() - 4; ++x) {
        ink +=
            static_cast<int>(picture.pixelColor(x, y) != picture.pixelColor(picture.width() / 2, picture.height() / 4));
      }
    }
    return ink;
  };
  const int linear = count_ink();
  Find<QPushButton>(bar_, "histogram.log")->click();
  EXPECT_TRUE(bar_.IsLogarithmic());
  EXPECT_GT(count_ink(), linear);
}

TEST_F(Histogram, TakesImagesWithoutFiniteValues) {
  bar_.SetImage(ViewImage::Make(*MakeImage(1, 1, ColorMode::kValue, {Testing::kNan})));
  bar_.grab();
  Find<QComboBox>(bar_, "histogram.mode")->setCurrentText("Lowest to highest");
  EXPECT_EQ(Low() + " " + High(), "0 1");
}

}  // namespace
}  // namespace ScEng
