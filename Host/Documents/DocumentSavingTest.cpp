// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Tests/Support/DocumentTesting.h"
#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::Findings;
using ScEng::GraphDocument;
using ScEng::Status;
using Testing::Contains;
using Testing::GetCatalog;
using Testing::LoadText;
using Testing::MakeText;
using Testing::Quoted;
using Testing::Save;
using Testing::TemporaryFolder;

/// Loads a text without errors and answers what it is saved as.
std::string SaveLoaded(const std::string& text, const ScEng::LoadOptions& options = {}) {
  GraphDocument document(GetCatalog());
  const Findings findings = LoadText(document, text, options);
  EXPECT_TRUE(findings.errors.empty()) << findings.errors[0];
  return Save(document);
}

TEST(DocumentSavingTest, AnEmptyDocument) {
  EXPECT_EQ(Save(GraphDocument(GetCatalog())),
            Quoted("{\n  'format': 'value-graph',\n  'version': 2,\n  'nodes': []\n}\n"));
}

TEST(DocumentSavingTest, EveryKeyInItsPlace) {
  const std::string text = Quoted(R"({
  '$schema': 'graph.schema.json',
  'format': 'value-graph',
  'version': 2,
  'nodes': [
    {'id': 'height', 'type': 'ImageReaderNode', 'attributes': {'path': 'tiles\\a.exr'}, 'position': [0, 0]},
    {'id': 'raised', 'type': [10, 320, 5], 'enabled': true, 'attributeVersion': 0, 'attributes': {'constant': 0.25}},
    {'id': 'off', 'type': 'NumberNode', 'enabled': false, 'position': [220, -0.5], 'note': 'sea\nlevel'}
  ],
  'connections': [
    {'from': 'height.image', 'to': 'raised.image', 'index': 0},
    {'from': 'off.number', 'to': 'raised.constant'}
  ],
  'outputs': [
    {'from': 'raised.image', 'path': 'raised.exr', 'type': 'float', 'metadata': 'keep'},
    {'from': 'raised.image', 'path': 'b.exr', 'type': 'int16', 'samples': 'stored', 'opacity': 'drop', 'layer': 'x'}
  ],
  'frames': [
    {'title': 'Height', 'box': [-20, -20, 460, 160], 'color': '#3b7a57'},
    {'box': [0, 0, 1, 1]}
  ],
  'view': {'center': [110, 0], 'zoom': 1, 'shown': 'raised.image'}
}
)");
  EXPECT_EQ(SaveLoaded(text), text);
}

TEST(DocumentSavingTest, LongLinesAreBrokenInAFixedWay) {
  // The line of a node has four columns before it and, but for the last, a comma after it.
  const auto make = [](std::size_t letters) {
    return Quoted("{'id': 'a', 'type': 'TextNode', 'attributes': {'value': '" + std::string(letters, 'x') + "'}}");
  };
  const std::size_t fitting = 120 - 4 - make(0).size();
  const std::string head = Quoted("{\n  'format': 'value-graph',\n  'version': 2,\n  'nodes': [\n");
  const std::string tail = "\n  ]\n}\n";
  const std::string lead = Quoted("{'format': 'value-graph', 'version': 2, 'nodes': [");
  EXPECT_EQ(SaveLoaded(lead + make(fitting) + "]}"), head + "    " + make(fitting) + tail);
  const std::string broken =
      Quoted("    {\n      'id': 'a',\n      'type': 'TextNode',\n      'attributes': {'value': '" +
             std::string(fitting + 1, 'x') + "'}\n    }");
  EXPECT_EQ(SaveLoaded(lead + make(fitting + 1) + "]}"), head + broken + tail);
  // With a comma after it the line has one column less.
  const std::string second = Quoted("{'id': 'b', 'type': 'TextNode'}");
  const std::string shorter =
      Quoted("    {\n      'id': 'a',\n      'type': 'TextNode',\n      'attributes': {'value': '" +
             std::string(fitting, 'x') + "'}\n    },\n    " + second);
  EXPECT_EQ(SaveLoaded(lead + make(fitting) + ", " + second + "]}"), head + shorter + tail);
  // What does not fit on a line of its own is broken further; a text never is.
  const std::string longest =
      Quoted("    {\n      'id': 'a',\n      'type': 'TextNode',\n      'attributes': {\n        'value': '" +
             std::string(200, 'x') + "'\n      }\n    }");
  EXPECT_EQ(SaveLoaded(lead + make(200) + "]}"), head + longest + tail);
}

TEST(DocumentSavingTest, ColumnsAreCharactersAndNotBytes) {
  std::string letters;
  for (int i = 0; i < 50; ++i) letters += "\xC3\xA4";
  const std::string node = Quoted("{'id': 'a', 'type': 'TextNode', 'attributes': {'value': '" + letters + "'}}");
  ASSERT_GT(node.size(), 120U);
  EXPECT_TRUE(Contains(SaveLoaded(MakeText(node)), "    " + node + "\n"));
}

TEST(DocumentSavingTest, AttributesThatDifferOrWereGiven) {
  GraphDocument document(GetCatalog());
  LoadText(document, MakeText("{'id': 'a', 'type': 'ImageWavesNode', 'attributes': {'wavelength': 16}}"));
  EXPECT_TRUE(Contains(Save(document), Quoted("'attributes': {'wavelength': 16}}")));
  document.FindNode("a")->GetAttribute(std::string("height"))->SetNumber(3.0, false);
  EXPECT_TRUE(Contains(Save(document), Quoted("'attributes': {'height': 3, 'wavelength': 16}}")));
  document.FindNode("a")->GetAttribute(std::string("height"))->ResetToDefault();
  EXPECT_TRUE(Contains(Save(document), Quoted("'attributes': {'wavelength': 16}}")));
  Status status;
  document.AddNode("b", {10, 16, 32}, status);
  EXPECT_TRUE(Contains(Save(document), Quoted("{'id': 'b', 'type': 'ImageWavesNode'}")));
}

TEST(DocumentSavingTest, NumbersInTheirShortestForm) {
  const std::vector<std::pair<double, std::string>> cases{{0.0, "0"},
                                                          {-0.0, "-0.0"},
                                                          {1.0, "1"},
                                                          {-2.5, "-2.5"},
                                                          {0.1, "0.1"},
                                                          {100000, "100000"},
                                                          {0.30000000000000004, "0.30000000000000004"},
                                                          {1e20, "100000000000000000000"},
                                                          {1e21, "1e21"},
                                                          {-1e30, "-1e30"},
                                                          {1e-6, "0.000001"},
                                                          {2.5e-7, "2.5e-7"},
                                                          {5e-324, "5e-324"},
                                                          {1.7976931348623157e308, "1.7976931348623157e308"}};
  for (const auto& [number, text] : cases) {
    GraphDocument document(GetCatalog());
    Status status;
    document.AddNode("n", {10, 16, 48}, status)->GetAttribute(std::string("value"))->SetNumber(number, false);
    const std::string saved = Save(document);
    // The default is not written.
    const bool is_default = number == 0.0 && !std::signbit(number);
    EXPECT_EQ(saved.find("value\": ") == std::string::npos, is_default);
    if (!is_default) {
      EXPECT_TRUE(Contains(saved, Quoted("{'value': " + text + "}")));
    }
    GraphDocument again(GetCatalog());
    EXPECT_TRUE(LoadText(again, saved).errors.empty());
    EXPECT_EQ(again.FindNode("n")->GetAttribute(std::string("value"))->GetValue().GetNumber(), number);
    EXPECT_EQ(std::signbit(again.FindNode("n")->GetAttribute(0)->GetValue().GetNumber()), std::signbit(number));
    EXPECT_EQ(Save(again), saved);
  }
}

TEST(DocumentSavingTest, CurrentNamesAndTheCurrentAttributeVersion) {
  const std::string text = MakeText(
      "{'id': 'r', 'type': 'ImageReliefNode', 'attributeVersion': 0, 'attributes': {'height': 3}},"
      "{'id': 'a', 'type': 'ImageValueAddNode', 'attributes': {'mask_min': 1, 'value': 4}},"
      "{'id': 'n', 'type': 'NumberNode'}",
      "{'from': 'n.number', 'to': 'r.height'}, {'from': 'n.number', 'to': 'a.value'}");
  const std::string saved = SaveLoaded(text);
  EXPECT_TRUE(Contains(saved, Quoted("'attributeVersion': 1, 'attributes': {'multiplier': 3}}")));
  EXPECT_TRUE(Contains(saved, Quoted("{'id': 'a', 'type': 'ImageValueAddNode', 'attributes': {'constant': 4}}")));
  EXPECT_TRUE(Contains(saved, Quoted("'to': 'r.multiplier'")));
  EXPECT_TRUE(Contains(saved, Quoted("'to': 'a.constant'")));
  EXPECT_EQ(SaveLoaded(saved), saved);
}

TEST(DocumentSavingTest, TextIsEscapedWhereJsonAsksForIt) {
  GraphDocument document(GetCatalog());
  Status status;
  const std::string value = "a\"b\\c\n\t\r\x01\x7F/\xC3\xA4\xF0\x9F\x8C\x8A";
  document.AddNode("n", {10, 16, 50}, status)->GetAttribute(std::string("value"))->SetString(value, false);
  const std::string saved = Save(document);
  EXPECT_TRUE(Contains(saved, "\"a\\\"b\\\\c\\n\\t\\r\\u0001\\u007f/\xC3\xA4\xF0\x9F\x8C\x8A\""));
  GraphDocument again(GetCatalog());
  LoadText(again, saved);
  EXPECT_EQ(again.FindNode("n")->GetAttribute(std::string("value"))->GetValue().GetText(), value);
}

TEST(DocumentSavingTest, WhatJsonCannotHoldIsRefused) {
  TemporaryFolder folder;
  Testing::WriteText(folder / "graph.json", "before");
  const auto expect = [&](const NodeType& type, const std::function<void(Node&)>& change, const std::string& part) {
    GraphDocument document(GetCatalog());
    Status status;
    change(*document.AddNode("n", type, status));
    const Status saved = document.Save(folder / "graph.json");
    EXPECT_TRUE(saved.IsError());
    EXPECT_TRUE(Contains(saved.GetMessage(), part));
    EXPECT_TRUE(Contains(saved.GetMessage(), "graph.json"));
    EXPECT_EQ(Testing::ReadText(folder / "graph.json"), "before");
  };
  expect(
      {10, 16, 50}, [](Node& node) { node.GetAttribute(0)->SetString("\xFF", false); }, "n.value");
  expect(
      {10, 16, 5},
      [](Node& node) {
        node.GetAttribute(std::string("pin"))->SetPoint(std::numeric_limits<double>::infinity(), 0, false);
      },
      "n.pin");
}

TEST(DocumentSavingTest, AFileIsReplacedWholeOrNotAtAll) {
  TemporaryFolder folder;
  GraphDocument document(GetCatalog());
  Status status;
  document.AddNode("n", {10, 16, 48}, status);
  EXPECT_FALSE(document.Save(folder / "graph.json").IsError());
  EXPECT_EQ(Testing::ReadText(folder / "graph.json"), Save(document));
  EXPECT_EQ(folder.List(), (std::vector<std::string>{"graph.json"}));
  const Status missing = document.Save(folder / "none" / "graph.json");
  EXPECT_TRUE(missing.IsError());
  EXPECT_TRUE(Contains(missing.GetMessage(), "none"));
}

TEST(DocumentSavingTest, PlaceholdersKeepAllThatTheDocumentSays) {
  const std::string text = Quoted(R"({
  'format': 'value-graph',
  'version': 2,
  'nodes': [
    {'id': 'a', 'type': 'ImageRectangleNode'},
    {
      'id': 'x',
      'type': 'ImageFutureNode',
      'enabled': false,
      'attributeVersion': 3,
      'attributes': {'z': [1, 'two', null, {'deep': [true]}], 'a': 1e30},
      'position': [1, 2],
      'note': 'kept'
    },
    {'id': 'y', 'type': [99, 98, 97]}
  ],
  'connections': [
    {'from': 'a.image', 'to': 'x.anything', 'index': 7},
    {'from': 'x.result', 'to': 'y.input'}
  ],
  'outputs': [
    {'from': 'y.image', 'path': 'y.exr'}
  ]
}
)");
  EXPECT_EQ(SaveLoaded(text, {ScEng::UnknownTypes::kKeep}), text);
}

TEST(DocumentSavingTest, KeepsWhatAttributesCannotTake) {
  const std::string text = Quoted(R"({
  'format': 'value-graph',
  'version': 2,
  'nodes': [
    {'id': 'a', 'type': 'ImageValueAddNode', 'attributes': {'constant': 'much', 'depth': [1, {'b': null}]}},
    {'id': 'n', 'type': 'NumberNode', 'attributes': {'value': 3}}
  ]
}
)");
  GraphDocument document(GetCatalog());
  const Findings findings = LoadText(document, text, {ScEng::UnknownTypes::kKeep});
  EXPECT_TRUE(findings.errors.empty());
  ASSERT_EQ(findings.notes.size(), 2U);
  EXPECT_TRUE(Contains(findings.notes[0], "\"a.constant\"")) << findings.notes[0];
  EXPECT_TRUE(Contains(findings.notes[1], "\"a.depth\"")) << findings.notes[1];
  EXPECT_EQ(document.FindNode("a")->GetAttribute("constant")->GetValue().GetNumber(), 0.0);
  EXPECT_EQ(Save(document), text);
  // Under another name as well, and it is told what is wrong.
  EXPECT_FALSE(document.RenameNode("a", "sum").IsError());
  Findings told;
  document.CheckComplete(told);
  ASSERT_EQ(told.errors.size(), 2U);
  EXPECT_TRUE(Contains(told.errors[0], "\"sum.constant\"")) << told.errors[0];
  // What is set takes its place; what has no place stays.
  std::vector<std::string> notes;
  EXPECT_FALSE(document.SetAttribute("sum.constant", "0", notes).IsError());
  Findings left;
  document.CheckComplete(left);
  EXPECT_EQ(left.errors.size(), 1U);
  const std::string saved = Save(document);
  EXPECT_TRUE(Contains(saved, R"("attributes": {"constant": 0, "depth": [1, {"b": null}]})")) << saved;
  // Where nothing is kept, both are errors.
  GraphDocument strict(GetCatalog());
  EXPECT_EQ(LoadText(strict, text).errors.size(), 2U);
}

// ---- Any document ----

/// Makes a random document through the operations of an editor.
void Fill(GraphDocument& document) {
  const auto pick = [](int from, int to) { return *rc::gen::inRange(from, to); };
  const std::vector<NodeType> types{{10, 320, 5}, {10, 288, 26}, {10, 16, 10}, {10, 16, 32}, {10, 16, 48},
                                    {10, 16, 50}, {10, 16, 6},   {10, 16, 5},  {10, 320, 48}};
  const std::vector<std::string> pieces{"a", "b.c", " ", "\xC3\xA9", "\"", "\\", "/", "\xE6\xB0\xB4", "'", "1"};
  const auto text = [&](int most) {
    std::string made;
    const int count = pick(0, most);
    for (int i = 0; i < count; ++i) made += pieces[static_cast<std::size_t>(pick(0, static_cast<int>(pieces.size())))];
    return made;
  };
  const auto number = [&] {
    double bits = *rc::gen::arbitrary<double>();
    return std::isfinite(bits) ? bits : 0.5;
  };
  const int nodes = pick(0, 8);
  std::vector<std::string> notes;
  for (int i = 0; i < nodes; ++i) {
    Status status;
    const std::string id = text(5) + std::to_string(i);
    Node* node = document.AddNode(id, types[static_cast<std::size_t>(pick(0, static_cast<int>(types.size())))], status);
    RC_ASSERT(node != nullptr);
    for (std::size_t a = 0; a < node->GetNumAttributes(); ++a) {
      Attribute& attribute = *node->GetAttribute(a);
      if (pick(0, 2) == 0) continue;
      switch (attribute.GetKind()) {
        case Attribute::Kind::kFlag: attribute.SetFlag(pick(0, 2) == 1, false); break;
        case Attribute::Kind::kNumber: attribute.SetNumber(number(), false); break;
        case Attribute::Kind::kString: attribute.SetString(text(40) + "\n\x02", false); break;
        case Attribute::Kind::kPoint: attribute.SetPoint(number(), number(), false); break;
        case Attribute::Kind::kFrame: attribute.SetFrame(number(), number(), number(), number(), false); break;
        case Attribute::Kind::kColor: attribute.SetRgbo(number(), number(), number(), number(), false); break;
        case Attribute::Kind::kChoice:
          attribute.SetChoice(
              attribute
                  .GetChoices()[static_cast<std::size_t>(pick(0, static_cast<int>(attribute.GetChoices().size())))],
              false);
          break;
      }
    }
    if (pick(0, 3) == 0) document.SetEnabled(id, false);
    if (pick(0, 2) == 0) document.SetPosition(id, ScEng::Point{number(), number()});
    if (pick(0, 2) == 0) document.SetNote(id, text(30));
  }
  const std::vector<std::string> ids = document.GetIds();
  for (int i = 0; i < 3 * nodes; ++i) {
    const Node* from = document.FindNode(ids[static_cast<std::size_t>(pick(0, nodes))]);
    const Node* to = document.FindNode(ids[static_cast<std::size_t>(pick(0, nodes))]);
    if (from->GetOutplugs().empty() || to->GetInplugs().empty()) continue;
    const auto outplug = static_cast<unsigned>(pick(0, static_cast<int>(from->GetOutplugs().size())));
    const auto inplug = static_cast<unsigned>(pick(0, static_cast<int>(to->GetInplugs().size())));
    // Many are refused: kinds that differ, cycles, inputs that are taken.
    static_cast<void>(document.Connect(document.GetId(*from) + "." + from->GetOutplugName(outplug),
                                       document.GetId(*to) + "." + to->GetInplugName(inplug),
                                       static_cast<unsigned>(pick(0, 3))));
  }
  for (const std::string& id : ids) {
    ScEng::DocumentOutput output;
    output.from = id + ".image";
    output.path = text(20) + "\\x.exr";
    if (pick(0, 2) == 0) output.type = "half";
    if (pick(0, 3) == 0) output.metadata = "strip";
    static_cast<void>(document.AddOutput(output));
  }
  std::vector<ScEng::DocumentFrame> frames;
  for (int i = pick(0, 3); i > 0; --i)
    frames.push_back({text(20), {number(), number(), number(), number()}, "#12aBcf"});
  RC_ASSERT(!document.SetFrames(frames).IsError());
  if (pick(0, 2) == 0) {
    RC_ASSERT(!document.SetView(ScEng::DocumentView{ScEng::Point{number(), number()}, 0.5, ""}).IsError());
  }
}

RC_GTEST_PROP(DocumentSavingProperties, WhatIsSavedLoadedAndSavedIsTheSameToTheByte, ()) {
  GraphDocument document(GetCatalog());
  Fill(document);
  std::string saved;
  RC_ASSERT(!document.SaveText(saved).IsError());
  GraphDocument again(GetCatalog());
  const Findings findings = LoadText(again, saved);
  RC_ASSERT(findings.errors.empty());
  RC_ASSERT(findings.notes.empty());
  std::string twice;
  RC_ASSERT(!again.SaveText(twice).IsError());
  RC_ASSERT(twice == saved);
  RC_ASSERT(again.GetIds() == document.GetIds());
  RC_ASSERT(again.GetConnections() == document.GetConnections());
  RC_ASSERT(again.GetOutputs() == document.GetOutputs());
  RC_ASSERT(again.GetFrames() == document.GetFrames());
  for (const std::string& id : document.GetIds()) {
    const Node& before = *document.FindNode(id);
    const Node& now = *again.FindNode(id);
    RC_ASSERT(before.GetNodeType() == now.GetNodeType());
    RC_ASSERT(before.IsEnabled() == now.IsEnabled());
    for (std::size_t i = 0; i < before.GetNumAttributes(); ++i) {
      RC_ASSERT(before.GetAttribute(i)->GetValue() == now.GetAttribute(i)->GetValue());
    }
  }
}

}  // namespace
