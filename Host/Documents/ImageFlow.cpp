// SPDX-License-Identifier: Apache-2.0
#include "Host/Documents/ImageFlow.h"

#include <algorithm>
#include <utility>

#include "Host/Documents/MessageText.h"
#include "Host/Tools/Guard.h"

namespace ScEng {
namespace {

using Delivery = ImageFlow::Delivery;

/// What a node type says; nothing where it does not, or fails to.
std::optional<bool> AskNode(const Node& node, unsigned outplug, const std::vector<bool>& inputs) {
  return AskGuarded("has_image", std::optional<bool>(), [&] { return node.HasImage(outplug, inputs); });
}

std::vector<bool> Select(const std::vector<Delivery>& arrivals, Delivery least) {
  std::vector<bool> selected;
  for (const Delivery arrival : arrivals) selected.push_back(arrival >= least);
  return selected;
}

Delivery FindDelivery(const Node& node, unsigned outplug, const std::vector<Delivery>& arrivals) {
  const auto at_best = AskNode(node, outplug, Select(arrivals, Delivery::kUnknown));
  if (!at_best) return Delivery::kUnknown;
  if (!*at_best) return Delivery::kNo;
  return AskNode(node, outplug, Select(arrivals, Delivery::kYes)) == true ? Delivery::kYes : Delivery::kUnknown;
}

std::string NameNode(const DocumentEntry& entry) { return "node " + Quote(entry.id); }

}  // namespace

ImageFlow::ImageFlow(GraphDocument::Content& content) : content_(content) {
  AddVertices();
  AddInputs();
  const std::vector<Index> order = Order();
  FindNeeded(order);
  for (const Index vertex : order) FindDeliveries(vertex);
}

void ImageFlow::AddVertices() {
  Index outputs = 0;
  vertices_.reserve(content_.ids.size() + 1);
  for (const std::string& id : content_.ids) {
    const DocumentEntry& entry = *content_.Find(id);
    indices_.emplace(&entry, static_cast<Index>(vertices_.size()));
    vertices_.push_back({&entry, 0, outputs, false});
    if (entry.node == nullptr) continue;
    outputs += static_cast<Index>(std::max<std::size_t>(entry.node->GetOutplugs().size(), 1));
    const bool is_sink = entry.node->IsEnabled() && AskGuarded("IsSink", false, [&] { return entry.node->IsSink(); });
    if (is_sink) sinks_.push_back(&entry);
  }
  vertices_.push_back({nullptr, 0, outputs, false});
  outputs_.resize(outputs);
}

void ImageFlow::AddInputs() {
  for (const ConnectionEntry& connection : content_.connections) {
    ++vertices_[FindVertex(*connection.to) + 1].first_input;
  }
  for (std::size_t i = 1; i < vertices_.size(); ++i) vertices_[i].first_input += vertices_[i - 1].first_input;
  std::vector<Index> next;
  for (const Vertex& vertex : vertices_) next.push_back(vertex.first_input);
  inputs_.resize(content_.connections.size());
  for (const ConnectionEntry& connection : content_.connections) {
    inputs_[next[FindVertex(*connection.to)]++] = {&connection, FindVertex(*connection.from)};
  }
}

std::vector<ImageFlow::Index> ImageFlow::Order() const {
  const std::size_t count = vertices_.size() - 1;
  std::vector<Index> order;
  std::vector<bool> is_entered(count, false);
  std::vector<std::pair<Index, Index>> stack;
  const auto enter = [&](Index vertex) {
    if (is_entered[vertex]) return;
    is_entered[vertex] = true;
    stack.emplace_back(vertex, vertices_[vertex].first_input);
  };
  for (Index root = 0; root < count; ++root) {
    enter(root);
    while (!stack.empty()) {
      auto& [vertex, next] = stack.back();
      if (next < GetEndOfInputs(vertex)) {
        enter(inputs_[next++].from);
        continue;
      }
      order.push_back(vertex);
      stack.pop_back();
    }
  }
  return order;
}

bool ImageFlow::IsGiven(const Node& node, unsigned outplug) const {
  return content_.sources.contains({&node, outplug});
}

void ImageFlow::FindNeeded(const std::vector<Index>& order) {
  for (const OutputEntry& output : content_.output_entries) {
    const bool is_given = output.entry->node != nullptr && IsGiven(*output.entry->node, output.outplug);
    if (!is_given) vertices_[FindVertex(*output.entry)].is_needed = true;
  }
  for (const DocumentEntry* sink : sinks_) vertices_[FindVertex(*sink)].is_needed = true;
  for (auto vertex = order.rbegin(); vertex != order.rend(); ++vertex) {
    if (!vertices_[*vertex].is_needed) continue;
    for (Index i = vertices_[*vertex].first_input; i < GetEndOfInputs(*vertex); ++i) {
      const ConnectionEntry& connection = *inputs_[i].connection;
      const Node* from = connection.from->node;
      const bool is_given =
          from != nullptr && IsGiven(*from, static_cast<unsigned>(from->GetOutplugIndex(connection.outplug)));
      if (!is_given) vertices_[inputs_[i].from].is_needed = true;
    }
  }
}

const ImageFlow::Output& ImageFlow::GetSource(const Input& input) const {
  static const Output kPlaceholder;
  const Node* node = input.connection->from->node;
  if (node == nullptr) return kPlaceholder;
  return outputs_[vertices_[input.from].first_output +
                  static_cast<Index>(node->GetOutplugIndex(input.connection->outplug))];
}

std::vector<Delivery> ImageFlow::FindArrivals(Index vertex) const {
  const DocumentEntry& entry = *vertices_[vertex].entry;
  const bool is_open = entry.has_lost_connection || content_.lacks_parts;
  std::vector<Delivery> arrivals(entry.node->GetNumRegularInputs(), is_open ? Delivery::kUnknown : Delivery::kNo);
  for (Index i = vertices_[vertex].first_input; i < GetEndOfInputs(vertex); ++i) {
    const auto input = static_cast<std::size_t>(entry.node->GetInplugIndex(inputs_[i].connection->inplug));
    if (input < arrivals.size()) arrivals[input] = std::max(arrivals[input], GetSource(inputs_[i]).delivery);
  }
  return arrivals;
}

void ImageFlow::FindDeliveries(Index vertex) {
  const DocumentEntry& entry = *vertices_[vertex].entry;
  if (entry.node == nullptr) return;
  const std::vector<Delivery> arrivals = FindArrivals(vertex);
  const auto& plugs = entry.node->GetOutplugs();
  const Index first = vertices_[vertex].first_output;
  for (Index i = first; i < GetEndOfOutputs(vertex); ++i) {
    const auto outplug = static_cast<unsigned>(i - first);
    const bool is_image = plugs.empty() || plugs[outplug].type == PlugType::kImage;
    if (!is_image) continue;
    const bool is_given = IsGiven(*entry.node, outplug);
    outputs_[i].delivery = is_given ? Delivery::kYes : FindDelivery(*entry.node, outplug, arrivals);
    if (outputs_[i].delivery == Delivery::kNo) outputs_[i].cause = FindCause(vertex, outplug);
  }
}

std::vector<unsigned> ImageFlow::FindLackingInputs(Index vertex, unsigned outplug) const {
  const Node& node = *vertices_[vertex].entry->node;
  const std::vector<bool> arrived = Select(FindArrivals(vertex), Delivery::kUnknown);
  if (AskNode(node, outplug, std::vector<bool>(arrived.size(), true)) != true) return {};
  std::vector<unsigned> lacking;
  std::vector<unsigned> enough;
  for (unsigned input = 0; input < arrived.size(); ++input) {
    if (arrived[input]) continue;
    lacking.push_back(input);
    std::vector<bool> with_it = arrived;
    with_it[input] = true;
    if (AskNode(node, outplug, with_it) == true) enough.push_back(input);
  }
  return enough.empty() ? lacking : enough;
}

ImageFlow::Place ImageFlow::FindCause(Index vertex, unsigned outplug) const {
  const Node& node = *vertices_[vertex].entry->node;
  const std::vector<unsigned> lacking = FindLackingInputs(vertex, outplug);
  for (Index i = vertices_[vertex].first_input; i < GetEndOfInputs(vertex); ++i) {
    const int input = node.GetInplugIndex(inputs_[i].connection->inplug);
    if (std::find(lacking.begin(), lacking.end(), static_cast<unsigned>(input)) == lacking.end()) continue;
    return GetSource(inputs_[i]).cause;
  }
  return {vertex, outplug};
}

Delivery ImageFlow::GetDelivery(const DocumentEntry& entry, unsigned outplug) const {
  if (entry.node == nullptr) return Delivery::kUnknown;
  return GetOutput(entry, outplug).delivery;
}

std::string ImageFlow::DescribeCause(const DocumentEntry& entry, unsigned outplug) const {
  const Place cause = GetOutput(entry, outplug).cause;
  const DocumentEntry& end = *vertices_[cause.vertex].entry;
  const std::vector<unsigned> lacking = FindLackingInputs(cause.vertex, cause.outplug);
  if (lacking.empty()) return NameNode(end) + (end.node->IsEnabled() ? " makes none" : " is disabled");
  std::string names;
  for (const unsigned input : lacking) {
    names += (names.empty() ? "" : " and ") + Quote(end.node->GetInplugs()[input].name);
  }
  return "nothing is connected to " + names + " of " + NameNode(end);
}

std::optional<std::size_t> ImageFlow::CountImages(const DocumentEntry& entry) const {
  const Index vertex = FindVertex(entry);
  if (entry.has_lost_connection || content_.lacks_parts) return std::nullopt;
  std::size_t images = 0;
  for (Index i = vertices_[vertex].first_input; i < GetEndOfInputs(vertex); ++i) {
    const int input = entry.node->GetInplugIndex(inputs_[i].connection->inplug);
    if (static_cast<std::size_t>(input) >= entry.node->GetNumRegularInputs()) continue;
    const Delivery delivery = GetSource(inputs_[i]).delivery;
    if (delivery == Delivery::kUnknown) return std::nullopt;
    if (delivery == Delivery::kYes) ++images;
  }
  return images;
}

}  // namespace ScEng
