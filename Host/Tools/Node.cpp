// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Node.h"

#include <algorithm>
#include <numeric>

#include "Host/Tools/Guard.h"
#include "Host/Tools/NodeRecord.h"

namespace {

/// Asks a node for a text. An exception becomes the node's error state and `fallback` the answer.
template <class Function>
std::string AskNode(const Node& node, const char* operation, const std::string& fallback, const Function& function) {
  ScEng::Status status;
  std::string answer = ScEng::CallGuarded(operation, status, fallback, function);
  // Nodes are never constant objects; that their state changes is no change of what is asked for.
  if (status.IsError()) const_cast<Node&>(node).SetState(0, Node::State::kError, status.GetMessage());
  return answer;
}

std::string Translate(const Node& node, const std::string& name) {
  return AskNode(node, "TranslateAttributeName", name, [&] { return node.TranslateAttributeName(0, name); });
}

int FindPlug(const std::vector<PlugRecord>& plugs, const std::string& name) {
  const auto found =
      std::find_if(plugs.begin(), plugs.end(), [&](const PlugRecord& plug) { return plug.name == name; });
  return found == plugs.end() ? -1 : static_cast<int>(found - plugs.begin());
}

std::string NameOf(const std::vector<PlugRecord>& plugs, unsigned index) {
  return index < plugs.size() ? plugs[index].name : std::string();
}

}  // namespace

Node::Node() = default;
Node::~Node() { Tell(&NodeObserver::OnNodeDestroyed); }

NodeObserver::~NodeObserver() = default;
void NodeObserver::OnNodeChanged(Node&) {}
void NodeObserver::OnAttributeSourcesChanged(Node&) {}
void NodeObserver::OnNodeDestroyed(Node&) {}

void Node::OnAdded() {}
void Node::OnRemoved() {}
bool Node::IsSink() const { return false; }
unsigned Node::GetAttributeVersion() const { return 0; }
std::string Node::TranslateAttributeName(unsigned, const std::string& name) const { return name; }
std::string Node::GetInplugAlias(unsigned inplug) const { return GetInplugName(inplug); }
bool Node::GetInplugVisibility(unsigned inplug) const { return inplug < all_inplugs_.size(); }
std::string Node::GetOutplugAlias(unsigned outplug) const { return GetOutplugName(outplug); }
bool Node::GetOutplugVisibility(unsigned outplug) const { return outplug < outplugs_.size(); }
bool Node::InplugAffectsOutplug(unsigned inplug, unsigned outplug) const {
  return inplug < all_inplugs_.size() && outplug < outplugs_.size();
}
bool Node::IsObsoleteAttribute(unsigned, const char*) const { return false; }
std::string Node::V0GetOutplugName(unsigned outplug) const { return GetOutplugName(outplug); }
int Node::V0GetOutplugIndex(const std::string& name) const { return GetOutplugIndex(name); }
std::string Node::V0GetInplugName(unsigned inplug) const { return GetInplugName(inplug); }
int Node::V0GetInplugIndex(const std::string& name) const { return GetInplugIndex(name); }
bool Node::OnProcessEvent(NodeEvent) { return false; }
Image* Node::GetOutputImage(unsigned) const { return nullptr; }
PlugValue Node::GetOutputValue(unsigned) const { return {}; }

void Node::Reserved8() {}
void Node::Reserved9() {}
void Node::Reserved10() {}
void Node::Reserved17() {}
void Node::Reserved22() {}
void Node::Reserved24() {}
void Node::Reserved25() {}
void Node::Reserved26() {}
void Node::Reserved27() {}
void Node::Reserved28() {}
void Node::Reserved29() {}
void Node::Reserved30() {}
void Node::Reserved31() {}
void Node::Reserved32() {}
void Node::Reserved33() {}
void Node::Reserved35() {}
void Node::Reserved36() {}
void Node::Reserved37() {}
void Node::Reserved38() {}
void Node::Reserved39() {}
void Node::Reserved42() {}
void Node::Reserved43() {}
void Node::Reserved44() {}
void Node::Reserved45() {}
void Node::Reserved46() {}
void Node::Reserved47() {}
void Node::Reserved48() {}
void Node::Reserved49() {}
void Node::Reserved50() {}
void Node::Reserved51() {}
void Node::Reserved52() {}
void Node::Reserved53() {}
void Node::Reserved54() {}
void Node::Reserved55() {}
void Node::Reserved56() {}
void Node::Reserved57() {}
void Node::Reserved58() {}
void Node::Reserved59() {}
void Node::Reserved60() {}
void Node::Reserved61() {}

Attribute* Node::GetAttribute(std::size_t id) const {
  return id < attributes_.size() ? attributes_[id].Get() : nullptr;
}

Attribute* Node::GetAttribute(const std::string& name) const {
  const std::string current = Translate(*this, name);
  for (const auto& attribute : attributes_) {
    if (attribute && attribute->GetName() == current) return attribute.Get();
  }
  return nullptr;
}

std::string Node::GetInplugName(unsigned inplug) const { return NameOf(all_inplugs_, inplug); }
std::string Node::GetOutplugName(unsigned outplug) const { return NameOf(outplugs_, outplug); }

int Node::GetInplugIndex(const std::string& name) const {
  const int index = FindPlug(all_inplugs_, name);
  return index >= 0 ? index : FindPlug(all_inplugs_, Translate(*this, name));
}

int Node::GetOutplugIndex(const std::string& name) const { return FindPlug(outplugs_, name); }

unsigned Node::GetInplugIdFromRegularInputId(unsigned input) const {
  const auto counted = std::min<std::size_t>(input, entries_.size());
  return std::accumulate(entries_.begin(), entries_.begin() + static_cast<std::ptrdiff_t>(counted), 0U);
}

unsigned Node::GetInplugIdFromAttributeId(unsigned attribute) const {
  return std::accumulate(entries_.begin(), entries_.end(), 0U) + attribute;
}

void Node::SetRegularInputEntries(unsigned input, unsigned entries) {
  if (input < entries_.size()) entries_[input] = entries;
}

void Node::SetEnabled(bool enabled) {
  if (enabled_ == enabled) return;
  enabled_ = enabled;
  NotifyChanged();
}

void Node::SetState(unsigned, State state, const std::string& message) {
  state_ = state;
  state_message_ = message;
}

void Node::NotifyChanged() {
  if (change_listener_) change_listener_(*this);
  Tell(&NodeObserver::OnNodeChanged);
}

void Node::AddObserver(NodeObserver* observer) { observers_.push_back(observer); }

void Node::RemoveObserver(NodeObserver* observer) { std::erase(observers_, observer); }

void Node::Tell(void (NodeObserver::*what)(Node&)) {
  if (observers_.empty()) return;
  // An observer may remove itself and others while it is told.
  const std::vector<NodeObserver*> told = observers_;
  for (NodeObserver* observer : told) {
    if (std::find(observers_.begin(), observers_.end(), observer) != observers_.end()) (observer->*what)(*this);
  }
}

std::string Node::GetLabel() const {
  return label_.empty() ? AskNode(*this, "GetName", "a node", [this] { return GetName(); }) : label_;
}

std::string Node::GetAttributeSource(unsigned attribute) const {
  if (attribute >= attribute_sources_.size() || attribute_sources_[attribute].node == nullptr) return {};
  const AttributeSource& source = attribute_sources_[attribute];
  return source.node->GetLabel() + "." + source.node->GetOutplugName(source.outplug);
}

void Node::SetAttributeSource(unsigned attribute, const Node* from, unsigned outplug) {
  if (attribute >= attributes_.size()) return;
  if (attribute >= attribute_sources_.size()) attribute_sources_.resize(attribute + 1);
  attribute_sources_[attribute] = {from, outplug};
  Tell(&NodeObserver::OnAttributeSourcesChanged);
}

Reach Node::GetReach(const std::vector<PlugValue>& inputs) const {
  return record_ != nullptr && record_->reach != nullptr ? record_->reach(*this, inputs) : Reach();
}

std::optional<bool> Node::HasImage(unsigned outplug, const std::vector<bool>& inputs) const {
  if (record_ == nullptr || record_->has_image == nullptr) return std::nullopt;
  return record_->has_image(*this, outplug, inputs);
}

void Node::Declare(const NodeRecord& record) {
  record_ = &record;
  attributes_.resize(record.attributes.size());
  for (unsigned id = 0; id < attributes_.size(); ++id) {
    attributes_[id].Reset(new Attribute(this, id, record.attributes[id]));
  }
  inplugs_.clear();
  for (const PlugRow& row : record.inputs) {
    inplugs_.push_back(row.takes_many ? PlugRecord::MultipleInput(row.type, row.name)
                                      : PlugRecord::Input(row.type, row.name));
  }
  outplugs_.clear();
  for (const PlugRow& row : record.outputs) outplugs_.push_back(PlugRecord::Output(row.type, row.name));
  UpdateInplugsAndOutplugs();
}

void Node::UpdateInplugsAndOutplugs() {
  all_inplugs_ = inplugs_;
  for (const auto& attribute : attributes_) {
    all_inplugs_.push_back(PlugRecord::Input(attribute->GetPlugType(), attribute->GetName()));
  }
  entries_.assign(inplugs_.size(), 1);
}

bool HasImageWhileEnabled(const Node& node, unsigned, const std::vector<bool>&) { return node.IsEnabled(); }

bool HasImageOfAnyInputWhileEnabled(const Node& node, unsigned outplug, const std::vector<bool>& inputs) {
  return node.IsEnabled() && HasImageOfAnyInput(node, outplug, inputs);
}
