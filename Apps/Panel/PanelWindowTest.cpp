// SPDX-License-Identifier: Apache-2.0
#include "Apps/Panel/PanelWindow.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QPushButton>
#include <limits>
#include <memory>
#include <vector>

#include "Host/Nodes/HostNodes.h"
#include "Host/Tools/NodeLibrary.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Widgets/WidgetTesting.h"

namespace {

using Testing::kInfinity;
using Testing::kNan;
using Testing::MakeImage;
using WidgetTest::Find;

// ---- The picture ----

std::vector<QRgb> PixelsOf(const QImage& picture) {
  std::vector<QRgb> pixels;
  for (int y = 0; y < picture.height(); ++y) {
    for (int x = 0; x < picture.width(); ++x) pixels.push_back(picture.pixel(x, y));
  }
  return pixels;
}

TEST(DrawImage, SpansTheDeclaredRange) {
  const auto image = MakeImage(5, 1, ColorMode::kValue, {-2.0F, 0.0F, 2.0F, 3.0F, -kInfinity});
  image->SetValueLowHigh(-2.0F, 2.0F);
  EXPECT_EQ(
      PixelsOf(DrawImage(*image, 100)),
      (std::vector<QRgb>{qRgb(0, 0, 0), qRgb(128, 128, 128), qRgb(255, 255, 255), qRgb(255, 255, 255), qRgb(0, 0, 0)}));
}

TEST(DrawImage, ShowsNanInMagenta) {
  const auto value = MakeImage(2, 1, ColorMode::kValue, {kNan, 1.0F});
  EXPECT_EQ(PixelsOf(DrawImage(*value, 100)), (std::vector<QRgb>{qRgb(255, 0, 255), qRgb(255, 255, 255)}));
  const auto color = MakeImage(1, 1, ColorMode::kColor, {1.0F, 1.0F, kNan, 1.0F});
  EXPECT_EQ(PixelsOf(DrawImage(*color, 100)), (std::vector<QRgb>{qRgb(255, 0, 255)}));
}

TEST(DrawImage, ShowsColorWithItsOpacityAndTheSignedModeFromMinusOne) {
  const auto color = MakeImage(1, 1, ColorMode::kColor, {1.0F, 0.0F, 0.2F, 0.6F});
  color->SetValueLowHigh(0.0F, 100.0F);
  EXPECT_EQ(PixelsOf(DrawImage(*color, 100)), (std::vector<QRgb>{qRgba(255, 0, 51, 153)}));
  const auto signed_image = MakeImage(1, 1, ColorMode::kSigned, {-1.0F, 0.0F, 1.0F, 0.5F});
  EXPECT_EQ(PixelsOf(DrawImage(*signed_image, 100)), (std::vector<QRgb>{qRgb(0, 128, 255)}));
  const auto pair = MakeImage(1, 1, ColorMode::kPair, {1.0F, 0.0F});
  EXPECT_EQ(PixelsOf(DrawImage(*pair, 100)), (std::vector<QRgb>{qRgb(255, 0, 0)}));
}

TEST(DrawImage, TakesARangeWithoutExtent) {
  const auto image = MakeImage(2, 1, ColorMode::kValue, {3.0F, 4.0F});
  image->SetValueLowHigh(3.0F, 3.0F);
  EXPECT_EQ(PixelsOf(DrawImage(*image, 100)), (std::vector<QRgb>{qRgb(0, 0, 0), qRgb(255, 255, 255)}));
}

TEST(DrawImage, LeavesPixelsOutOfLargeImages) {
  const auto image = MakeImage(5, 2, ColorMode::kValue, {0, 1, 1, 1, 1, 0, 0, 0, 0, 0});
  // Every third one.
  const QImage picture = DrawImage(*image, 2);
  EXPECT_EQ(picture.size(), QSize(2, 1));
  EXPECT_EQ(PixelsOf(picture), (std::vector<QRgb>{qRgb(0, 0, 0), qRgb(255, 255, 255)}));
  EXPECT_TRUE(DrawImage(*MakeImage(0, 0, ColorMode::kValue, {}), 100).isNull());
}

// ---- The window ----

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
      Node* input = document_->AddNode(id, i == 0 ? ScEng::kImageTerrainType : ScEng::kImageWavesType, status);
      if (request.source == nullptr) request.source = input;
      document_->Connect(id + ".image", "node." + node_->GetInplugs()[i].name, 0);
    }
    window_ = std::make_unique<PanelWindow>(request);
    WidgetTest::ShowAndActivate(*window_);
  }
  [[nodiscard]] QImage Picture() const { return Find<Preview>(*window_, "preview")->GetPicture(); }

  std::shared_ptr<const ScEng::NodeCatalog> catalog_;
  std::unique_ptr<ScEng::GraphDocument> document_;
  Node* node_ = nullptr;
  std::unique_ptr<PanelWindow> window_;
};

TEST_F(Window, PreviewFollowsThePanel) {
  Open("ImageValueConditionNode");
  node_->GetAttribute(std::string("condition"))->SetChoice("v_gt_a", false);
  QApplication::processEvents();
  EXPECT_EQ(Picture().pixel(0, 0), qRgb(255, 255, 255));
  WidgetTest::Type(Find<QDoubleSpinBox>(*window_, "a"), "1");
  QApplication::processEvents();
  EXPECT_EQ(Picture().pixel(0, 0), qRgb(0, 0, 0));

  auto* undo = Find<QPushButton>(*window_, "undo");
  ASSERT_TRUE(undo->isEnabled());
  undo->click();
  QApplication::processEvents();
  EXPECT_EQ(Picture().pixel(0, 0), qRgb(255, 255, 255));
  EXPECT_FALSE(undo->isEnabled());
  QTest::keyClick(window_.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
  QApplication::processEvents();
  EXPECT_EQ(Picture().pixel(0, 0), qRgb(0, 0, 0));
}

TEST_F(Window, ShowsTheOutputThatIsChosenAndTheImageBefore) {
  Open("ImageValueCompareNode");
  auto* outputs = Find<QComboBox>(*window_, "outputs");
  ASSERT_TRUE(outputs->isVisible());
  ASSERT_EQ(outputs->count(), 6);
  // The terrain lies above waves without height.
  document_->FindNode("input 2")->GetAttribute(std::string("height"))->SetNumber(0.0, false);
  EXPECT_EQ(outputs->currentText(), "a < b");
  EXPECT_EQ(Picture().pixel(20, 20), qRgb(0, 0, 0));
  outputs->setCurrentIndex(outputs->findText("a > b"));
  EXPECT_EQ(Picture().pixel(20, 20), qRgb(255, 255, 255));

  Find<QPushButton>(*window_, "before")->click();
  const float terrain = document_->FindNode("input 1")->GetOutputImage(0)->GetConstArray()[20 * 64 + 20];
  EXPECT_NEAR(qRed(Picture().pixel(20, 20)), terrain * 255.0F, 0.51F);
  EXPECT_TRUE(Find<QLabel>(*window_, "facts")->text().contains("64 × 64"));
}

TEST_F(Window, OfANodeOfTheHostHasTheGeneralPanel) {
  Open("ImageTerrainNode");
  ASSERT_NE(Find<QDoubleSpinBox>(*window_, "octaves"), nullptr);
  const QImage before = Picture();
  WidgetTest::Type(Find<QDoubleSpinBox>(*window_, "seed"), "2");
  QApplication::processEvents();
  EXPECT_NE(Picture(), before);
  EXPECT_FALSE(Find<QPushButton>(*window_, "before")->isVisible());
}

TEST_F(Window, SaysWhatANodeReports) {
  Open("ImageReaderNode");
  node_->GetAttribute(std::string("path"))->SetString("missing.exr", false);
  QApplication::processEvents();
  EXPECT_TRUE(Picture().isNull());
  EXPECT_EQ(Find<QLabel>(*window_, "facts")->text(), "");
}

}  // namespace
