// SPDX-License-Identifier: Apache-2.0
//
// The three entry points, the only symbols that this library exports. They keep no state and may be called from any
// thread; everything that they return is new and belongs to the host.

#include <cstdint>

#include "Value/NodeTable.h"
#include "Value/ValueLibraryInterface.h"

#if defined(_WIN32)
#define VALUE_EXPORT extern "C" __declspec(dllexport)
#else
#define VALUE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

VALUE_EXPORT LibraryInterface* GetLibraryInterface() { return new ValueLibraryInterface; }

VALUE_EXPORT std::int32_t GetNumNodeInterfaces() { return NodeTable::GetSize(); }

VALUE_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) { return NodeTable::CreateDescriptor(index); }
