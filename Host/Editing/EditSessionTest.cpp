// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/EditSession.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "Tests/Support/EditTesting.h"

namespace {

using ScEng::DocumentConnection;
using ScEng::EditSession;
using ScEng::GraphDocument;
using ScEng::NewNode;
using ScEng::Point;
using ScEng::Status;
using Testing::Contains;
using Testing::EditSessionTest;
using Testing::Quoted;
using Testing::Save;

using Lines = std::vector<std::string>;
using Connected = std::vector<DocumentConnection>;

TEST_F(EditSessionTest, AddsNodesUnderIdsOfTheirOwn) {
  std::string id;
  ExpectDone(session_->AddNode({Testing::kClamp, "", Point{10, 20}}, &id), "Add Value Clamp");
  EXPECT_EQ(id, "value_clamp");
  EXPECT_EQ(session_->GetDocument().GetIds(), (Lines{"a", "b", "x", "c", "d", "n", "value_clamp"}));
  EXPECT_EQ(session_->GetDocument().GetPosition(id), (Point{10, 20}));
  ExpectDone(session_->AddNode({Testing::kClamp, "", {}}, &id), "Add Value Clamp");
  EXPECT_EQ(id, "value_clamp2");
  ExpectRefused(session_->AddNode({Testing::kClamp, "a", {}}, &id), {"\"a\"", "already"});
  ExpectRefused(session_->AddNode({Testing::kClamp, "a=b", {}}, &id), {"\"a=b\"", "1 to 200"});
  ExpectRefused(session_->AddNode({{1, 2, 3}, "z", {}}, &id), {"no node type"});
  // The node was made before its position is refused, and is gone again.
  ExpectRefused(session_->AddNode({Testing::kClamp, "z", Point{std::numeric_limits<double>::infinity(), 0}}, &id),
                {"\"z\"", "finite"});
  EXPECT_EQ(id, "value_clamp2");
}

TEST_F(EditSessionTest, RemovesNodesWithAllThatHangsOnThem) {
  ExpectDone(session_->RemoveNodes({"b", "c"}), "Remove 2 nodes");
  EXPECT_EQ(session_->GetDocument().GetIds(), (Lines{"a", "x", "d", "n"}));
  EXPECT_TRUE(Connections().empty());
  ASSERT_EQ(session_->GetDocument().GetOutputs().size(), 1U);
  EXPECT_EQ(session_->GetDocument().GetView()->shown, "");
  ExpectDone(session_->RemoveNodes({"x", "x"}), "Remove 2 nodes");
  ExpectRefused(session_->RemoveNodes({"a", "z"}), {"\"z\""});
  ExpectRefused(session_->RemoveNodes({}), {"no node"});
}

TEST_F(EditSessionTest, HealsAroundRemovedNodes) {
  // What fed b's main input now feeds what b and c fed, through both; the number that fed b's constant feeds nothing.
  ExpectDone(session_->RemoveAndHeal({"b", "c"}), "Remove 2 nodes and heal");
  EXPECT_EQ(Connections(), (Connected{{"a.image", "d.image", 0}, {"a.image", "x.in", 5}}));
  EXPECT_EQ(session_->GetDocument().GetOutputs()[0].from, "a.image");
  EXPECT_EQ(session_->GetDocument().GetView()->shown, "a.image");
  // A rectangle has no input that could be joined to anything.
  ExpectDone(session_->RemoveAndHeal({"a"}), "Remove a and heal");
  EXPECT_TRUE(Connections().empty());
  EXPECT_EQ(session_->GetDocument().GetOutputs().size(), 1U);
}

TEST_F(EditSessionTest, ConnectsAndDisconnects) {
  ExpectDone(session_->Connect({"a.image", "c.image", 0}), "Connect a.image to c.image");
  EXPECT_EQ(Connections().back(), (DocumentConnection{"a.image", "c.image", 0}));
  ExpectDone(session_->Disconnect({"a.image", "b.image", 0}), "Disconnect a.image from b.image");
  EXPECT_EQ(Connections().front(), (DocumentConnection{"n.number", "b.constant", 0}));
  // "value" is an old name of the attribute.
  ExpectDone(session_->Disconnect({"n.number", "b.value", 0}), "Disconnect n.number from b.value");
  ExpectRefused(session_->Connect({"d.image", "b.image", 0}), {"cycle"});
  ExpectRefused(session_->Connect({"a.image", "d.image", 0}), {"already"});
  ExpectRefused(session_->Connect({"n.number", "d.image", 0}), {"number", "image"});
  ExpectRefused(session_->Connect({"a.picture", "c.image", 1}), {"picture"});
  ExpectRefused(session_->Connect({"a", "c.image", 1}), {"\"a\"", "NODE.NAME"});
  ExpectRefused(session_->Disconnect({"a.image", "c.image", 7}), {"no connection", "7"});
}

TEST_F(EditSessionTest, ReconnectsInPlaceOfWhatIsThere) {
  ExpectDone(session_->Reconnect({"b.image", "d.image", 0}), "Connect b.image to d.image");
  EXPECT_EQ(Connections().back(), (DocumentConnection{"b.image", "d.image", 0}));
  EXPECT_EQ(Connections().size(), 5U);
  // A refused connection leaves the one before in place.
  ExpectRefused(session_->Reconnect({"n.number", "d.image", 0}), {"number"});
  std::string id;
  ExpectDone(session_->AddNode({Testing::kNumberNode, "m", {}}), "Add Number");
  ExpectDone(session_->Reconnect({"m.number", "b.value", 0}), "Connect m.number to b.value");
  EXPECT_EQ(Connections().back(), (DocumentConnection{"m.number", "b.constant", 0}));
}

TEST_F(EditSessionTest, InsertsNodesOnConnections) {
  std::string id;
  ExpectDone(session_->AddOnConnection({Testing::kClamp, "", Point{300, 0}}, {"b.image", "c.image", 2}, &id),
             "Insert Value Clamp between b.image and c.image");
  EXPECT_EQ(id, "value_clamp");
  EXPECT_EQ(Connections()[2], (DocumentConnection{"b.image", "value_clamp.image", 0}));
  EXPECT_EQ(Connections()[3], (DocumentConnection{"value_clamp.image", "c.image", 2}));
  EXPECT_EQ(Connections().size(), 6U);
  ExpectDone(session_->AddNode({Testing::kAdd, "e", {}}), "Add Value Add");
  ExpectDone(session_->InsertOnConnection("e", {"c.image", "x.in", 5}), "Insert e between c.image and x.in");
  EXPECT_EQ(Connections().back(), (DocumentConnection{"e.image", "x.in", 5}));
  ExpectRefused(session_->InsertOnConnection("d", {"a.image", "b.image", 0}), {"already"});
  ExpectRefused(session_->InsertOnConnection("n", {"a.image", "b.image", 0}), {"\"n\"", "main input"});
  ExpectRefused(session_->InsertOnConnection("x", {"a.image", "b.image", 0}), {"\"x\"", "main input"});
  ExpectRefused(session_->InsertOnConnection("e", {"a.image", "b.image", 3}), {"no connection"});
  // A clamp does not fit between a number and an attribute, and is not left over.
  ExpectRefused(session_->AddOnConnection({Testing::kClamp, "f", {}}, {"n.number", "b.constant", 0}), {"number"});
}

TEST_F(EditSessionTest, SetsAttributes) {
  ExpectDone(session_->SetAttribute("c.constant", "0.25"), "Set c.constant");
  EXPECT_EQ(Constant("c"), 0.25);
  EXPECT_EQ(listener_.lines,
            (Lines{"set c.constant", "history", "set c.constant", "history", "set c.constant", "history"}));
  ExpectDone(session_->SetAttributes({{"c.constant", 0.5}, {"b.value", 2.0}}), "Set 2 attributes");
  EXPECT_EQ(Constant("c"), 0.5);
  EXPECT_EQ(Constant("b"), 2.0);
  // The first is set and taken back when the second is refused.
  ExpectRefused(session_->SetAttributes({{"c.constant", 3.0}, {"b.constant", true}}), {"b.constant", "a number"});
  ExpectRefused(session_->SetAttributes({{"c.constant", std::numeric_limits<double>::quiet_NaN()}}), {"finite"});
  ExpectRefused(session_->SetAttribute("c.constant", "zebra"), {"\"zebra\""});
  ExpectRefused(session_->SetAttribute("c.nothing", "1"), {"nothing"});
  ExpectRefused(session_->SetAttribute("x.deep", "1"), {"unknown here"});
  ExpectRefused(session_->SetAttribute("z.deep", "1"), {"\"z\""});
}

TEST_F(EditSessionTest, PathsStandInTheDocumentAsTheyAreGiven) {
  ExpectDone(session_->AddNode({{10, 16, 5}, "r", {}}), "Add Image Reader");
  ExpectDone(session_->SetAttribute("r.path", "tiles/a.exr"), "Set r.path");
  EXPECT_EQ(session_->GetDocument().GetInputFiles().at("r"), folder_ / "tiles/a.exr");
  EXPECT_TRUE(Contains(before_, Quoted("{'path': 'tiles/a.exr'}")));
  ExpectRefused(session_->SetAttributes({{"r.path", std::string("a\0b", 3)}}), {"character 0"});
  ExpectRefused(session_->SetAttributes({{"r.path", std::string("\xFF")}}), {"UTF-8"});
}

TEST_F(EditSessionTest, WhatChangesNothingIsNoStep) {
  EXPECT_FALSE(session_->SetEnabled({"a", "x"}, true).IsError());
  EXPECT_FALSE(session_->SetNote("a", "").IsError());
  EXPECT_FALSE(session_->SetPositions({{"a", Point{0, 0}}}).IsError());
  EXPECT_FALSE(session_->RenameNode("a", "a").IsError());
  EXPECT_FALSE(session_->MoveNode("n", 99).IsError());
  EXPECT_FALSE(session_->SetOutput(0, session_->GetDocument().GetOutputs()[0]).IsError());
  EXPECT_TRUE(session_->GetHistory().empty());
  EXPECT_FALSE(session_->IsModified());
  EXPECT_EQ(Save(session_->GetDocument()), before_);
}

TEST_F(EditSessionTest, ChangesWhatNodesAreForPeople) {
  ExpectDone(session_->SetEnabled({"a", "x"}, false), "Disable 2 nodes");
  EXPECT_FALSE(session_->GetDocument().IsEnabled("x"));
  ExpectDone(session_->SetEnabled({"a"}, true), "Enable a");
  ExpectDone(session_->SetNote("a", "sea\nlevel"), "Edit note of a");
  ExpectDone(session_->SetPositions({{"a", Point{5, 6}}, {"n", Point{7, 8}}, {"c", std::nullopt}}), "Move 3 nodes");
  EXPECT_EQ(session_->GetDocument().GetPosition("n"), (Point{7, 8}));
  EXPECT_EQ(session_->GetDocument().GetPosition("c"), std::nullopt);
  ExpectDone(session_->RenameNode("c", "raised"), "Rename c to raised");
  EXPECT_EQ(session_->GetDocument().GetView()->shown, "raised.image");
  ExpectDone(session_->MoveNode("n", 0), "Reorder n");
  EXPECT_EQ(session_->GetDocument().GetIds(), (Lines{"n", "a", "b", "x", "raised", "d"}));
  ExpectRefused(session_->RenameNode("raised", "a"), {"already"});
  ExpectRefused(session_->RenameNode("c", "e"), {"\"c\""});
  ExpectRefused(session_->SetNote("a", "\xFF"), {"UTF-8"});
  ExpectRefused(session_->SetPositions({{"a", Point{1, 1}}, {"z", Point{1, 1}}}), {"\"z\""});
  ExpectRefused(session_->SetEnabled({"a", "z"}, false), {"\"z\""});
}

TEST_F(EditSessionTest, ChangesOutputsAndFrames) {
  ExpectDone(session_->AddOutput({"c.image", "c.exr", "", "", "", "", ""}), "Add output c.image to c.exr");
  ExpectDone(session_->SetOutput(0, {"a.image", "a.tif", "half", "", "", "", ""}), "Change output a.image to a.tif");
  ExpectDone(session_->RemoveOutput(1), "Remove output d.image to d.exr");
  ExpectRefused(session_->RemoveOutput(2), {"no output 2", "2"});
  ExpectRefused(session_->SetOutput(0, {"n.number", "a.exr", "", "", "", "", ""}), {"n.number"});
  ExpectDone(session_->AddFrame({"Sea", {0, 0, 10, 10}, ""}), "Add frame \"Sea\"");
  ExpectDone(session_->SetFrame(0, {"", {0, 0, 10, 10}, "#000000"}), "Change frame");
  ExpectDone(session_->RemoveFrame(0), "Remove frame");
  ASSERT_EQ(session_->GetDocument().GetFrames().size(), 1U);
  EXPECT_EQ(session_->GetDocument().GetFrames()[0].title, "Sea");
  ExpectRefused(session_->SetFrame(1, {}), {"no frame 1"});
  ExpectRefused(session_->AddFrame({"", {}, "red"}), {"red"});
}

TEST_F(EditSessionTest, ADragIsOneStep) {
  session_->BeginGesture();
  for (const double value : {0.1, 0.2, 0.3}) {
    EXPECT_FALSE(session_->SetAttributes({{"c.constant", value}}).IsError());
  }
  EXPECT_EQ(session_->GetHistory(), (Lines{"Set c.constant"}));
  // Another thing is another step, and so is what comes back to the first.
  EXPECT_FALSE(session_->SetAttributes({{"b.constant", 1.0}}).IsError());
  EXPECT_FALSE(session_->SetAttributes({{"c.constant", 0.4}}).IsError());
  session_->EndGesture();
  EXPECT_FALSE(session_->SetAttributes({{"c.constant", 0.5}}).IsError());
  session_->BeginGesture();
  EXPECT_FALSE(session_->SetAttributes({{"c.constant", 0.6}}).IsError());
  for (const double x : {1.0, 2.0}) {
    EXPECT_FALSE(session_->SetPositions({{"a", Point{x, 0}}, {"b", Point{x, 1}}}).IsError());
  }
  session_->EndGesture();
  EXPECT_EQ(session_->GetHistory(), (Lines{"Set c.constant", "Set b.constant", "Set c.constant", "Set c.constant",
                                           "Set c.constant", "Move 2 nodes"}));
  EXPECT_FALSE(session_->GoTo(1).IsError());
  EXPECT_EQ(Constant("c"), 0.3);
  EXPECT_FALSE(session_->GoTo(0).IsError());
  EXPECT_EQ(Save(session_->GetDocument()), before_);
}

TEST_F(EditSessionTest, AGestureDoesNotTakeInWhatIsSavedOrUndone) {
  session_->BeginGesture();
  EXPECT_FALSE(session_->SetNote("a", "1").IsError());
  EXPECT_FALSE(session_->Save().IsError());
  EXPECT_FALSE(session_->SetNote("a", "2").IsError());
  EXPECT_EQ(session_->GetHistory().size(), 2U);
  EXPECT_FALSE(session_->Undo().IsError());
  EXPECT_FALSE(session_->IsModified());
  EXPECT_FALSE(session_->Redo().IsError());
  EXPECT_FALSE(session_->SetNote("a", "3").IsError());
  EXPECT_EQ(session_->GetHistory().size(), 3U);
}

TEST_F(EditSessionTest, AGroupIsOneStepOrNothing) {
  ExpectDone(session_->Group("Wire up",
                             [&] {
                               EXPECT_FALSE(session_->AddNode({Testing::kAdd, "e", {}}).IsError());
                               // A command that is refused takes back itself alone.
                               EXPECT_TRUE(session_->SetAttributes({{"e.constant", 1.0}, {"e.no", 1.0}}).IsError());
                               return session_->Connect({"a.image", "e.image", 0});
                             }),
             "Wire up");
  EXPECT_EQ(session_->GetHistory(), (Lines{"Wire up"}));
  EXPECT_EQ(Constant("e"), 0.0);
  ExpectRefused(session_->Group("Wire up",
                                [&] {
                                  EXPECT_FALSE(session_->RemoveNodes({"a", "b"}).IsError());
                                  EXPECT_TRUE(session_->Undo().IsError());
                                  return session_->Connect({"a.image", "e.image", 0});
                                }),
                {"\"a\""});
}

TEST_F(EditSessionTest, GoesAnywhereInItsHistory) {
  std::vector<std::string> texts{before_};
  for (int i = 1; i <= 5; ++i) {
    EXPECT_FALSE(session_->SetNote("a", std::to_string(i)).IsError());
    texts.push_back(Save(session_->GetDocument()));
  }
  for (const std::size_t place : {0U, 5U, 2U, 4U, 1U, 1U, 3U}) {
    EXPECT_FALSE(session_->GoTo(place).IsError());
    EXPECT_EQ(session_->GetPlace(), place);
    EXPECT_EQ(Save(session_->GetDocument()), texts[place]);
    EXPECT_EQ(session_->IsModified(), place != 0);
  }
  EXPECT_TRUE(Contains(session_->GoTo(6).GetMessage(), "no place 6"));
  // A new command takes the place of what was undone.
  EXPECT_FALSE(session_->SetNote("a", "new").IsError());
  EXPECT_EQ(session_->GetHistory().size(), 4U);
  EXPECT_EQ(session_->Redo().GetMessage(), "there is nothing to redo");
  EXPECT_FALSE(session_->GoTo(0).IsError());
  EXPECT_EQ(session_->Undo().GetMessage(), "there is nothing to undo");
}

TEST_F(EditSessionTest, KnowsWhetherItIsModified) {
  EXPECT_FALSE(session_->SetNote("a", "1").IsError());
  EXPECT_TRUE(session_->IsModified());
  EXPECT_FALSE(session_->Save().IsError());
  EXPECT_FALSE(session_->IsModified());
  EXPECT_EQ(Testing::ReadText(folder_ / "graph.json"), Save(session_->GetDocument()));
  EXPECT_FALSE(session_->Undo().IsError());
  EXPECT_TRUE(session_->IsModified());
  // What was saved is on a branch of the history that is gone.
  EXPECT_FALSE(session_->SetNote("a", "2").IsError());
  EXPECT_TRUE(session_->IsModified());
  EXPECT_FALSE(session_->Undo().IsError());
  EXPECT_TRUE(session_->IsModified());
  EXPECT_FALSE(session_->SetView(ScEng::DocumentView{Point{9, 9}, 1.0, ""}).IsError());
  EXPECT_EQ(session_->GetPlace(), 0U);
}

TEST_F(EditSessionTest, ObserversMayNotGiveCommands) {
  class Meddling : public ScEng::EditObserver {
   public:
    explicit Meddling(EditSession& session) : session_(session) {}
    std::vector<std::string> answers;
    void OnNodeChanged(const std::string& id) override {
      answers.push_back(session_.SetNote(id, "meddled").GetMessage());
    }
    void OnHistoryChanged() override { answers.push_back(session_.Undo().GetMessage()); }

   private:
    EditSession& session_;
  };
  Meddling meddling(*session_);
  session_->AddObserver(&meddling);
  EXPECT_FALSE(session_->SetNote("a", "1").IsError());
  ASSERT_EQ(meddling.answers.size(), 2U);
  for (const std::string& answer : meddling.answers) EXPECT_TRUE(Contains(answer, "is being changed")) << answer;
  EXPECT_EQ(session_->GetDocument().GetNote("a"), "1");
  session_->RemoveObserver(&meddling);
}

TEST_F(EditSessionTest, WhatPanelsSetCanBeUndone) {
  EXPECT_FALSE(session_->Watch({"c", "x"}).IsError());
  Node& node = *session_->GetDocument().FindNode("c");
  node.GetAttribute("constant")->SetNumber(0.5, false);
  EXPECT_EQ(session_->GetHistory(), (Lines{"Set c.constant"}));
  EXPECT_TRUE(session_->IsModified());
  before_ = Save(session_->GetDocument());
  // What a command sets is told as well, and is no second step.
  ExpectDone(session_->SetAttributes({{"c.constant", 0.75}}), "Set c.constant");
  EXPECT_EQ(session_->GetHistory().size(), 2U);
  session_->BeginGesture();
  node.GetAttribute("constant")->SetNumber(1.0, false);
  node.GetAttribute("constant")->SetNumber(2.0, false);
  node.GetAttribute("constant")->SetNumber(2.0, false);
  session_->EndGesture();
  node.SetEnabled(false);
  EXPECT_EQ(session_->GetHistory(), (Lines{"Set c.constant", "Set c.constant", "Set c.constant", "Disable c"}));
  EXPECT_FALSE(session_->GoTo(3).IsError());
  EXPECT_TRUE(node.IsEnabled());
  EXPECT_FALSE(session_->GoTo(1).IsError());
  EXPECT_EQ(Constant("c"), 0.5);
  EXPECT_FALSE(session_->GoTo(0).IsError());
  EXPECT_EQ(Constant("c"), 0.0);
  EXPECT_EQ(session_->GetHistory().size(), 4U);
  // A node that was removed and brought back is watched when that is asked for again.
  EXPECT_FALSE(session_->RemoveNodes({"c"}).IsError());
  EXPECT_FALSE(session_->Undo().IsError());
  EXPECT_FALSE(session_->Watch({"c"}).IsError());
  session_->GetDocument().FindNode("c")->GetAttribute("constant")->SetNumber(3.0, false);
  EXPECT_EQ(session_->GetHistory(), (Lines{"Set c.constant"}));
  EXPECT_TRUE(session_->Watch({"z"}).IsError());
  EXPECT_FALSE(session_->Watch({}).IsError());
}

TEST_F(EditSessionTest, WhatPanelsSetIsTold) {
  EXPECT_FALSE(session_->Watch({"c"}).IsError());
  Node& node = *session_->GetDocument().FindNode("c");
  node.GetAttribute("constant")->SetNumber(0.5, false);
  EXPECT_EQ(listener_.Take(), (Lines{"set c.constant", "history"}));
  node.SetEnabled(false);
  EXPECT_EQ(listener_.Take(), (Lines{"changed c", "history"}));
}

TEST_F(EditSessionTest, AnObserverMayWatchOtherNodesWhenAPanelChangesOne) {
  class Following : public ScEng::EditObserver {
   public:
    explicit Following(EditSession& session) : session_(session) {}
    void OnHistoryChanged() override { EXPECT_FALSE(session_.Watch({"b"}).IsError()); }

   private:
    EditSession& session_;
  };
  Following following(*session_);
  session_->AddObserver(&following);
  EXPECT_FALSE(session_->Watch({"c"}).IsError());
  session_->GetDocument().FindNode("c")->GetAttribute("constant")->SetNumber(1.0, false);
  session_->GetDocument().FindNode("b")->GetAttribute("constant")->SetNumber(1.0, false);
  EXPECT_EQ(session_->GetHistory(), (Lines{"Set c.constant", "Set b.constant"}));
  session_->RemoveObserver(&following);
}

TEST_F(EditSessionTest, WhatIsShownMayChangeBetweenCommands) {
  ExpectDone(session_->AddNode({Testing::kRectangle, "q", {}}), "Add Image Rectangle");
  EXPECT_FALSE(session_->SetView(ScEng::DocumentView{{}, {}, "q.image"}).IsError());
  EXPECT_FALSE(session_->RemoveNodes({"q"}).IsError());
  EXPECT_FALSE(session_->Undo().IsError());
  EXPECT_EQ(session_->GetDocument().GetView()->shown, "q.image");
  EXPECT_FALSE(session_->GoTo(0).IsError());
  EXPECT_EQ(session_->GetDocument().GetView()->shown, "");
  EXPECT_FALSE(session_->GoTo(2).IsError());
  EXPECT_FALSE(session_->GetDocument().HasId("q"));
}

TEST_F(EditSessionTest, TellsWhatUndoingChanges) {
  EXPECT_FALSE(session_->RemoveNodes({"d"}).IsError());
  EXPECT_EQ(listener_.Take(), (Lines{"-c.image>d.image@0", "outputs", "removed d", "history"}));
  EXPECT_FALSE(session_->Undo().IsError());
  EXPECT_EQ(listener_.Take(), (Lines{"added d", "outputs", "+c.image>d.image@0", "history"}));
}

TEST(EditSessionOpenTest, ADocumentWithErrorsIsNotEdited) {
  const Testing::TemporaryFolder folder;
  Testing::WriteText(folder / "a.json", Testing::MakeText("{'id': 'a', 'type': 'ImageRectangleNode', 'no': 1}"));
  ScEng::Findings findings;
  EXPECT_EQ(EditSession::Open(Testing::GetCatalog(), folder / "a.json", folder / "state", findings), nullptr);
  EXPECT_EQ(findings.errors.size(), 1U);
  EXPECT_EQ(EditSession::Open(Testing::GetCatalog(), folder / "b.json", folder / "state", findings), nullptr);
  EXPECT_EQ(findings.errors.size(), 2U);
}

TEST(EditSessionOpenTest, WhatAnAttributeCannotTakeComesBackWithUndo) {
  const Testing::TemporaryFolder folder;
  Testing::WriteText(folder / "a.json", Testing::MakeText("{'id': 'a', 'type': 'ImageValueAddNode', "
                                                          "'attributes': {'constant': 'much', 'depth': 3}}"));
  ScEng::Findings findings;
  const auto session = EditSession::Open(Testing::GetCatalog(), folder / "a.json", folder / "state", findings);
  ASSERT_NE(session, nullptr);
  const std::string before = Testing::Save(session->GetDocument());
  EXPECT_NE(before.find("\"constant\": \"much\", \"depth\": 3"), std::string::npos) << before;
  EXPECT_FALSE(session->SetAttribute("a.constant", "0").IsError());
  EXPECT_NE(Testing::Save(session->GetDocument()), before);
  EXPECT_FALSE(session->Undo().IsError());
  EXPECT_EQ(Testing::Save(session->GetDocument()), before);
  EXPECT_FALSE(session->RemoveNodes({"a"}).IsError());
  EXPECT_FALSE(session->Undo().IsError());
  EXPECT_EQ(Testing::Save(session->GetDocument()), before);
  std::vector<std::string> copies;
  EXPECT_FALSE(session->Duplicate({"a"}, {}, true, &copies).IsError());
  ASSERT_EQ(copies.size(), 1U);
  EXPECT_NE(Testing::Save(session->GetDocument()).find("\"depth\": 3", before.find("\"depth\": 3") + 1),
            std::string::npos);
}

TEST(EditSessionOpenTest, ANewDocumentGetsItsFileWhenItIsSaved) {
  const Testing::TemporaryFolder folder;
  EditSession session(Testing::GetCatalog(), folder / "state");
  EXPECT_TRUE(Contains(session.Save().GetMessage(), "no file"));
  EXPECT_FALSE(session.AddNode({{10, 16, 5}, "r", {}}).IsError());
  EXPECT_FALSE(session.SetAttribute("r.path", "a.exr").IsError());
  EXPECT_TRUE(session.SaveAs(folder / "no" / "a.json").IsError());
  EXPECT_TRUE(session.IsModified());
  EXPECT_FALSE(session.SaveAs(folder / "a.json").IsError());
  EXPECT_FALSE(session.IsModified());
  EXPECT_EQ(session.GetFile(), folder / "a.json");
  // What is shown is what a later start reads.
  EXPECT_EQ(session.GetDocument().GetInputFiles().at("r"), folder / "a.exr");
}

}  // namespace
