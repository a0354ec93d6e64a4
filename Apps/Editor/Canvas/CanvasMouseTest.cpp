// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/CanvasTesting.h"
#include "Apps/Editor/Canvas/WireFit.h"

namespace {

using ScEng::Point;

constexpr char kTwo[] =
    "{'id': 'a', 'type': 'ImageCheckerNode', 'position': [0, 0]},"
    "{'id': 'b', 'type': 'ImageValueClampNode', 'position': [320, 60]}";
constexpr char kWire[] = "{'from': 'a.image', 'to': 'b.image'}";

class CanvasMouse : public CanvasTest {};

TEST_F(CanvasMouse, DragOfANodeIsOneStep) {
  Open(kTwo);
  DragFromTo(TitleOf("a"), TitleOf("a") + QPointF(40, 100));
  EXPECT_EQ(document().GetPosition("a"), (Point{40, 100}));
  EXPECT_EQ(document().GetPosition("b"), (Point{320, 60}));
  EXPECT_EQ(scene().FindNode("a")->pos(), QPointF(40, 100));
  ExpectOneStep();
  ASSERT_FALSE(session_->Undo().IsError());
  EXPECT_EQ(scene().FindNode("a")->pos(), QPointF(0, 0));
}

TEST_F(CanvasMouse, DragMovesAllThatIsSelected) {
  Open(kTwo);
  canvas_->Select({"a", "b"});
  DragFromTo(TitleOf("b"), TitleOf("b") + QPointF(-20, 30));
  EXPECT_EQ(document().GetPosition("a"), (Point{-20, 30}));
  EXPECT_EQ(document().GetPosition("b"), (Point{300, 90}));
  ExpectOneStep();
}

TEST_F(CanvasMouse, EscapeTakesADragBack) {
  Open(kTwo);
  Press(TitleOf("a"));
  MoveTo(TitleOf("a") + QPointF(60, 60));
  EXPECT_NE(scene().FindNode("a")->pos(), QPointF(0, 0));
  Key(Qt::Key_Escape);
  EXPECT_EQ(scene().FindNode("a")->pos(), QPointF(0, 0));
  EXPECT_EQ(session_->GetPlace(), 0U);
}

TEST_F(CanvasMouse, ConnectsFromOutputToInputAndBack) {
  Open(kTwo);
  DragFromTo(PlugOf("a", "image", false), PlugOf("b", "image", true));
  EXPECT_TRUE(HasConnection("a.image", "b.image"));
  ExpectOneStep();
  ASSERT_FALSE(session_->Undo().IsError());
  DragFromTo(PlugOf("b", "image", true), PlugOf("a", "image", false));
  EXPECT_TRUE(HasConnection("a.image", "b.image"));
}

TEST_F(CanvasMouse, WireDroppedOnTheBodyTakesTheOnlyFreeInput) {
  Open(kTwo);
  DragFromTo(PlugOf("a", "image", false), scene().FindNode("b")->GetBody().center() + QPointF(40, 30));
  EXPECT_TRUE(HasConnection("a.image", "b.image"));
}

TEST_F(CanvasMouse, PickedUpWireIsDisconnectedInEmptySpace) {
  Open(kTwo, kWire);
  DragFromTo(PlugOf("b", "image", true), QPointF(180, 330));
  EXPECT_FALSE(HasConnection("a.image", "b.image"));
  ExpectOneStep();
}

TEST_F(CanvasMouse, PickedUpWireGoesToAnotherInputInOneStep) {
  Open(std::string(kTwo) + ",{'id': 'c', 'type': 'ImageValueClampNode', 'position': [320, 300]}", kWire);
  DragFromTo(PlugOf("b", "image", true), PlugOf("c", "image", true));
  EXPECT_FALSE(HasConnection("a.image", "b.image"));
  EXPECT_TRUE(HasConnection("a.image", "c.image"));
  ExpectOneStep();
}

TEST_F(CanvasMouse, WireReplacesWhatFeedsAnInput) {
  Open(std::string(kTwo) + ",{'id': 'c', 'type': 'ImageCheckerNode', 'position': [0, 300]}", kWire);
  DragFromTo(PlugOf("c", "image", false), PlugOf("b", "image", true));
  EXPECT_FALSE(HasConnection("a.image", "b.image"));
  EXPECT_TRUE(HasConnection("c.image", "b.image"));
  ExpectOneStep();
}

TEST_F(CanvasMouse, InputsOfManyConnectionsHaveARowForTheNext) {
  Open(
      "{'id': 'a', 'type': 'ImageCheckerNode', 'position': [0, 0]},"
      "{'id': 'sum', 'type': 'ImageValueAddNode', 'position': [320, 60]}",
      "{'from': 'a.image', 'to': 'sum.image', 'index': 0}");
  DragFromTo(PlugOf("a", "image", false), PlugOf("sum", "image", true, 1));
  EXPECT_TRUE(HasConnection("a.image", "sum.image", 0));
  EXPECT_TRUE(HasConnection("a.image", "sum.image", 1));
  ExpectOneStep();
}

TEST_F(CanvasMouse, ARefusedConnectionIsToldAndChangesNothing) {
  Open(
      "{'id': 'b', 'type': 'ImageValueClampNode', 'position': [0, 0]},"
      "{'id': 'c', 'type': 'ImageValueClampNode', 'position': [320, 0]}",
      "{'from': 'b.image', 'to': 'c.image'}");
  DragFromTo(PlugOf("c", "image", false), PlugOf("b", "image", true));
  ASSERT_EQ(failures_.size(), 1);
  EXPECT_TRUE(failures_.front().contains(QStringLiteral("cycle"))) << failures_.front().toStdString();
  EXPECT_EQ(session_->GetPlace(), 0U);
  EXPECT_EQ(scene().GetAllWires().size(), 1U);
}

TEST_F(CanvasMouse, ARefusedWireSaysSoAtThePointerAndDoesNotSnap) {
  Open(
      "{'id': 'b', 'type': 'ImageValueClampNode', 'position': [0, 0]},"
      "{'id': 'c', 'type': 'ImageValueClampNode', 'position': [320, 0]},"
      "{'id': 'd', 'type': 'ImageValueClampNode', 'position': [320, 260]}",
      "{'from': 'b.image', 'to': 'c.image'}");
  const QColor refused = scene().GetColors().error;
  const auto drag_to = [&](const QPointF& place) {
    Press(PlugOf("c", "image", false));
    MoveTo(PlugOf("c", "image", false) + QPointF(20, 60));
    MoveTo(place);
    const QImage seen = view().viewport()->grab().toImage();
    Key(Qt::Key_Escape);
    int count = 0;
    for (int y = 0; y < seen.height(); ++y) {
      for (int x = 0; x < seen.width(); ++x) count += seen.pixelColor(x, y) == refused ? 1 : 0;
    }
    return count;
  };
  EXPECT_EQ(drag_to(PlugOf("d", "image", true)), 0);
  EXPECT_GT(drag_to(PlugOf("b", "image", true)), 50);
  EXPECT_TRUE(failures_.isEmpty());
}

TEST_F(CanvasMouse, WhatARefusedWireLacksIsTold) {
  Open(
      "{'id': 'a', 'type': 'ImageCheckerNode', 'position': [0, 0]},"
      "{'id': 'b', 'type': 'ImageValueClampNode', 'position': [320, 0]},"
      "{'id': 'c', 'type': 'ImageValueClampNode', 'position': [640, 0]},"
      "{'id': 'n', 'type': 'NumberNode', 'position': [0, 260]}",
      "{'from': 'b.image', 'to': 'c.image'}");
  const auto output = [](const char* node, const char* name, unsigned type) {
    return PlugRef{node, name, 0, type, false};
  };
  const PlugRef b_in{"b", "image", 0, PlugType::kImage, true};
  const PlugRef c_in{"c", "image", 0, PlugType::kImage, true};
  const PlugRef a = output("a", "image", PlugType::kImage);
  const PlugRef b = output("b", "image", PlugType::kImage);
  const PlugRef c = output("c", "image", PlugType::kImage);
  const PlugRef n = output("n", "number", PlugType::kNumber);
  const auto misfit = [&](const PlugRef& one, const PlugRef& other) {
    // In whichever direction the wire is dragged.
    const QString text = FindMisfit(scene(), one, other, std::nullopt);
    EXPECT_EQ(text, FindMisfit(scene(), other, one, std::nullopt));
    return text;
  };
  EXPECT_EQ(misfit(a, b_in), QString());
  EXPECT_EQ(misfit(b, c_in), QString());
  EXPECT_EQ(misfit(c, b_in), QStringLiteral("This would close a cycle"));
  EXPECT_EQ(misfit(b, b_in), QStringLiteral("A node cannot feed itself"));
  EXPECT_EQ(misfit(n, b_in), QStringLiteral("Output: number, input: image"));
  EXPECT_EQ(misfit(a, b), QStringLiteral("Both are outputs"));
  EXPECT_EQ(misfit(b_in, c_in), QStringLiteral("Both are inputs"));
  // The wire that closes the cycle is the one that is picked up.
  EXPECT_EQ(FindMisfit(scene(), c, b_in, ScEng::DocumentConnection{"b.image", "c.image", 0}), QString());
  EXPECT_TRUE(HasFittingRow(scene(), a, "b"));
  EXPECT_FALSE(HasFittingRow(scene(), n, "b"));
  EXPECT_FALSE(HasFittingRow(scene(), a, "n"));
}

TEST_F(CanvasMouse, AttributeIsWiredByItsRow) {
  Open(
      "{'id': 'n', 'type': 'NumberNode', 'position': [0, 0]},"
      "{'id': 'relief', 'type': 'ImageReliefNode', 'position': [320, 0]}");
  Press(PlugOf("n", "number", false));
  MoveTo(PlugOf("n", "number", false) + QPointF(30, 20));
  // Over the node, the attributes that the wire could feed have rows.
  MoveTo(TitleOf("relief"));
  const QPointF row = PlugOf("relief", "radius", true);
  EXPECT_EQ(row.x(), 320.0);
  MoveTo(row + QPointF(30, 0));
  Release(row + QPointF(30, 0));
  EXPECT_TRUE(HasConnection("n.number", "relief.radius"));
  // It keeps its row while it is fed, and the others go.
  EXPECT_EQ(scene().FindNode("relief")->GetFace().inputs.size(), 2U);
  ExpectOneStep();
}

TEST_F(CanvasMouse, NodeDroppedOnAWireGoesIntoIt) {
  Open(std::string(kTwo) + ",{'id': 'c', 'type': 'ImageValueClampNode', 'position': [0, 320]}", kWire);
  const WireItem* wire = scene().GetAllWires().front();
  const QPointF middle = (wire->GetStart() + wire->GetEnd()) / 2;
  const QRectF body = scene().FindNode("c")->GetBody();
  DragFromTo(TitleOf("c"), TitleOf("c") + middle - body.center());
  EXPECT_TRUE(HasConnection("a.image", "c.image"));
  EXPECT_TRUE(HasConnection("c.image", "b.image"));
  EXPECT_FALSE(HasConnection("a.image", "b.image"));
  ExpectOneStep();
}

TEST_F(CanvasMouse, LineWithControlCutsWires) {
  Open(kTwo, kWire);
  DragFromTo({250, -40}, {250, 300}, Qt::ControlModifier);
  EXPECT_FALSE(HasConnection("a.image", "b.image"));
  ExpectOneStep();
}

TEST_F(CanvasMouse, BoxAndLassoSelect) {
  Open(kTwo);
  DragFromTo({-60, -60}, {60, 40});
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"a"});
  DragFromTo({300, 30}, {360, 90}, Qt::ShiftModifier);
  EXPECT_EQ(canvas_->GetSelection(), (QStringList{"a", "b"}));
  Click({160, 360});
  EXPECT_TRUE(canvas_->GetSelection().isEmpty());
  DragFromTo({300, 30}, {360, 90}, Qt::AltModifier);
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"b"});
}

TEST_F(CanvasMouse, ControlClickTogglesANode) {
  Open(kTwo);
  Click(TitleOf("a"));
  Click(TitleOf("b"), Qt::ControlModifier);
  EXPECT_EQ(canvas_->GetSelection(), (QStringList{"a", "b"}));
  Click(TitleOf("a"), Qt::ControlModifier);
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"b"});
}

TEST_F(CanvasMouse, EyeShowsANode) {
  Open(kTwo, kWire);
  const QSignalSpy spy(canvas_.get(), &GraphCanvas::ShowRequested);
  const NodeItem* item = scene().FindNode("b");
  Click(item->pos() + item->GetShape().eye.center());
  ASSERT_EQ(spy.size(), 1);
  EXPECT_EQ(spy.front().front().toString(), QStringLiteral("b.image"));
  EXPECT_EQ(canvas_->GetShown(), QStringLiteral("b.image"));
  ASSERT_TRUE(document().GetView());
  EXPECT_EQ(document().GetView()->shown, "b.image");
  EXPECT_EQ(session_->GetPlace(), 0U);
}

TEST_F(CanvasMouse, WheelZoomsAtThePointer) {
  Open(kTwo);
  const QPoint pointer(200, 150);
  const double zoom = view().GetZoom();
  const QPointF before = view().mapToScene(pointer);
  QWheelEvent event(pointer, view().viewport()->mapToGlobal(QPointF(pointer)), {}, {0, -240}, Qt::NoButton,
                    Qt::NoModifier, Qt::NoScrollPhase, false);
  QApplication::sendEvent(view().viewport(), &event);
  EXPECT_LT(view().GetZoom(), 0.8 * zoom);
  const QPointF off = view().mapToScene(pointer) - before;
  EXPECT_LT(off.manhattanLength(), view().ToScene(3.0));
}

TEST_F(CanvasMouse, MiddleButtonPans) {
  Open(kTwo);
  const QPointF before = view().GetCenter();
  QTest::mousePress(view().viewport(), Qt::MiddleButton, {}, QPoint(300, 300));
  QTest::mouseMove(view().viewport(), QPoint(340, 280));
  QTest::mouseRelease(view().viewport(), Qt::MiddleButton, {}, QPoint(340, 280));
  EXPECT_NEAR(view().GetCenter().x(), before.x() - view().ToScene(40), 2.0);
  EXPECT_NEAR(view().GetCenter().y(), before.y() + view().ToScene(20), 2.0);
}

TEST_F(CanvasMouse, FrameTakesItsNodesAlong) {
  Open(kTwo, "", ", 'frames': [{'title': 'Start', 'box': [-30, -60, 260, 300]}]");
  DragFromTo({100, -48}, {150, 22});
  ASSERT_EQ(document().GetFrames().size(), 1U);
  EXPECT_EQ(document().GetFrames()[0].box, (ScEng::Frame{20, 10, 260, 300}));
  EXPECT_EQ(document().GetPosition("a"), (Point{50, 70}));
  EXPECT_EQ(document().GetPosition("b"), (Point{320, 60}));
  ExpectOneStep();
}

TEST_F(CanvasMouse, CornerResizesAFrame) {
  Open(kTwo, "", ", 'frames': [{'title': 'Start', 'box': [-30, -60, 260, 300]}]");
  DragFromTo({224, 234}, {264, 274});
  EXPECT_EQ(document().GetFrames()[0].box, (ScEng::Frame{-30, -60, 294, 334}));
  ExpectOneStep();
}

}  // namespace
