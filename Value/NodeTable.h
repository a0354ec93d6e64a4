// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

class NodeInterface;

/// The one list of this library's node types, in the order of their catalogue index.
namespace NodeTable {

std::int32_t GetSize();

/// A new descriptor with a new factory; null for an index that the table does not have.
NodeInterface* CreateDescriptor(std::uint64_t index);

}  // namespace NodeTable
