// SPDX-License-Identifier: Apache-2.0
//
// The node types of the library, for tests that go through all of them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Util/RefCounter.h"
#include "Tests/Support/TestNodes.h"
#include "Value/NodeTable.h"

namespace Testing {

/// The descriptors, in the order of the library's table.
inline std::vector<ScEng::RefPtr<NodeInterface>> GetLibraryDescriptors() {
  std::vector<ScEng::RefPtr<NodeInterface>> descriptors;
  for (std::int32_t index = 0; index < NodeTable::GetSize(); ++index) {
    descriptors.emplace_back(NodeTable::CreateDescriptor(static_cast<std::uint64_t>(index)));
  }
  return descriptors;
}

inline std::vector<std::string> GetLibraryTypeNames() {
  std::vector<std::string> names;
  for (const auto& descriptor : GetLibraryDescriptors()) {
    names.push_back(descriptor->GetNodeFactory()->GetTypeName());
  }
  return names;
}

/// A node of the type with this name; null where there is none.
inline ScEng::RefPtr<Node> MakeLibraryNode(const std::string& type) {
  for (const auto& descriptor : GetLibraryDescriptors()) {
    if (descriptor->GetNodeFactory()->GetTypeName() == type) {
      return ScEng::RefPtr<Node>(descriptor->GetNodeFactory()->CreateNode());
    }
  }
  return {};
}

/// Stands for whatever gives the image, which is put in place of its output.
class GivingNode : public TestNode {
 public:
  static constexpr NodeType kType{700, 2, 1};
  static constexpr const char* kName = "GivingNode";
  GivingNode() {
    outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
    UpdateInplugsAndOutplugs();
  }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return "Giving"; }
};

/// The library's node types, the one above and further ones.
template <class... NodeClasses>
std::shared_ptr<ScEng::NodeCatalog> MakeLibraryCatalog() {
  auto catalog = MakeCatalog<GivingNode, NodeClasses...>();
  for (const auto& descriptor : GetLibraryDescriptors()) catalog->AddDescriptor(descriptor);
  return catalog;
}

}  // namespace Testing
