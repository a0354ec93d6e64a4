// SPDX-License-Identifier: Apache-2.0
// A node library whose second node type has the numbers of one of the host's own.

#include "Tests/Libraries/LibraryParts.h"

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return MakeLibraryObject(); }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 2; }
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {
  if (index > 1) return nullptr;
  return new PartsDescriptor(index == 0 ? NodeType(900, 1, 5) : NodeType(10, 16, 10));
}
