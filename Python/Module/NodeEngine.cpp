// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/NodeEngine.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "Host/Nodes/HostNodes.h"
#include "Python/Module/Catalog.h"

namespace ValuePython {

EngineNode::EngineNode(std::shared_ptr<const ScEng::NodeCatalog> types, const NodeType& type)
    : engine_(std::move(types)) {
  ScEng::Status status;
  node_ = engine_.CreateNode(type, status);
  if (node_ == nullptr) throw std::runtime_error(status.GetMessage());
}

EngineNode::Source& EngineNode::AddSource(unsigned input, unsigned index) {
  Node* const node = engine_.CreateNode(ScEng::kImageRerouteType);
  const std::string plug = node_->GetInplugName(input);
  if (node == nullptr || engine_.Connect(node, "image", 0, node_, plug, index).IsError()) {
    throw std::logic_error("no image can be connected to input \"" + plug + "\"");
  }
  return sources_.emplace_back(Source{node, input, index});
}

void EngineNode::RemoveSources(unsigned input, std::size_t left) {
  std::erase_if(sources_, [&](const Source& source) {
    const bool is_surplus = source.input == input && source.index >= left;
    if (is_surplus) engine_.DeleteNode(source.node);
    return is_surplus;
  });
}

void EngineNode::Connect(const InputImages& inputs) {
  for (unsigned input = 0; input < inputs.size(); ++input) {
    const auto connected = static_cast<std::size_t>(
        std::count_if(sources_.begin(), sources_.end(), [&](const Source& source) { return source.input == input; }));
    for (std::size_t index = connected; index < inputs[input].size(); ++index) {
      AddSource(input, static_cast<unsigned>(index));
    }
    if (connected > inputs[input].size()) RemoveSources(input, inputs[input].size());
  }
}

void EngineNode::SetImages(const InputImages* inputs) {
  for (const Source& source : sources_) {
    engine_.SetOutputOverride(source.node, 0, inputs == nullptr ? ImagePtr() : (*inputs)[source.input][source.index]);
  }
}

std::vector<ImagePtr> EngineNode::Evaluate(const InputImages& inputs, const ScEng::Cancellation& cancellation) {
  Connect(inputs);
  SetImages(&inputs);
  // A node without outputs is asked for as a whole.
  const std::size_t outputs = node_->GetOutplugs().size();
  std::vector<ImagePtr> results(outputs);
  std::vector<Engine::Request> requests;
  for (unsigned i = 0; i < std::max<std::size_t>(outputs, 1); ++i) requests.push_back({node_, i});
  Engine::Options options;
  options.release_results = true;
  options.cancellation = &cancellation;
  options.on_evaluated = [&](Node& node, std::size_t, std::size_t) {
    if (&node != node_ || node.IsInError()) return;
    for (unsigned i = 0; i < outputs; ++i) {
      if (node.GetOutplugs()[i].type == PlugType::kImage) results[i] = ImagePtr(engine_.GetOutputImage(&node, i));
    }
  };
  const Engine::Outcome outcome = engine_.Evaluate(requests, options);
  SetImages(nullptr);
  if (outcome == Engine::Outcome::kCanceled) throw ScEng::Canceled();
  return results;
}

ThreadNodes::Levels& ThreadNodes::GetLevels() {
  thread_local Levels levels;
  return levels;
}

ThreadNodes::ThreadNodes() {
  Levels& levels = GetLevels();
  if (levels.in_use == levels.nodes.size()) levels.nodes.push_back(std::make_unique<Nodes>());
  nodes_ = levels.nodes[levels.in_use++].get();
}

ThreadNodes::~ThreadNodes() { --GetLevels().in_use; }

EngineNode& ThreadNodes::Find(const NodeType& type) {
  const Catalog& catalog = Catalog::Get();
  if (nodes_->generation != catalog.GetGeneration()) {
    nodes_->by_type.clear();
    nodes_->generation = catalog.GetGeneration();
  }
  std::unique_ptr<EngineNode>& node = nodes_->by_type[type];
  if (!node) node = std::make_unique<EngineNode>(catalog.GetTypes(), type);
  return *node;
}

}  // namespace ValuePython
