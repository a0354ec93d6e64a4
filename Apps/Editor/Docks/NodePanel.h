// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QList>
#include <QRect>
#include <QUndoStack>
#include <QWidget>
#include <string>

#include "Host/Tools/Node.h"
#include "Host/Tools/NodeInterface.h"

/// The panel that a node's descriptor makes, without a heading of its own, and with an undo stack that nobody else
/// uses: what is undone is the session's to say.
class NodePanel : public QWidget, private NodeObserver {
  Q_OBJECT

 public:
  NodePanel(Node& node, NodeInterface* descriptor, QWidget* parent);
  ~NodePanel() override;

  /// The node that is shown; null when it is gone.
  [[nodiscard]] Node* GetNode() const { return node_; }
  /// Where the row of an attribute is seen, across the whole panel; empty for none.
  [[nodiscard]] QRect FindRow(const std::string& attribute) const;
  /// Marks the name of an attribute whose value is not the same at all nodes that the panel stands for.
  void MarkDiffering(const std::string& attribute, bool differs);
  /// Attributes of these names cannot be edited; `reason` is the tooltip.
  void SetBlocked(const std::string& attribute, bool blocked, const QString& reason);

 private:
  void OnNodeDestroyed(Node& node) override;
  [[nodiscard]] QList<QWidget*> FindRowWidgets(const std::string& attribute) const;

  Node* node_;
  QUndoStack stack_;
  QWidget* panel_ = nullptr;
};
