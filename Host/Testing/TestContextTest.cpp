// SPDX-License-Identifier: Apache-2.0
#include "Host/Testing/TestContext.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Host/Files/ImageFile.h"
#include "Host/Nodes/HostNodes.h"
#include "Host/Testing/TestSession.h"
#include "Host/Tools/Engine.h"
#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::TestCaseReport;
using ScEng::TestSession;
using Testing::Contains;
using Testing::GetSamples;
using Testing::SameSamples;
using Testing::TemporaryFolder;
using Testing::WorkingFolder;

/// A context in a folder of its own, with the host's node types on the process's engine.
class TestContextTest : public testing::Test {
 protected:
  TestContextTest() {
    Engine::Get()->SetCatalog(ScEng::CreateHostCatalog());
    TestSession::Get().Start({});
  }
  ~TestContextTest() override {
    Engine::Get()->SetCatalog(nullptr);
    TestSession::Get().Start({});
  }

  /// Runs one case and answers what was printed.
  std::string Render(TestContext& context, Node* node, const std::string& name, unsigned rendering = 0) {
    context.case_name = name;
    testing::internal::CaptureStdout();
    answer_ = context.DoTest(node, 0, rendering);
    return testing::internal::GetCapturedStdout();
  }

  static const TestCaseReport& LastCase() { return TestSession::Get().GetReports().back().cases.back(); }

  static ImagePtr Read(const std::filesystem::path& file) {
    ScEng::Status status;
    std::vector<std::string> notes;
    auto image = ScEng::ReadImageFile(file, {}, status, notes);
    EXPECT_NE(image, nullptr) << status.GetMessage();
    return image;
  }

  static Node* CreateWaves() {
    Node* waves = Engine::Get()->CreateNode(ScEng::kImageWavesType);
    waves->GetAttribute("frame")->SetFrame(2.0, 3.0, 4.0, 4.0, false);
    return waves;
  }

  TemporaryFolder folder_;
  WorkingFolder working_folder_{folder_.Path()};
  TestContext context_{"some/where/", "A Title"};
  bool answer_ = false;
};

TEST_F(TestContextTest, AnnouncesTheTestAndMakesItsDirectory) {
  testing::internal::CaptureStdout();
  context_.InitializeTest();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "A Title\n");
  EXPECT_TRUE(std::filesystem::is_directory(folder_ / "some/where"));
  ASSERT_EQ(TestSession::Get().GetReports().size(), 1U);
  EXPECT_EQ(TestSession::Get().GetReports()[0].title, "A Title");
  EXPECT_EQ(TestSession::Get().GetReports()[0].directory, "some/where/");
}

TEST_F(TestContextTest, HasTheToleranceOfTheHost) {
  EXPECT_EQ(context_.mean_tolerance, 0.005F);
  EXPECT_EQ(context_.largest_tolerance, 0.01F);
}

TEST_F(TestContextTest, WritesTheImageWithItsHeaderAndAPicture) {
  context_.InitializeTest();
  Node* waves = CreateWaves();
  const std::string line = Render(context_, waves, "rings");
  EXPECT_TRUE(answer_);
  EXPECT_TRUE(Contains(line, "rings: ")) << line;
  EXPECT_TRUE(Contains(line, " ms, passed\n")) << line;
  const auto image = Read("some/where/rings.exr");
  EXPECT_TRUE(SameSamples(GetSamples(*waves->GetOutputImage(0)), GetSamples(*image)));
  EXPECT_EQ(image->GetPinX(), 2);
  EXPECT_EQ(image->GetValueLow(), -1.0F);
  EXPECT_EQ(Read("some/where/rings.png")->GetSizeX(), 4);
  EXPECT_TRUE(LastCase().passed);
  EXPECT_FALSE(LastCase().difference.has_value());
}

TEST_F(TestContextTest, NumbersFurtherRenderings) {
  context_.InitializeTest();
  Render(context_, CreateWaves(), "rings", 2);
  EXPECT_TRUE(std::filesystem::exists("some/where/rings-2.exr"));
  EXPECT_EQ(LastCase().name, "rings-2");
}

TEST_F(TestContextTest, FailsWithoutANodeAndWithoutAnOutput) {
  context_.InitializeTest();
  EXPECT_TRUE(Contains(Render(context_, nullptr, "nobody"), "failed: there is no node"));
  EXPECT_FALSE(answer_);
  Node* waves = CreateWaves();
  waves->SetEnabled(false);
  EXPECT_TRUE(Contains(Render(context_, waves, "nothing"), "failed: the node has no output"));
  EXPECT_FALSE(answer_);
  EXPECT_FALSE(std::filesystem::exists("some/where/nothing.exr"));
}

TEST_F(TestContextTest, FailsWithTheMessageOfANodeInError) {
  context_.InitializeTest();
  Node* reader = Engine::Get()->CreateNode(ScEng::kImageReaderType);
  reader->GetAttribute("path")->SetString("nowhere.png", false);
  EXPECT_TRUE(Contains(Render(context_, reader, "lost"), "nowhere.png"));
  EXPECT_FALSE(answer_);
  EXPECT_TRUE(LastCase().is_file_problem);
}

TEST_F(TestContextTest, FailsWhereItCannotWrite) {
  Testing::WriteText("some", "a file where the folder should be");
  testing::internal::CaptureStdout();
  context_.InitializeTest();
  testing::internal::GetCapturedStdout();
  EXPECT_TRUE(Contains(Render(context_, CreateWaves(), "rings"), "the folder \"some/where\" cannot be made"));
  EXPECT_FALSE(answer_);
  EXPECT_TRUE(LastCase().is_file_problem);
}

TEST_F(TestContextTest, ComparesWithTheReferenceOfTheSession) {
  context_.InitializeTest();
  Node* waves = CreateWaves();
  Render(context_, waves, "rings");
  std::filesystem::create_directories("old/where");
  std::filesystem::rename("some/where/rings.exr", "old/where/rings.exr");
  TestSession::Get().Start({.reference = "old", .inputs = {}});
  EXPECT_TRUE(Contains(Render(context_, waves, "rings"), "passed, at most 0 from the reference"));
  EXPECT_TRUE(Contains(Render(context_, waves, "circles"), "passed, without a reference"));

  waves->GetAttribute("height")->SetNumber(1.5, false);
  EXPECT_TRUE(Contains(Render(context_, waves, "rings"), "failed: it differs from the reference"));
  EXPECT_FALSE(answer_);
  ASSERT_TRUE(LastCase().difference.has_value());
  EXPECT_GT(LastCase().difference->largest, 0.01);

  context_.mean_tolerance = 1.0F;
  context_.largest_tolerance = 1.0F;
  Render(context_, waves, "rings");
  EXPECT_TRUE(answer_);
}

TEST_F(TestContextTest, ReadsAReferenceThatItOverwritesBeforehand) {
  context_.InitializeTest();
  Node* waves = CreateWaves();
  Render(context_, waves, "rings");
  TestSession::Get().Start({.reference = folder_.Path(), .inputs = {}});
  EXPECT_TRUE(Contains(Render(context_, waves, "rings"), "passed, at most 0 from the reference"));
  waves->GetAttribute("height")->SetNumber(1.5, false);
  EXPECT_TRUE(Contains(Render(context_, waves, "rings"), "failed: it differs from the reference"));
}

TEST_F(TestContextTest, TakesInputsFromTheWorkingFolderFirst) {
  std::filesystem::create_directories("shipped/input");
  std::vector<std::string> notes;
  const auto write = [&](const std::string& file, float value) {
    const Image image(1, 1, ColorMode::kValue, &value);
    EXPECT_FALSE(ScEng::WriteImageFile(image, file, {.type = ScEng::SampleType::kFloat}, notes).IsError());
  };
  write("shipped/input/pixel.exr", 7.0F);
  TestSession::Get().Start({.reference = {}, .inputs = folder_ / "shipped"});
  context_.InitializeTest();
  Node* reader = Engine::Get()->CreateNode(ScEng::kImageReaderType);
  reader->GetAttribute("path")->SetString("input\\pixel.exr", false);
  Render(context_, reader, "shipped");
  EXPECT_EQ(Read("some/where/shipped.exr")->GetConstArray()[0], 7.0F);

  std::filesystem::create_directories("input");
  write("input/pixel.exr", 5.0F);
  reader->GetAttribute("path")->SetString("input/pixel.exr", false);
  Render(context_, reader, "own");
  EXPECT_EQ(Read("some/where/own.exr")->GetConstArray()[0], 5.0F);
}

TEST(TestSessionTest, FindsAReferenceBelowAnyPartOfTheDirectory) {
  const TemporaryFolder folder;
  TestSession& session = TestSession::Get();
  session.Start({.reference = folder.Path(), .inputs = {}});
  EXPECT_EQ(session.FindReference("a/b/", "name"), "");
  Testing::WriteText(folder / "name.exr", "flat");
  EXPECT_EQ(session.FindReference("a/b/", "name"), folder / "name.exr");
  std::filesystem::create_directories(folder / "a/b");
  Testing::WriteText(folder / "a/b/name.exr", "whole");
  EXPECT_EQ(session.FindReference("a/b/", "name"), folder / "a/b/name.exr");
  EXPECT_EQ(session.FindReference("a/b", "name"), folder / "a/b/name.exr");
  std::filesystem::create_directories(folder / "c");
  Testing::WriteText(folder / "c/name.exr", "last folder");
  EXPECT_EQ(session.FindReference("b/c", "name"), folder / "c/name.exr");
  session.Start({});
  EXPECT_EQ(session.FindReference("a/b", "name"), "");
}

}  // namespace
