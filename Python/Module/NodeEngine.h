// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/Engine.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeLibrary.h"

namespace ValuePython {

/// The images at the inputs of a node: for each regular input, in the order of the connections.
using InputImages = std::vector<std::vector<ImagePtr>>;

/// A node with what feeds its inputs, in an engine of its own. Used on one thread; kept from call to call.
class EngineNode {
 public:
  /// Throws std::runtime_error where the node cannot be made.
  EngineNode(std::shared_ptr<const ScEng::NodeCatalog> types, const NodeType& type);

  [[nodiscard]] Node& GetNode() { return *node_; }

  /// Evaluates all outputs with these images and answers their images, null where an output has none. Neither the node
  /// nor the engine keeps an image. How the node fared is in its state.
  std::vector<ImagePtr> Evaluate(const InputImages& inputs, const ScEng::Cancellation& cancellation);

 private:
  /// A node whose output an image stands in for, connected to an index of an input.
  struct Source {
    Node* node = nullptr;
    unsigned input = 0;
    unsigned index = 0;
  };

  void Connect(const InputImages& inputs);
  Source& AddSource(unsigned input, unsigned index);
  void RemoveSources(unsigned input, std::size_t left);
  void SetImages(const InputImages* inputs);

  Engine engine_;
  Node* node_ = nullptr;
  std::vector<Source> sources_;
};

/// The nodes of this thread, one of each type that was asked for, as long as the catalogue stays the same.
///
/// A node that is in use cannot be used again: code of Python that runs while it is evaluated, a handler of a signal
/// for example, gets nodes of its own.
class ThreadNodes {
 public:
  ThreadNodes();
  ~ThreadNodes();
  ThreadNodes(const ThreadNodes&) = delete;
  ThreadNodes& operator=(const ThreadNodes&) = delete;

  EngineNode& Find(const NodeType& type);

 private:
  struct Nodes {
    std::uint64_t generation = 0;
    std::map<NodeType, std::unique_ptr<EngineNode>> by_type;
  };
  struct Levels {
    std::vector<std::unique_ptr<Nodes>> nodes;
    std::size_t in_use = 0;
  };
  static Levels& GetLevels();

  Nodes* nodes_;
};

}  // namespace ValuePython
