// SPDX-License-Identifier: Apache-2.0
//
// The panels that the descriptors of the built node library answer, used by mouse and keyboard on real images.
#include <gtest/gtest.h>

#include <QComboBox>
#include <QVBoxLayout>
#include <memory>
#include <string>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/Engine.h"
#include "Host/Tools/NodeLibrary.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace {

using WidgetTest::Find;
using WidgetTest::Type;

class ValuePanels : public testing::Test {
 protected:
  ValuePanels() {
    ScEng::Status status;
    auto catalog = ScEng::CreateHostCatalog();
    auto library = ScEng::NodeLibrary::Load(VALUE_LIBRARY_FILE, status);
    EXPECT_FALSE(status.IsError()) << status.GetMessage();
    EXPECT_FALSE(catalog->AddLibrary(std::move(library)).IsError());
    engine_ = std::make_unique<Engine>(catalog);
  }
  ~ValuePanels() override {
    // Commands hold nodes, whose code goes with the library.
    parent_.reset();
    QNodeAttributesWidget::GetDefaultUndoStack()->clear();
  }

  /// A node of the library with a terrain at its first input.
  void Create(const std::string& type) {
    descriptor_ = engine_->GetCatalog().FindTypeName(type);
    ASSERT_NE(descriptor_, nullptr) << type;
    node_ = engine_->CreateNode(descriptor_->GetNodeType());
    terrain_ = engine_->CreateNode(ScEng::kImageTerrainType);
    ASSERT_TRUE(engine_->ConnectNodes(terrain_, "image", 0, node_, node_->GetInplugName(0), 0));
    parent_ = std::make_unique<QWidget>();
    panel_ = descriptor_->CreateAttributesWidget(node_, parent_.get(), 0);
    ASSERT_NE(panel_, nullptr) << type;
    (new QVBoxLayout(parent_.get()))->addWidget(panel_);
    WidgetTest::ShowAndActivate(*parent_);
  }

  [[nodiscard]] float FirstSample() {
    engine_->Evaluate({{node_, 0}});
    return node_->GetOutputImage(0)->GetConstArray()[0];
  }
  [[nodiscard]] float FirstTerrainSample() const { return terrain_->GetOutputImage(0)->GetConstArray()[0]; }

  std::unique_ptr<Engine> engine_;
  NodeInterface* descriptor_ = nullptr;
  Node* node_ = nullptr;
  Node* terrain_ = nullptr;
  std::unique_ptr<QWidget> parent_;
  QWidget* panel_ = nullptr;
};

TEST_F(ValuePanels, EveryTypeHasThePanelOfTheHostAndNoOther) {
  int types = 0;
  for (NodeInterface* descriptor : engine_->GetCatalog().GetDescriptors()) {
    if (descriptor->GetLibraryName() != "Value") continue;
    ++types;
    SCOPED_TRACE(descriptor->GetName());
    Create(descriptor->GetNodeFactory()->GetTypeName());
    EXPECT_NE(qobject_cast<QNodeAttributesWidget*>(panel_), nullptr);
    EXPECT_EQ(panel_->parentWidget(), parent_.get());
    EXPECT_EQ(Find<QLabel>(*panel_, "title")->text().toStdString(), descriptor->GetName());
    for (std::size_t i = 0; i < node_->GetNumAttributes(); ++i) {
      const std::string name = node_->GetAttribute(i)->GetName();
      ASSERT_NE(Find<QWidget>(*panel_, name), nullptr) << name;
      // The text of the attribute's row, and what every tooltip says.
      EXPECT_FALSE(Find<QWidget>(*panel_, name)->toolTip().contains("<qt><small>")) << name;
    }
    for (const std::uintptr_t selector : {std::uintptr_t{1}, std::uintptr_t{2}, ~std::uintptr_t{0}}) {
      EXPECT_EQ(descriptor->CreateAttributesWidget(node_, parent_.get(), selector), nullptr);
    }
  }
  EXPECT_GE(types, 20);
}

TEST_F(ValuePanels, ConditionShowsALabelForEachOfItsWords) {
  const std::vector<std::pair<const char*, const char*>> expected{{"v_eq_min", "v == min"},
                                                                  {"v_df_min", "v != min"},
                                                                  {"v_eq_max", "v == max"},
                                                                  {"v_df_max", "v != max"},
                                                                  {"v_lt_a", "v < a"},
                                                                  {"v_lte_a", "v <= a"},
                                                                  {"v_eq_a", "v == a"},
                                                                  {"v_gte_a", "v >= a"},
                                                                  {"v_gt_a", "v > a"},
                                                                  {"a_lt_v_lt_b", "a < v and v < b"},
                                                                  {"a_lte_v_lt_b", "a <= v and v < b"},
                                                                  {"a_lt_v_lte_b", "a < v and v <= b"},
                                                                  {"a_lte_v_lte_b", "a <= v and v <= b"}};
  Create("ImageValueConditionNode");
  const auto* box = Find<QComboBox>(*panel_, "condition");
  ASSERT_NE(box, nullptr);
  ASSERT_EQ(static_cast<std::size_t>(box->count()), expected.size());
  ASSERT_EQ(node_->GetAttribute("condition")->GetChoices().size(), expected.size());
  for (const auto& [word, label] : expected) {
    node_->GetAttribute("condition")->SetChoice(word, false);
    EXPECT_EQ(box->currentText(), label) << word;
  }
}

TEST_F(ValuePanels, ClampShowsItsWordsAsTheyAreStored) {
  Create("ImageValueClampNode");
  for (const char* name : {"clamp", "profile"}) {
    const auto* box = Find<QComboBox>(*panel_, name);
    const std::vector<std::string>& words = node_->GetAttribute(name)->GetChoices();
    ASSERT_EQ(static_cast<std::size_t>(box->count()), words.size());
    for (std::size_t i = 0; i < words.size(); ++i) {
      EXPECT_EQ(box->itemText(static_cast<int>(i)).toStdString(), words[i]);
    }
  }
}

TEST_F(ValuePanels, LimitsAndBoundsHaveABentSliderAndOthersAStraightOne) {
  const auto slide = [&](const char* type, const char* attribute) {
    Create(type);
    Find<QSlider>(*panel_, std::string(attribute) + ".slider")->setValue(7500);
    return node_->GetAttribute(attribute)->GetValue().GetNumber();
  };
  // Half the way from zero to 10, squared; and half the way from zero to 1.
  EXPECT_EQ(slide("ImageValueClampNode", "low"), 2.5);
  EXPECT_EQ(slide("ImageValueClampNode", "high"), 2.5);
  EXPECT_EQ(slide("ImageValueConditionNode", "a"), 2.5);
  EXPECT_EQ(slide("ImageValueConditionNode", "b"), 2.5);
  EXPECT_EQ(slide("ImageValueAddNode", "constant"), 0.5);
}

TEST_F(ValuePanels, TypingSlidingResettingAndUndoingChangeTheImage) {
  Create("ImageValueAddNode");
  const float before = FirstSample();
  EXPECT_EQ(before, FirstTerrainSample());
  auto* box = Find<QDoubleSpinBox>(*panel_, "constant");
  Type(box, "0.25");
  EXPECT_EQ(FirstSample(), before + 0.25F);
  auto* slider = Find<QSlider>(*panel_, "constant.slider");
  QTest::mousePress(slider, Qt::LeftButton, {}, slider->rect().center());
  QTest::mouseMove(slider, QPoint(slider->width() - 1, slider->height() / 2));
  QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(slider->width() - 1, slider->height() / 2));
  EXPECT_EQ(FirstSample(), before + 1.0F);
  QTest::mouseDClick(slider, Qt::LeftButton, {}, slider->rect().center());
  EXPECT_EQ(FirstSample(), before);

  QUndoStack* stack = QNodeAttributesWidget::GetDefaultUndoStack();
  EXPECT_EQ(stack->count(), 3);
  parent_.reset();
  stack->undo();
  EXPECT_EQ(FirstSample(), before + 1.0F);
  stack->undo();
  EXPECT_EQ(FirstSample(), before + 0.25F);
  stack->undo();
  EXPECT_EQ(FirstSample(), before);
}

TEST_F(ValuePanels, ChoosingATestMakesAnotherMask) {
  Create("ImageValueConditionNode");
  const float terrain = FirstSample() == 0.0F ? FirstTerrainSample() : 0.0F;
  EXPECT_GT(terrain, 0.0F);
  auto* box = Find<QComboBox>(*panel_, "condition");
  box->setFocus();
  box->setCurrentIndex(box->findText("v > a"));
  EXPECT_EQ(FirstSample(), 1.0F);
  Type(Find<QDoubleSpinBox>(*panel_, "a"), "1");
  EXPECT_EQ(FirstSample(), 0.0F);
  QTest::keyClick(Find<QDoubleSpinBox>(*panel_, "a"), Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(FirstSample(), 1.0F);
}

TEST_F(ValuePanels, TooltipsAreTheTextsOfTheRows) {
  Create("ImageValueClampNode");
  EXPECT_TRUE(Find<QDoubleSpinBox>(*panel_, "low")->toolTip().contains("The lower limit."));
  EXPECT_TRUE(Find<QLabel>(*panel_, "high.label")->toolTip().contains("The upper limit."));
}

TEST_F(ValuePanels, HeadersShowTheIconsOfTheLibrary) {
  Create("ImageReliefNode");
  bool has_icon = false;
  for (const QLabel* label : panel_->findChildren<QLabel*>()) has_icon |= label->pixmap().width() == 48;
  EXPECT_TRUE(has_icon);
}

}  // namespace
