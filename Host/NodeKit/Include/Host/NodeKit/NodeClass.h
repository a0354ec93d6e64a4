// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Host/NodeKit/NodeDescriptor.h"
#include "Host/NodeKit/OutputImages.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeRecord.h"

// The lines that every node class has, written once. They are macros, since a base class for them would stand between
// `Node` and the node classes, whose place right below it is part of the interface between host and libraries.

/// In a node class: its record, which the source defines; the constructor, which declares the node from it; and the two
/// operations that answer from it.
#define NODEKIT_NODE(NodeClass)                                                          \
 public:                                                                                 \
  static const NodeRecord kRecord;                                                       \
  NodeClass() { Declare(kRecord); }                                                      \
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<NodeClass>; }   \
  [[nodiscard]] std::string GetName() const override { return kDisplayName<NodeClass>; } \
                                                                                         \
 private:

/// In a node class with one image output: the cached image, `output_`, and the two operations by which the host reads
/// it and drops it.
#define NODEKIT_ONE_OUTPUT                                                                              \
 public:                                                                                                \
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }                      \
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); } \
                                                                                                        \
 private:                                                                                               \
  OutputImages<1> output_;

/// Behind a node class: its descriptor and its factory, named after it as `NodeClass##Interface` and
/// `NodeClass##Factory`.
#define NODEKIT_DESCRIPTOR(NodeClass)                                 \
  class NodeClass##Interface : public NodeDescriptorOf<NodeClass> {}; \
  class NodeClass##Factory : public NodeFactoryOf<NodeClass> {};
