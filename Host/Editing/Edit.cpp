// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/Edit.h"

namespace ScEng {

bool Edit::ChangesNothing() const { return false; }
bool Edit::CanTakeIn(const Edit&) const { return false; }
void Edit::TakeIn(const Edit&) {}

namespace Apply {

Status InsertNode(GraphDocument& document, std::size_t place, const NamedNode& node) {
  return DocumentEdits(document).InsertNode(node.id, *node.state, place);
}

Status RemoveNode(GraphDocument& document, std::size_t, const NamedNode& node) { return document.RemoveNode(node.id); }

Status InsertConnection(GraphDocument& document, std::size_t place, const ConnectionState& connection) {
  return DocumentEdits(document).InsertConnection(place, connection);
}

Status RemoveConnection(GraphDocument& document, std::size_t place, const ConnectionState&) {
  return DocumentEdits(document).RemoveConnection(place);
}

Status InsertOutput(GraphDocument& document, std::size_t place, const DocumentOutput& output) {
  return DocumentEdits(document).InsertOutput(place, output);
}

Status RemoveOutput(GraphDocument& document, std::size_t place, const DocumentOutput&) {
  return document.RemoveOutput(place);
}

Status InsertFrame(GraphDocument& document, std::size_t place, const DocumentFrame& frame) {
  return DocumentEdits(document).InsertFrame(place, frame);
}

Status RemoveFrame(GraphDocument& document, std::size_t place, const DocumentFrame&) {
  return DocumentEdits(document).RemoveFrame(place);
}

Status SetAttribute(GraphDocument& document, const AttributeKey& key, const AttributeState& state) {
  return DocumentEdits(document).SetAttribute(key.node, key.attribute, state);
}

Status SetEnabled(GraphDocument& document, const std::string& id, const bool& enabled) {
  return document.SetEnabled(id, enabled);
}

Status SetPosition(GraphDocument& document, const std::string& id, const std::optional<Point>& position) {
  return document.SetPosition(id, position);
}

Status SetNote(GraphDocument& document, const std::string& id, const std::string& note) {
  return document.SetNote(id, note);
}

Status SetNodePlace(GraphDocument& document, const std::string& id, const std::size_t& place) {
  return document.MoveNode(id, place);
}

Status SetOutput(GraphDocument& document, const std::size_t& place, const DocumentOutput& output) {
  return document.SetOutput(place, output);
}

Status SetFrame(GraphDocument& document, const std::size_t& place, const DocumentFrame& frame) {
  return DocumentEdits(document).SetFrame(place, frame);
}

Status SetShown(GraphDocument& document, const NoKey&, const std::string& plug) {
  return DocumentEdits(document).SetShown(plug);
}

}  // namespace Apply
}  // namespace ScEng
