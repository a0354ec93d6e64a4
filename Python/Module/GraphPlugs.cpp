// SPDX-License-Identifier: Apache-2.0
//
// How callers of a graph name plugs, and what keeps two plugs from being connected.
#include <algorithm>
#include <cstdint>
#include <deque>
#include <unordered_map>

#include "Host/Util/ClosestName.h"
#include "Python/Module/GraphObject.h"
#include "Python/Module/GraphUse.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

std::string IdOf(const std::string& plug) { return plug.substr(0, plug.rfind('.')); }
std::string NameOf(const std::string& plug) { return plug.substr(plug.rfind('.') + 1); }

/// "image" with its article, and "images" for several.
std::string OneOf(std::uint32_t type) {
  return (type == PlugType::kImage ? "an " : "a ") + std::string(PlugType::GetName(type));
}

std::string JoinQuoted(const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 8;
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), kMost); ++i) text += (i == 0 ? "" : ", ") + Quote(names[i]);
  return names.size() > kMost ? text + " and " + std::to_string(names.size() - kMost) + " more" : text;
}

const PlugRecord* FindPlugRecord(const std::vector<PlugRecord>& plugs, const std::string& name) {
  const auto found =
      std::find_if(plugs.begin(), plugs.end(), [&](const PlugRecord& plug) { return plug.name == name; });
  return found == plugs.end() ? nullptr : &*found;
}

}  // namespace

bool GraphObject::NamesPlug(const std::string& written) const {
  const std::size_t dot = written.rfind('.');
  return dot != std::string::npos && dot + 1 < written.size() && document_->HasId(written.substr(0, dot));
}

std::vector<std::string> GraphObject::ListPlugs(const std::string& id, PlugUse use) const {
  const Node& node = FindNode(id);
  std::vector<std::string> plugs;
  if (use == PlugUse::kInput) {
    for (std::size_t i = 0; i < node.GetNumRegularInputs(); ++i) plugs.push_back(id + "." + node.GetInplugs()[i].name);
    return plugs;
  }
  for (const PlugRecord& plug : node.GetOutplugs()) {
    if (use == PlugUse::kOutput || plug.type == PlugType::kImage) plugs.push_back(id + "." + plug.name);
  }
  return plugs;
}

std::string GraphObject::FindPlug(const std::string& written, PlugUse use, const std::string& lead) const {
  if (NamesPlug(written)) return written;
  if (!document_->HasId(written)) throw py::value_error(lead + DescribeMissingNode(written, use));
  const std::vector<std::string> plugs = ListPlugs(written, use);
  if (plugs.size() == 1) return plugs.front();
  const std::string what = use == PlugUse::kInput         ? "image input"
                           : use == PlugUse::kImageOutput ? "image output"
                                                          : "output";
  std::string message = lead + "node " + Quote(written);
  message += plugs.empty() ? " has no " + what : " has several " + what + "s; name one of " + JoinQuoted(plugs);
  if (plugs.empty() && use == PlugUse::kInput) {
    const Node& node = FindNode(written);
    std::vector<std::string> attributes;
    for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
      attributes.push_back(written + "." + node.GetAttribute(i)->GetName());
    }
    if (!attributes.empty()) message += "; its attributes are " + JoinQuoted(attributes);
  }
  throw py::value_error(message);
}

std::string GraphObject::DescribeMissingNode(const std::string& written, PlugUse use) const {
  const std::size_t dot = written.rfind('.');
  const bool is_plug = dot != std::string::npos && dot > 0 && dot + 1 < written.size();
  const std::string id = is_plug ? written.substr(0, dot) : written;
  // In the document's words, which offer the closest ids.
  const std::string message = document_->SetEnabled(id, true).GetMessage();
  if (is_plug || message.find("; the closest") != std::string::npos) return message;
  // The name of a plug alone, in a graph that a person can look over.
  constexpr std::size_t kMostSearched = 1000;
  std::vector<std::string> meant;
  if (document_->GetIds().size() <= kMostSearched) {
    for (const std::string& one : document_->GetIds()) {
      if (document_->IsPlaceholder(one)) continue;
      for (const std::string& plug : ListPlugs(one, use)) {
        if (NameOf(plug) == written) meant.push_back(plug);
      }
    }
  }
  if (!meant.empty()) return "there is no node " + Quote(written) + "; plugs of this name are " + JoinQuoted(meant);
  return message + "; a plug is written \"id.plug\"";
}

// ---- Connections ----

void GraphObject::Connect(const std::string& from, const std::string& to, unsigned index) {
  const Use use(*this);
  const std::string source = FindPlug(from, PlugUse::kOutput, "");
  const std::string target = FindPlug(to, PlugUse::kInput, "");
  const ScEng::Status status = document_->Connect(source, target, index);
  if (status.IsError()) throw py::value_error(DescribeRefusal(source, target, index, status.GetMessage()));
}

std::string GraphObject::DescribeRefusal(const std::string& from, const std::string& to, unsigned index,
                                         const std::string& message) const {
  const std::string lead = Quote(from) + " cannot feed " + Quote(to) + ": ";
  const Node* const source = document_->FindNode(IdOf(from));
  const Node* const target = document_->FindNode(IdOf(to));
  if (source == nullptr || target == nullptr) return lead + message;
  const PlugRecord* const outplug = FindPlugRecord(source->GetOutplugs(), NameOf(from));
  if (outplug == nullptr) return Quote(from) + ": " + message;
  const PlugRecord* inplug = FindPlugRecord(target->GetInplugs(), NameOf(to));
  // An attribute may be written by an older name.
  if (const Attribute* const attribute = target->GetAttribute(NameOf(to)); inplug == nullptr && attribute != nullptr) {
    inplug = FindPlugRecord(target->GetInplugs(), attribute->GetName());
  }
  if (inplug == nullptr) return Quote(to) + ": " + message;
  const std::string plug = IdOf(to) + "." + inplug->name;
  if (outplug->type != inplug->type) {
    std::vector<std::string> fitting;
    for (const PlugRecord& other : target->GetInplugs()) {
      if (other.type == outplug->type) fitting.push_back(IdOf(to) + "." + other.name);
    }
    return lead + "the one delivers " + OneOf(outplug->type) + ", the other takes " + OneOf(inplug->type) +
           (fitting.empty() ? "" : "; what takes " + OneOf(outplug->type) + " there is " + JoinQuoted(fitting));
  }
  const bool takes_many = inplug->connections == PlugRecord::kAnyNumber;
  if (!takes_many && index != 0) return lead + message;
  const std::string taken = DescribeTaken(from, plug, index, takes_many);
  return lead + (taken.empty() ? DescribeCycle(IdOf(from), IdOf(to), message) : taken);
}

std::string GraphObject::DescribeTaken(const std::string& from, const std::string& to, unsigned index,
                                       bool takes_many) const {
  std::string other;
  unsigned next = 0;
  for (const ScEng::DocumentConnection& connection : document_->GetConnections()) {
    if (connection.to != to) continue;
    if (connection.index == index) other = connection.from;
    next = std::max(next, connection.index + 1);
  }
  if (other.empty()) return {};
  const std::string free = "index=" + std::to_string(next) + " is free";
  if (takes_many) {
    return "at index " + std::to_string(index) + " it is connected already, to " + Quote(other) + "; " + free;
  }
  if (other == from) return "these two are connected already";
  return "it is connected already, to " + Quote(other) + "; disconnect(" + Quote(other) + ", " + Quote(to) + ") first";
}

std::string GraphObject::DescribeCycle(const std::string& from, const std::string& to,
                                       const std::string& message) const {
  if (from == to) return "a node cannot feed itself";
  std::unordered_map<std::string, std::vector<std::string>> after;
  for (const ScEng::DocumentConnection& connection : document_->GetConnections()) {
    after[IdOf(connection.from)].push_back(IdOf(connection.to));
  }
  // The shortest way from the one that would be fed to the one that would feed it.
  std::unordered_map<std::string, std::string> before{{to, ""}};
  std::deque<std::string> pending{to};
  while (!pending.empty() && !before.contains(from)) {
    const std::string id = pending.front();
    pending.pop_front();
    for (const std::string& next : after[id]) {
      if (before.emplace(next, id).second) pending.push_back(next);
    }
  }
  if (!before.contains(from)) return message;
  std::vector<std::string> way;
  for (std::string id = from; !id.empty(); id = before.at(id)) way.push_back(id);
  std::reverse(way.begin(), way.end());
  constexpr std::size_t kMost = 6;
  std::string text = "it would close a cycle, as ";
  if (way.size() > kMost) {
    return text + Quote(from) + " depends on " + Quote(to) + " over " + std::to_string(way.size() - 2) +
           " other nodes; disconnect one of them first";
  }
  for (std::size_t i = 0; i < way.size(); ++i)
    text += (i == 0 ? "" : i == 1 ? " feeds " : ", which feeds ") + Quote(way[i]);
  return text + "; disconnect one of these first";
}

void GraphObject::Disconnect(const std::string& from, const std::string& to, unsigned index) {
  const Use use(*this);
  const std::string source = FindPlug(from, PlugUse::kOutput, "");
  const std::string target = FindPlug(to, PlugUse::kInput, "");
  const ScEng::Status status = document_->Disconnect(source, target, index);
  if (!status.IsError()) return;
  std::vector<std::string> feeding;
  for (const ScEng::DocumentConnection& connection : document_->GetConnections()) {
    if (connection.to == target) feeding.push_back(connection.from);
  }
  throw py::value_error(status.GetMessage() +
                        (feeding.empty() ? "" : "; what feeds " + Quote(target) + " is " + JoinQuoted(feeding)));
}

std::vector<ScEng::DocumentConnection> GraphObject::ListConnections() {
  const Use use(*this);
  return document_->GetConnections();
}

}  // namespace ValuePython
