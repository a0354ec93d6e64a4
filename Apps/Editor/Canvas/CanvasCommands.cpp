// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Canvas/CanvasCommands.h"

#include <algorithm>
#include <filesystem>
#include <utility>

using ScEng::DocumentConnection;
using ScEng::Status;

namespace {

ScEng::Point ToPoint(const QPointF& place) { return {std::round(place.x()), std::round(place.y())}; }

/// The point of a new node that is put where the pointer is: the plug at the end of the wire, if it comes with one.
QPointF GetGrab(const TypeInfo& type, const NewNodeWiring& wiring) {
  constexpr double kFirstRow = NodeShape::kHeader + 6 + NodeShape::kRow / 2;
  if (type.IsReroute()) return {14, 10};
  if (wiring.connection) return {NodeShape::kWidth / 2, kFirstRow};
  if (wiring.plug) return {wiring.plug->is_input ? NodeShape::kWidth : 0.0, kFirstRow};
  return {};
}

/// Relative to the folder of the document where it is below it, so that both can be moved together.
std::string MakeDocumentPath(const QString& file, const std::filesystem::path& folder) {
  const std::filesystem::path path(file.toStdString());
  if (folder.empty()) return path.generic_string();
  std::error_code error;
  const std::filesystem::path whole = std::filesystem::absolute(folder, error);
  const std::filesystem::path relative = path.lexically_relative(whole.lexically_normal());
  const bool is_below = !relative.empty() && *relative.begin() != "..";
  return (is_below ? relative : path).generic_string();
}

}  // namespace

CanvasCommands::CanvasCommands(GraphScene& scene) : scene_(scene), session_(scene.GetSession()) {}

bool CanvasCommands::Do(const Status& status) {
  if (status.IsError()) emit Failed(QString::fromStdString(status.GetMessage()));
  return !status.IsError();
}

// ---- Adding ----

Status CanvasCommands::ConnectPlugs(const PlugRef& from, const PlugRef& to) {
  return session_.Reconnect({from.GetPlug(), to.GetPlug(), to.index});
}

Status CanvasCommands::ConnectNew(const std::string& id, const TypeInfo& type, const PlugRef& plug) {
  const auto fits = [&](const TypePlug& own) { return plug.type == PlugType::kNone || own.type == plug.type; };
  if (plug.is_input) {
    const auto output = std::find_if(type.outputs.begin(), type.outputs.end(), fits);
    if (output == type.outputs.end()) return Status();
    return ConnectPlugs({id, output->name, 0, output->type, false}, plug);
  }
  for (const std::vector<TypePlug>* plugs : {&type.inputs, &type.attributes}) {
    const auto input = std::find_if(plugs->begin(), plugs->end(), fits);
    if (input != plugs->end()) return ConnectPlugs(plug, {id, input->name, 0, input->type, true});
  }
  return Status();
}

void CanvasCommands::Add(const TypeInfo& type, const QPointF& place, const NewNodeWiring& wiring) {
  std::string id;
  const ScEng::NewNode node{type.type, {}, ToPoint(place - GetGrab(type, wiring))};
  Status status;
  if (wiring.connection) {
    status = session_.AddOnConnection(node, *wiring.connection, &id);
  } else if (wiring.plug) {
    status = session_.Group(tr("Add %1").arg(type.name).toStdString(), [&] {
      const Status added = session_.AddNode(node, &id);
      return added.IsError() ? added : ConnectNew(id, type, *wiring.plug);
    });
  } else {
    status = session_.AddNode(node, &id);
  }
  if (!Do(status)) return;
  scene_.SelectIds({id});
  emit Added(type.type_name);
}

void CanvasCommands::AddReaders(const QStringList& files, const QPointF& place) {
  const TypeInfo* reader = scene_.GetTypes().FindName("ImageReaderNode");
  if (reader == nullptr || files.isEmpty()) return;
  std::vector<std::string> ids;
  const Status status =
      session_.Group(tr("Add %n file(s)", nullptr, static_cast<int>(files.size())).toStdString(), [&] {
        QPointF corner = place;
        for (const QString& file : files) {
          std::string id;
          Status done = session_.AddNode({reader->type, {}, ToPoint(corner)}, &id);
          if (!done.IsError()) {
            const std::string path = MakeDocumentPath(file, session_.GetDocument().GetFolder());
            done = session_.SetAttribute(id + ".path", path);
          }
          if (done.IsError()) return done;
          ids.push_back(id);
          corner += QPointF(0, 210);
        }
        return Status();
      });
  if (Do(status)) scene_.SelectIds(ids);
}

// ---- Wires ----

void CanvasCommands::Connect(const PlugRef& one, const PlugRef& other,
                             const std::optional<DocumentConnection>& replaced) {
  const PlugRef& from = one.is_input ? other : one;
  const PlugRef& to = one.is_input ? one : other;
  const DocumentConnection wanted{from.GetPlug(), to.GetPlug(), to.index};
  if (replaced && *replaced == wanted) return;
  if (!replaced) {
    Do(ConnectPlugs(from, to));
    return;
  }
  const std::string name =
      tr("Connect %1 to %2").arg(QString::fromStdString(wanted.from), QString::fromStdString(wanted.to)).toStdString();
  Do(session_.Group(name, [&] {
    const Status gone = session_.Disconnect(*replaced);
    return gone.IsError() ? gone : ConnectPlugs(from, to);
  }));
}

void CanvasCommands::Disconnect(const std::vector<DocumentConnection>& connections) {
  if (connections.empty()) return;
  if (connections.size() == 1) {
    Do(session_.Disconnect(connections.front()));
    return;
  }
  Do(session_.Group(tr("Disconnect %n wire(s)", nullptr, static_cast<int>(connections.size())).toStdString(), [&] {
    for (const DocumentConnection& connection : connections) {
      const Status status = session_.Disconnect(connection);
      if (status.IsError()) return status;
    }
    return Status();
  }));
}

// ---- What is selected ----

void CanvasCommands::Remove(bool heals) {
  const std::vector<std::string> ids = scene_.GetSelectedIds();
  std::vector<DocumentConnection> wires;
  for (const WireItem* wire : scene_.GetAllWires()) {
    if (wire->isSelected()) wires.push_back(wire->GetConnection());
  }
  std::vector<std::size_t> frames;
  for (const FrameItem* frame : scene_.GetFrames()) {
    if (frame->isSelected()) frames.push_back(frame->GetIndex());
  }
  const auto remove_nodes = [&] { return heals ? session_.RemoveAndHeal(ids) : session_.RemoveNodes(ids); };
  if (wires.empty() && frames.empty()) {
    if (!ids.empty()) Do(remove_nodes());
    return;
  }
  if (ids.empty() && frames.empty()) {
    Disconnect(wires);
    return;
  }
  Do(session_.Group(tr("Remove the selection").toStdString(), [&] {
    for (const DocumentConnection& wire : wires) {
      const Status status = session_.Disconnect(wire);
      if (status.IsError()) return status;
    }
    // From the last one, so that the places of the others stay.
    for (auto index = frames.rbegin(); index != frames.rend(); ++index) {
      const Status status = session_.RemoveFrame(*index);
      if (status.IsError()) return status;
    }
    return ids.empty() ? Status() : remove_nodes();
  }));
}

void CanvasCommands::ToggleEnabled() {
  const std::vector<std::string> ids = scene_.GetSelectedIds();
  if (ids.empty()) return;
  const bool is_any_enabled =
      std::any_of(ids.begin(), ids.end(), [&](const std::string& id) { return session_.GetDocument().IsEnabled(id); });
  Do(session_.SetEnabled(ids, !is_any_enabled));
}

// ---- Names and notes ----

void CanvasCommands::Rename(const std::string& id, const QString& now) {
  if (now.toStdString() != id) Do(session_.RenameNode(id, now.toStdString()));
}

void CanvasCommands::SetNote(const std::string& id, const QString& note) {
  Do(session_.SetNote(id, note.toStdString()));
}
