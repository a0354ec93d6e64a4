// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/GraphObject.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "Host/Documents/DocumentEdits.h"
#include "Host/Documents/GraphPicture.h"
#include "Host/Documents/NodeIds.h"
#include "Host/Util/ClosestName.h"
#include "Python/Module/AttributeValue.h"
#include "Python/Module/Catalog.h"
#include "Python/Module/Errors.h"
#include "Python/Module/GraphUse.h"
#include "Python/Module/Interruption.h"
#include "Python/Module/LogBridge.h"
#include "Python/Module/Samples.h"

namespace py = pybind11;

namespace ValuePython {
namespace {

std::string Quote(const std::string& name) { return "\"" + ScEng::MakeLine(name, 80) + "\""; }

void Require(const ScEng::Status& status) {
  if (status.IsError()) throw py::value_error(status.GetMessage());
}

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
  if (!is_read) ThrowFileError(findings.errors.front());
  if (!findings.errors.empty()) ThrowDocumentError(findings.errors);
  Warn(findings.notes);
  return std::unique_ptr<GraphObject>(new GraphObject(std::move(document)));
}

std::unique_ptr<GraphObject> GraphObject::FromText(const std::string& text, const std::string& folder,
                                                   const std::string& name, bool keeps_unknown) {
  auto document = MakeDocument();
  ScEng::Findings findings;
  Interruption interruption;
  interruption.Run([&] { document->LoadText(text, folder, name, findings, MakeOptions(keeps_unknown)); });
  if (!findings.errors.empty()) ThrowDocumentError(findings.errors);
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
  if (status.IsError()) ThrowFileError(status.GetMessage());
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

// ---- Connections ----

void GraphObject::Connect(const std::string& from, const std::string& to, unsigned index) {
  const Use use(*this);
  Require(document_->Connect(from, to, index));
}

void GraphObject::Disconnect(const std::string& from, const std::string& to, unsigned index) {
  const Use use(*this);
  Require(document_->Disconnect(from, to, index));
}

std::vector<ScEng::DocumentConnection> GraphObject::ListConnections() {
  const Use use(*this);
  return document_->GetConnections();
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
  const std::size_t dot = written.rfind('.');
  if (dot == std::string::npos) {
    throw py::value_error(Quote(written) + " is no attribute; it is written \"id.attribute\"");
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

void GraphObject::AddOutput(const ScEng::DocumentOutput& output) {
  const Use use(*this);
  Require(document_->AddOutput(output));
}

void GraphObject::RemoveOutputs(const std::string& plug) {
  const Use use(*this);
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

// ---- Evaluation ----

ScEng::Findings GraphObject::Check() {
  const Use use(*this);
  ScEng::Findings findings;
  Interruption interruption;
  interruption.Run([&] {
    document_->CheckComplete(findings);
    document_->CheckOutputs(findings);
    if (findings.errors.empty()) document_->Advise(findings);
  });
  return findings;
}

/// The images that stand in for outputs during one evaluation.
class GraphObject::Sources {
 public:
  Sources(ScEng::GraphDocument& document) : document_(document) {}
  ~Sources() {
    for (const std::string& plug : plugs_) document_.SetSource(plug, {});
  }
  Sources(const Sources&) = delete;
  Sources& operator=(const Sources&) = delete;

  void Set(const std::string& plug, const SharedImage& image) {
    Require(document_.SetSource(plug, image.Lend()));
    plugs_.push_back(plug);
  }

 private:
  ScEng::GraphDocument& document_;
  std::vector<std::string> plugs_;
};

std::string GraphObject::FindSource(const std::string& name) const {
  if (!document_->HasId(name)) return name;
  const Node& node = FindNode(name);
  std::vector<std::string> outputs;
  for (const PlugRecord& plug : node.GetOutplugs()) {
    if (plug.type == PlugType::kImage) outputs.push_back(name + "." + plug.name);
  }
  if (outputs.size() == 1) return outputs.front();
  std::string list;
  for (const std::string& output : outputs) list += (list.empty() ? "" : ", ") + Quote(output);
  throw py::value_error("node " + Quote(name) +
                        (outputs.empty() ? " has no image output" : " has several image outputs; name one of " + list));
}

GraphObject::SharedImagePtr GraphObject::Evaluate(const std::string& written, const Inputs& inputs,
                                                  const py::object& progress, bool keep) {
  const Use use(*this);
  const std::string plug = FindSource(written);
  const std::string id = plug.substr(0, plug.rfind('.'));
  // Refused in the document's words where it is no image output. A node of unknown type is an error of its own.
  if (!document_->IsPlaceholder(id)) Require(document_->SetSource(plug, {}));
  Sources sources(*document_);
  for (const auto& [name, image] : inputs) sources.Set(FindSource(name), *image);

  ScEng::RunReport report;
  ImagePtr image;
  Interruption interruption;
  Engine::Options options;
  // Results of images that are gone after this call are of no further use.
  options.release_results = !keep || !inputs.empty();
  options.cancellation = &interruption.GetCancellation();
  options.on_evaluated = TellProgress(progress, interruption);
  interruption.Run([&] { image = document_->Evaluate(plug, report, options); });
  DeliverLog();
  const std::vector<const Node*> nodes = FindSources(id);
  if (!image) ThrowFailure(report, nodes, py::none());
  for (const Node* const node : nodes) {
    if (!node->IsInError()) WarnLines(node->GetStateMessage());
  }
  // An image that only this function has is taken as it is.
  if (image->GetRefCount() == 1 && !FindOwner(*image)) {
    return std::make_shared<SharedImage>(SharedImage::Take(std::move(image)));
  }
  std::optional<SharedImage> kept;
  interruption.Run([&] { kept = SharedImage::Keep(*image); });
  return std::make_shared<SharedImage>(std::move(*kept));
}

py::list GraphObject::Run(const py::object& progress) {
  const Use use(*this);
  ScEng::Findings findings;
  document_->CheckComplete(findings);
  if (!findings.errors.empty()) ThrowDocumentError(findings.errors);

  ScEng::RunReport report;
  Interruption interruption;
  Engine::Options options;
  options.cancellation = &interruption.GetCancellation();
  options.on_evaluated = TellProgress(progress, interruption);
  interruption.Run([&] { report = document_->Run(nullptr, options); });
  DeliverLog();
  py::list written;
  for (const ScEng::WrittenFile& file : report.written) {
    written.append(py::make_tuple(file.file.string(), std::pair(file.header.size_x, file.header.size_y),
                                  ScEng::GetName(file.type)));
  }
  if (!report.findings.errors.empty()) {
    std::vector<const Node*> nodes;
    for (const std::string& id : document_->GetIds()) nodes.push_back(document_->FindNode(id));
    ThrowFailure(report, nodes, written);
  }
  Warn(report.findings.notes);
  return written;
}

std::string GraphObject::DrawSvg() {
  const Use use(*this);
  std::string svg;
  ScEng::Status status;
  Interruption interruption;
  interruption.Run([&] {
    ScEng::Findings findings;
    document_->CheckComplete(findings);
    document_->CheckOutputs(findings);
    status = ScEng::DrawSvg(*document_, findings.errors, svg);
  });
  if (status.IsError()) ThrowValueNodesError(status.GetMessage());
  return svg;
}

std::vector<const Node*> GraphObject::FindSources(const std::string& id) const {
  std::unordered_map<std::string, std::vector<std::string>> before;
  for (const ScEng::DocumentConnection& connection : document_->GetConnections()) {
    before[connection.to.substr(0, connection.to.rfind('.'))].push_back(
        connection.from.substr(0, connection.from.rfind('.')));
  }
  std::vector<const Node*> nodes;
  std::vector<std::string> pending{id};
  std::unordered_set<std::string> seen{id};
  while (!pending.empty()) {
    const std::string next = std::move(pending.back());
    pending.pop_back();
    if (const Node* const node = document_->FindNode(next)) nodes.push_back(node);
    for (const std::string& source : before[next]) {
      if (seen.insert(source).second) pending.push_back(source);
    }
  }
  return nodes;
}

void GraphObject::ThrowFailure(const ScEng::RunReport& report, const std::vector<const Node*>& nodes,
                               const py::object& written) const {
  const bool is_of_file = report.failure == ScEng::RunFailure::kFile;
  std::string message = report.findings.errors.empty() ? "there is no image" : report.findings.errors.front();
  const Node* failed = nullptr;
  for (const Node* const node : nodes) {
    if (node == nullptr || !node->IsInError()) continue;
    const bool is_file_error = node->GetState() == Node::State::kFileError;
    if (failed == nullptr && (is_file_error || !is_of_file)) failed = node;
  }
  // The whole message: a node in Python says where it failed in further lines.
  if (failed != nullptr) message = "node " + Quote(failed->GetLabel()) + ": " + failed->GetStateMessage();
  ThrowRunError(is_of_file, message, report.findings.errors, written);
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
