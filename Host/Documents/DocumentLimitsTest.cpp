// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Tests/Support/DocumentTesting.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/TestNodes.h"

namespace {

using ScEng::Findings;
using ScEng::GraphDocument;
using Testing::Contains;
using Testing::GetCatalog;
using Testing::LoadText;
using Testing::MakeText;
using Testing::Quoted;

Findings Load(const std::string& text) {
  GraphDocument document(GetCatalog());
  return LoadText(document, text);
}

/// Expects one error that holds all the parts and is one line of less than 300 characters.
void ExpectError(const std::string& text, const std::vector<std::string>& parts) {
  const Findings findings = Load(text);
  ASSERT_EQ(findings.errors.size(), 1U) << text.substr(0, 300);
  EXPECT_LT(findings.errors[0].size(), 300U);
  for (const std::string& part : parts) EXPECT_TRUE(Contains(findings.errors[0], part));
}

void ExpectGood(const std::string& text) {
  const Findings findings = Load(text);
  EXPECT_TRUE(findings.errors.empty()) << findings.errors[0];
}

// ---- Versions and keys ----

TEST(DocumentVersionTest, BothVersionsAreReadAndANewerOneIsNamed) {
  for (const char* version : {"1", "2", "2.0"}) {
    ExpectGood(Quoted("{'$schema': 's', 'format': 'value-graph', 'version': " + std::string(version) +
                      ", 'nodes': [{'id': 'a', 'type': 'NumberNode', 'position': [1, 2], 'note': ''}],"
                      " 'frames': [], 'view': {}}"));
  }
  // Nothing else is said: it may well be right in that version.
  ExpectError(Quoted("{'zebra': 1, 'format': 'value-graph', 'nodes': [{'id': 'a'}], 'version': 3}"),
              {"\"version\" is 3", "reads versions 1 to 2"});
  ExpectError(Quoted("{'format': 'value-graph', 'version': 0, 'nodes': []}"), {"\"version\" is 0", "1 to 2"});
}

TEST(DocumentVersionTest, ListsMayStandInAnyOrder) {
  GraphDocument document(GetCatalog());
  const Findings findings =
      LoadText(document, Quoted("{'outputs': [{'from': 'b.image', 'path': 'b.exr'}], 'view': {'shown': 'b.image'},"
                                " 'connections': [{'from': 'a.image', 'to': 'b.image'}], 'nodes': ["
                                "{'type': 'ImageValueAddNode', 'id': 'b'}, {'type': 'ImageRectangleNode', 'id': 'a'}],"
                                " 'version': 2, 'format': 'value-graph'}"));
  EXPECT_TRUE(findings.errors.empty()) << findings.errors[0];
  EXPECT_EQ(document.GetConnections().size(), 1U);
  EXPECT_EQ(document.GetOutputs().size(), 1U);
  EXPECT_EQ(document.GetView()->shown, "b.image");
}

TEST(DocumentVersionTest, FaultsOfTheKeysForEditors) {
  const auto node = [](const std::string& key) { return MakeText("{'id': 'a', 'type': 'NumberNode', " + key + "}"); };
  ExpectError(node("'position': [1]"), {"\"a\"", "position", "2 numbers"});
  ExpectError(node("'position': [1, '2']"), {"\"a\"", "position", "2 numbers"});
  ExpectError(node("'position': null"), {"\"a\"", "position"});
  ExpectError(node("'note': 3"), {"\"a\"", "note", "string"});
  const auto whole = [](const std::string& key) {
    return Quoted("{'format': 'value-graph', 'version': 2, 'nodes': [], " + key + "}");
  };
  ExpectError(whole("'$schema': 3"), {"$schema", "string"});
  ExpectError(whole("'frames': {}"), {"frames", "list"});
  ExpectError(whole("'frames': [3]"), {"frames[0]", "object"});
  ExpectError(whole("'frames': [{'title': 'x'}]"), {"frames[0]", "box", "missing"});
  ExpectError(whole("'frames': [{'box': [1, 2, 3]}]"), {"frames[0]", "box", "4 numbers"});
  ExpectError(whole("'frames': [{'box': [1, 2, 3, 4], 'title': 1}]"), {"frames[0]", "title"});
  ExpectError(whole("'frames': [{'box': [1, 2, 3, 4], 'color': 'red'}]"), {"frames[0]", "color", "red"});
  ExpectError(whole("'frames': [{'box': [1, 2, 3, 4], 'zebra': 1}]"), {"frames[0]", "zebra"});
  // None of two hides the other.
  const std::string both = whole("'frames': [{'box': [1, 2, 3], 'color': 'red'}]");
  EXPECT_EQ(Load(both).errors.size(), 2U);
  ExpectError(whole("'view': []"), {"view", "object"});
  ExpectError(whole("'view': {'center': 1}"), {"view", "center"});
  for (const char* zoom : {"0", "-1", "'1'", "null"}) {
    ExpectError(whole("'view': {'zoom': " + std::string(zoom) + "}"), {"view", "zoom"});
  }
  ExpectError(whole("'view': {'shown': 1}"), {"view", "shown"});
  ExpectError(whole("'view': {'zebra': 1}"), {"view", "zebra"});
}

TEST(DocumentVersionTest, AViewOfNothingIsANote) {
  GraphDocument document(GetCatalog());
  const Findings findings =
      LoadText(document, Quoted("{'format': 'value-graph', 'version': 2, 'nodes': [], 'view': {'shown': 'a.image'}}"));
  EXPECT_TRUE(findings.errors.empty());
  ASSERT_EQ(findings.notes.size(), 1U);
  EXPECT_TRUE(Contains(findings.notes[0], "a.image"));
  EXPECT_EQ(document.GetView()->shown, "");
}

TEST(DocumentVersionTest, WordsOfOutputs) {
  const auto output = [](const std::string& key) {
    return MakeText("{'id': 'a', 'type': 'ImageRectangleNode'}", "",
                    "{'from': 'a.image', 'path': 'a.exr', " + key + "}");
  };
  ExpectGood(output("'type': 'int16', 'samples': 'stored', 'opacity': 'drop', 'metadata': 'strip', 'layer': 'x'"));
  for (const char* key : {"type", "samples", "opacity", "metadata"}) {
    for (const char* word : {"'zebra'", "''", "1", "null"}) {
      ExpectError(output("'" + std::string(key) + "': " + word), {"outputs[0]", key});
    }
  }
  ExpectError(output("'layer': 1"), {"outputs[0]", "layer"});
}

// ---- Text ----

TEST(DocumentTextTest, AByteOrderMarkIsSkipped) {
  ExpectGood("\xEF\xBB\xBF" + MakeText(""));
  ExpectError("\xEF\xBB" + MakeText(""), {"graph.json"});
  ExpectError("\xEF\xBB\xBF\xEF\xBB\xBF" + MakeText(""), {"graph.json"});
}

TEST(DocumentTextTest, TextIsUtf8) {
  ExpectGood(MakeText("{'id': '\xE6\xB0\xB4', 'type': 'NumberNode'}"));
  for (const char* bytes : {"\xFF", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE6\xB0"}) {
    ExpectError(MakeText("{'id': 'a" + std::string(bytes) + "', 'type': 'NumberNode'}"), {"graph.json"});
  }
}

TEST(DocumentTextTest, KeysThatAreThereTwice) {
  ExpectError(MakeText("{'id': 'a', 'id': 'b', 'type': 'NumberNode'}"), {"nodes[0]", "\"id\"", "twice"});
  ExpectError(Quoted("{'format': 'value-graph', 'format': 'x', 'version': 2, 'nodes': []}"), {"\"format\"", "twice"});
  // Also where there are many.
  std::string attributes;
  for (int i = 0; i < 40; ++i) attributes += "'k" + std::to_string(i) + "': 1, ";
  const Findings findings =
      Load(MakeText("{'id': 'a', 'type': 'NumberNode', 'attributes': {" + attributes + "'k20': 2}}"));
  ASSERT_EQ(findings.errors.size(), 41U);
  EXPECT_TRUE(Contains(findings.errors[0], "\"k20\""));
  EXPECT_TRUE(Contains(findings.errors[0], "twice"));
}

TEST(DocumentTextTest, NumbersThatNoDoubleHoldsHideNothing) {
  const Findings findings =
      Load(MakeText("{'id': 'a', 'type': 'NumberNode', 'attributes': {'value': -1e999}}, {'id': 'b', 'type': 'X'}"));
  ASSERT_EQ(findings.errors.size(), 2U);
  EXPECT_TRUE(Contains(findings.errors[0], "nodes[0]"));
  EXPECT_TRUE(Contains(findings.errors[0], "\"value\""));
  EXPECT_TRUE(Contains(findings.errors[0], "-1e999"));
  EXPECT_TRUE(Contains(findings.errors[1], "\"X\""));
  ExpectError(MakeText("{'id': 'a', 'type': 'NumberNode', 'attributes': {'value': 1e99999}}"), {"1e99999"});
  ExpectGood(MakeText("{'id': 'a', 'type': 'NumberNode', 'attributes': {'value': 1e-999}}"));
}

TEST(DocumentTextTest, PathsHoldNoZeroCharacter) {
  ExpectError(MakeText("{'id': 'a', 'type': 'ImageReaderNode', 'attributes': {'path': 'a\\u0000b'}}"), {"a.path"});
  ExpectError(MakeText("{'id': 'a', 'type': 'ImageRectangleNode'}", "", "{'from': 'a.image', 'path': 'a\\u0000.exr'}"),
              {"outputs[0]", "path"});
}

// ---- Messages ----

TEST(DocumentMessageTest, ControlCharactersAreEscaped) {
  ExpectError(MakeText("{'id': 'a', 'type': '\\u001b[31m\\u0007\\u0085\\u202e\\n'}"),
              {"\\u001b[31m\\u0007\\u0085\\u202e\\n"});
  ExpectError(MakeText("{'id': 'a\\u001b', 'type': 'NumberNode'}"), {"nodes[0]", "a\\u001b", "1 to 200"});
  ExpectError(MakeText("{'id': 'a=b', 'type': 'NumberNode'}"), {"nodes[0]", "a=b", "1 to 200"});
  ExpectError(MakeText("{'id': 'a', 'type': 'NumberNode', '\\u0000\\r': 1}"), {"\\u0000\\u000d"});
}

TEST(DocumentMessageTest, LongTextIsCut) {
  const std::string letters(100'000, 'n');
  ExpectError(MakeText("{'id': 'a', 'type': '" + letters + "'}"), {"nnn..."});
  ExpectError(MakeText("{'id': '" + letters + "', 'type': 'NumberNode'}"), {"nnn...", "1 to 200"});
  ExpectError(MakeText("{'id': 'a', 'type': 'NumberNode', 'attributes': {'value': '" + letters + "'}}"), {"nnn..."});
  ExpectError(MakeText("{'id': 'a', 'type': 'NumberNode', 'attributes': {'" + letters + "': 1}}"), {"nnn...", "value"});
  ExpectError(
      MakeText("{'id': 'b', 'type': 'ImageValueAddNode'}", "{'from': '" + letters + ".image', 'to': 'b.image'}"),
      {"connections[0]", "nnn..."});
  ExpectError(MakeText("{'id': 'a', 'type': 'ImageRectangleNode'}", "",
                       "{'from': 'a.image', 'path': 'a.exr', 'type': '" + letters + "'}"),
              {"outputs[0]", "nnn..."});
  std::string numbers = "1";
  for (int i = 0; i < 100'000; ++i) numbers += ", 1";
  ExpectError(MakeText("{'id': 'a', 'type': 'NumberNode', 'attributes': {'value': [" + numbers + "]}}"),
              {"a.value", "number", "..."});
}

TEST(DocumentMessageTest, ALineIsCutBetweenCharacters) {
  EXPECT_EQ(ScEng::MakeLine("abcdef", 6), "abcdef");
  EXPECT_EQ(ScEng::MakeLine("abcdefg", 6), "abc...");
  EXPECT_EQ(ScEng::MakeLine("\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4", 4), "\xC3\xA4...");
  // An escape is never cut in two.
  EXPECT_EQ(ScEng::MakeLine("a\x1B\x1B", 10), "a\\u001b...");
  EXPECT_EQ(ScEng::MakeLine("a\x1B\x1B", 9), "a...");
  EXPECT_EQ(ScEng::MakeLine("a\xFFz", 10), "a\\xffz");
}

TEST(DocumentMessageTest, FindingsAreBoundedAndAllAreCounted) {
  Findings findings;
  findings.errors.resize(Findings::kMostKept - 1);
  findings.notes.resize(Findings::kMostKept);
  for (int i = 0; i < 3; ++i) findings.AddError("error");
  findings.AddNote("note");
  EXPECT_EQ(findings.errors.size(), Findings::kMostKept);
  EXPECT_EQ(findings.GetNumErrors(), Findings::kMostKept + 2);
  EXPECT_EQ(findings.notes.size(), Findings::kMostKept);
  EXPECT_EQ(findings.GetNumNotes(), Findings::kMostKept + 1);
}

// ---- Node types that throw ----

class ThrowingNode : public Testing::TestNode {
 public:
  static constexpr NodeType kType{900, 1, 1};
  static constexpr const char* kName = "ThrowingNode";
  ThrowingNode() {
    Add("value", 0.0, 0.0, 1.0, 0.1, 1);
    outplugs_ = {PlugRecord::Output(PlugType::kNumber, "number")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return kName; }
  [[nodiscard]] unsigned GetAttributeVersion() const override {
    if (is_angry) throw std::runtime_error("no version today");
    return 0;
  }
  [[nodiscard]] std::string TranslateAttributeName(unsigned, const std::string&) const override {
    throw std::runtime_error("the shelf is bare");
  }
  bool is_angry = false;
};

TEST(DocumentGuardTest, ExceptionsOfNodeTypesAreErrors) {
  GraphDocument document(Testing::MakeCatalog<ThrowingNode>());
  const Findings findings =
      LoadText(document, MakeText("{'id': 'a', 'type': 'ThrowingNode', 'attributes': {'value': 1}},"
                                  "{'id': 'b', 'type': 'ThrowingNode'}",
                                  "{'from': 'a.number', 'to': 'b.zebra'}, {'from': 'c.image', 'to': 'b.value'}"));
  ASSERT_EQ(findings.errors.size(), 3U);
  EXPECT_TRUE(Contains(findings.errors[0], "nodes[0]"));
  EXPECT_TRUE(Contains(findings.errors[0], "the shelf is bare"));
  EXPECT_TRUE(Contains(findings.errors[1], "connections[0]"));
  EXPECT_TRUE(Contains(findings.errors[1], "the shelf is bare"));
  EXPECT_TRUE(Contains(findings.errors[2], "connections[1]"));
  std::string text;
  EXPECT_FALSE(document.SaveText(text).IsError());
  static_cast<ThrowingNode*>(document.FindNode("b"))->is_angry = true;
  const ScEng::Status status = document.SaveText(text);
  EXPECT_TRUE(status.IsError());
  EXPECT_TRUE(Contains(status.GetMessage(), "no version today"));
}

// ---- Limits ----

std::string Nest(std::size_t levels) { return std::string(levels, '[') + std::string(levels, ']'); }

TEST(DocumentLimitsTest, Nesting) {
  // The document, its nodes, a node and its attributes are four levels.
  const auto make = [](std::size_t levels) {
    return MakeText("{'id': 'a', 'type': 'NumberNode', 'attributes': {'value': " + Nest(levels) + "}}");
  };
  ExpectError(make(60), {"a.value", "number"});
  ExpectError(make(61), {"64 levels"});
  ExpectError(make(50'000), {"64 levels"});
  ExpectError(std::string(50'000, '['), {"64 levels"});
  std::string objects;
  for (int i = 0; i < 50'000; ++i) objects += "{\"nodes\":";
  ExpectError(objects, {"64 levels"});
}

TEST(DocumentLimitsTest, Size) {
  std::string text = MakeText("");
  text.resize(std::size_t{256} << 20, ' ');
  ExpectGood(text);
  text += ' ';
  ExpectError(text, {"256 MiB"});
}

TEST(DocumentLimitsTest, Nodes) {
  // None of these is a node, but each takes the place of one.
  std::string entries = "1";
  for (int i = 1; i < 1'000'000; ++i) entries += ",1";
  const Findings findings = Load(MakeText(entries));
  EXPECT_EQ(findings.GetNumErrors(), 1'000'000U);
  ExpectError(MakeText(entries + ",{}"), {"1000000 nodes"});
}

TEST(DocumentLimitsTest, ValuesOfOneNode) {
  std::string numbers = "1";
  for (int i = 0; i < 1'000'000; ++i) numbers += ",1";
  const Findings findings = Load(
      MakeText("{'id': 'a', 'type': 'NumberNode', 'attributes': {'x': [" + numbers + "]}}, {'id': 'b', 'type': 'X'}"));
  ASSERT_EQ(findings.errors.size(), 2U);
  EXPECT_TRUE(Contains(findings.errors[0], "nodes[0]"));
  EXPECT_TRUE(Contains(findings.errors[0], "1000000 values"));
  EXPECT_TRUE(Contains(findings.errors[1], "\"b\""));
}

TEST(DocumentLimitsTest, NearestNamesAreLookedForOnlyAWhile) {
  std::string nodes;
  for (int i = 0; i < 1000; ++i) {
    nodes += i > 0 ? "," : "";
    nodes += "{'id': 'node" + std::to_string(i) + "', 'type': 'NumberNode'}";
  }
  std::string connections;
  for (int i = 0; i < 1000; ++i) {
    connections += i > 0 ? "," : "";
    connections += "{'from': 'nodf1.number', 'to': 'node2.value'}";
  }
  const Findings findings = Load(MakeText(nodes, connections));
  ASSERT_EQ(findings.errors.size(), 1000U);
  EXPECT_TRUE(Contains(findings.errors.front(), "closest is \"node1\""));
  EXPECT_FALSE(Contains(findings.errors.back(), "closest"));
}

}  // namespace
