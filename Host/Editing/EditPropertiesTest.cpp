// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "Host/Documents/DocumentEdits.h"
#include "Host/Editing/Background/SessionFollower.h"
#include "Host/Editing/EditSession.h"
#include "Tests/Support/EditTesting.h"

namespace {

using ScEng::DocumentConnection;
using ScEng::DocumentOutput;
using ScEng::EditSession;
using ScEng::GraphDocument;
using ScEng::Point;
using ScEng::Status;
using Testing::GetCatalog;
using Testing::Quoted;

std::string SaveText(const GraphDocument& document) {
  std::string text;
  RC_ASSERT(!document.SaveText(text).IsError());
  return text;
}

/// Gives commands that a person might, and some that nobody should.
class RandomEditor {
 public:
  explicit RandomEditor(EditSession& session) : session_(session) {}

  Status GiveCommand() {
    switch (Pick(22)) {
      case 0: return session_.AddNode({PickType(), Pick(2) == 0 ? "" : PickId(), PickPosition()});
      case 1: return session_.RemoveNodes(PickIds());
      case 2: return session_.RemoveAndHeal(PickIds());
      case 3: return session_.RenameNode(PickId(), PickId() + (Pick(2) == 0 ? "" : ".1"));
      case 4: return session_.SetEnabled(PickIds(), Pick(2) == 0);
      case 5: return session_.SetNote(PickId(), Pick(5) == 0 ? "\xFF" : PickText());
      case 6: return session_.MoveNode(PickId(), static_cast<std::size_t>(Pick(9)));
      case 7: return session_.SetPositions({{PickId(), PickPosition()}, {PickId(), PickPosition()}});
      case 8: return session_.Connect(PickConnection());
      case 9: return session_.Reconnect(PickConnection());
      case 10: return session_.Disconnect(PickMade());
      case 11: return session_.InsertOnConnection(PickId(), PickMade());
      case 12: return session_.AddOnConnection({PickType(), "", PickPosition()}, PickMade());
      case 13: return session_.SetAttribute(PickAttribute(), Pick(2) == 0 ? "0.5" : PickText());
      case 14: return session_.SetAttributes({{PickAttribute(), Number()}, {PickAttribute(), PickValue()}});
      case 15: return session_.AddOutput(PickOutput());
      case 16: return session_.SetOutput(static_cast<std::size_t>(Pick(4)), PickOutput());
      case 17: return session_.RemoveOutput(static_cast<std::size_t>(Pick(4)));
      case 18: return ChangeFrames();
      case 19: return CopyAndPaste();
      case 20: return session_.Duplicate(PickIds(), {Number(), 1.0}, Pick(2) == 0);
      default:
        return session_.Group("Group", [&] {
          static_cast<void>(GiveCommand());
          return GiveCommand();
        });
    }
  }

  int Pick(int count) { return *rc::gen::inRange(0, count); }

 private:
  template <class List>
  auto PickOf(const List& list) {
    return list[static_cast<std::size_t>(Pick(static_cast<int>(list.size())))];
  }
  std::string PickId() {
    const auto& ids = session_.GetDocument().GetIds();
    return ids.empty() || Pick(8) == 0 ? PickOf(std::vector<std::string>{"new", "a", "", "a=b", "b2"}) : PickOf(ids);
  }
  std::vector<std::string> PickIds() {
    std::vector<std::string> ids;
    for (int i = Pick(4); i > 0; --i) ids.push_back(PickId());
    return ids;
  }
  NodeType PickType() {
    return PickOf(
        std::vector<NodeType>{{10, 16, 10}, {10, 320, 5}, {10, 320, 42}, {10, 16, 48}, {10, 16, 5}, {1, 2, 3}});
  }
  std::string PickText() { return PickOf(std::vector<std::string>{"", "1", "\xC3\xA9", "\"\n", "a/b.exr", "true"}); }
  double Number() {
    const double number = *rc::gen::arbitrary<double>();
    return std::isfinite(number) ? number : -0.0;
  }
  std::optional<Point> PickPosition() {
    if (Pick(3) == 0) return std::nullopt;
    return Point{Pick(20) == 0 ? HUGE_VAL : Number(), -0.0};
  }
  PlugValue PickValue() {
    switch (Pick(6)) {
      case 0: return Pick(2) == 0;
      case 1: return PickText();
      case 2: return ScEng::Rgbo{Number(), 0.0, 1.0, 0.5};
      case 3: return Point{Number(), Number()};
      case 4: return ScEng::Frame{Number(), 0.0, 1.0, 2.0};
      default: return Number();
    }
  }
  std::string PickAttribute() {
    const std::string id = PickId();
    const Node* node = session_.GetDocument().FindNode(id);
    const bool is_made_up = node == nullptr || node->GetNumAttributes() == 0 || Pick(8) == 0;
    const int count = is_made_up ? 0 : static_cast<int>(node->GetNumAttributes());
    return id + "." + (is_made_up ? "nothing" : node->GetAttribute(static_cast<std::size_t>(Pick(count)))->GetName());
  }
  DocumentConnection PickConnection() {
    const std::vector<std::string> outputs{"image", "image", "image", "number", "x"};
    const std::vector<std::string> inputs{"image", "image", "image", "constant", "value", "y"};
    return {PickId() + "." + PickOf(outputs), PickId() + "." + PickOf(inputs), static_cast<unsigned>(Pick(3))};
  }
  DocumentConnection PickMade() {
    const auto connections = session_.GetDocument().GetConnections();
    return connections.empty() || Pick(5) == 0 ? PickConnection() : PickOf(connections);
  }
  DocumentOutput PickOutput() {
    return {PickId() + ".image", PickText() + ".exr", Pick(3) == 0 ? "half" : "", "", "", Pick(8) == 0 ? "no" : "", ""};
  }
  Status ChangeFrames() {
    const auto place = static_cast<std::size_t>(Pick(3));
    const ScEng::DocumentFrame frame{PickText(), {Number(), -0.0, 1.0, 2.0}, Pick(5) == 0 ? "red" : "#12aBcf"};
    const int what = Pick(3);
    if (what == 0) return session_.AddFrame(frame);
    return what == 1 ? session_.SetFrame(place, frame) : session_.RemoveFrame(place);
  }
  Status CopyAndPaste() {
    ScEng::CopiedNodes copied;
    const Status status = session_.Copy(PickIds(), copied);
    if (status.IsError()) return status;
    if (Pick(8) == 0) copied.text.resize(copied.text.size() / 2);
    return session_.Paste(copied.text, {{Number(), 0.0}, copied.incoming});
  }

  EditSession& session_;
};

/// What is saved can be loaded, and is saved as the same again.
void CheckSavedText(const std::string& text) {
  GraphDocument again(GetCatalog());
  const ScEng::Findings findings = Testing::LoadText(again, text, {ScEng::UnknownTypes::kKeep});
  if (!findings.errors.empty()) RC_FAIL(findings.errors[0] + "\n" + text);
  RC_ASSERT(SaveText(again) == text);
}

/// Whether a copy gives the results of a document: the same nodes, values, flags and connections, in whatever order.
bool HasSameResults(GraphDocument& copy, GraphDocument& document) {
  if (copy.GetIds().size() != document.GetIds().size()) return false;
  const ScEng::DocumentEdits edits(copy);
  const ScEng::DocumentEdits expected(document);
  for (const std::string& id : document.GetIds()) {
    if (!copy.HasId(id) || copy.IsPlaceholder(id) != document.IsPlaceholder(id)) return false;
    if (copy.IsEnabled(id) != document.IsEnabled(id)) return false;
    for (std::size_t i = 0; const auto state = expected.GetAttribute(id, i); ++i) {
      const auto copied = edits.GetAttribute(id, i);
      if (!copied || !ScEng::IsSameValue(copied->value, state->value)) return false;
    }
  }
  const std::vector<DocumentConnection> made = copy.GetConnections();
  const std::vector<DocumentConnection> connections = document.GetConnections();
  return std::is_permutation(made.begin(), made.end(), connections.begin(), connections.end());
}

RC_GTEST_PROP(EditProperties, EveryPlaceOfTheHistoryIsTheSameToTheByte, ()) {
  const Testing::TemporaryFolder folder;
  Testing::WriteText(folder / "graph.json", Quoted(R"({'format': 'value-graph', 'version': 1, 'nodes': [
    {'id': 'a', 'type': 'ImageRectangleNode', 'enabled': true},
    {'id': 'b', 'type': [10, 320, 5], 'attributeVersion': 0, 'attributes': {'constant': 0}, 'position': [-0, 0]},
    {'id': 'x', 'type': 'Foreign', 'attributes': {'deep': [1, {'a': null}]}, 'note': 'kept', 'enabled': true},
    {'id': 'c', 'type': 'ImageValueAddNode'}, {'id': 'n', 'type': 'NumberNode'}], 'connections': [
    {'from': 'a.image', 'to': 'b.image', 'index': 0}, {'from': 'n.number', 'to': 'b.value'},
    {'from': 'b.image', 'to': 'c.image', 'index': 2}, {'from': 'c.image', 'to': 'x.in', 'index': 0},
    {'from': 'x.out', 'to': 'c.constant'}],
    'outputs': [{'from': 'c.image', 'path': 'b.exr'}, {'from': 'b.image', 'path': 'c.exr', 'type': 'auto'}],
    'frames': [{'title': '', 'box': [0, -0, 1, 1]}], 'view': {'shown': 'b.image'}})"));
  ScEng::Findings findings;
  const auto session = EditSession::Open(GetCatalog(), folder / "graph.json", folder / "state", findings);
  RC_ASSERT(session != nullptr);
  GraphDocument copy(GetCatalog());
  ScEng::SessionFollower follower(*session, [&](const ScEng::MirrorChange& change) { change(copy); });
  RandomEditor editor(*session);
  std::vector<std::string> texts{SaveText(session->GetDocument())};
  bool is_dragged = false;
  for (int i = *rc::gen::inRange(1, 25); i > 0; --i) {
    if (editor.Pick(6) == 0) {
      is_dragged = !is_dragged;
      is_dragged ? session->BeginGesture() : session->EndGesture();
    }
    const std::size_t place = session->GetPlace();
    const Status status = editor.GiveCommand();
    const std::string text = SaveText(session->GetDocument());
    CheckSavedText(text);
    RC_ASSERT(HasSameResults(copy, session->GetDocument()));
    if (status.IsError()) {
      RC_ASSERT(ScEng::MakeLine(status.GetMessage()) == status.GetMessage());
      RC_ASSERT(session->GetPlace() == place);
      if (text != texts[place]) RC_FAIL(status.GetMessage() + "\n" + text + "\n" + texts[place]);
      continue;
    }
    RC_ASSERT(session->GetPlace() == place || session->GetPlace() == place + 1);
    if (session->GetPlace() == place) {
      // Nothing has changed, or it was taken into the step before.
      RC_ASSERT(is_dragged || text == texts[place]);
      texts[place] = text;
    } else {
      texts.resize(place + 1);
      texts.push_back(text);
    }
    if (editor.Pick(5) == 0) {
      const auto target = static_cast<std::size_t>(editor.Pick(static_cast<int>(texts.size())));
      RC_ASSERT(!session->GoTo(target).IsError());
      RC_ASSERT(SaveText(session->GetDocument()) == texts[target]);
      RC_ASSERT(HasSameResults(copy, session->GetDocument()));
    }
  }
  RC_ASSERT(session->GetHistory().size() + 1 == texts.size());
  while (session->GetPlace() > 0) {
    RC_ASSERT(!session->Undo().IsError());
    RC_ASSERT(SaveText(session->GetDocument()) == texts[session->GetPlace()]);
  }
  while (session->GetPlace() < session->GetHistory().size()) {
    RC_ASSERT(!session->Redo().IsError());
    RC_ASSERT(SaveText(session->GetDocument()) == texts[session->GetPlace()]);
  }
}

}  // namespace
