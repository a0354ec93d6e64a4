// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <QDoubleSpinBox>
#include <QTest>

#include "Apps/Editor/Canvas/GraphView.h"
#include "Apps/Editor/Window/EditorWindowTesting.h"

namespace {

/// The window with a number beside the graph, and the panel of the addition.
class PanelWiresTest : public EditorWindowTesting {
 protected:
  void SetUp() override {
    EditorWindowTesting::SetUp();
    Open(folder_ / "graph.json");
    ASSERT_FALSE(Session().AddNode({Testing::kNumberNode, "number", ScEng::Point{0, 200}}).IsError());
    ASSERT_FALSE(Session().SetAttribute("number.value", "0.5").IsError());
    Canvas().ZoomToAll();
    Canvas().Select({QStringLiteral("raised")});
    Wait();
    steps_ = Session().GetPlace();
  }

  GraphView& View() { return Canvas().GetView(); }
  QWidget* Panel(const char* name) { return window_->findChild<QWidget*>(QLatin1String(name)); }
  QPoint PlugOf(const std::string& id, const std::string& name) {
    return View().mapFromScene(Canvas().GetScene().FindNode(id)->GetPlugPlace(name, 0, false));
  }
  /// The middle of a widget of the panel, from the corner of the canvas.
  QPoint PlaceOf(const char* widget) {
    QWidget* row = Panel(widget);
    return View().viewport()->mapFromGlobal(row->mapToGlobal(row->rect().center()));
  }
  /// Drags a wire from an output to a place, and looks at the mark on the way.
  bool Drag(const QPoint& from, const QPoint& to) {
    QWidget* canvas = View().viewport();
    QTest::mousePress(canvas, Qt::LeftButton, {}, from);
    QTest::mouseMove(canvas, (from + to) / 2);
    QTest::mouseMove(canvas, to);
    const QWidget* mark = Panel("attributes.wire_mark");
    const bool is_marked = mark != nullptr && mark->isVisible();
    QTest::mouseRelease(canvas, Qt::LeftButton, {}, to);
    Wait();
    EXPECT_TRUE(mark == nullptr || !mark->isVisible());
    return is_marked;
  }
  bool IsDriven() { return Session().GetDocument().FindNode("raised")->GetAttributeSource(0) != ""; }

  std::size_t steps_ = 0;
};

TEST_F(PanelWiresTest, AWireFeedsTheAttributeWhoseRowItIsDroppedOn) {
  const float before = Lowest();
  EXPECT_TRUE(Drag(PlugOf("number", "number"), PlaceOf("constant.label")));
  EXPECT_TRUE(IsDriven());
  const auto connections = Session().GetDocument().GetConnections();
  EXPECT_EQ(connections.back(), (ScEng::DocumentConnection{"number.number", "raised.constant", 0}));
  EXPECT_EQ(Session().GetPlace(), steps_ + 1);
  // 0.5 from the wire instead of 0.25.
  EXPECT_FLOAT_EQ(Lowest(), before + 0.25F);
  const auto* source = Panel("constant.source");
  ASSERT_NE(source, nullptr);
  EXPECT_TRUE(source->isVisible());
  EXPECT_FALSE(Panel("constant")->isEnabled());
  Action("edit.undo")->trigger();
  Wait();
  EXPECT_FALSE(IsDriven());
  EXPECT_FLOAT_EQ(Lowest(), before);
}

TEST_F(PanelWiresTest, TheFieldOfTheRowCountsToo) {
  EXPECT_TRUE(Drag(PlugOf("number", "number"), PlaceOf("constant")));
  EXPECT_TRUE(IsDriven());
}

TEST_F(PanelWiresTest, AWireOfAnotherKindFeedsNothing) {
  EXPECT_FALSE(Drag(PlugOf("height", "image"), PlaceOf("constant.label")));
  EXPECT_FALSE(IsDriven());
  EXPECT_EQ(Session().GetPlace(), steps_);
}

TEST_F(PanelWiresTest, BesideTheRowsNothingHappens) {
  QWidget* viewer = &Viewer();
  const QPoint place = View().viewport()->mapFromGlobal(viewer->mapToGlobal(viewer->rect().center()));
  EXPECT_FALSE(Drag(PlugOf("number", "number"), place));
  EXPECT_EQ(Session().GetPlace(), steps_);
  EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

}  // namespace
