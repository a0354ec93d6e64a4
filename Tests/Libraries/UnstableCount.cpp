// SPDX-License-Identifier: Apache-2.0
// A node library that counts one node type more at its second call.

#include "Tests/Libraries/LibraryParts.h"

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return MakeLibraryObject(); }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() {
  static std::int32_t calls = 0;
  return ++calls == 2 ? 2 : 1;
}
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {
  return index == 0 ? new PartsDescriptor(NodeType(900, 1, 7)) : nullptr;
}
