// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "Host/Documents/DocumentContent.h"

namespace ScEng {

/// Where images come from and get to in a document, told without evaluating it: by its connections and by what the node
/// types say of the images that they need. Takes time in proportion to nodes and connections, and no stack that grows
/// with them. The document must not change as long as this is used.
class ImageFlow {
 public:
  enum class Delivery : std::uint8_t {
    kNo,
    /// A node type that does not say, or a part of the document that could not be read, is in between.
    kUnknown,
    kYes,
  };

  explicit ImageFlow(GraphDocument::Content& content);

  /// Whether there is neither an output nor an enabled writer.
  [[nodiscard]] bool WritesNothing() const { return content_.outputs.empty() && sinks_.empty(); }
  /// Whether a run evaluates this node: an output or an enabled writer depends on it.
  [[nodiscard]] bool IsNeeded(const DocumentEntry& entry) const { return vertices_[FindVertex(entry)].is_needed; }
  /// Enabled nodes that act on something outside, in the order of the document.
  [[nodiscard]] const std::vector<const DocumentEntry*>& GetSinks() const { return sinks_; }
  /// Whether an output gets an image; of a node without outputs, whether it has what it works on.
  [[nodiscard]] Delivery GetDelivery(const DocumentEntry& entry, unsigned outplug) const;
  /// Why it gets none: the node where the images end, and what it lacks.
  [[nodiscard]] std::string DescribeCause(const DocumentEntry& entry, unsigned outplug) const;
  /// How many images surely arrive at the inputs of a node, in all; nothing where that cannot be told.
  [[nodiscard]] std::optional<std::size_t> CountImages(const DocumentEntry& entry) const;

 private:
  using Index = std::uint32_t;

  struct Vertex {
    const DocumentEntry* entry = nullptr;
    /// The first of its connections and the first of its outputs, in the lists of all.
    Index first_input = 0;
    Index first_output = 0;
    bool is_needed = false;
  };
  struct Input {
    const ConnectionEntry* connection = nullptr;
    Index from = 0;
  };
  /// An output of a vertex.
  struct Place {
    Index vertex = 0;
    unsigned outplug = 0;
  };
  struct Output {
    Delivery delivery = Delivery::kUnknown;
    /// Where the images end, if none is delivered.
    Place cause;
  };

  [[nodiscard]] Index FindVertex(const DocumentEntry& entry) const { return indices_.at(&entry); }
  [[nodiscard]] Index GetEndOfInputs(Index vertex) const { return vertices_[vertex + 1].first_input; }
  [[nodiscard]] Index GetEndOfOutputs(Index vertex) const { return vertices_[vertex + 1].first_output; }
  [[nodiscard]] const Output& GetOutput(const DocumentEntry& entry, unsigned outplug) const {
    return outputs_[vertices_[FindVertex(entry)].first_output + outplug];
  }
  void AddVertices();
  void AddInputs();
  /// Every vertex after those that it depends on.
  [[nodiscard]] std::vector<Index> Order() const;
  void FindNeeded(const std::vector<Index>& order);
  void FindDeliveries(Index vertex);
  [[nodiscard]] bool IsGiven(const Node& node, unsigned outplug) const;
  [[nodiscard]] const Output& GetSource(const Input& input) const;
  /// What arrives at each regular input.
  [[nodiscard]] std::vector<Delivery> FindArrivals(Index vertex) const;
  /// The regular inputs of which one would be enough; all that lack an image where no single one is.
  [[nodiscard]] std::vector<unsigned> FindLackingInputs(Index vertex, unsigned outplug) const;
  [[nodiscard]] Place FindCause(Index vertex, unsigned outplug) const;

  GraphDocument::Content& content_;
  std::unordered_map<const DocumentEntry*, Index> indices_;
  /// One more than there are nodes: the last one holds the ends.
  std::vector<Vertex> vertices_;
  std::vector<Input> inputs_;
  std::vector<Output> outputs_;
  std::vector<const DocumentEntry*> sinks_;
};

}  // namespace ScEng
