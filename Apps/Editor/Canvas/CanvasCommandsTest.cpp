// SPDX-License-Identifier: Apache-2.0
#include <QClipboard>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QPlainTextEdit>

#include "Apps/Editor/Canvas/CanvasTesting.h"
#include "Apps/Editor/Canvas/NodeSearchPopup.h"

namespace {

using ScEng::Point;

constexpr char kChain[] =
    "{'id': 'a', 'type': 'ImageCheckerNode', 'position': [0, 0]},"
    "{'id': 'b', 'type': 'ImageValueClampNode', 'position': [260, 40]},"
    "{'id': 'c', 'type': 'ImageValueClampNode', 'position': [520, 10]}";
constexpr char kWires[] = "{'from': 'a.image', 'to': 'b.image'}, {'from': 'b.image', 'to': 'c.image'}";

class CanvasCommandsTest : public CanvasTest {
 protected:
  [[nodiscard]] QWidget* FindSearch() const {
    auto* search = canvas_->findChild<NodeSearchPopup*>();
    return search != nullptr && search->isVisible() ? search : nullptr;
  }
  /// Types into the search and takes what is found first.
  void Search(const char* words) const {
    ASSERT_NE(FindSearch(), nullptr);
    auto* field = FindSearch()->findChild<QLineEdit*>();
    QTest::keyClicks(field, QString::fromLatin1(words));
    QTest::keyClick(field, Qt::Key_Return);
  }
  /// What a desktop sends when somebody drops something.
  void Drop(const QMimeData& data, const QPointF& place) const {
    QDragEnterEvent enter(At(place), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(view().viewport(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(At(place), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(view().viewport(), &drop);
  }
  [[nodiscard]] QStringList GetFound() const {
    QStringList names;
    const auto* list = FindSearch()->findChild<QListWidget*>();
    for (int i = 0; i < list->count(); ++i) names << list->item(i)->text();
    return names;
  }
};

TEST_F(CanvasCommandsTest, TabSearchesAndEnterAddsInOneStep) {
  Open(kChain);
  QTest::keyClick(&view(), Qt::Key_Tab);
  Search("clamp");
  EXPECT_EQ(FindSearch(), nullptr);
  ASSERT_TRUE(document().HasId("value_clamp"));
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"value_clamp"});
  EXPECT_EQ(canvas_->GetUsage(), QStringList{"ImageValueClampNode=1"});
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, EscapeClosesTheSearch) {
  Open(kChain);
  QTest::mouseDClick(view().viewport(), Qt::LeftButton, {}, At({200, 400}));
  ASSERT_NE(FindSearch(), nullptr);
  QTest::keyClick(FindSearch()->findChild<QLineEdit*>(), Qt::Key_Escape);
  EXPECT_EQ(FindSearch(), nullptr);
  EXPECT_EQ(session_->GetPlace(), 0U);
}

TEST_F(CanvasCommandsTest, SearchStartsWithWhatIsUsedMost) {
  Open(kChain);
  canvas_->SetUsage({"ImageReliefNode=2", "nonsense", "ImageValueAddNode=9", "ImageValueClampNode=x", "=4"});
  EXPECT_EQ(canvas_->GetUsage(), (QStringList{"ImageReliefNode=2", "ImageValueAddNode=9"}));
  canvas_->OpenSearch();
  EXPECT_EQ(GetFound().mid(0, 2), (QStringList{"Value Add", "Relief"}));
}

TEST_F(CanvasCommandsTest, WireDroppedInEmptySpaceAddsWhatFitsAndConnects) {
  Open(kChain);
  DragFromTo(PlugOf("c", "image", false), {600, 420});
  ASSERT_NE(FindSearch(), nullptr);
  // A generator takes no image.
  EXPECT_FALSE(GetFound().contains(QStringLiteral("Image Checker")));
  Search("value add");
  EXPECT_TRUE(HasConnection("c.image", "value_add.image"));
  EXPECT_EQ(document().GetPosition("value_add"), (Point{600, 360}));
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, DeletesWithItsWires) {
  Open(kChain, kWires);
  canvas_->Select({"b"});
  Key(Qt::Key_Delete);
  EXPECT_FALSE(document().HasId("b"));
  EXPECT_TRUE(document().GetConnections().empty());
  EXPECT_TRUE(scene().GetAllWires().empty());
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, DeletesAndReconnects) {
  Open(kChain, kWires);
  canvas_->Select({"b"});
  Key(Qt::Key_X);
  EXPECT_FALSE(document().HasId("b"));
  EXPECT_TRUE(HasConnection("a.image", "c.image"));
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, DeletesASelectedWire) {
  Open(kChain, kWires);
  const WireItem* wire = scene().FindWire({"a.image", "b.image", 0});
  Click((wire->GetStart() + wire->GetEnd()) / 2);
  ASSERT_TRUE(wire->isSelected());
  Key(Qt::Key_Delete);
  EXPECT_FALSE(HasConnection("a.image", "b.image"));
  EXPECT_TRUE(HasConnection("b.image", "c.image"));
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, MutesAndUnmutes) {
  Open(kChain);
  canvas_->Select({"a", "b"});
  Key(Qt::Key_M);
  EXPECT_FALSE(document().IsEnabled("a"));
  EXPECT_FALSE(document().IsEnabled("b"));
  EXPECT_FALSE(scene().FindNode("a")->GetFace().is_enabled);
  ExpectOneStep();
  Key(Qt::Key_M);
  EXPECT_TRUE(document().IsEnabled("a"));
}

TEST_F(CanvasCommandsTest, DuplicatesWithAndWithoutInputs) {
  Open(kChain, kWires);
  canvas_->Select({"b"});
  Key(Qt::Key_D, Qt::ControlModifier);
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"b2"});
  EXPECT_EQ(document().GetPosition("b2"), (Point{296, 76}));
  EXPECT_FALSE(HasConnection("a.image", "b2.image"));
  ExpectOneStep();
  canvas_->Select({"b"});
  Key(Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_TRUE(HasConnection("a.image", "b3.image"));
}

TEST_F(CanvasCommandsTest, CopiesAsTextAndPastes) {
  Open(kChain, kWires);
  canvas_->Select({"a", "b"});
  Key(Qt::Key_C, Qt::ControlModifier);
  const QMimeData* data = QApplication::clipboard()->mimeData();
  EXPECT_TRUE(data->text().contains(QStringLiteral("value-graph")));
  EXPECT_TRUE(data->hasFormat(QStringLiteral("application/x-value-graph")));
  Key(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(canvas_->GetSelection(), (QStringList{"a2", "b2"}));
  EXPECT_TRUE(HasConnection("a2.image", "b2.image"));
  // They keep their places to each other.
  const Point a = *document().GetPosition("a2");
  const Point b = *document().GetPosition("b2");
  EXPECT_EQ((Point{b.x - a.x, b.y - a.y}), (Point{260, 40}));
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, CutTakesNodesAway) {
  Open(kChain, kWires);
  canvas_->Select({"c"});
  Key(Qt::Key_X, Qt::ControlModifier);
  EXPECT_FALSE(document().HasId("c"));
  EXPECT_TRUE(QApplication::clipboard()->text().contains(QStringLiteral("ImageValueClampNode")));
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, PastingWhatIsNoDocumentIsToldAndChangesNothing) {
  Open(kChain);
  QApplication::clipboard()->setText(QStringLiteral("hello"));
  Key(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(failures_.size(), 1);
  EXPECT_EQ(session_->GetPlace(), 0U);
}

TEST_F(CanvasCommandsTest, RenamesInPlace) {
  Open(kChain, kWires);
  canvas_->Select({"b"});
  Key(Qt::Key_F2);
  auto* field = view().findChild<QLineEdit*>(QStringLiteral("canvas.field"));
  ASSERT_NE(field, nullptr);
  EXPECT_EQ(field->text(), QStringLiteral("b"));
  QTest::keyClicks(field, QStringLiteral("limit"));
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_TRUE(HasConnection("a.image", "limit.image"));
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"limit"});
  EXPECT_EQ(scene().FindNode("limit")->GetFace().title, QStringLiteral("limit"));
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, ANameThatIsTakenIsRefused) {
  Open(kChain);
  canvas_->Select({"b"});
  Key(Qt::Key_F2);
  auto* field = view().findChild<QLineEdit*>(QStringLiteral("canvas.field"));
  QTest::keyClicks(field, QStringLiteral("a"));
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_EQ(failures_.size(), 1);
  EXPECT_EQ(Save(), before_);
}

TEST_F(CanvasCommandsTest, WritesNotes) {
  Open(kChain);
  canvas_->Select({"a"});
  Key(Qt::Key_N);
  auto* field = view().findChild<QPlainTextEdit*>(QStringLiteral("canvas.field"));
  ASSERT_NE(field, nullptr);
  QTest::keyClicks(field, QStringLiteral("the board"));
  QTest::keyClick(field, Qt::Key_Return, Qt::ControlModifier);
  EXPECT_EQ(document().GetNote("a"), "the board");
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, AlignsAndDistributes) {
  Open(kChain);
  canvas_->Select({"a", "b", "c"});
  Trigger("alignTop");
  EXPECT_EQ(document().GetPosition("b"), (Point{260, 0}));
  EXPECT_EQ(document().GetPosition("c"), (Point{520, 0}));
  ExpectOneStep();
  ASSERT_FALSE(session_->SetPositions({{"b", Point{300, 0}}}).IsError());
  Trigger("distributeAcross");
  EXPECT_EQ(document().GetPosition("a"), (Point{0, 0}));
  EXPECT_EQ(document().GetPosition("b"), (Point{260, 0}));
  EXPECT_EQ(document().GetPosition("c"), (Point{520, 0}));
}

TEST_F(CanvasCommandsTest, FrameGoesAroundTheSelection) {
  Open(kChain);
  canvas_->Select({"a", "b"});
  Key(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
  ASSERT_EQ(document().GetFrames().size(), 1U);
  const QRectF box = scene().GetFrames()[0]->GetBox();
  EXPECT_TRUE(box.contains(scene().FindNode("a")->GetBody()));
  EXPECT_TRUE(box.contains(scene().FindNode("b")->GetBody()));
  EXPECT_FALSE(box.contains(scene().FindNode("c")->GetBody().center()));
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, DoubleClickEditsTheTitleOfAFrame) {
  Open(kChain, "", ", 'frames': [{'title': 'Start', 'box': [-30, -60, 260, 300]}]");
  QTest::mouseDClick(view().viewport(), Qt::LeftButton, {}, At({100, -48}));
  auto* field = view().findChild<QLineEdit*>(QStringLiteral("canvas.field"));
  ASSERT_NE(field, nullptr);
  QTest::keyClicks(field, QStringLiteral("Height"));
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_EQ(document().GetFrames()[0].title, "Height");
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, NodesWithoutPositionAreLaidOutButNotWritten) {
  Open(
      "{'id': 'a', 'type': 'ImageCheckerNode'}, {'id': 'b', 'type': 'ImageValueClampNode'},"
      "{'id': 'c', 'type': 'ImageValueClampNode'}",
      kWires);
  const QPointF a = scene().FindNode("a")->pos();
  const QPointF b = scene().FindNode("b")->pos();
  const QPointF c = scene().FindNode("c")->pos();
  EXPECT_LT(a.x() + NodeShape::kWidth, b.x());
  EXPECT_LT(b.x() + NodeShape::kWidth, c.x());
  EXPECT_FALSE(document().GetPosition("a"));
  // One that is moved is written; the others stay as they are shown.
  DragFromTo(TitleOf("b"), TitleOf("b") + QPointF(10, 40));
  EXPECT_EQ(document().GetPosition("b"), (Point{b.x() + 10, b.y() + 40}));
  EXPECT_FALSE(document().GetPosition("a"));
  EXPECT_EQ(scene().FindNode("a")->pos(), a);
  ASSERT_FALSE(session_->Undo().IsError());
  EXPECT_EQ(scene().FindNode("b")->pos(), b);
  ASSERT_FALSE(session_->Redo().IsError());
  Trigger("layOut");
  EXPECT_TRUE(document().GetPosition("a"));
  EXPECT_TRUE(document().GetPosition("c"));
  EXPECT_EQ(session_->GetPlace(), 2U);
}

TEST_F(CanvasCommandsTest, ArrowsGoAlongWiresAndToNeighbors) {
  Open(std::string(kChain) + ",{'id': 'd', 'type': 'ImageCheckerNode', 'position': [0, 300]}", kWires);
  Key(Qt::Key_Right);
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"a"});
  Key(Qt::Key_Right);
  Key(Qt::Key_Right);
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"c"});
  Key(Qt::Key_Left);
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"b"});
  canvas_->Select({"a"});
  Key(Qt::Key_Down);
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"d"});
  EXPECT_TRUE(view().accessibleDescription().contains(QStringLiteral("d")));
}

TEST_F(CanvasCommandsTest, KeyboardConnectsTwoNodes) {
  Open(kChain);
  Key(Qt::Key_Right);
  Key(Qt::Key_Right, Qt::ShiftModifier);
  ASSERT_EQ(canvas_->GetSelection(), (QStringList{"a", "b"}));
  Key(Qt::Key_C);
  EXPECT_TRUE(HasConnection("a.image", "b.image"));
  ExpectOneStep();
  Key(Qt::Key_C);
  EXPECT_EQ(failures_.size(), 1);
}

TEST_F(CanvasCommandsTest, InsertsIntoASelectedWire) {
  Open(kChain, kWires);
  scene().FindWire({"a.image", "b.image", 0})->setSelected(true);
  Key(Qt::Key_I);
  ASSERT_NE(FindSearch(), nullptr);
  EXPECT_FALSE(GetFound().contains(QStringLiteral("Image Checker")));
  Search("clamp");
  EXPECT_TRUE(HasConnection("a.image", "value_clamp.image"));
  EXPECT_TRUE(HasConnection("value_clamp.image", "b.image"));
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, ControlAndArrowsMoveNodes) {
  Open(kChain);
  canvas_->Select({"a"});
  Key(Qt::Key_Right, Qt::ControlModifier);
  EXPECT_EQ(document().GetPosition("a"), (Point{12, 0}));
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, TypesCanBeDropped) {
  Open(kChain);
  QMimeData data;
  data.setData(QStringLiteral("application/x-value-node-type"), "ImageCheckerNode");
  Drop(data, {100, 400});
  EXPECT_EQ(document().GetPosition("image_checker"), (Point{100, 400}));
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, EnterShowsAndDimsWhatDoesNotFeedIt) {
  Open(kChain, "{'from': 'a.image', 'to': 'b.image'}");
  canvas_->Select({"b"});
  Key(Qt::Key_Return);
  EXPECT_EQ(canvas_->GetShown(), QStringLiteral("b.image"));
  EXPECT_TRUE(QTest::qWaitFor([&] { return scene().FindNode("c")->IsDimmed(); }, 60000));
  EXPECT_FALSE(scene().FindNode("a")->IsDimmed());
  Trigger("dim");
  EXPECT_TRUE(QTest::qWaitFor([&] { return !scene().FindNode("c")->IsDimmed(); }, 60000));
}

TEST_F(CanvasCommandsTest, ViewIsStoredAndRestored) {
  Open(kChain);
  view().SetZoom(0.5, QPoint(0, 0));
  view().SetCenter({1200, -300});
  EXPECT_TRUE(QTest::qWaitFor([&] { return document().GetView() && document().GetView()->center; }, 60000));
  canvas_->StoreView();
  EXPECT_NEAR(document().GetView()->center->x, 1200, 2);
  EXPECT_NEAR(*document().GetView()->zoom, 0.5, 0.001);
  EXPECT_FALSE(session_->IsModified());
  GraphCanvas again(*session_, Testing::GetCatalog());
  again.resize(800, 500);
  again.show();
  EXPECT_NEAR(again.GetView().GetCenter().x(), 1200, 2);
  EXPECT_NEAR(again.GetView().GetZoom(), 0.5, 0.001);
}

TEST_F(CanvasCommandsTest, DroppedImagesBecomeReaders) {
  Open(kChain);
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(folder_.filePath(QStringLiteral("maps/heights.png"))),
                QUrl::fromLocalFile(QStringLiteral("/elsewhere/mask.tif"))});
  Drop(data, {100, 400});
  const QStringList ids = canvas_->GetSelection();
  ASSERT_EQ(ids.size(), 2);
  const auto path = [&](const QString& id) {
    return document().FindNode(id.toStdString())->GetAttribute(std::string("path"))->GetValue().GetText();
  };
  EXPECT_EQ(path(ids[0]), "maps/heights.png");
  EXPECT_EQ(path(ids[1]), "/elsewhere/mask.tif");
  ExpectOneStep();
}

TEST_F(CanvasCommandsTest, DroppedDocumentsAreToBeOpened) {
  Open(kChain);
  const QSignalSpy spy(canvas_.get(), &GraphCanvas::OpenRequested);
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(QStringLiteral("/elsewhere/graph.json"))});
  Drop(data, {100, 400});
  ASSERT_EQ(spy.size(), 1);
  EXPECT_EQ(spy.front().front().toString(), QStringLiteral("/elsewhere/graph.json"));
  EXPECT_EQ(session_->GetPlace(), 0U);
}

TEST_F(CanvasCommandsTest, FactsAreShownAndTold) {
  Open(kChain);
  ScEng::NodeFacts facts;
  facts.id = "b";
  facts.is_in_error = true;
  facts.messages = {"the input has no image"};
  canvas_->SetFacts({facts});
  EXPECT_TRUE(scene().FindNode("b")->GetCondition().is_in_error);
  EXPECT_TRUE(scene().FindNode("b")->GetToolTip(TitleOf("b")).contains(QStringLiteral("the input has no image")));
  canvas_->SetRunning(QStringLiteral("a"), 0.5);
  EXPECT_EQ(scene().FindNode("a")->GetCondition().progress, 0.5);
  canvas_->SetRunning({}, 1.0);
  EXPECT_LT(scene().FindNode("a")->GetCondition().progress, 0.0);
}

TEST_F(CanvasCommandsTest, UnknownTypesArePlaceholdersWithTheirWires) {
  Open(
      "{'id': 'a', 'type': 'ImageCheckerNode', 'position': [0, 0]},"
      "{'id': 'odd', 'type': 'NobodyKnowsNode', 'position': [300, 0]}",
      "{'from': 'a.image', 'to': 'odd.thing'}");
  const NodeFace& face = scene().FindNode("odd")->GetFace();
  EXPECT_TRUE(face.is_placeholder);
  ASSERT_EQ(face.inputs.size(), 1U);
  EXPECT_EQ(face.inputs[0].name, "thing");
  EXPECT_EQ(scene().GetAllWires().front()->GetEnd(), PlugOf("odd", "thing", true));
}

TEST_F(CanvasCommandsTest, GoesWhileAFieldIsOpen) {
  Open(kChain);
  canvas_->Select({"b"});
  Key(Qt::Key_F2);
  QTest::keyClicks(view().findChild<QLineEdit*>(QStringLiteral("canvas.field")), QStringLiteral("half"));
  canvas_.reset();
  EXPECT_FALSE(document().HasId("half"));
}

TEST_F(CanvasCommandsTest, NodesMayGoWhileTheyAreDragged) {
  Open(kChain, kWires);
  Press(TitleOf("b"));
  MoveTo(TitleOf("b") + QPointF(60, 60));
  ASSERT_FALSE(session_->RemoveNodes({"b"}).IsError());
  MoveTo(QPointF(400, 300));
  Release(QPointF(400, 300));
  EXPECT_EQ(scene().FindNode("b"), nullptr);
  Press(PlugOf("a", "image", false));
  MoveTo(QPointF(300, 300));
  ASSERT_FALSE(session_->RemoveNodes({"a"}).IsError());
  view().viewport()->repaint();
  MoveTo(TitleOf("c"));
  Release(PlugOf("c", "image", true));
  EXPECT_TRUE(document().GetConnections().empty());
}

TEST_F(CanvasCommandsTest, FollowsWhatOthersDo) {
  Open(kChain, kWires);
  ASSERT_FALSE(session_->RenameNode("b", "limit").IsError());
  ASSERT_FALSE(session_->RemoveNodes({"a"}).IsError());
  EXPECT_EQ(scene().GetAllWires().size(), 1U);
  EXPECT_NE(scene().FindWire({"limit.image", "c.image", 0}), nullptr);
  ASSERT_FALSE(session_->GoTo(0).IsError());
  EXPECT_EQ(scene().GetAllWires().size(), 2U);
  EXPECT_NE(scene().FindWire({"a.image", "b.image", 0}), nullptr);
  EXPECT_EQ(scene().FindNode("a")->pos(), QPointF(0, 0));
}

TEST_F(CanvasCommandsTest, EveryActionHasANameAndShortcutsAreUnique) {
  Open(kChain);
  QStringList names;
  QStringList keys;
  for (const QAction* action : canvas_->GetActions()) {
    EXPECT_FALSE(action->text().isEmpty());
    EXPECT_EQ(action->shortcutContext(), Qt::WidgetWithChildrenShortcut);
    names << action->objectName();
    for (const QKeySequence& key : action->shortcuts()) keys << key.toString();
  }
  EXPECT_EQ(names.removeDuplicates(), 0);
  EXPECT_EQ(keys.removeDuplicates(), 0) << keys.join(' ').toStdString();
  EXPECT_TRUE(names.contains(QStringLiteral("canvas.add")));
}

}  // namespace
