// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "Host/Tools/Api.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/NodeType.h"
#include "Host/Util/RefCounter.h"

class QWidget;

/// Creates the nodes of one type. Three virtual operations and no virtual destructor; it lives as long as the
/// descriptor that owns it.
class HOST_TOOLS_API NodeFactory : public RefCounter<NodeFactory> {
 public:
  [[nodiscard]] virtual NodeType GetNodeType() const = 0;
  /// A new node, without references; the caller takes the first one.
  [[nodiscard]] virtual Node* CreateNode() const = 0;
  /// The class name of the nodes, which documents store.
  [[nodiscard]] virtual std::string GetTypeName() const = 0;
};

/// The descriptor of a node type: everything that the host knows of it before a node exists.
///
/// The order of the virtual operations is the interface between host and node libraries.
class HOST_TOOLS_API NodeInterface : public RefCounter<NodeInterface> {
 public:
  NodeInterface() = default;
  NodeInterface(const NodeInterface&) = delete;
  NodeInterface& operator=(const NodeInterface&) = delete;

  /// Slot 0. Deletes the owned factory in the classes that own one.
  virtual ~NodeInterface();
  /// Slot 1. The factory, which stays the descriptor's.
  [[nodiscard]] virtual NodeFactory* GetNodeFactory() const = 0;
  /// Slot 2. The display name.
  [[nodiscard]] virtual std::string GetName() const = 0;
  /// Slot 3.
  [[nodiscard]] virtual NodeType GetNodeType() const = 0;
  /// Slot 4. The group that menus show the type in; 0 for none.
  [[nodiscard]] virtual unsigned GetGroupCode() const;
  /// Slot 5. Runs the type's self-test; false when it fails or there is none.
  virtual bool RunTest();
  virtual void InterfaceHook1();
  virtual void InterfaceHook2();
  /// Slot 8. A panel that edits the node's attributes, owned by `parent`; null where the type offers none for this
  /// selector.
  virtual QWidget* CreateAttributesWidget(Node* node, QWidget* parent, std::uintptr_t selector);
  virtual void InterfaceHook3();
  virtual void InterfaceHook4();
  /// Slot 11. The name of the library that the type comes from; empty for the host's own.
  [[nodiscard]] virtual std::string GetLibraryName() const;
  /// Slot 12.
  [[nodiscard]] virtual unsigned GetExtraCode() const;
  /// Slots 13 and 14. Qt resource paths of the 48 and the 12 pixel icon.
  [[nodiscard]] virtual std::string GetIconPath() const;
  [[nodiscard]] virtual std::string GetSmallIconPath() const;
  /// Slot 15.
  [[nodiscard]] virtual std::string GetDefaultMode() const;
  virtual void InterfaceHook5();
  virtual void InterfaceHook6();
  virtual void InterfaceHook7();
  virtual void InterfaceHook8();
  virtual void InterfaceHook9();
  virtual void InterfaceHook10();
  virtual void InterfaceHook11();
  virtual void InterfaceHook12();

 private:
  // For the host's use; a new descriptor starts with false. It stands between the count and what derived classes add.
  [[maybe_unused]] bool flag_ = false;
};
