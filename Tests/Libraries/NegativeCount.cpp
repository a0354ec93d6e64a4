// SPDX-License-Identifier: Apache-2.0
// A node library that has fewer node types than none.

#include "Tests/Libraries/LibraryParts.h"

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return MakeLibraryObject(); }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return -3; }
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t) { return nullptr; }
