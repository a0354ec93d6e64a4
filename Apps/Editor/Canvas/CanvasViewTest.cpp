// SPDX-License-Identifier: Apache-2.0
// What the canvas shows, as it is seen, and moving about in it.
#include <QHelpEvent>
#include <QPlainTextEdit>
#include <QToolTip>
#include <set>

#include "Apps/Editor/Canvas/CanvasTesting.h"
#include "Apps/Editor/Canvas/Minimap.h"
#include "Host/Viewing/ViewImage.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Widgets/MenuTesting.h"
#include "Tests/Widgets/MouseTesting.h"

namespace {

constexpr char kChain[] =
    "{'id': 'a', 'type': 'ImageCheckerNode', 'position': [0, 0]},"
    "{'id': 'b', 'type': 'ImageValueClampNode', 'position': [260, 40]},"
    "{'id': 'c', 'type': 'ImageValueClampNode', 'position': [520, 10]}";
constexpr char kFar[] =
    "{'id': 'a', 'type': 'ImageCheckerNode', 'position': [0, 0]},"
    "{'id': 'z', 'type': 'ImageCheckerNode', 'position': [4000, 2000]}";

class CanvasViewTest : public CanvasTest {
 protected:
  /// The darkest lightness in a part of the canvas, which is that of its text on a light ground.
  [[nodiscard]] int Darkest(const QRectF& part) const {
    const QImage picture = Grab();
    const QRect area = view().ToViewport(part).intersected(picture.rect());
    int darkest = 255;
    for (int y = area.top(); y <= area.bottom(); ++y) {
      for (int x = area.left(); x <= area.right(); ++x) {
        darkest = std::min(darkest, picture.pixelColor(x, y).lightness());
      }
    }
    return darkest;
  }
  /// How many colors there are in a part of the canvas.
  [[nodiscard]] std::size_t CountColors(const QRectF& part) const {
    const QImage picture = Grab();
    const QRect area = view().ToViewport(part).intersected(picture.rect());
    std::set<QRgb> colors;
    for (int y = area.top(); y <= area.bottom(); ++y) {
      for (int x = area.left(); x <= area.right(); ++x) colors.insert(picture.pixel(x, y));
    }
    return colors.size();
  }
  [[nodiscard]] QRectF HeaderOf(const char* id) const {
    const NodeItem* item = scene().FindNode(id);
    return item->GetShape().header.translated(item->pos()).adjusted(44, 4, -40, -4);
  }
  /// The strip below a node, where its time, messages and note are.
  [[nodiscard]] QRectF BelowOf(const char* id) const {
    const QRectF body = scene().FindNode(id)->GetBody();
    return {body.left(), body.bottom() + 10, body.width(), 50};
  }
  void TellOf(const char* id, const std::function<void(ScEng::NodeFacts&)>& change) const {
    ScEng::NodeFacts facts;
    facts.id = id;
    facts.seconds = -1.0;
    change(facts);
    canvas_->SetFacts({facts});
  }
};

// ---- Moving about ----

TEST_F(CanvasViewTest, KeysZoomToTheSelectionAndToAll) {
  Open(kFar);
  view().SetCenter({2000, 1000});
  Key(Qt::Key_Home);
  const auto sees = [&](const char* id) {
    return view().viewport()->rect().contains(view().ToViewport(scene().FindNode(id)->GetBody()));
  };
  EXPECT_TRUE(sees("a") && sees("z"));
  const double all = view().GetZoom();
  Click(TitleOf("z"));
  Key(Qt::Key_F);
  EXPECT_TRUE(sees("z"));
  EXPECT_FALSE(sees("a"));
  EXPECT_GT(view().GetZoom(), 2.0 * all);
  EXPECT_LT((view().GetCenter() - scene().FindNode("z")->GetBody().center()).manhattanLength(), 20.0);
  Key(Qt::Key_A);
  EXPECT_TRUE(sees("a") && sees("z"));
  Key(Qt::Key_0, Qt::ControlModifier);
  EXPECT_DOUBLE_EQ(view().GetZoom(), 1.0);
  Key(Qt::Key_Plus);
  EXPECT_DOUBLE_EQ(view().GetZoom(), 1.25);
  Key(Qt::Key_Minus);
  EXPECT_DOUBLE_EQ(view().GetZoom(), 1.0);
  EXPECT_EQ(session_->GetPlace(), 0U);
}

TEST_F(CanvasViewTest, SpaceAndTheLeftButtonPan) {
  Open(kChain);
  const QPointF before = view().GetCenter();
  QTest::keyPress(&view(), Qt::Key_Space);
  QTest::mousePress(view().viewport(), Qt::LeftButton, {}, QPoint(300, 300));
  QTest::mouseMove(view().viewport(), QPoint(360, 280));
  QTest::mouseRelease(view().viewport(), Qt::LeftButton, {}, QPoint(360, 280));
  QTest::keyRelease(&view(), Qt::Key_Space);
  EXPECT_NEAR(view().GetCenter().x(), before.x() - view().ToScene(60), 2.0);
  EXPECT_NEAR(view().GetCenter().y(), before.y() + view().ToScene(20), 2.0);
  EXPECT_TRUE(canvas_->GetSelection().isEmpty());
}

TEST_F(CanvasViewTest, TheMapGoesWhereItIsClickedAndDragged) {
  Open(kFar);
  auto* map = canvas_->findChild<Minimap*>();
  ASSERT_TRUE(map->isVisible());
  EXPECT_TRUE(view().rect().contains(map->geometry()));
  const QRectF extent = scene().GetExtent();
  const QPointF middle = QRectF(map->rect()).center();
  WidgetTest::Click(*map, middle);
  // One pixel of the map is more than twenty units here.
  EXPECT_NEAR(view().GetCenter().x(), extent.center().x(), 50.0);
  EXPECT_NEAR(view().GetCenter().y(), extent.center().y(), 50.0);
  const QImage seen_before = map->grab().toImage();
  WidgetTest::Drag(*map, middle, middle + QPointF(20, 10));
  const QPointF now = view().GetCenter();
  EXPECT_GT(now.x(), extent.center().x() + 200.0);
  EXPECT_GT(now.y(), extent.center().y() + 100.0);
  // As far to the right as down, for the scale is the same both ways.
  EXPECT_NEAR((now.x() - extent.center().x()) / (now.y() - extent.center().y()), 2.0, 0.3);
  // The part that is seen has moved in it.
  EXPECT_NE(map->grab().toImage(), seen_before);
}

TEST_F(CanvasViewTest, ALassoTakesWhatItGoesAround) {
  Open(kChain);
  Press({240, 20}, Qt::AltModifier);
  for (const QPointF& place : {QPointF(480, 10), QPointF(485, 260), QPointF(240, 260), QPointF(238, 30)}) MoveTo(place);
  Release({238, 30}, Qt::AltModifier);
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"b"});
}

// ---- What is seen ----

TEST_F(CanvasViewTest, WiresShowTheirKind) {
  Open(
      "{'id': 'n', 'type': 'NumberNode', 'position': [0, 240]},"
      "{'id': 'a', 'type': 'ImageCheckerNode', 'position': [0, 0]},"
      "{'id': 'b', 'type': 'ImageValueClampNode', 'position': [400, 0]},"
      "{'id': 'r', 'type': 'ImageReliefNode', 'position': [400, 220]}",
      "{'from': 'a.image', 'to': 'b.image'}, {'from': 'n.number', 'to': 'r.radius'}");
  const QImage picture = Grab();
  // Of each column between the nodes, what is farthest from the ground.
  const auto read = [&](const ScEng::DocumentConnection& connection) {
    const WireItem* wire = scene().FindWire(connection);
    QList<QColor> colors;
    for (double x = 240; x < 360; x += 1) {
      QColor strongest = Qt::white;
      for (double y = 0; y < 400; y += 1) {
        if (wire->GetDistance({x, y}) > 1.0) continue;
        const QColor color = picture.pixelColor(At({x, y}));
        if (color.saturation() > strongest.saturation()) strongest = color;
      }
      colors << strongest;
    }
    return colors;
  };
  const auto count_gaps = [](const QList<QColor>& colors) {
    return std::count_if(colors.begin(), colors.end(), [](const QColor& color) { return color.saturation() < 60; });
  };
  const QList<QColor> image = read({"a.image", "b.image", 0});
  const QList<QColor> number = read({"n.number", "r.radius", 0});
  EXPECT_EQ(count_gaps(image), 0);
  EXPECT_GT(count_gaps(number), 15);
  const auto hue = [](const QList<QColor>& colors) {
    return std::max_element(colors.begin(), colors.end(),
                            [](const QColor& a, const QColor& b) { return a.saturation() < b.saturation(); })
        ->hue();
  };
  // Ochre and green.
  EXPECT_LT(hue(image), 60);
  EXPECT_GT(hue(number), 100);
}

TEST_F(CanvasViewTest, WhatDoesNotFeedTheShownNodeIsPaler) {
  Open(kChain, "{'from': 'a.image', 'to': 'b.image'}");
  const int text = Darkest(HeaderOf("c"));
  const NodeItem* shown = scene().FindNode("b");
  Click(shown->pos() + shown->GetShape().eye.center());
  ASSERT_TRUE(QTest::qWaitFor([&] { return scene().FindNode("c")->IsDimmed(); }, 60000));
  EXPECT_GT(Darkest(HeaderOf("c")), text + 40);
  EXPECT_LT(Darkest(HeaderOf("a")), text + 10);
  EXPECT_LT(Darkest(HeaderOf("b")), text + 10);
}

TEST_F(CanvasViewTest, AMutedNodeIsSeenToBe) {
  Open(kChain);
  const QRectF body = scene().FindNode("b")->GetBody();
  const QRectF edge(body.left(), body.top() + 90, 0, 60);
  ASSERT_EQ(CountColors(edge), 1U);
  const int text = Darkest(HeaderOf("b"));
  Click(TitleOf("b"));
  Key(Qt::Key_M);
  Click({300, 400});
  EXPECT_GT(CountColors(edge), 1U);
  EXPECT_GT(Darkest(HeaderOf("b")), text + 20);
}

TEST_F(CanvasViewTest, OneSwitchTakesAllThumbnailsAway) {
  Open(kChain);
  const auto white = ScEng::ViewImage::Make(*Testing::MakeImage(4, 4, ColorMode::kValue, std::vector<float>(16, 0.0F)));
  for (const char* id : {"a", "b"}) {
    TellOf(id, [&](ScEng::NodeFacts& facts) { facts.thumbnail = white; });
  }
  const auto middle = [&](const char* id) {
    const NodeItem* item = scene().FindNode(id);
    return item->pos() + item->GetShape().thumbnail.center();
  };
  const QPointF a = middle("a");
  const QPointF b = middle("b");
  EXPECT_EQ(ColorAt(a), QColor(0, 0, 0));
  EXPECT_EQ(ColorAt(b), QColor(0, 0, 0));
  WidgetTest::AskForMenu(*view().viewport(), At({200, 420}), QContextMenuEvent::Mouse);
  ASSERT_NE(WidgetTest::GetOpenMenu(), nullptr);
  WidgetTest::Choose(*WidgetTest::GetOpenMenu(), {"View", "Thumbnails"});
  EXPECT_NE(ColorAt(a), QColor(0, 0, 0));
  EXPECT_NE(ColorAt(b), QColor(0, 0, 0));
  EXPECT_LT(scene().FindNode("a")->GetBody().bottom(), a.y());
}

TEST_F(CanvasViewTest, TheTimeStandsBelowTheNode) {
  Open(kChain);
  ASSERT_GT(Darkest(BelowOf("b")), 150);
  TellOf("b", [](ScEng::NodeFacts& facts) { facts.seconds = 2.5; });
  EXPECT_LT(Darkest(BelowOf("b")), 150);
  EXPECT_GT(Darkest(BelowOf("c")), 150);
}

TEST_F(CanvasViewTest, AnErrorStandsOnTheNodeWithItsReason) {
  Open(kChain);
  const QRectF badge(scene().FindNode("b")->GetBody().topLeft() - QPointF(4, 4), QSizeF(14, 14));
  const auto is_red = [&] {
    const QColor color = ColorAt(badge.topLeft() + QPointF(2, 7));
    return color.red() > color.green() + 60 && color.red() > color.blue() + 60;
  };
  EXPECT_FALSE(is_red());
  TellOf("b", [](ScEng::NodeFacts& facts) {
    facts.is_in_error = true;
    facts.messages = {"the input has no image"};
  });
  EXPECT_TRUE(is_red());
  // The reason is written below it, and told where the pointer rests.
  EXPECT_LT(Darkest(BelowOf("b")), 150);
  const QPoint at = At(TitleOf("b"));
  QHelpEvent rest(QEvent::ToolTip, at, view().viewport()->mapToGlobal(at));
  QApplication::sendEvent(view().viewport(), &rest);
  EXPECT_TRUE(QToolTip::text().contains(QStringLiteral("the input has no image"))) << QToolTip::text().toStdString();
  QToolTip::hideText();
}

TEST_F(CanvasViewTest, ANoteStandsBelowTheNode) {
  Open(kChain);
  Click(TitleOf("b"));
  Key(Qt::Key_N);
  auto* field = view().findChild<QPlainTextEdit*>(QStringLiteral("canvas.field"));
  ASSERT_NE(field, nullptr);
  QTest::keyClicks(field, QStringLiteral("keeps the sea flat"));
  QTest::keyClick(field, Qt::Key_Return, Qt::ControlModifier);
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(document().GetNote("b"), "keeps the sea flat");
  EXPECT_LT(Darkest(BelowOf("b")), 150);
  EXPECT_GT(Darkest(BelowOf("c")), 150);
}

}  // namespace
