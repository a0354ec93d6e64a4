// SPDX-License-Identifier: Apache-2.0
// The menu of the canvas, and wires and frames by mouse and keyboard.
#include <QLineEdit>
#include <QListWidget>

#include "Apps/Editor/Canvas/CanvasTesting.h"
#include "Apps/Editor/Canvas/NodeSearchPopup.h"
#include "Tests/Widgets/MenuTesting.h"

namespace {

using ScEng::Point;

constexpr char kChain[] =
    "{'id': 'a', 'type': 'ImageCheckerNode', 'position': [0, 0]},"
    "{'id': 'b', 'type': 'ImageValueClampNode', 'position': [260, 40]},"
    "{'id': 'c', 'type': 'ImageValueClampNode', 'position': [520, 10]}";
constexpr char kWires[] = "{'from': 'a.image', 'to': 'b.image'}, {'from': 'b.image', 'to': 'c.image'}";
constexpr char kFrame[] = ", 'frames': [{'title': 'Start', 'box': [-30, -60, 260, 300]}]";

class CanvasMenu : public CanvasTest {
 protected:
  /// Opens the menu by the right button.
  QMenu& OpenMenuAt(const QPointF& place) const {
    WidgetTest::AskForMenu(*view().viewport(), At(place), QContextMenuEvent::Mouse);
    QMenu* menu = WidgetTest::GetOpenMenu();
    EXPECT_NE(menu, nullptr);
    return *menu;
  }
  [[nodiscard]] const WireItem* SelectedWire() const {
    for (const WireItem* wire : scene().GetAllWires()) {
      if (wire->isSelected()) return wire;
    }
    return nullptr;
  }
};

TEST_F(CanvasMenu, AlignsWhatIsSelected) {
  Open(kChain);
  Click(TitleOf("a"));
  Click(TitleOf("b"), Qt::ShiftModifier);
  Click(TitleOf("c"), Qt::ShiftModifier);
  WidgetTest::Choose(OpenMenuAt(TitleOf("b")), {"Arrange", "Align Top"});
  EXPECT_EQ(document().GetPosition("a"), (Point{0, 0}));
  EXPECT_EQ(document().GetPosition("b"), (Point{260, 0}));
  EXPECT_EQ(document().GetPosition("c"), (Point{520, 0}));
  EXPECT_EQ(scene().FindNode("b")->pos(), QPointF(260, 0));
  ExpectOneStep();
}

TEST_F(CanvasMenu, SelectsWhatItIsOpenedAt) {
  Open(kChain);
  Click(TitleOf("a"));
  QMenu& menu = OpenMenuAt(TitleOf("c"));
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"c"});
  WidgetTest::Choose(menu, {"Mute or Unmute"});
  EXPECT_FALSE(document().IsEnabled("c"));
  ExpectOneStep();
}

TEST_F(CanvasMenu, IsUsedByKeysAlone) {
  Open(kChain);
  Key(Qt::Key_Right);
  ASSERT_EQ(canvas_->GetSelection(), QStringList{"a"});
  WidgetTest::AskForMenu(view(), view().viewport()->rect().center(), QContextMenuEvent::Keyboard);
  QMenu* menu = WidgetTest::GetOpenMenu();
  ASSERT_NE(menu, nullptr);
  for (int i = 0; i < 30; ++i) {
    if (menu->activeAction() != nullptr && menu->activeAction()->objectName() == QStringLiteral("canvas.mute")) break;
    QTest::keyClick(menu, Qt::Key_Down);
  }
  QTest::keyClick(menu, Qt::Key_Return);
  EXPECT_FALSE(document().IsEnabled("a"));
  ExpectOneStep();
}

TEST_F(CanvasMenu, ColorsAFrame) {
  Open(kChain, "", kFrame);
  const QPointF inside(100, 215);
  const QColor before = ColorAt(inside);
  WidgetTest::Choose(OpenMenuAt({100, -48}), {"Frame Color", "Red"});
  EXPECT_EQ(document().GetFrames()[0].color, "#c65353");
  Click({300, 400});
  const QColor after = ColorAt(inside);
  EXPECT_GT(after.red() - after.blue(), before.red() - before.blue() + 8);
  ExpectOneStep();
}

TEST_F(CanvasMenu, ChangesTheViewWhereNothingIs) {
  Open(kChain);
  const double height = scene().FindNode("a")->GetBody().height();
  WidgetTest::Choose(OpenMenuAt({200, 420}), {"View", "Thumbnails"});
  EXPECT_LT(scene().FindNode("a")->GetBody().height(), height);
  EXPECT_EQ(session_->GetPlace(), 0U);
}

// ---- Wires ----

TEST_F(CanvasMenu, ADoubleClickOnAWireSetsAReroutePoint) {
  Open(kChain, kWires);
  const WireItem* wire = scene().FindWire({"a.image", "b.image", 0});
  const QPointF middle = (wire->GetStart() + wire->GetEnd()) / 2;
  QTest::mouseDClick(view().viewport(), Qt::LeftButton, {}, At(middle));
  ASSERT_EQ(canvas_->GetSelection().size(), 1);
  const std::string point = canvas_->GetSelection().front().toStdString();
  EXPECT_TRUE(scene().FindNode(point)->GetFace().is_reroute);
  EXPECT_TRUE(HasConnection("a.image", point + ".image"));
  EXPECT_TRUE(HasConnection(point + ".image", "b.image"));
  EXPECT_FALSE(HasConnection("a.image", "b.image"));
  EXPECT_LT((scene().FindNode(point)->GetBody().center() - middle).manhattanLength(), 4.0);
  ExpectOneStep();
  // It leads the wire round other nodes.
  const QPointF now = scene().FindNode(point)->GetBody().center();
  DragFromTo(now, now + QPointF(0, 200));
  EXPECT_EQ(scene().FindWire({point + ".image", "b.image", 0})->GetStart(), PlugOf(point, "image", false));
  EXPECT_NEAR(scene().FindNode(point)->GetBody().center().y(), now.y() + 200, 1.0);
}

TEST_F(CanvasMenu, KeysSelectWiresOneByOne) {
  Open(kChain, kWires);
  Key(Qt::Key_Right);
  Key(Qt::Key_Right);
  ASSERT_EQ(canvas_->GetSelection(), QStringList{"b"});
  // First those of the selected node, from the left.
  Key(Qt::Key_W);
  ASSERT_NE(SelectedWire(), nullptr);
  EXPECT_EQ(SelectedWire()->GetConnection().from, "a.image");
  EXPECT_TRUE(canvas_->GetSelection().isEmpty());
  EXPECT_EQ(view().accessibleDescription(), QStringLiteral("Wire from a.image to b.image selected"));
  Key(Qt::Key_W);
  ASSERT_NE(SelectedWire(), nullptr);
  EXPECT_EQ(SelectedWire()->GetConnection().from, "b.image");
  Key(Qt::Key_W);
  EXPECT_EQ(SelectedWire()->GetConnection().from, "a.image");
  Key(Qt::Key_R);
  ASSERT_EQ(canvas_->GetSelection().size(), 1);
  const std::string point = canvas_->GetSelection().front().toStdString();
  EXPECT_TRUE(HasConnection("a.image", point + ".image"));
  EXPECT_TRUE(HasConnection(point + ".image", "b.image"));
  ExpectOneStep();
}

TEST_F(CanvasMenu, AWireIsRemovedByKeysAlone) {
  Open(kChain, kWires);
  Key(Qt::Key_W);
  Key(Qt::Key_Delete);
  EXPECT_EQ(document().GetConnections().size(), 1U);
  EXPECT_TRUE(document().HasId("a"));
  ExpectOneStep();
}

TEST_F(CanvasMenu, ANodeIsPutIntoAWireFromTheMenu) {
  Open(kChain, kWires);
  const WireItem* wire = scene().FindWire({"b.image", "c.image", 0});
  WidgetTest::Choose(OpenMenuAt((wire->GetStart() + wire->GetEnd()) / 2), {"Insert Node…"});
  auto* popup = canvas_->findChild<NodeSearchPopup*>();
  ASSERT_TRUE(popup->isVisible());
  auto* field = popup->findChild<QLineEdit*>();
  QTest::keyClicks(field, QStringLiteral("relief"));
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_TRUE(HasConnection("b.image", "relief.image"));
  EXPECT_TRUE(HasConnection("relief.image", "c.image"));
  ExpectOneStep();
}

TEST_F(CanvasMenu, OneLineCutsManyWires) {
  Open(std::string(kChain) + ",{'id': 'd', 'type': 'ImageValueClampNode', 'position': [260, 260]}",
       std::string(kWires) + ", {'from': 'a.image', 'to': 'd.image'}");
  DragFromTo({230, -60}, {230, 440}, Qt::ControlModifier);
  ASSERT_EQ(document().GetConnections().size(), 1U);
  EXPECT_TRUE(HasConnection("b.image", "c.image"));
  ExpectOneStep();
}

// ---- Frames ----

TEST_F(CanvasMenu, AFrameIsMadeNamedMovedAndRemovedByKeysAlone) {
  Open(kChain);
  Key(Qt::Key_Right);
  Key(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
  ASSERT_EQ(document().GetFrames().size(), 1U);
  const ScEng::Frame box = document().GetFrames()[0].box;
  Key(Qt::Key_F, Qt::ShiftModifier);
  ASSERT_TRUE(scene().GetFrames()[0]->isSelected());
  EXPECT_TRUE(canvas_->GetSelection().isEmpty());
  EXPECT_EQ(view().accessibleDescription(), QStringLiteral("Frame \"Frame\" selected"));
  Key(Qt::Key_F2);
  auto* field = view().findChild<QLineEdit*>(QStringLiteral("canvas.field"));
  ASSERT_NE(field, nullptr);
  QTest::keyClicks(field, QStringLiteral("Height"));
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_EQ(document().GetFrames()[0].title, "Height");
  // It takes its nodes along, as it does when it is dragged.
  Key(Qt::Key_F, Qt::ShiftModifier);
  Key(Qt::Key_Down, Qt::ControlModifier);
  EXPECT_EQ(document().GetFrames()[0].box, (ScEng::Frame{box.x, box.y + 12, box.width, box.height}));
  EXPECT_EQ(document().GetPosition("a"), (Point{0, 12}));
  EXPECT_EQ(document().GetPosition("b"), (Point{260, 40}));
  Key(Qt::Key_F, Qt::ShiftModifier);
  Key(Qt::Key_Delete);
  EXPECT_TRUE(document().GetFrames().empty());
  EXPECT_TRUE(document().HasId("a"));
}

TEST_F(CanvasMenu, AFrameIsRemovedWithoutItsNodes) {
  Open(kChain, "", kFrame);
  Click({100, -48});
  ASSERT_TRUE(scene().GetFrames()[0]->isSelected());
  Key(Qt::Key_Delete);
  EXPECT_TRUE(document().GetFrames().empty());
  EXPECT_TRUE(document().HasId("a"));
  ExpectOneStep();
}

}  // namespace
