// SPDX-License-Identifier: Apache-2.0
// A node library with a descriptor that can make no nodes.

#include "Tests/Libraries/LibraryParts.h"

namespace {

class BareDescriptor : public NodeInterface {
 public:
  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return nullptr; }
  [[nodiscard]] std::string GetName() const override { return "Bare"; }
  [[nodiscard]] NodeType GetNodeType() const override { return NodeType(900, 1, 2); }
};

}  // namespace

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return MakeLibraryObject(); }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 1; }
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {
  return index == 0 ? new BareDescriptor : nullptr;
}
