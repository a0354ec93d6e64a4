// SPDX-License-Identifier: Apache-2.0
#include "Apps/Panel/PanelWindow.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Apps/Panel/ApplyLine.h"
#include "Apps/Panel/FixedRange.h"
#include "Host/Files/ImageFile.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Viewing/ViewImage.h"
#include "Host/Widgets/ImageView.h"
#include "Host/Widgets/Probes.h"
#include "Host/Widgets/ViewerWidget.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace {

using Testing::MakeImage;
using WidgetTest::Find;

class Window : public testing::Test {
 protected:
  Window() {
    ScEng::Status status;
    const auto catalog = ScEng::CreateHostCatalog();
    catalog->AddLibrary(ScEng::NodeLibrary::Load(VALUE_LIBRARY_FILE, status));
    catalog_ = catalog;
    document_ = std::make_unique<ScEng::GraphDocument>(catalog_);
  }
  ~Window() override {
    window_.reset();
    QNodeAttributesWidget::GetDefaultUndoStack()->clear();
  }

  void Open(const char* type) {
    ScEng::Status status;
    PanelRequest request;
    request.document = document_.get();
    request.descriptor = catalog_->FindTypeName(type);
    ASSERT_NE(request.descriptor, nullptr);
    request.node = node_ = document_->AddNode("node", request.descriptor->GetNodeType(), status);
    for (unsigned i = 0; i < node_->GetOutplugs().size(); ++i) request.outplugs.push_back(i);
    for (std::size_t i = 0; i < node_->GetNumRegularInputs(); ++i) {
      const std::string id = "input " + std::to_string(i + 1);
      document_->AddNode(id, i == 0 ? ScEng::kImageTerrainType : ScEng::kImageWavesType, status);
      request.inputs = {"my terrain.exr"};
      document_->Connect(id + ".image", "node." + node_->GetInplugs()[i].name, 0);
    }
    window_ = std::make_unique<PanelWindow>(request);
    WidgetTest::ShowAndActivate(*window_);
    window_->resize(1020, 700);
  }
  [[nodiscard]] ScEng::ViewerWidget& Viewer() const { return *Find<ScEng::ViewerWidget>(*window_, "viewer"); }
  [[nodiscard]] const Image& Shown() const { return Viewer().GetContent().image->GetImage(); }
  /// The brightness of a pixel of the image as it is seen, 0 to 255.
  [[nodiscard]] int GrayAt(int x, int y) const {
    ScEng::ImageView& view = *Viewer().GetView();
    return view.grab().toImage().pixelColor(view.ToView(QPointF(x + 0.5, y + 0.5)).toPoint()).lightness();
  }
  void Set(const char* attribute, double number) {
    node_->GetAttribute(std::string(attribute))->SetNumber(number, false);
    QApplication::processEvents();
  }

  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  std::unique_ptr<ScEng::GraphDocument> document_;
  Node* node_ = nullptr;
  std::unique_ptr<PanelWindow> window_;
};

TEST_F(Window, PictureFollowsThePanel) {
  Open("ImageValueConditionNode");
  node_->GetAttribute(std::string("condition"))->SetChoice("v_gt_a", false);
  QApplication::processEvents();
  EXPECT_EQ(GrayAt(0, 0), 255);
  WidgetTest::Type(Find<QDoubleSpinBox>(*window_, "a"), "1");
  QApplication::processEvents();
  EXPECT_EQ(GrayAt(0, 0), 0);

  auto* undo = Find<QPushButton>(*window_, "undo");
  ASSERT_TRUE(undo->isEnabled());
  undo->click();
  QApplication::processEvents();
  EXPECT_EQ(GrayAt(0, 0), 255);
  EXPECT_FALSE(undo->isEnabled());
  QTest::keyClick(window_.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  QApplication::processEvents();
  EXPECT_EQ(GrayAt(0, 0), 0);
}

TEST_F(Window, AConstantThatIsAddedBrightensThePicture) {
  Open("ImageValueAddNode");
  const ScEng::Look look = Viewer().GetLook();
  EXPECT_EQ(look.range, ScEng::RangeSource::kCustom);
  EXPECT_EQ(look.custom, (ScEng::ValueRange{0.0F, 1.0F}));
  const int before = GrayAt(20, 20);
  Set("constant", 0.25);
  // A quarter of the range, whatever the result declares.
  EXPECT_NEAR(GrayAt(20, 20), before + 64, 1);
  EXPECT_EQ(Viewer().GetLook(), look);
}

TEST_F(Window, ZoomPlaceAndProbesStayWhenAttributesChange) {
  Open("ImageValueAddNode");
  Viewer().GetView()->SetZoom(16.0);
  Viewer().GetProbes()->Add(3, 4);
  const QPointF corner = Viewer().GetView()->ToView({0.0, 0.0});
  Set("constant", 2.0);
  EXPECT_EQ(Viewer().GetView()->GetZoom(), 16.0);
  EXPECT_EQ(Viewer().GetView()->ToView({0.0, 0.0}), corner);
  EXPECT_EQ(Viewer().GetProbes()->GetProbes().size(), 1U);
}

TEST_F(Window, ShowsTheOutputThatIsChosenAndTheImageBefore) {
  Open("ImageValueCompareNode");
  auto* outputs = Find<QComboBox>(*window_, "outputs");
  ASSERT_TRUE(outputs->isVisible());
  ASSERT_EQ(outputs->count(), 6);
  // The terrain lies above waves without height.
  document_->FindNode("input 2")->GetAttribute(std::string("height"))->SetNumber(0.0, false);
  EXPECT_EQ(outputs->currentText(), "a < b");
  EXPECT_EQ(GrayAt(20, 20), 0);
  outputs->setCurrentIndex(outputs->findText("a > b"));
  EXPECT_EQ(GrayAt(20, 20), 255);

  const ScEng::ViewerContent& content = Viewer().GetContent();
  ASSERT_EQ(content.inputs.size(), 2U);
  EXPECT_EQ(content.inputs[0].first, "image_a");
  EXPECT_EQ(content.inputs[1].first, "image_b");
  EXPECT_EQ(content.before, content.inputs[0].second);
  Find<QAction>(*window_, "viewer.wipe")->trigger();
  Viewer().GetView()->SetWipePlace(1.0);
  const float terrain = document_->FindNode("input 1")->GetOutputImage(0)->GetConstArray()[20 * 64 + 20];
  EXPECT_NEAR(GrayAt(20, 20), terrain * 255.0F, 1.0F);
}

TEST_F(Window, OfANodeOfTheHostHasTheGeneralPanel) {
  Open("ImageTerrainNode");
  ASSERT_NE(Find<QDoubleSpinBox>(*window_, "octaves"), nullptr);
  const float before = Shown().GetConstArray()[0];
  WidgetTest::Type(Find<QDoubleSpinBox>(*window_, "seed"), "2");
  QApplication::processEvents();
  EXPECT_NE(Shown().GetConstArray()[0], before);
  EXPECT_EQ(Viewer().GetContent().before, nullptr);
}

TEST_F(Window, ShowsWhatGoesIntoANodeWithoutAnOutput) {
  Open("ImageWriterNode");
  EXPECT_EQ(Shown().GetSizeX(), 64);
  EXPECT_EQ(Viewer().GetView()->GetMessage(), "");
  EXPECT_FALSE(Find<QPushButton>(*window_, "save_image")->isEnabled());
}

TEST_F(Window, SaysWhatANodeReports) {
  Open("ImageReaderNode");
  node_->GetAttribute(std::string("path"))->SetString("missing.exr", false);
  QApplication::processEvents();
  EXPECT_EQ(Viewer().GetContent().image, nullptr);
  EXPECT_TRUE(Viewer().GetView()->GetMessage().contains("missing.exr"));
  EXPECT_EQ(Find<QLabel>(*window_, "viewer.facts")->text(), "");
  EXPECT_FALSE(Find<QPushButton>(*window_, "save_image")->isEnabled());
}

TEST_F(Window, SavesTheImageThatIsShown) {
  Open("ImageValueAddNode");
  Set("constant", 0.5);
  const Testing::TemporaryFolder folder;
  std::vector<std::string> notes;
  const std::filesystem::path file = folder / "shown.exr";
  ASSERT_FALSE(window_->SaveImage(file, notes).IsError());
  ScEng::Status status;
  const ImagePtr read = ScEng::ReadImageFile(file, {}, status, notes);
  ASSERT_TRUE(read) << status.GetMessage();
  EXPECT_EQ(read->GetSizeX(), 64);
  EXPECT_EQ(read->GetConstArray()[100], Shown().GetConstArray()[100]);
  EXPECT_TRUE(window_->SaveImage(folder / "shown.xyz", notes).IsError());
}

TEST_F(Window, CopiesTheCommandThatMakesTheImage) {
  Open("ImageValueAddNode");
  auto* command = Find<QLineEdit>(*window_, "command");
  EXPECT_FALSE(command->isVisible());
  Set("constant", 0.25);
  Find<QPushButton>(*window_, "copy_command")->click();
  ASSERT_TRUE(command->isVisible());
  const QString expected = "value apply 'Value Add' -i 'my terrain.exr' --set constant=0.25 -o out.exr";
  EXPECT_EQ(command->text(), expected);
  EXPECT_EQ(QApplication::clipboard()->text(), expected);
  // From then on it follows.
  Set("constant", 0.0);
  EXPECT_EQ(command->text(), "value apply 'Value Add' -i 'my terrain.exr' -o out.exr");
}

// ---- The command ----

TEST_F(Window, CommandsNameRangesAndOutputs) {
  Open("ImageValueCompareNode");
  EXPECT_EQ(MakeApplyLine({"Value Compare", {"image_a=a.exr", "it's.png"}, "0,255", "image_a_df_b"}, *node_),
            "value apply 'Value Compare' -i image_a=a.exr -i 'it'\\''s.png' --range 0,255 "
            "-o image_a_df_b=out.exr");
}

TEST_F(Window, CommandsWriteEveryKindOfAttribute) {
  Open("ImageCheckerNode");
  node_->GetAttribute(std::string("color_00"))->SetRgbo(0.5, 0.25, 0.0, 1.0, false);
  node_->GetAttribute(std::string("rect_x_size"))->SetPoint(16.0, 8.5, false);
  node_->GetAttribute(std::string("frame"))->SetFrame(-1.0, 2.0, 64.0, 32.0, false);
  EXPECT_EQ(MakeApplyLine({"Image Checker", {}, "", ""}, *node_),
            "value apply 'Image Checker' --set frame=-1,2,64,32 --set rect_x_size=16,8.5 "
            "--set color_00=0.5,0.25,0,1 -o out.exr");
}

// ---- The range ----

ImagePtr MakeDeclared(float low, float high, unsigned mode = ColorMode::kValue) {
  ImagePtr image = MakeImage(1, 1, mode, std::vector<float>(static_cast<std::size_t>(ColorMode::GetNumChannels(mode))));
  image->SetValueLowHigh(low, high);
  return image;
}

TEST(FixedRange, IsThatOfTheInputWhereTheResultCanBeSeenInIt) {
  const ImagePtr source = MakeDeclared(0.0F, 1.0F);
  EXPECT_EQ(ChooseFixedRange(*MakeDeclared(0.25F, 1.25F), source.Get()), (ScEng::ValueRange{0.0F, 1.0F}));
  EXPECT_EQ(ChooseFixedRange(*MakeDeclared(0.0F, 0.5F), source.Get()), (ScEng::ValueRange{0.0F, 1.0F}));
  // A result of one value.
  EXPECT_EQ(ChooseFixedRange(*MakeDeclared(7.0F, 7.0F), source.Get()), (ScEng::ValueRange{0.0F, 1.0F}));
}

TEST(FixedRange, IsThatOfTheResultElsewhere) {
  const ImagePtr source = MakeDeclared(0.0F, 1.0F);
  EXPECT_EQ(ChooseFixedRange(*MakeDeclared(0.0F, 68.0F), source.Get()), (ScEng::ValueRange{0.0F, 68.0F}));
  EXPECT_EQ(ChooseFixedRange(*MakeDeclared(-0.03F, 0.03F), source.Get()), (ScEng::ValueRange{-0.03F, 0.03F}));
  EXPECT_EQ(ChooseFixedRange(*MakeDeclared(5.0F, 6.0F), source.Get()), (ScEng::ValueRange{5.0F, 6.0F}));
  EXPECT_EQ(ChooseFixedRange(*MakeDeclared(0.0F, 2.0F), nullptr), (ScEng::ValueRange{0.0F, 2.0F}));
  EXPECT_EQ(ChooseFixedRange(*MakeDeclared(-1.0F, 1.0F, ColorMode::kSigned), source.Get()),
            (ScEng::ValueRange{-1.0F, 1.0F}));
}

TEST(FixedRange, AlwaysHasAnExtent) {
  EXPECT_EQ(ChooseFixedRange(*MakeDeclared(3.0F, 3.0F), nullptr), (ScEng::ValueRange{0.0F, 1.0F}));
  EXPECT_EQ(ChooseFixedRange(*MakeDeclared(0.0F, Testing::kInfinity), nullptr), (ScEng::ValueRange{0.0F, 1.0F}));
}

}  // namespace
