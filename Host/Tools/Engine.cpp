// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Engine.h"

#include <utility>

#include "Host/Image/PendingImage.h"
#include "Host/Tools/EngineGraph.h"
#include "Host/Tools/Evaluation/NodeCalls.h"
#include "Host/Tools/Evaluation/NodeImages.h"
#include "Host/Tools/Evaluation/NodeVertex.h"
#include "Host/Tools/RunningCall.h"
#include "Host/Tools/TypeGuard.h"

namespace {

using ScEng::GetOwnImage;
using ScEng::NameOf;
using ScEng::NodeVertex;
using ScEng::RefPtr;
using ScEng::Status;

}  // namespace

Engine* Engine::Get() {
  static Engine engine;
  return &engine;
}

Engine::Engine() : Engine(nullptr) {}

Engine::Engine(std::shared_ptr<const ScEng::NodeCatalog> catalog) { SetCatalog(std::move(catalog)); }

Engine::~Engine() = default;

void Engine::SetCatalog(std::shared_ptr<const ScEng::NodeCatalog> catalog) {
  // The nodes go before the library that their code is in.
  graph_ = std::make_unique<Graph>();
  catalog_ = catalog ? std::move(catalog) : std::make_shared<const ScEng::NodeCatalog>();
}

const ScEng::NodeCatalog& Engine::GetCatalog() const { return *catalog_; }

Node* Engine::CreateNode(const NodeType& type, Status& status) {
  const NodeInterface* descriptor = catalog_->Find(type);
  if (descriptor == nullptr) {
    status = Status::Error("the catalogue has no node type " + type.ToString());
    return nullptr;
  }
  const RefPtr<Node> node = ScEng::CreateNode(*descriptor, status);
  if (!node) return nullptr;
  const ScEng::RunningScope running({nullptr, nullptr, ScEng::FindLibraryOf(*descriptor)});
  Status added;
  Node* const joined = graph_->Add(node.Get(), added);
  if (added.IsError()) status = ScEng::NameType(*descriptor, added);
  return joined;
}

Node* Engine::CreateNode(const NodeType& type) {
  Status status;
  return CreateNode(type, status);
}

bool Engine::DeleteNode(Node* node) { return graph_->Delete(node); }

std::vector<Node*> Engine::GetNodes() const { return graph_->GetNodes(); }

Status Engine::Connect(Node* from, const std::string& from_plug, unsigned from_index, Node* to,
                       const std::string& to_plug, unsigned to_index) {
  NodeVertex* from_vertex = graph_->Find(from);
  NodeVertex* to_vertex = graph_->Find(to);
  if (from_vertex == nullptr || to_vertex == nullptr) return Status::Error("a node is not of this graph");
  const int outplug = from->GetOutplugIndex(from_plug);
  const int inplug = to->GetInplugIndex(to_plug);
  if (outplug < 0) return Status::Error(NameOf(*from) + " has no output \"" + from_plug + "\"");
  if (inplug < 0) return Status::Error(NameOf(*to) + " has no input or attribute \"" + to_plug + "\"");
  if (from_index != 0) return Status::Error("an output has the one index 0, not " + std::to_string(from_index));
  return graph_->Connect(*from_vertex, static_cast<unsigned>(outplug), *to_vertex, static_cast<unsigned>(inplug),
                         to_index);
}

bool Engine::ConnectNodes(Node* from, const std::string& from_plug, unsigned from_index, Node* to,
                          const std::string& to_plug, unsigned to_index) {
  return !Connect(from, from_plug, from_index, to, to_plug, to_index).IsError();
}

bool Engine::DisconnectNodes(Node* from, const std::string& from_plug, unsigned from_index, Node* to,
                             const std::string& to_plug, unsigned to_index) {
  NodeVertex* from_vertex = graph_->Find(from);
  NodeVertex* to_vertex = graph_->Find(to);
  if (from_vertex == nullptr || to_vertex == nullptr || from_index != 0) return false;
  const int outplug = from->GetOutplugIndex(from_plug);
  const int inplug = to->GetInplugIndex(to_plug);
  if (outplug < 0 || inplug < 0) return false;
  return graph_->Disconnect(*from_vertex, static_cast<unsigned>(outplug), *to_vertex, static_cast<unsigned>(inplug),
                            to_index);
}

bool Engine::IsConnected(const Node* node, const std::string& inplug) const {
  const NodeVertex* vertex = graph_->Find(node);
  if (vertex == nullptr) return false;
  const int index = node->GetInplugIndex(inplug);
  if (index < 0) return false;
  const auto first = vertex->inputs.lower_bound({static_cast<unsigned>(index), 0});
  return first != vertex->inputs.end() && first->second.inplug == static_cast<unsigned>(index);
}

Engine::Outcome Engine::Evaluate(const std::vector<Request>& requests, const Options& options) {
  return graph_->Evaluate(requests, options);
}

bool Engine::SetOutputOverride(Node* node, unsigned outplug, const ImagePtr& image) {
  NodeVertex* vertex = graph_->Find(node);
  if (vertex == nullptr || outplug >= node->GetOutplugs().size()) return false;
  if (node->GetOutplugs()[outplug].type != PlugType::kImage) return false;
  graph_->SetOverride(*vertex, outplug, image);
  return true;
}

Image* Engine::GetOutputImage(Node* node, unsigned outplug) const {
  const NodeVertex* vertex = graph_->Find(node);
  if (vertex == nullptr) return nullptr;
  if (Image* image = vertex->GetOverride(outplug)) return image;
  Image* image = GetOwnImage(*node, outplug);
  return image != nullptr && !ScEng::IsPending(*image) ? image : nullptr;
}

Engine::NodeStatistics Engine::GetStatistics(Node* node) const {
  const NodeVertex* vertex = graph_->Find(node);
  if (vertex == nullptr) return {};
  NodeStatistics statistics = vertex->statistics;
  statistics.bytes_held = ScEng::CountBytes(*node);
  return statistics;
}

bool Engine::IsBlocked(const Node* node) const {
  const NodeVertex* vertex = graph_->Find(node);
  return vertex != nullptr && vertex->blocked;
}
