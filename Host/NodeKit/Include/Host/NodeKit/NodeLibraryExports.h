// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>

#include "Host/NodeKit/NodeDescriptor.h"
#include "Host/Tools/LibraryInterface.h"
#include "Host/Tools/NodeRecord.h"

/// The library object that a record describes.
template <const LibraryRecord& kLibrary>
class LibraryInterfaceOf : public LibraryInterface {
 public:
  [[nodiscard]] std::string GetName() const override { return kLibrary.name; }
};

/// A new descriptor with a new factory.
template <class Descriptor, class Factory>
NodeInterface* CreateNodeDescriptor() {
  auto descriptor = std::make_unique<Descriptor>();
  descriptor->SetNodeFactory(new Factory);
  return descriptor.release();
}

/// How the descriptor of each node class of a list is made, in the order of the list.
template <class... NodeClasses>
inline constexpr NodeInterface* (*kDescriptorCreators[])() = {
    CreateNodeDescriptor<NodeDescriptorOf<NodeClasses>, NodeFactoryOf<NodeClasses>>...};

#if defined(_WIN32)
#define NODEKIT_EXPORT extern "C" __declspec(dllexport)
#else
#define NODEKIT_EXPORT extern "C" __attribute__((visibility("default")))
#endif

/// The three entry points of a node library with the record `library` and the node classes that follow, in the order of
/// their index. Written once, outside of every namespace:
///
///     NODEKIT_LIBRARY(kLibrary, FirstNode, SecondNode)
///
/// The record has static storage and external or internal linkage (a constant of a namespace does).
#define NODEKIT_LIBRARY(library, ...)                                                                                 \
  NODEKIT_EXPORT LibraryInterface* GetLibraryInterface() { return new LibraryInterfaceOf<library>; }                  \
  NODEKIT_EXPORT std::int32_t GetNumNodeInterfaces() {                                                                \
    return static_cast<std::int32_t>(std::size(kDescriptorCreators<__VA_ARGS__>));                                    \
  }                                                                                                                   \
  NODEKIT_EXPORT NodeInterface* GetNodeInterface(std::uint64_t index) {                                               \
    return index < std::size(kDescriptorCreators<__VA_ARGS__>) ? kDescriptorCreators<__VA_ARGS__>[index]() : nullptr; \
  }
