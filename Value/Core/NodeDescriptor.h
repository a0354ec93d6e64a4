// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "Host/Tools/NodeInterface.h"
#include "Value/Core/AttributesPanel.h"
#include "Value/Core/NodeRecord.h"

/// The display name and the type of a node class as objects, built when the library is loaded.
template <class NodeClass>
inline const std::string kDisplayName = NodeClass::kRecord.display_name;
template <class NodeClass>
inline const NodeType kNodeType = NodeClass::kRecord.type;

/// What every factory of this library is: `Class##Factory` derives from it and adds nothing.
template <class NodeClass>
class NodeFactoryOf : public NodeFactory {
 public:
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<NodeClass>; }
  [[nodiscard]] Node* CreateNode() const override { return new NodeClass; }
  [[nodiscard]] std::string GetTypeName() const override { return NodeClass::kRecord.type_name; }
};

/// What every descriptor of this library is: `Class##Interface` derives from it. Owns its factory.
template <class NodeClass>
class NodeDescriptorOf : public NodeInterface {
 public:
  ~NodeDescriptorOf() override { DeleteFactory(factory_); }

  [[nodiscard]] NodeFactory* GetNodeFactory() const override { return factory_; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<NodeClass>; }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<NodeClass>; }
  [[nodiscard]] unsigned GetGroupCode() const override { return 9; }
  bool RunTest() override {
    return NodeClass::kRecord.run_test != nullptr ? NodeClass::kRecord.run_test() : NodeInterface::RunTest();
  }
  /// The host's panel for any node; there is none of another kind, so any selector but 0 gets null.
  QWidget* CreateAttributesWidget(Node* node, QWidget* parent, std::uintptr_t selector) override {
    if (selector != 0) return nullptr;
    if constexpr (requires { NodeClass::GetPanelEntries(); }) {
      return CreateAttributesPanel(node, parent, *this, NodeClass::GetPanelEntries());
    } else {
      return CreateAttributesPanel(node, parent, *this, {});
    }
  }
  [[nodiscard]] std::string GetLibraryName() const override { return "Value"; }
  [[nodiscard]] std::string GetIconPath() const override { return IconPath(".png"); }
  [[nodiscard]] std::string GetSmallIconPath() const override { return IconPath("12.png"); }

  /// Slot 24. Stores the factory as the owned one; the one before is not deleted.
  virtual void SetNodeFactory(NodeFactory* factory) { factory_ = factory; }

 private:
  static std::string IconPath(const char* ending) {
    return std::string(":/Value/Resources/Icons/") + NodeClass::kRecord.icon + ending;
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
