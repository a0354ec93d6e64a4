// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/QNodeAttributesWidget.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/Engine.h"
#include "Host/Util/Log.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/TestNodes.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace {

using AdditionalInfo = QNodeAttributesWidget::AdditionalInfo;
using WidgetTest::Find;
using WidgetTest::ShowAndActivate;
using WidgetTest::Type;

/// A node with an attribute of every kind. It makes an image of one pixel: "amount", or 1000 when "tiled" is on.
class PanelNode : public Testing::TestNode {
 public:
  static constexpr NodeType kType{90, 1, 1};
  static constexpr const char* kName = "PanelNode";

  PanelNode() {
    Add("amount", 0.0, -10000.0, 10000.0, 0.01, 3);
    Add("count", 5.0, 0.0, 10.0, 1.0, 0);
    Add("tiled", false);
    Add("mode", 0, std::string("first,second,third"));
    Add("title", std::string("untitled"));
    Add("file", std::string(), Attribute::StringUse::kReadPath);
    Add("tint", ScEng::Rgbo{1.0, 0.5, 0.25, 1.0});
    Add("place", ScEng::Point{3.0, 4.0});
    Add("area", ScEng::Frame{0.0, 0.0, 64.0, 32.0});
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return "Panel Node"; }
  void Evaluate(unsigned, const std::vector<PlugValue>& inputs) override {
    const float value = inputs[2].GetFlag() ? 1000.0F : static_cast<float>(inputs[0].GetNumber());
    image_.Reset(new Image(1, 1, ColorMode::kValue, &value));
  }
  [[nodiscard]] Image* GetOutputImage(unsigned) const override { return image_.Get(); }

 private:
  ScEng::RefPtr<Image> image_;
};

/// Delivers a number.
class SourceNode : public Testing::TestNode {
 public:
  static constexpr NodeType kType{90, 1, 2};
  static constexpr const char* kName = "SourceNode";

  SourceNode() {
    outplugs_ = {PlugRecord::Output(PlugType::kNumber, "number")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return "Source Node"; }
  [[nodiscard]] PlugValue GetOutputValue(unsigned) const override { return 7.0; }
};

class BareNode : public Testing::TestNode {
 public:
  static constexpr NodeType kType{90, 1, 3};
  static constexpr const char* kName = "BareNode";
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return "Bare Node"; }
};

/// Throws at every question for a text.
class ThrowingNode : public Testing::TestNode {
 public:
  ThrowingNode() {
    Add("count", 5.0, 0.0, 10.0, 1.0, 0);
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return {90, 1, 4}; }
  [[nodiscard]] std::string GetName() const override { throw std::runtime_error("the shelf is bare"); }
  [[nodiscard]] std::string GetInplugAlias(unsigned) const override { throw 5; }
};

class Panel : public testing::Test {
 protected:
  Panel() : engine_(std::make_unique<Engine>(Testing::MakeCatalog<PanelNode, SourceNode, BareNode>())) {
    node_ = engine_->CreateNode(PanelNode::kType);
    descriptor_ = engine_->GetCatalog().Find(PanelNode::kType);
    Make(nullptr);
  }
  ~Panel() override {
    panel_.reset();
    QNodeAttributesWidget::GetDefaultUndoStack()->clear();
  }

  void Make(const AdditionalInfo* info) {
    panel_ = std::make_unique<QNodeAttributesWidget>(nullptr, node_, descriptor_, info, false);
    panel_->SetUndoStack(&stack_);
    ShowAndActivate(*panel_);
  }

  template <class Widget>
  Widget* Get(const std::string& name) const {
    auto* widget = Find<Widget>(*panel_, name);
    EXPECT_NE(widget, nullptr) << name;
    return widget;
  }
  [[nodiscard]] QDoubleSpinBox* Box(const std::string& name) const { return Get<QDoubleSpinBox>(name); }
  [[nodiscard]] QSlider* Slider(const std::string& name) const { return Get<QSlider>(name + ".slider"); }
  [[nodiscard]] QAbstractButton* Reset(const std::string& name) const { return Get<QAbstractButton>(name + ".reset"); }

  [[nodiscard]] Attribute& Of(const std::string& name) const { return *node_->GetAttribute(name); }
  [[nodiscard]] double Number(const std::string& name) const { return Of(name).GetValue().GetNumber(); }

  /// The one sample of the node's image, after an evaluation.
  float Evaluate() {
    engine_->Evaluate({{node_, 0}});
    return node_->GetOutputImage(0)->GetConstArray()[0];
  }

  /// Where the middle of a slider's handle is at a position from 0 to 1, in the slider's own margins.
  static QPoint PlaceOn(const QSlider& slider, double position) {
    constexpr double kInset = 8.0;
    const double x = kInset + (slider.width() - 2.0 * kInset) * position;
    return {static_cast<int>(std::lround(x)), slider.height() / 2};
  }

  QUndoStack stack_;
  std::unique_ptr<Engine> engine_;
  Node* node_ = nullptr;
  NodeInterface* descriptor_ = nullptr;
  std::unique_ptr<QNodeAttributesWidget> panel_;
};

TEST_F(Panel, HasARowForEveryAttributeInIdOrder) {
  int last = -1;
  for (const char* name : {"amount", "count", "tiled", "mode", "title", "file", "tint", "place", "area"}) {
    const auto* label = Get<QLabel>(std::string(name) + ".label");
    ASSERT_NE(label, nullptr);
    EXPECT_GT(label->mapTo(panel_.get(), QPoint()).y(), last) << name;
    last = label->mapTo(panel_.get(), QPoint()).y();
    EXPECT_NE(Get<QWidget>(name), nullptr);
  }
  EXPECT_EQ(Get<QLabel>("title")->text(), "Test PanelNode");
}

TEST_F(Panel, ShowsWhatTheAttributesHold) {
  EXPECT_EQ(Box("amount")->text(), "0");
  EXPECT_EQ(Box("count")->text(), "5");
  EXPECT_FALSE(Get<QCheckBox>("tiled")->isChecked());
  EXPECT_EQ(Get<QComboBox>("mode")->currentText(), "first");
  EXPECT_EQ(panel_->findChildren<QLineEdit*>("title").value(0)->text(), "untitled");
  EXPECT_EQ(Box("tint.green")->text(), "0.5");
  EXPECT_EQ(Box("tint.opacity")->text(), "1");
  EXPECT_EQ(Box("place.y")->text(), "4");
  EXPECT_EQ(Box("area.width")->text(), "64");
}

// ---- Numbers ----

TEST_F(Panel, TypingANumberChangesTheImage) {
  EXPECT_EQ(Evaluate(), 0.0F);
  Type(Box("amount"), "0.25");
  EXPECT_EQ(Number("amount"), 0.25);
  EXPECT_EQ(Evaluate(), 0.25F);
}

TEST_F(Panel, TypingInOneFieldIsOneCommand) {
  Type(Box("amount"), "12.5");
  EXPECT_EQ(stack_.count(), 1);
  stack_.undo();
  EXPECT_EQ(Number("amount"), 0.0);
  stack_.redo();
  EXPECT_EQ(Number("amount"), 12.5);
}

TEST_F(Panel, EnterEndsACommand) {
  Type(Box("amount"), "1");
  QTest::keyClick(Box("amount"), Qt::Key_Return);
  Type(Box("amount"), "2");
  EXPECT_EQ(stack_.count(), 2);
  stack_.undo();
  EXPECT_EQ(Number("amount"), 1.0);
}

TEST_F(Panel, TypingIsRoundedToTheDecimalsAndTakesACommaForThePoint) {
  Type(Box("amount"), "1,2346");
  EXPECT_EQ(Number("amount"), 1.234) << "as far as it was a number that the field can hold";
  QTest::keyClick(Box("amount"), Qt::Key_Return);
  EXPECT_EQ(Number("amount"), 1.235);
  EXPECT_EQ(Box("amount")->text(), "1.235");
  EXPECT_EQ(stack_.count(), 1);
  EXPECT_EQ(Box("amount")->decimals(), 3);
}

TEST_F(Panel, WhatAFieldCannotHoldBecomesTheNearestThatItCan) {
  EXPECT_EQ(Box("count")->decimals(), 0);
  const auto enter = [&](const char* name, const char* text) {
    Type(Box(name), text);
    QTest::keyClick(Box(name), Qt::Key_Return);
    return Number(name);
  };
  EXPECT_EQ(enter("count", "2.6"), 3.0);
  EXPECT_EQ(Box("count")->text(), "3");
  EXPECT_EQ(enter("count", "0.5e1"), 5.0);
  EXPECT_EQ(enter("count", "300"), 10.0) << "the highest";
  EXPECT_EQ(enter("count", "-3"), Of("count").GetLowest());
  EXPECT_EQ(enter("amount", "999999"), 10000.0);
  EXPECT_EQ(enter("amount", "-12345.6789"), -10000.0);
  EXPECT_EQ(enter("amount", "1e-3"), 0.001);
}

TEST_F(Panel, WhatIsNoNumberCannotBeTyped) {
  Type(Box("amount"), "1x.y2.3");
  EXPECT_EQ(Box("amount")->text(), "1.23");
  Type(Box("amount"), "-");
  QTest::keyClick(Box("amount"), Qt::Key_Return);
  EXPECT_EQ(Number("amount"), 1.23) << "the number before";
}

TEST_F(Panel, BoundsAndStepAreTheAttributes) {
  EXPECT_EQ(Box("amount")->minimum(), -10000.0);
  EXPECT_EQ(Box("amount")->maximum(), 10000.0);
  EXPECT_EQ(Box("amount")->singleStep(), 0.01);
  Box("count")->setFocus();
  for (int i = 0; i < 20; ++i) QTest::keyClick(Box("count"), Qt::Key_Up);
  EXPECT_EQ(Number("count"), 10.0);
}

TEST_F(Panel, SliderAndFieldAgree) {
  const int zero = Slider("amount")->value();
  Type(Box("amount"), "0.5");
  EXPECT_GT(Slider("amount")->value(), zero);
  // The soft range is -1 to 1.
  EXPECT_EQ(Slider("amount")->value(), 7500);
  Slider("amount")->setValue(2500);
  EXPECT_EQ(Number("amount"), -0.5);
  EXPECT_EQ(Box("amount")->value(), -0.5);
}

TEST_F(Panel, TypingBeyondTheSoftRangeWidensTheSlider) {
  EXPECT_EQ(Slider("amount")->value(), 5000);
  Type(Box("amount"), "4000");
  EXPECT_EQ(Number("amount"), 4000.0);
  // -5000 to 5000 now.
  EXPECT_EQ(Slider("amount")->value(), 9000);
  Slider("amount")->setValue(10000);
  EXPECT_EQ(Number("amount"), 5000.0);
  Reset("amount")->click();
  Slider("amount")->setValue(10000);
  EXPECT_EQ(Number("amount"), 1.0);
}

TEST_F(Panel, ADragOfTheSliderIsOneCommand) {
  QSlider* slider = Slider("amount");
  QTest::mousePress(slider, Qt::LeftButton, {}, PlaceOn(*slider, 0.5));
  for (const double position : {0.6, 0.7, 0.8, 0.75}) QTest::mouseMove(slider, PlaceOn(*slider, position));
  QTest::mouseRelease(slider, Qt::LeftButton, {}, PlaceOn(*slider, 0.75));
  EXPECT_NEAR(Number("amount"), 0.5, 0.02);
  EXPECT_EQ(Box("amount")->value(), Number("amount"));
  EXPECT_EQ(stack_.count(), 1);
  EXPECT_NEAR(Evaluate(), 0.5F, 0.02F);
  stack_.undo();
  EXPECT_EQ(Number("amount"), 0.0);
  EXPECT_EQ(slider->value(), 5000);
}

TEST_F(Panel, ADragBackLeavesNothingToUndo) {
  QSlider* slider = Slider("count");
  QTest::mousePress(slider, Qt::LeftButton, {}, PlaceOn(*slider, 0.5));
  QTest::mouseMove(slider, PlaceOn(*slider, 0.9));
  EXPECT_EQ(Number("count"), 9.0);
  QTest::mouseMove(slider, PlaceOn(*slider, 0.5));
  QTest::mouseRelease(slider, Qt::LeftButton, {}, PlaceOn(*slider, 0.5));
  EXPECT_EQ(Number("count"), 5.0);
  EXPECT_EQ(stack_.count(), 0);
}

TEST_F(Panel, TwoDragsAreTwoCommands) {
  QSlider* slider = Slider("count");
  for (const double position : {0.9, 0.2}) {
    QTest::mousePress(slider, Qt::LeftButton, {}, PlaceOn(*slider, 0.5));
    QTest::mouseMove(slider, PlaceOn(*slider, position));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, PlaceOn(*slider, position));
  }
  EXPECT_EQ(stack_.count(), 2);
  stack_.undo();
  EXPECT_EQ(Number("count"), 9.0);
}

TEST_F(Panel, KeysMoveTheSliderByTheStep) {
  Slider("amount")->setFocus();
  QTest::keyClick(Slider("amount"), Qt::Key_Right);
  EXPECT_DOUBLE_EQ(Number("amount"), 0.01);
  QTest::keyClick(Slider("amount"), Qt::Key_PageDown);
  EXPECT_DOUBLE_EQ(Number("amount"), -0.09);
  QTest::keyClick(Slider("amount"), Qt::Key_End);
  EXPECT_EQ(Number("amount"), 1.0);
  EXPECT_EQ(stack_.count(), 1);
}

TEST_F(Panel, AnExponentBendsTheSlider) {
  std::vector<AdditionalInfo> info(9);
  info[0].slider_exponent = 2.0;
  Make(info.data());
  Slider("amount")->setValue(7500);
  EXPECT_EQ(Number("amount"), 2.5);
  Type(Box("amount"), "0.1");
  EXPECT_EQ(Slider("amount")->value(), 5500);
}

TEST_F(Panel, ANumberFromAProgramThatIsOffTheGridStaysUntilItIsEdited) {
  Of("amount").SetNumber(0.12345, false);
  EXPECT_EQ(Box("amount")->text(), "0.123");
  QTest::keyClick(Box("amount"), Qt::Key_Return);
  EXPECT_EQ(Number("amount"), 0.12345);
  EXPECT_EQ(stack_.count(), 0);
}

// ---- Resetting ----

TEST_F(Panel, OffersAResetOnlyWhereTheValueDiffers) {
  EXPECT_FALSE(Reset("amount")->isVisible());
  EXPECT_FALSE(Get<QPushButton>("reset_all")->isVisible());
  Type(Box("amount"), "3");
  EXPECT_TRUE(Reset("amount")->isVisible());
  EXPECT_FALSE(Reset("count")->isVisible());
  QTest::mouseClick(Reset("amount"), Qt::LeftButton);
  EXPECT_EQ(Number("amount"), 0.0);
  EXPECT_EQ(Evaluate(), 0.0F);
  EXPECT_FALSE(Reset("amount")->isVisible());
  EXPECT_EQ(stack_.count(), 2);
  stack_.undo();
  EXPECT_EQ(Number("amount"), 3.0);
}

TEST_F(Panel, ADoubleClickOnSliderOrNameResets) {
  Of("amount").SetNumber(0.5, false);
  QTest::mouseDClick(Slider("amount"), Qt::LeftButton, {}, PlaceOn(*Slider("amount"), 0.1));
  EXPECT_EQ(Number("amount"), 0.0);
  Of("mode").SetChoice("third", false);
  QTest::mouseDClick(Get<QLabel>("mode.label"), Qt::LeftButton);
  EXPECT_EQ(Of("mode").GetValue().GetText(), "first");
  EXPECT_EQ(stack_.count(), 2);
}

TEST_F(Panel, ResetsEverythingInOneCommand) {
  Of("amount").SetNumber(0.5, false);
  Of("tiled").SetFlag(true, false);
  Of("tint").SetRgbo(0.0, 0.0, 0.0, 0.5, false);
  QTest::mouseClick(Get<QPushButton>("reset_all"), Qt::LeftButton);
  for (std::size_t i = 0; i < node_->GetNumAttributes(); ++i) {
    EXPECT_EQ(node_->GetAttribute(i)->GetValue(), node_->GetAttribute(i)->GetDefault());
  }
  EXPECT_EQ(stack_.count(), 1);
  stack_.undo();
  EXPECT_EQ(Number("amount"), 0.5);
  EXPECT_TRUE(Get<QCheckBox>("tiled")->isChecked());
  EXPECT_EQ(Of("tint").GetValue().GetColor(), (ScEng::Rgbo{0.0, 0.0, 0.0, 0.5}));
}

// ---- The other kinds ----

TEST_F(Panel, ChoosesAWord) {
  auto* box = Get<QComboBox>("mode");
  box->setFocus();
  QTest::keyClick(box, Qt::Key_Down);
  EXPECT_EQ(Of("mode").GetValue().GetText(), "second");
  box->setCurrentIndex(2);
  EXPECT_EQ(Of("mode").GetValue().GetText(), "third");
  stack_.undo();
  EXPECT_EQ(box->currentText(), "first");
}

TEST_F(Panel, SwitchesAFlagByKeyAndMouse) {
  auto* box = Get<QCheckBox>("tiled");
  box->setFocus();
  QTest::keyClick(box, Qt::Key_Space);
  EXPECT_TRUE(Of("tiled").GetValue().GetFlag());
  EXPECT_EQ(Evaluate(), 1000.0F);
  QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
  EXPECT_FALSE(Of("tiled").GetValue().GetFlag());
  // On and off again are two decisions.
  EXPECT_EQ(stack_.count(), 2);
}

TEST_F(Panel, TypesAText) {
  QLineEdit* field = panel_->findChildren<QLineEdit*>("title").value(0);
  ASSERT_NE(field, nullptr);
  Type(field, "hills");
  EXPECT_EQ(Of("title").GetValue().GetText(), "hills");
  EXPECT_EQ(stack_.count(), 1);
  stack_.undo();
  EXPECT_EQ(field->text(), "untitled");
}

TEST_F(Panel, APathCountsWhenItIsComplete) {
  auto* field = Get<QLineEdit>("file");
  Type(field, "hills.exr");
  EXPECT_EQ(Of("file").GetValue().GetText(), "");
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_EQ(Of("file").GetValue().GetText(), "hills.exr");
  EXPECT_EQ(Find<QAbstractButton>(*panel_, "title.browse"), nullptr);
}

TEST_F(Panel, ChoosesAFileInADialog) {
  const Testing::TemporaryFolder folder;
  Testing::WriteText(folder / "hills.exr", "x");
  Of("file").SetFolder(folder.Path());
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  QTest::mouseClick(Get<QAbstractButton>("file.browse"), Qt::LeftButton);
  const QPointer<QFileDialog> dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(dialog->acceptMode(), QFileDialog::AcceptOpen);
  EXPECT_EQ(dialog->directory().absolutePath().toStdString(), folder.Path().string());
  dialog->findChild<QLineEdit*>()->setText("hills.exr");
  QMetaObject::invokeMethod(dialog, "accept");
  EXPECT_EQ(Of("file").GetValue().GetText(), (folder / "hills.exr").string());
  EXPECT_EQ(stack_.count(), 1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return dialog.isNull(); }, 60000));
}

TEST_F(Panel, EditsTheFieldsOfAColorAndKeepsTheOthers) {
  Of("tint").SetRgbo(1.0 / 3.0, 0.5, 0.25, 1.0, false);
  Type(Box("tint.opacity"), "0.75");
  EXPECT_EQ(Of("tint").GetValue().GetColor(), (ScEng::Rgbo{1.0 / 3.0, 0.5, 0.25, 0.75}));
  EXPECT_EQ(Box("tint.opacity")->maximum(), 1.0);
}

TEST_F(Panel, ChoosesAColorInADialog) {
  const auto open = [&] {
    QTest::mouseClick(Get<QAbstractButton>("tint"), Qt::LeftButton);
    return QPointer<QColorDialog>(qobject_cast<QColorDialog*>(QApplication::activeModalWidget()));
  };
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  QPointer<QColorDialog> dialog = open();
  ASSERT_NE(dialog, nullptr);
  EXPECT_TRUE(dialog->testOption(QColorDialog::ShowAlphaChannel));
  dialog->setCurrentColor(QColor(0, 255, 0, 255));
  EXPECT_EQ(Of("tint").GetValue().GetColor(), (ScEng::Rgbo{0.0, 1.0, 0.0, 1.0}));
  dialog->setCurrentColor(QColor(0, 0, 255, 255));
  dialog->accept();
  EXPECT_EQ(Of("tint").GetValue().GetColor(), (ScEng::Rgbo{0.0, 0.0, 1.0, 1.0}));
  EXPECT_EQ(stack_.count(), 1);
  stack_.undo();
  EXPECT_EQ(Of("tint").GetValue().GetColor(), (ScEng::Rgbo{1.0, 0.5, 0.25, 1.0}));
  stack_.clear();

  dialog = open();
  ASSERT_NE(dialog, nullptr);
  dialog->setCurrentColor(QColor(255, 0, 0, 255));
  dialog->reject();
  EXPECT_EQ(Of("tint").GetValue().GetColor(), (ScEng::Rgbo{1.0, 0.5, 0.25, 1.0}));
  EXPECT_EQ(stack_.count(), 0);
}

TEST_F(Panel, EditsPointsAndFrames) {
  Type(Box("place.x"), "17");
  EXPECT_EQ(Of("place").GetValue().GetPoint(), (ScEng::Point{17.0, 4.0}));
  Type(Box("area.height"), "128");
  EXPECT_EQ(Of("area").GetValue().GetFrame(), (ScEng::Frame{0.0, 0.0, 64.0, 128.0}));
  Type(Box("place.y"), "0.125");
  EXPECT_EQ(Of("place").GetValue().GetPoint(), (ScEng::Point{17.0, 0.125}));
  EXPECT_EQ(Box("place.x")->text(), "17");
  Of("place").SetPoint(0.5, 2.0, false);
  EXPECT_EQ(Box("place.x")->text(), "0.5");
  EXPECT_EQ(Box("place.y")->text(), "2");
}

// ---- Undo ----

TEST_F(Panel, UndoWorksAndEvaluatesWhenThePanelIsGone) {
  Type(Box("amount"), "0.5");
  EXPECT_EQ(Evaluate(), 0.5F);
  panel_.reset();
  stack_.undo();
  EXPECT_EQ(Evaluate(), 0.0F);
  stack_.redo();
  EXPECT_EQ(Evaluate(), 0.5F);
}

TEST_F(Panel, UndoWorksWhenTheEngineIsGone) {
  Type(Box("amount"), "0.5");
  const ScEng::RefPtr<Attribute> attribute(&Of("amount"));
  panel_.reset();
  engine_.reset();
  stack_.undo();
  EXPECT_EQ(attribute->GetValue().GetNumber(), 0.0);
}

TEST_F(Panel, UsesTheDefaultStackUnlessItGetsOne) {
  panel_->SetUndoStack(nullptr);
  EXPECT_EQ(panel_->GetUndoStack(), QNodeAttributesWidget::GetDefaultUndoStack());
  Get<QCheckBox>("tiled")->click();
  EXPECT_EQ(stack_.count(), 0);
  EXPECT_EQ(QNodeAttributesWidget::GetDefaultUndoStack()->count(), 1);
  EXPECT_EQ(QNodeAttributesWidget::GetDefaultUndoStack()->text(0), "Panel Node: tiled");
}

TEST_F(Panel, UndoKeysInAFieldAreThePanels) {
  Type(Box("amount"), "0.5");
  QTest::keyClick(Box("amount"), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(Number("amount"), 0.0);
  EXPECT_EQ(Box("amount")->text(), "0");
  QTest::keyClick(Box("amount"), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(Number("amount"), 0.5);
}

// ---- Following ----

TEST_F(Panel, FollowsWhatOthersChange) {
  Of("amount").SetNumber(0.25, false);
  Of("mode").SetChoice("second", false);
  Of("tiled").SetFlag(true, false);
  EXPECT_EQ(Box("amount")->text(), "0.25");
  EXPECT_EQ(Get<QComboBox>("mode")->currentText(), "second");
  EXPECT_TRUE(Get<QCheckBox>("tiled")->isChecked());
  EXPECT_EQ(stack_.count(), 0);
}

TEST_F(Panel, FollowsAnotherPanelOfTheSameNode) {
  QNodeAttributesWidget other(nullptr, node_, descriptor_, nullptr, true);
  Find<QSlider>(other, "count.slider")->setValue(10000);
  EXPECT_EQ(Box("count")->text(), "10");
  EXPECT_EQ(Find<QLabel>(other, "title"), nullptr);
}

TEST_F(Panel, ShowsWhatDrivesAnAttribute) {
  Node* source = engine_->CreateNode(SourceNode::kType);
  source->SetLabel("height");
  EXPECT_FALSE(Get<QLabel>("amount.source")->isVisible());
  ASSERT_TRUE(engine_->ConnectNodes(source, "number", 0, node_, "amount", 0));
  EXPECT_TRUE(Get<QLabel>("amount.source")->isVisible());
  EXPECT_EQ(Get<QLabel>("amount.source")->text(), "driven by height.number");
  EXPECT_FALSE(Box("amount")->isEnabled());
  EXPECT_FALSE(Slider("amount")->isEnabled());
  EXPECT_FALSE(Box("amount")->isVisible());
  EXPECT_TRUE(Box("count")->isEnabled());
  QTest::mouseDClick(Get<QLabel>("amount.label"), Qt::LeftButton);
  EXPECT_EQ(stack_.count(), 0);

  ASSERT_TRUE(engine_->DisconnectNodes(source, "number", 0, node_, "amount", 0));
  EXPECT_FALSE(Get<QLabel>("amount.source")->isVisible());
  EXPECT_TRUE(Box("amount")->isEnabled());
  EXPECT_TRUE(Box("amount")->isVisible());
}

TEST_F(Panel, ShowsAConnectionThatWasThereBefore) {
  Node* source = engine_->CreateNode(SourceNode::kType);
  ASSERT_TRUE(engine_->ConnectNodes(source, "number", 0, node_, "count", 0));
  Make(nullptr);
  EXPECT_EQ(Get<QLabel>("count.source")->text(), "driven by Source Node.number");
  EXPECT_FALSE(Box("count")->isEnabled());
  // The connection goes with the node that it comes from.
  engine_->DeleteNode(source);
  EXPECT_TRUE(Box("count")->isEnabled());
}

TEST_F(Panel, IsEmptyWhenItsNodeIsGone) {
  engine_->DeleteNode(node_);
  EXPECT_EQ(panel_->GetNode(), nullptr);
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(Find<QDoubleSpinBox>(*panel_, "amount"), nullptr);
  panel_->ResetToDefaults();
  EXPECT_EQ(stack_.count(), 0);
}

TEST_F(Panel, OfNoNodeIsEmpty) {
  const QNodeAttributesWidget empty(nullptr, nullptr, nullptr, nullptr, false);
  EXPECT_EQ(empty.GetNode(), nullptr);
  EXPECT_TRUE(empty.findChildren<QAbstractButton*>().isEmpty());
}

TEST_F(Panel, OfANodeWithoutAttributesSaysSo) {
  const QNodeAttributesWidget bare(nullptr, engine_->CreateNode(BareNode::kType), nullptr, nullptr, false);
  EXPECT_EQ(bare.GetNode()->GetName(), "Bare Node");
  bool is_said = false;
  for (const QLabel* label : bare.findChildren<QLabel*>()) is_said |= label->text().contains("no attributes");
  EXPECT_TRUE(is_said);
}

TEST_F(Panel, TakesNoReferenceToItsNode) {
  const std::uint32_t count = node_->GetRefCount();
  { const QNodeAttributesWidget other(nullptr, node_, descriptor_, nullptr, false); }
  EXPECT_EQ(node_->GetRefCount(), count);
  EXPECT_EQ(Evaluate(), 0.0F);
}

// ---- Additional info ----

TEST_F(Panel, ReadsTheEntriesWhileItIsBuiltOnly) {
  auto info = std::make_unique<std::vector<AdditionalInfo>>(9);
  (*info)[3].labels = "v == min,v != min,a <= v and v <= b";
  (*info)[0].suffix = " px";
  (*info)[0].tooltip = "How much of it.";
  Make(info->data());
  for (AdditionalInfo& entry : *info) entry.labels = entry.suffix = entry.tooltip = "overwritten";
  info.reset();
  const auto* box = Get<QComboBox>("mode");
  ASSERT_EQ(box->count(), 3);
  EXPECT_EQ(box->itemText(0), "v == min");
  EXPECT_EQ(box->itemText(2), "a <= v and v <= b");
  EXPECT_EQ(box->itemData(2).toString(), "third");
  EXPECT_EQ(Box("amount")->text(), "0 px");
  EXPECT_TRUE(Box("amount")->toolTip().contains("How much of it."));
  Of("mode").SetChoice("third", false);
  EXPECT_EQ(box->currentText(), "a <= v and v <= b");
  Type(Box("amount"), "4");
  EXPECT_EQ(Number("amount"), 4.0);
}

TEST_F(Panel, WordsWithoutALabelAreShownAsTheyAre) {
  std::vector<AdditionalInfo> info(9);
  info[3].labels = "One,";
  Make(info.data());
  const auto* box = Get<QComboBox>("mode");
  EXPECT_EQ(box->itemText(0), "One");
  EXPECT_EQ(box->itemText(1), "second");
  EXPECT_EQ(box->itemText(2), "third");
}

TEST_F(Panel, HidesDisablesNarrowsAndDoesNotResetAsAsked) {
  std::vector<AdditionalInfo> info(9);
  info[1].visible = false;
  info[2].enabled = false;
  info[3].relative_width = 0.5;
  info[0].resettable = false;
  Make(info.data());
  EXPECT_EQ(Find<QDoubleSpinBox>(*panel_, "count"), nullptr);
  EXPECT_FALSE(Get<QCheckBox>("tiled")->isEnabled());
  EXPECT_NEAR(Get<QComboBox>("mode")->width(), Get<QWidget>("place")->parentWidget()->width() / 2, 4);
  Of("amount").SetNumber(0.5, false);
  EXPECT_FALSE(Reset("amount")->isVisible());
  QTest::mouseDClick(Slider("amount"), Qt::LeftButton, {}, PlaceOn(*Slider("amount"), 0.1));
  QTest::mouseDClick(Get<QLabel>("amount.label"), Qt::LeftButton);
  panel_->ResetToDefaults();
  EXPECT_EQ(Number("amount"), 0.5);
}

TEST(AdditionalInfo, HasItsFieldsInTheirPlaces) {
  const AdditionalInfo info;
  const auto* bytes = reinterpret_cast<const unsigned char*>(&info);
  for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(bytes[i], i < 2 ? 1 : 0) << i;
  EXPECT_EQ(*reinterpret_cast<const double*>(bytes + 8), 0.0);
  EXPECT_EQ(*reinterpret_cast<const double*>(bytes + 16), 1.0);
  for (const std::size_t place : {24U, 56U, 88U}) {
    EXPECT_EQ(*reinterpret_cast<const std::string*>(bytes + place), "");
  }
  EXPECT_EQ(bytes[120], 1);
  EXPECT_EQ(sizeof(AdditionalInfo), 128U);
}

// ---- Keyboard, wheel, look ----

TEST_F(Panel, TabReachesEverythingFromTopToBottom) {
  Of("amount").SetNumber(1.0, false);
  std::vector<std::string> reached;
  Slider("amount")->setFocus();
  QWidget* first = QApplication::focusWidget();
  ASSERT_EQ(first, Slider("amount"));
  do {
    reached.push_back(QApplication::focusWidget()->objectName().toStdString());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
  } while (QApplication::focusWidget() != first && reached.size() < 60);
  const std::vector<std::string> expected{"amount.slider", "amount",   "amount.reset", "count.slider", "count",
                                          "tiled",         "mode",     "title",        "file",         "file.browse",
                                          "tint",          "tint.red", "tint.green",   "tint.blue",    "tint.opacity",
                                          "place.x",       "place.y",  "area.x",       "area.y",       "area.width",
                                          "area.height",   "reset_all"};
  EXPECT_EQ(reached, expected);
}

TEST_F(Panel, EveryInputHasANameForScreenReadersAndEveryLabelABuddy) {
  for (std::size_t i = 0; i < node_->GetNumAttributes(); ++i) {
    const std::string name = node_->GetAttribute(i)->GetName();
    const auto* label = Get<QLabel>(name + ".label");
    ASSERT_NE(label->buddy(), nullptr) << name;
    EXPECT_FALSE(label->buddy()->accessibleName().isEmpty()) << name;
    EXPECT_TRUE(label->text().contains('&')) << name;
  }
  EXPECT_EQ(Box("amount")->accessibleName(), "Amount");
  EXPECT_FALSE(Slider("amount")->accessibleName().isEmpty());
  EXPECT_EQ(Get<QLabel>("amount.label")->buddy(), Box("amount"));
}

TEST_F(Panel, MnemonicsMoveTheFocus) {
  Slider("amount")->setFocus();
  QTest::keyClick(panel_.get(), Qt::Key_M, Qt::AltModifier);
  // "Amount" has the A and "Mode" the M.
  EXPECT_EQ(QApplication::focusWidget(), Get<QComboBox>("mode"));
}

TEST_F(Panel, TheWheelChangesNothingThatHasNoFocus) {
  const auto roll = [](QWidget* widget) {
    const QPointF place = QRectF(widget->rect()).center();
    QWheelEvent event(place, widget->mapToGlobal(place), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &event);
  };
  Get<QCheckBox>("tiled")->setFocus();
  for (QWidget* widget : {static_cast<QWidget*>(Box("amount")), static_cast<QWidget*>(Slider("amount")),
                          static_cast<QWidget*>(Get<QComboBox>("mode"))}) {
    roll(widget);
  }
  EXPECT_EQ(Number("amount"), 0.0);
  EXPECT_EQ(Of("mode").GetValue().GetText(), "first");
  EXPECT_EQ(stack_.count(), 0);
  Box("count")->setFocus();
  roll(Box("count"));
  EXPECT_EQ(Number("count"), 6.0);
}

TEST_F(Panel, TakesItsColorsFromThePalette) {
  const auto mean = [&](const QColor& window, const QColor& text) {
    QPalette palette(text, window, window.lighter(), window.darker(), window, text, text, window, window);
    panel_->setPalette(palette);
    const QImage picture = panel_->grab().toImage();
    double sum = 0.0;
    for (int y = 0; y < picture.height(); ++y) {
      for (int x = 0; x < picture.width(); ++x) sum += picture.pixelColor(x, y).lightnessF();
    }
    return sum / (picture.width() * picture.height());
  };
  EXPECT_LT(mean(QColor(0x20, 0x20, 0x20), Qt::white), 0.25);
  EXPECT_GT(mean(QColor(0xF0, 0xF0, 0xF0), Qt::black), 0.85);
}

TEST_F(Panel, IsMadeByItsEntryPoint) {
  QWidget parent;
  const QWidget* panel = HostCreateAttributesWidget(&parent, node_, descriptor_, nullptr, false);
  ASSERT_NE(panel, nullptr);
  EXPECT_EQ(panel->parentWidget(), &parent);
  EXPECT_NE(qobject_cast<const QNodeAttributesWidget*>(panel), nullptr);
}

TEST_F(Panel, TextsThatANodeThrowsAtAreLeftOutAndLogged) {
  const ScEng::RefPtr<Node> node(new ThrowingNode);
  std::vector<std::string> messages;
  Log::SetSink([&](Log::Level, const std::string& message) { messages.push_back(message); });
  QWidget parent;
  const QWidget* panel = HostCreateAttributesWidget(&parent, node.Get(), nullptr, nullptr, false);
  Log::SetSink(nullptr);
  ASSERT_NE(panel, nullptr);
  EXPECT_EQ(Find<QLabel>(*panel, "title")->text(), QString());
  EXPECT_EQ(Find<QLabel>(*panel, "count.label")->text(), QStringLiteral("&Count"));
  EXPECT_EQ(messages, (std::vector<std::string>{"GetName threw an exception: the shelf is bare",
                                                "GetInplugAlias threw an exception: it is of unknown type"}));
}

}  // namespace
