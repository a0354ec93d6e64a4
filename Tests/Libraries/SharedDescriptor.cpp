// SPDX-License-Identifier: Apache-2.0
// A node library that keeps its descriptor and hands the same one out again and again.

#include "Tests/Libraries/LibraryParts.h"

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return MakeLibraryObject(); }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 1; }
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {
  static const ScEng::RefPtr<NodeInterface> descriptor(new PartsDescriptor(NodeType(900, 1, 7)));
  return index == 0 ? descriptor.Get() : nullptr;
}
