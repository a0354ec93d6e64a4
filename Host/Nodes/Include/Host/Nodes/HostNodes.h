// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <vector>

#include "Host/Nodes/Api.h"
#include "Host/Tools/NodeLibrary.h"
#include "Host/Util/Status.h"

namespace ScEng {

// The numbers of the host's own node types.
inline constexpr NodeType kImageReaderType{10, 16, 5};
inline constexpr NodeType kImageWriterType{10, 16, 6};
inline constexpr NodeType kImageRectangleType{10, 16, 10};
inline constexpr NodeType kImageCheckerType{10, 16, 16};
inline constexpr NodeType kImageWavesType{10, 16, 32};
inline constexpr NodeType kImageTerrainType{10, 16, 40};
inline constexpr NodeType kNumberType{10, 16, 48};
inline constexpr NodeType kFlagType{10, 16, 49};
inline constexpr NodeType kTextType{10, 16, 50};
inline constexpr NodeType kImageRerouteType{10, 16, 51};

/// A descriptor for each of the host's own node types: readers, writers, generators, the nodes that feed attributes,
/// and the one that hands its image on.
HOST_NODES_API std::vector<RefPtr<NodeInterface>> CreateHostDescriptors();

/// A catalogue with the host's own types.
HOST_NODES_API std::shared_ptr<NodeCatalog> CreateHostCatalog();

}  // namespace ScEng
