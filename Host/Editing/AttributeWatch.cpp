// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/AttributeWatch.h"

#include <memory>
#include <utility>

namespace ScEng {

AttributeWatch::AttributeWatch(GraphDocument& document, Node& node, std::function<bool()> is_own,
                               std::function<void(const std::string& name, Edits edits)> take)
    : document_(document),
      node_(&node),
      is_own_(std::move(is_own)),
      take_(std::move(take)),
      states_(ReadStates(document.GetId(node))),
      is_enabled_(node.IsEnabled()) {
  node.AddObserver(this);
}

AttributeWatch::~AttributeWatch() {
  if (node_ != nullptr) node_->RemoveObserver(this);
}

std::vector<AttributeState> AttributeWatch::ReadStates(const std::string& id) const {
  const DocumentEdits exact(document_);
  std::vector<AttributeState> states;
  while (auto state = exact.GetAttribute(id, states.size())) states.push_back(std::move(*state));
  return states;
}

void AttributeWatch::OnNodeChanged(Node& node) {
  const std::string id = document_.GetId(node);
  const std::vector<AttributeState> before = std::exchange(states_, ReadStates(id));
  const bool was_enabled = std::exchange(is_enabled_, node.IsEnabled());
  if (is_own_() || before.size() != states_.size()) return;
  Edits edits;
  std::string name;
  DocumentEdits exact(document_);
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (before[i] == states_[i]) continue;
    name = edits.empty() ? "Set " + id + "." + node.GetAttribute(i)->GetName() : "Set attributes of " + id;
    edits.push_back(std::make_unique<AttributeEdit>(AttributeKey{id, i}, before[i], states_[i]));
    exact.TellAttributeChanged(id, node.GetAttribute(i)->GetName());
  }
  if (was_enabled != is_enabled_) {
    name = (is_enabled_ ? "Enable " : "Disable ") + id;
    edits.push_back(std::make_unique<EnabledEdit>(id, was_enabled, is_enabled_));
    exact.TellNodeChanged(id);
  }
  // The last thing that is done: the watch may be gone after it.
  if (!edits.empty()) take_(name, std::move(edits));
}

void AttributeWatch::OnNodeDestroyed(Node&) { node_ = nullptr; }

}  // namespace ScEng
