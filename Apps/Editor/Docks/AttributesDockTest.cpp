// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Docks/AttributesDock.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QColorDialog>
#include <QDoubleSpinBox>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QSlider>
#include <QStandardPaths>
#include <QToolButton>
#include <memory>

#include "Apps/Editor/Docks/NodeHeader.h"
#include "Host/Widgets/QNodeAttributesWidget.h"
#include "Tests/Support/EditTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace {

using Testing::EditSessionTest;
using Testing::Save;
using WidgetTest::Find;

class AttributesDockTest : public EditSessionTest {
 protected:
  void SetUp() override {
    EditSessionTest::SetUp();
    // Presets go to a folder of this test alone.
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString((folder_ / "config").string()));
    dock_ = std::make_unique<AttributesDock>(*session_, Testing::GetCatalog());
    dock_->resize(420, 800);
    dock_->show();
    dock_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(dock_.get(), 60000));
  }
  void TearDown() override {
    dock_.reset();
    EditSessionTest::TearDown();
  }

  void Select(const QStringList& ids) {
    dock_->SetSelection(ids);
    QCoreApplication::processEvents();
  }
  [[nodiscard]] double Low() const {
    return session_->GetDocument().FindNode("d")->GetAttribute("low")->GetValue().GetNumber();
  }
  [[nodiscard]] std::string LastCommand() const {
    return session_->GetHistory().empty() ? "" : session_->GetHistory().back();
  }
  /// Fills the menu of a button as a click on it does, and answers the action with a text.
  [[nodiscard]] QAction* FindAction(const char* button, const QString& text) const {
    QMenu* menu = Find<QToolButton>(*dock_, button)->menu();
    emit menu->aboutToShow();
    for (QAction* action : menu->actions()) {
      if (action->text().startsWith(text)) return action;
      if (action->menu() == nullptr) continue;
      for (QAction* inner : action->menu()->actions()) {
        if (action->text() + u'/' + inner->text() == text) return inner;
      }
    }
    return nullptr;
  }

  std::unique_ptr<AttributesDock> dock_;
};

TEST_F(AttributesDockTest, AsksForASelectionWithoutOne) {
  EXPECT_TRUE(Find<QLabel>(*dock_, "attributes.empty")->isVisible());
  EXPECT_EQ(Find<QNodeAttributesWidget>(*dock_, "attributes"), nullptr);
  Select({"d"});
  EXPECT_FALSE(Find<QLabel>(*dock_, "attributes.empty")->isVisible());
  EXPECT_EQ(Find<QLabel>(*dock_, "attributes.type")->text(), "Value Clamp");
}

TEST_F(AttributesDockTest, TypingIsOneStepOfTheHistory) {
  Select({"d"});
  const std::size_t steps = session_->GetHistory().size();
  auto* field = Find<QDoubleSpinBox>(*dock_, "low");
  ASSERT_NE(field, nullptr);
  WidgetTest::Type(field, "12.5");
  QTest::keyClick(field, Qt::Key_Return);
  QCoreApplication::processEvents();
  EXPECT_EQ(Low(), 12.5);
  EXPECT_EQ(session_->GetHistory().size(), steps + 1);
  EXPECT_FALSE(session_->Undo().IsError());
  EXPECT_EQ(Low(), 0.0);
  EXPECT_EQ(Save(session_->GetDocument()), before_);
  EXPECT_EQ(field->value(), 0.0);
}

TEST_F(AttributesDockTest, DragOfASliderIsOneStep) {
  Select({"b"});
  // A connection feeds the constant of "b"; that of "c" is free.
  Select({"c"});
  auto* slider = Find<QSlider>(*dock_, "constant.slider");
  ASSERT_NE(slider, nullptr);
  const QPoint middle = slider->rect().center();
  for (int drag = 1; drag <= 2; ++drag) {
    const int from = drag == 1 ? 0 : 20;
    QTest::mousePress(slider, Qt::LeftButton, {}, middle + QPoint(from, 0));
    for (int step = 1; step <= 5; ++step) QTest::mouseMove(slider, middle + QPoint(from + 4 * step, 0));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, middle + QPoint(from + 20, 0));
    QCoreApplication::processEvents();
    EXPECT_EQ(session_->GetHistory().size(), static_cast<std::size_t>(drag));
  }
  EXPECT_NE(Constant("c"), 0.0);
}

TEST_F(AttributesDockTest, ChoosingAColorIsOneStep) {
  Select({"a"});
  QTest::mouseClick(Find<QAbstractButton>(*dock_, "color"), Qt::LeftButton);
  QColorDialog* dialog = nullptr;
  ASSERT_TRUE(QTest::qWaitFor([&] { return (dialog = dock_->findChild<QColorDialog*>()) != nullptr; }, 60000));
  for (const char* color : {"#ff0000", "#80ff00", "#0000ff"}) {
    dialog->setCurrentColor(QColor(color));
    QCoreApplication::processEvents();
  }
  dialog->accept();
  QCoreApplication::processEvents();
  EXPECT_EQ(session_->GetHistory(), std::vector<std::string>{"Set a.color"});
  const ScEng::Rgbo color = session_->GetDocument().FindNode("a")->GetAttribute("color")->GetValue().GetColor();
  EXPECT_EQ(color.red, 0.0);
  EXPECT_EQ(color.blue, 1.0);
  EXPECT_FALSE(session_->Undo().IsError());
  EXPECT_EQ(Save(session_->GetDocument()), before_);
}

TEST_F(AttributesDockTest, UndoKeysInAFieldAreThoseOfTheDocument) {
  Select({"d"});
  EXPECT_FALSE(session_->SetNote("a", "before").IsError());
  auto* field = Find<QDoubleSpinBox>(*dock_, "low");
  WidgetTest::Type(field, "3");
  EXPECT_EQ(Low(), 3.0);
  QTest::keyClick(field, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(Low(), 0.0);
  QTest::keyClick(field, Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(session_->GetDocument().GetNote("a"), "");
  QTest::keyClick(field, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  QTest::keyClick(field, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(Low(), 3.0);
  EXPECT_EQ(session_->GetDocument().GetNote("a"), "before");
}

TEST_F(AttributesDockTest, FollowsANodeThatIsRemovedAndBroughtBack) {
  Select({"d"});
  EXPECT_FALSE(session_->RemoveNodes({"d"}).IsError());
  QCoreApplication::processEvents();
  EXPECT_TRUE(Find<QLabel>(*dock_, "attributes.empty")->isVisible());
  EXPECT_FALSE(session_->Undo().IsError());
  QCoreApplication::processEvents();
  auto* field = Find<QDoubleSpinBox>(*dock_, "low");
  ASSERT_NE(field, nullptr);
  WidgetTest::Type(field, "7");
  EXPECT_EQ(Low(), 7.0);
  EXPECT_EQ(LastCommand(), "Set d.low");
}

TEST_F(AttributesDockTest, RenamesNotesAndSwitchesTheNode) {
  Select({"d"});
  auto* name = Find<QLineEdit>(*dock_, "attributes.name");
  WidgetTest::Type(name, "limits");
  QTest::keyClick(name, Qt::Key_Return);
  EXPECT_EQ(LastCommand(), "Rename d to limits");
  QCoreApplication::processEvents();
  EXPECT_EQ(name->text(), "limits");
  EXPECT_NE(Find<QDoubleSpinBox>(*dock_, "low"), nullptr);

  auto* note = Find<QPlainTextEdit>(*dock_, "attributes.note");
  WidgetTest::Type(note, "keeps the sea flat");
  QTest::keyClick(note, Qt::Key_Return, Qt::ControlModifier);
  EXPECT_EQ(session_->GetDocument().GetNote("limits"), "keeps the sea flat");

  QTest::mouseClick(Find<QCheckBox>(*dock_, "attributes.enabled"), Qt::LeftButton, {}, QPoint(8, 8));
  EXPECT_FALSE(session_->GetDocument().IsEnabled("limits"));
  EXPECT_FALSE(session_->Undo().IsError());
  QCoreApplication::processEvents();
  EXPECT_TRUE(Find<QCheckBox>(*dock_, "attributes.enabled")->isChecked());
}

TEST_F(AttributesDockTest, SaysWhyANameIsRefused) {
  Select({"d"});
  auto* name = Find<QLineEdit>(*dock_, "attributes.name");
  WidgetTest::Type(name, "a");
  QTest::keyClick(name, Qt::Key_Return);
  auto* error = Find<QLabel>(*dock_, "attributes.error");
  EXPECT_TRUE(error->isVisible());
  EXPECT_TRUE(error->text().contains("\"a\"")) << error->text().toStdString();
  EXPECT_TRUE(session_->GetDocument().HasId("d"));
  // Another selection takes neither the text nor the line over.
  Select({"c"});
  EXPECT_FALSE(error->isVisible());
  EXPECT_EQ(name->text(), "c");
}

TEST_F(AttributesDockTest, KeepsWhatIsTypedWhenAnotherNodeIsSelected) {
  Select({"d"});
  auto* note = Find<QPlainTextEdit>(*dock_, "attributes.note");
  WidgetTest::Type(note, "unfinished");
  Select({"c"});
  EXPECT_EQ(session_->GetDocument().GetNote("d"), "unfinished");
  EXPECT_EQ(session_->GetDocument().GetNote("c"), "");
  EXPECT_EQ(note->toPlainText(), "");
}

TEST_F(AttributesDockTest, ChangesNodesOfOneTypeTogether) {
  std::string other;
  EXPECT_FALSE(session_->AddNode({Testing::kAdd, "e", {}}, &other).IsError());
  EXPECT_FALSE(session_->SetAttribute("e.constant", "5").IsError());
  Select({"c", "e"});
  EXPECT_EQ(Find<QLabel>(*dock_, "attributes.type")->text(), "Value Add (2 nodes)");
  auto* field = Find<QDoubleSpinBox>(*dock_, "constant");
  EXPECT_EQ(field->value(), 0.0);
  const auto* label = Find<QLabel>(*dock_, "constant.label");
  EXPECT_TRUE(label->text().endsWith(QStringLiteral(" ≠")));
  EXPECT_EQ(label->accessibleDescription(), "The nodes have different values");
  const std::size_t steps = session_->GetHistory().size();
  WidgetTest::Type(field, "0.25");
  QTest::keyClick(field, Qt::Key_Return);
  QCoreApplication::processEvents();
  EXPECT_EQ(Constant("c"), 0.25);
  EXPECT_EQ(Constant("e"), 0.25);
  EXPECT_FALSE(label->text().contains(u'≠'));
  EXPECT_EQ(label->accessibleDescription(), "");
  EXPECT_EQ(session_->GetHistory().size(), steps + 1);
  EXPECT_EQ(LastCommand(), "Set constant of 2 nodes");
  EXPECT_FALSE(session_->Undo().IsError());
  QCoreApplication::processEvents();
  EXPECT_EQ(Constant("c"), 0.0);
  EXPECT_EQ(Constant("e"), 5.0);
  EXPECT_TRUE(label->text().endsWith(QStringLiteral(" ≠")));
  EXPECT_EQ(field->value(), 0.0);
}

TEST_F(AttributesDockTest, LeavesAttributesAloneThatAConnectionFeedsAtOneOfTheNodes) {
  Select({"c", "e"});
  const QString tip = Find<QDoubleSpinBox>(*dock_, "constant")->toolTip();
  Select({"c", "b"});
  EXPECT_FALSE(Find<QDoubleSpinBox>(*dock_, "constant")->isEnabled());
  EXPECT_EQ(Find<QDoubleSpinBox>(*dock_, "constant")->toolTip(), "A connection feeds it at b.");
  EXPECT_FALSE(session_->Disconnect({"n.number", "b.constant", 0}).IsError());
  QCoreApplication::processEvents();
  EXPECT_TRUE(Find<QDoubleSpinBox>(*dock_, "constant")->isEnabled());
  EXPECT_EQ(Find<QDoubleSpinBox>(*dock_, "constant")->toolTip(), tip);
}

TEST_F(AttributesDockTest, ShowsNoPanelForSeveralTypesAndUnknownOnes) {
  Select({"a", "d"});
  EXPECT_EQ(Find<QNodeAttributesWidget>(*dock_, "attributes"), nullptr);
  EXPECT_EQ(Find<QLabel>(*dock_, "attributes.type")->text(), "2 nodes");
  QTest::mouseClick(Find<QCheckBox>(*dock_, "attributes.enabled"), Qt::LeftButton, {}, QPoint(8, 8));
  EXPECT_FALSE(session_->GetDocument().IsEnabled("a"));
  EXPECT_FALSE(session_->GetDocument().IsEnabled("d"));
  EXPECT_EQ(LastCommand(), "Disable 2 nodes");
  Select({"x"});
  EXPECT_EQ(Find<QLabel>(*dock_, "attributes.type")->text(), "Unknown type");
  EXPECT_EQ(Find<QPlainTextEdit>(*dock_, "attributes.note")->toPlainText(), "kept");
  EXPECT_FALSE(Find<QToolButton>(*dock_, "attributes.reset")->isEnabled());
}

TEST_F(AttributesDockTest, ResetsEverythingInOneCommand) {
  EXPECT_FALSE(session_->SetAttributes({{"d.low", PlugValue(1.0)}, {"d.high", PlugValue(2.0)}}).IsError());
  Select({"d"});
  QTest::mouseClick(Find<QToolButton>(*dock_, "attributes.reset"), Qt::LeftButton);
  EXPECT_EQ(Low(), 0.0);
  EXPECT_EQ(LastCommand(), "Reset attributes of d");
  EXPECT_FALSE(session_->Undo().IsError());
  EXPECT_EQ(Low(), 1.0);
}

TEST_F(AttributesDockTest, KeepsPresets) {
  EXPECT_FALSE(
      session_->SetAttributes({{"d.low", PlugValue(0.125)}, {"d.clamp", PlugValue(std::string("low"))}}).IsError());
  Select({"d"});
  EXPECT_FALSE(FindAction("attributes.presets", "No presets yet")->isEnabled());
  FindAction("attributes.presets", "Save as")->trigger();
  auto* dialog = Find<QInputDialog>(*dock_, "attributes.preset_name");
  ASSERT_NE(dialog, nullptr);
  dialog->setTextValue("Sea / land");
  dialog->accept();
  EXPECT_FALSE(session_->GoTo(0).IsError());
  QCoreApplication::processEvents();
  EXPECT_EQ(Low(), 0.0);
  FindAction("attributes.presets", "Sea / land")->trigger();
  EXPECT_EQ(Low(), 0.125);
  EXPECT_EQ(session_->GetDocument().FindNode("d")->GetAttribute("clamp")->GetValue().GetText(), "low");
  EXPECT_EQ(LastCommand(), "Apply preset Sea / land");
  // Nodes of another type have presets of their own.
  Select({"c"});
  EXPECT_EQ(FindAction("attributes.presets", "Sea / land"), nullptr);
  Select({"d"});
  FindAction("attributes.presets", "Delete/Sea / land")->trigger();
  EXPECT_EQ(FindAction("attributes.presets", "Sea / land"), nullptr);
}

TEST_F(AttributesDockTest, CopiesWhatTheNodeDoesAsACommand) {
  EXPECT_FALSE(
      session_->SetAttributes({{"d.low", PlugValue(0.1)}, {"d.clamp", PlugValue(std::string("low"))}}).IsError());
  Select({"d"});
  FindAction("attributes.copy", "Command")->trigger();
  EXPECT_EQ(QApplication::clipboard()->text(),
            "value apply ImageValueClampNode -i FILE --set clamp=low --set low=0.1 -o FILE");
  FindAction("attributes.copy", "Options")->trigger();
  EXPECT_EQ(QApplication::clipboard()->text(), "--set d.clamp=low \\\n--set d.low=0.1");
}

TEST_F(AttributesDockTest, AsksForThePageOfTheType) {
  QSignalSpy help(dock_.get(), &AttributesDock::HelpRequested);
  Select({"d"});
  QTest::mouseClick(Find<QToolButton>(*dock_, "attributes.help"), Qt::LeftButton);
  ASSERT_EQ(help.size(), 1);
  EXPECT_EQ(help[0][0].toString(), "ImageValueClampNode");
}

}  // namespace
