// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/DocumentEdits.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "Tests/Support/DocumentTesting.h"
#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::AttributeState;
using ScEng::ConnectionState;
using ScEng::DocumentEdits;
using ScEng::GraphDocument;
using ScEng::Status;
using Testing::Contains;
using Testing::GetCatalog;
using Testing::LoadText;
using Testing::MakeText;
using Testing::Save;

class DocumentEditsTest : public testing::Test {
 protected:
  DocumentEditsTest() {
    LoadText(document_,
             MakeText("{'id': 'a', 'type': 'ImageRectangleNode', 'enabled': true, 'note': 'first'},"
                      "{'id': 'b', 'type': [10, 320, 5], 'attributeVersion': 0, 'attributes': {'constant': 0}},"
                      "{'id': 'x', 'type': 'X', 'enabled': false, 'attributes': {'q': [null]}, 'attributeVersion': 3},"
                      "{'id': 'c', 'type': 'ImageValueAddNode'}",
                      "{'from': 'a.image', 'to': 'b.image', 'index': 0}, {'from': 'b.image', 'to': 'c.image'},"
                      "{'from': 'b.image', 'to': 'x.in', 'index': 4}",
                      "{'from': 'a.image', 'path': 'a.exr'}, {'from': 'c.image', 'path': 'c.exr'}"),
             {ScEng::UnknownTypes::kKeep});
    before_ = Save(document_);
  }

  GraphDocument document_{GetCatalog()};
  DocumentEdits edits_{document_};
  std::string before_;
};

TEST_F(DocumentEditsTest, NodesComeBackAsTheyWere) {
  for (const char* id : {"a", "b", "x", "c"}) {
    const auto place = edits_.FindPlace(id);
    ASSERT_TRUE(place);
    const auto state = edits_.CopyNode(id);
    std::vector<std::pair<std::size_t, ConnectionState>> connections;
    const std::vector<std::size_t> places = edits_.FindConnections({id});
    for (std::size_t i = places.size(); i-- > 0;) {
      connections.insert(connections.begin(), {places[i], edits_.GetConnection(places[i])});
      ASSERT_FALSE(edits_.RemoveConnection(places[i]).IsError());
    }
    const std::vector<ScEng::DocumentOutput> outputs = document_.GetOutputs();
    ASSERT_FALSE(document_.RemoveNode(id).IsError());
    EXPECT_FALSE(document_.HasId(id));
    EXPECT_NE(Save(document_), before_);
    ASSERT_FALSE(edits_.InsertNode(id, *state, *place).IsError());
    for (const auto& [at, connection] : connections) {
      ASSERT_FALSE(edits_.InsertConnection(at, connection).IsError());
    }
    for (std::size_t i = 0; i < outputs.size(); ++i) {
      if (outputs.size() == document_.GetOutputs().size()) break;
      if (!outputs[i].from.starts_with(id)) continue;
      ASSERT_FALSE(edits_.InsertOutput(i, outputs[i]).IsError());
    }
    EXPECT_EQ(Save(document_), before_);
  }
}

TEST_F(DocumentEditsTest, CopiesGoIntoOtherDocuments) {
  GraphDocument other(GetCatalog());
  DocumentEdits others(other);
  EXPECT_FALSE(others.InsertNode("x2", *edits_.CopyNode("x"), 0).IsError());
  EXPECT_FALSE(others.InsertNode("b2", *edits_.CopyNode("b"), 0).IsError());
  EXPECT_EQ(other.GetIds(), (std::vector<std::string>{"b2", "x2"}));
  EXPECT_TRUE(other.IsPlaceholder("x2"));
  EXPECT_TRUE(
      Contains(Save(other), Testing::Quoted("{'id': 'x2', 'type': 'X', 'enabled': false, 'attributeVersion': 3, "
                                            "'attributes': {'q': [null]}}")));
  EXPECT_TRUE(others.InsertNode("b2", *edits_.CopyNode("b"), 0).IsError());
  EXPECT_TRUE(others.InsertNode("b3", *edits_.CopyNode("b"), 9).IsError());
  EXPECT_EQ(edits_.CopyNode("z"), nullptr);
}

TEST_F(DocumentEditsTest, AttributesGoBackToHowTheyWere) {
  const auto given = edits_.GetAttribute("b", 0);
  const auto left_out = edits_.GetAttribute("c", 0);
  ASSERT_TRUE(given && left_out);
  EXPECT_TRUE(given->was_given);
  EXPECT_FALSE(left_out->was_given);
  EXPECT_FALSE(edits_.SetAttribute("b", 0, *left_out).IsError());
  EXPECT_FALSE(edits_.SetAttribute("c", 0, {PlugValue(-0.0), true, true}).IsError());
  EXPECT_TRUE(Contains(Save(document_), "\"constant\": -0"));
  EXPECT_FALSE(*edits_.GetAttribute("c", 0) == (AttributeState{PlugValue(0.0), true, true}));
  EXPECT_FALSE(edits_.SetAttribute("b", 0, *given).IsError());
  EXPECT_FALSE(edits_.SetAttribute("c", 0, *left_out).IsError());
  EXPECT_EQ(Save(document_), before_);
  EXPECT_TRUE(edits_.SetAttribute("c", 0, {PlugValue(true), false, false}).IsError());
  EXPECT_TRUE(edits_.SetAttribute("c", 99, *left_out).IsError());
  EXPECT_TRUE(edits_.SetAttribute("x", 0, *left_out).IsError());
  EXPECT_FALSE(edits_.GetAttribute("x", 0));
  EXPECT_EQ(Save(document_), before_);
}

TEST_F(DocumentEditsTest, ValuesAreSetByKind) {
  std::vector<std::string> notes;
  EXPECT_FALSE(document_.SetAttributeValue("c.value", PlugValue(0.5), notes).IsError());
  EXPECT_EQ(document_.FindNode("c")->GetAttribute("constant")->GetValue().GetNumber(), 0.5);
  const auto refuse = [&](const std::string& attribute, const PlugValue& value, const std::string& part) {
    const Status status = document_.SetAttributeValue(attribute, value, notes);
    EXPECT_TRUE(status.IsError());
    EXPECT_TRUE(Contains(status.GetMessage(), part)) << status.GetMessage();
  };
  refuse("c.constant", PlugValue(true), "a number");
  refuse("c.constant", PlugValue(std::numeric_limits<double>::quiet_NaN()), "finite");
  refuse("c.constant", PlugValue(std::numeric_limits<double>::infinity()), "finite");
  refuse("c.other", PlugValue(0.5), "other");
  refuse("x.q", PlugValue(0.5), "unknown here");
  EXPECT_TRUE(notes.empty());
}

TEST_F(DocumentEditsTest, PlacesThatDoNotExistAreErrors) {
  const std::size_t connections = edits_.GetNumConnections();
  EXPECT_TRUE(edits_.RemoveConnection(connections).IsError());
  EXPECT_TRUE(edits_.InsertConnection(connections + 1, {{"a.image", "c.image", 1}, false}).IsError());
  EXPECT_TRUE(edits_.InsertOutput(3, document_.GetOutputs()[0]).IsError());
  EXPECT_TRUE(edits_.InsertFrame(1, {}).IsError());
  EXPECT_TRUE(edits_.SetFrame(0, {}).IsError());
  EXPECT_TRUE(edits_.RemoveFrame(0).IsError());
  EXPECT_TRUE(edits_.SetShown("z.image").IsError());
  EXPECT_FALSE(edits_.FindPlace("z"));
  EXPECT_FALSE(edits_.FindConnection({"a.image", "c.image", 1}));
  EXPECT_EQ(edits_.FindConnection({"b.image", "c.image", 0}), 1U);
  EXPECT_EQ(Save(document_), before_);
}

TEST_F(DocumentEditsTest, RelativePathsFollowTheFolder) {
  Status status;
  document_.AddNode("r", {10, 16, 5}, status);
  std::vector<std::string> notes;
  EXPECT_FALSE(document_.SetAttributeValue("r.path", PlugValue(std::string("a.exr")), notes).IsError());
  edits_.SetFolder("/one");
  EXPECT_EQ(document_.GetFolder(), "/one");
  EXPECT_EQ(document_.GetInputFiles().at("r"), "/one/a.exr");
  EXPECT_TRUE(Contains(Save(document_), "\"path\": \"a.exr\""));
}

}  // namespace
