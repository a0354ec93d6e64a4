// SPDX-License-Identifier: Apache-2.0
// A node library with two node types that have the same numbers.

#include "Tests/Libraries/LibraryParts.h"

namespace {

class SecondFactory : public PartsFactory {
 public:
  using PartsFactory::PartsFactory;
  [[nodiscard]] Node* CreateNode() const override { return new SecondNode; }
  [[nodiscard]] std::string GetTypeName() const override { return "SecondNode"; }

 private:
  class SecondNode : public PartsNode {
   public:
    SecondNode() : PartsNode(NodeType(900, 1, 7)) {}
    [[nodiscard]] std::string GetName() const override { return "Second"; }
  };
};

class SecondDescriptor : public PartsDescriptor {
 public:
  SecondDescriptor() : PartsDescriptor(NodeType(900, 1, 7)) {}
  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return &factory_; }
  [[nodiscard]] std::string GetName() const override { return "Second"; }

 private:
  mutable SecondFactory factory_{NodeType(900, 1, 7)};
};

}  // namespace

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return MakeLibraryObject(); }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 2; }
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {
  if (index > 1) return nullptr;
  return index == 0 ? new PartsDescriptor(NodeType(900, 1, 7)) : new SecondDescriptor;
}
