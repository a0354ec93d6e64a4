// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Host/Util/Cancellation.h"
#include "Tests/Support/DocumentTesting.h"
#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::Findings;
using ScEng::GraphDocument;
using ScEng::RefPtr;
using ScEng::RunFailure;
using ScEng::RunReport;
using ScEng::Status;
using Testing::Contains;
using Testing::GetCatalog;
using Testing::GetSamples;
using Testing::MakeImage;
using Testing::MakeText;
using Testing::TemporaryFolder;

class DocumentEvaluationTest : public testing::Test {
 protected:
  void LoadGood(const std::string& text) {
    Findings findings;
    document_.LoadText(text, folder_.Path(), "graph.json", findings);
    EXPECT_TRUE(findings.errors.empty()) << findings.errors[0];
  }
  static RefPtr<Image> MakeValue(float value) { return MakeImage(1, 1, ColorMode::kValue, {value}); }
  std::vector<float> Evaluate(const std::string& plug) {
    RunReport report;
    const RefPtr<Image> image = document_.Evaluate(plug, report);
    EXPECT_TRUE(report.findings.errors.empty()) << report.findings.errors[0];
    EXPECT_EQ(static_cast<bool>(image), report.findings.errors.empty());
    return image ? GetSamples(*image) : std::vector<float>();
  }
  std::vector<float> ReadSamples(const std::string& name) {
    Status status;
    std::vector<std::string> notes;
    const auto image = ScEng::ReadImageFile(folder_ / name, {}, status, notes);
    EXPECT_TRUE(image) << status.GetMessage();
    return image ? GetSamples(*image) : std::vector<float>();
  }

  TemporaryFolder folder_;
  GraphDocument document_{GetCatalog()};
};

// A reader without a file, and what is computed from it.
constexpr const char* kNodes =
    "{'id': 'r', 'type': 'ImageReaderNode'}, {'id': 'add', 'type': 'ImageValueAddNode', 'attributes': {'constant': "
    "0.5}}";
constexpr const char* kLink = "{'from': 'r.image', 'to': 'add.image'}";

TEST_F(DocumentEvaluationTest, ImagesStandInForOutputs) {
  LoadGood(MakeText(kNodes, kLink, "{'from': 'add.image', 'path': 'a.exr'}"));
  Findings findings;
  document_.CheckComplete(findings);
  EXPECT_EQ(findings.errors.size(), 1U);
  EXPECT_FALSE(document_.SetSource("r.image", MakeValue(2.0F)).IsError());
  findings = {};
  document_.CheckComplete(findings);
  EXPECT_TRUE(findings.errors.empty());
  EXPECT_EQ(Evaluate("add.image"), (std::vector<float>{2.5F}));
  EXPECT_EQ(Evaluate("r.image"), (std::vector<float>{2.0F}));
  EXPECT_FALSE(document_.SetSource("r.image", MakeValue(-1.0F)).IsError());
  EXPECT_EQ(Evaluate("add.image"), (std::vector<float>{-0.5F}));
  EXPECT_FALSE(document_.SetSource("add.image", MakeValue(9.0F)).IsError());
  EXPECT_EQ(Evaluate("add.image"), (std::vector<float>{9.0F}));
  EXPECT_FALSE(document_.SetSource("add.image", {}).IsError());
  EXPECT_EQ(Evaluate("add.image"), (std::vector<float>{-0.5F}));
  // Without the image the reader is on its own again.
  EXPECT_FALSE(document_.SetSource("r.image", {}).IsError());
  RunReport report;
  EXPECT_FALSE(document_.Evaluate("add.image", report));
  ASSERT_EQ(report.findings.errors.size(), 1U);
  EXPECT_TRUE(Contains(report.findings.errors[0], "\"r\""));
}

TEST_F(DocumentEvaluationTest, RunsWriteFromImagesThatStandIn) {
  LoadGood(MakeText(kNodes, kLink, "{'from': 'add.image', 'path': 'a.exr'}, {'from': 'r.image', 'path': 'r.exr'}"));
  EXPECT_FALSE(document_.SetSource("r.image", MakeValue(2.0F)).IsError());
  const RunReport report = document_.Run();
  EXPECT_EQ(report.failure, RunFailure::kNone);
  EXPECT_EQ(ReadSamples("a.exr"), (std::vector<float>{2.5F}));
  EXPECT_EQ(ReadSamples("r.exr"), (std::vector<float>{2.0F}));
  EXPECT_TRUE(report.outputs[1].written);
}

TEST_F(DocumentEvaluationTest, RunsWriteWhatIsUpToDate) {
  LoadGood(MakeText("{'id': 'r', 'type': 'ImageRectangleNode'}, {'id': 'add', 'type': 'ImageValueAddNode'}", kLink,
                    "{'from': 'add.image', 'path': 'a.exr'}, {'from': 'r.image', 'path': 'r.exr'}"));
  const std::vector<float> sum = Evaluate("add.image");
  const RunReport report = document_.Run();
  EXPECT_EQ(report.failure, RunFailure::kNone);
  EXPECT_TRUE(report.outputs[0].written);
  EXPECT_TRUE(report.outputs[1].written);
  EXPECT_EQ(ReadSamples("a.exr"), sum);
}

TEST_F(DocumentEvaluationTest, RunsTellWhatFailedInAnEarlierEvaluation) {
  LoadGood(MakeText(kNodes, kLink, "{'from': 'add.image', 'path': 'a.exr'}"));
  document_.FindNode("r")->GetAttribute("path")->SetString((folder_ / "none.exr").string(), false);
  RunReport kept;
  EXPECT_FALSE(document_.Evaluate("add.image", kept));
  ASSERT_EQ(kept.findings.errors.size(), 1U);
  const RunReport run = document_.Run();
  EXPECT_EQ(run.findings.errors, kept.findings.errors);
  EXPECT_EQ(run.failure, RunFailure::kFile);
}

TEST_F(DocumentEvaluationTest, AnOutputWithoutAnImageNamesTheInputThatIsNotConnected) {
  // Of three nodes in a row the first one lacks its image; the last one has several outputs.
  LoadGood(
      MakeText("{'id': 'clamp', 'type': 'ImageValueClampNode'}, {'id': 'relief', 'type': 'ImageReliefNode'}, "
               "{'id': 'slope', 'type': 'ImageComputeGradientNode'}",
               "{'from': 'clamp.image', 'to': 'relief.image'}, {'from': 'relief.image', 'to': 'slope.image'}",
               "{'from': 'slope.output_x', 'path': 'x.exr'}, {'from': 'relief.image', 'path': 'r.exr'}"));
  const RunReport run = document_.Run();
  const std::string cause = R"( is not written: nothing is connected to "image" of node "clamp")";
  ASSERT_EQ(run.findings.errors.size(), 2U) << testing::PrintToString(run.findings.errors);
  for (const std::string& error : run.findings.errors) EXPECT_TRUE(Contains(error, cause)) << error;
  RunReport report;
  EXPECT_FALSE(document_.Evaluate("slope.output_y", report));
  EXPECT_EQ(report.findings.errors,
            (std::vector<std::string>{R"(output "slope.output_y" has no image: nothing is connected to "image" of )"
                                      R"(node "clamp")"}));
}

TEST_F(DocumentEvaluationTest, SourcesNameImageOutputs) {
  LoadGood(MakeText("{'id': 'a', 'type': 'ImageRectangleNode'}, {'id': 'n', 'type': 'NumberNode'}"));
  for (const auto& [plug, part] : {std::pair<const char*, const char*>{"z.image", "\"z\""},
                                   {"a.picture", "picture"},
                                   {"n.number", "image"},
                                   {"a", "NODE.NAME"}}) {
    const Status status = document_.SetSource(plug, MakeValue(0.0F));
    EXPECT_TRUE(status.IsError());
    EXPECT_TRUE(Contains(status.GetMessage(), part));
    RunReport report;
    EXPECT_FALSE(document_.Evaluate(plug, report));
    ASSERT_EQ(report.findings.errors.size(), 1U);
    EXPECT_TRUE(Contains(report.findings.errors[0], part));
  }
}

TEST_F(DocumentEvaluationTest, OutputsWithoutAnImageAreErrors) {
  LoadGood(MakeText("{'id': 'a', 'type': 'ImageRectangleNode', 'enabled': false}"));
  RunReport report;
  EXPECT_FALSE(document_.Evaluate("a.image", report));
  EXPECT_EQ(report.failure, RunFailure::kNode);
  EXPECT_EQ(report.findings.errors.size(), 1U);
}

TEST_F(DocumentEvaluationTest, OptionsReachTheEngine) {
  LoadGood(MakeText("{'id': 'a', 'type': 'ImageWavesNode'}, {'id': 'add', 'type': 'ImageValueAddNode'}",
                    "{'from': 'a.image', 'to': 'add.image'}", "{'from': 'add.image', 'path': 'a.exr'}"));
  std::vector<std::string> evaluated;
  Engine::Options options;
  options.on_evaluated = [&](Node& node, std::size_t, std::size_t) { evaluated.push_back(document_.GetId(node)); };
  RunReport report;
  EXPECT_TRUE(document_.Evaluate("add.image", report, options));
  EXPECT_EQ(evaluated, (std::vector<std::string>{"a", "add"}));
  document_.FindNode("a")->NotifyChanged();
  evaluated.clear();
  // The image is handed over also where the node gives up its own.
  options.release_results = true;
  EXPECT_TRUE(document_.Evaluate("add.image", report, options));
  EXPECT_EQ(document_.FindNode("add")->GetOutputImage(0), nullptr);
  evaluated.clear();
  document_.Run(nullptr, options);
  EXPECT_EQ(evaluated, (std::vector<std::string>{"a", "add"}));
}

TEST_F(DocumentEvaluationTest, RunsCanBeStopped) {
  LoadGood(
      MakeText("{'id': 'a', 'type': 'ImageWavesNode', 'attributes': {'frame': [0, 0, 1, 1]}},"
               "{'id': 'b', 'type': 'ImageValueAddNode'}",
               "{'from': 'a.image', 'to': 'b.image'}",
               "{'from': 'a.image', 'path': 'a.exr'}, {'from': 'b.image', 'path': 'b.exr'}"));
  ScEng::Cancellation cancellation;
  Engine::Options options;
  options.cancellation = &cancellation;
  options.on_evaluated = [&](Node&, std::size_t, std::size_t) { cancellation.Request(); };
  const RunReport report = document_.Run(nullptr, options);
  EXPECT_TRUE(report.canceled);
  EXPECT_EQ(report.failure, RunFailure::kNone);
  EXPECT_TRUE(report.outputs[0].written);
  EXPECT_FALSE(report.outputs[1].written);
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"a.exr"}));
  RunReport stopped;
  EXPECT_FALSE(document_.Evaluate("b.image", stopped, options));
  EXPECT_TRUE(stopped.canceled);
  EXPECT_TRUE(stopped.findings.errors.empty());
  // The next one is whole.
  EXPECT_FALSE(document_.Run().canceled);
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"a.exr", "b.exr"}));
}

// ---- Files ----

TEST_F(DocumentEvaluationTest, InputsAreRefusedWhereAConnectionFeedsThePath) {
  LoadGood(MakeText("{'id': 'r', 'type': 'ImageReaderNode'}, {'id': 't', 'type': 'TextNode'}",
                    "{'from': 't.text', 'to': 'r.path'}"));
  const Status status = document_.SetInput("r", "a.exr");
  EXPECT_TRUE(status.IsError());
  EXPECT_TRUE(Contains(status.GetMessage(), "\"r\""));
  EXPECT_TRUE(Contains(status.GetMessage(), "\"path\""));
  EXPECT_TRUE(Contains(status.GetMessage(), "connection"));
  EXPECT_FALSE(document_.Disconnect("t.text", "r.path").IsError());
  EXPECT_FALSE(document_.SetInput("r", "a.exr").IsError());
}

TEST_F(DocumentEvaluationTest, OneFileIsWrittenOnce) {
  const std::string nodes =
      "{'id': 'one', 'type': 'ImageWavesNode', 'attributes': {'frame': [0, 0, 1, 1]}},"
      "{'id': 'two', 'type': 'ImageWavesNode', 'attributes': {'frame': [0, 0, 2, 1]}},"
      "{'id': 't', 'type': 'TextNode', 'attributes': {'value': './a.exr'}},"
      "{'id': 'w', 'type': 'ImageWriterNode'}, {'id': 'v', 'type': 'ImageWriterNode'}";
  const std::string links = "{'from': 'two.image', 'to': 'w.image'}, {'from': 't.text', 'to': 'w.path'}";
  LoadGood(MakeText(nodes + ", {'id': 'u', 'type': 'TextNode', 'attributes': {'value': 'b.exr'}}",
                    links + ", {'from': 'one.image', 'to': 'v.image'}, {'from': 'u.text', 'to': 'v.path'}",
                    "{'from': 'one.image', 'path': 'a.exr'}"));
  Findings findings;
  document_.CheckComplete(findings);
  EXPECT_TRUE(findings.errors.empty());
  const RunReport report = document_.Run();
  EXPECT_EQ(report.failure, RunFailure::kFile);
  ASSERT_EQ(report.findings.errors.size(), 1U);
  EXPECT_TRUE(Contains(report.findings.errors[0], "node \"w\""));
  EXPECT_TRUE(Contains(report.findings.errors[0], "output \"one.image\""));
  EXPECT_TRUE(Contains(report.findings.errors[0], "a.exr"));
  // The first one is there, whole, and so is everything else.
  EXPECT_TRUE(report.outputs[0].written);
  EXPECT_EQ(ReadSamples("a.exr").size(), 1U);
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"a.exr", "b.exr"}));
}

TEST_F(DocumentEvaluationTest, TwoNamesOfOneFileAreAnError) {
  const auto check = [&] {
    GraphDocument document(GetCatalog());
    const auto output = [&](const char* name) {
      return "{'from': 'a.image', 'path': '" + (folder_ / name).string() + "'}";
    };
    Findings findings = Testing::LoadText(document, MakeText("{'id': 'a', 'type': 'ImageRectangleNode'}", "",
                                                             output("one.exr") + ", " + output("two.exr")));
    EXPECT_TRUE(findings.errors.empty());
    document.CheckComplete(findings);
    return findings.errors;
  };
  EXPECT_TRUE(check().empty());
  std::filesystem::create_symlink("two.exr", folder_ / "one.exr");
  ASSERT_EQ(check().size(), 1U);
  EXPECT_TRUE(Contains(check()[0], "two.exr"));
  std::filesystem::remove(folder_ / "one.exr");
  std::ofstream(folder_ / "two.exr") << "old";
  std::filesystem::create_hard_link(folder_ / "two.exr", folder_ / "one.exr");
  ASSERT_EQ(check().size(), 1U);
  EXPECT_TRUE(Contains(check()[0], "one.exr"));
  EXPECT_TRUE(Contains(check()[0], "two.exr"));
  EXPECT_TRUE(Contains(check()[0], "hard links"));
}

TEST_F(DocumentEvaluationTest, LayersNeedAFormatThatHasThem) {
  const auto check = [&](const std::string& file, const std::string& key) {
    GraphDocument document(GetCatalog());
    Findings findings =
        Testing::LoadText(document, MakeText("{'id': 'a', 'type': 'ImageRectangleNode'}", "",
                                             "{'from': 'a.image', 'path': '" + file + "', " + key + "}"));
    EXPECT_TRUE(findings.errors.empty());
    document.CheckComplete(findings);
    return findings.errors.empty() ? "" : findings.errors[0];
  };
  EXPECT_TRUE(Contains(check("a.png", "'layer': 'x'"), "the layer \"x\""));
  EXPECT_TRUE(Contains(check("a.png", "'layer': 'x'"), ".exr"));
  EXPECT_TRUE(Contains(check("a.exr", "'layer': 'x\\u0007'"), "control character"));
  for (const char* key : {"'layer': 'x'", "'type': 'int16'", "'samples': 'stored'", "'opacity': 'drop'", "'layer': ''",
                          "'type': 'auto'", "'type': 'uint16'", "'samples': 'unit'", "'opacity': 'auto'",
                          "'opacity': 'keep'", "'metadata': 'keep'", "'metadata': 'strip'"}) {
    EXPECT_EQ(check("a.exr", key), "") << key;
  }
}

}  // namespace
