// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/TerrainView.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

#include "Apps/Editor/Terrain/TerrainKeys.h"
#include "Apps/Editor/Terrain/TerrainTesting.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace {

using WidgetTest::Find;

/// What holds with and without OpenGL.
class TerrainViewControls : public testing::Test {
 protected:
  TerrainViewControls() {
    view_.SetHeights(TerrainTest::MakeView(2, 2, {0.0F, 0.5F, 0.5F, 1.0F}));
    view_.resize(400, 300);
    view_.show();
    view_.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&view_, 60000));
    canvas_.setFocus();
  }

  [[nodiscard]] const TerrainCamera& GetCamera() { return canvas_.GetCamera(); }
  void Drag(Qt::MouseButton button, const QPoint& way) {
    const QPoint start = canvas_.rect().center();
    QTest::mousePress(&canvas_, button, Qt::NoModifier, start);
    QTest::mouseMove(&canvas_, start + way);
    QMouseEvent move(QEvent::MouseMove, start + way, canvas_.mapToGlobal(start + way), Qt::NoButton, button,
                     Qt::NoModifier);
    QApplication::sendEvent(&canvas_, &move);
    QTest::mouseRelease(&canvas_, button, Qt::NoModifier, start + way);
  }

  TerrainView view_;
  TerrainCanvas& canvas_ = view_.GetCanvas();
};

TEST_F(TerrainViewControls, TurnsByDragging) {
  const double yaw = GetCamera().GetYaw();
  const double pitch = GetCamera().GetPitch();
  Drag(Qt::LeftButton, QPoint(20, 10));
  EXPECT_NEAR(GetCamera().GetYaw(), yaw - 7.0, 1e-6);
  EXPECT_NEAR(GetCamera().GetPitch(), pitch + 3.5, 1e-6);
}

TEST_F(TerrainViewControls, MovesByDraggingWithTheOtherButtons) {
  const double yaw = GetCamera().GetYaw();
  for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
    canvas_.ResetCamera();
    Drag(button, QPoint(20, 0));
    EXPECT_NE(GetCamera().GetTargetX(), 0.0);
    EXPECT_EQ(GetCamera().GetYaw(), yaw);
  }
}

TEST_F(TerrainViewControls, ZoomsByTheWheel) {
  const auto turn = [this](int units) {
    QWheelEvent wheel(QPointF(10, 10), canvas_.mapToGlobal(QPointF(10, 10)), QPoint(), QPoint(0, units), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&canvas_, &wheel);
  };
  turn(120);
  EXPECT_LT(GetCamera().GetDistance(), 0.9);
  turn(-120);
  EXPECT_NEAR(GetCamera().GetDistance(), 1.0, 1e-9);
}

TEST_F(TerrainViewControls, DoesAllOfItByKeys) {
  const TerrainCamera fresh;
  QTest::keyClick(&canvas_, Qt::Key_Right);
  EXPECT_EQ(GetCamera().GetYaw(), fresh.GetYaw() + 5.0);
  QTest::keyClick(&canvas_, Qt::Key_Up);
  EXPECT_EQ(GetCamera().GetPitch(), fresh.GetPitch() + 5.0);
  QTest::keyClick(&canvas_, Qt::Key_Left, Qt::ShiftModifier);
  EXPECT_NE(GetCamera().GetTargetX(), 0.0);
  QTest::keyClick(&canvas_, Qt::Key_Plus);
  EXPECT_LT(GetCamera().GetDistance(), 1.0);
  QTest::keyClick(&canvas_, Qt::Key_Minus);
  EXPECT_NEAR(GetCamera().GetDistance(), 1.0, 1e-9);
  QTest::keyClick(&canvas_, Qt::Key_Home);
  EXPECT_EQ(GetCamera().GetYaw(), fresh.GetYaw());
  EXPECT_EQ(GetCamera().GetTargetX(), 0.0);
}

TEST_F(TerrainViewControls, AMapThatIsGoneIsNoLongerChosen) {
  QSignalSpy changed(&view_, &TerrainView::SecondMapChanged);
  view_.SetMaps({"one.image", "two.image"});
  auto* map = Find<QComboBox>(view_, "second map");
  // Also where there is no OpenGL.
  map->parentWidget()->setEnabled(true);
  QTest::keyClick(map, Qt::Key_End);
  EXPECT_EQ(view_.GetSecondMap(), QStringLiteral("two.image"));
  view_.SetMaps({"zero.image", "two.image"});
  EXPECT_EQ(view_.GetSecondMap(), QStringLiteral("two.image"));
  EXPECT_EQ(changed.size(), 1);
  view_.SetMaps({"zero.image"});
  EXPECT_EQ(view_.GetSecondMap(), QString());
  EXPECT_EQ(changed.size(), 2);
}

TEST_F(TerrainViewControls, LeavesOtherKeysToTheWindow) {
  QKeyEvent undo(QEvent::KeyPress, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_FALSE(FindTerrainKey(undo).has_value());
  QKeyEvent focus(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier);
  EXPECT_FALSE(FindTerrainKey(focus).has_value());
}

TEST_F(TerrainViewControls, SettingsComeFromThePopup) {
  QSignalSpy changes(&view_, &TerrainView::SettingsChanged);
  WidgetTest::Type(Find<QDoubleSpinBox>(view_, "exaggeration"), "2.5");
  WidgetTest::Type(Find<QDoubleSpinBox>(view_, "azimuth"), "90");
  Find<QSlider>(view_, "altitude slider")->setValue(200);
  EXPECT_EQ(view_.GetSettings(), (TerrainSettings{2.5, 90.0, 90.0, false}));
  EXPECT_GE(changes.count(), 3);
  Find<QPushButton>(view_, "reset settings")->click();
  EXPECT_EQ(view_.GetSettings(), TerrainSettings());
}

TEST_F(TerrainViewControls, SlidersReachEveryPlaceByKeys) {
  auto* slider = Find<QSlider>(view_, "exaggeration slider");
  slider->setValue(0);
  for (int i = 0; i < 10; ++i) slider->triggerAction(QAbstractSlider::SliderSingleStepAdd);
  EXPECT_EQ(slider->value(), 10);
  // 0.1 times the twentieth root of 100.
  EXPECT_DOUBLE_EQ(view_.GetSettings().exaggeration, 0.13);
}

TEST_F(TerrainViewControls, SettingsThatAreSetTellNobody) {
  QSignalSpy changes(&view_, &TerrainView::SettingsChanged);
  view_.SetSettings({0.5, 10.0, 20.0, true});
  EXPECT_EQ(view_.GetSettings(), (TerrainSettings{0.5, 10.0, 20.0, true}));
  EXPECT_EQ(Find<QDoubleSpinBox>(view_, "exaggeration")->value(), 0.5);
  EXPECT_TRUE(Find<QToolButton>(view_, "wireframe")->isChecked());
  EXPECT_EQ(changes.count(), 0);
}

TEST_F(TerrainViewControls, EveryControlHasANameAndTakesTheKeyboard) {
  int controls = 0;
  for (const QWidget* widget : view_.findChildren<QWidget*>()) {
    const bool is_control = qobject_cast<const QAbstractButton*>(widget) != nullptr ||
                            qobject_cast<const QAbstractSlider*>(widget) != nullptr ||
                            qobject_cast<const QAbstractSpinBox*>(widget) != nullptr ||
                            qobject_cast<const QComboBox*>(widget) != nullptr || widget == &canvas_;
    // Those of a list that drops down come and go with it.
    const bool is_of_list = qobject_cast<const QScrollBar*>(widget) != nullptr;
    if (!is_control || is_of_list) continue;
    ++controls;
    EXPECT_FALSE(widget->objectName().isEmpty());
    EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->objectName().toStdString();
    EXPECT_NE(widget->focusPolicy() & Qt::TabFocus, 0) << widget->objectName().toStdString();
  }
  EXPECT_EQ(controls, 15);
}

TEST_F(TerrainViewControls, TakesImagesWithoutASurface) {
  for (const auto& heights :
       {std::shared_ptr<const ScEng::ViewImage>(), TerrainTest::MakeView(0, 0, {}), TerrainTest::MakeView(1, 1, {1.0F}),
        TerrainTest::MakeView(2, 2, std::vector<float>(4, Testing::kNan))}) {
    view_.SetHeights(heights);
    EXPECT_EQ(view_.Grab().size(), canvas_.size() * canvas_.devicePixelRatioF());
    EXPECT_TRUE(canvas_.GetPicture().image.isNull());
  }
}

}  // namespace
