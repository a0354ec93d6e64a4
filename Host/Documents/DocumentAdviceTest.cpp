// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Tests/Support/DocumentTesting.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/TestNodes.h"

namespace {

using ScEng::Findings;
using ScEng::GraphDocument;
using ScEng::Status;
using Testing::Contains;
using Testing::GetCatalog;
using Testing::MakeText;
using Testing::Quoted;
using Testing::TemporaryFolder;

using CheckFunction = std::function<void(const GraphDocument&, Findings&)>;

void CheckOutputs(const GraphDocument& document, Findings& findings) { document.CheckOutputs(findings); }
void Advise(const GraphDocument& document, Findings& findings) { document.Advise(findings); }
void AdviseRun(const GraphDocument& document, Findings& findings) {
  document.Advise(findings, ScEng::AdviceScope::kWithoutSiblings);
}

class DocumentAdviceTest : public testing::Test {
 protected:
  /// What is said of a document in the test's folder once it is read; errors of reading among it.
  Findings Check(const std::string& text, const CheckFunction& check,
                 const std::shared_ptr<ScEng::NodeCatalog>& catalog = GetCatalog()) {
    GraphDocument document(catalog);
    Findings findings;
    document.LoadText(text, folder_.Path(), "graph.json", findings);
    check(document, findings);
    return findings;
  }
  std::vector<std::string> FindErrors(const std::string& text,
                                      const std::shared_ptr<ScEng::NodeCatalog>& catalog = GetCatalog()) {
    return Check(text, CheckOutputs, catalog).errors;
  }
  std::vector<std::string> FindNotes(const std::string& text) { return Check(text, Advise).notes; }

  TemporaryFolder folder_;
};

// ---- Images that cannot get there ----

/// A document of one node with everything that it can write, its inputs fed where a bit of `fed` is set.
void Build(GraphDocument& document, const NodeInterface& descriptor, const TemporaryFolder& folder, unsigned fed) {
  Status status;
  std::vector<std::string> notes;
  const Node* node = document.AddNode("n", descriptor.GetNodeType(), status);
  ASSERT_NE(node, nullptr) << status.GetMessage();
  for (unsigned input = 0; input < node->GetNumRegularInputs(); ++input) {
    if ((fed >> input & 1U) == 0) continue;
    const std::string id = "in" + std::to_string(input);
    ASSERT_NE(document.AddNode(id, ScEng::kImageWavesType, status), nullptr);
    EXPECT_FALSE(document.SetAttribute(id + ".frame", "0,0,4,4", notes).IsError());
    EXPECT_FALSE(document.Connect(id + ".image", "n." + node->GetInplugName(input), 0).IsError());
  }
  if (node->IsSink()) {
    EXPECT_FALSE(document.SetAttribute("n.path", (folder / "sink.exr").string(), notes).IsError());
  } else if (node->GetAttribute(std::string("path")) != nullptr) {
    EXPECT_FALSE(document.SetInput("n", folder / "in.exr").IsError());
  }
  for (const PlugRecord& plug : node->GetOutplugs()) {
    if (plug.type != PlugType::kImage) continue;
    EXPECT_FALSE(document.AddOutput("n." + plug.name, folder / (plug.name + ".exr")).IsError());
  }
}

TEST_F(DocumentAdviceTest, TellsWhatARunFindsForEveryNodeWithEachOfItsInputsLeftOut) {
  std::vector<std::string> notes;
  const auto picture = Testing::MakeImage(2, 1, ColorMode::kValue, {0.25F, 1.0F});
  ASSERT_FALSE(ScEng::WriteImageFile(*picture, folder_ / "in.exr", {}, notes).IsError());
  std::size_t without_image = 0;
  for (const NodeInterface* descriptor : GetCatalog()->GetDescriptors()) {
    const ScEng::RefPtr<Node> sample(descriptor->GetNodeFactory()->CreateNode());
    for (unsigned fed = 0; fed < 1U << sample->GetNumRegularInputs(); ++fed) {
      for (const bool is_enabled : {true, false}) {
        SCOPED_TRACE(descriptor->GetName() + " fed " + std::to_string(fed) + (is_enabled ? "" : " disabled"));
        GraphDocument document(GetCatalog());
        Build(document, *descriptor, folder_, fed);
        EXPECT_FALSE(document.SetEnabled("n", is_enabled).IsError());
        Findings told;
        document.CheckOutputs(told);
        const ScEng::RunReport report = document.Run();
        EXPECT_EQ(told.errors.size(), report.findings.errors.size())
            << (told.errors.empty() ? "" : told.errors.front())
            << (report.findings.errors.empty() ? "" : report.findings.errors.front());
        without_image += told.errors.size();
      }
    }
  }
  // Each of the twenty types has at least one output without an image when nothing is connected, whether enabled or
  // not.
  EXPECT_GE(without_image, 40U);
}

TEST_F(DocumentAdviceTest, NamesTheInputWhereTheImagesEnd) {
  const std::string nodes =
      "{'id': 'a', 'type': 'ImageValueAddNode'}, {'id': 'b', 'type': 'ImageValueFunctionNode'},"
      "{'id': 'c', 'type': 'ImageComputeGradientNode'}, {'id': 'w', 'type': 'ImageWriterNode', 'attributes': {'path': "
      "'w.exr'}}";
  const std::vector<std::string> errors =
      FindErrors(MakeText(nodes,
                          "{'from': 'a.image', 'to': 'b.image'}, {'from': 'b.image', 'to': 'c.image'},"
                          "{'from': 'c.output_x', 'to': 'w.image'}",
                          "{'from': 'c.output_y', 'path': 'y.exr'}"));
  EXPECT_EQ(errors, (std::vector<std::string>{
                        Quoted("output 'c.output_y' cannot get an image: nothing is connected to 'image' of node 'a'"),
                        Quoted("node 'w' cannot get an image: nothing is connected to 'image' of node 'a'")}));
}

TEST_F(DocumentAdviceTest, TwoFilesOfOneOutputLackItsImageOnce) {
  EXPECT_EQ(FindErrors(MakeText("{'id': 'a', 'type': 'ImageValueAddNode'}", "",
                                "{'from': 'a.image', 'path': 'a.exr'}, {'from': 'a.image', 'path': 'b.exr'}"))
                .size(),
            1U);
}

TEST_F(DocumentAdviceTest, NamesTheDisabledNodeWhereTheImagesEnd) {
  const auto find = [&](const std::string& type) {
    return FindErrors(MakeText("{'id': 'waves', 'type': 'ImageWavesNode'}, {'id': 'x', 'type': '" + type +
                                   "', 'enabled': false}, {'id': 'add', 'type': 'ImageValueAddNode'}",
                               "{'from': 'waves.image', 'to': 'x.image'}, {'from': 'x.image', 'to': 'add.image'}",
                               "{'from': 'add.image', 'path': 'a.exr'}"));
  };
  const std::vector<std::string> refused{Quoted("output 'add.image' cannot get an image: node 'x' is disabled")};
  EXPECT_EQ(find("ImageValueClampNode"), refused);
  EXPECT_EQ(find("ImageValueStepsNode"), refused);
  EXPECT_TRUE(find("ImageValueRangeNode").empty());
}

TEST_F(DocumentAdviceTest, OneOfTwoInputsIsEnoughWhereTheNodeSaysSo) {
  const auto find = [&](const std::string& connections) {
    return FindErrors(
        MakeText("{'id': 'waves', 'type': 'ImageWavesNode'}, {'id': 'off', 'type': 'ImageWavesNode', 'enabled': false},"
                 "{'id': 'cmp', 'type': 'ImageValueCompareNode'}",
                 connections, "{'from': 'cmp.image_a_g_b', 'path': 'a.exr'}"));
  };
  EXPECT_TRUE(find("{'from': 'waves.image', 'to': 'cmp.image_b'}").empty());
  EXPECT_EQ(find(""), (std::vector<std::string>{
                          Quoted("output 'cmp.image_a_g_b' cannot get an image: nothing is connected to 'image_a' and "
                                 "'image_b' of node 'cmp'")}));
  EXPECT_EQ(find("{'from': 'off.image', 'to': 'cmp.image_b'}"),
            (std::vector<std::string>{Quoted("output 'cmp.image_a_g_b' cannot get an image: node 'off' is disabled")}));
}

TEST_F(DocumentAdviceTest, UnusedBranchesAndDisabledWritersAreFine) {
  EXPECT_TRUE(FindErrors(MakeText("{'id': 'a', 'type': 'ImageValueAddNode'}, {'id': 'waves', 'type': 'ImageWavesNode'},"
                                  "{'id': 'w', 'type': 'ImageWriterNode', 'enabled': false}",
                                  "", "{'from': 'waves.image', 'path': 'a.exr'}"))
                  .empty());
}

TEST_F(DocumentAdviceTest, ImagesThatStandInAreImages) {
  GraphDocument document(GetCatalog());
  Findings findings;
  document.LoadText(MakeText("{'id': 'a', 'type': 'ImageValueAddNode'}, {'id': 'b', 'type': 'ImageValueFunctionNode'}",
                             "{'from': 'a.image', 'to': 'b.image'}", "{'from': 'b.image', 'path': 'b.exr'}"),
                    folder_.Path(), "graph.json", findings);
  document.CheckOutputs(findings);
  EXPECT_EQ(findings.errors.size(), 1U);
  EXPECT_FALSE(document.SetSource("a.image", Testing::MakeImage(1, 1, ColorMode::kValue, {1.0F})).IsError());
  findings = {};
  document.CheckOutputs(findings);
  EXPECT_TRUE(findings.errors.empty());
}

/// A node that says nothing of the images that it needs.
class SilentNode : public Testing::TestNode {
 public:
  static constexpr NodeType kType{900, 1, 7};
  static constexpr const char* kName = "SilentNode";
  SilentNode() {
    inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return kName; }
};

TEST_F(DocumentAdviceTest, OfANodeThatSaysNothingNothingIsSaid) {
  EXPECT_TRUE(FindErrors(MakeText("{'id': 'a', 'type': 'SilentNode'}, {'id': 'b', 'type': 'SilentNode'}",
                                  "{'from': 'a.image', 'to': 'b.image'}", "{'from': 'b.image', 'path': 'b.exr'}"),
                         Testing::MakeCatalog<SilentNode>())
                  .empty());
}

TEST_F(DocumentAdviceTest, WhatFollowsFromAnErrorIsNotSaidAgain) {
  const auto count = [&](const std::string& nodes, const std::string& connections) {
    return FindErrors(MakeText(nodes + ", {'id': 'add', 'type': 'ImageValueAddNode'}", connections,
                               "{'from': 'add.image', 'path': 'a.exr'}"))
        .size();
  };
  const std::string waves = "{'id': 'waves', 'type': 'ImageWavesNode'}";
  EXPECT_EQ(count("{'id': 'x', 'type': 'NoSuchNode'}", "{'from': 'x.out', 'to': 'add.image'}"), 1U);
  EXPECT_EQ(count(waves, "{'from': 'waves.picture', 'to': 'add.image'}"), 1U);
  EXPECT_EQ(count(waves, "{'from': 'waves.image', 'to': 'add.imge'}"), 1U);
  EXPECT_EQ(count(waves, "{'from': 'waves.image', 'to': 'add.image', 'index': -1}"), 1U);
  // A connection that is lost at an attribute has nothing to do with the images.
  EXPECT_EQ(count(waves, "{'from': 'waves.image', 'to': 'add.constant'}"), 2U);
}

// ---- Files that cannot be written ----

TEST_F(DocumentAdviceTest, FoldersThatAreMissingAndEndingsOfNoFormatAreErrors) {
  const std::vector<std::string> errors =
      FindErrors(MakeText("{'id': 'waves', 'type': 'ImageWavesNode'},"
                          "{'id': 'w', 'type': 'ImageWriterNode', 'attributes': {'path': 'none/w.exr'}},"
                          "{'id': 'off', 'type': 'ImageWriterNode', 'enabled': false, 'attributes': {'path': "
                          "'none/off.exr'}}",
                          "{'from': 'waves.image', 'to': 'w.image'}, {'from': 'waves.image', 'to': 'off.image'}",
                          "{'from': 'waves.image', 'path': 'a.letter'}, {'from': 'waves.image', 'path': 'a.EXR'},"
                          "{'from': 'waves.image', 'path': 'none/b.letter'}, {'from': 'waves.image', 'path': 'c'}"));
  ASSERT_EQ(errors.size(), 4U);
  EXPECT_TRUE(Contains(errors[0], "output \"waves.image\""));
  EXPECT_TRUE(Contains(errors[0], "a.letter"));
  EXPECT_TRUE(Contains(errors[0], "ending"));
  EXPECT_TRUE(Contains(errors[1], "b.letter"));
  EXPECT_TRUE(Contains(errors[1], "ending"));
  EXPECT_TRUE(Contains(errors[2], "/c\""));
  EXPECT_TRUE(Contains(errors[2], "ending"));
  // A folder is missing once, whoever wants to write there.
  EXPECT_EQ(errors[3],
            Quoted("output 'waves.image', node 'w': the folder '" + (folder_ / "none").string() + "' does not exist"));
  EXPECT_TRUE(folder_.List().empty());
}

TEST_F(DocumentAdviceTest, OfManyWhoMissAFolderAFewAreNamed) {
  std::string outputs;
  for (int i = 0; i < 5; ++i) {
    outputs += (i > 0 ? ", " : "") + ("{'from': 'waves.image', 'path': 'out/" + std::to_string(i) + ".exr'}");
  }
  const std::vector<std::string> errors =
      FindErrors(MakeText("{'id': 'waves', 'type': 'ImageWavesNode'}", "", outputs));
  ASSERT_EQ(errors.size(), 1U);
  EXPECT_TRUE(Contains(errors[0], "\"waves.image\" and 2 more: the folder"));
}

TEST_F(DocumentAdviceTest, PlacesThatCannotBeWrittenAreErrors) {
  std::filesystem::create_directory(folder_ / "sub.exr");
  Testing::WriteText(folder_ / "file", "");
  const auto find = [&](const std::string& path) {
    return FindErrors(
        MakeText("{'id': 'waves', 'type': 'ImageWavesNode'}", "", "{'from': 'waves.image', 'path': '" + path + "'}"));
  };
  ASSERT_EQ(find("sub.exr").size(), 1U);
  EXPECT_TRUE(Contains(find("sub.exr")[0], "it is a folder"));
  ASSERT_EQ(find("file/a.exr").size(), 1U);
  EXPECT_TRUE(Contains(find("file/a.exr")[0], "file\" is not a folder"));
  EXPECT_TRUE(find("./a.exr").empty());
}

TEST_F(DocumentAdviceTest, ReadersThatNothingNeedsMayBeWithoutPath) {
  const auto check = [&](const std::string& outputs) {
    return Check(MakeText("{'id': 'r', 'type': 'ImageReaderNode'}, {'id': 'add', 'type': 'ImageValueAddNode'},"
                          "{'id': 'waves', 'type': 'ImageWavesNode'}",
                          "{'from': 'r.image', 'to': 'add.image'}", outputs),
                 &GraphDocument::CheckComplete)
        .errors;
  };
  EXPECT_TRUE(check("{'from': 'waves.image', 'path': 'a.exr'}").empty());
  ASSERT_EQ(check("{'from': 'add.image', 'path': 'a.exr'}").size(), 1U);
  EXPECT_TRUE(Contains(check("{'from': 'add.image', 'path': 'a.exr'}")[0], "\"r\""));
  // Of a document without outputs any may be asked for.
  EXPECT_EQ(check("").size(), 1U);
}

// ---- Settings to no purpose ----

TEST_F(DocumentAdviceTest, NotesSettingsWithoutEffect) {
  const auto find = [&](const std::string& type, const std::string& attributes, int images) {
    std::string connections;
    for (int i = 0; i < images; ++i) {
      connections +=
          (i > 0 ? ", " : "") + ("{'from': 'waves.image', 'to': 'n.image', 'index': " + std::to_string(i) + "}");
    }
    const bool is_reader = type == "ImageReaderNode";
    return FindNotes(MakeText("{'id': 'waves', 'type': 'ImageWavesNode'}, {'id': 'n', 'type': '" + type +
                                  "', 'attributes': {" + attributes + (is_reader ? ", 'path': 'a.exr'" : "") + "}}",
                              connections, "{'from': 'n.image', 'path': 'a.exr'}"));
  };
  const auto expect = [&](const std::string& type, const std::string& attributes, int images, const std::string& note) {
    EXPECT_EQ(find(type, attributes, images), (std::vector<std::string>{Quoted(note)}));
  };
  const auto expect_none = [&](const std::string& type, const std::string& attributes, int images) {
    EXPECT_EQ(find(type, attributes, images), std::vector<std::string>()) << type << " " << attributes;
  };
  expect("ImageValueAddNode", "'constant': 2", 2, "'n.constant' has no effect with 2 images; it counts with one");
  expect("ImageValueAddNode", "'value': 0", 3, "'n.constant' has no effect with 3 images; it counts with one");
  expect_none("ImageValueAddNode", "'constant': 2", 1);
  expect_none("ImageValueAddNode", "'constant': 2", 0);
  expect("ImageValuePowerNode", "'constant': 2", 1,
         "'n.constant' has no effect: one image passes through, and several have their exponents in the second and "
         "further ones");
  expect("ImageValueClampNode", "'clamp': 'low', 'low': 1, 'high': 2", 1,
         "'n.high' has no effect while 'clamp' is low");
  expect("ImageValueConditionNode", "'condition': 'v_gt_a', 'a': 1, 'b': 2", 1,
         "'n.b' has no effect while 'condition' is v_gt_a");
  expect("ImageValueRangeNode", "'size': 1, 'profile': 'smooth'", 1, "'n.profile' has no effect while 'falloff' is 0");
  expect("ImageReliefNode", "'radius': 0.5, 'grow': true", 1, "'n.grow' has no effect while 'radius' is 0.5");
  expect_none("ImageReliefNode", "'radius': 1, 'grow': true", 1);
  expect("ImageReliefNode", "'profile': 'smooth'", 1, "'n.profile' has no effect while 'radius' is 1");
  expect("ImageReaderNode", "'low': -1", 0, "'n.low' has no effect while 'range' is declared");
  expect("ImageReaderNode", "'pin': [1, 2]", 0, "'n.pin' has no effect while 'placement' is file");
  expect("ImageReaderNode", "'layer': 'a', 'channels': 'b.Y'", 0, "'n.layer' has no effect while 'channels' is given");
  expect_none("ImageReaderNode", "'range': 'custom', 'low': -1, 'high': 2", 0);
}

TEST_F(DocumentAdviceTest, NotesPrecisionWithOneImage) {
  EXPECT_EQ(
      FindNotes(MakeText("{'id': 'waves', 'type': 'ImageWavesNode'},"
                         "{'id': 'n', 'type': 'ImageValueCompareNode', 'attributes': {'precision': '1.0'}}",
                         "{'from': 'waves.image', 'to': 'n.image_a'}", "{'from': 'n.image_a_eq_b', 'path': 'a.exr'}")),
      (std::vector<std::string>{Quoted("'n.precision' has no effect with 1 image; it counts with 2 or more")}));
}

TEST_F(DocumentAdviceTest, ARunIsSilentOnWhatOtherSettingsOfTheNodeMakeIdle) {
  const auto find = [&](const std::string& attributes, int images, const CheckFunction& check) {
    std::string connections;
    for (int i = 0; i < images; ++i) {
      connections += (i > 0 ? "," : "") + std::string("{'from': 'waves.image', 'to': 'n.image', 'index': ") +
                     std::to_string(i) + "}";
    }
    const std::string type = images > 1 ? "ImageValueAddNode" : "ImageValueClampNode";
    return Check(MakeText("{'id': 'waves', 'type': 'ImageWavesNode'}, {'id': 'n', 'type': '" + type +
                              "', 'attributes': {" + attributes + "}}",
                          connections, "{'from': 'n.image', 'path': 'a.exr'}"),
                 check)
        .notes;
  };
  EXPECT_EQ(find("'clamp': 'low', 'high': 0.5", 1, Advise).size(), 1U);
  EXPECT_TRUE(find("'clamp': 'low', 'high': 0.5", 1, AdviseRun).empty());
  EXPECT_EQ(find("'constant': 2", 2, Advise).size(), 1U);
  EXPECT_EQ(find("'constant': 2", 2, AdviseRun).size(), 1U);
}

TEST_F(DocumentAdviceTest, NotesAttributesThatAConnectionFeeds) {
  const auto find = [&](const std::string& attributes, const CheckFunction& check) {
    return Check(MakeText("{'id': 'waves', 'type': 'ImageWavesNode'}, {'id': 'x', 'type': 'NumberNode'},"
                          "{'id': 'n', 'type': 'ImageValueAddNode', 'attributes': {" +
                              attributes + "}}",
                          "{'from': 'waves.image', 'to': 'n.image'}, {'from': 'x.number', 'to': 'n.value'}",
                          "{'from': 'n.image', 'path': 'a.exr'}"),
                 check)
        .notes;
  };
  EXPECT_EQ(find("'value': 0", CheckOutputs),
            (std::vector<std::string>{Quoted("'n.constant' is set and has no effect, because a connection feeds it")}));
  EXPECT_TRUE(find("", CheckOutputs).empty());
  // A value in store for the day on which the connection goes is nothing to tell of in each run.
  EXPECT_TRUE(find("'value': 0", Advise).empty());
}

TEST_F(DocumentAdviceTest, NotesWordsThatAChoiceDoesNotHave) {
  const auto find = [&](const std::string& text, const std::string& nodes = "", const std::string& links = "") {
    return Check(
               MakeText("{'id': 't', 'type': 'TextNode', " + text + "}, {'id': 'r', 'type': 'ImageReaderNode'}" + nodes,
                        "{'from': 't.text', 'to': 'r.samples'}" + links, ""),
               CheckOutputs)
        .notes;
  };
  EXPECT_EQ(find("'attributes': {'value': 'stord'}"),
            (std::vector<std::string>{
                Quoted("'t.text' delivers 'stord' to 'r.samples', which has no such word; the closest is 'stored'; "
                       "known are auto, unit, stored")}));
  EXPECT_TRUE(find("'attributes': {'value': 'stored'}").empty());
  // A disabled node delivers nothing, and what a connection feeds is known when it is run.
  EXPECT_TRUE(find("'attributes': {'value': 'stord'}, 'enabled': false").empty());
  EXPECT_TRUE(find("'attributes': {}", ", {'id': 'u', 'type': 'TextNode', 'attributes': {'value': 'unit'}}",
                   ", {'from': 'u.text', 'to': 't.value'}")
                  .empty());
}

TEST_F(DocumentAdviceTest, WhatIsNotKnownIsNotNoted) {
  const auto find = [&](const std::string& nodes, const std::string& connections) {
    return FindNotes(MakeText("{'id': 'waves', 'type': 'ImageWavesNode'}, {'id': 'x', 'type': 'NoSuchNode'}," + nodes,
                              connections, "{'from': 'n.image', 'path': 'a.exr'}"));
  };
  EXPECT_TRUE(find("{'id': 'n', 'type': 'ImageValueAddNode', 'attributes': {'constant': 1}}",
                   "{'from': 'waves.image', 'to': 'n.image'}, {'from': 'x.image', 'to': 'n.image', 'index': 1}")
                  .empty());
  EXPECT_TRUE(find("{'id': 'n', 'type': 'ImageReaderNode', 'attributes': {'path': 'a.exr', 'low': 1}}",
                   "{'from': 'x.text', 'to': 'n.range'}")
                  .empty());
  EXPECT_TRUE(find("{'id': 't', 'type': 'TextNode'}, {'id': 'n', 'type': 'ImageReaderNode', 'attributes': {'path': "
                   "'a.exr', 'low': 1}}",
                   "{'from': 't.text', 'to': 'n.range'}")
                  .empty());
  // A node that is switched off for a while keeps what it is set to.
  EXPECT_TRUE(find("{'id': 'n', 'type': 'ImageReaderNode', 'enabled': false, 'attributes': {'path': 'a.exr', 'low': "
                   "1}}",
                   "")
                  .empty());
}

TEST_F(DocumentAdviceTest, SettingsThatEqualTheDefaultCountOnceTheyAreSet) {
  GraphDocument document(GetCatalog());
  Findings findings;
  document.LoadText(MakeText("{'id': 'waves', 'type': 'ImageWavesNode'}, {'id': 'n', 'type': 'ImageValueAddNode'}",
                             "{'from': 'waves.image', 'to': 'n.image'}, {'from': 'waves.image', 'to': 'n.image', "
                             "'index': 1}",
                             "{'from': 'n.image', 'path': 'a.exr'}"),
                    folder_.Path(), "graph.json", findings);
  document.Advise(findings);
  EXPECT_TRUE(findings.notes.empty());
  std::vector<std::string> notes;
  EXPECT_FALSE(document.SetAttribute("n.constant", "0", notes).IsError());
  document.Advise(findings);
  ASSERT_EQ(findings.notes.size(), 1U);
  EXPECT_TRUE(Contains(findings.notes[0], "n.constant"));
}

TEST_F(DocumentAdviceTest, NotesADocumentThatWritesNothing) {
  const std::string writer = "{'id': 'w', 'type': 'ImageWriterNode', 'attributes': {'path': 'w.exr'}";
  ASSERT_EQ(FindNotes(MakeText("")).size(), 1U);
  EXPECT_TRUE(Contains(FindNotes(MakeText(""))[0], "nothing is written"));
  EXPECT_EQ(FindNotes(MakeText(writer + ", 'enabled': false}")).size(), 1U);
  EXPECT_TRUE(FindNotes(MakeText(writer + "}")).empty());
  EXPECT_TRUE(FindNotes(Quoted("{'format': 'value-graph', 'version': 2, 'nodes': [], 'outputs': 3}")).empty());
}

// ---- Nothing hides anything else ----

TEST_F(DocumentAdviceTest, WhatCannotBeReadHidesNothingElse) {
  const auto load = [&](const std::string& text) {
    GraphDocument document(GetCatalog());
    Findings findings;
    document.LoadText(text, folder_.Path(), "graph.json", findings);
    return findings.errors;
  };
  const auto expect = [&](const std::string& text, const std::vector<std::string>& parts) {
    const std::vector<std::string> errors = load(text);
    ASSERT_EQ(errors.size(), parts.size()) << text << "\n" << (errors.empty() ? "" : errors.back());
    for (std::size_t i = 0; i < parts.size(); ++i) EXPECT_TRUE(Contains(errors[i], Quoted(parts[i])));
  };
  // The keys of a node that cannot be added.
  expect(MakeText("{'id': 'a', 'type': 'NoSuchNode', 'enabled': 1, 'position': 3}"),
         {"NoSuchNode", "'enabled'", "'position'"});
  expect(MakeText("{'id': 'a', 'enabled': 1}"), {"'type' is missing", "'enabled'"});
  expect(MakeText("{'type': 'NumberNode', 'attributes': {'value': '1', 'zebra': 1}}"),
         {"'id' is missing", "nodes[0].value", "zebra"});
  expect(MakeText("{'id': 'a', 'type': 'NumberNode'}, {'id': 'a', 'type': 'FlagNode', 'attributes': {'value': 1}}"),
         {"already", "'a.value'"});
  // Both ends of a connection, and its index.
  expect(MakeText("", "{'from': 'a.image', 'to': 'b.image'}"), {"'a'", "'b'"});
  expect(MakeText("{'id': 'x', 'type': 'NoSuchNode'}, {'id': 'n', 'type': 'NumberNode'}",
                  "{'from': 'x.out', 'to': 'n.zebra'}"),
         {"NoSuchNode", "zebra"});
  expect(MakeText("", "{'to': 'b.image', 'index': -1}"), {"'from' is missing", "'index'", "'b'"});
  // Plug, words and path of an output.
  expect(MakeText("", "", "{'from': 'a.image', 'path': '', 'type': 'double'}"), {"'path'", "double", "'a'"});
  // Everything before the place where the text ends; what may be behind it is not missed.
  expect(Quoted("{'format': 'value-graph', 'version': 2, 'connections': [{'from': 'a.image', 'to': 'b.image'}], "
                "'outputs': [{'from': 'a.image', 'path': 'a.exr', 'type': 'double'}], 'nodes': [{'id': 'n', 'type': "
                "'NoSuchNode'}, {'id'"),
         {"parse error", "double", "NoSuchNode"});
  // Lists of the wrong kind.
  expect(Quoted("{'format': 'value-graph', 'version': 2, 'nodes': 3, 'connections': [{'from': 'a.image', 'to': "
                "'b.image'}, {'from': 'a', 'to': 'b.image'}]}"),
         {"'nodes' is not a list", "NODE.NAME"});
}

}  // namespace
