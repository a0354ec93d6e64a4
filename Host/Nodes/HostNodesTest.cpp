// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/HostNodes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "Host/Files/ImageFile.h"
#include "Host/Image/ImageMetadata.h"
#include "Host/Tools/Engine.h"
#include "Tests/Support/HostTesting.h"

namespace {

using Testing::Contains;
using Testing::GetSamples;
using Testing::kInfinity;
using Testing::kNan;
using Testing::MakeImage;
using Testing::MaxSizeScope;
using Testing::SameSamples;
using Testing::TemporaryFolder;
using Testing::ThreadsScope;

class HostNodesTest : public testing::Test {
 protected:
  Node* Create(const NodeType& type) {
    Node* node = engine_.CreateNode(type);
    EXPECT_NE(node, nullptr);
    return node;
  }
  static Attribute* Get(Node* node, const std::string& name) {
    Attribute* attribute = node->GetAttribute(name);
    EXPECT_NE(attribute, nullptr) << name;
    return attribute;
  }
  static void SetFrame(Node* node, double x, double y, double width, double height) {
    EXPECT_TRUE(Get(node, "frame")->SetFrame(x, y, width, height, false));
  }
  static void SetNumber(Node* node, const std::string& name, double value) {
    EXPECT_TRUE(Get(node, name)->SetNumber(value, false));
  }
  static void SetText(Node* node, const std::string& name, const std::string& value) {
    Attribute* attribute = Get(node, name);
    EXPECT_TRUE(attribute->GetKind() == Attribute::Kind::kChoice ? attribute->SetChoice(value, false)
                                                                 : attribute->SetString(value, false));
  }
  const Image* Evaluate(Node* node) {
    engine_.Evaluate({{node, 0}});
    return node->GetOutputImage(0);
  }
  static void WriteFile(const Image& image, const std::filesystem::path& file) {
    std::vector<std::string> notes;
    const ScEng::Status status = ScEng::WriteImageFile(image, file, {.type = ScEng::SampleType::kFloat}, notes);
    EXPECT_FALSE(status.IsError()) << status.GetMessage();
  }

  Engine engine_{ScEng::CreateHostCatalog()};
  TemporaryFolder folder_;
};

TEST_F(HostNodesTest, HaveTheirNumbersAndNames) {
  const std::pair<NodeType, const char*> kTypes[] = {
      {{10, 16, 5}, "ImageReaderNode"},   {{10, 16, 6}, "ImageWriterNode"}, {{10, 16, 10}, "ImageRectangleNode"},
      {{10, 16, 16}, "ImageCheckerNode"}, {{10, 16, 32}, "ImageWavesNode"}, {{10, 16, 40}, "ImageTerrainNode"},
      {{10, 16, 48}, "NumberNode"},       {{10, 16, 49}, "FlagNode"},       {{10, 16, 50}, "TextNode"},
      {{10, 16, 51}, "ImageRerouteNode"}};
  EXPECT_EQ(engine_.GetCatalog().GetDescriptors().size(), 10U);
  for (const auto& [type, name] : kTypes) {
    NodeInterface* descriptor = engine_.GetCatalog().Find(type);
    ASSERT_NE(descriptor, nullptr) << name;
    EXPECT_EQ(descriptor->GetNodeFactory()->GetTypeName(), name);
    EXPECT_EQ(descriptor->GetNodeFactory()->GetNodeType(), type);
    EXPECT_EQ(descriptor->GetLibraryName(), "");
    Node* node = Create(type);
    EXPECT_EQ(node->GetNodeType(), type);
    EXPECT_EQ(node->GetName(), descriptor->GetName());
  }
}

TEST_F(HostNodesTest, HaveTheirAttributesAndPlugs) {
  const std::pair<NodeType, std::vector<std::string>> kAttributes[] = {
      {{10, 16, 5},
       {"path", "color_mode", "range", "low", "high", "placement", "pin", "pivot", "samples", "part", "layer",
        "channels"}},
      {{10, 16, 6}, {"path", "type", "samples", "opacity", "metadata", "layer"}},
      {{10, 16, 10}, {"frame", "color"}},
      {{10, 16, 16}, {"frame", "rect_x_size", "rect_y_size", "color_00", "color_10", "color_01", "color_11"}},
      {{10, 16, 32}, {"frame", "height", "wavelength"}},
      {{10, 16, 40}, {"frame", "seed", "octaves", "wavelength"}},
      {{10, 16, 48}, {"value"}},
      {{10, 16, 49}, {"value"}},
      {{10, 16, 50}, {"value"}},
      {{10, 16, 51}, {}}};
  for (const auto& [type, names] : kAttributes) {
    Node* node = Create(type);
    std::vector<std::string> found;
    for (std::size_t i = 0; i < node->GetNumAttributes(); ++i) found.push_back(node->GetAttribute(i)->GetName());
    EXPECT_EQ(found, names);
  }
  const std::pair<NodeType, const char*> kOutputs[] = {
      {{10, 16, 5}, "image"},  {{10, 16, 10}, "image"}, {{10, 16, 16}, "image"},
      {{10, 16, 32}, "image"}, {{10, 16, 40}, "image"}, {{10, 16, 48}, "number"},
      {{10, 16, 49}, "flag"},  {{10, 16, 50}, "text"},  {{10, 16, 51}, "image"}};
  for (const auto& [type, name] : kOutputs) {
    Node* node = Create(type);
    ASSERT_EQ(node->GetOutplugs().size(), 1U);
    EXPECT_EQ(node->GetOutplugName(0), name);
  }
  Node* writer = Create({10, 16, 6});
  EXPECT_TRUE(writer->GetOutplugs().empty());
  EXPECT_TRUE(writer->IsSink());
  EXPECT_EQ(Get(writer, "type")->GetChoices(),
            (std::vector<std::string>{"auto", "float", "half", "uint16", "uint8", "int16"}));
  Node* reader = Create({10, 16, 5});
  EXPECT_EQ(Get(reader, "color_mode")->GetChoices(), (std::vector<std::string>{"auto", "color", "signed", "value"}));
  EXPECT_EQ(Get(reader, "color_mode")->GetValue().GetText(), "auto");
  EXPECT_EQ(Get(reader, "range")->GetValue().GetText(), "declared");
  EXPECT_EQ(Get(reader, "placement")->GetValue().GetText(), "file");
}

// ---- Generators ----

TEST_F(HostNodesTest, RectangleFillsItsFrame) {
  Node* node = Create(ScEng::kImageRectangleType);
  const Image* image = Evaluate(node);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->GetSizeX(), 64);
  EXPECT_EQ(image->GetSizeY(), 64);
  EXPECT_EQ(GetSamples(*image), std::vector<float>(64 * 64 * 4, 1.0F));

  SetFrame(node, -3.5, 4.75, 2.5, 1.75);
  Get(node, "color")->SetRgbo(0.25, -1.0, 3.0, 0.5, false);
  image = Evaluate(node);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->GetColorMode(), ColorMode::kColor);
  // Halves go down: 2.5 is 2, 1.75 is 2, -3.5 is -4.
  EXPECT_EQ(image->GetSizeX(), 2);
  EXPECT_EQ(image->GetSizeY(), 2);
  EXPECT_EQ(image->GetPinX(), -4);
  EXPECT_EQ(image->GetPinY(), 5);
  EXPECT_EQ(image->GetPivotX(), 0.0F);
  EXPECT_EQ(image->GetPivotY(), 0.0F);
  EXPECT_EQ(image->GetOutsideValue(), 0.0F);
  EXPECT_EQ(GetSamples(*image),
            (std::vector<float>{0.25F, -1, 3, 0.5F, 0.25F, -1, 3, 0.5F, 0.25F, -1, 3, 0.5F, 0.25F, -1, 3, 0.5F}));
}

TEST_F(HostNodesTest, CheckerChoosesByParityOfColumnAndRow) {
  Node* node = Create(ScEng::kImageCheckerType);
  // The corner does not move the cells.
  SetFrame(node, 5, 7, 7, 4);
  Get(node, "rect_x_size")->SetPoint(3, 99, false);
  Get(node, "rect_y_size")->SetPoint(99, 2, false);
  const char* const kNames[] = {"color_00", "color_10", "color_01", "color_11"};
  for (int i = 0; i < 4; ++i) Get(node, kNames[i])->SetRgbo(i, 0, 0, 1, false);
  const Image* image = Evaluate(node);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->GetPinX(), 5);
  EXPECT_EQ(image->GetPinY(), 7);
  // The first number of a colour's name is the parity of the column.
  const std::vector<int> expected{0, 0, 0, 1, 1, 1, 0,  //
                                  0, 0, 0, 1, 1, 1, 0,  //
                                  2, 2, 2, 3, 3, 3, 2,  //
                                  2, 2, 2, 3, 3, 3, 2};
  std::vector<int> found;
  for (std::size_t i = 0; i < image->GetNumSamples(); i += 4) {
    found.push_back(static_cast<int>(image->GetConstArray()[i]));
    EXPECT_EQ(image->GetConstArray()[i + 3], 1.0F);
  }
  EXPECT_EQ(found, expected);
}

TEST_F(HostNodesTest, CheckerWithoutCellSizeStillEnds) {
  Node* node = Create(ScEng::kImageCheckerType);
  SetFrame(node, 0, 0, 2, 2);
  Get(node, "rect_x_size")->SetPoint(0, 0, false);
  Get(node, "rect_y_size")->SetPoint(-5, -5, false);
  EXPECT_NE(Evaluate(node), nullptr);
}

TEST_F(HostNodesTest, WavesAreRingsAroundTheCenter) {
  Node* node = Create(ScEng::kImageWavesType);
  SetFrame(node, 10, 20, 9, 9);
  SetNumber(node, "height", 2.0);
  SetNumber(node, "wavelength", 4.0);
  const Image* image = Evaluate(node);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->GetColorMode(), ColorMode::kValue);
  EXPECT_EQ(image->GetValueLow(), -2.0F);
  EXPECT_EQ(image->GetValueHigh(), 2.0F);
  EXPECT_EQ(image->GetPinX(), 10);
  EXPECT_EQ(image->GetPinY(), 20);
  // The centre is that of pixel (4, 4); a quarter wave is one pixel.
  const auto at = [&](int x, int y) { return image->GetConstArray()[y * 9 + x]; };
  EXPECT_EQ(at(4, 4), 0.0F);
  EXPECT_NEAR(at(5, 4), 2.0F, 1e-6F);
  EXPECT_NEAR(at(3, 4), 2.0F, 1e-6F);
  EXPECT_NEAR(at(4, 6), 0.0F, 1e-6F);
  EXPECT_NEAR(at(4, 1), -2.0F, 1e-6F);
  EXPECT_NEAR(at(8, 4), 0.0F, 1e-6F);
  // Three to the right and four down are five pixels away.
  EXPECT_NEAR(at(7, 8), 2.0F, 1e-6F);
}

TEST_F(HostNodesTest, WavesOfAnEvenFrameHaveTheirCenterBetweenPixels) {
  Node* node = Create(ScEng::kImageWavesType);
  SetFrame(node, 0, 0, 2, 1);
  SetNumber(node, "wavelength", 2.0);
  const Image* image = Evaluate(node);
  ASSERT_NE(image, nullptr);
  // Half a pixel to either side is a quarter wave.
  EXPECT_NEAR(image->GetConstArray()[0], 1.0F, 1e-6F);
  EXPECT_NEAR(image->GetConstArray()[1], 1.0F, 1e-6F);
}

TEST_F(HostNodesTest, TerrainSpansZeroToOneExactly) {
  Node* node = Create(ScEng::kImageTerrainType);
  for (const auto& [width, height, wavelength] :
       {std::tuple{64, 64, 32.0}, {97, 53, 17.0}, {1, 40, 8.0}, {128, 3, 500.0}}) {
    SetFrame(node, 0, 0, width, height);
    SetNumber(node, "wavelength", wavelength);
    const Image* image = Evaluate(node);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->GetColorMode(), ColorMode::kValue);
    EXPECT_EQ(image->GetValueLow(), 0.0F);
    EXPECT_EQ(image->GetValueHigh(), 1.0F);
    const std::vector<float> samples = GetSamples(*image);
    EXPECT_EQ(*std::min_element(samples.begin(), samples.end()), 0.0F);
    EXPECT_EQ(*std::max_element(samples.begin(), samples.end()), 1.0F);
  }
}

TEST_F(HostNodesTest, TerrainTiles) {
  Node* node = Create(ScEng::kImageTerrainType);
  constexpr int kWidth = 96;
  constexpr int kHeight = 64;
  SetFrame(node, 0, 0, kWidth, kHeight);
  SetNumber(node, "wavelength", 32.0);
  SetNumber(node, "octaves", 2.0);
  const Image* image = Evaluate(node);
  ASSERT_NE(image, nullptr);
  const auto at = [&](int x, int y) { return image->GetConstArray()[y * kWidth + x]; };
  // Across the edges the heights step no more than inside.
  float inside = 0.0F;
  float across = 0.0F;
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 1; x < kWidth; ++x) inside = std::max(inside, std::abs(at(x, y) - at(x - 1, y)));
    across = std::max(across, std::abs(at(0, y) - at(kWidth - 1, y)));
  }
  for (int x = 0; x < kWidth; ++x) {
    for (int y = 1; y < kHeight; ++y) inside = std::max(inside, std::abs(at(x, y) - at(x, y - 1)));
    across = std::max(across, std::abs(at(x, 0) - at(x, kHeight - 1)));
  }
  EXPECT_LE(across, inside);
  EXPECT_LT(inside, 0.25F);
}

TEST_F(HostNodesTest, TerrainIsTheSameOnAnyNumberOfThreads) {
  std::vector<std::vector<float>> results;
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    Node* node = Create(ScEng::kImageTerrainType);
    SetFrame(node, 0, 0, 201, 133);
    results.push_back(GetSamples(*Evaluate(node)));
  }
  EXPECT_TRUE(SameSamples(results[0], results[1]));
  EXPECT_TRUE(SameSamples(results[0], results[2]));
}

TEST_F(HostNodesTest, TerrainFollowsItsSeed) {
  std::vector<std::vector<float>> results;
  for (const double seed : {0.0, 1.0, 2.0, 4294967295.0, 1.0}) {
    Node* node = Create(ScEng::kImageTerrainType);
    SetFrame(node, 0, 0, 48, 48);
    SetNumber(node, "seed", seed);
    results.push_back(GetSamples(*Evaluate(node)));
  }
  for (std::size_t a = 0; a < 4; ++a) {
    for (std::size_t b = a + 1; b < 4; ++b) EXPECT_NE(results[a], results[b]) << a << " and " << b;
  }
  EXPECT_EQ(results[1], results[4]);
}

TEST_F(HostNodesTest, DisabledGeneratorsHaveNoOutput) {
  for (const NodeType& type : {ScEng::kImageRectangleType, ScEng::kImageCheckerType, ScEng::kImageWavesType,
                               ScEng::kImageTerrainType, ScEng::kImageReaderType}) {
    Node* node = Create(type);
    node->SetEnabled(false);
    EXPECT_EQ(Evaluate(node), nullptr);
    EXPECT_FALSE(node->IsInError());
  }
}

TEST_F(HostNodesTest, GeneratorsReportFramesThatAreTooLarge) {
  const MaxSizeScope scope(100, 50);
  for (const NodeType& type :
       {ScEng::kImageRectangleType, ScEng::kImageCheckerType, ScEng::kImageWavesType, ScEng::kImageTerrainType}) {
    Node* node = Create(type);
    SetFrame(node, 0, 0, 101, 50);
    EXPECT_EQ(Evaluate(node), nullptr);
    EXPECT_EQ(node->GetState(), Node::State::kError);
    EXPECT_EQ(node->GetStateMessage(), Testing::kOversize);
    SetFrame(node, 0, 0, 100, 50);
    EXPECT_NE(Evaluate(node), nullptr);
    SetFrame(node, 0, 0, -5, 0);
    const Image* empty = Evaluate(node);
    EXPECT_TRUE(empty == nullptr || empty->GetNumSamples() == 0);
  }
}

TEST_F(HostNodesTest, GeneratorsDropTheirImageOnEvent11) {
  Node* node = Create(ScEng::kImageRectangleType);
  EXPECT_NE(Evaluate(node), nullptr);
  NodeEvent event;
  event.kind = 3;
  EXPECT_TRUE(node->OnProcessEvent(event));
  EXPECT_NE(node->GetOutputImage(0), nullptr);
  event.kind = 11;
  EXPECT_TRUE(node->OnProcessEvent(event));
  EXPECT_TRUE(node->OnProcessEvent(event));
  EXPECT_EQ(node->GetOutputImage(0), nullptr);
  EXPECT_EQ(node->GetOutputImage(1), nullptr);
}

// ---- Reader and writer ----

TEST_F(HostNodesTest, ReaderReadsItsFile) {
  const auto image = MakeImage(3, 1, ColorMode::kValue, {0.5F, -2.0F, 7.0F});
  image->SetValueLowHigh(-1.0F, 5.0F);
  image->SetPin(4, 5);
  image->SetPivot(0.5F, 1.0F);
  WriteFile(*image, folder_ / "a.exr");
  Node* reader = Create(ScEng::kImageReaderType);
  SetText(reader, "path", (folder_ / "a.exr").string());
  const Image* read = Evaluate(reader);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(GetSamples(*read), GetSamples(*image));
  EXPECT_EQ(read->GetValueLow(), -1.0F);
  EXPECT_EQ(read->GetValueHigh(), 5.0F);
  EXPECT_EQ(read->GetPinX(), 4);
  EXPECT_EQ(read->GetPivotY(), 1.0F);
  EXPECT_EQ(reader->GetState(), Node::State::kReady);
}

TEST_F(HostNodesTest, ReaderChoosesTheRange) {
  const auto image = MakeImage(5, 1, ColorMode::kValue, {kNan, -2.0F, 7.0F, kInfinity, -kInfinity});
  image->SetValueLowHigh(-1.0F, 5.0F);
  WriteFile(*image, folder_ / "a.exr");
  Node* reader = Create(ScEng::kImageReaderType);
  SetText(reader, "path", (folder_ / "a.exr").string());
  SetText(reader, "range", "measured");
  const Image* read = Evaluate(reader);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(read->GetValueLow(), -2.0F);
  EXPECT_EQ(read->GetValueHigh(), 7.0F);
  SetText(reader, "range", "custom");
  SetNumber(reader, "low", -30.0);
  SetNumber(reader, "high", 60.5);
  read = Evaluate(reader);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(read->GetValueLow(), -30.0F);
  EXPECT_EQ(read->GetValueHigh(), 60.5F);
}

TEST_F(HostNodesTest, ReaderChoosesModeAndPlace) {
  const auto image = MakeImage(1, 1, ColorMode::kColor, {0.5F, 0.25F, 0.75F, 1.0F});
  image->SetPin(4, 5);
  WriteFile(*image, folder_ / "a.exr");
  Node* reader = Create(ScEng::kImageReaderType);
  SetText(reader, "path", (folder_ / "a.exr").string());
  SetText(reader, "placement", "custom");
  Get(reader, "pin")->SetPoint(2.5, -7.25, false);
  Get(reader, "pivot")->SetPoint(0.5, 0.125, false);
  const std::pair<const char*, unsigned> kModes[] = {{"auto", 0U}, {"color", 0U}, {"signed", 1U}, {"value", 2U}};
  for (const auto& [word, mode] : kModes) {
    SetText(reader, "color_mode", word);
    const Image* read = Evaluate(reader);
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->GetColorMode(), mode) << word;
    EXPECT_EQ(read->GetPinX(), 2);
    EXPECT_EQ(read->GetPinY(), -7);
    EXPECT_EQ(read->GetPivotX(), 0.5F);
    EXPECT_EQ(read->GetPivotY(), 0.125F);
  }
  EXPECT_EQ(Evaluate(reader)->GetConstArray()[0], 0.5F);
}

TEST_F(HostNodesTest, ReaderTakesItsPathFromItsFolderWithEitherSlash) {
  std::filesystem::create_directory(folder_ / "sub");
  WriteFile(*MakeImage(1, 1, ColorMode::kValue, {0.5F}), folder_ / "sub" / "a.exr");
  Node* reader = Create(ScEng::kImageReaderType);
  Get(reader, "path")->SetFolder(folder_.Path());
  SetText(reader, "path", "sub\\a.exr");
  EXPECT_NE(Evaluate(reader), nullptr);
  SetText(reader, "path", "sub/a.exr");
  EXPECT_NE(Evaluate(reader), nullptr);
}

TEST_F(HostNodesTest, ReaderFailsByItsFile) {
  Node* reader = Create(ScEng::kImageReaderType);
  EXPECT_EQ(Evaluate(reader), nullptr);
  EXPECT_EQ(reader->GetState(), Node::State::kError);
  SetText(reader, "path", (folder_ / "none.exr").string());
  EXPECT_EQ(Evaluate(reader), nullptr);
  EXPECT_EQ(reader->GetState(), Node::State::kFileError);
  EXPECT_TRUE(Contains(reader->GetStateMessage(), "none.exr"));
  const float fill[] = {0.5F};
  WriteFile(Image(30, 30, ColorMode::kValue, fill), folder_ / "large.exr");
  SetText(reader, "path", (folder_ / "large.exr").string());
  const MaxSizeScope scope(29, 29);
  EXPECT_EQ(Evaluate(reader), nullptr);
  EXPECT_EQ(reader->GetState(), Node::State::kFileError);
}

TEST_F(HostNodesTest, WriterWritesItsInput) {
  Node* source = Create(ScEng::kImageRectangleType);
  SetFrame(source, 0, 0, 2, 1);
  Get(source, "color")->SetRgbo(0.2, 2.0, 0.6, 1.0, false);
  Node* writer = Create(ScEng::kImageWriterType);
  SetText(writer, "path", (folder_ / "a.png").string());
  SetText(writer, "type", "uint8");
  EXPECT_TRUE(engine_.ConnectNodes(source, "image", 0, writer, "image", 0));
  engine_.Evaluate({{writer, 0}});
  // The colour above one is cut, of which the node tells.
  EXPECT_EQ(writer->GetState(), Node::State::kWarning);
  EXPECT_TRUE(Contains(writer->GetStateMessage(), "2 samples"));
  ScEng::Status status;
  std::vector<std::string> notes;
  const auto read = ScEng::ReadImageFile(folder_ / "a.png", {}, status, notes);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(GetSamples(*read), (std::vector<float>{0.2F, 1.0F, 0.6F, 1.0F, 0.2F, 1.0F, 0.6F, 1.0F}));
}

TEST_F(HostNodesTest, WriterFailsByWhatItLacks) {
  Node* writer = Create(ScEng::kImageWriterType);
  engine_.Evaluate({{writer, 0}});
  EXPECT_EQ(writer->GetState(), Node::State::kError);
  Node* source = Create(ScEng::kImageRectangleType);
  EXPECT_TRUE(engine_.ConnectNodes(source, "image", 0, writer, "image", 0));
  engine_.Evaluate({{writer, 0}});
  EXPECT_EQ(writer->GetState(), Node::State::kError);
  EXPECT_TRUE(Contains(writer->GetStateMessage(), "path"));
  SetText(writer, "path", (folder_ / "none" / "a.exr").string());
  engine_.Evaluate({{writer, 0}});
  EXPECT_EQ(writer->GetState(), Node::State::kFileError);
  writer->SetEnabled(false);
  SetText(writer, "path", (folder_ / "a.exr").string());
  engine_.Evaluate({{writer, 0}});
  EXPECT_FALSE(writer->IsInError());
  EXPECT_TRUE(folder_.List().empty());
}

// ---- Nodes that feed attributes ----

TEST_F(HostNodesTest, FeedNodesDeliverTheirValue) {
  Node* number = Create(ScEng::kNumberType);
  SetNumber(number, "value", 1e300);
  engine_.Evaluate({{number, 0}});
  EXPECT_EQ(number->GetOutputValue(0).GetNumber(), 1e300);
  EXPECT_FALSE(number->GetOutputValue(1).HasValue());
  Node* flag = Create(ScEng::kFlagType);
  Get(flag, "value")->SetFlag(true, false);
  engine_.Evaluate({{flag, 0}});
  EXPECT_TRUE(flag->GetOutputValue(0).GetFlag());
  Node* text = Create(ScEng::kTextType);
  SetText(text, "value", "measured");
  engine_.Evaluate({{text, 0}});
  EXPECT_EQ(text->GetOutputValue(0).GetText(), "measured");
  for (Node* node : {number, flag, text}) {
    node->SetEnabled(false);
    engine_.Evaluate({{node, 0}});
    EXPECT_FALSE(node->GetOutputValue(0).HasValue());
  }
}

TEST_F(HostNodesTest, FeedNodesFeedAttributesWithoutBounds) {
  Node* number = Create(ScEng::kNumberType);
  Node* waves = Create(ScEng::kImageWavesType);
  SetFrame(waves, 0, 0, 1, 1);
  SetNumber(number, "value", 4e9);
  EXPECT_TRUE(engine_.ConnectNodes(number, "number", 0, waves, "height", 0));
  const Image* image = Evaluate(waves);
  ASSERT_NE(image, nullptr);
  // The attribute itself ends at 1e9.
  EXPECT_EQ(image->GetValueHigh(), 4e9F);
  number->SetEnabled(false);
  image = Evaluate(waves);
  ASSERT_NE(image, nullptr);
  // Nothing reads as 0.
  EXPECT_EQ(image->GetValueHigh(), 0.0F);
}

TEST_F(HostNodesTest, TextFeedsStringsAndChoices) {
  const auto image = MakeImage(1, 1, ColorMode::kValue, {3.0F});
  WriteFile(*image, folder_ / "a.exr");
  Node* path = Create(ScEng::kTextType);
  Node* range = Create(ScEng::kTextType);
  Node* reader = Create(ScEng::kImageReaderType);
  SetText(path, "value", (folder_ / "a.exr").string());
  SetText(range, "value", "measured");
  EXPECT_TRUE(engine_.ConnectNodes(path, "text", 0, reader, "path", 0));
  EXPECT_TRUE(engine_.ConnectNodes(range, "text", 0, reader, "range", 0));
  const Image* read = Evaluate(reader);
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(read->GetValueLow(), 3.0F);
  EXPECT_FALSE(engine_.ConnectNodes(path, "text", 0, reader, "low", 0));
}

// ---- The node that hands its image on ----

TEST_F(HostNodesTest, RerouteHandsOnTheImageItself) {
  Node* source = Create(ScEng::kImageTerrainType);
  Node* first = Create(ScEng::kImageRerouteType);
  Node* second = Create(ScEng::kImageRerouteType);
  EXPECT_TRUE(engine_.ConnectNodes(source, "image", 0, first, "image", 0));
  EXPECT_TRUE(engine_.ConnectNodes(first, "image", 0, second, "image", 0));
  // All three are asked for, so none drops its image when the next has used it.
  engine_.Evaluate({{source, 0}, {first, 0}, {second, 0}});
  const Image* image = source->GetOutputImage(0);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(first->GetOutputImage(0), image);
  EXPECT_EQ(second->GetOutputImage(0), image);
  EXPECT_EQ(image->GetRefCount(), 3U);
  EXPECT_EQ(second->GetState(), Node::State::kReady);
}

TEST_F(HostNodesTest, RerouteHandsOnWhileDisabled) {
  Node* source = Create(ScEng::kImageCheckerType);
  Node* reroute = Create(ScEng::kImageRerouteType);
  EXPECT_TRUE(engine_.ConnectNodes(source, "image", 0, reroute, "image", 0));
  reroute->SetEnabled(false);
  engine_.Evaluate({{source, 0}, {reroute, 0}});
  ASSERT_NE(source->GetOutputImage(0), nullptr);
  EXPECT_EQ(reroute->GetOutputImage(0), source->GetOutputImage(0));
}

TEST_F(HostNodesTest, RerouteKeepsTheImageAfterItsMakerHasDroppedIt) {
  Node* source = Create(ScEng::kImageRectangleType);
  Node* reroute = Create(ScEng::kImageRerouteType);
  EXPECT_TRUE(engine_.ConnectNodes(source, "image", 0, reroute, "image", 0));
  ImagePtr image;
  Engine::Options options;
  options.release_results = true;
  options.on_evaluated = [&](Node& node, std::size_t, std::size_t) {
    if (&node == reroute) image.Reset(reroute->GetOutputImage(0));
  };
  engine_.Evaluate({{reroute, 0}}, options);
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(source->GetOutputImage(0), nullptr);
  EXPECT_EQ(reroute->GetOutputImage(0), nullptr);
  EXPECT_EQ(image->GetRefCount(), 1U);
  EXPECT_EQ(GetSamples(*image), std::vector<float>(64 * 64 * 4, 1.0F));
}

TEST_F(HostNodesTest, RerouteWithoutAnInputImageHasNone) {
  Node* reroute = Create(ScEng::kImageRerouteType);
  EXPECT_EQ(Evaluate(reroute), nullptr);
  EXPECT_FALSE(reroute->IsInError());
  Node* source = Create(ScEng::kImageRectangleType);
  EXPECT_TRUE(engine_.ConnectNodes(source, "image", 0, reroute, "image", 0));
  EXPECT_NE(Evaluate(reroute), nullptr);
  // An earlier image does not stay.
  source->SetEnabled(false);
  EXPECT_EQ(Evaluate(reroute), nullptr);
  EXPECT_FALSE(reroute->IsInError());
  EXPECT_EQ(reroute->HasImage(0, {true}), true);
  EXPECT_EQ(reroute->HasImage(0, {false}), false);
}

TEST_F(HostNodesTest, RerouteReadsItsInputSampleBySample) {
  const Reach reach = Create(ScEng::kImageRerouteType)->GetReach({PlugValue()});
  EXPECT_EQ(reach.kind, Reach::Kind::kSamples);
}

TEST_F(HostNodesTest, RerouteHandsOnMetadata) {
  const auto image = MakeImage(2, 1, ColorMode::kValue, {0.5F, 2.0F});
  image->SetValueLowHigh(-1.0F, 5.0F);
  image->SetPin(4, 5);
  auto metadata = std::make_shared<ScEng::ImageMetadata>();
  metadata->had_opacity = false;
  image->SetMetadata(metadata);
  Node* source = Create(ScEng::kImageRectangleType);
  Node* reroute = Create(ScEng::kImageRerouteType);
  EXPECT_TRUE(engine_.SetOutputOverride(source, 0, image));
  EXPECT_TRUE(engine_.ConnectNodes(source, "image", 0, reroute, "image", 0));
  const Image* handed_on = Evaluate(reroute);
  ASSERT_EQ(handed_on, image.Get());
  EXPECT_EQ(handed_on->GetMetadata(), metadata);
  EXPECT_EQ(handed_on->GetPinX(), 4);
  EXPECT_EQ(handed_on->GetValueHigh(), 5.0F);
}

}  // namespace
