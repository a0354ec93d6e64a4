// SPDX-License-Identifier: Apache-2.0
// A node library that forgot the third of its entry points.

#include "Tests/Libraries/LibraryParts.h"

LIBRARY_EXPORT LibraryInterface* GetLibraryInterface() { return MakeLibraryObject(); }
LIBRARY_EXPORT std::int32_t GetNumNodeInterfaces() { return 0; }
