// SPDX-License-Identifier: Apache-2.0
// A node library whose catalogue lets an exception out.

#include <stdexcept>

#include "Tests/Libraries/LibraryParts.h"

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return MakeLibraryObject(); }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 2; }
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {
  if (index == 1) throw std::runtime_error("the shelf is bare");
  return index == 0 ? new PartsDescriptor(NodeType(900, 1, 6)) : nullptr;
}
