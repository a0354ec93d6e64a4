// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/GraphDocument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Host/Nodes/HostNodes.h"
#include "Tests/Support/DocumentTesting.h"
#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::Findings;
using ScEng::GraphDocument;
using ScEng::RunFailure;
using ScEng::RunReport;
using ScEng::SampleType;
using ScEng::Status;
using Testing::Contains;
using Testing::GetCatalog;
using Testing::GetSamples;
using Testing::MakeImage;
using Testing::MakeText;
using Testing::MaxSizeScope;
using Testing::Quoted;
using Testing::TemporaryFolder;

class GraphDocumentTest : public testing::Test {
 protected:
  /// Loads a text as a document of the test's folder.
  Findings Load(GraphDocument& document, const std::string& text) {
    Testing::WriteText(folder_ / "graph.json", text);
    Findings findings;
    EXPECT_TRUE(document.Load(folder_ / "graph.json", findings));
    return findings;
  }
  Findings Load(const std::string& text) { return Load(document_, text); }
  /// Loads a text that has to be without fault.
  void LoadGood(const std::string& text) {
    const Findings findings = Load(text);
    EXPECT_TRUE(findings.errors.empty()) << findings.errors[0];
    EXPECT_TRUE(findings.notes.empty()) << findings.notes[0];
  }
  /// Expects one error that names the document and holds all the parts.
  void ExpectError(const std::string& text, const std::vector<std::string>& parts) {
    GraphDocument document(GetCatalog());
    const Findings findings = Load(document, text);
    ASSERT_EQ(findings.errors.size(), 1U) << text;
    EXPECT_TRUE(Contains(findings.errors[0], "graph.json"));
    EXPECT_EQ(findings.errors[0].find('\n'), std::string::npos);
    for (const std::string& part : parts) EXPECT_TRUE(Contains(findings.errors[0], part)) << text;
  }
  void ExpectNodeError(const std::string& node, const std::vector<std::string>& parts) {
    ExpectError(MakeText(node), parts);
  }
  PlugValue ValueOf(const std::string& id, const std::string& attribute) {
    Node* node = document_.FindNode(id);
    if (node == nullptr || node->GetAttribute(attribute) == nullptr) {
      ADD_FAILURE() << id << "." << attribute;
      return {};
    }
    return node->GetAttribute(attribute)->GetValue();
  }
  static std::vector<float> ReadSamples(const std::filesystem::path& file) {
    Status status;
    std::vector<std::string> notes;
    const auto image = ScEng::ReadImageFile(file, {}, status, notes);
    if (image) return GetSamples(*image);
    ADD_FAILURE() << status.GetMessage();
    return {};
  }
  static void WriteValue(const std::filesystem::path& file, float value) {
    std::vector<std::string> notes;
    const Status status =
        ScEng::WriteImageFile(*MakeImage(1, 1, ColorMode::kValue, {value}), file, {.type = SampleType::kFloat}, notes);
    EXPECT_FALSE(status.IsError()) << status.GetMessage();
  }

  TemporaryFolder folder_;
  GraphDocument document_{GetCatalog()};
};

// ---- Reading ----

TEST_F(GraphDocumentTest, ReadsAGoodDocument) {
  LoadGood(
      MakeText("{'id': 'waves', 'type': 'ImageWavesNode', 'attributes': {'frame': [1, 2, 30, 40], 'height': 2}},"
               "{'id': 'board', 'type': [10, 16, 16], 'attributes': {'rect_x_size': [3, 4],"
               " 'color_10': [0.1, 0.2, 0.3, 0.4]}},"
               "{'id': 'reader', 'type': 'ImageReaderNode', 'enabled': false,"
               " 'attributes': {'path': 'a.exr', 'range': 'custom', 'low': -5}},"
               "{'id': 'on', 'type': 'FlagNode', 'attributes': {'value': true}},"
               "{'id': 'sum.1', 'type': [10, 320, 5], 'attributeVersion': 0, 'attributes': {'constant': 0.25}}",
               "{'from': 'waves.image', 'to': 'sum.1.image', 'index': 4},"
               "{'from': 'board.image', 'to': 'sum.1.image'}",
               "{'from': 'sum.1.image', 'path': 'out.exr', 'type': 'half'}"));
  EXPECT_EQ(document_.GetIds(), (std::vector<std::string>{"waves", "board", "reader", "on", "sum.1"}));
  EXPECT_EQ(ValueOf("waves", "frame").GetFrame(), (ScEng::Frame{1, 2, 30, 40}));
  EXPECT_EQ(ValueOf("waves", "height").GetNumber(), 2.0);
  EXPECT_EQ(ValueOf("board", "rect_x_size").GetPoint(), (ScEng::Point{3, 4}));
  EXPECT_EQ(ValueOf("board", "color_10").GetColor(), (ScEng::Rgbo{0.1, 0.2, 0.3, 0.4}));
  EXPECT_EQ(ValueOf("reader", "path").GetText(), "a.exr");
  EXPECT_EQ(ValueOf("reader", "range").GetText(), "custom");
  EXPECT_EQ(ValueOf("reader", "low").GetNumber(), -5.0);
  EXPECT_TRUE(ValueOf("on", "value").GetFlag());
  EXPECT_EQ(ValueOf("sum.1", "constant").GetNumber(), 0.25);
  EXPECT_FALSE(document_.FindNode("reader")->IsEnabled());
  EXPECT_TRUE(document_.FindNode("waves")->IsEnabled());
  EXPECT_EQ(document_.FindNode("nobody"), nullptr);
  EXPECT_EQ(document_.GetId(*document_.FindNode("board")), "board");
  ASSERT_EQ(document_.GetOutputFiles().size(), 1U);
  EXPECT_EQ(document_.GetOutputFiles()[0].filename(), "out.exr");
}

TEST_F(GraphDocumentTest, ReadsASmallestDocument) {
  LoadGood(Quoted("{'format': 'value-graph', 'version': 1, 'nodes': []}"));
  EXPECT_TRUE(document_.GetIds().empty());
}

TEST_F(GraphDocumentTest, FilesThatCannotBeRead) {
  for (const auto& file : {folder_ / "none.json", folder_.Path()}) {
    Findings findings;
    EXPECT_FALSE(GraphDocument(GetCatalog()).Load(file, findings));
    ASSERT_EQ(findings.errors.size(), 1U);
    EXPECT_TRUE(Contains(findings.errors[0], file.string()));
  }
}

TEST_F(GraphDocumentTest, TextsThatAreNoDocument) {
  ExpectError("", {});
  ExpectError("{", {"parse error"});
  ExpectError(Quoted("{'format': 'value-graph',}"), {"parse error"});
  ExpectError("[]", {"object"});
  ExpectError("7", {"object"});
  ExpectError(Quoted("{'version': 1, 'nodes': []}"), {"\"format\"", "value-graph"});
  ExpectError(Quoted("{'format': 'graph', 'version': 1, 'nodes': []}"), {"\"format\""});
  ExpectError(Quoted("{'format': 'value-graph', 'nodes': []}"), {"\"version\""});
  for (const char* version : {"3", "0", "-1", "1.5", "'1'", "true"}) {
    ExpectError(Quoted("{'format': 'value-graph', 'version': " + std::string(version) + ", 'nodes': []}"),
                {"\"version\""});
  }
  ExpectError(Quoted("{'format': 'value-graph', 'version': 1}"), {"\"nodes\"", "missing"});
  ExpectError(Quoted("{'format': 'value-graph', 'version': 1, 'nodes': {}}"), {"\"nodes\"", "list"});
  ExpectError(Quoted("{'format': 'value-graph', 'version': 1, 'nodes': [], 'outputs': 3}"), {"\"outputs\"", "list"});
}

TEST_F(GraphDocumentTest, UnknownKeys) {
  ExpectError(Quoted("{'format': 'value-graph', 'version': 1, 'nodes': [], 'author': 'me'}"), {"author"});
  ExpectNodeError("{'id': 'a', 'type': 'FlagNode', 'colour': 1}", {"colour"});
  ExpectError(
      MakeText("{'id': 'a', 'type': 'ImageRectangleNode'}", "", "{'from': 'a.image', 'path': 'a.exr', 'size': 3}"),
      {"outputs[0]", "size"});
  ExpectError(MakeText("{'id': 'a', 'type': 'FlagNode'}, {'id': 'b', 'type': 'FlagNode'}",
                       "{'from': 'a.flag', 'to': 'b.value', 'colour': 3}"),
              {"connections[0]", "colour"});
}

TEST_F(GraphDocumentTest, RepeatedKeys) {
  ExpectError(Quoted("{'format': 'value-graph', 'version': 1, 'nodes': [], 'nodes': []}"), {"nodes", "twice"});
  ExpectNodeError("{'id': 'a', 'type': 'NumberNode', 'attributes': {'value': 1, 'value': 2}}", {"value", "twice"});
}

TEST_F(GraphDocumentTest, FaultsOfNodes) {
  ExpectNodeError("7", {"nodes[0]", "object"});
  ExpectNodeError("{'type': 'FlagNode'}", {"nodes[0]", "id", "missing"});
  ExpectNodeError("{'id': '', 'type': 'FlagNode'}", {"nodes[0]", "id"});
  ExpectNodeError("{'id': 5, 'type': 'FlagNode'}", {"nodes[0]", "id"});
  ExpectNodeError("{'id': 'a', 'type': 'FlagNode'}, {'id': 'a', 'type': 'TextNode'}", {"\"a\"", "already"});
  ExpectNodeError("{'id': 'a'}", {"\"a\"", "type", "missing"});
  ExpectNodeError("{'id': 'a', 'type': 'FlagNoed'}", {"\"a\"", "FlagNoed", "FlagNode"});
  ExpectNodeError("{'id': 'a', 'type': [10, 320, 999]}", {"\"a\"", "10, 320, 999"});
  for (const char* type : {"[10, 320]", "[10, 320, -5]", "[10, 320, 5.5]", "[10, 320, 4294967296]", "7", "null"}) {
    ExpectNodeError("{'id': 'a', 'type': " + std::string(type) + "}", {"\"a\"", "type"});
  }
  ExpectNodeError("{'id': 'a', 'type': 'FlagNode', 'enabled': 1}", {"\"a\"", "enabled"});
  for (const char* version : {"-1", "0.5", "'0'", "4294967296"}) {
    ExpectNodeError("{'id': 'a', 'type': 'FlagNode', 'attributeVersion': " + std::string(version) + "}",
                    {"\"a\"", "attributeVersion"});
  }
  ExpectNodeError("{'id': 'a', 'type': 'FlagNode', 'attributes': []}", {"\"a\"", "attributes"});
}

TEST_F(GraphDocumentTest, FaultsOfAttributes) {
  const auto expect = [&](const std::string& type, const std::string& attribute,
                          const std::vector<std::string>& parts) {
    ExpectNodeError("{'id': 'a', 'type': '" + type + "', 'attributes': {" + attribute + "}}", parts);
  };
  expect("NumberNode", "'volume': 1", {"a.volume", "value"});
  expect("NumberNode", "'value': '1'", {"a.value", "number"});
  expect("NumberNode", "'value': true", {"a.value", "number"});
  expect("NumberNode", "'value': null", {"a.value", "number"});
  expect("NumberNode", "'value': 1e999", {"1e999"});
  expect("FlagNode", "'value': 1", {"a.value", "true or false"});
  expect("FlagNode", "'value': 'true'", {"a.value", "true or false"});
  expect("TextNode", "'value': 1", {"a.value", "string"});
  expect("ImageReaderNode", "'range': 'guessed'", {"a.range", "guessed", "declared, measured, custom"});
  expect("ImageReaderNode", "'range': ''", {"a.range", "declared"});
  expect("ImageReaderNode", "'range': 1", {"a.range", "declared"});
  expect("ImageReaderNode", "'pin': [1, 2, 3]", {"a.pin", "2 numbers", "3"});
  expect("ImageReaderNode", "'pin': 1", {"a.pin", "2 numbers"});
  expect("ImageReaderNode", "'pin': [1, '2']", {"a.pin", "2 numbers"});
  expect("ImageRectangleNode", "'frame': [1, 2]", {"a.frame", "4 numbers", "width"});
  expect("ImageRectangleNode", "'color': [1, 2, 3]", {"a.color", "4 numbers", "opacity"});
}

TEST_F(GraphDocumentTest, FaultsOfConnections) {
  const std::string nodes =
      "{'id': 'a', 'type': 'ImageRectangleNode'}, {'id': 'b', 'type': 'ImageValueAddNode'},"
      "{'id': 'c', 'type': 'ImageValueAddNode'}, {'id': 'n', 'type': 'NumberNode'},"
      "{'id': 'm', 'type': 'NumberNode'}, {'id': 'w', 'type': 'ImageWriterNode'}";
  const auto expect = [&](const std::string& connections, const std::vector<std::string>& parts) {
    ExpectError(MakeText(nodes, connections), parts);
  };
  expect("'a.image'", {"connections[0]", "object"});
  expect("{'from': 'a.image'}", {"connections[0]", "to", "missing"});
  expect("{'to': 'b.image'}", {"connections[0]", "from", "missing"});
  expect("{'from': 'a.image', 'to': 'b.image', 'index': -1}", {"connections[0]", "index"});
  expect("{'from': 'a.image', 'to': 'b.image', 'index': 1.5}", {"connections[0]", "index"});
  expect("{'from': 'a', 'to': 'b.image'}", {"connections[0]", "NODE.NAME"});
  expect("{'from': 'z.image', 'to': 'b.image'}", {"\"z\""});
  expect("{'from': 'a.picture', 'to': 'b.image'}", {"picture", "image"});
  expect("{'from': 'a.image', 'to': 'b.picture'}", {"picture", "image"});
  expect("{'from': 'a.image', 'to': 'b.constant'}", {"image", "number"});
  expect("{'from': 'n.number', 'to': 'b.image'}", {"image", "number"});
  expect("{'from': 'n.number', 'to': 'b.constant'}, {'from': 'm.number', 'to': 'b.value'}",
         {"connections[1]", "constant"});
  expect("{'from': 'a.image', 'to': 'w.image'}, {'from': 'b.image', 'to': 'w.image'}", {"connections[1]", "image"});
  expect("{'from': 'a.image', 'to': 'w.image', 'index': 1}", {"index"});
  expect("{'from': 'a.image', 'to': 'b.image'}, {'from': 'c.image', 'to': 'b.image'}", {"connections[1]", "index 0"});
  expect("{'from': 'b.image', 'to': 'b.image'}", {"cycle"});
  expect("{'from': 'b.image', 'to': 'c.image'}, {'from': 'c.image', 'to': 'b.image'}", {"connections[1]", "cycle"});
}

TEST_F(GraphDocumentTest, FaultsOfOutputs) {
  const std::string nodes = "{'id': 'a', 'type': 'ImageRectangleNode'}, {'id': 'n', 'type': 'NumberNode'}";
  const auto expect = [&](const std::string& outputs, const std::vector<std::string>& parts) {
    ExpectError(MakeText(nodes, "", outputs), parts);
  };
  expect("{'from': 'a.image'}", {"outputs[0]", "path"});
  expect("{'path': 'a.exr'}", {"outputs[0]", "from"});
  expect("{'from': 'a.image', 'path': ''}", {"outputs[0]", "path"});
  expect("{'from': 'a.image', 'path': 'a.exr', 'type': 'double'}", {"outputs[0]", "double", "uint16"});
  expect("{'from': 'a.image', 'path': 'a.exr', 'type': 8}", {"outputs[0]", "uint16"});
  expect("{'from': 'z.image', 'path': 'a.exr'}", {"outputs[0]", "\"z\""});
  expect("{'from': 'a.picture', 'path': 'a.exr'}", {"picture"});
  expect("{'from': 'n.number', 'path': 'a.exr'}", {"number"});
}

TEST_F(GraphDocumentTest, ReportsAllErrorsAtOnceAndEachOnce) {
  const Findings findings =
      Load(MakeText("{'id': 'a', 'type': 'NoSuchNode'}, {'id': 'b', 'type': 'NumberNode', 'attributes': {'value': ''}}",
                    "{'from': 'a.image', 'to': 'b.value'}, {'from': 'b.x', 'to': 'b.value'}",
                    "{'from': 'a.image', 'path': 'a.exr'}"));
  // What hangs on the node that could not be made is not said again.
  ASSERT_EQ(findings.errors.size(), 3U);
  EXPECT_TRUE(Contains(findings.errors[0], "NoSuchNode"));
  EXPECT_TRUE(Contains(findings.errors[1], "b.value"));
  EXPECT_TRUE(Contains(findings.errors[2], "connections[1]"));
}

TEST_F(GraphDocumentTest, WholeNumbersMayHaveAFractionOfZero) {
  LoadGood(
      Quoted("{'format': 'value-graph', 'version': 1.0, 'nodes': ["
             "{'id': 'a', 'type': [10.0, 16, 10]}, {'id': 'b', 'type': 'ImageValueAddNode', 'attributeVersion': 0.0}],"
             " 'connections': [{'from': 'a.image', 'to': 'b.image', 'index': 2.0}]}"));
  EXPECT_EQ(document_.GetIds(), (std::vector<std::string>{"a", "b"}));
}

// ---- Notes, old names, versions ----

TEST_F(GraphDocumentTest, NumbersAreClampedWithANote) {
  const Findings findings =
      Load(MakeText("{'id': 'a', 'type': 'ImageTerrainNode', 'attributes': {'octaves': 40, 'seed': 3}}"));
  EXPECT_TRUE(findings.errors.empty());
  ASSERT_EQ(findings.notes.size(), 1U);
  EXPECT_TRUE(Contains(findings.notes[0], "a.octaves"));
  EXPECT_TRUE(Contains(findings.notes[0], "40"));
  EXPECT_TRUE(Contains(findings.notes[0], "16"));
  EXPECT_EQ(ValueOf("a", "octaves").GetNumber(), 16.0);
}

TEST_F(GraphDocumentTest, OldNamesLoad) {
  LoadGood(
      MakeText("{'id': 'a', 'type': 'ImageValueAddNode', 'attributes': {'value': 4}},"
               "{'id': 'c', 'type': 'ImageValueClampNode', 'attributes': {'min': 0.1, 'max': 0.2}},"
               "{'id': 'n', 'type': 'NumberNode'}",
               "{'from': 'n.number', 'to': 'c.min'}"));
  EXPECT_EQ(ValueOf("a", "constant").GetNumber(), 4.0);
  EXPECT_EQ(ValueOf("c", "low").GetNumber(), 0.1);
  EXPECT_EQ(ValueOf("c", "high").GetNumber(), 0.2);
}

TEST_F(GraphDocumentTest, NewNameWinsOverTheOldOne) {
  for (const char* attributes : {"'value': 4, 'constant': 5", "'constant': 5, 'value': 4"}) {
    GraphDocument document(GetCatalog());
    const Findings findings = Load(document, MakeText("{'id': 'a', 'type': 'ImageValueAddNode', 'attributes': {" +
                                                      std::string(attributes) + "}}"));
    EXPECT_TRUE(findings.errors.empty());
    ASSERT_EQ(findings.notes.size(), 1U);
    EXPECT_TRUE(Contains(findings.notes[0], "a.value"));
    EXPECT_TRUE(Contains(findings.notes[0], "constant"));
    EXPECT_EQ(document.FindNode("a")->GetAttribute(std::string("constant"))->GetValue().GetNumber(), 5.0);
  }
}

TEST_F(GraphDocumentTest, ObsoleteAttributesAreSkippedWithANote) {
  const Findings findings = Load(MakeText("{'id': 'a', 'type': 'ImageValueAddNode', 'attributes': {'mask_min': 4}}"));
  EXPECT_TRUE(findings.errors.empty());
  ASSERT_EQ(findings.notes.size(), 1U);
  EXPECT_TRUE(Contains(findings.notes[0], "a.mask_min"));
  ExpectNodeError("{'id': 'a', 'type': 'ImageValueSubtractNode', 'attributes': {'mask_min': 4}}", {"a.mask_min"});
}

TEST_F(GraphDocumentTest, AttributeVersionDecidesAboutOldNames) {
  LoadGood(
      MakeText("{'id': 'r', 'type': 'ImageReliefNode', 'attributeVersion': 0, 'attributes': {'height': 3}},"
               "{'id': 'n', 'type': 'NumberNode'}",
               "{'from': 'n.number', 'to': 'r.height'}"));
  EXPECT_EQ(ValueOf("r", "multiplier").GetNumber(), 3.0);
  // Without a version it is the current one, to which that name means nothing.
  ExpectNodeError("{'id': 'r', 'type': 'ImageReliefNode', 'attributes': {'height': 3}}", {"r.height"});
  ExpectNodeError("{'id': 'r', 'type': 'ImageReliefNode', 'attributeVersion': 1, 'attributes': {'height': 3}}",
                  {"r.height"});
  ExpectError(MakeText("{'id': 'r', 'type': 'ImageReliefNode'}, {'id': 'n', 'type': 'NumberNode'}",
                       "{'from': 'n.number', 'to': 'r.height'}"),
              {"height"});
}

// ---- Building and changing ----

TEST_F(GraphDocumentTest, NodesHaveIdsOfTheirOwn) {
  Status status;
  EXPECT_NE(document_.AddNode("a", ScEng::kFlagType, status), nullptr);
  EXPECT_EQ(document_.AddNode("a", ScEng::kFlagType, status), nullptr);
  EXPECT_TRUE(Contains(status.GetMessage(), "\"a\""));
  EXPECT_EQ(document_.AddNode("", ScEng::kFlagType, status), nullptr);
  EXPECT_EQ(document_.AddNode("b", {1, 2, 3}, status), nullptr);
  EXPECT_TRUE(Contains(status.GetMessage(), "1, 2, 3"));
  EXPECT_EQ(document_.GetIds(), (std::vector<std::string>{"a"}));
}

TEST_F(GraphDocumentTest, AttributesAreSetFromText) {
  LoadGood(
      MakeText("{'id': 'r', 'type': 'ImageReaderNode'}, {'id': 'b', 'type': 'ImageRectangleNode'},"
               "{'id': 'f', 'type': 'FlagNode'}, {'id': 'add', 'type': 'ImageValueAddNode'}"));
  std::vector<std::string> notes;
  const auto set = [&](const std::string& attribute, const std::string& text) {
    const Status status = document_.SetAttribute(attribute, text, notes);
    if (status.IsError()) {
      EXPECT_TRUE(Contains(status.GetMessage(), attribute));
    }
    return !status.IsError();
  };
  EXPECT_TRUE(set("r.low", "-1.5e1"));
  EXPECT_EQ(ValueOf("r", "low").GetNumber(), -15.0);
  EXPECT_TRUE(set("r.low", "+2"));
  EXPECT_EQ(ValueOf("r", "low").GetNumber(), 2.0);
  EXPECT_TRUE(set("r.range", "measured"));
  EXPECT_TRUE(set("r.pin", "3, -4"));
  EXPECT_EQ(ValueOf("r", "pin").GetPoint(), (ScEng::Point{3, -4}));
  EXPECT_TRUE(set("b.color", "0.1,0.2,0.3,0.4"));
  EXPECT_EQ(ValueOf("b", "color").GetColor(), (ScEng::Rgbo{0.1, 0.2, 0.3, 0.4}));
  EXPECT_TRUE(set("f.value", "true"));
  EXPECT_TRUE(ValueOf("f", "value").GetFlag());
  EXPECT_TRUE(set("add.value", "7"));
  EXPECT_EQ(ValueOf("add", "constant").GetNumber(), 7.0);
  EXPECT_TRUE(notes.empty());

  EXPECT_TRUE(set("r.low", "-3e9"));
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_TRUE(Contains(notes[0], "r.low"));
  EXPECT_EQ(ValueOf("r", "low").GetNumber(), -1e9);
  EXPECT_TRUE(set("add.mask_min", "1"));
  EXPECT_EQ(notes.size(), 2U);

  EXPECT_FALSE(set("r.low", "low"));
  EXPECT_FALSE(set("r.low", ""));
  EXPECT_FALSE(set("r.low", "nan"));
  EXPECT_FALSE(set("r.low", "inf"));
  EXPECT_FALSE(set("r.low", "1e999"));
  EXPECT_FALSE(set("r.low", "1 2"));
  EXPECT_FALSE(set("r.range", "guessed"));
  EXPECT_FALSE(set("r.pin", "3"));
  EXPECT_FALSE(set("r.pin", "3,4,"));
  EXPECT_FALSE(set("f.value", "yes"));
  EXPECT_FALSE(set("r.lw", "1"));
  EXPECT_TRUE(document_.SetAttribute("q.low", "1", notes).IsError());
  EXPECT_TRUE(document_.SetAttribute("low", "1", notes).IsError());
  EXPECT_TRUE(document_.SetAttribute("r.", "1", notes).IsError());
  EXPECT_TRUE(document_.SetAttribute(".low", "1", notes).IsError());
  EXPECT_EQ(ValueOf("r", "low").GetNumber(), -1e9);
}

TEST_F(GraphDocumentTest, InputsNameReadersOnly) {
  LoadGood(MakeText("{'id': 'r', 'type': 'ImageReaderNode'}, {'id': 'w', 'type': 'ImageWriterNode'}"));
  EXPECT_FALSE(document_.SetInput("r", folder_ / "a.exr").IsError());
  EXPECT_EQ(ValueOf("r", "path").GetText(), (folder_ / "a.exr").string());
  const Status writer = document_.SetInput("w", folder_ / "a.exr");
  EXPECT_TRUE(writer.IsError());
  EXPECT_TRUE(Contains(writer.GetMessage(), "\"w\""));
  EXPECT_TRUE(document_.SetInput("z", folder_ / "a.exr").IsError());
}

TEST_F(GraphDocumentTest, OutputsAreRenamedAndRemoved) {
  LoadGood(
      MakeText("{'id': 'a', 'type': 'ImageRectangleNode'},"
               "{'id': 'w', 'type': 'ImageWriterNode', 'attributes': {'path': 'sub\\\\w.exr'}},"
               "{'id': 'off', 'type': 'ImageWriterNode', 'enabled': false, 'attributes': {'path': 'off.exr'}}",
               "{'from': 'a.image', 'to': 'w.image'}", "{'from': 'a.image', 'path': 'a.exr'}"));
  const auto names = [&] {
    std::vector<std::string> found;
    for (const auto& file : document_.GetOutputFiles()) {
      found.push_back(std::filesystem::relative(file, std::filesystem::canonical(folder_.Path())).string());
    }
    std::sort(found.begin(), found.end());
    return found;
  };
  EXPECT_EQ(names(), (std::vector<std::string>{"a.exr", "sub/w.exr"}));
  const auto rename = [](const std::filesystem::path& file) {
    return file.parent_path() / ("x-" + file.filename().string());
  };
  EXPECT_FALSE(document_.RenameOutputs(rename).IsError());
  EXPECT_EQ(names(), (std::vector<std::string>{"sub/x-w.exr", "x-a.exr"}));
  EXPECT_EQ(ValueOf("off", "path").GetText(), "off.exr");
  document_.RemoveOutputs("a.image");
  EXPECT_EQ(names(), (std::vector<std::string>{"sub/x-w.exr"}));
}

TEST_F(GraphDocumentTest, RemovedOutputTellsItsSampleType) {
  LoadGood(MakeText("{'id': 'a', 'type': 'ImageRectangleNode'}, {'id': 'b', 'type': 'ImageRectangleNode'}", "",
                    "{'from': 'a.image', 'path': 'a.exr', 'type': 'half'},"
                    "{'from': 'b.image', 'path': 'b.png', 'type': 'uint16'}"));
  EXPECT_EQ(document_.RemoveOutputs("b.image", "new.exr"), std::nullopt);
  EXPECT_EQ(document_.RemoveOutputs("a.image", "new.exr").value_or(ScEng::DocumentOutput()).type, "half");
  EXPECT_EQ(document_.RemoveOutputs("a.image", "new.exr"), std::nullopt);
  EXPECT_TRUE(document_.GetOutputFiles().empty());
}

TEST_F(GraphDocumentTest, WritersFedByAConnectionCannotBeRenamed) {
  LoadGood(MakeText("{'id': 'w', 'type': 'ImageWriterNode'}, {'id': 't', 'type': 'TextNode'}",
                    "{'from': 't.text', 'to': 'w.path'}"));
  const Status status = document_.RenameOutputs([](const std::filesystem::path& file) { return file; });
  EXPECT_TRUE(status.IsError());
  EXPECT_TRUE(Contains(status.GetMessage(), "\"w\""));
  EXPECT_TRUE(document_.GetOutputFiles().empty());
}

TEST_F(GraphDocumentTest, CompletenessTellsWhatIsMissing) {
  LoadGood(
      MakeText("{'id': 'r', 'type': 'ImageReaderNode'}, {'id': 'w', 'type': 'ImageWriterNode'},"
               "{'id': 'spare', 'type': 'ImageReaderNode'}, {'id': 'off', 'type': 'ImageReaderNode', 'enabled': false},"
               "{'id': 'fed', 'type': 'ImageReaderNode'}, {'id': 't', 'type': 'TextNode'},"
               "{'id': 'a', 'type': 'ImageRectangleNode'},"
               "{'id': 'v', 'type': 'ImageWriterNode', 'attributes': {'path': 'sub/../a.exr'}}",
               "{'from': 't.text', 'to': 'fed.path'}, {'from': 'r.image', 'to': 'w.image'}",
               "{'from': 'a.image', 'path': 'a.exr'}, {'from': 'a.image', 'path': './a.exr'},"
               "{'from': 'fed.image', 'path': 'fed.exr'}, {'from': 'off.image', 'path': 'off.exr'}"));
  Findings findings;
  document_.CheckComplete(findings);
  ASSERT_EQ(findings.errors.size(), 3U);
  EXPECT_TRUE(Contains(findings.errors[0], "\"r\""));
  EXPECT_TRUE(Contains(findings.errors[1], "\"w\""));
  EXPECT_TRUE(Contains(findings.errors[2], "a.exr"));
}

// ---- Running ----

TEST_F(GraphDocumentTest, RunWritesOutputsAndWriters) {
  WriteValue(folder_ / "in.exr", 2.0F);
  LoadGood(
      MakeText("{'id': 'r', 'type': 'ImageReaderNode', 'attributes': {'path': 'in.exr'}},"
               "{'id': 'add', 'type': 'ImageValueAddNode', 'attributes': {'constant': 0.5}},"
               "{'id': 'w', 'type': 'ImageWriterNode', 'attributes': {'path': 'w.exr'}},"
               "{'id': 'off', 'type': 'ImageWriterNode', 'enabled': false, 'attributes': {'path': 'off.exr'}}",
               "{'from': 'r.image', 'to': 'add.image'}, {'from': 'add.image', 'to': 'w.image'},"
               "{'from': 'add.image', 'to': 'off.image'}",
               "{'from': 'add.image', 'path': 'a.exr'}, {'from': 'r.image', 'path': 'b.tif'}"));
  std::vector<std::string> steps;
  const RunReport report = document_.Run([&](const std::string& id, std::size_t done, std::size_t total) {
    steps.push_back(id + " " + std::to_string(done) + "/" + std::to_string(total));
  });
  EXPECT_EQ(report.failure, RunFailure::kNone);
  EXPECT_TRUE(report.findings.errors.empty());
  EXPECT_TRUE(report.findings.notes.empty());
  EXPECT_EQ(steps, (std::vector<std::string>{"r 1/3", "add 2/3", "w 3/3"}));
  ASSERT_EQ(report.outputs.size(), 2U);
  EXPECT_EQ(report.outputs[0].source, "add.image");
  EXPECT_TRUE(report.outputs[0].written);
  EXPECT_EQ(report.outputs[0].header.size_x, 1);
  EXPECT_EQ(report.outputs[0].header.value_high, 2.5F);
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"a.exr", "b.tif", "graph.json", "in.exr", "w.exr"}));
  EXPECT_EQ(ReadSamples(folder_ / "a.exr"), (std::vector<float>{2.5F}));
  EXPECT_EQ(ReadSamples(folder_ / "b.tif"), (std::vector<float>{2.0F}));
  EXPECT_EQ(ReadSamples(folder_ / "w.exr"), (std::vector<float>{2.5F}));
}

TEST_F(GraphDocumentTest, RunCanBeRepeated) {
  LoadGood(MakeText("{'id': 'a', 'type': 'ImageWavesNode', 'attributes': {'frame': [0, 0, 2, 2]}}", "",
                    "{'from': 'a.image', 'path': 'a.exr'}"));
  for (int round = 0; round < 2; ++round) {
    EXPECT_TRUE(document_.Run(nullptr).outputs[0].written);
    EXPECT_TRUE(std::filesystem::remove(folder_ / "a.exr"));
  }
}

TEST_F(GraphDocumentTest, UnusedBranchesCannotFail) {
  LoadGood(
      MakeText("{'id': 'a', 'type': 'ImageRectangleNode'},"
               "{'id': 'r', 'type': 'ImageReaderNode', 'attributes': {'path': 'none.exr'}},"
               "{'id': 'add', 'type': 'ImageValueAddNode'}",
               "{'from': 'r.image', 'to': 'add.image'}", "{'from': 'a.image', 'path': 'a.exr'}"));
  const RunReport report = document_.Run(nullptr);
  EXPECT_EQ(report.failure, RunFailure::kNone);
  EXPECT_TRUE(report.findings.errors.empty());
}

TEST_F(GraphDocumentTest, NodeFailuresLeaveTheOtherOutputs) {
  LoadGood(
      MakeText("{'id': 'good', 'type': 'ImageRectangleNode', 'attributes': {'frame': [0, 0, 2, 2]}},"
               "{'id': 'large', 'type': 'ImageRectangleNode', 'attributes': {'frame': [0, 0, 200, 2]}},"
               "{'id': 'add', 'type': 'ImageValueAddNode'}",
               "{'from': 'large.image', 'to': 'add.image'}",
               "{'from': 'add.image', 'path': 'add.exr'}, {'from': 'good.image', 'path': 'good.exr'}"));
  const MaxSizeScope scope(100, 100);
  const RunReport report = document_.Run(nullptr);
  EXPECT_EQ(report.failure, RunFailure::kNode);
  ASSERT_EQ(report.findings.errors.size(), 1U);
  EXPECT_TRUE(Contains(report.findings.errors[0], "\"large\""));
  EXPECT_TRUE(Contains(report.findings.errors[0], Testing::kOversize));
  EXPECT_FALSE(report.outputs[0].written);
  EXPECT_TRUE(report.outputs[1].written);
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"good.exr", "graph.json"}));
}

TEST_F(GraphDocumentTest, OutputsWithoutAnImageAreErrors) {
  LoadGood(MakeText("{'id': 'off', 'type': 'ImageRectangleNode', 'enabled': false}", "",
                    "{'from': 'off.image', 'path': 'a.exr'}"));
  const RunReport report = document_.Run(nullptr);
  EXPECT_EQ(report.failure, RunFailure::kNode);
  ASSERT_EQ(report.findings.errors.size(), 1U);
  EXPECT_TRUE(Contains(report.findings.errors[0], "off.image"));
  EXPECT_TRUE(Contains(report.findings.errors[0], "a.exr"));
}

TEST_F(GraphDocumentTest, FileFailuresOutrankNodeFailures) {
  LoadGood(
      MakeText("{'id': 'r', 'type': 'ImageReaderNode', 'attributes': {'path': 'none.exr'}},"
               "{'id': 'off', 'type': 'ImageRectangleNode', 'enabled': false},"
               "{'id': 'good', 'type': 'ImageRectangleNode', 'attributes': {'frame': [0, 0, 1, 1]}}",
               "",
               "{'from': 'r.image', 'path': 'r.exr'}, {'from': 'off.image', 'path': 'off.exr'},"
               "{'from': 'good.image', 'path': 'good.exr'}"));
  const RunReport report = document_.Run(nullptr);
  EXPECT_EQ(report.failure, RunFailure::kFile);
  EXPECT_EQ(report.findings.errors.size(), 2U);
  EXPECT_TRUE(report.outputs[2].written);
}

TEST_F(GraphDocumentTest, OutputsThatCannotBeWrittenAreFileFailures) {
  LoadGood(MakeText("{'id': 'a', 'type': 'ImageRectangleNode', 'attributes': {'frame': [0, 0, 1, 1]}}", "",
                    "{'from': 'a.image', 'path': 'none/a.exr'}, {'from': 'a.image', 'path': 'a.letter'},"
                    "{'from': 'a.image', 'path': 'b.exr'}"));
  const RunReport report = document_.Run(nullptr);
  EXPECT_EQ(report.failure, RunFailure::kFile);
  ASSERT_EQ(report.findings.errors.size(), 2U);
  EXPECT_TRUE(Contains(report.findings.errors[0], "none"));
  EXPECT_TRUE(Contains(report.findings.errors[1], "a.letter"));
  EXPECT_TRUE(report.outputs[2].written);
  EXPECT_EQ(folder_.List(), (std::vector<std::string>{"b.exr", "graph.json"}));
}

TEST_F(GraphDocumentTest, WritersThatFailAreNamed) {
  LoadGood(
      MakeText("{'id': 'a', 'type': 'ImageRectangleNode', 'attributes': {'frame': [0, 0, 1, 1]}},"
               "{'id': 'w', 'type': 'ImageWriterNode', 'attributes': {'path': 'none/w.exr'}}",
               "{'from': 'a.image', 'to': 'w.image'}"));
  const RunReport report = document_.Run(nullptr);
  EXPECT_EQ(report.failure, RunFailure::kFile);
  ASSERT_EQ(report.findings.errors.size(), 1U);
  EXPECT_TRUE(Contains(report.findings.errors[0], "\"w\""));
}

TEST_F(GraphDocumentTest, NotesOfTheFilesReachTheReport) {
  LoadGood(
      MakeText("{'id': 'a', 'type': 'ImageRectangleNode', 'attributes': {'frame': [0, 0, 1, 1],"
               " 'color': [2, 0, 0, 1]}},"
               "{'id': 'w', 'type': 'ImageWriterNode', 'attributes': {'path': 'w.png', 'type': 'uint8'}}",
               "{'from': 'a.image', 'to': 'w.image'}", "{'from': 'a.image', 'path': 'a.png', 'type': 'uint16'}"));
  const RunReport report = document_.Run(nullptr);
  EXPECT_EQ(report.failure, RunFailure::kNone);
  ASSERT_EQ(report.findings.notes.size(), 2U);
  for (const std::string& note : report.findings.notes) EXPECT_TRUE(Contains(note, "1 sample "));
}

// ---- Evaluating without writing ----

TEST_F(GraphDocumentTest, EvaluatesOneOutputAndKeepsIt) {
  LoadGood(MakeText("{'id': 'a', 'type': 'ImageTerrainNode'}, {'id': 'b', 'type': 'ImageValueAddNode'}",
                    "{'from': 'a.image', 'to': 'b.image'}", "{'from': 'b.image', 'path': 'b.exr'}"));
  Node* node = document_.FindNode("b");
  EXPECT_EQ(node->GetLabel(), "b");
  RunReport report = document_.Evaluate(*node, 0);
  EXPECT_TRUE(report.findings.errors.empty());
  ASSERT_NE(node->GetOutputImage(0), nullptr);
  const float before = node->GetOutputImage(0)->GetConstArray()[0];
  const Image* source = document_.FindNode("a")->GetOutputImage(0);
  ASSERT_NE(source, nullptr);
  EXPECT_FALSE(std::filesystem::exists(folder_ / "b.exr"));

  node->GetAttribute(std::string("constant"))->SetNumber(0.25, false);
  report = document_.Evaluate(*node, 0);
  EXPECT_EQ(node->GetOutputImage(0)->GetConstArray()[0], before + 0.25F);
  // What has not changed is not made again.
  EXPECT_EQ(document_.FindNode("a")->GetOutputImage(0), source);
}

TEST_F(GraphDocumentTest, EvaluationSaysWhatNodesReport) {
  LoadGood(
      MakeText("{'id': 'a', 'type': 'ImageReaderNode', 'attributes': {'path': 'missing.exr'}},"
               "{'id': 'b', 'type': 'ImageValueAddNode'}",
               "{'from': 'a.image', 'to': 'b.image'}"));
  for (int i = 0; i < 2; ++i) {
    const RunReport report = document_.Evaluate(*document_.FindNode("b"), 0);
    EXPECT_EQ(report.failure, RunFailure::kFile);
    ASSERT_EQ(report.findings.errors.size(), 1U);
    EXPECT_TRUE(Contains(report.findings.errors[0], "missing.exr"));
  }
}

}  // namespace
