// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/AttributeCommand.h"

#include <QString>
#include <utility>

namespace ScEng {

Gesture MakeGesture() {
  static Gesture last = 0;
  return ++last;
}

AttributeCommand::AttributeCommand(Node& node, Attribute& attribute, PlugValue before, Gesture gesture)
    : node_(&node),
      attribute_(&attribute),
      before_(std::move(before)),
      after_(attribute.GetValue()),
      gesture_(gesture) {
  setText(QString::fromStdString(node.GetLabel() + ": " + attribute.GetName()));
}

void AttributeCommand::undo() { SetValue(*attribute_, before_); }

void AttributeCommand::redo() {
  // The stack calls this when the command is pushed; by then the value is there.
  if (std::exchange(is_made_, false)) return;
  SetValue(*attribute_, after_);
}

int AttributeCommand::id() const {
  constexpr int kMergeable = 0x41747472;
  return gesture_ == 0 ? -1 : kMergeable;
}

bool AttributeCommand::mergeWith(const QUndoCommand* other) {
  const auto* next = dynamic_cast<const AttributeCommand*>(other);
  if (next == nullptr || next->attribute_.Get() != attribute_.Get() || next->gesture_ != gesture_) return false;
  after_ = next->after_;
  // A slider that is dragged back to where it was leaves nothing to undo.
  setObsolete(after_ == before_);
  return true;
}

void SetValue(Attribute& attribute, const PlugValue& value) {
  switch (attribute.GetKind()) {
    case Attribute::Kind::kFlag: attribute.SetFlag(value.GetFlag(), false); break;
    case Attribute::Kind::kNumber: attribute.SetNumber(value.GetNumber(), false); break;
    case Attribute::Kind::kChoice:
      // The default may be a word that is not in the list, which the setter would refuse.
      if (!attribute.SetChoice(value.GetText(), false) && value == attribute.GetDefault()) attribute.ResetToDefault();
      break;
    case Attribute::Kind::kString: attribute.SetString(value.GetText(), false); break;
    case Attribute::Kind::kColor: {
      const Rgbo color = value.GetColor();
      attribute.SetRgbo(color.red, color.green, color.blue, color.opacity, false);
      break;
    }
    case Attribute::Kind::kPoint: {
      const Point point = value.GetPoint();
      attribute.SetPoint(point.x, point.y, false);
      break;
    }
    case Attribute::Kind::kFrame: {
      const Frame frame = value.GetFrame();
      attribute.SetFrame(frame.x, frame.y, frame.width, frame.height, false);
      break;
    }
  }
}

}  // namespace ScEng
