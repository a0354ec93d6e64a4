// SPDX-License-Identifier: Apache-2.0
// A node library that cuts the index of a descriptor to 32 bits.

#include "Tests/Libraries/LibraryParts.h"

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return MakeLibraryObject(); }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 1; }
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {
  return static_cast<std::uint32_t>(index) == 0 ? new PartsDescriptor(NodeType(900, 1, 7)) : nullptr;
}
