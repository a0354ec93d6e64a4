// SPDX-License-Identifier: Apache-2.0
// Looking, attributes and docks in the whole window, by mouse and keyboard, with the picture afterwards.
#include <QComboBox>
#include <QListView>
#include <QPushButton>
#include <QSlider>
#include <QTabBar>
#include <QTextBrowser>
#include <QToolButton>
#include <QTranslator>
#include <QTreeView>

#include "Apps/Editor/Docks/ProblemsModel.h"
#include "Apps/Editor/Docks/ProfilerModel.h"
#include "Apps/Editor/Terrain/TerrainView.h"
#include "Apps/Editor/Window/EditorWindowTesting.h"
#include "Tests/Widgets/MouseTesting.h"

namespace {

class WindowByHand : public EditorWindowTesting {
 protected:
  void SetUp() override {
    EditorWindowTesting::SetUp();
    OpenForWork(folder_ / "graph.json");
  }
  void ClickRow(QAbstractItemView& list, int row, int column) {
    const QModelIndex index = list.model()->index(row, column);
    // A low dock may show the first rows alone.
    list.scrollTo(index);
    const QRect place = list.visualRect(index);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, place.center());
    QApplication::processEvents();
    Wait();
  }
  /// The row of a list in which a column has this text; -1 for none.
  static int FindRow(const QAbstractItemView& list, int column, const QString& text) {
    for (int row = 0; row < list.model()->rowCount(); ++row) {
      if (list.model()->index(row, column).data().toString() == text) return row;
    }
    return -1;
  }
  QRectF BodyOf(const char* id) { return Canvas().GetScene().FindNode(id)->GetBody(); }
  QColor CanvasAt(const QPointF& place) {
    const QImage picture = Canvas().GetView().viewport()->grab().toImage();
    return picture.pixelColor(Canvas().GetView().mapFromScene(place));
  }
};

TEST_F(WindowByHand, AClickPinsTheViewerToItsNode) {
  ClickNode("height");
  EXPECT_EQ(Viewer().GetShown(), QStringLiteral("height.image"));
  const QImage height = Picture();
  auto* pin = Get<QToolButton>("viewer.pin");
  QTest::mouseClick(pin, Qt::LeftButton);
  EXPECT_EQ(pin->text(), QStringLiteral("Pinned"));
  ClickNode("raised");
  EXPECT_EQ(Viewer().GetShown(), QStringLiteral("height.image"));
  EXPECT_EQ(Picture(), height);
  // The panel follows all the same.
  EXPECT_TRUE(Get<QSlider>("constant.slider")->isVisible());
  QTest::keyClick(pin, Qt::Key_Space);
  Wait();
  EXPECT_EQ(Viewer().GetShown(), QStringLiteral("raised.image"));
}

TEST_F(WindowByHand, ASliderOfThePanelChangesThePictureUnderARangeThatStays) {
  ClickNode("raised");
  auto* handle = Get<QWidget>("histogram.high_handle");
  const QPointF grip(handle->width() / 2.0, handle->height() / 2.0);
  WidgetTest::Drag(*handle, grip, grip - QPointF(8, 0));
  const ScEng::Look look = Viewer().GetViewer().GetLook();
  ASSERT_EQ(look.range, ScEng::RangeSource::kCustom);
  const QImage before = Picture();
  const float lowest = Lowest();
  auto* slider = Get<QSlider>("constant.slider");
  const QPoint middle = slider->rect().center();
  QTest::mousePress(slider, Qt::LeftButton, {}, middle);
  for (int step = 1; step <= 4; ++step) QTest::mouseMove(slider, middle + QPoint(8 * step, 0));
  QTest::mouseRelease(slider, Qt::LeftButton, {}, middle + QPoint(32, 0));
  QApplication::processEvents();
  Wait();
  EXPECT_NE(Lowest(), lowest);
  EXPECT_EQ(Viewer().GetViewer().GetLook(), look);
  EXPECT_NE(Picture(), before);
  EXPECT_EQ(Session().GetHistory().size(), 1U);
  Press(Qt::Key_Z, Qt::ControlModifier);
  Wait();
  EXPECT_EQ(Picture(), before);
}

TEST_F(WindowByHand, AnInputIsSeenInPlaceOfTheResult) {
  ClickNode("raised");
  const float raised = Lowest();
  auto* sources = Get<QComboBox>("viewer.source");
  ASSERT_TRUE(sources->isVisible());
  QTest::keyClick(sources, Qt::Key_Down);
  EXPECT_NEAR(Lowest(), raised - 0.25F, 1e-6F);
  QTest::keyClick(sources, Qt::Key_Up);
  EXPECT_EQ(Lowest(), raised);
}

TEST_F(WindowByHand, TheMenuSwitchesAllThumbnails) {
  const NodeItem* item = Canvas().GetScene().FindNode("height");
  ASSERT_FALSE(item->GetThumbnail().isNull());
  const QPointF middle = item->pos() + item->GetShape().thumbnail.center();
  const QColor seen = CanvasAt(middle);
  Choose("View", {"Thumbnails"});
  EXPECT_TRUE(item->GetShape().thumbnail.isEmpty());
  EXPECT_NE(CanvasAt(middle), seen);
  window_.reset();
  OpenForWork(folder_ / "graph.json");
  EXPECT_TRUE(Canvas().GetScene().FindNode("height")->GetShape().thumbnail.isEmpty());
}

TEST_F(WindowByHand, ProblemsLeadToTheNodeWithItsReason) {
  // A reader without a file.
  Press(Qt::Key_Tab);
  auto* search = QApplication::activePopupWidget();
  ASSERT_NE(search, nullptr);
  QTest::keyClicks(search->findChild<QLineEdit*>(), QStringLiteral("image reader"));
  QTest::keyClick(search->findChild<QLineEdit*>(), Qt::Key_Return);
  ASSERT_TRUE(Session().GetDocument().HasId("image_reader"));
  Wait();
  auto* list = Get<QTreeView>("problems.list");
  ASSERT_TRUE(QTest::qWaitFor([&] { return FindRow(*list, ProblemsModel::kNode, "image_reader") >= 0; }, 60000));
  const int row = FindRow(*list, ProblemsModel::kNode, "image_reader");
  const QString reason = list->model()->index(row, ProblemsModel::kText).data().toString();
  const NodeCondition& condition = Canvas().GetScene().FindNode("image_reader")->GetCondition();
  EXPECT_TRUE(condition.is_in_error);
  EXPECT_EQ(condition.messages, QStringList{reason});
  ClickNode("height");
  ClickRow(*list, row, ProblemsModel::kText);
  EXPECT_EQ(Canvas().GetSelection(), QStringList{"image_reader"});
  EXPECT_LT((Canvas().GetView().GetCenter() - BodyOf("image_reader").center()).manhattanLength(), 20.0);
}

TEST_F(WindowByHand, TheProfilerLeadsToTheNode) {
  Choose("View", {"Profiler"});
  auto* list = Get<QTreeView>("profiler.list");
  ASSERT_TRUE(list->isVisible());
  // By names, since rows that are sorted by times change their places when times come in.
  list->sortByColumn(ProfilerModel::kNode, Qt::AscendingOrder);
  const int row = FindRow(*list, ProfilerModel::kNode, "raised");
  ASSERT_GE(row, 0);
  ClickRow(*list, row, ProfilerModel::kNode);
  EXPECT_EQ(Canvas().GetSelection(), QStringList{"raised"});
  EXPECT_GE(Canvas().GetScene().FindNode("raised")->GetCondition().seconds, 0.0);
}

TEST_F(WindowByHand, TheHistoryGoesBackByAClick) {
  ClickNode("raised");
  Press(Qt::Key_M);
  Press(Qt::Key_Down, Qt::ControlModifier);
  Choose("View", {"History"});
  auto* list = Get<QListView>("history.list");
  ASSERT_TRUE(list->isVisible());
  ASSERT_EQ(list->model()->rowCount(), 3);
  ClickRow(*list, 1, 0);
  EXPECT_EQ(Session().GetPlace(), 1U);
  EXPECT_FALSE(Session().GetDocument().IsEnabled("raised"));
  ClickRow(*list, 0, 0);
  EXPECT_TRUE(Session().GetDocument().IsEnabled("raised"));
  EXPECT_FALSE(window_->isWindowModified());
}

TEST_F(WindowByHand, HelpIsThatOfTheSelectedNode) {
  ClickNode("high");
  Press(Qt::Key_F1);
  auto* page = Get<QTextBrowser>("help.page");
  ASSERT_TRUE(page->isVisible());
  EXPECT_TRUE(page->toPlainText().contains(QStringLiteral("Value Clamp")));
  ClickNode("raised");
  EXPECT_TRUE(page->toPlainText().contains(QStringLiteral("Value Add")));
}

TEST_F(WindowByHand, ASecondImageLiesOverTheTerrain) {
  ClickNode("height");
  Choose("View", {"3D View"});
  auto* terrain = window_->findChild<TerrainView*>();
  ASSERT_NE(terrain, nullptr);
  ASSERT_TRUE(terrain->isVisible());
  auto* map = Get<QComboBox>("second map");
  ASSERT_GE(map->findText("high.image"), 0);
  // Also where there is no OpenGL.
  map->parentWidget()->setEnabled(true);
  QTest::keyClick(map, Qt::Key_End);
  EXPECT_EQ(map->currentText(), QStringLiteral("high.image"));
  Wait();
  ASSERT_NE(Viewer().GetResult(), nullptr);
  EXPECT_NE(Viewer().GetResult()->second, nullptr);
  // Its node goes, and it with it.
  ClickNode("high");
  Press(Qt::Key_Delete);
  EXPECT_EQ(map->currentText(), QStringLiteral("None"));
}

// ---- First steps ----

class WindowAtFirst : public EditorWindowTesting {};

TEST_F(WindowAtFirst, FiveStepsAreShownOnce) {
  Open(folder_ / "graph.json");
  ASSERT_TRUE(QTest::qWaitFor([&] { return window_->findChild<FirstSteps*>() != nullptr; }, 60000));
  auto* steps = window_->findChild<FirstSteps*>();
  ASSERT_TRUE(steps->isVisible());
  int count = 0;
  while (steps->isVisible() && count < 20) {
    ++count;
    QTest::keyClick(Get<QPushButton>("first_steps.next"), Qt::Key_Return);
  }
  EXPECT_EQ(count, 5);
  window_.reset();
  Open(folder_ / "graph.json");
  QApplication::processEvents();
  EXPECT_EQ(window_->findChild<FirstSteps*>(), nullptr);
}

TEST_F(WindowAtFirst, TheStepsAreSkippedByAClickAndNeverComeAgain) {
  Open(folder_ / "graph.json");
  ASSERT_TRUE(QTest::qWaitFor([&] { return window_->findChild<FirstSteps*>() != nullptr; }, 60000));
  QTest::mouseClick(Get<QPushButton>("first_steps.skip"), Qt::LeftButton);
  EXPECT_FALSE(window_->findChild<FirstSteps*>()->isVisible());
  window_.reset();
  Open(folder_ / "graph.json");
  QApplication::processEvents();
  EXPECT_EQ(window_->findChild<FirstSteps*>(), nullptr);
  // But by hand.
  Choose("Help", {"First Steps"});
  EXPECT_TRUE(window_->findChild<FirstSteps*>()->isVisible());
}

// ---- Keyboard and language ----

TEST_F(WindowByHand, EveryControlIsReachedByTheKeyboard) {
  ClickNode("raised");
  Canvas().GetView().setFocus();
  QSet<QWidget*> reached;
  // Tab belongs to the search on the canvas; with Shift it leaves it.
  for (int i = 0; i < 200; ++i) {
    QWidget* focused = QApplication::focusWidget();
    ASSERT_NE(focused, nullptr);
    reached.insert(focused);
    QTest::keyClick(focused, Qt::Key_Tab, Qt::ShiftModifier);
    if (QApplication::focusWidget() == &Canvas().GetView()) break;
  }
  EXPECT_EQ(QApplication::focusWidget(), &Canvas().GetView());
  for (QWidget* widget : window_->findChildren<QWidget*>()) {
    const bool takes_keys = (widget->focusPolicy() & Qt::TabFocus) != 0 && widget->focusProxy() == nullptr;
    // One of a group of tabs, or the field within a box for numbers, is reached with what it belongs to.
    const bool is_part = qobject_cast<QAbstractSpinBox*>(widget->parentWidget()) != nullptr ||
                         widget->objectName().startsWith(QStringLiteral("qt_"));
    if (!takes_keys || is_part || !widget->isVisible() || !widget->isEnabled()) continue;
    if (widget->window() != window_.get()) continue;
    EXPECT_TRUE(reached.contains(widget))
        << widget->metaObject()->className() << " " << widget->objectName().toStdString();
  }
}

TEST_F(WindowAtFirst, GermanIsSpokenEverywhere) {
  QTranslator german;
  ASSERT_TRUE(german.load(QStringLiteral(VALUE_GERMAN_TEXTS)));
  QCoreApplication::installTranslator(&german);
  OpenForWork(folder_ / "graph.json");
  EXPECT_NE(WidgetTest::FindEntry(*window_->menuBar(), QStringLiteral("Datei")), nullptr);
  EXPECT_EQ(WidgetTest::FindEntry(*window_->menuBar(), QStringLiteral("File")), nullptr);
  EXPECT_EQ(Get<QToolButton>("viewer.pin")->text(), QStringLiteral("Anheften"));
  const QString steps = FirstSteps::MakeSteps().front().title;
  EXPECT_NE(steps, QStringLiteral("Add nodes"));
  Press(Qt::Key_Tab);
  QWidget* search = QApplication::activePopupWidget();
  ASSERT_NE(search, nullptr);
  EXPECT_EQ(search->accessibleName(), QStringLiteral("Knoten hinzufügen"));
  QTest::keyClick(search->findChild<QLineEdit*>(), Qt::Key_Escape);
  window_.reset();
  QCoreApplication::removeTranslator(&german);
}

}  // namespace
