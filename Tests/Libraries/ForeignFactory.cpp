// SPDX-License-Identifier: Apache-2.0
// A node library with a descriptor whose factory makes nodes of another type.

#include "Tests/Libraries/LibraryParts.h"

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return MakeLibraryObject(); }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 1; }
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {
  return index == 0 ? new PartsDescriptor(NodeType(900, 1, 3), NodeType(900, 1, 4)) : nullptr;
}
