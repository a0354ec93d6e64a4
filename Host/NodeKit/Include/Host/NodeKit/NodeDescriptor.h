// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "Host/NodeKit/AttributesPanel.h"
#include "Host/Tools/NodeInterface.h"
#include "Host/Tools/NodeRecord.h"

/// The display name and the type of a node class as objects, built when its library is loaded.
template <class NodeClass>
inline const std::string kDisplayName = NodeClass::kRecord.display_name;
template <class NodeClass>
inline const NodeType kNodeType = NodeClass::kRecord.type;

/// The factory of a node class that has a record as `kRecord`.
template <class NodeClass>
class NodeFactoryOf : public NodeFactory {
 public:
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<NodeClass>; }
  [[nodiscard]] Node* CreateNode() const override { return new NodeClass; }
  [[nodiscard]] std::string GetTypeName() const override { return NodeClass::kRecord.type_name; }
};

/// The descriptor of a node class that has a record as `kRecord`. It owns its factory, which `SetNodeFactory` hands to
/// it.
template <class NodeClass>
class NodeDescriptorOf : public NodeInterface {
 public:
  ~NodeDescriptorOf() override { DeleteFactory(factory_); }

  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return factory_; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<NodeClass>; }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<NodeClass>; }
  [[nodiscard]] unsigned GetGroupCode() const override { return NodeClass::kRecord.library->group_code; }
  bool RunTest() override {
    return NodeClass::kRecord.run_test != nullptr ? NodeClass::kRecord.run_test() : NodeInterface::RunTest();
  }
  /// The host's panel for any node; there is none of another kind, so any selector but 0 gets null.
  QWidget* CreateAttributesWidget(Node* node, QWidget* parent, std::uintptr_t selector) override {
    return selector == 0 ? CreateAttributesPanel(node, parent, *this, NodeClass::kRecord) : nullptr;
  }
  [[nodiscard]] std::string GetLibraryName() const override { return NodeClass::kRecord.library->name; }
  [[nodiscard]] std::string GetIconPath() const override { return MakeIconPath(".png"); }
  [[nodiscard]] std::string GetSmallIconPath() const override { return MakeIconPath("12.png"); }

  /// Slot 24. Stores the factory as the owned one; the one before is not deleted.
  virtual void SetNodeFactory(NodeFactory* factory) { factory_ = factory; }

 private:
  static std::string MakeIconPath(const char* ending) {
    const NodeRecord& record = NodeClass::kRecord;
    return *record.icon == '\0' ? std::string() : std::string(record.library->icon_folder) + record.icon + ending;
  }

  // A factory holds nothing but its reference count and has no virtual destructor, by the host's design: a plain
  // delete through the base returns all there is.
  static void DeleteFactory(NodeFactory* factory) {
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdelete-non-virtual-dtor"
#if defined(__clang__)
#pragma GCC diagnostic ignored "-Wdelete-abstract-non-virtual-dtor"
#endif
#endif
    delete factory;
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
  }

  NodeFactory* factory_ = nullptr;
};
