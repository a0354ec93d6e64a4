// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/GraphObject.h"

#include <algorithm>

#include "Host/Documents/DocumentEdits.h"
#include "Host/Documents/NodeIds.h"
#include "Host/Util/ClosestName.h"
#include "Python/Module/AttributeValue.h"
#include "Python/Module/Catalog.h"
#include "Python/Module/Errors.h"
#include "Python/Module/GraphUse.h"
#include "Python/Module/Interruption.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

std::unique_ptr<ScEng::GraphDocument> MakeDocument() {
  return std::make_unique<ScEng::GraphDocument>(Catalog::Get().GetTypes());
}

ScEng::LoadOptions MakeOptions(bool keeps_unknown) {
  return {keeps_unknown ? ScEng::UnknownTypes::kKeep : ScEng::UnknownTypes::kRefuse};
}

}  // namespace

GraphObject::GraphObject() : GraphObject(MakeDocument()) {}

GraphObject::GraphObject(std::unique_ptr<ScEng::GraphDocument> document)
    : document_(std::move(document)), generation_(Catalog::Get().GetGeneration()) {}

std::unique_ptr<GraphObject> GraphObject::Load(const std::string& path, bool keeps_unknown) {
  auto document = MakeDocument();
  ScEng::Findings findings;
  bool is_read = false;
  Interruption interruption;
  interruption.Run([&] { is_read = document->Load(path, findings, MakeOptions(keeps_unknown)); });
  if (!is_read) ThrowFileError(findings.errors.front(), {path, false});
  if (!findings.errors.empty()) ThrowDocumentError(HintAtClasses(findings.errors));
  Warn(findings.notes);
  return std::unique_ptr<GraphObject>(new GraphObject(std::move(document)));
}

std::unique_ptr<GraphObject> GraphObject::FromText(const std::string& text, const std::string& folder,
                                                   const std::string& name, bool keeps_unknown) {
  auto document = MakeDocument();
  ScEng::Findings findings;
  Interruption interruption;
  interruption.Run([&] { document->LoadText(text, folder, name, findings, MakeOptions(keeps_unknown)); });
  if (!findings.errors.empty()) ThrowDocumentError(HintAtClasses(findings.errors));
  Warn(findings.notes);
  return std::unique_ptr<GraphObject>(new GraphObject(std::move(document)));
}

void GraphObject::FollowCatalog() {
  const Catalog& catalog = Catalog::Get();
  if (generation_ == catalog.GetGeneration()) return;
  auto document = MakeDocument();
  ScEng::Findings findings;
  std::string text;
  ScEng::Status status;
  Interruption interruption;
  interruption.Run([&] {
    status = document_->SaveText(text);
    if (!status.IsError()) document->LoadText(text, document_->GetFolder(), "graph", findings, MakeOptions(true));
  });
  if (status.IsError()) ThrowValueNodesError(status.GetMessage());
  if (!findings.errors.empty()) ThrowDocumentError(findings.errors);
  document_ = std::move(document);
  generation_ = catalog.GetGeneration();
}

// ---- Files ----

void GraphObject::Save(const std::string& path) {
  const Use use(*this);
  const std::filesystem::path file(path);
  ScEng::Status status;
  Interruption interruption;
  interruption.Run([&] { status = document_->Save(file); });
  if (status.IsError()) ThrowFileError(status.GetMessage(), {path, true});
  ScEng::DocumentEdits(*document_).SetFolder(file.parent_path());
}

std::string GraphObject::Write() {
  const Use use(*this);
  std::string text;
  ScEng::Status status;
  Interruption interruption;
  interruption.Run([&] { status = document_->SaveText(text); });
  if (status.IsError()) ThrowDocumentError({status.GetMessage()});
  return text;
}

std::string GraphObject::GetFolder() {
  const Use use(*this);
  return document_->GetFolder().string();
}

// ---- Nodes ----

std::string GraphObject::Add(const std::string& type, const std::optional<std::string>& id,
                             const py::dict& attributes) {
  const Use use(*this);
  const NodeInterface& descriptor = Catalog::Get().Find(type);
  const std::string made = id ? *id : ScEng::UniqueIds(*document_).Make(ScEng::MakeIdFromName(descriptor.GetName()));
  ScEng::Status status;
  Node* const node = document_->AddNode(made, descriptor.GetNodeType(), status);
  Require(status);
  try {
    for (const auto& [key, value] : attributes) {
      const auto name = key.cast<std::string>();
      Attribute* const attribute = node->GetAttribute(name);
      if (attribute == nullptr) {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < node->GetNumAttributes(); ++i) names.push_back(node->GetAttribute(i)->GetName());
        throw py::type_error(descriptor.GetName() + " has no attribute " + Quote(name) +
                             ScEng::SuggestClosestNames(name, names));
      }
      SetAttribute(*node, *attribute, value);
    }
  } catch (...) {
    // All or nothing.
    document_->RemoveNode(made);
    throw;
  }
  return made;
}

void GraphObject::Remove(const std::string& id) {
  const Use use(*this);
  Require(document_->RemoveNode(id));
}

void GraphObject::Rename(const std::string& id, const std::string& now) {
  const Use use(*this);
  Require(document_->RenameNode(id, now));
}

void GraphObject::SetEnabled(const std::string& id, bool enabled) {
  const Use use(*this);
  Require(document_->SetEnabled(id, enabled));
}

bool GraphObject::IsEnabled(const std::string& id) {
  const Use use(*this);
  // Says in the document's words that there is no such node.
  if (!document_->HasId(id)) Require(document_->SetEnabled(id, true));
  return document_->IsEnabled(id);
}

py::list GraphObject::ListNodes() {
  const Use use(*this);
  py::list nodes;
  const ScEng::NodeCatalog& types = document_->GetEngine().GetCatalog();
  for (const std::string& id : document_->GetIds()) {
    const Node* const node = document_->FindNode(id);
    py::object type = py::none();
    if (node != nullptr) type = py::str(types.Find(node->GetNodeType())->GetNodeFactory()->GetTypeName());
    nodes.append(py::make_tuple(id, type));
  }
  return nodes;
}

Node& GraphObject::FindNode(const std::string& id) const {
  Node* const node = document_->FindNode(id);
  if (node == nullptr && document_->HasId(id)) {
    throw py::value_error("node " + Quote(id) + " is of a type that is unknown here");
  }
  if (node == nullptr) Require(document_->SetEnabled(id, true));
  return *node;
}

// ---- Attributes ----

void GraphObject::SetAttribute(Node& node, Attribute& attribute, py::handle value) {
  const std::string id = document_->GetId(node);
  const PlugValue before = attribute.GetValue();
  ValuePython::SetAttribute(attribute, value, id);
  // Set once more by the document, which remembers that it was.
  const PlugValue now = attribute.GetValue();
  std::vector<std::string> notes;
  const std::string name = id + "." + attribute.GetName();
  const ScEng::Status status = document_->SetAttributeValue(name, now, notes);
  if (!status.IsError()) return;
  document_->SetAttributeValue(name, before, notes);
  Require(status);
}

std::pair<Node*, Attribute*> GraphObject::FindAttribute(const std::string& written) const {
  if (document_->HasId(written) && !NamesPlug(written)) {
    const Node& node = FindNode(written);
    std::string names;
    for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
      names += (i == 0 ? ": " : ", ") + Quote(written + "." + node.GetAttribute(i)->GetName());
    }
    throw py::value_error(Quote(written) + " is a node, and an attribute is written \"id.attribute\"" + names);
  }
  const std::size_t dot = written.rfind('.');
  if (dot == std::string::npos) {
    throw py::value_error(document_->SetEnabled(written, true).GetMessage() +
                          "; an attribute is written \"id.attribute\"");
  }
  Node& node = FindNode(written.substr(0, dot));
  const std::string name = written.substr(dot + 1);
  Attribute* const attribute = node.GetAttribute(name);
  if (attribute != nullptr) return {&node, attribute};
  std::vector<std::string> names;
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) names.push_back(node.GetAttribute(i)->GetName());
  throw py::value_error(Quote(written) + ": " + node.GetName() + " has no attribute " + Quote(name) +
                        ScEng::SuggestClosestNames(name, names));
}

void GraphObject::Set(const std::string& attribute, py::handle value) {
  const Use use(*this);
  const auto [node, found] = FindAttribute(attribute);
  SetAttribute(*node, *found, value);
}

py::object GraphObject::Get(const std::string& attribute) {
  const Use use(*this);
  if (!document_->HasId(attribute)) return ToPython(FindAttribute(attribute).second->GetValue());
  const Node& node = FindNode(attribute);
  py::dict values;
  for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
    values[py::str(node.GetAttribute(i)->GetName())] = ToPython(node.GetAttribute(i)->GetValue());
  }
  return values;
}

// ---- Outputs ----

void GraphObject::AddOutput(ScEng::DocumentOutput output) {
  const Use use(*this);
  output.from = FindPlug(output.from, PlugUse::kImageOutput, "");
  Require(document_->AddOutput(output));
}

void GraphObject::RemoveOutputs(const std::string& written) {
  const Use use(*this);
  const std::string plug = FindPlug(written, PlugUse::kImageOutput, "");
  const std::size_t before = document_->GetOutputs().size();
  document_->RemoveOutputs(plug);
  if (document_->GetOutputs().size() == before) {
    throw py::value_error("the graph has no output of " + Quote(plug));
  }
}

std::vector<ScEng::DocumentOutput> GraphObject::ListOutputs() {
  const Use use(*this);
  return document_->GetOutputs();
}

std::string GraphObject::Describe() const {
  if (is_used_) return "<valuenodes.Graph, in use>";
  const auto count = [](std::size_t number, const std::string& what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
  };
  return "<valuenodes.Graph, " + count(document_->GetIds().size(), "node") + ", " +
         count(document_->GetConnections().size(), "connection") + ", " +
         count(document_->GetOutputs().size(), "output") + ">";
}

}  // namespace ValuePython
