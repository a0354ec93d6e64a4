// SPDX-License-Identifier: Apache-2.0
#include "Host/Nodes/HostNodes.h"

#include "Host/Nodes/FeedNodes.h"
#include "Host/Nodes/GeneratorNodes.h"
#include "Host/Nodes/HostNode.h"
#include "Host/Nodes/ImageReaderNode.h"
#include "Host/Nodes/ImageWriterNode.h"

namespace ScEng {
namespace {

template <class... NodeClasses>
std::vector<RefPtr<NodeInterface>> CreateDescriptors() {
  return {RefPtr<NodeInterface>(new HostDescriptor<NodeClasses>)...};
}

}  // namespace

std::vector<RefPtr<NodeInterface>> CreateHostDescriptors() {
  return CreateDescriptors<ImageReaderNode, ImageWriterNode, ImageRectangleNode, ImageCheckerNode, ImageWavesNode,
                           ImageTerrainNode, NumberNode, FlagNode, TextNode>();
}

std::shared_ptr<NodeCatalogue> CreateHostCatalogue() {
  auto catalogue = std::make_shared<NodeCatalogue>();
  for (auto& descriptor : CreateHostDescriptors()) catalogue->AddDescriptor(std::move(descriptor));
  return catalogue;
}

}  // namespace ScEng
