// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/HostNodes.h"

#include "Host/NodeKit/NodeLibraryExports.h"
#include "Host/Nodes/FeedNodes.h"
#include "Host/Nodes/GeneratorNodes.h"
#include "Host/Nodes/ImageReaderNode.h"
#include "Host/Nodes/ImageRerouteNode.h"
#include "Host/Nodes/ImageWriterNode.h"

namespace ScEng {
namespace {

template <class... NodeClasses>
std::vector<RefPtr<NodeInterface>> CreateDescriptors() {
  return {RefPtr<NodeInterface>(CreateNodeDescriptor<NodeDescriptorOf<NodeClasses>, NodeFactoryOf<NodeClasses>>())...};
}

}  // namespace

std::vector<RefPtr<NodeInterface>> CreateHostDescriptors() {
  return CreateDescriptors<ImageReaderNode, ImageWriterNode, ImageRectangleNode, ImageCheckerNode, ImageWavesNode,
                           ImageTerrainNode, NumberNode, FlagNode, TextNode, ImageRerouteNode>();
}

std::shared_ptr<NodeCatalog> CreateHostCatalog() {
  auto catalog = std::make_shared<NodeCatalog>();
  for (auto& descriptor : CreateHostDescriptors()) catalog->AddDescriptor(std::move(descriptor));
  return catalog;
}

}  // namespace ScEng
