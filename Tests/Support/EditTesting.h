// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Host/Editing/EditSession.h"
#include "Tests/Support/DocumentTesting.h"
#include "Tests/Support/HostTesting.h"

/// What the tests of editing share.
namespace Testing {

inline constexpr NodeType kRectangle{10, 16, 10};
inline constexpr NodeType kAdd{10, 320, 5};
inline constexpr NodeType kClamp{10, 320, 42};
inline constexpr NodeType kNumberNode{10, 16, 48};

/// Writes down what it is told.
class Listener : public ScEng::EditObserver {
 public:
  std::vector<std::string> lines;

  void OnNodeAdded(const std::string& id) override { lines.push_back("added " + id); }
  void OnNodeRemoved(const std::string& id) override { lines.push_back("removed " + id); }
  void OnNodeRenamed(const std::string& before, const std::string& now) override {
    lines.push_back("renamed " + before + " " + now);
  }
  void OnNodeChanged(const std::string& id) override { lines.push_back("changed " + id); }
  void OnAttributeChanged(const std::string& id, const std::string& attribute) override {
    lines.push_back("set " + id + "." + attribute);
  }
  void OnOrderChanged() override { lines.push_back("order"); }
  void OnConnectionAdded(const ScEng::DocumentConnection& connection) override {
    lines.push_back("+" + connection.from + ">" + connection.to + "@" + std::to_string(connection.index));
  }
  void OnConnectionRemoved(const ScEng::DocumentConnection& connection) override {
    lines.push_back("-" + connection.from + ">" + connection.to + "@" + std::to_string(connection.index));
  }
  void OnOutputsChanged() override { lines.push_back("outputs"); }
  void OnFramesChanged() override { lines.push_back("frames"); }
  void OnViewChanged() override { lines.push_back("view"); }
  void OnHistoryChanged() override { lines.push_back("history"); }

  std::vector<std::string> Take() { return std::exchange(lines, {}); }
};

/// A session on a small document in a folder of its own: a rectangle, two additions and a clamp in a row, a number that
/// feeds the first addition, and a placeholder.
class EditSessionTest : public testing::Test {
 protected:
  void SetUp() override {
    WriteText(folder_ / "graph.json", Quoted(R"({
  'format': 'value-graph',
  'version': 2,
  'nodes': [
    {'id': 'a', 'type': 'ImageRectangleNode', 'enabled': true, 'position': [0, 0]},
    {'id': 'b', 'type': [10, 320, 5], 'attributeVersion': 0, 'attributes': {'constant': 0}, 'position': [200, 0]},
    {'id': 'x', 'type': 'ForeignNode', 'attributes': {'deep': [1, {'a': null}]}, 'note': 'kept'},
    {'id': 'c', 'type': 'ImageValueAddNode', 'position': [400, 0]},
    {'id': 'd', 'type': 'ImageValueClampNode', 'position': [600, 0]},
    {'id': 'n', 'type': 'NumberNode'}
  ],
  'connections': [
    {'from': 'a.image', 'to': 'b.image', 'index': 0},
    {'from': 'n.number', 'to': 'b.constant'},
    {'from': 'b.image', 'to': 'c.image', 'index': 2},
    {'from': 'c.image', 'to': 'd.image'},
    {'from': 'c.image', 'to': 'x.in', 'index': 5}
  ],
  'outputs': [
    {'from': 'b.image', 'path': 'b.exr'},
    {'from': 'd.image', 'path': 'd.exr', 'type': 'half'}
  ],
  'frames': [
    {'title': 'Height', 'box': [-20, -20, 460, 160], 'color': '#3b7a57'}
  ],
  'view': {'center': [1, 2], 'zoom': 2, 'shown': 'c.image'}
}
)"));
    ScEng::Findings findings;
    session_ = ScEng::EditSession::Open(GetCatalog(), folder_ / "graph.json", folder_ / "state", findings);
    ASSERT_NE(session_, nullptr) << findings.errors[0];
    before_ = Save(session_->GetDocument());
    session_->AddObserver(&listener_);
  }
  void TearDown() override { session_.reset(); }

  /// Expects a command to be done, as one step of this name, that can be undone and redone to the byte.
  void ExpectDone(const ScEng::Status& status, const std::string& name) {
    ASSERT_FALSE(status.IsError()) << status.GetMessage();
    ASSERT_FALSE(session_->GetHistory().empty());
    EXPECT_EQ(session_->GetHistory().back(), name);
    const std::string now = Save(session_->GetDocument());
    EXPECT_NE(now, before_);
    EXPECT_FALSE(session_->Undo().IsError());
    EXPECT_EQ(Save(session_->GetDocument()), before_);
    EXPECT_FALSE(session_->Redo().IsError());
    EXPECT_EQ(Save(session_->GetDocument()), now);
    before_ = now;
  }
  /// Expects an error of one line that holds all the parts, and that nothing has changed.
  void ExpectRefused(const ScEng::Status& status, const std::vector<std::string>& parts) {
    EXPECT_TRUE(status.IsError());
    EXPECT_EQ(ScEng::MakeLine(status.GetMessage()), status.GetMessage());
    for (const std::string& part : parts) EXPECT_TRUE(Contains(status.GetMessage(), part)) << status.GetMessage();
    const std::size_t steps = session_->GetHistory().size();
    EXPECT_EQ(Save(session_->GetDocument()), before_);
    EXPECT_EQ(session_->GetHistory().size(), steps);
  }
  [[nodiscard]] std::vector<ScEng::DocumentConnection> Connections() const {
    return session_->GetDocument().GetConnections();
  }
  [[nodiscard]] double Constant(const std::string& id) const {
    return session_->GetDocument().FindNode(id)->GetAttribute("constant")->GetValue().GetNumber();
  }

  TemporaryFolder folder_;
  std::unique_ptr<ScEng::EditSession> session_;
  std::string before_;
  Listener listener_;
};

}  // namespace Testing
