// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeLibrary.h"

/// What node classes need to be used by tests.
namespace Testing {

/// The descriptor of a node class that names itself by the constants `kType` and `kName`.
template <class NodeClass>
class TestDescriptor : public NodeInterface {
 public:
  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return &factory_; }
  [[nodiscard]] std::string GetName() const override { return std::string("Test ") + NodeClass::kName; }
  [[nodiscard]] NodeType GetNodeType() const override { return NodeClass::kType; }

 private:
  class Factory : public NodeFactory {
   public:
    [[nodiscard]] NodeType GetNodeType() const override { return NodeClass::kType; }
    [[nodiscard]] Node* CreateNode() const override { return new NodeClass; }
    [[nodiscard]] std::string GetTypeName() const override { return NodeClass::kName; }
  };
  mutable Factory factory_;
};

/// The base of the test's nodes: adds attributes one by one.
class TestNode : public Node {
 public:
  void Evaluate(unsigned, const std::vector<PlugValue>&) override {}

 protected:
  template <class... Arguments>
  void Add(Arguments&&... arguments) {
    const auto id = static_cast<unsigned>(attributes_.size());
    attributes_.emplace_back(new Attribute(this, id, std::forward<Arguments>(arguments)...));
  }
};

template <class... NodeClasses>
std::shared_ptr<ScEng::NodeCatalog> MakeCatalog() {
  auto catalog = std::make_shared<ScEng::NodeCatalog>();
  (catalog->AddDescriptor(ScEng::RefPtr<NodeInterface>(new TestDescriptor<NodeClasses>)), ...);
  return catalog;
}

}  // namespace Testing
