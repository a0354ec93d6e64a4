// SPDX-License-Identifier: Apache-2.0
// The search for nodes, by mouse and keyboard alone.
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>

#include "Apps/Editor/Canvas/CanvasTesting.h"
#include "Apps/Editor/Canvas/NodeSearchPopup.h"

namespace {

using ScEng::Point;

constexpr char kPair[] =
    "{'id': 'a', 'type': 'ImageCheckerNode', 'position': [0, 0]},"
    "{'id': 'b', 'type': 'ImageValueClampNode', 'position': [320, 40]}";

class CanvasSearch : public CanvasTest {
 protected:
  [[nodiscard]] NodeSearchPopup* FindPopup() const {
    auto* popup = canvas_->findChild<NodeSearchPopup*>();
    return popup != nullptr && popup->isVisible() ? popup : nullptr;
  }
  [[nodiscard]] QLineEdit* GetField() const { return FindPopup()->findChild<QLineEdit*>(); }
  [[nodiscard]] QListWidget* GetList() const { return FindPopup()->findChild<QListWidget*>(); }
  [[nodiscard]] QString GetSentence() const {
    return FindPopup()->findChild<QLabel*>(QStringLiteral("canvas.search.sentence"))->text();
  }
  [[nodiscard]] QStringList GetFound() const {
    QStringList names;
    for (int i = 0; i < GetList()->count(); ++i) names << GetList()->item(i)->text();
    return names;
  }
  void OpenByTab() const {
    Key(Qt::Key_Tab);
    ASSERT_NE(FindPopup(), nullptr);
  }
  void Type(const char* words) const { QTest::keyClicks(GetField(), QString::fromLatin1(words)); }
  void Press(Qt::Key key) const { QTest::keyClick(GetField(), key); }
  /// What a person does who adds a node by its name.
  void AddByName(const char* name) const {
    OpenByTab();
    Type(name);
    Press(Qt::Key_Return);
    ASSERT_EQ(FindPopup(), nullptr);
  }
};

TEST_F(CanvasSearch, ADoubleClickAddsWhereItWas) {
  Open(kPair);
  const QPointF place(200, 360);
  const QColor ground = ColorAt(place + QPointF(60, 70));
  QTest::mouseDClick(view().viewport(), Qt::LeftButton, {}, At(place));
  ASSERT_NE(FindPopup(), nullptr);
  Type("clamp");
  Press(Qt::Key_Return);
  EXPECT_EQ(document().GetPosition("value_clamp"), (Point{200, 360}));
  EXPECT_EQ(canvas_->GetSelection(), QStringList{"value_clamp"});
  EXPECT_NE(ColorAt(place + QPointF(60, 70)), ground);
  // The keyboard is back on the canvas.
  Key(Qt::Key_Delete);
  EXPECT_FALSE(document().HasId("value_clamp"));
}

TEST_F(CanvasSearch, FindsNamesSentencesAndFurtherWords) {
  Open(kPair);
  // A name, two words of the sentence, a word that is in neither.
  for (const char* words : {"value cl", "limits bend", "truncate"}) {
    OpenByTab();
    Type(words);
    ASSERT_FALSE(GetFound().isEmpty()) << words;
    EXPECT_EQ(GetFound().front(), QStringLiteral("Value Clamp")) << words;
    EXPECT_TRUE(GetSentence().startsWith(QStringLiteral("Limits values to a range"))) << words;
    Press(Qt::Key_Escape);
    EXPECT_EQ(FindPopup(), nullptr);
  }
  EXPECT_EQ(session_->GetPlace(), 0U);
}

TEST_F(CanvasSearch, KeysWalkThroughTheList) {
  Open(kPair);
  Key(Qt::Key_A, Qt::ShiftModifier);
  ASSERT_NE(FindPopup(), nullptr);
  const auto row = [&] { return GetList()->currentRow(); };
  EXPECT_EQ(row(), 0);
  const QString first = GetSentence();
  Press(Qt::Key_Down);
  Press(Qt::Key_Tab);
  EXPECT_EQ(row(), 2);
  EXPECT_NE(GetSentence(), first);
  QTest::keyClick(GetField(), Qt::Key_Backtab, Qt::ShiftModifier);
  Press(Qt::Key_Up);
  Press(Qt::Key_Up);
  EXPECT_EQ(row(), 0);
  Press(Qt::Key_PageDown);
  EXPECT_EQ(row(), 8);
  Press(Qt::Key_PageUp);
  Press(Qt::Key_Down);
  const QString chosen = GetList()->item(1)->text();
  Press(Qt::Key_Return);
  ASSERT_EQ(canvas_->GetSelection().size(), 1);
  EXPECT_EQ(scene().FindNode(canvas_->GetSelection().front().toStdString())->GetFace().type_name, chosen);
  ExpectOneStep();
}

TEST_F(CanvasSearch, TheNewestAndTheMostUsedComeFirst) {
  Open(kPair);
  AddByName("value clamp");
  AddByName("relief");
  OpenByTab();
  EXPECT_EQ(GetFound().mid(0, 2), (QStringList{"Relief", "Value Clamp"}));
  Press(Qt::Key_Escape);
  for (int i = 0; i < 3; ++i) AddByName("value clamp");
  AddByName("relief");
  OpenByTab();
  EXPECT_EQ(GetFound().mid(0, 2), (QStringList{"Value Clamp", "Relief"}));
  // With words, it is the words that count.
  Type("checkerboard");
  EXPECT_EQ(GetFound().front(), QStringLiteral("Image Checker"));
}

TEST_F(CanvasSearch, TabLeavesAFieldOnTheCanvas) {
  Open(kPair);
  Click(TitleOf("b"));
  Key(Qt::Key_F2);
  auto* field = view().findChild<QLineEdit*>(QStringLiteral("canvas.field"));
  ASSERT_NE(field, nullptr);
  QTest::keyClicks(field, QStringLiteral("limit"));
  QTest::keyClick(field, Qt::Key_Tab);
  EXPECT_EQ(FindPopup(), nullptr);
  EXPECT_TRUE(document().HasId("limit"));
}

TEST_F(CanvasSearch, SaysThatNothingIsFound) {
  Open(kPair);
  OpenByTab();
  Type("zebra");
  EXPECT_TRUE(GetFound().isEmpty());
  EXPECT_EQ(GetSentence(), QStringLiteral("No node type is found by these words."));
  Press(Qt::Key_Return);
  ASSERT_NE(FindPopup(), nullptr);
  for (int i = 0; i < 5; ++i) Press(Qt::Key_Backspace);
  EXPECT_FALSE(GetFound().isEmpty());
  EXPECT_EQ(session_->GetPlace(), 0U);
}

TEST_F(CanvasSearch, AClickTakesANode) {
  Open(kPair);
  OpenByTab();
  Type("clamp");
  QTest::mouseClick(GetList()->viewport(), Qt::LeftButton, {}, GetList()->visualItemRect(GetList()->item(0)).center());
  EXPECT_EQ(FindPopup(), nullptr);
  EXPECT_TRUE(document().HasId("value_clamp"));
}

TEST_F(CanvasSearch, AWireFromAnInputOffersWhatMakesIt) {
  Open(kPair);
  DragFromTo(PlugOf("b", "image", true), {200, 380});
  ASSERT_NE(FindPopup(), nullptr);
  EXPECT_TRUE(GetFound().contains(QStringLiteral("Image Checker")));
  EXPECT_FALSE(GetFound().contains(QStringLiteral("Number")));
  Type("image checker");
  Press(Qt::Key_Return);
  EXPECT_TRUE(HasConnection("image_checker.image", "b.image"));
  ExpectOneStep();
}

TEST_F(CanvasSearch, AWireOfATextOffersOnlyWhatTakesTexts) {
  Open("{'id': 't', 'type': 'TextNode', 'position': [0, 0]}");
  DragFromTo(PlugOf("t", "text", false), {500, 300});
  ASSERT_NE(FindPopup(), nullptr);
  EXPECT_TRUE(GetFound().contains(QStringLiteral("Image Reader")));
  EXPECT_FALSE(GetFound().contains(QStringLiteral("Reroute")));
  Type("reader");
  Press(Qt::Key_Return);
  EXPECT_TRUE(HasConnection("t.text", "image_reader.path"));
  ExpectOneStep();
}

}  // namespace
