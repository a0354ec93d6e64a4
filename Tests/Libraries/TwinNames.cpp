// SPDX-License-Identifier: Apache-2.0
// A node library with two node types whose display names differ in the case of letters only.

#include "Tests/Libraries/ImageParts.h"

namespace {

class SecondNode : public ImagePartsNode {
 public:
  [[nodiscard]] NodeType GetNodeType() const override { return NodeType(901, 1, 2); }
  [[nodiscard]] std::string GetName() const override { return "image parts"; }
};

class SecondFactory : public ImagePartsFactory<SecondNode> {
 public:
  [[nodiscard]] NodeType GetNodeType() const override { return NodeType(901, 1, 2); }
  [[nodiscard]] std::string GetTypeName() const override { return "SecondNode"; }
};

class SecondDescriptor : public NodeInterface {
 public:
  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return &factory_; }
  [[nodiscard]] std::string GetName() const override { return "image parts"; }
  [[nodiscard]] NodeType GetNodeType() const override { return NodeType(901, 1, 2); }

 private:
  mutable SecondFactory factory_;
};

}  // namespace

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return MakeLibraryObject(); }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 2; }
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {
  if (index > 1) return nullptr;
  return index == 0 ? static_cast<NodeInterface*>(new ImagePartsDescriptor<ImagePartsNode>) : new SecondDescriptor;
}
