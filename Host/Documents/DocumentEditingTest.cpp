// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "Host/Documents/GraphDocument.h"
#include "Tests/Support/DocumentTesting.h"
#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::DocumentConnection;
using ScEng::DocumentOutput;
using ScEng::Findings;
using ScEng::GraphDocument;
using ScEng::Status;
using Testing::Contains;
using Testing::GetCatalog;
using Testing::LoadText;
using Testing::MakeText;
using Testing::Quoted;
using Testing::Save;

constexpr const char* kGraph =
    "{'id': 'a', 'type': 'ImageRectangleNode'}, {'id': 'b.1', 'type': 'ImageValueAddNode'},"
    "{'id': 'c', 'type': 'ImageValueAddNode'}, {'id': 'n', 'type': 'NumberNode'}";
constexpr const char* kLinks =
    "{'from': 'a.image', 'to': 'b.1.image'}, {'from': 'b.1.image', 'to': 'c.image', 'index': 2},"
    "{'from': 'n.number', 'to': 'b.1.value'}";
constexpr const char* kOutputs = "{'from': 'b.1.image', 'path': 'b.exr'}, {'from': 'c.image', 'path': 'c.exr'}";

/// Writes down what it is told.
class Listener : public ScEng::DocumentObserver {
 public:
  std::vector<std::string> lines;

  void OnNodeAdded(const std::string& id) override { lines.push_back("added " + id); }
  void OnNodeRemoved(const std::string& id) override { lines.push_back("removed " + id); }
  void OnNodeRenamed(const std::string& before, const std::string& now) override {
    lines.push_back("renamed " + before + " " + now);
  }
  void OnNodeChanged(const std::string& id) override { lines.push_back("changed " + id); }
  void OnOrderChanged() override { lines.push_back("order"); }
  void OnConnectionAdded(const DocumentConnection& connection) override { lines.push_back("+" + Describe(connection)); }
  void OnConnectionRemoved(const DocumentConnection& connection) override {
    lines.push_back("-" + Describe(connection));
  }
  void OnOutputsChanged() override { lines.push_back("outputs"); }
  void OnFramesChanged() override { lines.push_back("frames"); }
  void OnViewChanged() override { lines.push_back("view"); }

  std::vector<std::string> Take() { return std::exchange(lines, {}); }

 private:
  static std::string Describe(const DocumentConnection& connection) {
    return connection.from + ">" + connection.to + "@" + std::to_string(connection.index);
  }
};

class DocumentEditingTest : public testing::Test {
 protected:
  void SetUp() override {
    EXPECT_TRUE(LoadText(document_, MakeText(kGraph, kLinks, kOutputs)).errors.empty());
    document_.AddObserver(&listener_);
  }
  void TearDown() override { document_.RemoveObserver(&listener_); }

  /// Expects an error that holds all the parts, and that nothing has changed and nobody was told.
  void ExpectRefused(const Status& status, const std::vector<std::string>& parts) {
    EXPECT_TRUE(status.IsError());
    for (const std::string& part : parts) EXPECT_TRUE(Contains(status.GetMessage(), part));
    EXPECT_EQ(Save(document_), before_);
    EXPECT_TRUE(listener_.lines.empty());
  }
  void ExpectDone(const Status& status, const std::vector<std::string>& told) {
    EXPECT_FALSE(status.IsError()) << status.GetMessage();
    EXPECT_EQ(listener_.Take(), told);
    before_ = Save(document_);
  }

  GraphDocument document_{GetCatalog()};
  Listener listener_;
  std::string before_ = [] {
    GraphDocument document(GetCatalog());
    LoadText(document, MakeText(kGraph, kLinks, kOutputs));
    return Save(document);
  }();
};

TEST_F(DocumentEditingTest, NodesAreAddedAndRemovedWithAllThatHangsOnThem) {
  Status status;
  EXPECT_NE(document_.AddNode("d", {10, 16, 10}, status), nullptr);
  ExpectDone(status, {"added d"});
  ExpectDone(document_.SetView(ScEng::DocumentView{{}, {}, "b.1.image"}), {"view"});
  ExpectDone(document_.RemoveNode("b.1"), {"-a.image>b.1.image@0", "-b.1.image>c.image@2", "-n.number>b.1.constant@0",
                                           "outputs", "view", "removed b.1"});
  EXPECT_EQ(document_.GetIds(), (std::vector<std::string>{"a", "c", "n", "d"}));
  EXPECT_TRUE(document_.GetConnections().empty());
  ASSERT_EQ(document_.GetOutputs().size(), 1U);
  EXPECT_EQ(document_.GetOutputs()[0].from, "c.image");
  EXPECT_EQ(document_.FindNode("b.1"), nullptr);
  EXPECT_EQ(document_.GetView()->shown, "");
  ExpectRefused(document_.RemoveNode("b.1"), {"\"b.1\""});
  // The id and the input are free again.
  EXPECT_NE(document_.AddNode("b.1", {10, 16, 10}, status), nullptr);
  EXPECT_FALSE(document_.Connect("b.1.image", "c.image", 2).IsError());
}

TEST_F(DocumentEditingTest, ConnectionsAreRemovedOneByOne) {
  EXPECT_EQ(document_.GetConnections(),
            (std::vector<DocumentConnection>{
                {"a.image", "b.1.image", 0}, {"b.1.image", "c.image", 2}, {"n.number", "b.1.constant", 0}}));
  ExpectRefused(document_.Disconnect("b.1.image", "c.image", 0), {"\"b.1.image\"", "\"c.image\"", "index 0"});
  ExpectRefused(document_.Disconnect("x.image", "c.image"), {"\"x\""});
  ExpectRefused(document_.Disconnect("b.1.picture", "c.image"), {"picture"});
  ExpectDone(document_.Disconnect("b.1.image", "c.image", 2), {"-b.1.image>c.image@2"});
  // An old name is the same plug.
  ExpectDone(document_.Disconnect("n.number", "b.1.value"), {"-n.number>b.1.constant@0"});
  EXPECT_EQ(document_.GetConnections(), (std::vector<DocumentConnection>{{"a.image", "b.1.image", 0}}));
  // A cycle before is none now.
  ExpectDone(document_.Connect("c.image", "b.1.image", 1), {"+c.image>b.1.image@1"});
}

TEST_F(DocumentEditingTest, EverythingFollowsANewId) {
  ExpectDone(document_.SetView(ScEng::DocumentView{{}, {}, "b.1.image"}), {"view"});
  Node* node = document_.FindNode("b.1");
  ExpectDone(document_.RenameNode("b.1", "sum"), {"renamed b.1 sum"});
  EXPECT_EQ(document_.FindNode("sum"), node);
  EXPECT_EQ(document_.FindNode("b.1"), nullptr);
  EXPECT_EQ(node->GetLabel(), "sum");
  EXPECT_EQ(document_.GetId(*node), "sum");
  EXPECT_EQ(document_.GetIds(), (std::vector<std::string>{"a", "sum", "c", "n"}));
  EXPECT_EQ(document_.GetConnections(),
            (std::vector<DocumentConnection>{
                {"a.image", "sum.image", 0}, {"sum.image", "c.image", 2}, {"n.number", "sum.constant", 0}}));
  EXPECT_EQ(document_.GetOutputs()[0].from, "sum.image");
  EXPECT_EQ(document_.GetOutputs()[1].from, "c.image");
  EXPECT_EQ(document_.GetView()->shown, "sum.image");
  ExpectDone(document_.RenameNode("sum", "sum"), {});
  ExpectRefused(document_.RenameNode("sum", "a"), {"\"a\"", "already"});
  ExpectRefused(document_.RenameNode("sum", ""), {"1 to 200"});
  ExpectRefused(document_.RenameNode("b.1", "x"), {"\"b.1\""});
}

TEST_F(DocumentEditingTest, NodesAreReordered) {
  ExpectDone(document_.MoveNode("n", 0), {"order"});
  EXPECT_EQ(document_.GetIds(), (std::vector<std::string>{"n", "a", "b.1", "c"}));
  ExpectDone(document_.MoveNode("n", 2), {"order"});
  EXPECT_EQ(document_.GetIds(), (std::vector<std::string>{"a", "b.1", "n", "c"}));
  ExpectDone(document_.MoveNode("a", 99), {"order"});
  EXPECT_EQ(document_.GetIds(), (std::vector<std::string>{"b.1", "n", "c", "a"}));
  ExpectRefused(document_.MoveNode("z", 0), {"\"z\""});
}

TEST_F(DocumentEditingTest, IdsHaveOneTo200CharactersAndNoControlCharacters) {
  const auto add = [&](const std::string& id) {
    Status status;
    const bool is_added = document_.AddNode(id, {10, 16, 48}, status) != nullptr;
    EXPECT_EQ(is_added, !status.IsError());
    EXPECT_EQ(ScEng::MakeLine(status.GetMessage()), status.GetMessage());
    return is_added;
  };
  std::string letters;
  for (int i = 0; i < 200; ++i) letters += "\xE6\xB0\xB4";
  EXPECT_TRUE(add(letters));
  EXPECT_FALSE(add(letters + "x"));
  EXPECT_FALSE(add(std::string(201, 'x')));
  EXPECT_TRUE(add("a b"));
  for (const char* id : {"", "a=b", "=", "a\nb", "\x1B[31m", "\x7F", "\xC2\x85", "\xFF"}) EXPECT_FALSE(add(id)) << id;
  EXPECT_FALSE(add(std::string("a\0b", 3)));
}

TEST_F(DocumentEditingTest, NodesAreEnabledPlacedAndAnnotated) {
  ExpectDone(document_.SetEnabled("a", false), {"changed a"});
  EXPECT_FALSE(document_.FindNode("a")->IsEnabled());
  EXPECT_FALSE(document_.IsEnabled("a"));
  ExpectDone(document_.SetPosition("a", ScEng::Point{1.5, -2}), {"changed a"});
  ExpectDone(document_.SetNote("a", "sea level"), {"changed a"});
  EXPECT_EQ(document_.GetPosition("a"), (ScEng::Point{1.5, -2}));
  EXPECT_EQ(document_.GetPosition("c"), std::nullopt);
  EXPECT_EQ(document_.GetNote("a"), "sea level");
  EXPECT_TRUE(Contains(Save(document_), Quoted("{'id': 'a', 'type': 'ImageRectangleNode', 'enabled': false, "
                                               "'position': [1.5, -2], 'note': 'sea level'}")));
  ExpectDone(document_.SetPosition("a", std::nullopt), {"changed a"});
  ExpectRefused(document_.SetPosition("a", ScEng::Point{std::numeric_limits<double>::quiet_NaN(), 0}), {"\"a\""});
  ExpectRefused(document_.SetNote("a", "\xFF"), {"\"a\""});
  ExpectRefused(document_.SetEnabled("z", true), {"\"z\""});
}

TEST_F(DocumentEditingTest, OutputsAreReplacedAndRemoved) {
  DocumentOutput output{"c.image", "sub\\d.tif", "half", "unit", "keep", "strip", ""};
  ExpectDone(document_.SetOutput(0, output), {"outputs"});
  EXPECT_EQ(document_.GetOutputs()[0], output);
  ExpectDone(document_.RemoveOutput(1), {"outputs"});
  ASSERT_EQ(document_.GetOutputs().size(), 1U);
  ExpectRefused(document_.SetOutput(1, output), {"1"});
  ExpectRefused(document_.RemoveOutput(1), {"1"});
  for (const auto& [key, word] : {std::pair<const char*, std::string DocumentOutput::*>{"type", &DocumentOutput::type},
                                  {"samples", &DocumentOutput::samples},
                                  {"opacity", &DocumentOutput::opacity},
                                  {"metadata", &DocumentOutput::metadata}}) {
    DocumentOutput wrong = output;
    wrong.*word = "zebra";
    ExpectRefused(document_.AddOutput(wrong), {key, "zebra"});
  }
  output.path = "";
  ExpectRefused(document_.AddOutput(output), {"path"});
  output.path = std::string("a\0.exr", 6);
  ExpectRefused(document_.AddOutput(output), {"path"});
  ExpectRefused(document_.AddOutput({"n.number", "a.exr", "", "", "", "", ""}), {"n.number", "image"});
}

TEST_F(DocumentEditingTest, FramesAndViewAreChecked) {
  ExpectDone(document_.SetFrames({{"Height", {-20, -20, 460, 160}, "#3B7a57"}}), {"frames"});
  EXPECT_EQ(document_.GetFrames()[0].title, "Height");
  for (const char* color : {"red", "#12345", "#1234567", "#12345g", "3b7a57#"}) {
    ExpectRefused(document_.SetFrames({{"", {}, color}}), {"#rrggbb", color});
  }
  ExpectRefused(document_.SetFrames({{"", {0, 0, std::numeric_limits<double>::infinity(), 0}, ""}}), {"box"});
  ExpectDone(document_.SetView(ScEng::DocumentView{ScEng::Point{1, 2}, 0.5, "c.image"}), {"view"});
  EXPECT_EQ(document_.GetView()->zoom, 0.5);
  ExpectRefused(document_.SetView(ScEng::DocumentView{{}, 0.0, ""}), {"zoom"});
  ExpectRefused(document_.SetView(ScEng::DocumentView{{}, {}, "c.picture"}), {"picture"});
  ExpectRefused(document_.SetView(ScEng::DocumentView{{}, {}, "n.number"}), {"n.number"});
  ExpectDone(document_.SetView(std::nullopt), {"view"});
}

TEST_F(DocumentEditingTest, ObserversMayLeaveWhileTheyAreTold) {
  class Leaving : public ScEng::DocumentObserver {
   public:
    explicit Leaving(GraphDocument& document) : document_(document) {}
    int times = 0;
    void OnOrderChanged() override {
      ++times;
      document_.RemoveObserver(this);
    }

   private:
    GraphDocument& document_;
  };
  Leaving leaving(document_);
  document_.AddObserver(&leaving);
  EXPECT_FALSE(document_.MoveNode("a", 1).IsError());
  EXPECT_FALSE(document_.MoveNode("a", 2).IsError());
  EXPECT_EQ(leaving.times, 1);
  EXPECT_EQ(listener_.Take(), (std::vector<std::string>{"order", "order"}));
}

TEST(PlaceholderTest, AreErrorsUnlessTheLoaderAsksForThem) {
  const std::string text = MakeText(
      "{'id': 'a', 'type': 'ImageRectangleNode'}, {'id': 'x', 'type': 'ImageAddNode'}, {'id': 'x', 'type': 'X'}",
      "{'from': 'a.image', 'to': 'x.image'}");
  GraphDocument strict(GetCatalog());
  Findings findings = LoadText(strict, text);
  ASSERT_EQ(findings.errors.size(), 3U);
  EXPECT_TRUE(Contains(findings.errors[0], "ImageAddNode"));
  EXPECT_TRUE(Contains(findings.errors[1], "\"X\""));
  EXPECT_TRUE(Contains(findings.errors[2], "already"));
  // What depends on it is looked at all the same, and the error is not said again.
  EXPECT_TRUE(strict.IsPlaceholder("x"));
  EXPECT_EQ(strict.GetConnections().size(), 1U);
  strict.CheckComplete(findings);
  EXPECT_EQ(findings.errors.size(), 3U);

  GraphDocument document(GetCatalog());
  findings = LoadText(document, text, {ScEng::UnknownTypes::kKeep});
  ASSERT_EQ(findings.errors.size(), 1U);
  EXPECT_TRUE(Contains(findings.errors[0], "already"));
  ASSERT_EQ(findings.notes.size(), 1U);
  EXPECT_TRUE(Contains(findings.notes[0], "ImageAddNode"));
  EXPECT_TRUE(document.IsPlaceholder("x"));
  EXPECT_FALSE(document.IsPlaceholder("a"));
  EXPECT_EQ(document.FindNode("x"), nullptr);
  EXPECT_EQ(document.GetConnections().size(), 1U);
}

TEST(PlaceholderTest, AreEditedLikeNodes) {
  GraphDocument document(GetCatalog());
  const std::string text = MakeText(
      "{'id': 'a', 'type': 'ImageRectangleNode'}, {'id': 'x', 'type': 'X'}, {'id': 'c', 'type': 'ImageValueClampNode'}",
      "{'from': 'a.image', 'to': 'x.in'}, {'from': 'x.out', 'to': 'c.image'}");
  EXPECT_TRUE(LoadText(document, text, {ScEng::UnknownTypes::kKeep}).errors.empty());
  // Inputs that a placeholder takes or feeds are taken.
  EXPECT_TRUE(document.Connect("a.image", "x.in", 0).IsError());
  EXPECT_TRUE(document.Connect("a.image", "c.image", 0).IsError());
  EXPECT_TRUE(document.Connect("x.other", "c.image", 1).IsError());
  EXPECT_TRUE(document.Connect("x.other", "c.nothing", 0).IsError());
  EXPECT_FALSE(document.Connect("a.image", "x.in", 1).IsError());
  EXPECT_FALSE(document.RenameNode("x", "y").IsError());
  EXPECT_TRUE(document.Connect("a.image", "y.in", 1).IsError());
  EXPECT_FALSE(document.Disconnect("y.out", "c.image").IsError());
  EXPECT_FALSE(document.Connect("a.image", "c.image", 0).IsError());
  EXPECT_TRUE(document.Connect("y.out", "c.image", 0).IsError());
  EXPECT_FALSE(document.SetEnabled("y", false).IsError());
  EXPECT_FALSE(document.IsEnabled("y"));
  EXPECT_FALSE(document.SetNote("y", "kept").IsError());
  EXPECT_TRUE(Contains(Save(document), Quoted("{'id': 'y', 'type': 'X', 'enabled': false, 'note': 'kept'}")));
  std::vector<std::string> notes;
  EXPECT_TRUE(document.SetAttribute("y.value", "1", notes).IsError());
  EXPECT_TRUE(document.SetInput("y", "a.exr").IsError());
  EXPECT_FALSE(document.RemoveNode("y").IsError());
  EXPECT_EQ(document.GetConnections(), (std::vector<DocumentConnection>{{"a.image", "c.image", 0}}));
}

TEST(PlaceholderTest, AreErrorsOfCheckAndRun) {
  Testing::TemporaryFolder folder;
  GraphDocument document(GetCatalog());
  Findings findings;
  document.LoadText(MakeText("{'id': 'x', 'type': 'ImageClampNode'}, {'id': 'c', 'type': 'ImageValueClampNode'},"
                             "{'id': 'a', 'type': 'ImageRectangleNode'}",
                             "{'from': 'x.out', 'to': 'c.image'}",
                             "{'from': 'c.image', 'path': 'c.exr'}, {'from': 'a.image', 'path': 'a.exr'}"),
                    folder.Path(), "graph.json", findings, {ScEng::UnknownTypes::kKeep});
  document.CheckComplete(findings);
  ASSERT_EQ(findings.errors.size(), 1U);
  EXPECT_TRUE(Contains(findings.errors[0], "\"x\""));
  EXPECT_TRUE(Contains(findings.errors[0], "ImageClampNode"));
  const ScEng::RunReport run = document.Run();
  EXPECT_EQ(run.failure, ScEng::RunFailure::kNode);
  EXPECT_EQ(run.findings.errors.size(), 1U);
  EXPECT_TRUE(folder.List().empty());
  // What does not depend on it can be looked at.
  ScEng::RunReport report;
  EXPECT_FALSE(document.Evaluate("c.image", report));
  EXPECT_EQ(report.findings.errors.size(), 1U);
  EXPECT_TRUE(document.Evaluate("a.image", report));
  EXPECT_TRUE(report.findings.errors.empty());
}

}  // namespace
