// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/NodeFace.h"

#include <QCoreApplication>
#include <algorithm>
#include <map>
#include <set>

#include "Apps/Editor/Canvas/PlugRef.h"

namespace {

using Indices = std::map<std::string, std::set<unsigned>>;

/// Rows of an input that takes many: those in use, the free ones among the first, and one more.
void AddManyRows(const TypePlug& plug, const std::set<unsigned>& used, std::vector<PlugFace>& rows) {
  // A document may use any index; the gaps between large ones are no rows.
  constexpr unsigned kMostGaps = 16;
  std::set<unsigned> shown = used;
  unsigned free = 0;
  while (used.contains(free)) ++free;
  shown.insert(free);
  const unsigned last = used.empty() ? 0 : *used.rbegin();
  if (last < kMostGaps) {
    for (unsigned i = 0; i < last; ++i) shown.insert(i);
    if (used.size() > last) shown.insert(last + 1);
  }
  for (const unsigned index : shown) {
    PlugFace& row = rows.emplace_back();
    row = {plug.name, plug.label, plug.type, index, true, false, used.contains(index)};
    row.label += QStringLiteral(" %1").arg(index + 1);
  }
}

void AddUnknown(const Indices& indices, bool are_inputs, std::vector<PlugFace>& rows) {
  for (const auto& [name, used] : indices) {
    for (const unsigned index : used) {
      PlugFace& row = rows.emplace_back();
      row = {name, QString::fromStdString(name), PlugType::kNone, index, used.size() > 1, false, true};
      if (!are_inputs) break;
    }
  }
}

/// The indices in use at each input, or the names of the outputs in use.
Indices ListUsed(const std::string& id, const std::vector<ScEng::DocumentConnection>& connections, bool inputs) {
  Indices used;
  for (const ScEng::DocumentConnection& connection : connections) {
    const std::string& plug = inputs ? connection.to : connection.from;
    if (GetNodeOfPlug(plug) == id) used[GetNameOfPlug(plug)].insert(inputs ? connection.index : 0);
  }
  return used;
}

void ReadKnown(const TypeInfo& info, const Indices& fed, const Indices& read, NodeFace& face) {
  face.type_name = info.name;
  face.icon = info.icon;
  face.is_reroute = info.IsReroute();
  for (const TypePlug& plug : info.inputs) {
    const auto used = fed.find(plug.name);
    if (plug.takes_many) {
      AddManyRows(plug, used == fed.end() ? std::set<unsigned>() : used->second, face.inputs);
    } else {
      face.inputs.push_back({plug.name, plug.label, plug.type, 0, false, false, used != fed.end()});
    }
  }
  for (const TypePlug& plug : info.attributes) {
    if (fed.contains(plug.name)) face.inputs.push_back({plug.name, plug.label, plug.type, 0, false, true, true});
  }
  for (const TypePlug& plug : info.outputs) {
    face.outputs.push_back({plug.name, plug.label, plug.type, 0, false, false, read.contains(plug.name)});
    face.has_image = face.has_image || plug.type == PlugType::kImage;
  }
}

}  // namespace

NodeFace ReadNodeFace(const ScEng::GraphDocument& document, const NodeTypes& types, const std::string& id,
                      const std::vector<ScEng::DocumentConnection>& connections) {
  NodeFace face;
  face.id = id;
  face.title = QString::fromStdString(id);
  face.note = QString::fromStdString(document.GetNote(id));
  face.is_enabled = document.IsEnabled(id);
  const Node* node = document.FindNode(id);
  const TypeInfo* info = node == nullptr ? nullptr : types.Find(node->GetNodeType());
  const Indices fed = ListUsed(id, connections, true);
  const Indices read = ListUsed(id, connections, false);
  if (info != nullptr) {
    ReadKnown(*info, fed, read, face);
    return face;
  }
  face.is_placeholder = true;
  face.type_name = QCoreApplication::translate("NodeFace", "Unknown type");
  AddUnknown(fed, true, face.inputs);
  AddUnknown(read, false, face.outputs);
  return face;
}

std::vector<PlugFace> ListFreeAttributes(const ScEng::GraphDocument& document, const NodeTypes& types,
                                         const NodeFace& face, unsigned kind) {
  std::vector<PlugFace> rows;
  const Node* node = document.FindNode(face.id);
  const TypeInfo* info = node == nullptr ? nullptr : types.Find(node->GetNodeType());
  if (info == nullptr) return rows;
  for (const TypePlug& plug : info->attributes) {
    const bool is_shown =
        std::any_of(face.inputs.begin(), face.inputs.end(), [&](const PlugFace& row) { return row.name == plug.name; });
    if (plug.type == kind && !is_shown) rows.push_back({plug.name, plug.label, plug.type, 0, false, true, false});
  }
  return rows;
}
