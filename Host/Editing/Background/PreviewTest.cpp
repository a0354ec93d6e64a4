// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "Host/Editing/Background/PreviewMirror.h"
#include "Host/Editing/Background/PreviewPlan.h"
#include "Host/Editing/BackgroundEvaluator.h"
#include "Host/NodeKit/NodeKit.h"
#include "Host/NodeKit/NodeLibraryExports.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Util/Cancellation.h"
#include "Host/Viewing/Probe.h"
#include "Host/Viewing/ReduceImage.h"
#include "Tests/Support/EditTesting.h"

/// Hands on what it is given; images wider than `kWide` only when it is let.
class GatedNode : public Node {
  NODEKIT_NODE(GatedNode)
  NODEKIT_ONE_OUTPUT

 public:
  static constexpr int kWide = 1000;
  inline static std::atomic<bool> is_open = true;

  void Evaluate(unsigned, const std::vector<PlugValue>& inputs) override {
    const Image* image = EvaluatedInputs(*this, inputs).GetImage();
    while (image != nullptr && image->GetSizeX() > kWide && !is_open) ScEng::PollCancellation();
    output_.Set(const_cast<Image*>(image));
  }
};

namespace {

constexpr LibraryRecord kTestLibrary;

}  // namespace

constinit const NodeRecord GatedNode::kRecord{
    .library = &kTestLibrary,
    .type_name = "GatedNode",
    .display_name = "Gated",
    .type = NodeType(900, 7, 1),
    .group = "Test",
    .sentence = "Waits.",
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .scaling = ScalesAsPicture,
};

namespace {

using ScEng::BackgroundEvaluator;
using ScEng::EditSession;
using ScEng::GraphDocument;
using ScEng::PreviewMirror;
using ScEng::PreviewPlan;
using ScEng::Status;

constexpr NodeType kReader{10, 16, 5};
constexpr NodeType kChecker{10, 16, 16};
constexpr NodeType kTerrain{10, 16, 40};
constexpr NodeType kRelief{10, 288, 26};
constexpr NodeType kDistance{10, 288, 74};
constexpr NodeType kMultiply{10, 320, 10};
constexpr NodeType kMaximum{10, 320, 21};
constexpr NodeType kGradient{10, 320, 48};
constexpr NodeType kOcclusion{10, 320, 85};
constexpr NodeType kComponents{10, 320, 101};

/// Longer than anything here takes on the slowest machine.
constexpr double kLong = 300.0;

void Do(const Status& status) { ASSERT_FALSE(status.IsError()) << status.GetMessage(); }

/// A terrain of 1600 by 1200 pixels, which previews halve twice, and what a test hangs below it.
class PreviewTest : public testing::Test {
 protected:
  void SetUp() override {
    Add("terrain", kTerrain);
    Set("terrain.frame", "0,0,1600,1200");
    Set("terrain.wavelength", "400");
  }

  /// A change of the document, which the preview follows.
  void Change(const ScEng::MirrorChange& change) {
    change(document_);
    preview_.Apply({change});
  }
  void Add(const std::string& id, const NodeType& type) {
    Change([=](GraphDocument& document) {
      Status status;
      ASSERT_NE(document.AddNode(id, type, status), nullptr) << status.GetMessage();
    });
  }
  void Set(const std::string& attribute, const std::string& text) {
    Change([=](GraphDocument& document) {
      std::vector<std::string> notes;
      Do(document.SetAttribute(attribute, text, notes));
      ASSERT_TRUE(notes.empty()) << notes.front();
    });
  }
  void Connect(const std::string& from, const std::string& to) {
    Change([=](GraphDocument& document) { Do(document.Connect(from, to, 0)); });
  }

  int CountHalvings(const std::string& id, int longest_side = 4096) {
    return ScEng::ChooseHalvings(MakePreviewPlan(document_, id), longest_side, std::int64_t{longest_side} * 4096);
  }

  std::shared_ptr<ScEng::ShownResult> Preview(const std::string& plug, bool with_inputs = false) {
    return preview_.Evaluate({plug, with_inputs}, {});
  }
  ImagePtr Evaluate(const std::string& plug) {
    ScEng::RunReport report;
    return document_.Evaluate(plug, report);
  }

  /// How far a preview is from the image itself, reduced: the mean difference, as a share of the span of the image.
  double FindDifference(const std::string& plug) {
    const auto result = Preview(plug);
    const ImagePtr whole = Evaluate(plug);
    if (result == nullptr || !whole) return std::numeric_limits<double>::infinity();
    EXPECT_TRUE(result->image->IsPreview());
    const ImageHeader& header = result->image->GetHeader();
    EXPECT_EQ(header.GetBox(), whole->GetBox());
    const ImagePtr reduced = ScEng::ReduceImage(*whole, result->image->GetFirstLevel());
    const Image& preview = result->image->GetImage();
    EXPECT_EQ(preview.GetNumSamples(), reduced->GetNumSamples());
    double sum = 0.0;
    for (std::size_t i = 0; i < preview.GetNumSamples(); ++i) {
      sum +=
          std::abs(static_cast<double>(preview.GetConstArray()[i]) - static_cast<double>(reduced->GetConstArray()[i]));
    }
    const ScEng::SampleRange range = whole->GetSampleRange();
    const double span = static_cast<double>(range.high) - static_cast<double>(range.low);
    return sum / static_cast<double>(preview.GetNumSamples()) / span;
  }

  GraphDocument document_{Testing::GetCatalog()};
  PreviewMirror preview_{Testing::GetCatalog(), document_};
};

// ---- What is previewed ----

TEST_F(PreviewTest, ImagesAreHalvedUntilTheyFit) {
  Add("add", Testing::kAdd);
  Connect("terrain.image", "add.image");
  EXPECT_EQ(CountHalvings("add", 4096), 3);
  EXPECT_EQ(CountHalvings("add", 1600), 2);
  EXPECT_EQ(CountHalvings("add", 20000), 5);
  // Few pixels need no preview.
  EXPECT_EQ(ScEng::ChooseHalvings(MakePreviewPlan(document_, "add"), 1024, 1024 * 1024), 0);
}

TEST_F(PreviewTest, LengthsKeepOnePixelAndTheirBounds) {
  Add("relief", kRelief);
  Connect("terrain.image", "relief.image");
  Set("relief.radius", "100");
  EXPECT_EQ(CountHalvings("relief"), 3);
  Set("relief.radius", "5");
  EXPECT_EQ(CountHalvings("relief"), 2);
  Set("relief.radius", "1");
  EXPECT_EQ(CountHalvings("relief"), 0);
  // A blur of less than a pixel is no more to be seen than none.
  Set("relief.radius", "0");
  Set("relief.soften", "1");
  EXPECT_EQ(CountHalvings("relief"), 3);
  Add("occlusion", kOcclusion);
  Connect("terrain.image", "occlusion.image");
  Set("occlusion.radius", "100");
  EXPECT_EQ(CountHalvings("occlusion"), 3);
  // The least radius is 3.
  Set("occlusion.radius", "20");
  EXPECT_EQ(CountHalvings("occlusion"), 2);
  Change([](GraphDocument& document) { Do(document.SetEnabled("occlusion", false)); });
  EXPECT_EQ(CountHalvings("occlusion"), 3);
}

TEST_F(PreviewTest, WhatDoesNotFollowReducedImagesIsNotPreviewed) {
  Add("components", kComponents);
  Connect("terrain.image", "components.image");
  EXPECT_FALSE(MakePreviewPlan(document_, "components").is_possible);
  Add("add", Testing::kAdd);
  Connect("components.image", "add.image");
  EXPECT_FALSE(MakePreviewPlan(document_, "add").is_possible);
  EXPECT_EQ(Preview("add.image"), nullptr);
  // A number from elsewhere cannot be reduced on its way.
  Add("relief", kRelief);
  Add("number", Testing::kNumberNode);
  Connect("terrain.image", "relief.image");
  EXPECT_TRUE(MakePreviewPlan(document_, "relief").is_possible);
  Connect("number.number", "relief.radius");
  EXPECT_FALSE(MakePreviewPlan(document_, "relief").is_possible);
  EXPECT_FALSE(MakePreviewPlan(document_, "nobody").is_possible);
}

TEST_F(PreviewTest, SmallImagesAndErrorsHaveNone) {
  Add("add", Testing::kAdd);
  EXPECT_EQ(Preview("add.image"), nullptr);
  Connect("terrain.image", "add.image");
  EXPECT_NE(Preview("add.image"), nullptr);
  EXPECT_EQ(Preview("add.picture"), nullptr);
  EXPECT_EQ(Preview("nobody.image"), nullptr);
  Set("terrain.frame", "0,0,400,300");
  EXPECT_EQ(Preview("add.image"), nullptr);
  Add("reader", kReader);
  Set("reader.path", "missing.exr");
  Add("max", kMaximum);
  Connect("reader.image", "max.image");
  EXPECT_EQ(Preview("max.image"), nullptr);
}

// ---- What they show ----

TEST_F(PreviewTest, AFunctionOfEachSampleIsThatOfTheReducedImage) {
  Add("add", Testing::kAdd);
  Connect("terrain.image", "add.image");
  Set("add.constant", "0.25");
  const auto result = Preview("add.image", true);
  ASSERT_NE(result, nullptr);
  const ImagePtr reduced = ScEng::ReduceImage(*Evaluate("terrain.image"), 2);
  for (std::size_t i = 0; i < reduced->GetNumSamples(); ++i) {
    ASSERT_EQ(result->image->GetImage().GetConstArray()[i], reduced->GetConstArray()[i] + 0.25F);
  }
  ASSERT_EQ(result->inputs.size(), 1U);
  EXPECT_EQ(result->inputs[0].from, "terrain.image");
  EXPECT_TRUE(result->inputs[0].image->IsPreview());
  EXPECT_EQ(result->inputs[0].image->GetHeader().size_x, 1600);
}

TEST_F(PreviewTest, FollowsChangesOfTheDocument) {
  Add("add", Testing::kAdd);
  Connect("terrain.image", "add.image");
  const auto read = [&] { return ScEng::ReadPixel(*Preview("add.image")->image, 800, 600).value; };
  const float before = read();
  Set("add.constant", "2");
  EXPECT_EQ(read(), before + 2.0F);
  Set("terrain.seed", "77");
  const float other = read();
  EXPECT_NE(other, before + 2.0F);
  Change([](GraphDocument& document) { Do(document.RenameNode("terrain", "land")); });
  EXPECT_EQ(read(), other);
  Change([](GraphDocument& document) { Do(document.RemoveNode("land")); });
  EXPECT_EQ(Preview("add.image"), nullptr);
}

// What previews are worth: the mean difference to the image itself, reduced, as a share of its span.

constexpr double kToleranceOfHeights = 0.01;
constexpr double kToleranceOfSlopes = 0.03;
constexpr double kToleranceOfOcclusion = 0.08;
constexpr double kToleranceOfBevels = 0.06;

TEST_F(PreviewTest, ReliefsAndDistancesAreThoseOfTheImage) {
  Add("relief", kRelief);
  Add("distance", kDistance);
  Connect("terrain.image", "relief.image");
  Connect("terrain.image", "distance.image");
  for (const char* radius : {"16", "100", "250"}) {
    Set("relief.radius", radius);
    EXPECT_LT(FindDifference("relief.image"), kToleranceOfHeights) << radius;
  }
  Set("relief.soften", "3");
  EXPECT_LT(FindDifference("relief.image"), kToleranceOfHeights);
  EXPECT_LT(FindDifference("distance.image"), kToleranceOfHeights);
  Set("distance.normalize", "true");
  EXPECT_LT(FindDifference("distance.image"), kToleranceOfHeights);
}

TEST_F(PreviewTest, SlopesAreThoseOfTheImage) {
  Add("gradient", kGradient);
  Add("half", kMultiply);
  Connect("terrain.image", "gradient.image");
  Connect("gradient.output_y", "half.image");
  Set("half.constant", "0.5");
  EXPECT_LT(FindDifference("gradient.output_x"), kToleranceOfSlopes);
  EXPECT_LT(FindDifference("gradient.output_y"), kToleranceOfSlopes);
  // What follows is made of what was put right.
  EXPECT_LT(FindDifference("half.image"), kToleranceOfSlopes);
}

TEST_F(PreviewTest, OcclusionIsThatOfTheImage) {
  Add("occlusion", kOcclusion);
  Connect("terrain.image", "occlusion.image");
  for (const char* radius : {"12", "100"}) {
    Set("occlusion.radius", radius);
    EXPECT_LT(FindDifference("occlusion.image"), kToleranceOfOcclusion) << radius;
  }
}

TEST_F(PreviewTest, BevelsOfMasksAreThoseOfTheImage) {
  Add("checker", kChecker);
  Set("checker.frame", "0,0,1600,1200");
  Set("checker.rect_x_size", "173,8");
  Set("checker.rect_y_size", "8,131");
  Add("relief", kRelief);
  Connect("checker.image", "relief.image");
  Set("relief.radius", "60");
  for (const char* style : {"inner_bevel", "outer_bevel", "emboss", "pillow_emboss"}) {
    Set("relief.style", style);
    EXPECT_LT(FindDifference("relief.image"), kToleranceOfBevels) << style;
  }
  // Those of a height map are not.
  Change([](GraphDocument& document) {
    Do(document.Disconnect("checker.image", "relief.image"));
    Do(document.Connect("terrain.image", "relief.image", 0));
  });
  EXPECT_EQ(Preview("relief.image"), nullptr);
  Set("relief.style", "levels");
  EXPECT_NE(Preview("relief.image"), nullptr);
}

// ---- In the background ----

class BackgroundPreviewTest : public testing::Test {
 protected:
  void SetUp() override {
    auto catalog = ScEng::CreateHostCatalog();
    catalog->AddDescriptor(
        ScEng::RefPtr<NodeInterface>(CreateNodeDescriptor<NodeDescriptorOf<GatedNode>, NodeFactoryOf<GatedNode>>()));
    session_ = std::make_unique<EditSession>(catalog, folder_.Path());
    Do(session_->AddNode({{10, 16, 40}, "terrain", {}}));
    Do(session_->SetAttribute("terrain.frame", "0,0,1600,1200"));
    Do(session_->AddNode({{900, 7, 1}, "gate", {}}));
    Do(session_->Connect({"terrain.image", "gate.image", 0}));
    GatedNode::is_open = false;
    evaluator_ = std::make_unique<BackgroundEvaluator>(*session_, [] {});
    evaluator_->Show({"gate.image", false});
  }
  void TearDown() override {
    GatedNode::is_open = true;
    evaluator_.reset();
  }

  std::shared_ptr<const ScEng::ShownResult> WaitForResult() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(kLong);
    while (std::chrono::steady_clock::now() < end) {
      // Before anything was asked to be shown there may be a result of nothing.
      auto result = evaluator_->TakeResult();
      if (result != nullptr && result->shown.plug == "gate.image") return result;
      std::this_thread::yield();
    }
    return nullptr;
  }

  Testing::TemporaryFolder folder_;
  std::unique_ptr<EditSession> session_;
  std::unique_ptr<BackgroundEvaluator> evaluator_;
};

TEST_F(BackgroundPreviewTest, APreviewComesFirstAndTheImageAfterIt) {
  const auto first = WaitForResult();
  ASSERT_NE(first, nullptr);
  EXPECT_TRUE(first->image->IsPreview());
  EXPECT_EQ(first->shown.plug, "gate.image");
  EXPECT_EQ(first->image->GetHeader().size_x, 1600);
  EXPECT_FALSE(evaluator_->IsIdle());
  GatedNode::is_open = true;
  const auto second = WaitForResult();
  ASSERT_NE(second, nullptr);
  EXPECT_FALSE(second->image->IsPreview());
  ASSERT_TRUE(evaluator_->WaitUntilIdle(kLong));
  EXPECT_EQ(evaluator_->TakeResult(), nullptr);
}

TEST_F(BackgroundPreviewTest, EachChangeIsPreviewed) {
  ASSERT_NE(WaitForResult(), nullptr);
  for (const char* wavelength : {"100", "200", "300"}) {
    Do(session_->SetAttribute("terrain.wavelength", wavelength));
    // A preview of the state before may still be on its way.
    ScEng::RunReport report;
    std::shared_ptr<const ScEng::ShownResult> result;
    const ImagePtr whole = session_->GetDocument().Evaluate("terrain.image", report);
    const float wanted = ScEng::ReduceImage(*whole, 2)->GetConstArray()[0];
    do {
      result = WaitForResult();
      ASSERT_NE(result, nullptr);
      ASSERT_TRUE(result->image->IsPreview());
    } while (result->image->GetImage().GetConstArray()[0] != wanted);
  }
}

TEST_F(BackgroundPreviewTest, StaysWhenTheEvaluationIsStopped) {
  ASSERT_NE(WaitForResult(), nullptr);
  evaluator_->Cancel();
  ASSERT_TRUE(evaluator_->WaitUntilIdle(kLong));
  EXPECT_EQ(evaluator_->TakeResult(), nullptr);
  GatedNode::is_open = true;
  evaluator_->Resume();
  ASSERT_TRUE(evaluator_->WaitUntilIdle(kLong));
  EXPECT_FALSE(WaitForResult()->image->IsPreview());
}

}  // namespace
