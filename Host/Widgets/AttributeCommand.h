// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QUndoCommand>

#include "Host/Tools/Attribute.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/PlugValue.h"
#include "Host/Util/RefCounter.h"

namespace ScEng {

/// A series of changes that a person makes in one go, such as a drag of a slider, and that is undone in one go. 0
/// stands for a change that belongs to no series.
using Gesture = unsigned;

/// A gesture that no command has yet.
[[nodiscard]] Gesture MakeGesture();

/// The change of an attribute's value, which has been made already when the command is pushed.
///
/// It holds references to the node and the attribute, so it works when panel and engine are gone.
class AttributeCommand : public QUndoCommand {
 public:
  AttributeCommand(Node& node, Attribute& attribute, PlugValue before, Gesture gesture);

  void undo() override;
  void redo() override;
  [[nodiscard]] int id() const override;
  bool mergeWith(const QUndoCommand* other) override;

 private:
  RefPtr<Node> node_;
  RefPtr<Attribute> attribute_;
  PlugValue before_;
  PlugValue after_;
  Gesture gesture_;
  bool is_made_ = true;
};

/// Gives an attribute a value of its own kind, as it is, without rounding.
void SetValue(Attribute& attribute, const PlugValue& value);

}  // namespace ScEng
