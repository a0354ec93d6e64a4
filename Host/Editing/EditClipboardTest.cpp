// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "Host/Editing/EditSession.h"
#include "Tests/Support/EditTesting.h"

namespace {

using ScEng::CopiedNodes;
using ScEng::DocumentConnection;
using ScEng::EditSession;
using ScEng::GraphDocument;
using ScEng::Point;
using Testing::Contains;
using Testing::EditSessionTest;
using Testing::Quoted;
using Testing::Save;

using Lines = std::vector<std::string>;

class EditClipboardTest : public EditSessionTest {};

TEST_F(EditClipboardTest, WhatIsCopiedIsADocumentOfItsOwn) {
  CopiedNodes copied;
  // In the order of the document, whatever the order of the ids.
  ASSERT_FALSE(session_->Copy({"x", "c", "b"}, copied).IsError());
  EXPECT_EQ(copied.text, Quoted(R"({
  'format': 'value-graph',
  'version': 2,
  'nodes': [
    {'id': 'b', 'type': [10, 320, 5], 'attributeVersion': 0, 'attributes': {'constant': 0}, 'position': [200, 0]},
    {'id': 'x', 'type': 'ForeignNode', 'attributes': {'deep': [1, {'a': null}]}, 'note': 'kept'},
    {'id': 'c', 'type': 'ImageValueAddNode', 'position': [400, 0]}
  ],
  'connections': [
    {'from': 'b.image', 'to': 'c.image', 'index': 2},
    {'from': 'c.image', 'to': 'x.in', 'index': 5}
  ]
}
)"));
  EXPECT_EQ(copied.incoming,
            (std::vector<DocumentConnection>{{"a.image", "b.image", 0}, {"n.number", "b.constant", 0}}));
  EXPECT_EQ(Save(session_->GetDocument()), before_);
  EXPECT_TRUE(session_->GetHistory().empty());
  ExpectRefused(session_->Copy({"b", "z"}, copied), {"\"z\""});
  ExpectRefused(session_->Copy({}, copied), {"no node"});
  EXPECT_EQ(copied.incoming.size(), 2U);
}

TEST_F(EditClipboardTest, PastesUnderNewIds) {
  CopiedNodes copied;
  ASSERT_FALSE(session_->Copy({"b", "c"}, copied).IsError());
  Lines ids;
  ExpectDone(session_->Paste(copied.text, {Point{10, 20}, {}}, &ids), "Paste 2 nodes");
  EXPECT_EQ(ids, (Lines{"b2", "c2"}));
  EXPECT_EQ(session_->GetDocument().GetPosition("b2"), (Point{210, 20}));
  EXPECT_EQ(Connections().back(), (DocumentConnection{"b2.image", "c2.image", 2}));
  EXPECT_EQ(Connections().size(), 6U);
  ExpectDone(session_->Paste(copied.text, {Point{0, 0}, copied.incoming}, &ids), "Paste 2 nodes");
  EXPECT_EQ(ids, (Lines{"b3", "c3"}));
  EXPECT_EQ(Connections()[7], (DocumentConnection{"a.image", "b3.image", 0}));
  EXPECT_EQ(Connections()[8], (DocumentConnection{"n.number", "b3.constant", 0}));
  // Where the sources are gone, the connections to them are left out.
  ExpectDone(session_->RemoveNodes({"a"}), "Remove a");
  const std::size_t connections = Connections().size();
  ExpectDone(session_->Paste(copied.text, {Point{0, 0}, copied.incoming}, &ids), "Paste 2 nodes");
  EXPECT_EQ(Connections().size(), connections + 2);
}

TEST_F(EditClipboardTest, PastesIntoAnotherDocument) {
  CopiedNodes copied;
  ASSERT_FALSE(session_->Copy({"x", "b"}, copied).IsError());
  EditSession other(Testing::GetCatalog(), folder_ / "state");
  Lines ids;
  ASSERT_FALSE(other.Paste(copied.text, {}, &ids).IsError());
  EXPECT_EQ(ids, (Lines{"b", "x"}));
  EXPECT_EQ(Save(other.GetDocument()), copied.text);
  EXPECT_FALSE(other.Undo().IsError());
  EXPECT_EQ(Save(other.GetDocument()), Quoted("{\n  'format': 'value-graph',\n  'version': 2,\n  'nodes': []\n}\n"));
}

TEST_F(EditClipboardTest, PastesFramesAndNoOutputs) {
  const std::string text = before_;
  ExpectDone(session_->Paste(text, {Point{1000, 0}, {}}), "Paste 6 nodes");
  EXPECT_EQ(session_->GetDocument().GetOutputs().size(), 2U);
  ASSERT_EQ(session_->GetDocument().GetFrames().size(), 2U);
  EXPECT_EQ(session_->GetDocument().GetFrames()[1].box.x, 980.0);
  EXPECT_EQ(session_->GetDocument().GetView()->shown, "c.image");
}

TEST_F(EditClipboardTest, WhatIsNoDocumentIsNotPasted) {
  ExpectRefused(session_->Paste("hello", {}), {"cannot paste", "the clipboard"});
  ExpectRefused(session_->Paste("", {}), {"cannot paste"});
  ExpectRefused(session_->Paste(std::string("\0\x01\n\xFF", 4), {}), {"cannot paste"});
  ExpectRefused(session_->Paste(Testing::MakeText("{'id': 'a', 'type': 'NumberNode', 'no': 1}", "{'from': 'z.a'}"), {}),
                {"cannot paste", "\"no\"", "more)"});
  ExpectRefused(session_->Paste(Testing::MakeText(""), {}), {"without nodes"});
  const std::string far = Testing::MakeText(
      "{'id': 'q', 'type': 'NumberNode'}, {'id': 'a', 'type': 'NumberNode', "
      "'position': [1e308, 0]}");
  ExpectRefused(session_->Paste(far, {Point{std::numeric_limits<double>::max(), 0}, {}}), {"\"a\"", "finite"});
}

TEST_F(EditClipboardTest, Duplicates) {
  Lines ids;
  ExpectDone(session_->Duplicate({"c"}, Point{20, 20}, false, &ids), "Duplicate c");
  EXPECT_EQ(ids, (Lines{"c2"}));
  EXPECT_EQ(Connections().size(), 5U);
  ExpectDone(session_->Duplicate({"c", "c2"}, Point{20, 20}, true, &ids), "Duplicate 2 nodes");
  EXPECT_EQ(ids, (Lines{"c3", "c4"}));
  EXPECT_EQ(Connections().back(), (DocumentConnection{"b.image", "c3.image", 2}));
  ExpectRefused(session_->Duplicate({"z"}, {}, true), {"\"z\""});
}

TEST_F(EditClipboardTest, LongIdsStayIds) {
  std::string name;
  for (int i = 0; i < 200; ++i) name += "\xE6\xB0\xB4";
  ASSERT_FALSE(session_->RenameNode("n", name).IsError());
  Lines ids;
  EXPECT_FALSE(session_->Duplicate({name}, {}, false, &ids).IsError());
  EXPECT_EQ(ids[0], name.substr(0, 180 * 3) + "2");
}

}  // namespace
