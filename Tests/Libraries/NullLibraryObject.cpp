// SPDX-License-Identifier: Apache-2.0
// A node library without a library object.

#include "Tests/Libraries/LibraryParts.h"

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return nullptr; }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 0; }
LIBRARY_EXPORT NodeInterface* GetNodeInterface(std::uint64_t) { return nullptr; }
